#pragma once

#include <map>
#include <string>
#include <vector>

#include "charts/GNLMChartOutput.h"
#include "host/data/ZORV_Format.h"
#include "host/viz/ChartString.h"

class FacSTDictionary;
class VarDataProcessor;
class ZORV_Variable;

// What the charts of one GNLMChartOutput share: the borrowed objects, the
// target's name, label and format, the range of edge weights the diagrams
// have drawn, the fitted distribution of the target, and the operations
// that more than one chart uses.
class GNLMChartOutput::Data {
 public:
  // One node of a diagram: its place, and the end of its edge at the target.
  struct PointCalc {
    double x = 0.0;
    double y = 0.0;
    double toX = 0.0;
    double toY = 0.0;
  };

  // The values of one level in a deviation or simple contrast chart.
  struct CategoryDeviationValue {
    double fMean = 0.0;
    bool fSignificant = false;
    double fLower = 0.0;
    double fUpper = 0.0;
  };

  // One panel of a deviation or simple contrast chart: one combination of
  // the facets' levels, with the height of its reference line.
  struct DeviationData {
    std::vector<std::string> fFacetLevels = std::vector<std::string>(2);  // empty where there is no facet
    double fLineValue = 0.0;
    std::map<std::string, CategoryDeviationValue> fCategories;  // by the level's text
  };

  Data(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats& stats);
  ~Data();
  Data(const Data&) = delete;
  Data& operator=(const Data&) = delete;

  // ---- diagrams ----
  // The target node's tooltip: name, label, distribution and link (UTF-8).
  std::string getTooltip() const;
  // Declares the source of the target node and fills its one row.
  void setTargetPointSource(VarDataProcessor& proc, unsigned long count);
  // Declares the sources of the nodes and of the edges, empty.
  void setPointEdgeSource(VarDataProcessor& proc);
  // `count` nodes on an arc left of the target, the top node first.
  // `outCount` is `count`, or 1 for none.
  std::vector<PointCalc> getPoints(unsigned long count, unsigned long& outCount) const;
  // The edge weight of a significance: 9 for the smallest down to 1.
  double getWeight(double sig) const;
  // Finishes a diagram from its template file and sends it.
  void SendChart(unsigned long count, const std::string& titleKey, VarDataProcessor& proc, bool hideLegend);
  // Lays the target's histogram, with the fitted distribution over it,
  // into the diagram's target node. Any failure leaves the text as it was.
  void embedHistogramInChart(std::string& chartText);

  // ---- messages, variables ----
  bool HasWarning(const std::vector<GNLMOutputStats::WarningMsgData>& warnings, const std::string& key) const;
  // The value label of a value given as text (a string variable) or as a
  // number; null when it has none.
  const char* getValueLabel(const ZORV_Variable& variable, const std::string& value) const;
  const char* getValueLabel(const ZORV_Variable& variable, double value) const;
  // The data's variable of that name; null when there is none.
  const ZORV_Variable* getVariable(const std::string& name) const;

  // ---- cutting and filling template text ----
  // Cuts the faceting and its layout.
  void removeFaceting(std::string& text) const;
  // Cuts the second facet of a two-facet template.
  void removeFacet2(std::string& text) const;
  // Fills one line guide slot per panel, in key order, and cuts the rest.
  void updateLineGuides(std::string& text, std::map<std::string, DeviationData>& deviations) const;

  // ---- marginal means ----
  // The means of a block by cell: the cell's factor values joined in the
  // order of their field names, to the mean's text.
  std::map<std::string, std::string> buildMeanValue(const GNLMOutputStats::EMMEANSCustomData& custom) const;
  // The key of a cell of means: its factors' values joined in the order of
  // their fields' names, so that it does not depend on the factors' order.
  static std::string cellKey(const std::map<std::string, std::string>& valuesByField);
  // The values at which the continuous predictors were held.
  ChartString GetFixedPredFootnote(const GNLMOutputStats::EMMEANSCustomData& custom) const;

  // ---- contrasts ----
  // The multiple comparison adjustment and its significance level.
  ChartString createContrastsCaption(const GNLMOutputStats::EMMEANSCustomData& custom) const;
  void createPairwiseChart(const GNLMOutputStats::EMMEANSCustomData& custom);

  // ---- texts ----
  // The translation of a key, UTF-8.
  std::string translate(const std::string& key) const;
  // The target's variable; null when the data do not hold it.
  const ZORV_Variable* targetVariable() const;
  // The label of a factor's level for a chart: its value label, or its
  // text, escaped; plain text without a variable.
  std::string levelLabel(const ZORV_Variable* variable, const std::string& value) const;

  BpProcedure* fProcedure;
  const GNLMOutputStats* fStats;
  ZORV_DataSource* fDataSource;
  FacSTDictionary* fDictionary;  // owned
  std::string fSourceName = "source0";
  std::string fPointSourceName = "pointSource";
  std::string fEdgeSourceName = "edgeSource";
  int fTargetIndex = -1;
  std::string fTargetName;   // UTF-8, not escaped
  std::string fTargetLabel;  // UTF-8, escaped: the label, or the name without one
  ZORV_Format fTargetFormat = ZORV_Format(ZORV_Format::F, 40, 2);
  bool fTargetHasLabel = true;
  double fSysmis;
  bool fWeightRangeSet = false;
  double fMinWeight = 9.0;
  double fMaxWeight = 1.0;
  double fDistMean, fDistShape, fDistRate, fDistR, fDistP;
};
