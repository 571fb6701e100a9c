// Distribution functions against values computed with R.
#include <gtest/gtest.h>

#include <cmath>

#include "numeric/engine/MCEngineProbability.h"

using P = MCEngine_850::MCEngineProbability;

namespace {

::testing::AssertionResult Rel(double a, double b, double tol = 1e-10) {
  if (std::fabs(a - b) <= tol * std::fabs(b)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs " << b;
}

}  // namespace

TEST(MCEngineProbability, Normal) {
  EXPECT_TRUE(Rel(P::NormalCdf(-1.3), 0.096800484585610344));
  EXPECT_TRUE(Rel(P::NormalUpper(1.3), 0.096800484585610344));
  EXPECT_TRUE(Rel(P::NormalQuantile(0.975), 1.9599639845400536));
  EXPECT_TRUE(Rel(P::NormalQuantile(1e-10), -6.3613409024040557));
  EXPECT_EQ(P::NormalQuantile(0.5), 0.0);
}

TEST(MCEngineProbability, StudentT) {
  EXPECT_TRUE(Rel(P::TCdf(2.1, 5.5), 0.95765403743512656));
  EXPECT_TRUE(Rel(P::TCdf(-0.7, 17), 0.24669809977168505));
  EXPECT_TRUE(Rel(P::TTwoSided(3.2, 2.3), 0.070961551400257949));
  EXPECT_TRUE(Rel(P::TTwoSided(-3.2, 2.3), 0.070961551400257949));
  EXPECT_TRUE(Rel(P::TQuantile(0.975, 9.3), 2.2510822246844402));
  EXPECT_TRUE(Rel(P::TQuantile(0.995, 1.5), 17.820310514462797));
  EXPECT_TRUE(Rel(P::TQuantile(0.025, 300), -1.967903011261086));
  EXPECT_TRUE(std::isnan(P::TCdf(1.0, 0.0)));
}

TEST(MCEngineProbability, F) {
  EXPECT_TRUE(Rel(P::FUpper(4.07, 2, 6), 0.076402139924333548));
  EXPECT_TRUE(Rel(P::FUpper(0.303, 6, 45.2), 0.93212333536481651));
  EXPECT_TRUE(Rel(P::FUpper(37.7, 3, 1e12), 2.3610688605898954e-24, 1e-6));
  EXPECT_EQ(P::FUpper(0.0, 3, 10), 1.0);
}

TEST(MCEngineProbability, ChiSquareBetaGamma) {
  EXPECT_TRUE(Rel(P::ChiSquareCdf(3.3, 2.5), 0.7325496868742809));
  EXPECT_TRUE(Rel(P::ChiSquareQuantile(0.975, 3.7), 10.61805524835246));
  EXPECT_TRUE(Rel(P::ChiSquareQuantile(0.025, 0.8), 0.00014656648710691697, 1e-8));
  EXPECT_TRUE(Rel(P::ChiSquareQuantile(0.5, 120), 119.33399578175589));
  EXPECT_TRUE(Rel(P::IncompleteBeta(2.5, 4.5, 0.3), 0.40653901668245918));
  EXPECT_TRUE(Rel(P::IncompleteGammaP(3.2, 7.0), 0.96274291251583344));
  EXPECT_TRUE(Rel(P::IncompleteGammaQ(3.2, 7.0), 1.0 - 0.96274291251583344, 1e-9));
}
