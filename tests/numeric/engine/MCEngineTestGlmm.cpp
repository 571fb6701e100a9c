#include "numeric/engine/MCEngineTestGlmm.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "numeric/engine/MCEngineTestFixture.h"

namespace MCEngine_850 {

using namespace GLMMConst_850;

::testing::AssertionResult Near(double a, double b, double rel) {
  if (std::fabs(a - b) <= rel * std::max(std::fabs(b), 1.0)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b;
}

std::string GlmmDataPath(const std::string& file) {
  return std::string(GLMIX_TEST_DATA_DIR) + "/numeric/glmm/" + file;
}

MCEngineSettings GeneralizedSettings(TargetDistType dist, bool reml) {
  MCEngineSettings settings;
  settings.SetREML(reml);
  MCEngineTarget target;
  target.SetDistribution(dist);
  target.SetLink(DefaultLink(dist));
  target.SetLinkPower(DefaultLinkPower(dist));
  target.SetVariable(3);
  settings.SetTarget(target);
  return settings;
}

std::vector<double> Column(const MCEngineTestCsv& csv, const std::string& name) {
  const int col = csv.FindColumn(name);
  std::vector<double> out(static_cast<std::size_t>(csv.GetNRows()));
  for (int r = 0; r < csv.GetNRows(); ++r) out[static_cast<std::size_t>(r)] = csv.GetNumber(r, col);
  return out;
}

void ReadCbpp(MCEngineTestGlmm& c) {
  ASSERT_TRUE(c.csv.Read(MCEngineTestFixture::DataPath("cbpp.csv")));
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, std::set<std::string>{"herd", "period"});
  c.design->SetResponse("incidence");
  c.design->AddFixedTerm("Intercept");
  c.design->AddFixedTerm("period");
  c.design->AddRandomBlock({"Intercept"}, "herd", MCEngineCovType::VC);
  c.input = c.design->Build();
  c.input.SetTrials(Column(c.csv, "size"));
}

void ReadGlmm(MCEngineTestGlmm& c, const std::string& file, const std::set<std::string>& factors,
              const std::string& response, const std::vector<std::string>& terms, const std::string& subject) {
  ASSERT_TRUE(c.csv.Read(GlmmDataPath(file)));
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, factors);
  c.design->SetResponse(response);
  for (const std::string& term : terms) c.design->AddFixedTerm(term);
  c.design->AddRandomBlock({"Intercept"}, subject, MCEngineCovType::VC);
  c.input = c.design->Build();
}

void ReadEpil(MCEngineTestGlmm& c, const std::vector<std::string>& terms) {
  ReadGlmm(c, "epil.csv", {"subject", "trt"}, "y", terms, "subject");
}

nlohmann::json ReadGlmmReference(const std::string& fixture, const std::string& fit) {
  std::ifstream in(MCEngineTestFixture::FixturePath(fixture));
  EXPECT_TRUE(in.good()) << "missing reference file " << fixture << ".json";
  if (!in.good()) return nlohmann::json();
  return nlohmann::json::parse(in)[fit];
}

bool HasWarning(const MCEngineResult& result, long code) {
  for (const MCEngineStatus& w : result.GetWarnings()) {
    if (w.GetCode() == code) return true;
  }
  return false;
}

MCEngineSettings LikelihoodSettings(TargetDistType dist, GeneralizedFitMethod method, int points) {
  MCEngineSettings settings = GeneralizedSettings(dist, true);
  MCEngineTarget target = settings.GetTarget();
  target.SetFitMethod(method);
  target.SetQuadraturePoints(points);
  settings.SetTarget(target);
  return settings;
}

void CompareFixedEstimates(const nlohmann::json& ref, const MCEngineTestDesign& design, const MCEngineResult& result,
                           double tolerance) {
  ASSERT_FALSE(ref.is_null());
  for (std::size_t i = 0; i < ref["columns"].size(); ++i) {
    const std::string name = ref["columns"][i].get<std::string>();
    const int col = design.FindColumnName(name);
    ASSERT_GE(col, 0) << name;
    const MCEngineBetaStat& b = result.GetBeta()[static_cast<std::size_t>(col)];
    EXPECT_TRUE(Near(b.GetEstimate(), ref["estimates"][i].get<double>(), tolerance)) << name;
    EXPECT_TRUE(Near(b.GetStdError(), ref["std_errors"][i].get<double>(), tolerance)) << name;
  }
}

void CompareFixedWithReference(const nlohmann::json& ref, const MCEngineTestDesign& design,
                               const MCEngineResult& result, double constant) {
  ASSERT_FALSE(ref.is_null());
  EXPECT_TRUE(Near(result.GetMinus2LogLik() - constant, ref["minus2loglik"].get<double>(), 1e-6));
  CompareFixedEstimates(ref, design, result, kLikelihoodTolerance);
  const std::vector<double>& eta = result.GetLinearPredictor();
  ASSERT_EQ(eta.size(), ref["linear_predictor"].size());
  for (std::size_t r = 0; r < eta.size(); ++r) {
    EXPECT_TRUE(Near(eta[r], ref["linear_predictor"][r].get<double>(), kLikelihoodTolerance)) << "record " << r;
  }
}

}  // namespace MCEngine_850
