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
    fData.AddVariable("Reaction", 0);
    fData.AddVariable("Days", 0);
    fData.AddVariable("Group", 0);
    fData.AddVariable("Sex", 6);
    fData.AddVariable("Subject", 0);
    fData.AddVariable("Site", 4);
    fData.AddVariable("Age", 0);
    ZORV_Variable& reaction = *fData.GetVariable(REACTION);
    reaction.SetLabel("Reaction time (ms)");
    reaction.SetFormat(ZORV_Format(ZORV_Format::F, 8, 2));
    fData.GetVariable(DAYS)->SetFormat(ZORV_Format(ZORV_Format::F, 8, 0));
    ZORV_Variable& group = *fData.GetVariable(GROUP);
    group.SetLabel("Treatment group");
    group.SetMeasurementLevel(ZORV_Variable::NOMINAL);
    group.SetFormat(ZORV_Format(ZORV_Format::F, 8, 0));
    group.ValueLabels().Add(1.0, "Control");
    group.ValueLabels().Add(2.0, "Treated");
    ZORV_Variable& sex = *fData.GetVariable(SEX);
    sex.SetMeasurementLevel(ZORV_Variable::NOMINAL);
    sex.SetFormat(ZORV_Format(ZORV_Format::A, 6, 0));
    sex.ValueLabels().Add("F", "Female");
    sex.ValueLabels().Add("M", "Male");
    ZORV_Variable& subject = *fData.GetVariable(SUBJECT);
    subject.SetMeasurementLevel(ZORV_Variable::NOMINAL);
    subject.SetFormat(ZORV_Format(ZORV_Format::F, 8, 0));
    ZORV_Variable& site = *fData.GetVariable(SITE);
    site.SetLabel("Clinic site");
    site.SetMeasurementLevel(ZORV_Variable::NOMINAL);
    site.SetFormat(ZORV_Format(ZORV_Format::A, 4, 0));
    fData.GetVariable(AGE)->SetFormat(ZORV_Format(ZORV_Format::F, 8, 2));
  }

  // Build settings of a normal model of Reaction with the identity link.
  Stats::BuildSettingsData& Settings() {
    Stats::BuildSettingsData* settings = fStats.GetBuildSettings();
    if (settings != nullptr) return *settings;
    settings = fStats.CreateBuildSettings();
    settings->fTargetField = "Reaction";
    settings->fTargetIndex = REACTION;
    settings->fTrialsIndex = -1;
    settings->fDistribution = Stats::NORMAL;
    settings->fLinkFunction = Stats::IDENTITY;
    settings->fLinkParam = kSysmis;
    settings->fCIn = 0.95;
    settings->fIntercept = true;
    settings->fPAdjustment = 0;
    return *settings;
  }

  // A fixed effect of the given columns, crossed.
  void AddFixedEffect(const std::vector<int>& columns) {
    Stats::ModelEffectData effect;
    for (int column : columns) {
      effect.fvFieldNames.push_back(fData.GetVariable(column)->GetName());
      effect.fvFieldIndices.push_back(column);
      effect.fvNestingLevels.push_back(0);
    }
    Settings().fvFixedEffectList.push_back(effect);
  }

  Stats::ModelDiagnosticsData& Diagnostics() {
    Stats::ModelDiagnosticsData* diagnostics = fStats.GetModelDiagnostics();
    return diagnostics != nullptr ? *diagnostics : *fStats.CreateModelDiagnostics();
  }

  // An array of a marginal means record.
  static Stats::CoordinatesData Array(const std::string& field, const std::vector<std::string>& values) {
    Stats::CoordinatesData array;
    array.fField = field;
    array.fValues = values;
    return array;
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
