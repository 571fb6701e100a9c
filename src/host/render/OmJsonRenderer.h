#pragma once

#include <string>

#include "host/output/OmDocument.h"

// The output document as JSON: the full structure of the outline, tables,
// messages, texts and charts, pretty-printed with two blanks and a fixed key
// order, so that two renderings of the same document are byte for byte equal.
// The schema is described in docs/output-json.md.
class OmJsonRenderer {
 public:
  static constexpr int kSchemaVersion = 1;

  OmJsonRenderer() = default;

  std::string Render(const OmDocument& document) const;

  // Renders and writes the document; see OmOutputFile::Write.
  bool WriteFile(const OmDocument& document, const std::string& path, std::string& error) const;
};
