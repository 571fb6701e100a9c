// Estimated marginal means through GLMMAlgorithm compared with the committed
// reference values of tests/data/numeric/reference/emmeans, written by
// tests/numeric/reference/make_emmeans_reference.R.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/xml/IMCVariable.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMEmmeansContrast;
using MCGLMM_850::GLMMEmmeansMean;
using MCGLMM_850::GLMMEmmeansStat;
using MCGLMM_850::GLMMEmmeansTest;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
namespace MCConst = MCMath_850::MCConst;
using nlohmann::json;

namespace {

constexpr double kTol = 1e-5;
constexpr double kTolDF = 1e-3;

::testing::AssertionResult Near(double a, double b, double rel, double absFloor) {
  if (std::fabs(a - b) <= rel * std::fabs(b) + absFloor) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b;
}

std::string DataPath(const std::string& file) { return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file; }

json Fixture(const std::string& name) {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/emmeans/" + name + ".json");
  EXPECT_TRUE(in.good()) << "missing reference file " << name;
  return in.good() ? json::parse(in) : json();
}

MCModelEffect Effect(const std::vector<int>& set, int nFactors, const std::vector<int>& factors,
                     const std::vector<int>& covariates, const std::vector<int>& written) {
  MCModelEffect effect;
  effect.Setup(nFactors, static_cast<int>(set.size()) - nFactors, &set);
  for (int f : factors) effect.AddNewFactor(f, false);
  for (int c : covariates) effect.AddCovariate(c);
  effect.SetVarsIndicesForTheEffectInSetting(written);
  return effect;
}

GLMMRandomSpec Block(const std::vector<MCModelEffect>& effects, const std::vector<int>& subjects) {
  GLMMRandomSpec block;
  for (const MCModelEffect& effect : effects) block.AddEffect(effect);
  for (int subject : subjects) block.AddSubjectVar(subject);
  block.SetCovarianceType(GLMMConst_850::VC);
  block.SetIndex(0);
  return block;
}

// A model and its data, with the variables by name.
class Model {
 public:
  // Columns with categories are read as such; the model's factors are the
  // first nModelFactors of them.
  Model(const std::string& file, const std::vector<std::string>& columns, const std::vector<std::string>& factors,
        std::size_t nModelFactors)
      : fColumns(columns) {
    fbLoaded = fRecords.Load(DataPath(file), columns, {factors.begin(), factors.end()});
    fSettings.SetSingleDependent(0);
    for (std::size_t i = 0; i < nModelFactors && i < factors.size(); ++i) {
      const std::string& f = factors[i];
      const int v = Var(f);
      fSettings.AddFactor(v, fRecords.GetVarList().GetVarAt(v)->GetNCategories());
    }
  }

  bool IsLoaded() const { return fbLoaded; }
  int Var(const std::string& name) const {
    return static_cast<int>(std::find(fColumns.begin(), fColumns.end(), name) - fColumns.begin());
  }
  int Code(const std::string& var, const std::string& level) const {
    const auto& texts = fRecords.GetVarList().GetVarAt(Var(var))->GetCategoryTexts();
    const auto it = std::find(texts.begin(), texts.end(), level);
    EXPECT_NE(it, texts.end()) << var << " has no level " << level;
    return static_cast<int>(it - texts.begin());
  }
  // Codes of the levels that a reference row gives by name, in the order of vars.
  std::vector<int> Codes(const std::vector<std::string>& vars, const json& levels) const {
    std::vector<int> codes;
    for (const std::string& v : vars) codes.push_back(Code(v, levels.at(v).get<std::string>()));
    return codes;
  }

  GLMMSettings& Settings() { return fSettings; }
  GLMMTestRecords& Records() { return fRecords; }

 private:
  std::vector<std::string> fColumns;
  GLMMTestRecords fRecords;
  GLMMSettings fSettings;
  bool fbLoaded = false;
};

MCConst::MCContrastType ContrastType(const std::string& name) {
  if (name == "pairwise") return MCConst::CONTRAST_PAIRWISE;
  if (name == "simple") return MCConst::CONTRAST_SIMPLE;
  if (name == "deviation") return MCConst::CONTRAST_DEVIATION;
  return MCConst::CONTRAST_NONE;
}

MCConst::MCPAdjustMethod Adjustment(const std::string& name) {
  if (name == "seqbonferroni") return MCConst::PADJUST_SEQ_BONFERRONI;
  if (name == "seqsidak") return MCConst::PADJUST_SEQ_SIDAK;
  return MCConst::PADJUST_LSD;
}

std::vector<std::string> Names(const json& list) {
  std::vector<std::string> names;
  for (const auto& n : list) names.push_back(n.get<std::string>());
  return names;
}

// The requests of a fixture as the settings carry them; the model's
// covariates stand at their mean unless the fixture's "at" gives a value.
std::vector<MCEmmeansSpec> Requests(const json& fixture, const Model& model, const std::vector<std::string>& covariates) {
  std::vector<MCEmmeansSpec> specs;
  for (const auto& r : fixture["requests"]) {
    MCEmmeansSpec spec;
    for (const std::string& f : Names(r["factors"])) spec.AddFactor(model.Var(f), 0);
    if (!r["compare"].is_null()) spec.AddCompareFactor(model.Var(r["compare"].get<std::string>()));
    spec.SetContrastType(ContrastType(r["contrast"].get<std::string>()));
    if (!r["reference"].is_null()) {
      spec.SetRefCateg(model.Code(r["compare"].get<std::string>(), r["reference"].get<std::string>()));
    }
    spec.SetPAdjust(Adjustment(r["adjust"].get<std::string>()));
    for (const std::string& c : covariates) {
      const bool given = r["at"].is_object() && r["at"].contains(c);
      spec.AddCovariate(model.Var(c), given ? r["at"][c].get<double>() : MCCommon_850::MCMV::Missing());
    }
    specs.push_back(spec);
  }
  return specs;
}

void CompareMean(const GLMMEmmeansMean& mean, const json& ref) {
  EXPECT_TRUE(mean.GetEstimable());
  EXPECT_TRUE(Near(mean.GetMean(), ref["estimate"].get<double>(), kTol, 0.0)) << "mean";
  EXPECT_TRUE(Near(mean.GetStdError(), ref["se"].get<double>(), kTol, 0.0)) << "standard error";
  EXPECT_TRUE(Near(mean.GetDF(), ref["df"].get<double>(), kTolDF, 0.0)) << "df";
  const double se = ref["se"].get<double>();
  EXPECT_TRUE(Near(mean.GetLowerBound(), ref["lower"].get<double>(), kTol, kTolDF * se)) << "lower bound";
  EXPECT_TRUE(Near(mean.GetUpperBound(), ref["upper"].get<double>(), kTol, kTolDF * se)) << "upper bound";
}

void CompareMeans(const GLMMEmmeansStat& stat, const json& refMeans, const Model& model,
                  const std::vector<std::string>& factors) {
  ASSERT_EQ(stat.GetMeans().size(), refMeans.size());
  for (const auto& m : refMeans) {
    const std::vector<int> codes = model.Codes(factors, m["levels"]);
    SCOPED_TRACE(m["levels"].dump());
    const auto it = std::find_if(stat.GetMeans().begin(), stat.GetMeans().end(),
                                 [&](const GLMMEmmeansMean& x) { return x.GetCategories() == codes; });
    ASSERT_NE(it, stat.GetMeans().end());
    CompareMean(*it, m);
  }
  // The first factor varies slowest.
  for (std::size_t i = 1; i < stat.GetMeans().size(); ++i) {
    EXPECT_LT(stat.GetMeans()[i - 1].GetCategories(), stat.GetMeans()[i].GetCategories());
  }
}

void CompareContrasts(const GLMMEmmeansStat& stat, const json& ref, const Model& model,
                      const std::vector<std::string>& by) {
  const std::string compare = ref["compare"].get<std::string>();
  ASSERT_EQ(stat.GetContrasts().size(), ref["contrasts"].size());
  for (const auto& c : ref["contrasts"]) {
    const std::vector<int> codes = model.Codes(by, c["by"]);
    const int level = model.Code(compare, c["level"].get<std::string>());
    const int reference = c["reference"].is_null() ? -1 : model.Code(compare, c["reference"].get<std::string>());
    SCOPED_TRACE(c["by"].dump() + " " + c["label"].get<std::string>());
    const auto it = std::find_if(stat.GetContrasts().begin(), stat.GetContrasts().end(), [&](const GLMMEmmeansContrast& x) {
      return x.GetCategories() == codes && x.GetCategory() == level && x.GetReference() == reference;
    });
    ASSERT_NE(it, stat.GetContrasts().end());
    const double se = c["se"].get<double>();
    EXPECT_TRUE(it->GetEstimable());
    EXPECT_TRUE(Near(it->GetEstimate(), c["estimate"].get<double>(), kTol, 1e-7 * se)) << "estimate";
    EXPECT_TRUE(Near(it->GetStdError(), se, kTol, 0.0)) << "standard error";
    EXPECT_TRUE(Near(it->GetTStat(), c["t"].get<double>(), kTol, 1e-7)) << "t";
    EXPECT_TRUE(Near(it->GetDF(), c["df"].get<double>(), kTolDF, 0.0)) << "df";
    EXPECT_TRUE(Near(it->GetSig(), c["p"].get<double>(), kTolDF, 1e-12)) << "p";
    EXPECT_TRUE(Near(it->GetAdjustedSig(), c["p_adjusted"].get<double>(), kTolDF, 1e-12)) << "adjusted p";
    EXPECT_TRUE(Near(it->GetLowerBound(), c["lower"].get<double>(), kTol, kTolDF * se)) << "lower bound";
    EXPECT_TRUE(Near(it->GetUpperBound(), c["upper"].get<double>(), kTol, kTolDF * se)) << "upper bound";
  }
  // The contrasts of one combination of the other factors stand together, in
  // the order of the combinations.
  for (std::size_t i = 1; i < stat.GetContrasts().size(); ++i) {
    EXPECT_LE(stat.GetContrasts()[i - 1].GetCategories(), stat.GetContrasts()[i].GetCategories());
  }
}

void CompareTests(const GLMMEmmeansStat& stat, const json& ref, const Model& model, const std::vector<std::string>& by) {
  ASSERT_EQ(stat.GetTests().size(), ref["tests"].size());
  for (std::size_t i = 0; i < stat.GetTests().size(); ++i) {
    const GLMMEmmeansTest& test = stat.GetTests()[i];
    const json& t = ref["tests"][i];
    SCOPED_TRACE(t["by"].dump());
    EXPECT_EQ(test.GetCategories(), model.Codes(by, t["by"]));
    EXPECT_TRUE(test.GetValid());
    EXPECT_TRUE(Near(test.GetF(), t["F"].get<double>(), kTol, 0.0)) << "F";
    EXPECT_EQ(test.GetDF1(), t["df1"].get<double>());
    EXPECT_TRUE(Near(test.GetDF2(), t["df2"].get<double>(), kTolDF, 0.0)) << "denominator df";
    EXPECT_TRUE(Near(test.GetSig(), t["p"].get<double>(), kTolDF, 1e-12)) << "p";
  }
}

// Fits the model with the fixture's requests and compares every table.
void Check(Model& model, const std::string& name, const std::vector<std::string>& covariates = {}) {
  SCOPED_TRACE(name);
  ASSERT_TRUE(model.IsLoaded());
  const json fixture = Fixture(name);
  ASSERT_FALSE(fixture.is_null());
  model.Settings().SetEmmeans(Requests(fixture, model, covariates));
  GLMMAlgorithm algorithm(model.Settings(), model.Records().GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&model.Records(), 0);
  ASSERT_FALSE(status.IsError()) << status.GetErrorCode();
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  const auto& tables = pStats->GetEmmeansStats();
  const std::size_t nRequests = fixture["requests"].size();
  ASSERT_EQ(tables.size(), nRequests + fixture["automatic"].size());
  EXPECT_EQ(pStats->GetNEmmeansRequests(), static_cast<int>(nRequests));

  for (std::size_t r = 0; r < nRequests; ++r) {
    const json& ref = fixture["requests"][r];
    SCOPED_TRACE(ref["name"].get<std::string>());
    const GLMMEmmeansStat& stat = tables[r];
    EXPECT_EQ(stat.GetRequestIndex(), static_cast<int>(r));
    EXPECT_EQ(stat.GetEffectIndex(), -1);
    EXPECT_TRUE(stat.GetValid());
    EXPECT_TRUE(stat.GetWarnings().empty());
    const std::vector<std::string> factors = Names(ref["factors"]);
    CompareMeans(stat, ref["means"], model, factors);
    ASSERT_EQ(stat.GetCovariates().size(), covariates.size());
    for (std::size_t i = 0; i < covariates.size(); ++i) {
      EXPECT_EQ(stat.GetCovariates()[i], model.Var(covariates[i]));
      if (ref["at"].is_object() && ref["at"].contains(covariates[i])) {
        EXPECT_EQ(stat.GetCovariateValues()[i], ref["at"][covariates[i]].get<double>());
      }
    }
    if (ref["compare"].is_null()) {
      EXPECT_EQ(stat.GetCompareFactor(), -1);
      EXPECT_TRUE(stat.GetContrasts().empty());
      EXPECT_TRUE(stat.GetTests().empty());
      continue;
    }
    const std::string compare = ref["compare"].get<std::string>();
    EXPECT_EQ(stat.GetCompareFactor(), model.Var(compare));
    std::vector<std::string> by;
    for (const std::string& f : factors) {
      if (f != compare) by.push_back(f);
    }
    if (ref.contains("contrasts")) {
      CompareContrasts(stat, ref, model, by);
    } else {
      EXPECT_TRUE(stat.GetContrasts().empty());
    }
    if (ref["contrast"].get<std::string>() == "simple") {
      EXPECT_EQ(stat.GetRefCateg(), model.Code(compare, ref["reference"].get<std::string>()));
    }
    CompareTests(stat, ref, model, by);
  }

  for (std::size_t a = 0; a < fixture["automatic"].size(); ++a) {
    const json& ref = fixture["automatic"][a];
    SCOPED_TRACE("automatic " + ref["term"].get<std::string>());
    const GLMMEmmeansStat& stat = tables[nRequests + a];
    EXPECT_EQ(stat.GetRequestIndex(), -1);
    EXPECT_GE(stat.GetEffectIndex(), 0);
    const std::vector<std::string> factors = Names(ref["factors"]);
    std::vector<int> vars;
    for (const std::string& f : factors) vars.push_back(model.Var(f));
    EXPECT_EQ(stat.GetFactors(), vars);
    EXPECT_EQ(stat.GetCompareFactor(), -1);
    EXPECT_TRUE(stat.GetContrasts().empty());
    CompareMeans(stat, ref["means"], model, factors);
  }

  const GLMMEmmeansMean* pGrand = pStats->GetGrandMean();
  ASSERT_NE(pGrand, nullptr);
  EXPECT_TRUE(pGrand->GetCategories().empty());
  CompareMean(*pGrand, fixture["grand_mean"]);
}

}  // namespace

TEST(GLMMEmmeansReference, OatsVarietyByNitro) {
  Model model("oats.csv", {"yield", "Block", "Variety", "nitro"}, {"Block", "Variety", "nitro"}, 3);
  const std::vector<int> set = {1, 2, 3};
  GLMMSettings& s = model.Settings();
  s.AddModelEffect(Effect(set, 3, {2}, {}, {2}));
  s.AddModelEffect(Effect(set, 3, {3}, {}, {3}));
  s.AddModelEffect(Effect(set, 3, {2, 3}, {}, {2, 3}));
  s.AddRandomSpec(Block({Effect(set, 3, {1}, {}, {1}), Effect(set, 3, {1, 2}, {}, {1, 2})}, {}));
  Check(model, "oats");
}

TEST(GLMMEmmeansReference, MachinesMachine) {
  Model model("machines.csv", {"score", "Worker", "Machine"}, {"Worker", "Machine"}, 2);
  const std::vector<int> set = {1, 2};
  GLMMSettings& s = model.Settings();
  s.AddModelEffect(Effect(set, 2, {2}, {}, {2}));
  s.AddRandomSpec(Block({Effect(set, 2, {1}, {}, {1}), Effect(set, 2, {1, 2}, {}, {1, 2})}, {}));
  Check(model, "machines");
}

TEST(GLMMEmmeansReference, OrthodontSexWithAgeAtItsMeanOrAtAValue) {
  Model model("orthodont.csv", {"distance", "age", "Subject", "Sex"}, {"Sex", "Subject"}, 1);
  GLMMSettings& s = model.Settings();
  s.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  s.AddModelEffect(Effect(set, 1, {}, {1}, {1}));
  s.AddModelEffect(Effect(set, 1, {3}, {}, {3}));
  s.AddModelEffect(Effect(set, 1, {3}, {1}, {1, 3}));
  s.AddRandomSpec(Block({MCModelEffect()}, {2}));
  Check(model, "orthodont", {"age"});
}
