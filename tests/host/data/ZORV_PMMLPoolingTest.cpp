#include "host/data/ZORV_PMMLPooling.h"

#include <gtest/gtest.h>

#include <cstring>

#include "host/data/HostDataTestSource.h"

namespace {

OBS Num(double v) {
  OBS o;
  o.fNum = v;
  return o;
}

}  // namespace

TEST(ZORV_PMMLPooling, UnsplitFileUsesTheNameItself) {
  hostdata_test::HostDataTestSource source;
  ZORV_PMMLPooling pool(source, "out/model.xml");
  std::string name = "old";
  EXPECT_TRUE(pool.GetCurrentPMMLName(name, {}));
  EXPECT_EQ(name, "out/model.xml");
  EXPECT_TRUE(pool.GetFileNames().empty());
}

TEST(ZORV_PMMLPooling, EachSplitGetsItsOwnFile) {
  hostdata_test::HostDataTestSource source;
  source.SetSplitVars({source.Add("group", 0)});
  ZORV_PMMLPooling pool(source, "/tmp/run.1/model.xml");
  OBS one = Num(1), two = Num(2), oneAgain = Num(1);
  std::string name;
  ASSERT_TRUE(pool.GetCurrentPMMLName(name, {&one}));
  EXPECT_EQ(name, "/tmp/run.1/model_split1.xml");
  ASSERT_TRUE(pool.GetCurrentPMMLName(name, {&two}));
  EXPECT_EQ(name, "/tmp/run.1/model_split2.xml");
  ASSERT_TRUE(pool.GetCurrentPMMLName(name, {&oneAgain}));
  EXPECT_EQ(name, "/tmp/run.1/model_split1.xml");
  EXPECT_EQ(pool.GetFileNames().size(), 2u);
}

TEST(ZORV_PMMLPooling, NamesWithoutExtension) {
  hostdata_test::HostDataTestSource source;
  OBS v = Num(5);
  std::string name;
  ZORV_PMMLPooling plain(source, "dir.d/model");
  plain.GetCurrentPMMLName(name, {&v});
  EXPECT_EQ(name, "dir.d/model_split1");
  ZORV_PMMLPooling hidden(source, ".model");
  hidden.GetCurrentPMMLName(name, {&v});
  EXPECT_EQ(name, ".model_split1");
}

TEST(ZORV_PMMLPooling, WideStringSplitValuesCountInFull) {
  hostdata_test::HostDataTestSource source;
  int number = source.Add("n", 0);
  int region = source.Add("region", 12);
  source.SetSplitVars({number, region});
  OBS n = Num(1);
  OBS north[2], northEast[2];
  std::memcpy(north, "north       ", 12);
  std::memcpy(northEast, "north  east ", 12);
  ZORV_PMMLPooling pool(source, "m.xml");
  std::string a, b;
  pool.GetCurrentPMMLName(a, {&n, north});
  pool.GetCurrentPMMLName(b, {&n, northEast});
  EXPECT_EQ(a, "m_split1.xml");
  EXPECT_EQ(b, "m_split2.xml");
}

TEST(ZORV_PMMLPooling, MissingSplitValueIsADistinctSplit) {
  hostdata_test::HostDataTestSource source;
  source.SetSplitVars({source.Add("g", 0)});
  ZORV_PMMLPooling pool(source, "m.xml");
  OBS zero = Num(0);
  std::string name;
  pool.GetCurrentPMMLName(name, {nullptr});
  EXPECT_EQ(name, "m_split1.xml");
  pool.GetCurrentPMMLName(name, {&zero});
  EXPECT_EQ(name, "m_split2.xml");
}

TEST(ZORV_PMMLPooling, CompletedPoolGivesNoNames) {
  hostdata_test::HostDataTestSource source;
  ZORV_PMMLPooling pool(source, "m.xml");
  EXPECT_FALSE(pool.IsComplete());
  pool.CompletePMML();
  EXPECT_TRUE(pool.IsComplete());
  std::string name = "old";
  EXPECT_FALSE(pool.GetCurrentPMMLName(name, {}));
  EXPECT_EQ(name, "");

  ZORV_PMMLPooling nameless(source, "");
  EXPECT_FALSE(nameless.GetCurrentPMMLName(name, {}));
  EXPECT_EQ(nameless.GetBaseName(), "");
}
