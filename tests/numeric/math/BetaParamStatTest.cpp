#include "numeric/math/BetaParamStat.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <vector>

#include "numeric/common/MCMV.h"

using MCMath_850::BetaParamStat;
using MCCommon_850::MCMV;

namespace {

double DoubleAt(const BetaParamStat& stat, std::size_t offset) {
  double value = 0;
  std::memcpy(&value, reinterpret_cast<const unsigned char*>(&stat) + offset, sizeof value);
  return value;
}

}  // namespace

TEST(BetaParamStat, DefaultsAreMissing) {
  BetaParamStat stat;
  EXPECT_EQ(stat.GetIndex(), 0);
  EXPECT_FALSE(stat.GetRedundant());
  EXPECT_TRUE(MCMV::IsMissing(stat.GetEstimate()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetStdError()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetTStat()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetExpUpperBound()));
}

TEST(BetaParamStat, RoundTrip) {
  BetaParamStat stat;
  stat.SetIndex(3);
  stat.SetEstimate(1.25);
  stat.SetRedundant(true);
  stat.SetStdError(0.5);
  stat.SetLowerBound(0.2);
  stat.SetUpperBound(2.3);
  stat.SetWald(6.25);
  stat.SetDF(12.0);
  stat.SetSig(0.03);
  stat.SetExpEstimate(3.49);
  stat.SetExpLowerBound(1.22);
  stat.SetTStat(2.5);
  stat.SetExpUpperBound(9.97);
  EXPECT_EQ(stat.GetIndex(), 3);
  EXPECT_EQ(stat.GetEstimate(), 1.25);
  EXPECT_TRUE(stat.GetRedundant());
  EXPECT_EQ(stat.GetStdError(), 0.5);
  EXPECT_EQ(stat.GetLowerBound(), 0.2);
  EXPECT_EQ(stat.GetUpperBound(), 2.3);
  EXPECT_EQ(stat.GetWald(), 6.25);
  EXPECT_EQ(stat.GetDF(), 12.0);
  EXPECT_EQ(stat.GetSig(), 0.03);
  EXPECT_EQ(stat.GetExpEstimate(), 3.49);
  EXPECT_EQ(stat.GetExpLowerBound(), 1.22);
  EXPECT_EQ(stat.GetTStat(), 2.5);
  EXPECT_EQ(stat.GetExpUpperBound(), 9.97);
}

TEST(BetaParamStat, FixedLayout) {
  EXPECT_EQ(sizeof(BetaParamStat), 152u);
  std::vector<BetaParamStat> stats(2);
  EXPECT_EQ(reinterpret_cast<const unsigned char*>(&stats[1]) - reinterpret_cast<const unsigned char*>(&stats[0]),
            152);
  BetaParamStat stat;
  stat.SetEstimate(1.5);
  stat.SetRedundant(true);
  stat.SetStdError(MCMV::Missing());
  stat.SetLowerBound(-1.0);
  stat.SetUpperBound(4.0);
  stat.SetDF(7.0);
  stat.SetSig(0.125);
  stat.SetTStat(3.0);
  EXPECT_EQ(DoubleAt(stat, 8), 1.5);
  EXPECT_EQ(reinterpret_cast<const unsigned char*>(&stat)[16], 1);
  EXPECT_EQ(DoubleAt(stat, 24), -1.7976931348623157e308);
  EXPECT_EQ(DoubleAt(stat, 32), -1.0);
  EXPECT_EQ(DoubleAt(stat, 40), 4.0);
  EXPECT_EQ(DoubleAt(stat, 56), 7.0);
  EXPECT_EQ(DoubleAt(stat, 64), 0.125);
  EXPECT_EQ(DoubleAt(stat, 88), 3.0);
}

TEST(BetaParamStat, Display) {
  BetaParamStat stat;
  stat.SetEstimate(1.5);
  std::ostringstream os;
  stat.Display(os);
  const std::string text = os.str();
  EXPECT_EQ(text.rfind("Parameter: 0\nEstimate: 1.5\nRedundant: false\nStandard error: missing\n", 0), 0u);
}
