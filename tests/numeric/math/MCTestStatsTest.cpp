#include "numeric/math/MCTestStats.h"
#include "numeric/math/MCModelTestStats.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/common/MCMV.h"

using namespace MCMath_850;
using MCCommon_850::MCMV;

TEST(MCTestStats, DefaultsAreMissing) {
  MCTestStats stats;
  EXPECT_TRUE(MCMV::IsMissing(stats.GetWald()));
  EXPECT_TRUE(MCMV::IsMissing(stats.GetDF()));
  EXPECT_TRUE(MCMV::IsMissing(stats.GetDF2()));
  EXPECT_TRUE(MCMV::IsMissing(stats.GetSig()));
}

TEST(MCTestStats, RoundTrip) {
  MCTestStats stats(4.5, 1.0, 12.5, 0.05);
  EXPECT_EQ(stats.GetWald(), 4.5);
  EXPECT_EQ(stats.GetDF2(), 12.5);
  stats.SetWald(1.0);
  stats.SetDF(2.0);
  stats.SetDF2(3.0);
  stats.SetSig(0.5);
  EXPECT_EQ(stats.GetWald(), 1.0);
  EXPECT_EQ(stats.GetDF(), 2.0);
  EXPECT_EQ(stats.GetDF2(), 3.0);
  EXPECT_EQ(stats.GetSig(), 0.5);
}

TEST(MCTestStats, Display) {
  std::ostringstream os;
  MCTestStats(4.5, 1.0, MCMV::Missing(), 0.25).Display(os);
  EXPECT_EQ(os.str(), "Statistic: 4.5\nNumerator df: 1\nDenominator df: missing\nSignificance: 0.25\n");
}

TEST(MCModelTestStats, HoldsTestsInOrder) {
  MCModelTestStats tests;
  EXPECT_EQ(tests.GetNTests(), 0);
  EXPECT_EQ(tests.AddTest(MCTestStats(10.0, 1.0, 20.0, 0.001), MCCommon_850::MCStatus(), {{1.0, 0.0}}, {0}), 0);
  EXPECT_EQ(tests.AddTest(MCTestStats(2.0, 2.0, 20.0, 0.2), MCCommon_850::MCStatus(130051, false),
                          {{0.0, 1.0}, {0.0, -1.0}}, {1, 2}),
            1);
  EXPECT_EQ(tests.GetNTests(), 2);
  EXPECT_EQ(tests.GetTestStats(0).GetWald(), 10.0);
  EXPECT_EQ(tests.GetTestStats(1).GetDF(), 2.0);
  EXPECT_TRUE(tests.GetStatus(0).IsOK());
  EXPECT_EQ(tests.GetStatus(1).GetErrorCode(), 130051);
  EXPECT_EQ(tests.GetLMatrix(1).size(), 2u);
  EXPECT_EQ(tests.GetLMatrix(1)[1][1], -1.0);
  EXPECT_EQ(tests.GetRowIndices(1), (std::vector<int>{1, 2}));
}

TEST(MCModelTestStats, OutOfRangeReadsEmpty) {
  MCModelTestStats tests;
  tests.AddTest(MCTestStats(1.0, 1.0, 1.0, 1.0), MCCommon_850::MCStatus(), {}, {});
  EXPECT_TRUE(MCMV::IsMissing(tests.GetTestStats(5).GetWald()));
  EXPECT_TRUE(MCMV::IsMissing(tests.GetTestStats(-1).GetSig()));
  EXPECT_TRUE(tests.GetStatus(3).IsOK());
  EXPECT_TRUE(tests.GetLMatrix(3).empty());
  EXPECT_TRUE(tests.GetRowIndices(-2).empty());
  tests.Clear();
  EXPECT_EQ(tests.GetNTests(), 0);
}

TEST(MCModelTestStats, Display) {
  MCModelTestStats tests;
  tests.AddTest(MCTestStats(10.0, 1.0, 20.0, 0.001), MCCommon_850::MCStatus(), {{1.0, 0.0}}, {0});
  std::ostringstream os;
  tests.Display(os);
  const std::string text = os.str();
  EXPECT_EQ(text.rfind("Number of tests: 1\nTest: 0\nStatus code: 0\n", 0), 0u);
  EXPECT_NE(text.find("\nContrast row: 1 0\n"), std::string::npos);
  EXPECT_NE(text.find("\nRow indices: 0\n"), std::string::npos);
}
