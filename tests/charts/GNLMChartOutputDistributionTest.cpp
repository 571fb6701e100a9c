// Observed against predicted, and the target's histogram with its fitted
// distribution in the diagrams' target node: from models written by hand
// and from the documents of the model forms the engine cannot make yet.
#include <fstream>
#include <string>

#include "ChartsTestSupport.h"
#include "host/viz/ChartResources.h"
#include "host/viz/FetchFile.h"
#include "host/viz/XViZTemplate.h"
#include "results/ResultsTestSupport.h"

using namespace charts_test;

namespace {

class Distribution : public ChartTest {
 protected:
  // Observed against predicted values, with frequencies.
  void PredictedByObserved(const std::vector<double>& observed, const std::vector<double>& predicted,
                           const std::vector<double>& frequency, int totalFrequency) {
    Stats::PredByObservData& points = Diagnostics().fPredByObserv;
    points.fDescription = "observedByPredicted";
    points.fTotalFreq = totalFrequency;
    points.fvObserved = observed;
    points.fvPredicted = predicted;
    points.fvFrequency = frequency;
    points.fMinValue = 180.25;
    points.fMaxValue = 412.5;
  }
  // A model of one tested effect, Days, and its target histogram.
  void OneEffect(Stats::EnumDistTypes distribution) {
    AddFixedEffect({DAYS});
    // One count fewer than bins: four bins are drawn.
    TargetHistogram(distribution, {2.0, 4.0, 6.0, 8.0, 10.0}, {3.0, 12.0, 25.0, 11.0});
    fStats.CreateEffectTest()->fvFixedEffects.push_back({0, 3, 40.2, 1.0, 17.0, 0.00001});
  }
  // The histogram laid into the diagram's target node.
  const XMarkupNode* Histogram(const XMarkupNode& diagram) {
    const XMarkupNode* embedded = Find(diagram, "embeddedChart");
    EXPECT_NE(embedded, nullptr) << "no histogram in the target node";
    return embedded != nullptr ? embedded->FirstChild("chart") : nullptr;
  }
};

}  // namespace

TEST_F(Distribution, ObservedAgainstPredictedHoldsThePointsOnOneRange) {
  Settings();
  PredictedByObserved({250.5, 300.25, 180.25}, {260.0, 295.5, 190.75}, {1.0, 2.0, 1.0}, 400);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createPredictedByObservedChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Predicted by Observed");
  EXPECT_EQ(chart.fKind, "GLMMPredictedByObserved");
  EXPECT_EQ(Rows(chart, "source0"), 3);
  EXPECT_EQ(Number(chart, "source0", "X", 1), 300.25);
  EXPECT_EQ(Number(chart, "source0", "Y", 1), 295.5);
  EXPECT_EQ(Number(chart, "source0", "Frequency", 1), 2.0);
  EXPECT_EQ(Number(chart, "source0", "Y", 2), 190.75);
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  ASSERT_TRUE(root);
  const XMarkupNode* x = Find(*root, "axis", "dimension", "x");
  EXPECT_EQ(x->Attribute("min"), "180.25");
  EXPECT_EQ(x->Attribute("max"), "412.5");
  // The observed values by the target's label; both in the target's format.
  const XMarkupNode* observed = Find(*root, "variable", "name", "X");
  const XMarkupNode* predicted = Find(*root, "variable", "name", "Y");
  EXPECT_EQ(observed->Attribute("label"), "Reaction time (ms)");
  EXPECT_EQ(observed->Attribute("format"), "F8.2");
  EXPECT_EQ(predicted->Attribute("label"), "Predicted");
  EXPECT_EQ(predicted->Attribute("format"), "F8.2");
  EXPECT_EQ(Find(*root, "variable", "name", "Frequency")->Attribute("label"), "Frequency");
  EXPECT_EQ(Find(*root, "title")->FindDescendant("text")->OwnText(), "Predicted by Observed");
  EXPECT_FALSE(chart.fSvg.empty());
}

TEST_F(Distribution, FewerThanAHundredRecordsHideTheLegend) {
  Settings();
  PredictedByObserved({1.0}, {1.0}, {1.0}, 99);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createPredictedByObservedChart();
  Diagnostics().fPredByObserv.fTotalFreq = 100;
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createPredictedByObservedChart();
  ASSERT_EQ(Charts().size(), 2u);
  EXPECT_EQ(Find(*Markup(*Charts()[0]), "style", "id", "legendStyle")->Attribute("visible"), "false");
  EXPECT_EQ(Find(*Markup(*Charts()[1]), "style", "id", "legendStyle")->Attribute("visible"), "");
}

TEST_F(Distribution, PointsAreAsManyAsTheShortestArray) {
  Settings();
  PredictedByObserved({1.0, 2.0, 3.0, 4.0}, {1.5, 2.5, 3.5}, {1.0, 1.0, 1.0, 1.0, 1.0}, 5);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createPredictedByObservedChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Rows(chart, "source0"), 3);
  EXPECT_EQ(Number(chart, "source0", "X", 2), 3.0);
  EXPECT_EQ(Cell(chart, "source0", "X", 3), nullptr);
}

TEST_F(Distribution, WithoutItsDescriptionTheBlockHasNoChart) {
  Settings();
  PredictedByObserved({1.0}, {1.0}, {1.0}, 1);
  Diagnostics().fPredByObserv.fDescription.clear();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createPredictedByObservedChart();
  fStats.DestroyModelDiagnostics();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createPredictedByObservedChart();
  EXPECT_TRUE(Charts().empty());
}

TEST_F(Distribution, TargetsWithoutAFittedCurveOfTheirOwnKeepTheNormalOne) {
  for (Stats::EnumDistTypes distribution : {Stats::BINOMIAL, Stats::NOMINAL, Stats::ORDINAL, Stats::NORMAL}) {
    SCOPED_TRACE(distribution);
    fStats.DestroyBuildSettings();
    fStats.DestroyModelDiagnostics();
    OneEffect(distribution);
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
    const std::unique_ptr<XMarkupNode> root = Markup(*Charts().back());
    const XMarkupNode* histogram = Histogram(*root);
    ASSERT_NE(histogram, nullptr);
    EXPECT_EQ(Find(*histogram, "binStatistic")->Attribute("binCount"), "4");
    const XMarkupNode* curve = Find(*histogram, "distributionStatistic");
    EXPECT_EQ(curve->Attribute("distribution"), "normal");
    EXPECT_FALSE(curve->HasAttribute("parameter"));
    EXPECT_FALSE(curve->HasAttribute("secondaryParameter"));
  }
}

TEST_F(Distribution, TheHistogramHoldsTheTargetsBinsInItsFormat) {
  OneEffect(Stats::NORMAL);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  const std::unique_ptr<XMarkupNode> root = Markup(OnlyChart());
  const XMarkupNode* histogram = Histogram(*root);
  ASSERT_NE(histogram, nullptr);
  const XMarkupNode* x = Find(*histogram, "variable", "name", "X");
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(x->Attribute("label"), "Reaction time (ms)");
  EXPECT_EQ(x->Attribute("format"), "F8.2");
  // The data are inline: four bins, the fifth observed value has no count.
  ASSERT_EQ(x->Children("n").size(), 4u);
  EXPECT_EQ(x->Children("n")[3]->OwnText(), "8");
  EXPECT_EQ(Find(*histogram, "variable", "name", "Y")->Children("n")[2]->OwnText(), "25");
  // The target field is a real number.
  EXPECT_EQ(Find(*root, "embeddedChart")->Attribute("fieldType"), "2");
}

TEST_F(Distribution, TheCurvesParametersAreTheStoredOnesAndMissingBeforeTheEffectsChart) {
  struct Case {
    Stats::EnumDistTypes fDistribution;
    const char* fWord;
    const char* fParameter;
    const char* fSecondary;  // empty for none
  };
  const Case cases[] = {{Stats::POISSON, "poisson", "6.5", ""},
                        {Stats::GAMMA, "gamma", "4.5", "0.75"},
                        {Stats::NEGBIN, "binomialnegative", "3", "0.4"},
                        {Stats::IGAUSS, "gaussianinverse", "6.5", "4.5"}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fWord);
    fStats.DestroyBuildSettings();
    fStats.DestroyModelDiagnostics();
    OneEffect(c.fDistribution);
    // The coefficients of the model: the intercept alone.
    Stats::ParamStatsData intercept;
    intercept.fRegrParam.fIsIntercept = true;
    intercept.fSig = 0.001;
    intercept.fEstimate = 250.0;
    fStats.CreateParamCollect()->fvFixedParamEstim.resize(1);
    fStats.GetParamCollect()->fvFixedParamEstim[0].fvParamStats.push_back(intercept);

    GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
    // Before the effects chart has stored them the parameters are missing,
    // and written so.
    chart.createFixedCoefficientsChart();
    chart.createFixedEffectsChart();
    chart.createFixedCoefficientsChart();
    const std::vector<const OmChart*> charts = Charts();
    ASSERT_GE(charts.size(), 3u);
    const std::string missing = "-1.79769e+308";
    const std::unique_ptr<XMarkupNode> before = Markup(*charts[charts.size() - 3]);
    const XMarkupNode* early = Find(*Histogram(*before), "distributionStatistic");
    EXPECT_EQ(early->Attribute("distribution"), c.fWord);
    EXPECT_EQ(early->Attribute("parameter"), missing);
    EXPECT_EQ(early->Attribute("secondaryParameter"), *c.fSecondary != '\0' ? missing : "");
    for (std::size_t k = charts.size() - 2; k < charts.size(); ++k) {
      const std::unique_ptr<XMarkupNode> root = Markup(*charts[k]);
      const XMarkupNode* curve = Find(*Histogram(*root), "distributionStatistic");
      EXPECT_EQ(curve->Attribute("distribution"), c.fWord);
      EXPECT_EQ(curve->Attribute("parameter"), c.fParameter);
      EXPECT_EQ(curve->Attribute("secondaryParameter"), c.fSecondary);
    }
  }
}

TEST_F(Distribution, AHistogramTemplateWithoutBinsIsStillEmbedded) {
  ChartResources resources;
  resources.Template("GLMMFixedCoefficients",
                     FetchFile::fetch(std::string(GLMIX_RESOURCE_DIR) + "/template/GLMMFixedCoefficients.viztemplate",
                                      true, true));
  std::string histogram =
      FetchFile::fetch(std::string(GLMIX_RESOURCE_DIR) + "/template/GLMMHistogram.viztemplate", true, true);
  const std::size_t bins = histogram.find("<binStatistic/>");
  ASSERT_NE(bins, std::string::npos);
  histogram.erase(bins, 15);
  resources.Template("GLMMHistogram", histogram);
  OneEffect(Stats::POISSON);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  const std::unique_ptr<XMarkupNode> root = Markup(OnlyChart());
  const XMarkupNode* embedded = Histogram(*root);
  ASSERT_NE(embedded, nullptr);
  EXPECT_EQ(Find(*embedded, "binStatistic"), nullptr);
  // Without the bins nothing else is patched either.
  EXPECT_EQ(Find(*embedded, "distributionStatistic")->Attribute("distribution"), "normal");
}

TEST_F(Distribution, AHistogramThatCannotBeEmbeddedLeavesTheDiagramWithout) {
  OneEffect(Stats::NORMAL);
  // A target the dictionary does not describe.
  fStats.SetDictMetadata(nullptr);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  const std::unique_ptr<XMarkupNode> root = Markup(OnlyChart());
  EXPECT_EQ(Find(*root, "embeddedChart"), nullptr);
  EXPECT_NE(Find(*root, "node", "chartSlot", "true"), nullptr);
}

namespace {

// The documents of the model forms the engine cannot make yet, read as the
// model viewer reads them.
class GlmmDocuments : public results_test::ReaderTest {};

}  // namespace

TEST_F(GlmmDocuments, EachDistributionGetsItsFittedCurveWithTheDocumentsParameters) {
  const struct {
    const char* fFixture;
    const char* fWord;
    const char* fParameter;
    const char* fSecondary;  // empty for none
  } cases[] = {{"poisson", "poisson", "3.875", ""},                    // the mean
               {"gamma", "gamma", "44.4673", "0.213081"},             // shape and rate
               {"negbin", "binomialnegative", "4.5743", "0.541382"},  // r and p
               {"igauss", "gaussianinverse", "208.688", "9279.77"}};  // mean and shape
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fFixture);
    ASSERT_TRUE(ReadFixture(c.fFixture));
    GNLMChartOutput chart(fProcedure.get(), fData.get(), fStats);
    chart.createFixedEffectsChart();
    chart.createFixedCoefficientsChart();
    const std::vector<const OmChart*> charts = Charts(fDocument);
    ASSERT_GE(charts.size(), 2u);
    EXPECT_EQ(charts[charts.size() - 2]->fTitle, "Fixed Effects");
    EXPECT_EQ(charts.back()->fTitle, "Fixed Coefficients");
    const std::unique_ptr<XMarkupNode> root = Markup(*charts.back());
    const XMarkupNode* embedded = Find(*root, "embeddedChart");
    ASSERT_NE(embedded, nullptr);
    EXPECT_EQ(Find(*embedded, "binStatistic")->Attribute("binCount"), "6");
    const XMarkupNode* curve = Find(*embedded, "distributionStatistic");
    EXPECT_EQ(curve->Attribute("distribution"), c.fWord);
    EXPECT_EQ(curve->Attribute("parameter"), c.fParameter);
    EXPECT_EQ(curve->Attribute("secondaryParameter"), c.fSecondary);
  }
}

TEST_F(GlmmDocuments, AnEventsByTrialsTargetShowsItsEventsAndTheNormalCurve) {
  ASSERT_TRUE(ReadFixture("binomial"));
  GNLMChartOutput chart(fProcedure.get(), fData.get(), fStats);
  chart.createPredictedByObservedChart();
  chart.createFixedEffectsChart();
  const std::vector<const OmChart*> charts = Charts(fDocument);
  ASSERT_EQ(charts.size(), 2u);
  const Stats::PredByObservData& points = fStats.GetModelDiagnostics()->fPredByObserv;
  ASSERT_FALSE(points.fvObserved.empty());
  EXPECT_EQ(Rows(*charts[0], "source0"), static_cast<long>(points.fvObserved.size()));
  for (std::size_t i = 0; i < points.fvObserved.size(); ++i) {
    EXPECT_EQ(Number(*charts[0], "source0", "X", static_cast<long>(i)), points.fvObserved[i]);
    EXPECT_EQ(Number(*charts[0], "source0", "Y", static_cast<long>(i)), points.fvPredicted[i]);
  }
  const std::unique_ptr<XMarkupNode> root = Markup(*charts[1]);
  EXPECT_EQ(Find(*root, "distributionStatistic")->Attribute("distribution"), "normal");
  // The target node is named by the events.
  EXPECT_EQ(Text(*charts[1], "targetPointSource", "Nodes", 0), "events");
  EXPECT_NE(Text(*charts[1], "targetPointSource", "PointTooltip", 0).find("Binomial"), std::string::npos);
}
