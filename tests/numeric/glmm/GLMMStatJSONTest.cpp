// The StatJSON document: its tables of random-effect predictions, read back
// and checked for structure and numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/engine/MCEngineProbability.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMPredictionModel.h"
#include "numeric/glmm/GLMMStatJSONWriter.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/math/MCRegrParameter.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

using MCCommon_850::MCMV;
using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMEBLUPStat;
using MCGLMM_850::GLMMStatJSONWriter;
using MCMath_850::MCModelEffect;
using nlohmann::json;

namespace {

// A fit and what its ExportStatJSON writes, parsed; null when either failed.
struct Exported {
  std::unique_ptr<GLMMAlgorithm> fpAlgorithm;
  json fDoc;
};

Exported Export(GLMMPredictionModel& model, const MCGLMM_850::GLMMSettings& settings) {
  Exported exported;
  exported.fpAlgorithm = std::make_unique<GLMMAlgorithm>(settings, model.GetRecords().GetVarList());
  if (exported.fpAlgorithm->Execute(&model.GetRecords(), 0).IsError()) return exported;
  std::ostringstream out;
  if (exported.fpAlgorithm->ExportStatJSON(out).IsOK()) exported.fDoc = json::parse(out.str());
  return exported;
}

int CountLeaves(const json& categories) {
  int n = 0;
  for (const json& c : categories) n += c.contains("categories") ? CountLeaves(c["categories"]) : 1;
  return n;
}

// The cell at that place; an empty object when there is none.
json FindCell(const json& table, const std::vector<int>& at) {
  for (const json& cell : table["cells"]) {
    if (cell["at"].get<std::vector<int>>() == at) return cell;
  }
  return json::object();
}

}  // namespace

TEST(GLMMStatJSON, SleepstudyTableStructure) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadSleepstudy());
  const Exported exported = Export(model, model.GetSettings());
  const json& doc = exported.fDoc;
  ASSERT_TRUE(doc.is_object());
  const GLMMAlgorithm* pAlgorithm = exported.fpAlgorithm.get();
  ASSERT_TRUE(doc.is_object());
  const json& tables = doc["glmm"]["RandomEffectsParameters"]["tables"];
  ASSERT_TRUE(tables.is_array());
  ASSERT_EQ(tables.size(), 1u);
  const json& table = tables[0];
  EXPECT_EQ(table["name"], "Empirical Best Linear Unbiased Predictions");
  EXPECT_EQ(table["captions"], json::array({"Random Effect Block 1, Subject: Subject"}));
  EXPECT_TRUE(table["notes"].is_array());
  ASSERT_EQ(table["dimensions"].size(), 3u);

  const json& subjects = table["dimensions"][0];
  EXPECT_EQ(subjects["name"], "Subject");
  EXPECT_EQ(subjects["place"], "row");
  ASSERT_EQ(subjects["categories"].size(), 18u);
  EXPECT_EQ(subjects["categories"][0], json({{"label", "308"}}));
  EXPECT_EQ(subjects["categories"][17]["label"], "372");

  const json& effects = table["dimensions"][1];
  EXPECT_EQ(effects["name"], "Effect");
  EXPECT_EQ(effects["place"], "row");
  EXPECT_EQ(effects["categories"], json::array({{{"label", "Intercept"}}, {{"label", "Days"}}}));

  const json& statistics = table["dimensions"][2];
  EXPECT_EQ(statistics["place"], "column");
  EXPECT_EQ(statistics["showName"], false);
  const json& labels = statistics["categories"];
  ASSERT_EQ(labels.size(), 6u);
  EXPECT_EQ(labels[0]["label"], "Prediction");
  EXPECT_EQ(labels[1]["label"], "Std. Error");
  EXPECT_EQ(labels[2]["label"], "t");
  EXPECT_EQ(labels[3]["label"], "df");
  EXPECT_EQ(labels[4]["label"], "Sig.");
  EXPECT_EQ(labels[5]["label"], "95% Confidence Interval");
  EXPECT_EQ(labels[5]["categories"], json::array({{{"label", "Lower Bound"}}, {{"label", "Upper Bound"}}}));

  // Every cell, each at a valid place.
  const json& cells = table["cells"];
  ASSERT_EQ(cells.size(), 18u * 2u * 7u);
  for (const json& cell : cells) {
    ASSERT_EQ(cell["at"].size(), 3u);
    EXPECT_LT(cell["at"][0].get<int>(), 18);
    EXPECT_LT(cell["at"][1].get<int>(), 2);
    EXPECT_LT(cell["at"][2].get<int>(), 7);
    EXPECT_TRUE(cell["value"].is_number());
  }
  const char* formats[] = {"Coefficient", "CoefficientSE", "GeneralStat", "GeneralStat",
                           "Significance", "Coefficient", "Coefficient"};
  for (int k = 0; k < 7; ++k) EXPECT_EQ(FindCell(table, {0, 1, k})["format"], formats[k]) << k;

  // The numbers are those of the output statistics: subject 308's slope.
  const GLMMEBLUPStat& stat = pAlgorithm->GetOutputStats()->GetEBLUPStats()[1];
  ASSERT_EQ(stat.GetColumn(), 1);
  ASSERT_EQ(stat.GetSubjectValues(), std::vector<double>{0});
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 1, 0})["value"].get<double>(), stat.GetPrediction());
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 1, 1})["value"].get<double>(), stat.GetStdError());
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 1, 2})["value"].get<double>(), stat.GetTStat());
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 1, 3})["value"].get<double>(), stat.GetDF());
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 1, 4})["value"].get<double>(), stat.GetSig());
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 1, 5})["value"].get<double>(), stat.GetLowerBound());
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 1, 6})["value"].get<double>(), stat.GetUpperBound());
  // And the known values for subject 308, rounded.
  EXPECT_NEAR(FindCell(table, {0, 0, 0})["value"].get<double>(), 2.2586, 1e-4);
  EXPECT_NEAR(FindCell(table, {0, 1, 0})["value"].get<double>(), 9.1990, 1e-4);
  EXPECT_NEAR(FindCell(table, {0, 0, 1})["value"].get<double>(), 13.100, 1e-3);
  EXPECT_NEAR(FindCell(table, {0, 1, 1})["value"].get<double>(), 2.639, 1e-3);
}

TEST(GLMMStatJSON, OatsCrossedSubjectsNestInGroups) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOats());
  const Exported exported = Export(model, model.GetSettings());
  const json& doc = exported.fDoc;
  ASSERT_TRUE(doc.is_object());
  const GLMMAlgorithm* pAlgorithm = exported.fpAlgorithm.get();
  const json& tables = doc["glmm"]["RandomEffectsParameters"]["tables"];
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(tables[0]["captions"][0], "Random Effect Block 1, Subject: Block");
  EXPECT_EQ(tables[1]["captions"][0], "Random Effect Block 2, Subject: Block * Variety");
  const json& subjects = tables[1]["dimensions"][0];
  EXPECT_EQ(subjects["name"], "Block * Variety");
  ASSERT_EQ(subjects["categories"].size(), 6u);
  EXPECT_EQ(subjects["categories"][0]["label"], "I");
  EXPECT_EQ(subjects["categories"][0]["categories"],
            json::array({{{"label", "Golden Rain"}}, {{"label", "Marvellous"}}, {{"label", "Victory"}}}));
  EXPECT_EQ(CountLeaves(subjects["categories"]), 18);
  EXPECT_EQ(tables[1]["cells"].size(), 18u * 7u);
  // Leaf 4 is block II, Marvellous.
  const auto& stats = pAlgorithm->GetOutputStats()->GetEBLUPStats();
  const GLMMEBLUPStat& stat = stats[6 + 4];
  ASSERT_EQ(stat.GetSubjectValues(), (std::vector<double>{1, 1}));
  EXPECT_DOUBLE_EQ(FindCell(tables[1], {4, 0, 0})["value"].get<double>(), stat.GetPrediction());
}

TEST(GLMMStatJSON, BlockWithoutSubjectsHasNoSubjectDimension) {
  GLMMPredictionModel model;
  model.SetAskEBLUPs({true, false});
  ASSERT_TRUE(model.LoadPenicillin());
  const Exported exported = Export(model, model.GetSettings());
  const json& doc = exported.fDoc;
  ASSERT_TRUE(doc.is_object());
  const json& tables = doc["glmm"]["RandomEffectsParameters"]["tables"];
  ASSERT_EQ(tables.size(), 1u);
  const json& table = tables[0];
  EXPECT_EQ(table["captions"], json::array({"Random Effect Block 1"}));
  ASSERT_EQ(table["dimensions"].size(), 2u);
  const json& effects = table["dimensions"][0];
  ASSERT_EQ(effects["categories"].size(), 1u);
  EXPECT_EQ(effects["categories"][0]["label"], "plate");
  EXPECT_EQ(CountLeaves(effects["categories"]), 24);
  EXPECT_EQ(effects["categories"][0]["categories"][23]["label"], "x");
  ASSERT_EQ(table["cells"].size(), 24u * 7u);
  EXPECT_EQ(table["cells"][0]["at"].size(), 2u);
}

TEST(GLMMStatJSON, ConfidenceLevelOfTheSettings) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOrthodont());
  MCGLMM_850::GLMMSettings settings = model.GetSettings();
  settings.SetConfidenceLevel(0.9);
  const Exported exported = Export(model, settings);
  const json& doc = exported.fDoc;
  ASSERT_TRUE(doc.is_object());
  const GLMMAlgorithm* pAlgorithm = exported.fpAlgorithm.get();
  const json& table = doc["glmm"]["RandomEffectsParameters"]["tables"][0];
  EXPECT_EQ(table["dimensions"][2]["categories"][5]["label"], "90% Confidence Interval");
  const GLMMEBLUPStat& stat = pAlgorithm->GetOutputStats()->GetEBLUPStats()[0];
  const double tq = MCEngine_850::MCEngineProbability::TQuantile(0.95, stat.GetDF());
  EXPECT_NEAR(stat.GetUpperBound(), stat.GetPrediction() + tq * stat.GetStdError(), 1e-10);
  EXPECT_DOUBLE_EQ(FindCell(table, {0, 0, 6})["value"].get<double>(), stat.GetUpperBound());
}

TEST(GLMMStatJSON, NoBlockAskingWritesNoTables) {
  GLMMPredictionModel model;
  model.SetAskEBLUPs({false});
  ASSERT_TRUE(model.LoadOrthodont());
  const Exported exported = Export(model, model.GetSettings());
  const json& doc = exported.fDoc;
  ASSERT_TRUE(doc.is_object());
  EXPECT_EQ(doc["glmm"]["RandomEffectsParameters"]["tables"], json::array());
}

TEST(GLMMStatJSON, BeforeAFitOrAfterAFailedFitIsAnError) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOrthodont());
  GLMMAlgorithm algorithm(model.GetSettings(), model.GetRecords().GetVarList());
  std::ostringstream before;
  const MCCommon_850::MCStatus notFitted = algorithm.ExportStatJSON(before);
  EXPECT_TRUE(notFitted.IsError());
  EXPECT_EQ(notFitted.GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR);
  EXPECT_TRUE(before.str().empty());

  GLMMTestRecords empty;
  const MCCommon_850::MCStatus fit = algorithm.Execute(&empty, 0);
  ASSERT_TRUE(fit.IsError());
  std::ostringstream after;
  const MCCommon_850::MCStatus failed = algorithm.ExportStatJSON(after);
  EXPECT_TRUE(failed.IsError());
  EXPECT_EQ(failed.GetErrorCode(), fit.GetErrorCode());
  EXPECT_TRUE(after.str().empty());
}

TEST(GLMMStatJSON, FailingStreamIsAnError) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOrthodont());
  GLMMAlgorithm algorithm(model.GetSettings(), model.GetRecords().GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.GetRecords(), 0).IsError());
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  EXPECT_EQ(algorithm.ExportStatJSON(out).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR);
}

// The writer on statistics made by hand: names, nesting and missing values.
class StatJSONWriterByHand : public ::testing::Test {
 protected:
  void SetUp() override {
    // A 0, B 1, C 2 (categorical), x 3 (continuous).
    AddVariable("A", {"a1", "a2"});
    AddVariable("B", {"b1", "b2"});
    AddVariable("C", {"c1", "c2"});
    AddVariable("x", {});
  }
  void AddVariable(const std::string& name, const std::vector<std::string>& categories) {
    MCXML_850::IMCVariable var(name, MCMath_850::MCConst::ROLE_PREDICTOR,
                               categories.empty() ? MCMath_850::MCConst::MEASURE_CONTINUOUS
                                                  : MCMath_850::MCConst::MEASURE_NOMINAL);
    var.SetRecordIndex(fVarList.Size());
    for (std::size_t i = 0; i < categories.size(); ++i) var.AddCategory(static_cast<double>(i), categories[i]);
    fVarList.AddVariable(var);
  }
  MCModelEffect Effect(const std::vector<int>& factors, const std::vector<bool>& newLevel,
                       const std::vector<int>& covariates, const std::vector<int>& written) {
    MCModelEffect effect;
    effect.Setup(3, 1, &fSet);
    for (std::size_t i = 0; i < factors.size(); ++i) effect.AddNewFactor(factors[i], newLevel[i]);
    for (int c : covariates) effect.AddCovariate(c);
    effect.SetVarsIndicesForTheEffectInSetting(written);
    return effect;
  }

  std::vector<int> fSet = {0, 1, 2, 3};
  MCXML_850::MCVarList fVarList;
};

TEST_F(StatJSONWriterByHand, EffectNames) {
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(MCModelEffect(), fVarList), "Intercept");
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(Effect({}, {}, {3}, {3}), fVarList), "x");
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(Effect({0, 1}, {false, false}, {}, {0, 1}), fVarList), "A*B");
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(Effect({0, 1}, {false, true}, {}, {1, 0}), fVarList), "B(A)");
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(Effect({0, 1, 2}, {false, true, true}, {}, {2, 1, 0}), fVarList),
            "C(B(A))");
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(Effect({0}, {false}, {3}, {3, 0}), fVarList), "x*A");
  MCModelEffect inParens = Effect({0}, {false}, {3}, {3, 0});
  inParens.SetFactorsInParens(true);
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(inParens, fVarList), "x(A)");
  EXPECT_EQ(GLMMStatJSONWriter::EffectName(Effect({}, {}, {3, 3}, {3, 3}), fVarList), "x*x");
}

TEST_F(StatJSONWriterByHand, ValueTexts) {
  EXPECT_EQ(GLMMStatJSONWriter::ValueText(fVarList, 0, 1.0), "a2");
  EXPECT_EQ(GLMMStatJSONWriter::ValueText(fVarList, 0, 2.0), "2");
  EXPECT_EQ(GLMMStatJSONWriter::ValueText(fVarList, 3, 2.5), "2.5");
  EXPECT_EQ(GLMMStatJSONWriter::ValueText(fVarList, 3, 1e-7), "1e-07");
  EXPECT_EQ(GLMMStatJSONWriter::ValueText(fVarList, 9, 3.0), "3");
}

TEST_F(StatJSONWriterByHand, ThreeSubjectVariablesAndMissingValues) {
  MCGLMM_850::GLMMSettings settings;
  MCGLMM_850::GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddEffect(Effect({0}, {false}, {3}, {0, 3}));
  block.AddSubjectVar(0);
  block.AddSubjectVar(1);
  block.AddSubjectVar(2);
  block.SetComputeEBLUPs(true);
  settings.AddRandomSpec(block);

  MCGLMM_850::GLMMOutputStats stats;
  std::vector<MCMath_850::MCRegrParameter> params(3);
  params[1].SetupFromEffect(block.GetEffects()[1], 1, 0);
  params[2].SetupFromEffect(block.GetEffects()[1], 1, 1);
  stats.SetGammaBasicParameters({params});
  std::vector<GLMMEBLUPStat> eblups;
  const std::vector<std::vector<double>> subjects = {{0, 0, 1}, {0, 1, 0}, {0, 1, 1}, {1, 0, 0}};
  for (const auto& subject : subjects) {
    for (int col = 0; col < 3; ++col) {
      GLMMEBLUPStat stat;
      stat.SetSubjectValues(subject);
      stat.SetColumn(col);
      stat.SetPrediction(10.0 * subject[2] + col);
      stat.SetStdError(1.0);
      eblups.push_back(stat);
    }
  }
  stats.SetEBLUPStats(eblups);
  std::ostringstream out;
  ASSERT_TRUE(GLMMStatJSONWriter(settings, fVarList, stats).Write(out).IsOK());
  const json table = json::parse(out.str())["glmm"]["RandomEffectsParameters"]["tables"][0];
  EXPECT_EQ(table["captions"][0], "Random Effect Block 1, Subject: A * B * C");
  const json& subjectDim = table["dimensions"][0];
  EXPECT_EQ(subjectDim["name"], "A * B * C");
  const json expected = json::parse(R"([
    {"label": "a1", "categories": [
      {"label": "b1", "categories": [{"label": "c2"}]},
      {"label": "b2", "categories": [{"label": "c1"}, {"label": "c2"}]}]},
    {"label": "a2", "categories": [
      {"label": "b1", "categories": [{"label": "c1"}]}]}])");
  EXPECT_EQ(subjectDim["categories"], expected);
  const json& effectDim = table["dimensions"][1];
  EXPECT_EQ(effectDim["categories"], json::parse(R"([{"label": "Intercept"},
      {"label": "A*x", "categories": [{"label": "a1"}, {"label": "a2"}]}])"));
  ASSERT_EQ(table["cells"].size(), 4u * 3u * 7u);
  const json cell = FindCell(table, {2, 1, 0});
  ASSERT_TRUE(cell.contains("value"));
  EXPECT_EQ(cell["value"], 11.0);
  // Statistics that were not computed are null.
  EXPECT_TRUE(FindCell(table, {2, 1, 3})["value"].is_null());
  EXPECT_TRUE(FindCell(table, {2, 1, 5})["value"].is_null());
  EXPECT_EQ(FindCell(table, {2, 1, 1})["value"], 1.0);
}

TEST_F(StatJSONWriterByHand, BlockWithoutPredictionsHasNoTable) {
  MCGLMM_850::GLMMSettings settings;
  MCGLMM_850::GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddSubjectVar(0);
  block.SetComputeEBLUPs(true);
  settings.AddRandomSpec(block);
  MCGLMM_850::GLMMOutputStats stats;
  stats.SetGammaBasicParameters({std::vector<MCMath_850::MCRegrParameter>(1)});
  std::ostringstream out;
  ASSERT_TRUE(GLMMStatJSONWriter(settings, fVarList, stats).Write(out).IsOK());
  EXPECT_EQ(json::parse(out.str()), json::parse(R"({"glmm": {"RandomEffectsParameters": {"tables": []}}})"));
}
