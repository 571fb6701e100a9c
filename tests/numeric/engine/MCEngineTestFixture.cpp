#include "numeric/engine/MCEngineTestFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <vector>

using MCEngine_850::MCEngineResult;

namespace {

// |a - b| within rel of |b|, or within absFloor when b is tiny.
::testing::AssertionResult NearRelative(double a, double b, double rel, double absFloor) {
  if (std::fabs(a - b) <= rel * std::fabs(b) + absFloor) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b << " (relative difference "
                                       << std::fabs(a - b) / std::max(std::fabs(b), 1e-300) << ")";
}

}  // namespace

MCEngine_850::MCEngineSettings MCEngineTestFixture::Tight(bool reml, MCEngine_850::MCEngineSettings::SolverPath path) {
  using MCEngine_850::MCEngineSettings;
  MCEngineSettings s;
  s.SetREML(reml);
  s.SetSolverPath(path);
  s.SetParamTolerance(1e-12);
  s.SetMaxIterations(200);
  return s;
}

std::string MCEngineTestFixture::DataPath(const std::string& file) {
  return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file;
}

std::string MCEngineTestFixture::FixturePath(const std::string& name) {
  return std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/" + name + ".json";
}

std::unique_ptr<MCEngineTestFixture::Model> MCEngineTestFixture::Load(const std::string& file,
                                                                     const std::set<std::string>& factors) {
  auto m = std::make_unique<Model>();
  EXPECT_TRUE(m->fCsv.Read(DataPath(file))) << file;
  m->fpDesign = std::make_unique<MCEngineTestDesign>(m->fCsv, factors);
  return m;
}

std::unique_ptr<MCEngineTestFixture::Model> MCEngineTestFixture::Sleepstudy(MCEngine_850::MCEngineCovType type) {
  auto m = Load("sleepstudy.csv", {"Subject"});
  m->fpDesign->SetResponse("Reaction");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddFixedTerm("Days");
  m->fpDesign->AddRandomBlock({"Intercept", "Days"}, "Subject", type);
  return m;
}

std::unique_ptr<MCEngineTestFixture::Model> MCEngineTestFixture::Orthodont() {
  auto m = Load("orthodont.csv", {"Subject", "Sex"});
  m->fpDesign->SetResponse("distance");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddFixedTerm("age");
  m->fpDesign->AddFixedTerm("Sex");
  m->fpDesign->AddFixedTerm("age*Sex");
  return m;
}

std::unique_ptr<MCEngineTestFixture::Model> MCEngineTestFixture::Oats() {
  auto m = Load("oats.csv", {"Block", "Variety", "nitro"});
  m->fpDesign->SetResponse("yield");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddFixedTerm("Variety");
  m->fpDesign->AddFixedTerm("nitro");
  m->fpDesign->AddFixedTerm("Variety*nitro");
  m->fpDesign->AddRandomBlock({"Block", "Block*Variety"}, "", MCEngine_850::MCEngineCovType::VC);
  return m;
}

std::unique_ptr<MCEngineTestFixture::Model> MCEngineTestFixture::Machines() {
  auto m = Load("machines.csv", {"Worker", "Machine"});
  m->fpDesign->SetResponse("score");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddFixedTerm("Machine");
  m->fpDesign->AddRandomBlock({"Worker", "Worker*Machine"}, "", MCEngine_850::MCEngineCovType::VC);
  return m;
}

std::unique_ptr<MCEngineTestFixture::Model> MCEngineTestFixture::Penicillin() {
  auto m = Load("penicillin.csv", {"plate", "sample"});
  m->fpDesign->SetResponse("diameter");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddRandomBlock({"plate"}, "", MCEngine_850::MCEngineCovType::VC);
  m->fpDesign->AddRandomBlock({"sample"}, "", MCEngine_850::MCEngineCovType::VC);
  return m;
}

void MCEngineTestFixture::CompareCovParamStats(const nlohmann::json& ref, const MCEngineResult& result,
                                               double tol) {
  const auto& cps = ref["covparams"];
  ASSERT_EQ(result.GetCovParams().size(), cps.size());
  const std::size_t K = cps.size();
  for (std::size_t i = 0; i < K; ++i) {
    const MCEngine_850::MCEngineCovParam& cp = result.GetCovParams()[i];
    SCOPED_TRACE(cps[i]["label"].get<std::string>());
    ASSERT_TRUE(cps[i].contains("se"));
    EXPECT_FALSE(cp.IsOnBoundary());
    EXPECT_TRUE(NearRelative(cp.GetStdError(), cps[i]["se"].get<double>(), tol, 0.0)) << "standard error";
    EXPECT_TRUE(NearRelative(cp.GetWaldZ(), cps[i]["z"].get<double>(), tol, 0.0)) << "Wald Z";
    EXPECT_TRUE(NearRelative(cp.GetSig(), cps[i]["p"].get<double>(), 10.0 * tol, 1e-12)) << "significance";
    const double width = cps[i]["upper"].get<double>() - cps[i]["lower"].get<double>();
    EXPECT_TRUE(NearRelative(cp.GetLower(), cps[i]["lower"].get<double>(), 0.0, tol * width)) << "lower bound";
    EXPECT_TRUE(NearRelative(cp.GetUpper(), cps[i]["upper"].get<double>(), 0.0, tol * width)) << "upper bound";
  }
  const auto& cov = ref["covparams_cov"];
  const std::vector<double>& asy = result.GetCovParamsCov();
  ASSERT_EQ(asy.size(), K * K);
  for (std::size_t i = 0; i < K; ++i) {
    for (std::size_t j = 0; j < K; ++j) {
      // Relative to the geometric mean of the two variances.
      const double scale = std::sqrt(cov[i][i].get<double>() * cov[j][j].get<double>());
      EXPECT_TRUE(NearRelative(asy[i * K + j], cov[i][j].get<double>(), 0.0, tol * scale))
          << "asymptotic covariance (" << i << ", " << j << ")";
    }
  }
}

void MCEngineTestFixture::Compare(const std::string& fixture, const MCEngine_850::MCEngineFitter& fitter,
                                  const MCEngineTestDesign& design, double tolEstimates, double tolDF,
                                  double tolCovStats) {
  const MCEngineResult& result = fitter.GetResult();
  std::ifstream in(FixturePath(fixture));
  ASSERT_TRUE(in.good()) << "missing reference file " << fixture;
  const nlohmann::json ref = nlohmann::json::parse(in);
  SCOPED_TRACE(fixture);
  ASSERT_FALSE(result.GetStatus().IsError()) << "status " << result.GetStatus().GetCode();
  EXPECT_TRUE(result.IsConverged());
  EXPECT_TRUE(NearRelative(result.GetMinus2LogLik(), ref["minus2ll"].get<double>(), tolEstimates, 0.0))
      << "-2 log likelihood";

  // Fixed effects by column name.
  double scale = 0.0;
  for (const auto& b : ref["beta"]) scale = std::max(scale, std::fabs(b["estimate"].get<double>()));
  for (const auto& b : ref["beta"]) {
    const std::string name = b["name"].get<std::string>();
    SCOPED_TRACE(name);
    const int col = design.FindColumnName(name);
    ASSERT_GE(col, 0) << "no column " << name;
    const MCEngine_850::MCEngineBetaStat& bs = result.GetBeta()[static_cast<std::size_t>(col)];
    EXPECT_FALSE(bs.IsRedundant());
    EXPECT_TRUE(NearRelative(bs.GetEstimate(), b["estimate"].get<double>(), tolEstimates, 1e-9 * scale)) << "estimate";
    EXPECT_TRUE(NearRelative(bs.GetStdError(), b["se"].get<double>(), tolEstimates, 0.0)) << "standard error";
    EXPECT_TRUE(NearRelative(bs.GetDF(), b["df"].get<double>(), tolDF, 0.0)) << "df";
    EXPECT_TRUE(NearRelative(bs.GetSig(), b["p"].get<double>(), tolDF, 1e-12)) << "p";
  }
  // Redundant columns: every column not in the reference.
  int nonRedundant = 0;
  for (const auto& bs : result.GetBeta()) nonRedundant += bs.IsRedundant() ? 0 : 1;
  EXPECT_EQ(nonRedundant, static_cast<int>(ref["beta"].size()));

  // Covariance parameters in order.
  const auto& cps = ref["covparams"];
  ASSERT_EQ(result.GetCovParams().size(), cps.size());
  double cscale = 0.0;
  for (const auto& c : cps) cscale = std::max(cscale, std::fabs(c["estimate"].get<double>()));
  for (std::size_t i = 0; i < cps.size(); ++i) {
    SCOPED_TRACE(cps[i]["label"].get<std::string>());
    EXPECT_EQ(result.GetCovParams()[i].GetLabel(), cps[i]["label"].get<std::string>());
    EXPECT_TRUE(NearRelative(result.GetCovParams()[i].GetEstimate(), cps[i]["estimate"].get<double>(), tolEstimates,
                             1e-9 * cscale))
        << "covariance parameter";
  }
  CompareCovParamStats(ref, result, tolCovStats);

  // Type III and Type I tests by term; the references have no intercept row.
  auto compareTests = [&](const nlohmann::json& refTests, const std::vector<MCEngine_850::MCEngineTest>& tests,
                          const char* kind) {
    for (const auto& t : refTests) {
      const std::string term = t["term"].get<std::string>();
      SCOPED_TRACE(std::string(kind) + " " + term);
      const MCEngine_850::MCEngineTest* found = nullptr;
      for (const auto& test : tests) {
        if (static_cast<std::size_t>(test.GetTerm()) < design.GetTermNames().size() &&
            design.GetTermNames()[static_cast<std::size_t>(test.GetTerm())] == term) {
          found = &test;
        }
      }
      ASSERT_NE(found, nullptr) << "no test of " << term;
      ASSERT_TRUE(found->IsValid());
      EXPECT_TRUE(NearRelative(found->GetF(), t["F"].get<double>(), tolEstimates, 0.0)) << "F";
      EXPECT_EQ(found->GetNumDF(), t["numDF"].get<double>());
      EXPECT_TRUE(NearRelative(found->GetDenDF(), t["denDF"].get<double>(), tolDF, 0.0)) << "denominator df";
      EXPECT_TRUE(NearRelative(found->GetSig(), t["p"].get<double>(), tolDF, 1e-12)) << "p";
    }
  };
  compareTests(ref["typeIII"], result.GetTypeIIITests(), "Type III");
  if (ref.contains("typeI")) compareTests(ref["typeI"], result.GetTypeITests(), "Type I");

  // Contrasts over the engine's column names.
  auto toRow = [&](const nlohmann::json& L) {
    std::vector<double> row(design.GetColumnNames().size(), 0.0);
    for (auto it = L.begin(); it != L.end(); ++it) {
      const int col = design.FindColumnName(it.key());
      EXPECT_GE(col, 0) << it.key();
      if (col >= 0) row[static_cast<std::size_t>(col)] = it.value().get<double>();
    }
    return row;
  };
  if (ref.contains("contrasts")) {
    for (const auto& c : ref["contrasts"]) {
      const std::vector<double> row = toRow(c["L"]);
      EXPECT_TRUE(fitter.IsEstimable(row));
      const MCEngine_850::MCEngineTest t = fitter.TestContrast({row});
      ASSERT_TRUE(t.IsValid());
      EXPECT_TRUE(NearRelative(t.GetEstimate(), c["estimate"].get<double>(), tolEstimates, 0.0)) << "contrast estimate";
      EXPECT_TRUE(NearRelative(t.GetStdError(), c["se"].get<double>(), tolEstimates, 0.0)) << "contrast se";
      EXPECT_TRUE(NearRelative(t.GetDenDF(), c["df"].get<double>(), tolDF, 0.0)) << "contrast df";
      EXPECT_TRUE(NearRelative(t.GetSig(), c["p"].get<double>(), tolDF, 1e-12)) << "contrast p";
      EXPECT_NEAR(t.GetF(), t.GetT() * t.GetT(), 1e-9 * t.GetF());
    }
  }
  if (ref.contains("joint")) {
    for (const auto& j : ref["joint"]) {
      std::vector<std::vector<double>> L;
      for (const auto& r : j["rows"]) L.push_back(toRow(r));
      const MCEngine_850::MCEngineTest t = fitter.TestContrast(L);
      ASSERT_TRUE(t.IsValid());
      EXPECT_TRUE(NearRelative(t.GetF(), j["F"].get<double>(), tolEstimates, 0.0)) << "joint F";
      EXPECT_EQ(t.GetNumDF(), j["numDF"].get<double>());
      EXPECT_TRUE(NearRelative(t.GetDenDF(), j["denDF"].get<double>(), tolDF, 0.0)) << "joint df";
      EXPECT_TRUE(NearRelative(t.GetSig(), j["p"].get<double>(), tolDF, 1e-12)) << "joint p";
    }
  }
}

void MCEngineTestFixture::CompareSection(const std::string& fixture, const std::string& section,
                                         const MCEngine_850::MCEngineFitter& fitter, const MCEngineTestDesign& design,
                                         double tol) {
  const MCEngineResult& result = fitter.GetResult();
  std::ifstream in(FixturePath(fixture));
  ASSERT_TRUE(in.good()) << "missing reference file " << fixture;
  const nlohmann::json ref = nlohmann::json::parse(in);
  SCOPED_TRACE(fixture + " " + section);
  ASSERT_TRUE(ref.contains(section));
  const nlohmann::json& sec = ref[section];
  ASSERT_FALSE(result.GetStatus().IsError()) << "status " << result.GetStatus().GetCode();
  const bool robust = section == "robust";
  EXPECT_EQ(result.IsCovBetaRobust(), robust);

  const std::size_t P = result.GetBeta().size();
  std::vector<int> cols;
  for (const auto& b : ref["beta"]) {
    const int col = design.FindColumnName(b["name"].get<std::string>());
    ASSERT_GE(col, 0);
    cols.push_back(col);
  }
  for (std::size_t i = 0; i < cols.size(); ++i) {
    const auto& b = sec["beta"][i];
    ASSERT_EQ(b["name"].get<std::string>(), ref["beta"][i]["name"].get<std::string>());
    SCOPED_TRACE(b["name"].get<std::string>());
    const std::size_t c = static_cast<std::size_t>(cols[i]);
    const MCEngine_850::MCEngineBetaStat& bs = result.GetBeta()[c];
    const double se = robust ? b["se"].get<double>() : ref["beta"][i]["se"].get<double>();
    EXPECT_TRUE(NearRelative(bs.GetStdError(), se, tol, 0.0)) << "standard error";
    EXPECT_EQ(bs.GetDF(), b["df"].get<double>()) << "df";
    EXPECT_TRUE(NearRelative(bs.GetSig(), b["p"].get<double>(), 1e-3, 1e-12)) << "p";
    // The model-based covariance stays available.
    EXPECT_TRUE(NearRelative(std::sqrt(result.GetModelCovBeta()[c * P + c]), ref["beta"][i]["se"].get<double>(), tol,
                             0.0))
        << "model-based standard error";
  }
  if (robust) {
    EXPECT_EQ(result.GetFixedDF(), sec["clusters"].get<double>() - 1.0);
    double scale = 0.0;
    for (std::size_t i = 0; i < cols.size(); ++i) scale = std::max(scale, sec["cov"][i][i].get<double>());
    for (std::size_t i = 0; i < cols.size(); ++i) {
      for (std::size_t j = 0; j < cols.size(); ++j) {
        const double v = result.GetCovBeta()[static_cast<std::size_t>(cols[i]) * P + static_cast<std::size_t>(cols[j])];
        EXPECT_TRUE(NearRelative(v, sec["cov"][i][j].get<double>(), 0.0, tol * scale)) << "robust covariance";
      }
    }
  } else {
    EXPECT_EQ(result.GetFixedDF(), sec["df"].get<double>());
  }
  for (const auto& t : sec["typeIII"]) {
    const std::string term = t["term"].get<std::string>();
    SCOPED_TRACE(term);
    const MCEngine_850::MCEngineTest* found = nullptr;
    for (const auto& test : result.GetTypeIIITests()) {
      if (static_cast<std::size_t>(test.GetTerm()) < design.GetTermNames().size() &&
          design.GetTermNames()[static_cast<std::size_t>(test.GetTerm())] == term) {
        found = &test;
      }
    }
    ASSERT_NE(found, nullptr) << "no test of " << term;
    EXPECT_TRUE(NearRelative(found->GetF(), t["F"].get<double>(), tol, 0.0)) << "F";
    EXPECT_EQ(found->GetNumDF(), t["numDF"].get<double>());
    EXPECT_EQ(found->GetDenDF(), t["denDF"].get<double>());
    EXPECT_TRUE(NearRelative(found->GetSig(), t["p"].get<double>(), 1e-3, 1e-12)) << "p";
  }
}
