#include "host/render/OmHtmlRenderer.h"

#include <algorithm>
#include <string>
#include <vector>

#include "host/render/OmOutline.h"
#include "host/render/OmOutputFile.h"
#include "host/render/OmTableLayout.h"
#include "numeric/common/MCMarkupText.h"

namespace {

const char* const kStyle = R"(
:root { color-scheme: light; }
body { font-family: "Helvetica Neue", Arial, sans-serif; font-size: 14px; line-height: 1.4; color: #1a1a1a;
  background: #fff; margin: 0 auto; padding: 1.5em 2em; max-width: 72em; }
h1 { font-size: 1.6em; margin: 0 0 0.8em; }
h2 { font-size: 1.35em; margin: 1.6em 0 0.6em; border-bottom: 1px solid #ccc; padding-bottom: 0.2em; }
h3 { font-size: 1.15em; margin: 1.4em 0 0.5em; }
h4, h5, h6 { font-size: 1em; margin: 1.2em 0 0.4em; }
nav.outline { border: 1px solid #ddd; background: #fafafa; padding: 0.6em 1.2em; margin-bottom: 1.5em; }
nav.outline ul { margin: 0.2em 0; padding-left: 1.3em; }
nav.outline a { color: #1f4e8c; text-decoration: none; }
nav.outline a:hover { text-decoration: underline; }
.table-wrap { overflow-x: auto; margin: 1em 0 1.6em; }
table.pivot { border-collapse: collapse; font-variant-numeric: tabular-nums; }
table.pivot caption { caption-side: top; text-align: left; font-weight: bold; font-size: 1.05em; padding: 0 0 0.4em; }
table.pivot th, table.pivot td { padding: 0.2em 0.7em; vertical-align: top; }
table.pivot thead { border-top: 2px solid #333; border-bottom: 1px solid #333; }
table.pivot thead th { font-weight: 600; text-align: center; vertical-align: bottom; }
table.pivot thead th.group { border-bottom: 1px solid #999; }
table.pivot thead th.stub { text-align: left; }
table.pivot tbody { border-bottom: 2px solid #333; }
table.pivot tbody th { font-weight: normal; text-align: left; }
table.pivot tbody tr.layer th { font-weight: 600; background: #f0f0f0; padding-top: 0.35em; }
table.pivot td.num { text-align: right; white-space: nowrap; }
table.pivot tfoot td { font-size: 0.92em; padding: 0.15em 0.7em; text-align: left; }
table.pivot tfoot tr:first-child td { padding-top: 0.4em; }
sup { font-size: 0.72em; line-height: 0; }
.message { border-left: 5px solid; border-radius: 3px; padding: 0.5em 0.9em; margin: 1em 0; white-space: pre-wrap; }
.message .level { font-weight: bold; }
.message.note { border-color: #3a7bd5; background: #eef4fc; }
.message.warning { border-color: #d9a400; background: #fdf7e3; }
.message.error { border-color: #c62828; background: #fdecea; }
pre.frontend { background: #f6f6f6; border: 1px solid #e2e2e2; padding: 0.6em 0.9em; overflow-x: auto; font-size: 0.92em; }
figure.chart { margin: 1em 0 1.6em; }
figure.chart svg { display: block; max-width: 100%; height: auto; }
@media print {
  body { max-width: none; padding: 0; font-size: 10pt; }
  nav.outline { display: none; }
  .table-wrap { overflow: visible; }
  table.pivot, figure.chart, .message { page-break-inside: avoid; }
  h2, h3, h4 { page-break-after: avoid; }
}
)";

// Text with line breaks shown as such.
std::string Lines(const std::string& text) {
  std::string escaped = OmHtmlRenderer::Escape(text);
  std::string out;
  for (char c : escaped) {
    if (c == '\n') {
      out += "<br>";
    } else {
      out += c;
    }
  }
  return out;
}

std::string Attr(const char* name, int value) {
  return value > 1 ? std::string(" ") + name + "=\"" + std::to_string(value) + "\"" : std::string();
}

class Writer {
 public:
  std::string fNav;
  std::string fMain;
  int fSections = 0;
  int fTables = 0;
  int fCharts = 0;

  void Items(const std::vector<const OmItem*>& items, int depth) {
    // The top level holds one heading per command, each kept apart.
    for (const OmOutline::Entry& entry : OmOutline::Entries(items, depth > 1)) {
      if (entry.fpItem == nullptr) {
        Heading(entry, depth);
        continue;
      }
      const OmItem& item = *entry.fpItem;
      switch (item.fKind) {
        case OmItem::HEADING:
          break;
        case OmItem::TABLE:
          Table(*item.fpTable);
          break;
        case OmItem::MESSAGE:
          Message(*item.fpMessage);
          break;
        case OmItem::TEXT:
          FrontEndText(*item.fpText);
          break;
        case OmItem::CHART:
          Chart(*item.fpChart);
          break;
      }
    }
  }

 private:
  void Heading(const OmOutline::Entry& heading, int depth) {
    const std::string id = "s" + std::to_string(++fSections);
    const std::string tag = "h" + std::to_string(std::min(depth + 1, 6));
    fNav += "<li><a href=\"#" + id + "\">" + Lines(heading.fHeading) + "</a>";
    const std::size_t navMark = fNav.size();
    fNav += "\n<ul>\n";
    const std::size_t navInner = fNav.size();
    fMain += "<section id=\"" + id + "\">\n<" + tag + ">" + Lines(heading.fHeading) + "</" + tag + ">\n";
    Items(heading.fvContents, depth + 1);
    fMain += "</section>\n";
    if (fNav.size() == navInner) {
      fNav.resize(navMark);
    } else {
      fNav += "</ul>\n";
    }
    fNav += "</li>\n";
  }

  static std::string Marked(const OmText* text, const OmFootnoteMarkers& markers) {
    if (text == nullptr) return std::string();
    std::string out = Lines(text->fText);
    const std::vector<std::string> letters = markers.MarkersOf(*text);
    if (!letters.empty()) {
      out += "<sup>";
      for (std::size_t i = 0; i < letters.size(); ++i) out += (i > 0 ? "," : "") + letters[i];
      out += "</sup>";
    }
    return out;
  }

  void Table(const OmTable& table) {
    const std::string id = "t" + std::to_string(++fTables);
    fNav += "<li><a href=\"#" + id + "\">" + Lines(table.fTitle.fText) + "</a></li>\n";

    const OmTableLayout layout(table);
    const OmFootnoteMarkers& markers = layout.GetMarkers();
    const int stub = layout.GetStubLevels();
    const int columns = layout.GetColumnCount();
    const int total = std::max(stub + columns, 1);

    std::string& o = fMain;
    o += "<div class=\"table-wrap\">\n<table class=\"pivot\" id=\"" + id + "\"";
    if (!table.fSubType.empty()) o += " data-subtype=\"" + OmHtmlRenderer::Escape(table.fSubType) + "\"";
    o += ">\n<caption>" + Marked(&table.fTitle, markers) + "</caption>\n";
    if (table.fMinDataColumnWidth > 0 && columns > 0) {
      o += "<colgroup>";
      if (stub > 0) o += "<col" + Attr("span", stub) + ">";
      o += "<col" + Attr("span", columns) + " style=\"min-width: " + std::to_string(table.fMinDataColumnWidth) +
           "pt; width: " + std::to_string(table.fMinDataColumnWidth) + "pt\"></colgroup>\n";
    }

    // Header: one row per header level; the corner above the stub's names.
    const int levels = std::max(layout.GetHeaderLevels(), layout.GetStubHeaderSpans().empty() ? 0 : 1);
    if (levels > 0) {
      o += "<thead>\n";
      for (int level = 0; level < levels; ++level) {
        o += "<tr>";
        // The corner above the stub reaches down to the row dimensions'
        // names, or to the data when there are none.
        const bool stubNames = !layout.GetStubHeaderSpans().empty();
        const int cornerRows = stubNames ? levels - 1 : levels;
        if (stub > 0 && level == 0 && cornerRows > 0) {
          o += "<td class=\"corner\"" + Attr("colspan", stub) + Attr("rowspan", cornerRows) + "></td>";
        }
        if (stub > 0 && stubNames && level == levels - 1) {
          int k = 0;
          for (const auto& span : layout.GetStubHeaderSpans()) {
            for (; k < span.fLevel; ++k) o += "<td class=\"corner\"></td>";
            o += "<th scope=\"col\" class=\"stub\"" + Attr("colspan", span.fLevels) + ">" + Marked(span.fpText, markers) + "</th>";
            k = span.fLevel + span.fLevels;
          }
          for (; k < stub; ++k) o += "<td class=\"corner\"></td>";
        }
        if (layout.GetHeaderLevels() == 0) {
          for (int c = 0; c < columns; ++c) o += "<td></td>";
        }
        for (const auto& span : layout.GetHeaderSpans()) {
          if (span.fLevel != level) continue;
          const bool group = span.fbHasChildren;
          o += std::string("<th scope=\"") + (group ? "colgroup" : "col") + "\"" + (group ? " class=\"group\"" : "") +
               Attr("colspan", span.fCount) + Attr("rowspan", span.fLevels) + ">" + Marked(span.fpText, markers) + "</th>";
        }
        o += "</tr>\n";
      }
      o += "</thead>\n";
    }

    for (int layer = 0; layer < layout.GetLayerCount(); ++layer) {
      o += "<tbody>\n";
      if (layout.HasLayerDimensions()) {
        std::string label;
        for (const auto& part : layout.GetLayerLabel(layer)) {
          if (!label.empty()) label += ", ";
          if (part.fpName != nullptr) label += Marked(part.fpName, markers) + ": ";
          for (std::size_t i = 0; i < part.fvPath.size(); ++i) label += (i > 0 ? " / " : "") + Marked(part.fvPath[i], markers);
        }
        o += "<tr class=\"layer\"><th scope=\"rowgroup\"" + Attr("colspan", total) + ">" + label + "</th></tr>\n";
      }
      const std::vector<int>& rows = layout.GetLayerRows(layer);
      const auto& spans = layout.GetStubSpans(layer);
      for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
        o += "<tr>";
        for (const auto& span : spans) {
          if (span.fFirst != i) continue;
          o += std::string("<th scope=\"") + (span.fCount > 1 ? "rowgroup" : "row") + "\"" + Attr("rowspan", span.fCount) +
               Attr("colspan", span.fLevels) + ">" + Marked(span.fpText, markers) + "</th>";
        }
        for (int c = 0; c < columns; ++c) {
          const OmCell* cell = layout.CellAt(layer, rows[static_cast<std::size_t>(i)], c);
          if (cell == nullptr) {
            o += "<td></td>";
            continue;
          }
          const bool numeric = cell->fbNumeric || cell->fbMissing;
          o += numeric ? "<td class=\"num\">" : "<td>";
          if (cell->fbMissing) {
            OmText marksOnly;
            marksOnly.fvFootnotes = cell->fContent.fvFootnotes;
            o += Marked(&marksOnly, markers);
          } else {
            o += Marked(&cell->fContent, markers);
          }
          o += "</td>";
        }
        o += "</tr>\n";
      }
      o += "</tbody>\n";
    }

    const bool footer = !table.fvCaptions.empty() || !table.fvNotes.empty() || !markers.GetOrder().empty();
    if (footer) {
      o += "<tfoot>\n";
      const std::string open = "<tr><td" + Attr("colspan", total);
      for (const OmText& caption : table.fvCaptions) o += open + " class=\"caption\">" + Marked(&caption, markers) + "</td></tr>\n";
      for (const OmText& note : table.fvNotes) o += open + " class=\"note\">" + Marked(&note, markers) + "</td></tr>\n";
      for (int index : markers.GetOrder()) {
        o += open + " class=\"footnote\"><sup>" + markers.GetMarker(index) + "</sup> " +
             Lines(table.fvFootnotes[static_cast<std::size_t>(index)]) + "</td></tr>\n";
      }
      o += "</tfoot>\n";
    }
    o += "</table>\n</div>\n";
  }

  void Message(const OmMessage& message) {
    fMain += std::string("<div class=\"message ") + OmMessage::LevelName(message.fLevel) + "\"><span class=\"level\">" +
             OmMessage::LevelWord(message.fLevel) + "</span> " + OmHtmlRenderer::Escape(message.fText) + "</div>\n";
  }

  void FrontEndText(const OmFrontEndText& text) {
    fMain += "<pre class=\"frontend\">";
    for (std::size_t i = 0; i < text.fvLines.size(); ++i) {
      if (i > 0) fMain += "\n";
      fMain += OmHtmlRenderer::Escape(text.fvLines[i]);
    }
    fMain += "</pre>\n";
  }

  // The chart's drawing as the chart library made it: an SVG element with
  // its title, marks, labels and tooltips, and no script.
  void Chart(const OmChart& chart) {
    const std::string id = "c" + std::to_string(++fCharts);
    if (!chart.fbHidden) {
      fNav += "<li><a href=\"#" + id + "\">" + Lines(chart.fTitle.empty() ? chart.fKind : chart.fTitle) + "</a></li>\n";
    }
    fMain += "<figure class=\"chart\" id=\"" + id + "\"";
    if (!chart.fKind.empty()) fMain += " data-kind=\"" + OmHtmlRenderer::Escape(chart.fKind) + "\"";
    if (!chart.fTitle.empty()) fMain += " aria-label=\"" + OmHtmlRenderer::Escape(chart.fTitle) + "\"";
    if (chart.fbHidden) fMain += " hidden";
    fMain += ">\n" + chart.fSvg + "</figure>\n";
  }
};

}  // namespace

std::string OmHtmlRenderer::Escape(const std::string& text) {
  return MCCommon_850::MCMarkupText::Escape(text, MCCommon_850::MCMarkupText::HTML);
}

std::string OmHtmlRenderer::Render(const OmDocument& document) const {
  Writer writer;
  writer.Items(OmOutline::ItemsOf(document.fRoot), 1);
  const std::string title = Escape(document.fTitle);
  std::string out;
  out += "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
  out += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
  out += "<title>" + title + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n";
  out += "<header><h1>" + title + "</h1></header>\n";
  if (!writer.fNav.empty()) out += "<nav class=\"outline\" aria-label=\"Outline\">\n<ul>\n" + writer.fNav + "</ul>\n</nav>\n";
  out += "<main>\n" + writer.fMain + "</main>\n</body>\n</html>\n";
  return out;
}

bool OmHtmlRenderer::WriteFile(const OmDocument& document, const std::string& path, std::string& error) const {
  return OmOutputFile::Write(path, Render(document), error);
}
