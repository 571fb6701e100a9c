#include "ChartTemplatePatches.h"

#include <algorithm>
#include <sstream>

namespace ChartTemplatePatches {

std::size_t ReplaceFirst(std::string& text, const std::string& from, const std::string& to, std::size_t start) {
  const std::size_t at = text.find(from, start);
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return at;
}

std::string FormatNumber(double value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

void DiagramFrame(std::string& text, unsigned long count, const std::string& title) {
  const std::size_t at = ReplaceFirst(text, "9.3", FormatNumber(std::max(2.0, count * 4.0 / 3.0)));
  if (at != std::string::npos && count == 0) {
    const std::size_t close = text.find("/>", at);
    if (close != std::string::npos) text.insert(close, " min=\"0\" ");
  }
  ReplaceFirst(text, "7.0", FormatNumber(std::max(1.0, static_cast<double>(count))));
  if (count >= 2 && count <= 8) {
    const std::size_t style = text.find("id=\"graphStyle");
    if (style != std::string::npos) text.insert(style + 15, " margin-bottom=\"30px\" ");
  }
  ReplaceFirst(text, "title1", title);
}

void DiagramLegend(std::string& text, bool hideLegend, bool weightRangeSet, double minWeight, double maxWeight,
                   const std::string& legendTitle) {
  if (weightRangeSet) {
    const std::size_t high = text.find("high=");
    if (high != std::string::npos) {
      text.replace(high + 6, 1, FormatNumber(maxWeight));
      const std::size_t low = text.find("low=", high);
      if (low != std::string::npos) text.replace(low + 5, 1, FormatNumber(minWeight));
    }
  }
  if (hideLegend) {
    const std::size_t legend = text.find("id=\"legendStyle\"");
    if (legend != std::string::npos) text.insert(legend - 1, " visible=\"false\" ");
  } else {
    ReplaceFirst(text, "Coefficient Estimate", legendTitle);
  }
}

void PatchHistogram(std::string& text, long bins, const std::string& distribution, double parameter, double secondary,
                    bool hasSecondary) {
  const std::size_t at = text.find("binStatistic");
  if (at == std::string::npos) return;
  text.insert(at + 12, " binCount=\"" + std::to_string(bins) + "\" ");
  if (distribution == "normal") return;
  ReplaceFirst(text, "normal", distribution, at);
  const std::size_t statistic = text.find("<distributionStatistic");
  if (statistic == std::string::npos) return;
  std::string parameters = " parameter=\"" + FormatNumber(parameter) + "\" ";
  if (hasSecondary) parameters += " secondaryParameter=\"" + FormatNumber(secondary) + "\" ";
  text.insert(statistic + 22, parameters);
}

void PatchPredictedByObserved(std::string& text, double minValue, double maxValue, double totalFrequency) {
  ReplaceFirst(text, "98.8", FormatNumber(maxValue));
  ReplaceFirst(text, "33.667", FormatNumber(minValue));
  if (totalFrequency < 100) {
    const std::size_t legend = text.find("id=\"legendStyle");
    if (legend != std::string::npos) text.insert(legend, " visible=\"false\" ");
  }
}

void PatchEmMeans(std::string& text, const std::string& yLabel, bool hasSecondEffect) {
  ReplaceFirst(text, "YAxisLabel", yLabel);
  if (hasSecondEffect) return;
  const std::size_t open = text.find("<legend");
  if (open == std::string::npos) return;
  const std::size_t close = text.find("</legend>", open);
  if (close != std::string::npos) text.erase(open, close + 9 - open);
}

void PatchCustomEffects(std::string& text, const std::string& footnote, const std::string& popup1,
                        const std::string& popup2, bool removeFaceting, bool removeColorAndLegend) {
  const std::size_t title = text.find(">TitleText");
  if (title != std::string::npos) text.replace(title + 1, 9, "Estimates");
  ReplaceFirst(text, "FootnoteText", footnote);
  const std::size_t popup = ReplaceFirst(text, "popup1", popup1);
  if (popup != std::string::npos) ReplaceFirst(text, "popup2", popup2, popup);
  if (removeFaceting) RemoveFaceting(text);
  if (removeColorAndLegend) {
    const std::size_t color = text.find("<color");
    if (color != std::string::npos) {
      const std::size_t end = text.find("/>", color);
      if (end != std::string::npos) text.erase(color, end + 2 - color);
    }
    const std::size_t legend = text.find("<legend id=\"legend\">");
    if (legend != std::string::npos) {
      const std::size_t end = text.find("</legend>", legend);
      if (end != std::string::npos) text.erase(legend, end + 9 - legend);
    }
    const std::size_t share = text.find("75%");
    if (share != std::string::npos) text.replace(share, 2, "99");
  }
}

void RemoveFaceting(std::string& text) {
  const std::size_t start = text.find("<faceting");
  const std::size_t end = text.find("</facetLayout>");
  if (start != std::string::npos && end != std::string::npos) text.erase(start, end + 14 - start);
}

void RemoveFacet2(std::string& text) {
  const std::size_t first = text.find("<variableReference");
  if (first == std::string::npos) return;
  const std::size_t second = text.find("<variableReference", first + 2);
  if (second == std::string::npos) return;
  const std::size_t end = text.find("</variableReference>", second);
  if (end == std::string::npos) return;
  text.erase(second, end + 20 - second);
  const std::size_t level = text.find("<facetLevel ", second);
  if (level == std::string::npos) return;
  const std::size_t next = text.find("<facetLevel ", level + 2);
  if (next == std::string::npos) return;
  const std::size_t close = text.find("</facetLevel>", next);
  if (close != std::string::npos) text.erase(next, close + 13 - next);
}

void UpdateLineGuides(std::string& text, const std::map<std::string, Deviation>& deviations) {
  std::size_t position = text.find("<lineGuide");
  if (position == std::string::npos) return;
  for (const auto& entry : deviations) {
    const std::size_t y = text.find("y=", position);
    if (y == std::string::npos) break;
    text.replace(y + 3, 2, FormatNumber(entry.second.fLineValue));
    position = text.find("whenText", y);
    if (position == std::string::npos) break;
    std::string expression = "false";
    if (!entry.second.fLevel1.empty()) {
      expression = "facet1!=&quot;" + entry.second.fLevel1 + "&quot;";
      if (!entry.second.fLevel2.empty()) expression += "||facet2!=&quot;" + entry.second.fLevel2 + "&quot;";
    }
    text.replace(position, 8, expression);
  }
  const std::size_t spare = text.find("whenText");
  if (spare == std::string::npos) return;
  const std::size_t first = text.rfind("<lineGuide", spare);
  const std::size_t last = text.rfind("</lineGuide>");
  if (first != std::string::npos && last != std::string::npos && last > first) text.erase(first, last + 12 - first);
}

void PatchContrastTexts(std::string& text, const std::string& title, const std::string& caption,
                        const std::string& footnote) {
  ReplaceFirst(text, "TitleText", title);
  ReplaceFirst(text, "CaptionText", caption);
  ReplaceFirst(text, "FootnoteText", footnote);
}

void PatchPairwiseTexts(std::string& text, const std::string& title, const std::string& subtitle,
                        const std::string& footnote) {
  ReplaceFirst(text, "TitleText", title);
  ReplaceFirst(text, "subTitleText", subtitle);
  ReplaceFirst(text, "FootnoteText", footnote);
}

}  // namespace ChartTemplatePatches
