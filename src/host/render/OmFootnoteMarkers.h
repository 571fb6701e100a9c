#pragma once

#include <string>
#include <vector>

#include "host/output/OmDocument.h"

// Letters of a table's footnotes. Footnotes are lettered a, b, c, ... in the
// order in which the reader first meets a reference to them; after z come
// aa, ab, ... A footnote that nothing refers to follows the others.
class OmFootnoteMarkers {
 public:
  explicit OmFootnoteMarkers(int footnoteCount = 0);

  // The letters of the ordinal'th marker, counted from 0.
  static std::string MarkerFor(int ordinal);

  // Notes the references of the text, in their order, as met by the reader.
  void Reference(const OmText& text);
  // Letters the footnotes not referred to; no reference counts after this.
  void Complete();

  // The letters of a footnote, empty for an index out of range.
  std::string GetMarker(int footnote) const;
  // The letters of a text's valid references, alphabetical, each once.
  std::vector<std::string> MarkersOf(const OmText& text) const;
  // The footnotes in the order of their letters.
  const std::vector<int>& GetOrder() const { return fvOrder; }
  int GetFootnoteCount() const { return static_cast<int>(fvOrdinal.size()); }

 private:
  std::vector<int> fvOrdinal;  // per footnote, its ordinal or -1
  std::vector<int> fvOrder;
};
