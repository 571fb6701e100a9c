#include "host/data/ObsVecMap.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

#include "host/data/HostDataTestSource.h"

namespace {

std::vector<OBS> NumKey(double value) {
  std::vector<OBS> key(1);
  key[0].fNum = value;
  return key;
}

// A key of a numeric value followed by a string of `width` bytes.
std::vector<OBS> MixedKey(double number, const std::string& text, int width) {
  std::vector<OBS> key(1 + static_cast<std::size_t>(ObsWordsForWidth(width)));
  std::memset(key.data(), 0, key.size() * sizeof(OBS));
  key[0].fNum = number;
  std::string padded = text;
  padded.resize(static_cast<std::size_t>(width), ' ');
  std::memcpy(&key[1], padded.data(), padded.size());
  return key;
}

}  // namespace

TEST(ObsVecMap, KeySpecFollowsTheVariableTypes) {
  hostdata_test::HostDataTestSource source;
  int age = source.Add("age", 0);
  int code = source.Add("code", 3);
  int region = source.Add("region", 20);
  std::vector<short> spec = ObsVecMap::MakeKeySpec(source, {region, age, code, 99});
  EXPECT_EQ(spec, (std::vector<short>{20, 0, 3, 0}));
  EXPECT_TRUE(ObsVecMap::MakeKeySpec(source, {}).empty());
}

TEST(ObsVecMap, CellSizeCountsKeyAndExtraWords) {
  EXPECT_EQ(ObsVecMap({0}, 2).CellSize(), 3ul);
  EXPECT_EQ(ObsVecMap({8}, 2).CellSize(), 3ul);
  EXPECT_EQ(ObsVecMap({9}, 2).CellSize(), 4ul);
  EXPECT_EQ(ObsVecMap({0, 20, 1}, 1).CellSize(), 1ul + 1 + 3 + 1);
  ObsVecMap noFactors({}, 3);
  EXPECT_EQ(noFactors.KeySize(), 1ul);
  EXPECT_EQ(noFactors.CellSize(), 4ul);
  EXPECT_EQ(noFactors.GetKeySpec().size(), 0u);
}

TEST(ObsVecMap, InsertFindsOrMakesACell) {
  ObsVecMap map({0}, 2);
  EXPECT_EQ(map.Size(), 0ul);
  auto one = NumKey(1.0);
  EXPECT_EQ(map.Contains(one.data()), nullptr);
  OBS* cell = map.Insert(one.data());
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell[0].fNum, 1.0);
  EXPECT_EQ(cell[1].fNum, 0.0);
  EXPECT_EQ(cell[2].fNum, 0.0);
  cell[1].fNum = -1.0;
  cell[2].fNum = 4.0;
  EXPECT_EQ(map.Insert(one.data()), cell);
  EXPECT_EQ(map.Contains(one.data()), cell);
  EXPECT_EQ(map.Size(), 1ul);
  EXPECT_EQ(map.Contains(one.data())[2].fNum, 4.0);
  EXPECT_EQ(map.Contains(nullptr), nullptr);
  EXPECT_EQ(map.Insert(nullptr), nullptr);
}

TEST(ObsVecMap, CellsStayPutAsTheMapGrows) {
  ObsVecMap map({0}, 1);
  auto first = NumKey(0.0);
  OBS* firstCell = map.Insert(first.data());
  for (int i = 1; i < 1000; ++i) map.Insert(NumKey(i).data());
  EXPECT_EQ(map.Size(), 1000ul);
  EXPECT_EQ(map.Contains(first.data()), firstCell);
  EXPECT_EQ(map[0], firstCell);
  EXPECT_EQ(map[999][0].fNum, 999.0);
  EXPECT_EQ(map[1000], nullptr);
  const ObsVecMap& constMap = map;
  EXPECT_EQ(constMap[0], firstCell);
}

TEST(ObsVecMap, KeysAreComparedAsBytes) {
  ObsVecMap map({0}, 0);
  map.Insert(NumKey(0.0).data());
  EXPECT_EQ(map.Contains(NumKey(-0.0).data()), nullptr);
  map.Insert(NumKey(-0.0).data());
  EXPECT_EQ(map.Size(), 2ul);
}

TEST(ObsVecMap, SortsNumbersByValue) {
  ObsVecMap map({0}, 1);
  for (double v : {3.0, -2.5, 10.0, 1.0, -DBL_MAX}) map.Insert(NumKey(v).data());
  std::vector<OBS*> sorted;
  map.Sort(sorted);
  ASSERT_EQ(sorted.size(), 5u);
  std::vector<double> values;
  for (OBS* cell : sorted) values.push_back(cell[0].fNum);
  EXPECT_EQ(values, (std::vector<double>{-DBL_MAX, -2.5, 1.0, 3.0, 10.0}));
}

TEST(ObsVecMap, SortsNotANumberLast) {
  ObsVecMap map({0}, 0);
  map.Insert(NumKey(std::numeric_limits<double>::quiet_NaN()).data());
  map.Insert(NumKey(2.0).data());
  map.Insert(NumKey(-1.0).data());
  std::vector<OBS*> sorted;
  map.Sort(sorted);
  ASSERT_EQ(sorted.size(), 3u);
  EXPECT_EQ(sorted[0][0].fNum, -1.0);
  EXPECT_EQ(sorted[1][0].fNum, 2.0);
  EXPECT_TRUE(std::isnan(sorted[2][0].fNum));
}

TEST(ObsVecMap, SortsVariableByVariableWithWideStrings) {
  const int width = 12;
  ObsVecMap map({0, width}, 2);
  map.Insert(MixedKey(2.0, "apple", width).data());
  map.Insert(MixedKey(1.0, "pear", width).data());
  map.Insert(MixedKey(1.0, "apricot", width).data());
  map.Insert(MixedKey(1.0, "apple extra", width).data());
  EXPECT_EQ(map.KeySize(), 3ul);
  EXPECT_NE(map.Contains(MixedKey(1.0, "apricot", width).data()), nullptr);
  EXPECT_EQ(map.Contains(MixedKey(1.0, "apricots", width).data()), nullptr);

  std::vector<OBS*> sorted;
  map.Sort(sorted);
  ASSERT_EQ(sorted.size(), 4u);
  std::vector<std::string> order;
  for (OBS* cell : sorted) {
    std::string text(reinterpret_cast<const char*>(&cell[1]), width);
    order.push_back(std::to_string(static_cast<int>(cell[0].fNum)) + ":" + text.substr(0, text.find_last_not_of(' ') + 1));
  }
  EXPECT_EQ(order, (std::vector<std::string>{"1:apple extra", "1:apricot", "1:pear", "2:apple"}));
}

TEST(ObsVecMap, AnEffectWithoutFactorsHasOneCell) {
  ObsVecMap map({}, 2);
  OBS zero;
  zero.fNum = 0.0;
  OBS* cell = map.Insert(&zero);
  ASSERT_NE(cell, nullptr);
  cell[1].fNum = 0.0;
  cell[2].fNum = -1.0;
  EXPECT_EQ(map.Insert(&zero), cell);
  std::vector<OBS*> sorted;
  map.Sort(sorted);
  EXPECT_EQ(sorted, std::vector<OBS*>{cell});
}

// Two splits of one factor with categories {1,2} and {2,3}: three distinct
// keys in ascending order, each split's local index in its own word.
TEST(ObsVecMap, HoldsParametersOfSeveralSplits) {
  const unsigned long nSplits = 2;
  ObsVecMap map({0}, nSplits);
  auto add = [&](double category, int split, double localIndex) {
    auto key = NumKey(category);
    OBS* cell = map.Contains(key.data());
    if (cell == nullptr) {
      cell = map.Insert(key.data());
      for (unsigned long s = 0; s < nSplits; ++s) cell[map.KeySize() + s].fNum = -1.0;
    }
    cell[map.KeySize() + static_cast<unsigned long>(split)].fNum = localIndex;
  };
  add(1, 0, 1);
  add(2, 0, 2);
  add(2, 1, 1);
  add(3, 1, 2);
  std::vector<OBS*> sorted;
  map.Sort(sorted);
  ASSERT_EQ(sorted.size(), 3u);
  EXPECT_EQ(sorted[0][0].fNum, 1.0);
  EXPECT_EQ(sorted[0][2].fNum, -1.0);
  EXPECT_EQ(sorted[1][1].fNum, 2.0);
  EXPECT_EQ(sorted[1][2].fNum, 1.0);
  EXPECT_EQ(sorted[2][1].fNum, -1.0);
}
