#include "host/render/OmTextTable.h"

#include <algorithm>
#include <cmath>

#include "host/render/OmTextWrap.h"
#include "host/render/OmUtf8.h"

namespace {

// Points of a host column width per character of terminal text.
const double kPointsPerCharacter = 7.0;

// A block of text lines written by position.
class Canvas {
 public:
  Canvas(int lines, int width)
      : fvLines(static_cast<std::size_t>(std::max(lines, 0)),
                std::vector<std::string>(static_cast<std::size_t>(std::max(width, 0)), " ")) {}

  void Put(int line, int x, const std::string& text) {
    if (line < 0 || line >= static_cast<int>(fvLines.size())) return;
    std::vector<std::string>& row = fvLines[static_cast<std::size_t>(line)];
    for (const std::string& ch : OmUtf8::Characters(text)) {
      if (x >= 0 && x < static_cast<int>(row.size())) row[static_cast<std::size_t>(x)] = ch;
      ++x;
    }
  }

  void Rule(int line, int x, int width, char c) { Put(line, x, std::string(static_cast<std::size_t>(std::max(width, 0)), c)); }

  void AppendTo(std::vector<std::string>& out) const {
    for (const auto& row : fvLines) {
      std::string line;
      for (const std::string& ch : row) line += ch;
      out.push_back(OmTextWrap::TrimRight(line));
    }
  }

 private:
  std::vector<std::vector<std::string>> fvLines;
};

int Sum(const std::vector<int>& widths, int first, int count) {
  int total = 0;
  for (int i = first; i < first + count; ++i) {
    if (i >= 0 && i < static_cast<int>(widths.size())) total += widths[static_cast<std::size_t>(i)];
  }
  return total + OmTextTable::kGap * std::max(count - 1, 0);
}

// Preferred width of a label that may wrap: its natural width, but no more
// than the cap unless the span is already wider, and never narrower than its
// longest word (up to wordCap).
int PreferredWidth(const std::string& text, int cap, int wordCap) {
  const int natural = OmTextWrap::NaturalWidth(text);
  return std::min(natural, std::max(cap, std::min(OmTextWrap::LongestWord(text), wordCap)));
}

}  // namespace

OmTextTable::OmTextTable(const OmTable& table, int pageWidth)
    : fLayout(table), fPageWidth(std::max(pageWidth, kMinPageWidth)) {
  ComputeColumnWidths();
  ComputeStubWidths();
  ComputePanels();
}

std::string OmTextTable::WithMarkers(const std::string& text, const std::vector<std::string>& markers) {
  if (markers.empty()) return text;
  std::string out = text + "^";
  for (std::size_t i = 0; i < markers.size(); ++i) {
    if (i > 0) out += ",";
    out += markers[i];
  }
  return out;
}

std::string OmTextTable::Label(const OmText* text) const {
  if (text == nullptr) return std::string();
  return WithMarkers(text->fText, fLayout.GetMarkers().MarkersOf(*text));
}

bool OmTextTable::IsAlignedNumber(const OmCell& cell) const { return cell.fbNumeric || cell.fbMissing; }

std::string OmTextTable::CellText(const OmCell& cell) const {
  const std::vector<std::string> markers = fLayout.GetMarkers().MarkersOf(cell.fContent);
  return WithMarkers(cell.fbMissing ? std::string() : cell.fContent.fText, markers);
}

OmTextTable::NumberPartsData OmTextTable::NumberParts(const OmCell& cell) const {
  NumberPartsData parts;
  const std::string text = cell.fbMissing ? std::string() : cell.fContent.fText;
  const std::size_t point = text.find('.');
  if (point == std::string::npos) {
    parts.fInteger = text;
  } else {
    parts.fInteger = text.substr(0, point);
    parts.fFraction = text.substr(point);
  }
  parts.fFraction = WithMarkers(parts.fFraction, fLayout.GetMarkers().MarkersOf(cell.fContent));
  return parts;
}

void OmTextTable::ComputeColumnWidths() {
  const int W = fPageWidth;
  const int colCap = std::max(10, W / 6);
  const int textCap = std::max(colCap, W / 3);
  const int wordCap = std::max(colCap, W / 2);
  int minChars = 0;
  const int minPoints = fLayout.GetTable().fMinDataColumnWidth;
  if (minPoints > 0) {
    minChars = std::min(static_cast<int>(std::ceil(minPoints / kPointsPerCharacter)), W / 3);
  }

  const int nColumns = fLayout.GetColumnCount();
  fvColumnWidths.assign(static_cast<std::size_t>(nColumns), 1);
  fvFractionWidths.assign(static_cast<std::size_t>(nColumns), 0);
  fvbHasText.assign(static_cast<std::size_t>(nColumns), false);
  std::vector<int> integerWidths(static_cast<std::size_t>(nColumns), 0);

  for (int layer = 0; layer < fLayout.GetLayerCount(); ++layer) {
    for (int row : fLayout.GetLayerRows(layer)) {
      for (int c = 0; c < nColumns; ++c) {
        const OmCell* cell = fLayout.CellAt(layer, row, c);
        if (cell == nullptr) continue;
        const std::size_t ci = static_cast<std::size_t>(c);
        if (IsAlignedNumber(*cell)) {
          const NumberPartsData parts = NumberParts(*cell);
          integerWidths[ci] = std::max(integerWidths[ci], OmUtf8::Width(parts.fInteger));
          fvFractionWidths[ci] = std::max(fvFractionWidths[ci], OmUtf8::Width(parts.fFraction));
        } else {
          fvbHasText[ci] = true;
          fvColumnWidths[ci] = std::max(fvColumnWidths[ci], PreferredWidth(CellText(*cell), textCap, wordCap));
        }
      }
    }
  }
  fvIntegerWidths = integerWidths;
  for (std::size_t c = 0; c < fvColumnWidths.size(); ++c) {
    fvColumnWidths[c] = std::max({fvColumnWidths[c], integerWidths[c] + fvFractionWidths[c], minChars});
  }

  // Labels of single columns first, then the groups from the innermost out,
  // widening the columns under a group whose label would not fit.
  std::vector<OmTableLayout::SpanData> spans = fLayout.GetHeaderSpans();
  std::stable_sort(spans.begin(), spans.end(), [](const OmTableLayout::SpanData& a, const OmTableLayout::SpanData& b) {
    if ((a.fCount == 1) != (b.fCount == 1)) return a.fCount == 1;
    return a.fLevel > b.fLevel;
  });
  for (const auto& span : spans) {
    const std::string label = Label(span.fpText);
    const int current = Sum(fvColumnWidths, span.fFirst, span.fCount);
    const int wanted = std::max(current, PreferredWidth(label, colCap, wordCap));
    int extra = wanted - current;
    for (int i = span.fCount - 1; i >= 0 && extra > 0; --i) {
      const int share = (extra + i) / (i + 1);
      fvColumnWidths[static_cast<std::size_t>(span.fFirst + i)] += share;
      extra -= share;
    }
  }
}

void OmTextTable::ComputeStubWidths() {
  const int W = fPageWidth;
  const int wordCap = std::max(10, W / 2);
  const int levels = fLayout.GetStubLevels();
  fvStubWidths.assign(static_cast<std::size_t>(levels), 1);
  if (levels == 0) return;
  std::vector<int> words(static_cast<std::size_t>(levels), 1);

  std::vector<OmTableLayout::SpanData> spans = fLayout.GetStubHeaderSpans();
  for (int layer = 0; layer < fLayout.GetLayerCount(); ++layer) {
    const auto& layerSpans = fLayout.GetStubSpans(layer);
    spans.insert(spans.end(), layerSpans.begin(), layerSpans.end());
  }
  for (const auto& span : spans) {
    if (span.fLevels != 1) continue;
    const std::string label = Label(span.fpText);
    const std::size_t k = static_cast<std::size_t>(span.fLevel);
    fvStubWidths[k] = std::max(fvStubWidths[k], OmTextWrap::NaturalWidth(label));
    words[k] = std::max(words[k], std::min(OmTextWrap::LongestWord(label), wordCap));
  }

  // The stub narrows its widest columns first, never below their longest
  // word. It gives way so that the table fits the page when that is possible
  // with a stub of at least a quarter of the page; a table that must be cut
  // into panels anyway keeps a stub of up to two fifths of the page. It never
  // takes more than three fifths.
  auto floorOf = [&](int k) {
    const std::size_t ki = static_cast<std::size_t>(k);
    return std::min(fvStubWidths[ki], std::max(words[ki], 6));
  };
  int floorTotal = 0;
  for (int k = 0; k < levels; ++k) floorTotal += floorOf(k);
  floorTotal += kGap * (levels - 1);
  const int data = Sum(fvColumnWidths, 0, fLayout.GetColumnCount());
  const int fitting = W - data - kGap;
  int cap = W * 3 / 5;
  if (Sum(fvStubWidths, 0, levels) > fitting) {
    cap = std::max(floorTotal, W / 4) <= fitting ? std::min(cap, fitting) : std::min(cap, W * 2 / 5);
  }
  int total = Sum(fvStubWidths, 0, levels);
  while (total > cap) {
    int widest = -1;
    for (int k = 0; k < levels; ++k) {
      const std::size_t ki = static_cast<std::size_t>(k);
      if (fvStubWidths[ki] <= floorOf(k)) continue;
      if (widest < 0 || fvStubWidths[ki] > fvStubWidths[static_cast<std::size_t>(widest)]) widest = k;
    }
    if (widest < 0) break;
    --fvStubWidths[static_cast<std::size_t>(widest)];
    --total;
  }

  // A label across several stub columns wraps within them, but its longest
  // word must fit.
  for (const auto& span : spans) {
    if (span.fLevels == 1) continue;
    const int current = Sum(fvStubWidths, span.fLevel, span.fLevels);
    const int word = std::min(OmTextWrap::LongestWord(Label(span.fpText)), wordCap);
    if (word > current) fvStubWidths[static_cast<std::size_t>(span.fLevel + span.fLevels - 1)] += word - current;
  }
}

int OmTextTable::StubTotal() const {
  const int levels = static_cast<int>(fvStubWidths.size());
  return levels > 0 ? Sum(fvStubWidths, 0, levels) + kGap : 0;
}

void OmTextTable::ComputePanels() {
  fvPanels.clear();
  const int nColumns = fLayout.GetColumnCount();
  if (nColumns == 0) {
    fvPanels.emplace_back();
    return;
  }
  const int available = fPageWidth - StubTotal();
  const auto& spans = fLayout.GetHeaderSpans();
  const int levels = fLayout.GetHeaderLevels();

  // The best place to cut before column `end`, at or after `start` + 1: the
  // last start of a span on the outermost header row that has one there.
  auto cutBefore = [&](int start, int end) {
    for (int level = 0; level < levels; ++level) {
      int best = -1;
      for (const auto& span : spans) {
        if (span.fLevel == level && span.fFirst > start && span.fFirst <= end) best = std::max(best, span.fFirst);
      }
      if (best > 0) return best;
    }
    return end;
  };

  int start = 0;
  int used = 0;
  for (int c = 0; c < nColumns; ++c) {
    const int width = fvColumnWidths[static_cast<std::size_t>(c)];
    if (c > start && used + kGap + width > available) {
      const int cut = cutBefore(start, c);
      std::vector<int> panel;
      for (int i = start; i < cut; ++i) panel.push_back(i);
      fvPanels.push_back(panel);
      start = cut;
      used = Sum(fvColumnWidths, start, c - start + 1);
      continue;
    }
    used += (c > start ? kGap : 0) + width;
  }
  std::vector<int> panel;
  for (int i = start; i < nColumns; ++i) panel.push_back(i);
  fvPanels.push_back(panel);
}

std::vector<std::string> OmTextTable::RenderBlock(int layer, const std::vector<int>& panel) const {
  const int stubLevels = fLayout.GetStubLevels();
  const int stubTotal = StubTotal();
  const int firstColumn = panel.empty() ? 0 : panel.front();
  const int nPanel = static_cast<int>(panel.size());
  const int tableWidth = std::max(stubTotal + Sum(fvColumnWidths, firstColumn, nPanel) - (nPanel == 0 ? kGap : 0), 1);

  std::vector<int> stubX(static_cast<std::size_t>(stubLevels), 0);
  for (int k = 1; k < stubLevels; ++k) {
    stubX[static_cast<std::size_t>(k)] = stubX[static_cast<std::size_t>(k - 1)] + fvStubWidths[static_cast<std::size_t>(k - 1)] + kGap;
  }
  std::vector<int> columnX(static_cast<std::size_t>(fLayout.GetColumnCount()), -1);
  {
    int x = stubTotal;
    for (int c : panel) {
      columnX[static_cast<std::size_t>(c)] = x;
      x += fvColumnWidths[static_cast<std::size_t>(c)] + kGap;
    }
  }

  std::vector<std::string> out;
  out.push_back(std::string(static_cast<std::size_t>(tableWidth), '='));

  // Header: one block of lines per header row, labels at its foot; a rule
  // under every label that spans something below it.
  struct PlacedData {
    std::vector<std::string> fvLines;
    int fX = 0;
    int fWidth = 0;
    int fBottom = 0;
    bool fbRule = false;
    bool fbCentred = true;
  };
  std::vector<PlacedData> placed;
  const int panelEnd = firstColumn + nPanel;
  for (const auto& span : fLayout.GetHeaderSpans()) {
    const int first = std::max(span.fFirst, firstColumn);
    const int last = std::min(span.fFirst + span.fCount, panelEnd);
    if (first >= last) continue;
    PlacedData p;
    p.fX = columnX[static_cast<std::size_t>(first)];
    p.fWidth = Sum(fvColumnWidths, first, last - first);
    p.fvLines = OmTextWrap::Wrap(Label(span.fpText), p.fWidth);
    p.fBottom = span.fLevel + span.fLevels - 1;
    p.fbRule = span.fbHasChildren;
    placed.push_back(p);
  }
  const int headerLevels = std::max(fLayout.GetHeaderLevels(), fLayout.GetStubHeaderSpans().empty() ? 0 : 1);
  for (const auto& span : fLayout.GetStubHeaderSpans()) {
    PlacedData p;
    p.fX = stubX[static_cast<std::size_t>(span.fLevel)];
    p.fWidth = Sum(fvStubWidths, span.fLevel, span.fLevels);
    p.fvLines = OmTextWrap::Wrap(Label(span.fpText), p.fWidth);
    p.fBottom = headerLevels - 1;
    p.fbCentred = false;
    placed.push_back(p);
  }
  if (headerLevels > 0) {
    std::vector<int> heights(static_cast<std::size_t>(headerLevels), 0);
    std::vector<bool> rules(static_cast<std::size_t>(headerLevels), false);
    for (const auto& p : placed) {
      const std::size_t b = static_cast<std::size_t>(p.fBottom);
      heights[b] = std::max(heights[b], static_cast<int>(p.fvLines.size()));
      if (p.fbRule && p.fBottom < headerLevels - 1) rules[b] = true;
    }
    std::vector<int> starts(static_cast<std::size_t>(headerLevels), 0);
    int lines = 0;
    for (int l = 0; l < headerLevels; ++l) {
      starts[static_cast<std::size_t>(l)] = lines;
      lines += heights[static_cast<std::size_t>(l)] + (rules[static_cast<std::size_t>(l)] ? 1 : 0);
    }
    Canvas canvas(lines, tableWidth);
    for (const auto& p : placed) {
      const std::size_t b = static_cast<std::size_t>(p.fBottom);
      int line = starts[b] + heights[b] - static_cast<int>(p.fvLines.size());
      for (const std::string& text : p.fvLines) {
        canvas.Put(line++, p.fX, p.fbCentred ? OmTextWrap::Centre(text, p.fWidth) : text);
      }
      if (p.fbRule && rules[b]) canvas.Rule(starts[b] + heights[b], p.fX, p.fWidth, '-');
    }
    canvas.AppendTo(out);
    out.push_back(std::string(static_cast<std::size_t>(tableWidth), '-'));
  }

  // Body.
  const std::vector<int>& rows = fLayout.GetLayerRows(layer);
  const auto& stubSpans = fLayout.GetStubSpans(layer);
  const int nRows = static_cast<int>(rows.size());
  std::vector<std::vector<std::vector<std::string>>> cellLines(static_cast<std::size_t>(nRows));
  std::vector<int> heights(static_cast<std::size_t>(nRows), 1);
  for (int i = 0; i < nRows; ++i) {
    auto& lines = cellLines[static_cast<std::size_t>(i)];
    lines.resize(static_cast<std::size_t>(nPanel));
    for (int j = 0; j < nPanel; ++j) {
      const int c = panel[static_cast<std::size_t>(j)];
      const OmCell* cell = fLayout.CellAt(layer, rows[static_cast<std::size_t>(i)], c);
      if (cell == nullptr) continue;
      const int width = fvColumnWidths[static_cast<std::size_t>(c)];
      if (IsAlignedNumber(*cell)) {
        const NumberPartsData parts = NumberParts(*cell);
        // Numbers line up on their decimal point, at the right of the column,
        // or at its left where they share it with texts.
        const std::size_t ci = static_cast<std::size_t>(c);
        const int fraction = fvFractionWidths[ci];
        const int integer = fvbHasText[ci] ? fvIntegerWidths[ci] : width - fraction;
        const std::string text = OmTextWrap::PadLeft(parts.fInteger, integer) + OmTextWrap::PadRight(parts.fFraction, fraction);
        lines[static_cast<std::size_t>(j)].push_back(text);
      } else {
        lines[static_cast<std::size_t>(j)] = OmTextWrap::Wrap(CellText(*cell), width);
      }
      heights[static_cast<std::size_t>(i)] = std::max(heights[static_cast<std::size_t>(i)], static_cast<int>(lines[static_cast<std::size_t>(j)].size()));
    }
  }
  std::vector<std::vector<std::string>> stubLines;
  for (const auto& span : stubSpans) {
    stubLines.push_back(OmTextWrap::Wrap(Label(span.fpText), Sum(fvStubWidths, span.fLevel, span.fLevels)));
    if (span.fCount == 1 && span.fFirst >= 0 && span.fFirst < nRows) {
      int& h = heights[static_cast<std::size_t>(span.fFirst)];
      h = std::max(h, static_cast<int>(stubLines.back().size()));
    }
  }
  // A label over several rows flows down them; the last row grows if needed.
  for (std::size_t s = 0; s < stubSpans.size(); ++s) {
    const auto& span = stubSpans[s];
    if (span.fCount == 1) continue;
    int total = 0;
    for (int i = span.fFirst; i < span.fFirst + span.fCount && i < nRows; ++i) total += heights[static_cast<std::size_t>(i)];
    const int need = static_cast<int>(stubLines[s].size());
    const int lastRow = std::min(span.fFirst + span.fCount, nRows) - 1;
    if (need > total && lastRow >= 0) heights[static_cast<std::size_t>(lastRow)] += need - total;
  }
  std::vector<int> rowY(static_cast<std::size_t>(nRows) + 1, 0);
  for (int i = 0; i < nRows; ++i) rowY[static_cast<std::size_t>(i) + 1] = rowY[static_cast<std::size_t>(i)] + heights[static_cast<std::size_t>(i)];
  Canvas body(rowY.back(), tableWidth);
  for (std::size_t s = 0; s < stubSpans.size(); ++s) {
    const auto& span = stubSpans[s];
    if (span.fFirst < 0 || span.fFirst >= nRows) continue;
    int line = rowY[static_cast<std::size_t>(span.fFirst)];
    for (const std::string& text : stubLines[s]) body.Put(line++, stubX[static_cast<std::size_t>(span.fLevel)], text);
  }
  for (int i = 0; i < nRows; ++i) {
    for (int j = 0; j < nPanel; ++j) {
      const int c = panel[static_cast<std::size_t>(j)];
      int line = rowY[static_cast<std::size_t>(i)];
      for (const std::string& text : cellLines[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]) {
        body.Put(line++, columnX[static_cast<std::size_t>(c)], text);
      }
    }
  }
  body.AppendTo(out);
  out.push_back(std::string(static_cast<std::size_t>(tableWidth), '='));
  return out;
}

std::string OmTextTable::Render() const {
  const OmTable& table = fLayout.GetTable();
  const OmFootnoteMarkers& markers = fLayout.GetMarkers();
  std::vector<std::string> lines;
  for (const std::string& line : OmTextWrap::Wrap(Label(&table.fTitle), fPageWidth)) lines.push_back(line);

  bool firstBlock = true;
  for (int layer = 0; layer < fLayout.GetLayerCount(); ++layer) {
    for (const auto& panel : fvPanels) {
      if (!firstBlock) lines.emplace_back();
      firstBlock = false;
      if (fLayout.HasLayerDimensions()) {
        std::string label;
        for (const auto& part : fLayout.GetLayerLabel(layer)) {
          if (!label.empty()) label += ", ";
          if (part.fpName != nullptr) label += Label(part.fpName) + ": ";
          for (std::size_t i = 0; i < part.fvPath.size(); ++i) {
            if (i > 0) label += " / ";
            label += Label(part.fvPath[i]);
          }
        }
        for (const std::string& line : OmTextWrap::Wrap(label, fPageWidth)) lines.push_back(line);
      }
      const std::vector<std::string> block = RenderBlock(layer, panel);
      lines.insert(lines.end(), block.begin(), block.end());
    }
  }

  for (const OmText& caption : table.fvCaptions) {
    for (const std::string& line : OmTextWrap::Wrap(Label(&caption), fPageWidth)) lines.push_back(line);
  }
  for (const OmText& note : table.fvNotes) {
    for (const std::string& line : OmTextWrap::Wrap(Label(&note), fPageWidth)) lines.push_back(line);
  }
  for (int index : markers.GetOrder()) {
    const std::string marker = markers.GetMarker(index) + ". ";
    const int indent = OmUtf8::Width(marker);
    const std::vector<std::string> wrapped =
        OmTextWrap::Wrap(table.fvFootnotes[static_cast<std::size_t>(index)], fPageWidth - indent);
    if (wrapped.empty()) lines.push_back(OmTextWrap::TrimRight(marker));
    for (std::size_t i = 0; i < wrapped.size(); ++i) {
      lines.push_back((i == 0 ? marker : std::string(static_cast<std::size_t>(indent), ' ')) + wrapped[i]);
    }
  }

  std::string out;
  for (const std::string& line : lines) {
    out += line;
    out += '\n';
  }
  return out;
}
