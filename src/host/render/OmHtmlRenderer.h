#pragma once

#include <string>

#include "host/output/OmDocument.h"

// The output document as one self-contained HTML5 page: inline style, no
// script and nothing fetched from elsewhere; an outline of links to headings
// (a heading that follows itself within a command shown once, see
// OmOutline), tables and charts; tables with a caption, a header of spanning column
// labels and a stub of row labels; messages as boxes by level.
class OmHtmlRenderer {
 public:
  OmHtmlRenderer() = default;

  std::string Render(const OmDocument& document) const;

  // Renders and writes the document; see OmOutputFile::Write.
  bool WriteFile(const OmDocument& document, const std::string& path, std::string& error) const;

  // The text made safe for HTML: markup characters as entities, malformed
  // UTF-8 as U+FFFD, control characters as blanks, line breaks kept.
  static std::string Escape(const std::string& text);
};
