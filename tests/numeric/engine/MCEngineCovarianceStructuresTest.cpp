// The heterogeneous, Toeplitz, autoregressive-moving-average, factor-analytic
// and spatial structures: their matrices, labels, kinds and bounds, and their
// first and second derivatives against finite differences.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineCovariance.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// Central differences of the matrix and of the first derivatives, relative
// to the size of the entries.
void CheckDerivatives(const MCEngineCovariance& cov, const std::vector<double>& theta) {
  ASSERT_TRUE(cov.IsAvailable());
  ASSERT_EQ(cov.GetNParams(), static_cast<int>(theta.size()));
  const int t = cov.GetDimension();
  const std::vector<double> S = cov.Matrix(theta);
  ASSERT_EQ(S.size(), U(t * t));
  for (int i = 0; i < t; ++i) {
    for (int j = 0; j < t; ++j) EXPECT_DOUBLE_EQ(S[U(i * t + j)], S[U(j * t + i)]) << i << "," << j;
  }
  for (int k = 0; k < cov.GetNParams(); ++k) {
    SCOPED_TRACE("parameter " + std::to_string(k) + " " + cov.GetParamLabel(k, true));
    const double h = 1e-6 * std::max(1.0, std::fabs(theta[U(k)]));
    std::vector<double> up = theta, down = theta;
    up[U(k)] += h;
    down[U(k)] -= h;
    const std::vector<double> Sp = cov.Matrix(up), Sm = cov.Matrix(down);
    const std::vector<double> D = cov.Derivative(theta, k);
    ASSERT_EQ(D.size(), S.size());
    for (std::size_t e = 0; e < S.size(); ++e) {
      const double fd = (Sp[e] - Sm[e]) / (2.0 * h);
      EXPECT_NEAR(D[e], fd, 1e-6 * (1.0 + std::fabs(fd))) << "entry " << e;
    }
    for (int l = 0; l < cov.GetNParams(); ++l) {
      const std::vector<double> Dp = cov.Derivative(up, l), Dm = cov.Derivative(down, l);
      const std::vector<double> D2 = cov.SecondDerivative(theta, k, l);
      const std::vector<double> D2t = cov.SecondDerivative(theta, l, k);
      ASSERT_EQ(D2.size(), S.size());
      for (std::size_t e = 0; e < S.size(); ++e) {
        const double fd = (Dp[e] - Dm[e]) / (2.0 * h);
        EXPECT_NEAR(D2[e], fd, 1e-5 * (1.0 + std::fabs(fd))) << "second derivative " << l << " entry " << e;
        EXPECT_DOUBLE_EQ(D2[e], D2t[e]);
      }
    }
  }
}

std::vector<std::string> Labels(const MCEngineCovariance& cov, bool residualSide) {
  std::vector<std::string> out;
  for (int k = 0; k < cov.GetNParams(); ++k) out.push_back(cov.GetParamLabel(k, residualSide));
  return out;
}

std::vector<MCEngineCovParam::Kind> Kinds(const MCEngineCovariance& cov) {
  std::vector<MCEngineCovParam::Kind> out;
  for (int k = 0; k < cov.GetNParams(); ++k) out.push_back(cov.GetParamKind(k));
  return out;
}

double At(const std::vector<double>& S, int t, int i, int j) { return S[U(i * t + j)]; }

const auto V = MCEngineCovParam::kVariance;
const auto C = MCEngineCovParam::kCovariance;
const auto R = MCEngineCovParam::kCorrelation;
const auto L = MCEngineCovParam::kLoading;
const auto G = MCEngineCovParam::kRange;
const double kInf = std::numeric_limits<double>::infinity();

}  // namespace

TEST(MCEngineCovarianceStructures, HeterogeneousAutoregressive) {
  MCEngineCovariance cov(MCEngineCovType::ARH1, 4);
  CheckDerivatives(cov, {1.5, 2.0, 0.7, 3.0, 0.4});
  CheckDerivatives(cov, {1.5, 2.0, 0.7, 3.0, -0.3});
  const std::vector<double> S = cov.Matrix({1.5, 2.0, 0.7, 3.0, 0.4});
  EXPECT_DOUBLE_EQ(At(S, 4, 0, 2), std::sqrt(1.5 * 0.7) * 0.16);
  EXPECT_DOUBLE_EQ(At(S, 4, 3, 3), 3.0);
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"Var(1)", "Var(2)", "Var(3)", "Var(4)", "ARH1 rho"}));
  EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{V, V, V, V, R}));
  EXPECT_EQ(cov.GetScaleParam(), -1);
}

TEST(MCEngineCovarianceStructures, AnteDependence) {
  MCEngineCovariance cov(MCEngineCovType::AD1, 4);
  CheckDerivatives(cov, {1.5, 2.0, 0.7, 3.0, 0.5, -0.3, 0.7});
  const std::vector<double> S = cov.Matrix({1.5, 2.0, 0.7, 3.0, 0.5, -0.3, 0.7});
  EXPECT_DOUBLE_EQ(At(S, 4, 0, 3), std::sqrt(1.5 * 3.0) * 0.5 * -0.3 * 0.7);
  EXPECT_DOUBLE_EQ(At(S, 4, 2, 1), std::sqrt(2.0 * 0.7) * -0.3);
  EXPECT_EQ(Labels(cov, true),
            (std::vector<std::string>{"Var(1)", "Var(2)", "Var(3)", "Var(4)", "Rho(1)", "Rho(2)", "Rho(3)"}));
  EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{V, V, V, V, R, R, R}));
}

TEST(MCEngineCovarianceStructures, HeterogeneousCompoundSymmetry) {
  MCEngineCovariance cov(MCEngineCovType::CSH, 3);
  CheckDerivatives(cov, {1.5, 2.0, 0.7, 0.35});
  const std::vector<double> S = cov.Matrix({1.5, 2.0, 0.7, 0.35});
  EXPECT_DOUBLE_EQ(At(S, 3, 0, 2), std::sqrt(1.5 * 0.7) * 0.35);
  EXPECT_EQ(Labels(cov, false), (std::vector<std::string>{"Var(1)", "Var(2)", "Var(3)", "CSH rho"}));
}

TEST(MCEngineCovarianceStructures, HeterogeneousToeplitz) {
  MCEngineCovariance cov(MCEngineCovType::TPH, 4);
  CheckDerivatives(cov, {1.5, 2.0, 0.7, 3.0, 0.5, 0.2, -0.1});
  const std::vector<double> S = cov.Matrix({1.5, 2.0, 0.7, 3.0, 0.5, 0.2, -0.1});
  EXPECT_DOUBLE_EQ(At(S, 4, 1, 3), std::sqrt(2.0 * 3.0) * 0.2);
  EXPECT_DOUBLE_EQ(At(S, 4, 3, 0), std::sqrt(1.5 * 3.0) * -0.1);
  EXPECT_EQ(Labels(cov, true),
            (std::vector<std::string>{"Var(1)", "Var(2)", "Var(3)", "Var(4)", "TPH(1)", "TPH(2)", "TPH(3)"}));
}

TEST(MCEngineCovarianceStructures, UnstructuredCorrelations) {
  MCEngineCovariance cov(MCEngineCovType::UNR, 4);
  const std::vector<double> theta = {1.5, 2.0, 0.7, 3.0, 0.3, -0.2, 0.4, 0.1, 0.25, -0.15};
  CheckDerivatives(cov, theta);
  const std::vector<double> S = cov.Matrix(theta);
  EXPECT_DOUBLE_EQ(At(S, 4, 2, 1), std::sqrt(0.7 * 2.0) * 0.4);
  EXPECT_DOUBLE_EQ(At(S, 4, 0, 3), std::sqrt(1.5 * 3.0) * 0.1);
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"Var(1)", "Var(2)", "Var(3)", "Var(4)", "Corr(2,1)",
                                                         "Corr(3,1)", "Corr(3,2)", "Corr(4,1)", "Corr(4,2)",
                                                         "Corr(4,3)"}));
}

// Where a variance is 0 the heterogeneous structures stay finite: the
// starting point of a random block has every variance at 0.
TEST(MCEngineCovarianceStructures, HeterogeneousAtZeroVariances) {
  for (MCEngineCovType type : {MCEngineCovType::ARH1, MCEngineCovType::CSH, MCEngineCovType::UNR}) {
    MCEngineCovariance cov(type, 3);
    std::vector<double> theta(static_cast<std::size_t>(cov.GetNParams()), 0.0);
    for (int k = 0; k < cov.GetNParams(); ++k) {
      const std::vector<double> d = cov.Derivative(theta, k);
      for (double v : d) EXPECT_TRUE(std::isfinite(v));
      for (int l = 0; l < cov.GetNParams(); ++l) {
        for (double v : cov.SecondDerivative(theta, k, l)) EXPECT_TRUE(std::isfinite(v));
      }
    }
    // Along a variance alone the matrix grows by that diagonal entry.
    const std::vector<double> d0 = cov.Derivative(theta, 0);
    EXPECT_EQ(d0[0], 1.0);
    EXPECT_EQ(d0[1], 0.0);
  }
}

TEST(MCEngineCovarianceStructures, Toeplitz) {
  MCEngineCovariance cov(MCEngineCovType::TP, 4);
  CheckDerivatives(cov, {0.8, 0.3, -0.2, 2.0});
  const std::vector<double> S = cov.Matrix({0.8, 0.3, -0.2, 2.0});
  EXPECT_EQ(At(S, 4, 1, 1), 2.0);
  EXPECT_EQ(At(S, 4, 1, 3), 0.3);
  EXPECT_EQ(At(S, 4, 3, 0), -0.2);
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"TP(1)", "TP(2)", "TP(3)", "Residual"}));
  EXPECT_EQ(Labels(cov, false), (std::vector<std::string>{"TP(1)", "TP(2)", "TP(3)", "Variance"}));
  EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{C, C, C, V}));
  EXPECT_EQ(cov.GetScaleParam(), 3);
  MCEngineCovariance one(MCEngineCovType::TP, 1);
  EXPECT_EQ(one.GetNParams(), 1);
  EXPECT_EQ(one.Matrix({1.5}), (std::vector<double>{1.5}));
}

TEST(MCEngineCovarianceStructures, AutoregressiveMovingAverage) {
  MCEngineCovariance cov(MCEngineCovType::ARMA11, 5);
  CheckDerivatives(cov, {0.6, 0.4, 2.0});
  CheckDerivatives(cov, {-0.5, 0.3, 1.5});
  const std::vector<double> S = cov.Matrix({0.6, 0.4, 2.0});
  EXPECT_DOUBLE_EQ(At(S, 5, 0, 0), 2.0);
  EXPECT_DOUBLE_EQ(At(S, 5, 0, 1), 2.0 * 0.4);
  EXPECT_DOUBLE_EQ(At(S, 5, 0, 3), 2.0 * 0.4 * 0.36);
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"ARMA11 rho", "ARMA11 gamma", "Residual"}));
  EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{R, R, V}));
  EXPECT_EQ(cov.GetScaleParam(), 2);
}

TEST(MCEngineCovarianceStructures, CompoundSymmetryByCorrelation) {
  MCEngineCovariance cov(MCEngineCovType::CSR, 4);
  CheckDerivatives(cov, {0.3, 2.0});
  CheckDerivatives(cov, {-0.2, 0.5});
  EXPECT_EQ(MCEngineCovariance(MCEngineCovType::CSR, 2).Matrix({0.25, 2.0}), (std::vector<double>{2.0, 0.5, 0.5, 2.0}));
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"CSR rho", "Residual"}));
  EXPECT_EQ(Labels(cov, false), (std::vector<std::string>{"CSR rho", "Variance"}));
  EXPECT_EQ(cov.GetScaleParam(), 1);
}

TEST(MCEngineCovarianceStructures, HuynhFeldt) {
  MCEngineCovariance cov(MCEngineCovType::HF, 4);
  CheckDerivatives(cov, {2.0, 3.0, 2.5, 4.0, 0.7});
  const std::vector<double> S = cov.Matrix({2.0, 3.0, 2.5, 4.0, 0.7});
  EXPECT_DOUBLE_EQ(At(S, 4, 0, 1), 2.5 - 0.7);
  EXPECT_DOUBLE_EQ(At(S, 4, 3, 3), 4.0);
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"Var(1)", "Var(2)", "Var(3)", "Var(4)", "HF"}));
  EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{V, V, V, V, C}));
  // Its null point: every variance and lambda 1 give the identity.
  const std::vector<double> I = cov.Matrix({1.0, 1.0, 1.0, 1.0, 1.0});
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) EXPECT_EQ(At(I, 4, i, j), i == j ? 1.0 : 0.0);
  }
}

TEST(MCEngineCovarianceStructures, FactorAnalytic) {
  MCEngineCovariance cov(MCEngineCovType::FA1, 4);
  CheckDerivatives(cov, {1.0, 0.5, -0.7, 1.2, 0.6});
  const std::vector<double> S = cov.Matrix({1.0, 0.5, -0.7, 1.2, 0.6});
  EXPECT_DOUBLE_EQ(At(S, 4, 1, 2), 0.5 * -0.7);
  EXPECT_DOUBLE_EQ(At(S, 4, 3, 3), 1.44 + 0.6);
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"FA(1,1)", "FA(2,1)", "FA(3,1)", "FA(4,1)", "FA diagonal"}));
  EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{L, L, L, L, V}));
  EXPECT_EQ(cov.GetScaleParam(), -1);
  double lower = 0.0, upper = 0.0;
  cov.GetParamBounds(0, lower, upper);
  EXPECT_EQ(lower, -kInf);
  EXPECT_EQ(upper, kInf);
}

TEST(MCEngineCovarianceStructures, HeterogeneousFactorAnalytic) {
  MCEngineCovariance cov(MCEngineCovType::FAH1, 3);
  CheckDerivatives(cov, {1.0, -0.5, 0.7, 0.6, 0.2, 1.1});
  const std::vector<double> S = cov.Matrix({1.0, -0.5, 0.7, 0.6, 0.2, 1.1});
  EXPECT_DOUBLE_EQ(At(S, 3, 1, 1), 0.25 + 0.2);
  EXPECT_DOUBLE_EQ(At(S, 3, 0, 2), 0.7);
  EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{"FA(1,1)", "FA(2,1)", "FA(3,1)", "FA diagonal(1)",
                                                         "FA diagonal(2)", "FA diagonal(3)"}));
  EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{L, L, L, V, V, V}));
}

TEST(MCEngineCovarianceStructures, SpatialOnAPlane) {
  // Four points in two coordinates; (0,0) to (3,1) is sqrt(10) apart.
  const std::vector<double> points = {0.0, 0.0, 1.0, 0.0, 0.0, 2.0, 3.0, 1.0};
  const double d03 = std::sqrt(10.0);
  struct Case {
    MCEngineCovType fType;
    double fPhi;
    double fF03;  // the correlation of points 0 and 3
    const char* fLabel;
    MCEngineCovParam::Kind fKind;
  };
  const Case cases[] = {
      {MCEngineCovType::SP_POW, 0.7, std::pow(0.7, d03), "SP(POW)", R},
      {MCEngineCovType::SP_EXP, 1.7, std::exp(-d03 / 1.7), "SP(EXP)", G},
      {MCEngineCovType::SP_GAU, 2.2, std::exp(-10.0 / (2.2 * 2.2)), "SP(GAU)", G},
      {MCEngineCovType::SP_LIN, 0.2, 1.0 - 0.2 * d03, "SP(LIN)", G},
      {MCEngineCovType::SP_SPH, 3.7, 1.0 - 1.5 * d03 / 3.7 + 0.5 * std::pow(d03 / 3.7, 3.0), "SP(SPH)", G},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fLabel);
    MCEngineCovariance cov(c.fType, 4, {}, points);
    CheckDerivatives(cov, {c.fPhi, 2.0});
    const std::vector<double> S = cov.Matrix({c.fPhi, 2.0});
    EXPECT_NEAR(At(S, 4, 0, 3), 2.0 * c.fF03, 1e-14);
    EXPECT_EQ(At(S, 4, 2, 2), 2.0);
    EXPECT_EQ(Labels(cov, true), (std::vector<std::string>{c.fLabel, "Residual"}));
    EXPECT_EQ(Kinds(cov), (std::vector<MCEngineCovParam::Kind>{c.fKind, V}));
    EXPECT_EQ(cov.GetScaleParam(), 1);
    double lower = 0.0, upper = 0.0;
    cov.GetParamBounds(0, lower, upper);
    EXPECT_EQ(lower, 0.0);
    EXPECT_EQ(upper, c.fType == MCEngineCovType::SP_POW ? 1.0 : kInf);
  }
}

TEST(MCEngineCovarianceStructures, SpatialCutOffs) {
  // On a line at 0, 1, 2.5 and 4: the linear and spherical functions vanish
  // beyond their range.
  const std::vector<double> line = {0.0, 1.0, 2.5, 4.0};
  MCEngineCovariance lin(MCEngineCovType::SP_LIN, 4, {}, line);
  CheckDerivatives(lin, {0.3, 1.5});
  EXPECT_DOUBLE_EQ(At(lin.Matrix({0.3, 1.5}), 4, 0, 1), 1.5 * 0.7);
  EXPECT_EQ(At(lin.Matrix({0.3, 1.5}), 4, 0, 3), 0.0);
  EXPECT_EQ(At(lin.Derivative({0.3, 1.5}, 0), 4, 0, 3), 0.0);
  MCEngineCovariance sph(MCEngineCovType::SP_SPH, 4, {}, line);
  CheckDerivatives(sph, {3.3, 1.5});
  EXPECT_EQ(At(sph.Matrix({3.3, 1.5}), 4, 0, 3), 0.0);
  EXPECT_GT(At(sph.Matrix({3.3, 1.5}), 4, 0, 2), 0.0);
  // Linear in the log distance, with every distance above 1.
  const std::vector<double> far = {0.0, 2.0, 5.0, 9.0};
  MCEngineCovariance linl(MCEngineCovType::SP_LINL, 4, {}, far);
  CheckDerivatives(linl, {0.4, 2.0});
  EXPECT_DOUBLE_EQ(At(linl.Matrix({0.4, 2.0}), 4, 1, 3), 2.0 * (1.0 - 0.4 * std::log(7.0)));
  EXPECT_EQ(At(linl.Matrix({0.4, 2.0}), 4, 0, 0), 2.0);
  EXPECT_EQ(At(linl.Matrix({0.6, 2.0}), 4, 0, 3), 0.0);
  EXPECT_EQ(Labels(linl, true), (std::vector<std::string>{"SP(LINL)", "Residual"}));
}

TEST(MCEngineCovarianceStructures, SpatialWithoutPointsLiesOnALine) {
  MCEngineCovariance pow(MCEngineCovType::SP_POW, 3);
  ASSERT_TRUE(pow.IsAvailable());
  EXPECT_DOUBLE_EQ(At(pow.Matrix({0.5, 1.0}), 3, 0, 2), 0.25);
  // The same as AR1 on equally spaced points.
  MCEngineCovariance ar1(MCEngineCovType::AR1, 3);
  EXPECT_EQ(pow.Matrix({0.5, 2.0}), ar1.Matrix({0.5, 2.0}));
}

TEST(MCEngineCovarianceStructures, CorrelationBounds) {
  MCEngineCovariance arh(MCEngineCovType::ARH1, 3);
  double lower = 0.0, upper = 0.0;
  arh.GetParamBounds(3, lower, upper);
  EXPECT_EQ(lower, -1.0);
  EXPECT_EQ(upper, 1.0);
  arh.GetParamBounds(0, lower, upper);
  EXPECT_EQ(lower, 0.0);
  EXPECT_EQ(upper, kInf);
  MCEngineCovariance hf(MCEngineCovType::HF, 3);
  hf.GetParamBounds(3, lower, upper);
  EXPECT_EQ(lower, -kInf);
}
