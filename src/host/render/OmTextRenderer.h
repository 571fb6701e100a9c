#pragma once

#include <string>
#include <vector>

#include "host/output/OmDocument.h"

// The output document as terminal text of a chosen width: the outline's
// headings underlined (a heading that follows itself within a command shown
// once, see OmOutline), pivot tables, messages with their level, front-end
// text as it came, and charts by their title and a note that the HTML
// report draws them (hidden charts not at all).
class OmTextRenderer {
 public:
  static constexpr int kDefaultWidth = 80;

  explicit OmTextRenderer(int width = kDefaultWidth);

  // Widths below the smallest usable one are raised to it.
  int GetWidth() const { return fWidth; }
  void SetWidth(int width);

  std::string Render(const OmDocument& document) const;

  std::string RenderHeadingTitle(const std::string& text, int depth) const;
  std::string RenderTable(const OmTable& table) const;
  std::string RenderMessage(const OmMessage& message) const;
  std::string RenderText(const OmFrontEndText& text) const;
  std::string RenderChart(const OmChart& chart) const;

  // Renders and writes the document; see OmOutputFile::Write.
  bool WriteFile(const OmDocument& document, const std::string& path, std::string& error) const;

 private:
  void RenderItems(const std::vector<const OmItem*>& items, int depth, std::string& out) const;

  int fWidth;
};
