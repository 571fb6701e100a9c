#include <gtest/gtest.h>

#include <cmath>

#include "host/viz/XChartStatistics.h"

TEST(XChartStatistics, BinsCentredSoThatSavedMidpointsFallOneInEach) {
  const std::vector<double> midpoints = {10, 12, 14, 16, 18};
  const std::vector<double> frequencies = {1, 4, 6, 3, 2};
  const auto bins = XChartStatistics::Binned(midpoints, frequencies, 5);
  ASSERT_EQ(bins.size(), 5u);
  for (std::size_t i = 0; i < bins.size(); ++i) {
    EXPECT_DOUBLE_EQ(bins[i].fLow, midpoints[i] - 1.0);
    EXPECT_DOUBLE_EQ(bins[i].fHigh, midpoints[i] + 1.0);
    EXPECT_DOUBLE_EQ(bins[i].fTotal, frequencies[i]);
  }
}

TEST(XChartStatistics, BinsRawValuesByTheUsualCount) {
  // 8 values: ceil(log2 8) + 1 = 4 bins over [1, 7] centred on 1, 3, 5, 7.
  const auto bins = XChartStatistics::Binned({1, 1.5, 2.9, 3.1, 4, 6, 6.5, 7}, {}, 0);
  ASSERT_EQ(bins.size(), 4u);
  EXPECT_DOUBLE_EQ(bins[0].fLow, 0.0);
  EXPECT_DOUBLE_EQ(bins[3].fHigh, 8.0);
  EXPECT_DOUBLE_EQ(bins[0].fTotal, 2.0);  // 1, 1.5
  EXPECT_DOUBLE_EQ(bins[1].fTotal, 2.0);  // 2.9, 3.1
  EXPECT_DOUBLE_EQ(bins[2].fTotal, 1.0);  // 4, on the edge, goes to the upper bin
  EXPECT_DOUBLE_EQ(bins[3].fTotal, 3.0);  // 6, 6.5, 7
  // One value, or equal values: one bin around it. Weights not above 0 drop out.
  const auto one = XChartStatistics::Binned({5, 5, 9}, {1, 2, 0}, 7);
  ASSERT_EQ(one.size(), 1u);
  EXPECT_DOUBLE_EQ(one[0].fTotal, 3.0);
  EXPECT_LT(one[0].fLow, 5.0);
  EXPECT_GT(one[0].fHigh, 5.0);
  EXPECT_TRUE(XChartStatistics::Binned({}, {}, 3).empty());
}

TEST(XChartStatistics, DensitiesOfTheFittedDistributions) {
  const double pi = 3.14159265358979323846;
  EXPECT_NEAR(XChartStatistics::Density("normal", 10, 2, 10), 1.0 / (2 * std::sqrt(2 * pi)), 1e-12);
  EXPECT_NEAR(XChartStatistics::Density("normal", 0, 1, 1), std::exp(-0.5) / std::sqrt(2 * pi), 1e-12);
  // Poisson(3) at 2: 9/2 e^-3.
  EXPECT_NEAR(XChartStatistics::Density("poisson", 3, 0, 2), 4.5 * std::exp(-3.0), 1e-12);
  EXPECT_EQ(XChartStatistics::Density("poisson", 3, 0, 2.5), 0.0);
  // Gamma(shape 2, rate 0.5) at 4: 0.25 * 4 * e^-2.
  EXPECT_NEAR(XChartStatistics::Density("gamma", 2, 0.5, 4), 0.25 * 4 * std::exp(-2.0), 1e-12);
  // Negative binomial (r 2, p 0.4) at 3: C(4, 3) 0.4^2 0.6^3.
  EXPECT_NEAR(XChartStatistics::Density("binomialnegative", 2, 0.4, 3), 4 * 0.16 * 0.216, 1e-12);
  // Inverse Gaussian (mean 1, shape 1) at 1: 1 / sqrt(2 pi).
  EXPECT_NEAR(XChartStatistics::Density("gaussianinverse", 1, 1, 1), 1 / std::sqrt(2 * pi), 1e-12);
  EXPECT_TRUE(std::isnan(XChartStatistics::Density("normal", 0, -1, 0)));
  EXPECT_TRUE(std::isnan(XChartStatistics::Density("gamma", -1.7976931348623157e308, 1, 1)));
  EXPECT_TRUE(std::isnan(XChartStatistics::Density("binomialnegative", 2, 1.5, 1)));
  EXPECT_TRUE(std::isnan(XChartStatistics::Density("cauchy", 0, 1, 0)));
  EXPECT_TRUE(XChartStatistics::IsDiscrete("poisson"));
  EXPECT_FALSE(XChartStatistics::IsDiscrete("gamma"));
}

TEST(XChartStatistics, WeightedMoments) {
  double mean = 0;
  double deviation = 0;
  // 1 twice and 4 once: mean 2, squares 1 + 1 + 4 = 6 over 3 - 1.
  XChartStatistics::Moments({1, 4}, {2, 1}, mean, deviation);
  EXPECT_DOUBLE_EQ(mean, 2.0);
  EXPECT_DOUBLE_EQ(deviation, std::sqrt(3.0));
}
