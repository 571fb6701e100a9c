#include "host/render/OmTextRenderer.h"

#include <algorithm>

#include "host/render/OmOutline.h"
#include "host/render/OmOutputFile.h"
#include "host/render/OmTextTable.h"
#include "host/render/OmTextWrap.h"
#include "host/render/OmUtf8.h"

OmTextRenderer::OmTextRenderer(int width) : fWidth(kDefaultWidth) { SetWidth(width); }

void OmTextRenderer::SetWidth(int width) { fWidth = std::max(width, OmTextTable::kMinPageWidth); }

std::string OmTextRenderer::RenderHeadingTitle(const std::string& text, int depth) const {
  std::string out;
  int widest = 0;
  for (const std::string& line : OmTextWrap::Wrap(text, fWidth)) {
    out += line + "\n";
    widest = std::max(widest, OmUtf8::Width(line));
  }
  if (widest == 0) return out;
  const char rule = depth <= 1 ? '=' : (depth == 2 ? '-' : '.');
  out += std::string(static_cast<std::size_t>(widest), rule) + "\n";
  return out;
}

std::string OmTextRenderer::RenderTable(const OmTable& table) const { return OmTextTable(table, fWidth).Render(); }

std::string OmTextRenderer::RenderMessage(const OmMessage& message) const {
  const std::string prefix = std::string(OmMessage::LevelWord(message.fLevel)) + ": ";
  const int indent = OmUtf8::Width(prefix);
  const std::vector<std::string> lines = OmTextWrap::Wrap(message.fText, fWidth - indent);
  if (lines.empty()) return OmTextWrap::TrimRight(prefix) + "\n";
  std::string out;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    out += (i == 0 ? prefix : std::string(static_cast<std::size_t>(indent), ' ')) + lines[i] + "\n";
  }
  return out;
}

std::string OmTextRenderer::RenderText(const OmFrontEndText& text) const {
  std::string out;
  for (const std::string& line : text.fvLines) out += OmTextWrap::TrimRight(line) + "\n";
  return out;
}

std::string OmTextRenderer::RenderChart(const OmChart& chart) const {
  if (chart.fbHidden) return std::string();
  std::string out;
  for (const std::string& line : OmTextWrap::Wrap(chart.fTitle, fWidth)) out += line + "\n";
  out += "[Chart: drawn in the HTML report]\n";
  return out;
}

void OmTextRenderer::RenderItems(const std::vector<const OmItem*>& items, int depth, std::string& out) const {
  // The top level holds one heading per command, each kept apart.
  for (const OmOutline::Entry& entry : OmOutline::Entries(items, depth > 1)) {
    if (entry.fpItem == nullptr) {
      if (!out.empty()) out += "\n";
      out += RenderHeadingTitle(entry.fHeading, depth);
      RenderItems(entry.fvContents, depth + 1, out);
      continue;
    }
    const OmItem& item = *entry.fpItem;
    std::string block;
    switch (item.fKind) {
      case OmItem::HEADING:
        break;
      case OmItem::TABLE:
        block = RenderTable(*item.fpTable);
        break;
      case OmItem::MESSAGE:
        block = RenderMessage(*item.fpMessage);
        break;
      case OmItem::TEXT:
        block = RenderText(*item.fpText);
        break;
      case OmItem::CHART:
        block = RenderChart(*item.fpChart);
        break;
    }
    if (block.empty()) continue;
    if (!out.empty()) out += "\n";
    out += block;
  }
}

std::string OmTextRenderer::Render(const OmDocument& document) const {
  std::string out;
  RenderItems(OmOutline::ItemsOf(document.fRoot), 1, out);
  return out;
}

bool OmTextRenderer::WriteFile(const OmDocument& document, const std::string& path, std::string& error) const {
  return OmOutputFile::Write(path, Render(document), error);
}
