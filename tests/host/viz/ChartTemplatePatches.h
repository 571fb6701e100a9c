#pragma once

#include <map>
#include <string>
#include <vector>

// The text operations that the chart composer performs on a template, done
// here exactly as the composer's contract states them, so that the tests
// can check that each template carries what each operation looks for and
// that the patched document is still chart markup that draws.
namespace ChartTemplatePatches {

// Replaces the first occurrence of `from` (searched from `start`); the
// position of the match, or npos when there is none.
std::size_t ReplaceFirst(std::string& text, const std::string& from, const std::string& to, std::size_t start = 0);
// The default stream form of a number: six significant digits.
std::string FormatNumber(double value);

// The diagram's finishing steps 2 to 5: its ranges, margin and title.
void DiagramFrame(std::string& text, unsigned long count, const std::string& title);
// Steps 7 and 8, after the histogram is embedded: weight range and legend.
void DiagramLegend(std::string& text, bool hideLegend, bool weightRangeSet, double minWeight, double maxWeight,
                   const std::string& legendTitle);
// The histogram's fragment steps: bins, distribution word and parameters.
void PatchHistogram(std::string& text, long bins, const std::string& distribution, double parameter, double secondary,
                    bool hasSecondary);
// The predicted-by-observed steps: value range and the legend's hiding.
void PatchPredictedByObserved(std::string& text, double minValue, double maxValue, double totalFrequency);
// The marginal means steps: the y axis label, and the legend cut for one
// effect.
void PatchEmMeans(std::string& text, const std::string& yLabel, bool hasSecondEffect);
// The custom effects steps 8 to 12.
void PatchCustomEffects(std::string& text, const std::string& footnote, const std::string& popup1,
                        const std::string& popup2, bool removeFaceting, bool removeColorAndLegend);
// Facet cutting.
void RemoveFaceting(std::string& text);
void RemoveFacet2(std::string& text);

// A panel of a contrast chart: its facet levels and the height of its
// reference line.
struct Deviation {
  std::string fLevel1;
  std::string fLevel2;
  double fLineValue = 0.0;
};
void UpdateLineGuides(std::string& text, const std::map<std::string, Deviation>& deviations);
// The title, caption and footnote texts of the contrast charts.
void PatchContrastTexts(std::string& text, const std::string& title, const std::string& caption,
                        const std::string& footnote);
void PatchPairwiseTexts(std::string& text, const std::string& title, const std::string& subtitle,
                        const std::string& footnote);

}  // namespace ChartTemplatePatches
