// Each covariance structure's derivatives against finite differences.
#include <gtest/gtest.h>

#include <cmath>

#include "numeric/engine/MCEngineCovariance.h"

using namespace MCEngine_850;

namespace {

struct Case {
  MCEngineCovType fType;
  int fDimension;
  std::vector<int> fEffects;
  std::vector<double> fTheta;
};

void CheckDerivatives(const Case& c) {
  MCEngineCovariance cov(c.fType, c.fDimension, c.fEffects);
  ASSERT_TRUE(cov.IsAvailable());
  ASSERT_EQ(cov.GetNParams(), static_cast<int>(c.fTheta.size()));
  const int t = c.fDimension;
  const std::vector<double> S = cov.Matrix(c.fTheta);
  ASSERT_EQ(S.size(), static_cast<std::size_t>(t * t));
  for (int i = 0; i < t; ++i) {
    for (int j = 0; j < t; ++j) EXPECT_DOUBLE_EQ(S[static_cast<std::size_t>(i * t + j)], S[static_cast<std::size_t>(j * t + i)]);
  }
  for (int k = 0; k < cov.GetNParams(); ++k) {
    SCOPED_TRACE("parameter " + std::to_string(k));
    const double h = 1e-6 * std::max(1.0, std::fabs(c.fTheta[static_cast<std::size_t>(k)]));
    std::vector<double> up = c.fTheta, down = c.fTheta;
    up[static_cast<std::size_t>(k)] += h;
    down[static_cast<std::size_t>(k)] -= h;
    const std::vector<double> Sp = cov.Matrix(up), Sm = cov.Matrix(down);
    const std::vector<double> D = cov.Derivative(c.fTheta, k);
    ASSERT_EQ(D.size(), S.size());
    for (std::size_t e = 0; e < S.size(); ++e) EXPECT_NEAR(D[e], (Sp[e] - Sm[e]) / (2.0 * h), 1e-6) << "entry " << e;
    for (int l = 0; l < cov.GetNParams(); ++l) {
      const std::vector<double> Dp = cov.Derivative(up, l), Dm = cov.Derivative(down, l);
      const std::vector<double> D2 = cov.SecondDerivative(c.fTheta, k, l);
      ASSERT_EQ(D2.size(), S.size());
      for (std::size_t e = 0; e < S.size(); ++e) {
        EXPECT_NEAR(D2[e], (Dp[e] - Dm[e]) / (2.0 * h), 1e-5) << "second derivative " << l << " entry " << e;
      }
    }
  }
}

}  // namespace

TEST(MCEngineCovariance, ScaledIdentity) { CheckDerivatives({MCEngineCovType::ID, 3, {}, {2.5}}); }

TEST(MCEngineCovariance, VarianceComponents) {
  CheckDerivatives({MCEngineCovType::VC, 4, {0, 0, 1, 2}, {1.5, 0.7, 3.0}});
  MCEngineCovariance cov(MCEngineCovType::VC, 4, {0, 0, 1, 2});
  const std::vector<double> S = cov.Matrix({1.5, 0.7, 3.0});
  EXPECT_EQ(S[0], 1.5);
  EXPECT_EQ(S[5], 1.5);
  EXPECT_EQ(S[10], 0.7);
  EXPECT_EQ(S[15], 3.0);
  EXPECT_EQ(S[1], 0.0);
}

TEST(MCEngineCovariance, Diagonal) { CheckDerivatives({MCEngineCovType::DIAG, 3, {}, {1.0, 2.0, 0.5}}); }

TEST(MCEngineCovariance, CompoundSymmetry) {
  CheckDerivatives({MCEngineCovType::CS, 4, {}, {0.8, 2.0}});
  MCEngineCovariance cov(MCEngineCovType::CS, 2);
  EXPECT_EQ(cov.Matrix({0.8, 2.0}), (std::vector<double>{2.8, 0.8, 0.8, 2.8}));
  EXPECT_EQ(cov.GetParamLabel(0, true), "CS");
  EXPECT_EQ(cov.GetParamLabel(1, true), "Residual");
  EXPECT_EQ(cov.GetParamKind(0), MCEngineCovParam::kCovariance);
  EXPECT_EQ(cov.GetScaleParam(), 1);
}

TEST(MCEngineCovariance, Unstructured) {
  CheckDerivatives({MCEngineCovType::UN, 3, {}, {4.0, 1.0, 3.0, -0.5, 0.3, 2.0}});
  MCEngineCovariance cov(MCEngineCovType::UN, 3);
  ASSERT_EQ(cov.GetNParams(), 6);
  const char* labels[] = {"UN(1,1)", "UN(2,1)", "UN(2,2)", "UN(3,1)", "UN(3,2)", "UN(3,3)"};
  for (int k = 0; k < 6; ++k) EXPECT_EQ(cov.GetParamLabel(k, false), labels[k]);
  EXPECT_EQ(cov.GetParamKind(1), MCEngineCovParam::kCovariance);
  EXPECT_EQ(cov.GetParamKind(5), MCEngineCovParam::kVariance);
  EXPECT_EQ(cov.GetScaleParam(), -1);
  const std::vector<double> S = cov.Matrix({4.0, 1.0, 3.0, -0.5, 0.3, 2.0});
  EXPECT_EQ(S[2 * 3 + 0], -0.5);
  EXPECT_EQ(S[0 * 3 + 2], -0.5);
  EXPECT_EQ(S[2 * 3 + 1], 0.3);
}

TEST(MCEngineCovariance, Autoregressive) {
  CheckDerivatives({MCEngineCovType::AR1, 5, {}, {0.6, 2.0}});
  CheckDerivatives({MCEngineCovType::AR1, 4, {}, {-0.35, 1.2}});
  // At rho = 0 the first-lag derivative is sigma^2 and higher lags vanish.
  MCEngineCovariance cov(MCEngineCovType::AR1, 3);
  const std::vector<double> d = cov.Derivative({0.0, 2.0}, 0);
  EXPECT_EQ(d[1], 2.0);
  EXPECT_EQ(d[2], 0.0);
  EXPECT_EQ(cov.GetParamKind(0), MCEngineCovParam::kCorrelation);
  EXPECT_EQ(cov.Matrix({0.5, 2.0})[2], 0.5);
}

TEST(MCEngineCovariance, UnavailableTypes) {
  EXPECT_FALSE(MCEngineCovariance(MCEngineCovType::COVAR_RESERVED, 3).IsAvailable());
  // Coordinates that do not divide among the points.
  EXPECT_FALSE(MCEngineCovariance(MCEngineCovType::SP_EXP, 3, {}, {0.0, 1.0}).IsAvailable());
  EXPECT_FALSE(MCEngineCovariance(MCEngineCovType::UN, 0).IsAvailable());
  MCEngineCovariance cov(MCEngineCovType::COVAR_RESERVED, 3);
  EXPECT_EQ(cov.GetNParams(), 0);
  EXPECT_TRUE(cov.Matrix({}).empty());
}
