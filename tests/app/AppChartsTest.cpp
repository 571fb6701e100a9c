// The model viewer's charts of real fits. The examples of sleepstudy, oats
// and orthodont are run through the program; each fit's saved documents are
// read back into the result model, and the charts drawn from that model
// must hold its numbers: the predicted and observed values, the target's
// histogram, the coefficients and their significance, the means with their
// bounds, and the contrasts. A model of oats with both of its factors and a
// fit of sleepstudy are checked against the reference values of R (see
// tests/numeric/reference), which the engine's numbers are tested against as
// well. The charts of each are opened in a real browser.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "app/AppProcedureHook.h"
#include "host/render/BrowserProbe.h"
#include "host/render/BrowserSupport.h"
#include "host/render/OmHtmlRenderer.h"
#include "app/AppSession.h"
#include "host/cf/CFMetaData.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/files/ScratchFolder.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/viz/XMarkupReader.h"
#include "results/GNLMOutputStats.h"
#include "results/GNLMParseOutXML.h"
#include "run/MixDriver.h"
#include "viewer/GNLMOutput.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Stats = GNLMOutputStats;

namespace {

std::string ReadText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string Example(const std::string& name) {
  return ReadText(fs::path(GLMIX_SOURCE_DIR) / "examples" / (name + ".gmx"));
}

// Numbers as the tooltips show them: three decimals.
std::string Decimals3(double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.3f", value);
  const std::string text = buffer;
  return text == "-0.000" ? "0.000" : text;
}

double Parse(const std::string& text) {
  std::istringstream in(text);
  double value = std::nan("");
  in >> value;
  return value;
}

// The edge weight of a significance, by its bounds.
double WeightOf(double sig) {
  const double bounds[] = {0.0001, 0.0005, 0.001, 0.005, 0.01, 0.05, 0.1, 0.2};
  for (int k = 0; k < 8; ++k) {
    if (sig < bounds[k]) return 9.0 - k;
  }
  return 1.0;
}

const OmChartData::Cell* CellOf(const OmChart& chart, const std::string& source, const std::string& name, long row) {
  const OmChartData::Source* found = chart.fData.FindSource(source);
  const OmChartData::Variable* variable = found != nullptr ? found->FindVariable(name) : nullptr;
  if (variable == nullptr) return nullptr;
  const auto cell = variable->fCells.find(row);
  return cell != variable->fCells.end() ? &cell->second : nullptr;
}
double NumberOf(const OmChart& chart, const std::string& source, const std::string& name, long row) {
  const OmChartData::Cell* cell = CellOf(chart, source, name, row);
  return cell != nullptr && !cell->fbText ? cell->fNumber : std::nan("");
}
std::string TextOf(const OmChart& chart, const std::string& source, const std::string& name, long row) {
  const OmChartData::Cell* cell = CellOf(chart, source, name, row);
  return cell != nullptr && cell->fbText ? cell->fText : "<not a text>";
}
long RowsOf(const OmChart& chart, const std::string& source) {
  const OmChartData::Source* found = chart.fData.FindSource(source);
  return found != nullptr ? found->fRowCount : -1;
}

const XMarkupNode* FindElement(const XMarkupNode& node, const std::string& name) {
  if (node.fName == name) return &node;
  for (const auto& child : node.fvChildren) {
    if (const XMarkupNode* found = FindElement(*child, name)) return found;
  }
  return nullptr;
}

std::string Messages(const OmHeading& heading) {
  std::string messages;
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::MESSAGE) messages += item.fpMessage->fText + "\n";
    if (item.fKind == OmItem::HEADING) messages += Messages(*item.fpHeading);
  }
  return messages;
}

void CollectCharts(const OmHeading& heading, std::vector<const OmChart*>& charts) {
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::CHART) charts.push_back(item.fpChart.get());
    if (item.fKind == OmItem::HEADING) CollectCharts(*item.fpHeading, charts);
  }
}

// One fit of a run: its result model, read from the documents the program
// saved, and the model viewer's output drawn from it, charts and tables.
class Fit {
 public:
  Fit(ZORV_Dataset& data, const fs::path& pmml, const fs::path& statXML) : fMetaData(data) {
    fStats.SetDictMetadata(&fMetaData);
    BpProcedure procedure(fDocument.fRoot.AddHeading("Model"), "Model", "Generalized Linear Mixed Models");
    // The reader keeps the documents it is given.
    const std::string model = ReadText(pmml);
    const std::string results = ReadText(statXML);
    GNLMParseOutXML reader(&procedure, &data, &fStats, model, results);
    fbRead = reader.ParseXML();
    if (!fbRead) return;
    GNLMOutput(&procedure, &data, &fStats).DisplayOutput();
  }

  bool Read() const { return fbRead; }
  const OmDocument& Document() const { return fDocument; }
  const GNLMOutputStats& Model() const { return fStats; }
  std::vector<const OmChart*> Charts() const {
    std::vector<const OmChart*> charts;
    CollectCharts(fDocument.fRoot, charts);
    return charts;
  }
  std::vector<const OmChart*> ChartsOf(const std::string& kind) const {
    std::vector<const OmChart*> charts;
    for (const OmChart* chart : Charts()) {
      if (chart->fKind == kind) charts.push_back(chart);
    }
    return charts;
  }
  const OmChart* Titled(const std::string& title) const {
    for (const OmChart* chart : Charts()) {
      if (chart->fTitle == title) return chart;
    }
    return nullptr;
  }

 private:
  CFMetaData fMetaData;
  GNLMOutputStats fStats;
  OmDocument fDocument;
  bool fbRead = false;
};

class AppCharts : public ::testing::Test {
 protected:
  void SetUp() override { AppProcedureHook::Set(MixDriver); }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    ZORV_Session::Current().BeginCommand();
  }

  // Runs a command file's text and reads its one fit back.
  std::unique_ptr<Fit> Run(const std::string& text) {
    AppOptions options;
    options.fOutputDir = fOutput.string();
    fpSession.reset(new AppSession(options));
    fpSession->RunText(text, "t.gmx", std::string(GLMIX_SOURCE_DIR) + "/examples");
    EXPECT_EQ(fpSession->ExitStatus(), 0);
    std::unique_ptr<Fit> fit(
        new Fit(*fpSession->GetData(), fOutput / "model-1.xml", fOutput / "statxml-1.xml"));
    EXPECT_TRUE(fit->Read()) << Messages(fit->Document().fRoot);
    return fit;
  }

  ScratchFolder fScratch{"glmixfit-charts-test"};
  const fs::path& fOutput = fScratch.Path();
  std::unique_ptr<AppSession> fpSession;
};

// ---- the charts hold the model's numbers ----

void CheckPredictedByObserved(const Fit& fit) {
  const Stats::PredByObservData& points = fit.Model().GetModelDiagnostics()->fPredByObserv;
  const std::vector<const OmChart*> charts = fit.ChartsOf("GLMMPredictedByObserved");
  ASSERT_EQ(charts.size(), 1u);
  const OmChart& chart = *charts[0];
  ASSERT_FALSE(points.fvObserved.empty());
  ASSERT_EQ(RowsOf(chart, "source0"), static_cast<long>(points.fvObserved.size()));
  for (std::size_t i = 0; i < points.fvObserved.size(); ++i) {
    const long row = static_cast<long>(i);
    EXPECT_EQ(NumberOf(chart, "source0", "X", row), points.fvObserved[i]);
    EXPECT_EQ(NumberOf(chart, "source0", "Y", row), points.fvPredicted[i]);
    EXPECT_EQ(NumberOf(chart, "source0", "Frequency", row), points.fvFrequency[i]);
  }
  XMarkupError error;
  const std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(chart.fMarkup, error);
  ASSERT_TRUE(root);
  const XMarkupNode* axis = FindElement(*root, "axis");
  EXPECT_NEAR(Parse(axis->Attribute("min")), points.fMinValue, 1e-5 * std::fabs(points.fMinValue));
  EXPECT_NEAR(Parse(axis->Attribute("max")), points.fMaxValue, 1e-5 * std::fabs(points.fMaxValue));
}

// The diagram's target node holds the target's histogram with its bins.
void CheckHistogram(const Fit& fit, const OmChart& diagram) {
  const Stats::TargetDistData& target = fit.Model().GetModelDiagnostics()->fTargetDist;
  XMarkupError error;
  const std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(diagram.fMarkup, error);
  ASSERT_TRUE(root);
  const XMarkupNode* embedded = FindElement(*root, "embeddedChart");
  ASSERT_NE(embedded, nullptr) << diagram.fTitle;
  std::vector<double> bins;
  std::vector<double> counts;
  for (const XMarkupNode* variable : FindElement(*embedded, "data")->Children("variable")) {
    for (const XMarkupNode* n : variable->Children("n")) {
      (variable->Attribute("name") == "X" ? bins : counts).push_back(Parse(n->OwnText()));
    }
  }
  EXPECT_EQ(bins, target.fvObserved);
  EXPECT_EQ(counts, target.fvFrequency);
  EXPECT_EQ(FindElement(*embedded, "binStatistic")->Attribute("binCount"), std::to_string(target.fvObserved.size()));
}

void CheckFixedEffects(const Fit& fit, ZORV_Dataset& data) {
  const OmChart* chart = fit.Titled("Fixed Effects");
  ASSERT_NE(chart, nullptr);
  const Stats::BuildSettingsData& settings = *fit.Model().GetBuildSettings();
  const std::vector<Stats::EffectStatData>& tests = fit.Model().GetEffectTest()->fvFixedEffects;
  ASSERT_FALSE(tests.empty());
  for (std::size_t i = 0; i < tests.size(); ++i) {
    SCOPED_TRACE(i);
    const long row = static_cast<long>(i);
    const Stats::ModelEffectData& effect = settings.fvFixedEffectList[static_cast<std::size_t>(tests[i].fTestID)];
    std::string name;
    for (int field : effect.fvFieldIndices) name += (name.empty() ? "" : "*") + std::string(data.GetVariable(field)->GetName());
    EXPECT_EQ(TextOf(*chart, "pointSource", "Nodes", row), name);
    EXPECT_EQ(NumberOf(*chart, "edgeSource", "Weight", row), WeightOf(tests[i].fSig));
    EXPECT_EQ(TextOf(*chart, "edgeSource", "LineTooltip", row), "Significance = " + Decimals3(tests[i].fSig));
  }
  CheckHistogram(fit, *chart);
}

void CheckFixedCoefficients(const Fit& fit) {
  const OmChart* chart = fit.Titled("Fixed Coefficients");
  ASSERT_NE(chart, nullptr);
  long row = 0;
  for (const Stats::ParamStatsData& param : fit.Model().GetParamCollect()->fvFixedParamEstim[0].fvParamStats) {
    if (param.fIsRedundant) continue;
    SCOPED_TRACE(param.fParamLabel);
    const std::string node = param.fRegrParam.fIsIntercept ? "Intercept" : param.fParamLabel;
    EXPECT_EQ(TextOf(*chart, "pointSource", "Nodes", row), node);
    EXPECT_EQ(TextOf(*chart, "edgeSource", "LineTooltip", row),
              "Coefficient = " + Decimals3(param.fEstimate) + "\nSignificance = " + Decimals3(param.fSig));
    EXPECT_EQ(TextOf(*chart, "edgeSource", "Weight2", row), param.fEstimate >= 0.0 ? "Positive" : "Negative");
    EXPECT_EQ(NumberOf(*chart, "edgeSource", "Weight", row), WeightOf(param.fSig));
    ++row;
  }
  EXPECT_EQ(RowsOf(*chart, "pointSource"), row);
  CheckHistogram(fit, *chart);
}

// Two rows a cell, the mean on both and one bound on each.
void CheckMeanRows(const OmChart& chart, const std::string& source, const std::string& mean,
                   const Stats::EMMEANSEstimatesData& estimates) {
  ASSERT_FALSE(estimates.fMean.fValues.empty());
  for (std::size_t r = 0; r < estimates.fMean.fValues.size(); ++r) {
    const long row = static_cast<long>(2 * r);
    EXPECT_EQ(NumberOf(chart, source, mean, row), Parse(estimates.fMean.fValues[r]));
    EXPECT_EQ(NumberOf(chart, source, mean, row + 1), Parse(estimates.fMean.fValues[r]));
    EXPECT_EQ(NumberOf(chart, source, "confMargin", row), Parse(estimates.fConfIntervalLower.fValues[r]));
    EXPECT_EQ(NumberOf(chart, source, "confMargin", row + 1), Parse(estimates.fConfIntervalUpper.fValues[r]));
  }
}

void CheckMeans(const Fit& fit) {
  const std::vector<Stats::EMMEANSEstimatesData>& tops = *fit.Model().GetEMMEANSSignifCollect();
  const std::vector<const OmChart*> charts = fit.ChartsOf("GLMMEmMeans");
  ASSERT_EQ(charts.size(), std::min<std::size_t>(tops.size(), 11));
  for (std::size_t c = 0; c < charts.size(); ++c) CheckMeanRows(*charts[c], "source0", "target", tops[c]);
  const std::vector<Stats::EMMEANSCustomData>& blocks = *fit.Model().GetEMMEANSCustomCollect();
  const std::vector<const OmChart*> custom = fit.ChartsOf("GLMMCustomEffects");
  ASSERT_EQ(custom.size(), blocks.size());
  for (std::size_t b = 0; b < blocks.size(); ++b) CheckMeanRows(*custom[b], "source_0", "targetValue", blocks[b].fEstimates);
}

// The bars of simple contrasts stand between the reference mean and each
// level's mean, with the contrast's interval moved onto the reference.
void CheckSimpleContrasts(const OmChart& chart, const Stats::EMMEANSCustomData& custom) {
  const Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
  const std::size_t rows = contrasts.fContrastEstimate.fValues.size();
  ASSERT_GT(rows, 0u);
  for (std::size_t r = 0; r < rows; ++r) {
    const long row = static_cast<long>(2 * r);
    const double reference = NumberOf(chart, "source", "value", row);
    const double mean = NumberOf(chart, "source", "value", row + 1);
    EXPECT_NEAR(mean - reference, Parse(contrasts.fContrastEstimate.fValues[r]), 1e-9 * std::fabs(mean));
    EXPECT_NEAR(NumberOf(chart, "source", "confMargin", row), Parse(contrasts.fConfIntervalLower.fValues[r]) + reference,
                1e-9 * std::fabs(mean));
    EXPECT_NEAR(NumberOf(chart, "source", "confMargin", row + 1),
                Parse(contrasts.fConfIntervalUpper.fValues[r]) + reference, 1e-9 * std::fabs(mean));
    const bool significant = Parse(contrasts.fAdjustedSig.fValues[r]) < contrasts.fAdjustedSigLevel;
    EXPECT_EQ(NumberOf(chart, "source", "type", row), significant ? 1.0 : 0.0);
  }
}

// Each pair that is not certain to be alike is an edge, coloured by its
// adjusted significance. Only levels that are numbers give their edges a
// width and the significance.
void CheckPairwiseContrasts(const OmChart& chart, const Stats::EMMEANSCustomData& custom) {
  const Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
  std::vector<double> expected;
  for (const std::string& sig : contrasts.fAdjustedSig.fValues) {
    if (Parse(sig) != 1.0) expected.push_back(Parse(sig));
  }
  ASSERT_EQ(RowsOf(chart, "edgeSource_1"), static_cast<long>(expected.size()));
  std::vector<double> drawn;
  int significant = 0;
  for (long e = 0; e < RowsOf(chart, "edgeSource_1"); ++e) {
    const double type = NumberOf(chart, "edgeSource_1", "type", e);
    significant += type == 1.0 ? 1 : 0;
    const OmChartData::Cell* to = CellOf(chart, "edgeSource_1", "to", e);
    ASSERT_NE(to, nullptr);
    if (to->fbText) {
      EXPECT_EQ(CellOf(chart, "edgeSource_1", "weight", e), nullptr);
      continue;
    }
    const double sig = NumberOf(chart, "edgeSource_1", "weightInPopup", e);
    drawn.push_back(sig);
    EXPECT_DOUBLE_EQ(NumberOf(chart, "edgeSource_1", "weight", e), 1.0 / ((1.0 - sig) * (1.0 - sig)));
    EXPECT_EQ(type, sig < contrasts.fAdjustedSigLevel ? 1.0 : 0.0);
  }
  EXPECT_EQ(significant, std::count_if(expected.begin(), expected.end(),
                                       [&contrasts](double sig) { return sig < contrasts.fAdjustedSigLevel; }));
  if (drawn.empty()) return;
  std::sort(drawn.begin(), drawn.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(drawn, expected);
}

void CheckEveryChart(const Fit& fit, ZORV_Dataset& data) {
  {
    SCOPED_TRACE("predicted by observed");
    CheckPredictedByObserved(fit);
  }
  {
    SCOPED_TRACE("fixed effects");
    CheckFixedEffects(fit, data);
  }
  {
    SCOPED_TRACE("fixed coefficients");
    CheckFixedCoefficients(fit);
  }
  {
    SCOPED_TRACE("means");
    if (fit.Model().GetEMMEANSSignifCollect() != nullptr) CheckMeans(fit);
  }
}

// ---- reference values of R ----

// The model of the reference values of oats: both factors and their
// interaction, with a simple and a pairwise comparison.
const char* const kOatsByBothFactors =
      "LOAD 'data/oats.csv'.\n"
      "GLMIXFIT yield BY Variety nitro\n"
      "  /FIXED Variety nitro Variety*nitro\n"
      "  /RANDOM INTERCEPT SUBJECTS=Block\n"
      "  /RANDOM INTERCEPT SUBJECTS=Block*Variety\n"
      "  /MEANS Variety*nitro COMPARE=Variety REFERENCE='Golden Rain' ADJUST=SEQUENTIALBONFERRONI\n"
      "  /MEANS nitro COMPARE=nitro ADJUST=SEQUENTIALBONFERRONI.\n";

Json Reference(const std::string& file) {
  return Json::parse(ReadText(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / file));
}

void ExpectClose(double actual, double expected, const std::string& what) {
  EXPECT_NEAR(actual, expected, 1e-4 * std::max(1.0, std::fabs(expected))) << what;
}

}  // namespace

TEST_F(AppCharts, SleepstudysChartsHoldItsFit) {
  const std::unique_ptr<Fit> fit = Run(Example("sleepstudy"));
  ASSERT_TRUE(fit->Read());
  CheckEveryChart(*fit, *fpSession->GetData());
  // A covariate alone: no means, no contrasts.
  EXPECT_EQ(fit->Charts().size(), 3u);

  // The coefficients are R's.
  const Json reference = Reference("sleepstudy_un.json");
  const OmChart* coefficients = fit->Titled("Fixed Coefficients");
  ASSERT_NE(coefficients, nullptr);
  for (long row = 0; row < 2; ++row) {
    const Json& beta = reference["beta"][static_cast<std::size_t>(row)];
    EXPECT_EQ(TextOf(*coefficients, "edgeSource", "LineTooltip", row),
              "Coefficient = " + Decimals3(beta["estimate"].get<double>()) + "\nSignificance = " +
                  Decimals3(beta["p"].get<double>()));
  }
  EXPECT_EQ(TextOf(*coefficients, "pointSource", "Nodes", 1), "Days");
  EXPECT_EQ(TextOf(*coefficients, "pointSource", "Type", 1), "continuous");
  EXPECT_EQ(NumberOf(*coefficients, "edgeSource", "Weight", 1), 9.0);
}

TEST_F(AppCharts, OatsChartsHoldItsFitAndThePairwiseNetworkOfTheVarieties) {
  const std::unique_ptr<Fit> fit = Run(Example("oats"));
  ASSERT_TRUE(fit->Read());
  CheckEveryChart(*fit, *fpSession->GetData());
  const std::vector<const OmChart*> networks = fit->ChartsOf("GLMMPairwiseContrasts");
  ASSERT_EQ(networks.size(), 1u);
  const Stats::EMMEANSCustomData& block = fit->Model().GetEMMEANSCustomCollect()->front();
  CheckPairwiseContrasts(*networks[0], block);
  // The three varieties are the nodes, by their names.
  ASSERT_EQ(RowsOf(*networks[0], "nodeSource_1"), 3);
  EXPECT_EQ(TextOf(*networks[0], "nodeSource_1", "node", 0), "Golden Rain");
  EXPECT_EQ(TextOf(*networks[0], "nodeSource_1", "node", 2), "Victory");
  EXPECT_EQ(fit->ChartsOf("GLMMEmMeans").size(), 1u);
}

TEST_F(AppCharts, OrthodontsChartsHoldItsFitAndTheSimpleContrastOfTheSexes) {
  const std::unique_ptr<Fit> fit = Run(Example("orthodont"));
  ASSERT_TRUE(fit->Read());
  CheckEveryChart(*fit, *fpSession->GetData());
  const std::vector<const OmChart*> bars = fit->ChartsOf("GLMMSimpleContrasts");
  ASSERT_EQ(bars.size(), 1u);
  const Stats::EMMEANSCustomData& block = fit->Model().GetEMMEANSCustomCollect()->front();
  CheckSimpleContrasts(*bars[0], block);
  // Male against the reference, Female: the reference line is Female's mean
  // (the contrast's own arithmetic, equal to the mean's to rounding).
  const Stats::EMMEANSEstimatesData& means = block.fEstimates;
  ASSERT_EQ(means.fvGroup[0].fValues, std::vector<std::string>({"Female", "Male"}));
  const double female = Parse(means.fMean.fValues[0]);
  EXPECT_NEAR(NumberOf(*bars[0], "source", "value", 0), female, 1e-12 * std::fabs(female));
  EXPECT_EQ(TextOf(*bars[0], "source", "category", 0), "Male");
}

TEST_F(AppCharts, TheMeansAndContrastsOfOatsByBothFactorsAreRs) {
  const std::unique_ptr<Fit> fit = Run(kOatsByBothFactors);
  ASSERT_TRUE(fit->Read());
  CheckEveryChart(*fit, *fpSession->GetData());
  const Json reference = Reference("emmeans/oats.json");

  // The most significant effects first, each chart with R's means and bounds.
  const std::vector<const OmChart*> tops = fit->ChartsOf("GLMMEmMeans");
  ASSERT_EQ(tops.size(), reference["automatic"].size());
  EXPECT_EQ(tops[0]->fTitle, "Yield (quarter pounds per subplot) by Nitrogen (hundredweight per acre)");
  EXPECT_EQ(tops[1]->fTitle, "Yield (quarter pounds per subplot) by Variety of oats");
  EXPECT_EQ(tops[2]->fTitle,
            "Yield (quarter pounds per subplot) by Variety of oats * Nitrogen (hundredweight per acre)");
  for (std::size_t c = 0; c < tops.size(); ++c) {
    const Json& table = reference["automatic"][c];
    for (const Json& mean : table["means"]) {
      // Find the chart's cell of the same levels.
      bool found = false;
      for (long row = 0; row < RowsOf(*tops[c], "source0"); row += 2) {
        bool same = true;
        std::size_t k = 0;
        for (const std::string& factor : table["factors"].get<std::vector<std::string>>()) {
          const std::string column = k == 0 ? "effect1" : "effect2";
          const std::string level = mean["levels"][factor];
          const OmChartData::Cell* cell = CellOf(*tops[c], "source0", column, row);
          same = same && cell != nullptr && (cell->fbText ? cell->fText == level : cell->fNumber == Parse(level));
          ++k;
        }
        if (!same) continue;
        found = true;
        ExpectClose(NumberOf(*tops[c], "source0", "target", row), mean["estimate"], "mean");
        ExpectClose(NumberOf(*tops[c], "source0", "confMargin", row), mean["lower"], "lower");
        ExpectClose(NumberOf(*tops[c], "source0", "confMargin", row + 1), mean["upper"], "upper");
      }
      EXPECT_TRUE(found) << mean.dump();
    }
  }

  // Varieties against Golden Rain within each amount of nitrogen: the bars
  // stand on Golden Rain's mean and reach the variety's.
  const std::vector<const OmChart*> bars = fit->ChartsOf("GLMMSimpleContrasts");
  ASSERT_EQ(bars.size(), 1u);
  const Json& simple = reference["requests"][1];
  const std::vector<Json> means = simple["means"].get<std::vector<Json>>();
  auto meanOf = [&means](const std::string& variety, double nitro) {
    for (const Json& mean : means) {
      if (mean["levels"]["Variety"] == variety && Parse(mean["levels"]["nitro"]) == nitro) {
        return mean["estimate"].get<double>();
      }
    }
    return std::nan("");
  };
  ASSERT_EQ(RowsOf(*bars[0], "source"), 2 * static_cast<long>(simple["contrasts"].size()));
  for (long row = 0; row < RowsOf(*bars[0], "source"); row += 2) {
    const std::string variety = TextOf(*bars[0], "source", "category", row);
    const double nitro = NumberOf(*bars[0], "source", "facet1", row);
    const Json* contrast = nullptr;
    for (const Json& candidate : simple["contrasts"]) {
      if (candidate["level"] == variety && Parse(candidate["by"]["nitro"]) == nitro) contrast = &candidate;
    }
    ASSERT_NE(contrast, nullptr) << variety << " " << nitro;
    const double reference = meanOf("Golden Rain", nitro);
    ExpectClose(NumberOf(*bars[0], "source", "value", row), reference, "reference line");
    ExpectClose(NumberOf(*bars[0], "source", "value", row + 1), meanOf(variety, nitro), "mean");
    ExpectClose(NumberOf(*bars[0], "source", "confMargin", row), (*contrast)["lower"].get<double>() + reference,
                "lower");
    ExpectClose(NumberOf(*bars[0], "source", "confMargin", row + 1), (*contrast)["upper"].get<double>() + reference,
                "upper");
    EXPECT_EQ(NumberOf(*bars[0], "source", "type", row), (*contrast)["p_adjusted"].get<double>() < 0.05 ? 1.0 : 0.0);
  }

  // The amounts of nitrogen in pairs: each edge has R's adjusted
  // significance.
  const std::vector<const OmChart*> networks = fit->ChartsOf("GLMMPairwiseContrasts");
  ASSERT_EQ(networks.size(), 1u);
  const Json& pairwise = reference["requests"][3];
  ASSERT_EQ(RowsOf(*networks[0], "edgeSource_1"), static_cast<long>(pairwise["contrasts"].size()));
  for (long e = 0; e < RowsOf(*networks[0], "edgeSource_1"); ++e) {
    const double a = NumberOf(*networks[0], "edgeSource_1", "from", e);
    const double b = NumberOf(*networks[0], "edgeSource_1", "to", e);
    const Json* contrast = nullptr;
    for (const Json& candidate : pairwise["contrasts"]) {
      const double level = Parse(candidate["level"]);
      const double other = Parse(candidate["reference"]);
      if ((level == a && other == b) || (level == b && other == a)) contrast = &candidate;
    }
    ASSERT_NE(contrast, nullptr) << a << " " << b;
    ExpectClose(NumberOf(*networks[0], "edgeSource_1", "weightInPopup", e), (*contrast)["p_adjusted"], "p");
    EXPECT_EQ(NumberOf(*networks[0], "edgeSource_1", "type", e),
              (*contrast)["p_adjusted"].get<double>() < 0.05 ? 1.0 : 0.0);
  }
}

namespace {

// Every chart of a report is drawn, with marks and texts, nothing outside
// its area and no two texts on top of each other.
void ExpectReadableInABrowser(const OmDocument& document, std::size_t charts, const std::string& name) {
  const std::string browser = browser_support::Browser();
  ASSERT_FALSE(browser.empty()) << "Chromium is not installed: the browser check of the HTML report needs it "
                                   "(scripts/install-deps.sh installs it)";
  const std::string scratch = browser_support::Scratch("glmixfit-charts-browser-" + name);
  const std::string report = OmHtmlRenderer().Render(document);
  ASSERT_EQ(report.find("class=\"message"), std::string::npos) << "a chart was refused";
  Json findings;
  std::string error;
  ASSERT_TRUE(BrowserProbe::Measure(browser, scratch, report, "", findings, error)) << error;
  ASSERT_EQ(findings.size(), charts);
  for (const Json& chart : findings) {
    const std::string kind = chart["kind"];
    SCOPED_TRACE(kind);
    BrowserProbe::ExpectReadable(chart);
  }
  std::error_code ignored;
  fs::remove_all(scratch, ignored);
}

}  // namespace

TEST_F(AppCharts, EveryChartOfTheExamplesIsReadableInABrowser) {
  const std::unique_ptr<Fit> sleep = Run(Example("sleepstudy"));
  ExpectReadableInABrowser(sleep->Document(), 3, "sleepstudy");
  const std::unique_ptr<Fit> oats = Run(Example("oats"));
  ExpectReadableInABrowser(oats->Document(), 6, "oats");
  const std::unique_ptr<Fit> ortho = Run(Example("orthodont"));
  ExpectReadableInABrowser(ortho->Document(), 6, "orthodont");
  const std::unique_ptr<Fit> factors = Run(kOatsByBothFactors);
  ExpectReadableInABrowser(factors->Document(), 10, "factors");
}
