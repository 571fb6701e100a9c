#pragma once

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "charts/GNLMChartOutput.h"
#include "charts/GNLMChartOutputData.h"
#include "host/cf/CFMetaData.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/viz/XMarkupReader.h"
#include "results/GNLMOutputStats.h"

// Shared by the tests of the charts: a small dataset with a dictionary of
// every kind of variable, a result model written by hand over it, an output
// procedure, and ways to look into the charts sent.
namespace charts_test {

using Stats = GNLMOutputStats;
const double kSysmis = -DBL_MAX;

// Every chart sent, in the order of the output.
inline void CollectCharts(const OmHeading& heading, std::vector<const OmChart*>& charts) {
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::CHART) charts.push_back(item.fpChart.get());
    if (item.fKind == OmItem::HEADING) CollectCharts(*item.fpHeading, charts);
  }
}
inline std::vector<const OmChart*> Charts(const OmDocument& document) {
  std::vector<const OmChart*> charts;
  CollectCharts(document.fRoot, charts);
  return charts;
}
// The one chart sent; fails the test when there is not exactly one.
inline const OmChart& OnlyChart(const OmDocument& document) {
  const std::vector<const OmChart*> charts = Charts(document);
  EXPECT_EQ(charts.size(), 1u);
  static const OmChart kNone;
  return charts.size() == 1 ? *charts[0] : kNone;
}
// The messages of the output, in order.
inline void CollectMessages(const OmHeading& heading, std::vector<std::string>& messages) {
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::MESSAGE) messages.push_back(item.fpMessage->fText);
    if (item.fKind == OmItem::HEADING) CollectMessages(*item.fpHeading, messages);
  }
}
inline std::vector<std::string> Messages(const OmDocument& document) {
  std::vector<std::string> messages;
  CollectMessages(document.fRoot, messages);
  return messages;
}

inline std::unique_ptr<XMarkupNode> Markup(const OmChart& chart) {
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(chart.fMarkup, error);
  EXPECT_TRUE(root) << error.ToText();
  return root;
}
// The first element of that name at or below `node` whose attribute
// `attribute` has `value` (any element of the name for an empty
// attribute); null when there is none.
inline const XMarkupNode* Find(const XMarkupNode& node, const std::string& name, const std::string& attribute = "",
                               const std::string& value = "") {
  if (node.fName == name && (attribute.empty() || node.Attribute(attribute) == value)) return &node;
  for (const auto& child : node.fvChildren) {
    if (const XMarkupNode* found = Find(*child, name, attribute, value)) return found;
  }
  return nullptr;
}
inline int CountElements(const XMarkupNode& node, const std::string& name) {
  int count = node.fName == name ? 1 : 0;
  for (const auto& child : node.fvChildren) count += CountElements(*child, name);
  return count;
}

// A cell of a chart's data; null when it was never written.
inline const OmChartData::Cell* Cell(const OmChart& chart, const std::string& source, const std::string& name,
                                     long row) {
  const OmChartData::Source* found = chart.fData.FindSource(source);
  const OmChartData::Variable* variable = found != nullptr ? found->FindVariable(name) : nullptr;
  if (variable == nullptr) return nullptr;
  const auto cell = variable->fCells.find(row);
  return cell != variable->fCells.end() ? &cell->second : nullptr;
}
// A cell's number; NaN when the cell is empty or a text.
inline double Number(const OmChart& chart, const std::string& source, const std::string& name, long row) {
  const OmChartData::Cell* cell = Cell(chart, source, name, row);
  return cell != nullptr && !cell->fbText ? cell->fNumber : std::nan("");
}
// A cell's text; "<empty>" when the cell is empty, "<number>" when it holds
// a number.
inline std::string Text(const OmChart& chart, const std::string& source, const std::string& name, long row) {
  const OmChartData::Cell* cell = Cell(chart, source, name, row);
  if (cell == nullptr) return "<empty>";
  return cell->fbText ? cell->fText : "<number>";
}
inline long Rows(const OmChart& chart, const std::string& source) {
  const OmChartData::Source* found = chart.fData.FindSource(source);
  return found != nullptr ? found->fRowCount : -1;
}

// An array of a marginal means record.
inline Stats::CoordinatesData Array(const std::string& field, const std::vector<std::string>& values) {
  Stats::CoordinatesData array;
  array.fField = field;
  array.fValues = values;
  return array;
}

// Adds a variable to a dataset: numeric for width 0, else a string; an
// empty label is none.
inline ZORV_Variable& Define(ZORV_Dataset& data, const std::string& name, int width, const std::string& label,
                             int level, const ZORV_Format& format) {
  ZORV_Variable& variable = *data.GetVariable(data.AddVariable(name, width));
  if (!label.empty()) variable.SetLabel(label);
  variable.SetMeasurementLevel(level);
  variable.SetFormat(format);
  return variable;
}

// Build settings of a normal model of the target with the identity link,
// 95% intervals and no adjustment for multiple comparisons.
inline Stats::BuildSettingsData& NormalModel(GNLMOutputStats& stats, ZORV_Dataset& data, int target) {
  Stats::BuildSettingsData& settings = *stats.CreateBuildSettings();
  settings.fTargetField = data.GetVariable(target)->GetName();
  settings.fTargetIndex = target;
  settings.fTrialsIndex = -1;
  settings.fDistribution = Stats::NORMAL;
  settings.fLinkFunction = Stats::IDENTITY;
  settings.fLinkParam = kSysmis;
  settings.fCIn = 0.95;
  settings.fIntercept = true;
  settings.fPAdjustment = 0;
  return settings;
}

// A model term of the given columns, crossed.
inline Stats::ModelEffectData Effect(ZORV_Dataset& data, const std::vector<int>& columns) {
  Stats::ModelEffectData effect;
  for (int column : columns) {
    effect.fvFieldNames.push_back(data.GetVariable(column)->GetName());
    effect.fvFieldIndices.push_back(column);
    effect.fvNestingLevels.push_back(0);
  }
  return effect;
}

// Columns of the dataset.
enum Column { REACTION = 0, DAYS, GROUP, SEX, SUBJECT, SITE, AGE };

class ChartTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZORV_Session::Current().BeginCommand();
    MakeData();
    fMetaData = CFMetaData(fData);
    fStats.SetDictMetadata(&fMetaData);
    fProcedure.reset(new BpProcedure(fDocument.fRoot.AddHeading("Model"), "Model", "Generalized Linear Mixed Models"));
  }
  void TearDown() override {
    // Every chart sent could be drawn.
    for (const std::string& message : Messages()) {
      EXPECT_EQ(message.find("cannot be drawn"), std::string::npos) << message;
    }
    for (const OmChart* chart : Charts()) EXPECT_NE(chart->fSvg.find("<svg"), std::string::npos) << chart->fTitle;
    fProcedure.reset();
    ZORV_Session::Current().BeginCommand();
  }

  // Reaction (the target, labelled, F8.2), Days (F8.0), Group (coded 1 and
  // 2 with value labels, labelled), Sex (a string, F and M with value
  // labels), Subject (coded, no labels), Site (a string whose values look
  // like numbers, labelled), Age (F8.2).
  void MakeData() {
    const ZORV_Format f80(ZORV_Format::F, 8, 0);
    const ZORV_Format f82(ZORV_Format::F, 8, 2);
    Define(fData, "Reaction", 0, "Reaction time (ms)", ZORV_Variable::SCALE, f82);
    Define(fData, "Days", 0, "", ZORV_Variable::SCALE, f80);
    ZORV_Variable& group = Define(fData, "Group", 0, "Treatment group", ZORV_Variable::NOMINAL, f80);
    group.ValueLabels().Add(1.0, "Control");
    group.ValueLabels().Add(2.0, "Treated");
    ZORV_Variable& sex = Define(fData, "Sex", 6, "", ZORV_Variable::NOMINAL, ZORV_Format(ZORV_Format::A, 6, 0));
    sex.ValueLabels().Add("F", "Female");
    sex.ValueLabels().Add("M", "Male");
    Define(fData, "Subject", 0, "", ZORV_Variable::NOMINAL, f80);
    Define(fData, "Site", 4, "Clinic site", ZORV_Variable::NOMINAL, ZORV_Format(ZORV_Format::A, 4, 0));
    Define(fData, "Age", 0, "", ZORV_Variable::SCALE, f82);
  }

  // Build settings of a normal model of Reaction with the identity link.
  Stats::BuildSettingsData& Settings() {
    Stats::BuildSettingsData* settings = fStats.GetBuildSettings();
    return settings != nullptr ? *settings : NormalModel(fStats, fData, REACTION);
  }

  // A fixed effect of the given columns, crossed.
  void AddFixedEffect(const std::vector<int>& columns) { Settings().fvFixedEffectList.push_back(Effect(fData, columns)); }

  Stats::ModelDiagnosticsData& Diagnostics() {
    Stats::ModelDiagnosticsData* diagnostics = fStats.GetModelDiagnostics();
    return diagnostics != nullptr ? *diagnostics : *fStats.CreateModelDiagnostics();
  }

  // The target's histogram, and the parameters of the distributions a
  // curve may be fitted by: mean 6.5, shape 4.5, rate 0.75, r 3, p 0.4.
  void TargetHistogram(Stats::EnumDistTypes distribution, const std::vector<double>& bins,
                       const std::vector<double>& counts) {
    Settings().fDistribution = distribution;
    Stats::TargetDistData& target = Diagnostics().fTargetDist;
    target.fMean = 6.5;
    target.fShape = 4.5;
    target.fRate = 0.75;
    target.fR = 3.0;
    target.fP = 0.4;
    target.fvObserved = bins;
    target.fvFrequency = counts;
  }

  std::vector<const OmChart*> Charts() const { return charts_test::Charts(fDocument); }
  // The one chart sent; fails the test when there is not exactly one.
  const OmChart& OnlyChart() const { return charts_test::OnlyChart(fDocument); }
  std::vector<std::string> Messages() const { return charts_test::Messages(fDocument); }

  ZORV_Dataset fData;
  CFMetaData fMetaData;
  GNLMOutputStats fStats;
  OmDocument fDocument;
  std::unique_ptr<BpProcedure> fProcedure;
};

}  // namespace charts_test
