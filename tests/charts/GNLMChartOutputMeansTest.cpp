// The charts of estimated marginal means.
#include <string>

#include "ChartsTestSupport.h"

using namespace charts_test;

namespace {

class Means : public ChartTest {
 protected:
  void SetUp() override {
    ChartTest::SetUp();
    Settings();
    AddFixedEffect({GROUP});
    AddFixedEffect({SEX});
  }
  // Means of Group, and of Sex within Group when `withSex`.
  static Stats::EMMEANSEstimatesData GroupMeans(bool withSex) {
    Stats::EMMEANSEstimatesData means;
    if (withSex) {
      means.fvGroup = {Array("Group", {"1", "1", "2", "2"}), Array("Sex", {"F", "M", "F", "M"})};
      means.fMean = Array("", {"250.5", "260", "270.25", "__MISSING__"});
      means.fConfIntervalLower = Array("", {"240.5", "250", "260.25", "1"});
      means.fConfIntervalUpper = Array("", {"260.5", "270", "280.25", "2"});
    } else {
      means.fvGroup = {Array("Group", {"1", "2"})};
      means.fMean = Array("", {"250.5", "270.25"});
      means.fConfIntervalLower = Array("", {"240.5", "260.25"});
      means.fConfIntervalUpper = Array("", {"260.5", "280.25"});
    }
    return means;
  }
  std::vector<Stats::EMMEANSEstimatesData>& Significant() {
    std::vector<Stats::EMMEANSEstimatesData>* collection = fStats.GetEMMEANSSignifCollect();
    return collection != nullptr ? *collection : *fStats.CreateEMMEANSSignifCollect();
  }
  // A block of means asked for, of the first `factors` of Group, Sex and
  // Site, with covariates held at their values.
  Stats::EMMEANSCustomData Custom(std::size_t factors) {
    Stats::EMMEANSCustomData custom;
    custom.fEMMEANSIndex = 0;
    const std::vector<Stats::CoordinatesData> all = {Array("Group", {"1", "2", "1", "2"}),
                                                     Array("Sex", {"F", "F", "M", "M"}),
                                                     Array("Site", {"01", "01", "02", "02"})};
    custom.fEstimates.fvGroup.assign(all.begin(), all.begin() + static_cast<long>(factors));
    custom.fEstimates.fMean = Array("", {"10.5", "11", "bad", "13"});
    custom.fEstimates.fConfIntervalLower = Array("", {"9.5", "x", "1", "12"});
    custom.fEstimates.fConfIntervalUpper = Array("", {"11.5", "12", "2", "x"});
    return custom;
  }
  // The category cut out of a custom chart: the colour, the legend, the facets.
  struct Cuts {
    bool fColor;
    bool fLegend;
    bool fFaceting;
    std::string fWidth;
  };
  static Cuts CutsOf(const OmChart& chart) {
    const std::unique_ptr<XMarkupNode> root = Markup(chart);
    const XMarkupNode* graph = root->FirstChild("graph");
    return {graph->FirstChild("color") != nullptr, root->FirstChild("legend") != nullptr,
            graph->FirstChild("faceting") != nullptr, Find(*root, "style", "id", "graphStyle")->Attribute("width")};
  }
};

}  // namespace

TEST_F(Means, TheMostSignificantEffectsAreChartedUnderAHeadingOfTheirOwn) {
  Significant().push_back(GroupMeans(true));
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createEMMeansChart();
  const OmHeading& procedure = *fDocument.fRoot.fvItems.front().fpHeading;
  ASSERT_EQ(procedure.fvItems.size(), 1u);
  const OmHeading& heading = *procedure.fvItems[0].fpHeading;
  EXPECT_EQ(heading.fText, "Estimated Marginal Means for Top Significant Fixed Effects");
  ASSERT_EQ(heading.fvItems.size(), 1u);
  const OmChart& chart = *heading.fvItems[0].fpChart;
  EXPECT_EQ(chart.fTitle, "Reaction time (ms) by Treatment group * Sex");
  EXPECT_EQ(chart.fKind, "GLMMEmMeans");
  const std::string source = "source0";
  // Two rows a cell: the mean on both, the limits one on each.
  EXPECT_EQ(Number(chart, source, "effect1", 0), 1.0);
  EXPECT_EQ(Number(chart, source, "effect1", 1), 1.0);
  EXPECT_EQ(Text(chart, source, "effect2", 2), "M");
  EXPECT_EQ(Number(chart, source, "target", 4), 270.25);
  EXPECT_EQ(Number(chart, source, "target", 5), 270.25);
  EXPECT_EQ(Number(chart, source, "confMargin", 4), 260.25);
  EXPECT_EQ(Number(chart, source, "confMargin", 5), 280.25);
  // A mean that does not read as a number is written as what the reading gave.
  EXPECT_EQ(Number(chart, source, "target", 6), 0.0);
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(Find(*root, "axis", "dimension", "y")->FindDescendant("text")->OwnText(), "Reaction time (ms)");
  EXPECT_EQ(Find(*root, "axis", "dimension", "x")->FindDescendant("text")->OwnText(), "Treatment group");
  const XMarkupNode* effect1 = Find(*root, "variable", "name", "effect1");
  EXPECT_EQ(effect1->Attribute("label"), "Treatment group");
  EXPECT_EQ(effect1->Attribute("format"), "F8.0");
  ASSERT_EQ(effect1->Children("relabel").size(), 2u);
  EXPECT_EQ(effect1->Children("relabel")[1]->Attribute("label"), "Treated");
  EXPECT_EQ(Find(*root, "variable", "name", "effect2")->Children("relabel").size(), 2u);
  EXPECT_EQ(Find(*root, "variable", "name", "target")->Attribute("format"), "F8.2");
  EXPECT_NE(root->FirstChild("legend"), nullptr);
}

TEST_F(Means, OneFactorHasNoLegendAndNoSecondEffect) {
  Significant().push_back(GroupMeans(false));
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createEMMeansChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Reaction time (ms) by Treatment group");
  EXPECT_EQ(Markup(chart)->FirstChild("legend"), nullptr);
  for (long row = 0; row < 4; ++row) EXPECT_EQ(Cell(chart, "source0", "effect2", row), nullptr);
  EXPECT_EQ(Number(chart, "source0", "effect1", 3), 2.0);
}

TEST_F(Means, AtMostElevenChartsAreDrawn) {
  for (int i = 0; i < 12; ++i) Significant().push_back(GroupMeans(i % 2 == 0));
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createEMMeansChart();
  EXPECT_EQ(Charts().size(), 11u);
}

TEST_F(Means, AnEmptyCollectionLeavesAnEmptyHeadingAndNoCollectionNone) {
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createEMMeansChart();
  const OmHeading& procedure = *fDocument.fRoot.fvItems.front().fpHeading;
  EXPECT_TRUE(procedure.fvItems.empty());
  Significant();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createEMMeansChart();
  ASSERT_EQ(procedure.fvItems.size(), 1u);
  EXPECT_TRUE(procedure.fvItems[0].fpHeading->fvItems.empty());
  EXPECT_TRUE(Charts().empty());
}

TEST_F(Means, AStringFactorStaysTextButOnlyInTheFirstPlace) {
  Stats::EMMEANSEstimatesData means;
  means.fvGroup = {Array("Site", {"01", "02"}), Array("Days", {"3", "4"})};
  means.fMean = Array("", {"1", "2"});
  means.fConfIntervalLower = Array("", {"0", "1"});
  means.fConfIntervalUpper = Array("", {"2", "3"});
  Significant().push_back(means);
  Stats::EMMEANSEstimatesData second;
  second.fvGroup = {Array("Days", {"3", "4"}), Array("Site", {"01", "02"})};
  second.fMean = means.fMean;
  Significant().push_back(second);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createEMMeansChart();
  ASSERT_EQ(Charts().size(), 2u);
  EXPECT_EQ(Text(*Charts()[0], "source0", "effect1", 0), "01");
  EXPECT_EQ(Number(*Charts()[0], "source0", "effect2", 0), 3.0);
  EXPECT_EQ(Charts()[0]->fTitle, "Reaction time (ms) by Clinic site * Days");
  EXPECT_EQ(Number(*Charts()[1], "source0", "effect1", 2), 4.0);
  EXPECT_EQ(Number(*Charts()[1], "source0", "effect2", 2), 2.0);
  // In a block asked for, too, such values are numbers.
  Stats::EMMEANSCustomData custom = Custom(3);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  ASSERT_EQ(Charts().size(), 3u);
  EXPECT_EQ(Number(*Charts()[2], "source_0", "effect3", 0), 1.0);
  EXPECT_EQ(Text(*Charts()[2], "source_0", "effect2", 0), "F");
}

TEST_F(Means, ABlockOfMeansIsChartedByItsFactors) {
  Stats::EMMEANSCustomData custom = Custom(3);
  custom.fvFieldValues.push_back({"Age", CFStatVariableValue()});
  custom.fvFieldValues.back().fValue.SetCompleteValue("34.5", *fData.GetVariable(AGE));
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Estimated Means: Custom Effects");
  EXPECT_EQ(chart.fKind, "GLMMCustomEffects");
  const std::string source = "source_0";
  EXPECT_EQ(Number(chart, source, "targetValue", 0), 10.5);
  EXPECT_EQ(Number(chart, source, "targetValue", 1), 10.5);
  EXPECT_EQ(Number(chart, source, "confMargin", 0), 9.5);
  EXPECT_EQ(Number(chart, source, "confMargin", 1), 11.5);
  EXPECT_EQ(Number(chart, source, "effect1", 1), 1.0);
  EXPECT_EQ(Text(chart, source, "effect2", 1), "F");
  EXPECT_EQ(Number(chart, source, "effect3", 1), 1.0);
  // Only the upper limit reads: it stands on both rows.
  EXPECT_EQ(Number(chart, source, "confMargin", 2), 12.0);
  EXPECT_EQ(Number(chart, source, "confMargin", 3), 12.0);
  // A mean that does not read leaves its cell out.
  EXPECT_EQ(Cell(chart, source, "targetValue", 4), nullptr);
  EXPECT_EQ(Cell(chart, source, "effect1", 5), nullptr);
  // Only the lower limit reads: the second row has none.
  EXPECT_EQ(Number(chart, source, "confMargin", 6), 12.0);
  EXPECT_EQ(Cell(chart, source, "confMargin", 7), nullptr);

  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(Find(*root, "title")->FindDescendant("text")->OwnText(), "Estimates");
  EXPECT_EQ(Find(*root, "footnote")->FindDescendant("text")->OwnText(),
            "Continuous predictors are fixed at the following values: Age = 34.5000");
  const XMarkupNode* tooltip = Find(*root, "point")->FirstChild("tooltip");
  EXPECT_EQ(tooltip->Children("field")[0]->FindDescendant("text")->OwnText(), "Treatment group");
  EXPECT_EQ(tooltip->Children("field")[1]->FindDescendant("text")->OwnText(), "Estimated Mean");
  const XMarkupNode* effect1 = Find(*root, "variable", "name", "effect1");
  EXPECT_EQ(effect1->Attribute("label"), "Treatment group");
  EXPECT_EQ(effect1->Attribute("categorical"), "true");
  EXPECT_EQ(effect1->Children("relabel").size(), 2u);
  const XMarkupNode* effect3 = Find(*root, "variable", "name", "effect3");
  EXPECT_EQ(effect3->Attribute("label"), "Clinic site");
  EXPECT_EQ(effect3->Attribute("prefix"), "Clinic site = ");
  // The panels' format is the second factor's, as the chart has always had it.
  EXPECT_EQ(effect3->Attribute("format"), "A6");
  const Cuts cuts = CutsOf(chart);
  EXPECT_TRUE(cuts.fColor);
  EXPECT_TRUE(cuts.fLegend);
  EXPECT_TRUE(cuts.fFaceting);
  EXPECT_EQ(cuts.fWidth, "75%");
}

TEST_F(Means, FewerFactorsCutFacetsThenColourAndLegend) {
  for (std::size_t factors = 0; factors <= 2; ++factors) {
    SCOPED_TRACE(factors);
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(Custom(factors));
    const OmChart& chart = *Charts().back();
    const Cuts cuts = CutsOf(chart);
    EXPECT_FALSE(cuts.fFaceting);
    EXPECT_EQ(cuts.fColor, factors == 2);
    EXPECT_EQ(cuts.fLegend, factors == 2);
    EXPECT_EQ(cuts.fWidth, factors == 2 ? "75%" : "99%");
    if (factors == 1) {
      EXPECT_EQ(Text(chart, "source_0", "effect2", 0), "");
      EXPECT_EQ(Text(chart, "source_0", "effect3", 0), "");
    }
    if (factors == 2) {
      EXPECT_EQ(Text(chart, "source_0", "effect3", 0), "");
    }
  }
  EXPECT_EQ(Charts().size(), 3u);
}

TEST_F(Means, AScaleFirstFactorRunsAlongARange) {
  Stats::EMMEANSCustomData custom = Custom(1);
  custom.fEstimates.fvGroup[0].fField = "Days";
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  const std::unique_ptr<XMarkupNode> root = Markup(OnlyChart());
  const XMarkupNode* effect1 = Find(*root, "variable", "name", "effect1");
  EXPECT_EQ(effect1->Attribute("categorical"), "false");
  EXPECT_EQ(effect1->Attribute("label"), "Days");
  EXPECT_TRUE(effect1->Children("relabel").empty());
}

TEST_F(Means, ABlockWithoutItsRequestHasAnEmptyChartThatKeepsFacetsAndLegend) {
  Stats::EMMEANSCustomData custom = Custom(1);
  custom.fEMMEANSIndex = -1;
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Rows(chart, "source_0"), 0);
  const Cuts cuts = CutsOf(chart);
  EXPECT_TRUE(cuts.fFaceting);
  EXPECT_TRUE(cuts.fColor);
  EXPECT_TRUE(cuts.fLegend);
}

TEST_F(Means, ABlockWithoutChartOrMeansHasNoChart) {
  for (const std::string& key : {Stats::csKey_C20, Stats::csKey_C25}) {
    Stats::EMMEANSCustomData custom = Custom(2);
    custom.fvWarningList.push_back({key, {}});
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  }
  EXPECT_TRUE(Charts().empty());
  Stats::EMMEANSCustomData custom = Custom(2);
  custom.fvWarningList.push_back({Stats::csKey_C22, {}});
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  EXPECT_EQ(Charts().size(), 1u);
}

TEST_F(Means, TheFootnoteShowsEachCovariateWithTwoMoreDecimals) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  Stats::EMMEANSCustomData custom;
  EXPECT_TRUE(chart.GetData().GetFixedPredFootnote(custom).empty());
  custom.fvFieldValues.push_back({"Days", CFStatVariableValue()});
  custom.fvFieldValues.back().fValue.SetCompleteValue("12345678.5", *fData.GetVariable(DAYS));
  custom.fvFieldValues.push_back({"Age", CFStatVariableValue()});
  custom.fvFieldValues.back().fValue.SetCompleteValue("12345.125", *fData.GetVariable(AGE));
  custom.fvFieldValues.push_back({"Dose", CFStatVariableValue("7.5")});
  // F8.0 becomes F11.2 and F8.2 F10.4: each value fills its width exactly.
  // A value not in the data stands as the document gave it.
  EXPECT_EQ(chart.GetData().GetFixedPredFootnote(custom).toUTF8(),
            "Continuous predictors are fixed at the following values: Days = 12345678.50, Age = 12345.1250, "
            "Dose = 7.5");
}

TEST_F(Means, MeansByCellAreKeyedByTheFactorsInTheOrderOfTheirNames) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  Stats::EMMEANSCustomData custom;
  EXPECT_TRUE(chart.GetData().buildMeanValue(custom).empty());
  custom.fEstimates.fvGroup = {Array("Sex", {"F", "M", "F"}), Array("Group", {"1", "1", "1"})};
  custom.fEstimates.fMean = Array("", {"10", "11", "12"});
  const std::map<std::string, std::string> means = chart.GetData().buildMeanValue(custom);
  // Group before Sex; the first of equal keys stays.
  ASSERT_EQ(means.size(), 2u);
  EXPECT_EQ(means.at("1F"), "10");
  EXPECT_EQ(means.at("1M"), "11");
}
