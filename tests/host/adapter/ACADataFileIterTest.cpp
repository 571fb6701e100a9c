#include "host/adapter/ACADataFileIter.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/HostDataTestSource.h"

namespace {

// Delivers fixed records, as the host's iterator does for one split.
class VectorIterator : public MCCommon_850::RecordIterator {
 public:
  VectorIterator(std::vector<std::vector<double>> records, int failAfter = -1)
      : fRecords(std::move(records)), fFailAfter(failAfter) {}
  bool HasRecord() const override { return fPos < fRecords.size() && fState != ACA_ITER_FAILED; }
  void Next() override {
    ++fPos;
    if (fFailAfter >= 0 && fPos >= static_cast<std::size_t>(fFailAfter)) fState = ACA_ITER_FAILED;
  }
  int GetState() const override { return fState; }
  void Rewind() override { fPos = 0; }
  const double* Current() const override { return fbNullRecords ? nullptr : fRecords[fPos].data(); }
  void DeliverNull() { fbNullRecords = true; }

 private:
  std::vector<std::vector<double>> fRecords;
  std::size_t fPos = 0;
  int fFailAfter;
  int fState = ACA_ITER_READY;
  bool fbNullRecords = false;
};

class ACADataFileIterTest : public ::testing::Test {
 protected:
  ACADataFileIterTest() : fSpecs(true, true, true) {
    int y = fSource.Add("y", 0);
    int subject = fSource.Add("subject", 0);
    int time = fSource.Add("time", 0);
    fSpecs.AddVariable(y, false, false, true, true);
    std::vector<int> out;
    fSpecs.AddVariables({subject, time}, out, true, false, true, true);
    fpAdapter.reset(new ACAInputAdapter(&fSpecs, fSource));
  }

  static std::vector<double> Read(ACADataFileIter& file, int var) {
    std::vector<double> values;
    for (file.Rewind(); file.HasRecord(); file.Next()) values.push_back(file.Current()[var]);
    return values;
  }

  hostdata_test::HostDataTestSource fSource;
  ACAVarValidSpecs fSpecs;
  std::unique_ptr<ACAInputAdapter> fpAdapter;
};

}  // namespace

TEST_F(ACADataFileIterTest, SortsBySortVariablesKeepingTiesInOrder) {
  VectorIterator source({{10, 2, 1}, {11, 1, 2}, {12, 2, 0}, {13, 1, 1}, {14, 1, 2}});
  ACADataFileIter file(*fpAdapter, {1, 2}, 5);
  EXPECT_EQ(file.GetState(), ACA_ITER_READY);
  ASSERT_TRUE(file.FillDataFile(source));
  EXPECT_FALSE(source.HasRecord());
  EXPECT_EQ(file.GetNRecords(), 5);
  EXPECT_EQ(file.GetNRecordVars(), 3);
  EXPECT_EQ(Read(file, 0), (std::vector<double>{13, 11, 14, 12, 10}));
}

TEST_F(ACADataFileIterTest, WithoutSortVariablesKeepsTheOrderRead) {
  VectorIterator source({{3, 0, 0}, {1, 0, 0}, {2, 0, 0}});
  ACADataFileIter file(*fpAdapter, {}, 0);
  ASSERT_TRUE(file.FillDataFile(source));
  EXPECT_EQ(Read(file, 0), (std::vector<double>{3, 1, 2}));
}

TEST_F(ACADataFileIterTest, WalksLikeARecordIterator) {
  VectorIterator source({{1, 0, 0}, {2, 0, 0}});
  ACADataFileIter file(*fpAdapter, {0}, 2);
  ASSERT_TRUE(file.FillDataFile(source));
  MCCommon_850::RecordIterator& it = file;
  ASSERT_TRUE(it.HasRecord());
  EXPECT_EQ(it.Current()[0], 1.0);
  it.Next();
  EXPECT_EQ(it.Current()[0], 2.0);
  it.Next();
  EXPECT_FALSE(it.HasRecord());
  EXPECT_EQ(it.Current(), nullptr);
  EXPECT_EQ(it.GetState(), ACA_ITER_END);
  it.Next();
  EXPECT_FALSE(it.HasRecord());
  it.Rewind();
  EXPECT_EQ(it.GetState(), ACA_ITER_READY);
  EXPECT_EQ(it.Current()[0], 1.0);
}

TEST_F(ACADataFileIterTest, EmptySplitGivesNoRecords) {
  VectorIterator source({});
  ACADataFileIter file(*fpAdapter, {1}, 0);
  ASSERT_TRUE(file.FillDataFile(source));
  EXPECT_FALSE(file.HasRecord());
  EXPECT_EQ(file.GetNRecords(), 0);
}

TEST_F(ACADataFileIterTest, FailsOnABadLayout) {
  EXPECT_EQ(ACADataFileIter(*fpAdapter, {3}, 5).GetState(), ACA_ITER_FAILED);
  EXPECT_EQ(ACADataFileIter(*fpAdapter, {-1}, 5).GetState(), ACA_ITER_FAILED);
  EXPECT_EQ(ACADataFileIter(*fpAdapter, {0}, -1).GetState(), ACA_ITER_FAILED);
  ACAVarValidSpecs empty(true, true, true);
  ACAInputAdapter emptyAdapter(&empty, fSource);
  ACADataFileIter file(emptyAdapter, {}, 1);
  EXPECT_EQ(file.GetState(), ACA_ITER_FAILED);
  VectorIterator source({{1, 2, 3}});
  EXPECT_FALSE(file.FillDataFile(source));
  EXPECT_FALSE(file.HasRecord());
}

TEST_F(ACADataFileIterTest, FailsWhenTheSourceFails) {
  VectorIterator failing({{1, 0, 0}, {2, 0, 0}, {3, 0, 0}}, 2);
  ACADataFileIter file(*fpAdapter, {0}, 3);
  EXPECT_FALSE(file.FillDataFile(failing));
  EXPECT_EQ(file.GetState(), ACA_ITER_FAILED);
  EXPECT_FALSE(file.HasRecord());

  VectorIterator nulls({{1, 0, 0}});
  nulls.DeliverNull();
  ACADataFileIter other(*fpAdapter, {0}, 1);
  EXPECT_FALSE(other.FillDataFile(nulls));
  EXPECT_EQ(other.GetState(), ACA_ITER_FAILED);
}

TEST_F(ACADataFileIterTest, WritesTheRecordsAsText) {
  hostdata_test::ScratchDir dir("datafile");
  VectorIterator source({{0.1, 2, 1}, {-DBL_MAX, 1, 0}});
  ACADataFileIter file(*fpAdapter, {1}, 2);
  ASSERT_TRUE(file.FillDataFile(source));
  std::string path = dir.File("mixed_sorted_encoded_records.txt");
  ASSERT_TRUE(file.GetTextFile(path));
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(),
            "y\tsubject\ttime\n"
            "-1.7976931348623157e+308\t1\t0\n"
            "0.1\t2\t1\n");
  EXPECT_FALSE(file.GetTextFile(dir.File("no/such/dir/records.txt")));
}

TEST_F(ACADataFileIterTest, ClosingEndsReading) {
  VectorIterator source({{1, 0, 0}});
  ACADataFileIter file(*fpAdapter, {0}, 1);
  ASSERT_TRUE(file.FillDataFile(source));
  file.CloseDataFile();
  EXPECT_FALSE(file.HasRecord());
  file.Rewind();
  EXPECT_FALSE(file.HasRecord());
  EXPECT_EQ(file.GetState(), ACA_ITER_END);
  VectorIterator again({{1, 0, 0}});
  EXPECT_FALSE(file.FillDataFile(again));
  hostdata_test::ScratchDir dir("datafile_closed");
  EXPECT_FALSE(file.GetTextFile(dir.File("closed.txt")));
}

namespace {

// Records with many ties on the sort variables, and a few not-a-numbers.
std::vector<std::vector<double>> ManyRecords(std::size_t n) {
  std::mt19937 random(12345);
  std::uniform_int_distribution<int> small(0, 6);
  std::vector<std::vector<double>> records;
  for (std::size_t i = 0; i < n; ++i) {
    double subject = small(random);
    if (i % 97 == 0) subject = std::nan("");
    records.push_back({static_cast<double>(i), subject, static_cast<double>(small(random) % 3)});
  }
  return records;
}

std::vector<std::vector<double>> ReadAll(ACADataFileIter& file) {
  std::vector<std::vector<double>> records;
  for (file.Rewind(); file.HasRecord(); file.Next())
    records.emplace_back(file.Current(), file.Current() + file.GetNRecordVars());
  return records;
}

std::string FileText(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

TEST_F(ACADataFileIterTest, SpillingSortsAsMemoryDoes) {
  std::vector<std::vector<double>> records = ManyRecords(1000);
  VectorIterator inMemorySource(records);
  ACADataFileIter inMemory(*fpAdapter, {1, 2}, 1000);
  ASSERT_TRUE(inMemory.FillDataFile(inMemorySource));
  EXPECT_FALSE(inMemory.GetSpilled());
  EXPECT_TRUE(inMemory.GetTempFiles().empty());

  // Seven records in memory: 143 runs, merged in two rounds.
  VectorIterator spillingSource(records);
  ACADataFileIter spilling(*fpAdapter, {1, 2}, 1000);
  spilling.SetMemoryLimit(7 * 3 * sizeof(double));
  ASSERT_TRUE(spilling.FillDataFile(spillingSource));
  EXPECT_TRUE(spilling.GetSpilled());
  EXPECT_EQ(spilling.GetNRecords(), 1000);
  ASSERT_EQ(spilling.GetTempFiles().size(), 1u);

  std::vector<std::vector<double>> expected = ReadAll(inMemory);
  std::vector<std::vector<double>> got = ReadAll(spilling);
  ASSERT_EQ(got.size(), expected.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    // Positions 0 (the order read) tell whether ties kept their order.
    EXPECT_EQ(got[i][0], expected[i][0]) << "record " << i;
  }
  EXPECT_TRUE(std::isnan(got.back()[1]));

  hostdata_test::ScratchDir dir("datafile_spill");
  ASSERT_TRUE(inMemory.GetTextFile(dir.File("memory.txt")));
  ASSERT_TRUE(spilling.GetTextFile(dir.File("spilled.txt")));
  EXPECT_EQ(FileText(dir.File("memory.txt")), FileText(dir.File("spilled.txt")));

  std::string temp = spilling.GetTempFiles()[0];
  EXPECT_TRUE(std::filesystem::exists(temp));
  spilling.CloseDataFile();
  EXPECT_FALSE(std::filesystem::exists(temp));
  EXPECT_TRUE(spilling.GetTempFiles().empty());
  EXPECT_FALSE(spilling.HasRecord());
}

TEST_F(ACADataFileIterTest, SpillingWithoutSortVariablesKeepsTheOrderRead) {
  std::vector<std::vector<double>> records = ManyRecords(50);
  VectorIterator source(records);
  ACADataFileIter file(*fpAdapter, {}, 50);
  file.SetMemoryLimit(0);  // still one record at a time
  ASSERT_TRUE(file.FillDataFile(source));
  EXPECT_TRUE(file.GetSpilled());
  std::vector<std::vector<double>> got = ReadAll(file);
  ASSERT_EQ(got.size(), 50u);
  for (std::size_t i = 0; i < got.size(); ++i) EXPECT_EQ(got[i][0], static_cast<double>(i));
}

TEST_F(ACADataFileIterTest, ReadsBackAcrossBlocksAndRewinds) {
  std::vector<std::vector<double>> records = ManyRecords(40);
  VectorIterator source(records);
  ACADataFileIter file(*fpAdapter, {2}, 40);
  file.SetMemoryLimit(5 * 3 * sizeof(double));
  ASSERT_TRUE(file.FillDataFile(source));
  ASSERT_TRUE(file.HasRecord());
  double first = file.Current()[0];
  for (int i = 0; i < 23; ++i) file.Next();
  file.Rewind();
  EXPECT_EQ(file.Current()[0], first);
  int n = 0;
  double lastKey = -1;
  for (; file.HasRecord(); file.Next(), ++n) {
    EXPECT_GE(file.Current()[2], lastKey);
    lastKey = file.Current()[2];
  }
  EXPECT_EQ(n, 40);
  EXPECT_EQ(file.GetState(), ACA_ITER_END);
}

TEST_F(ACADataFileIterTest, TemporaryFilesGoWithTheFile) {
  std::vector<std::string> temps;
  {
    VectorIterator source(ManyRecords(30));
    ACADataFileIter file(*fpAdapter, {1}, 30);
    file.SetMemoryLimit(4 * 3 * sizeof(double));
    ASSERT_TRUE(file.FillDataFile(source));
    temps = file.GetTempFiles();
    ASSERT_EQ(temps.size(), 1u);

    // Filling again replaces the records and their file.
    VectorIterator again(ManyRecords(3));
    ASSERT_TRUE(file.FillDataFile(again));
    EXPECT_FALSE(std::filesystem::exists(temps[0]));
    EXPECT_FALSE(file.GetSpilled());
    EXPECT_EQ(file.GetNRecords(), 3);

    VectorIterator third(ManyRecords(30));
    ASSERT_TRUE(file.FillDataFile(third));
    temps = file.GetTempFiles();
    ASSERT_EQ(temps.size(), 1u);
    EXPECT_TRUE(std::filesystem::exists(temps[0]));
  }
  EXPECT_FALSE(std::filesystem::exists(temps[0]));
}

TEST_F(ACADataFileIterTest, DefaultMemoryLimitAppliesToNewFiles) {
  std::size_t saved = ACADataFileIter::GetDefaultMemoryLimit();
  EXPECT_EQ(saved, std::size_t(256) << 20);
  ACADataFileIter::SetDefaultMemoryLimit(2 * 3 * sizeof(double));
  ACADataFileIter file(*fpAdapter, {0}, 4);
  ACADataFileIter::SetDefaultMemoryLimit(saved);
  EXPECT_EQ(file.GetMemoryLimit(), 2 * 3 * sizeof(double));
  VectorIterator source({{4, 0, 0}, {3, 0, 0}, {2, 0, 0}, {1, 0, 0}});
  ASSERT_TRUE(file.FillDataFile(source));
  EXPECT_TRUE(file.GetSpilled());
  std::vector<double> firsts;
  for (file.Rewind(); file.HasRecord(); file.Next()) firsts.push_back(file.Current()[0]);
  EXPECT_EQ(firsts, (std::vector<double>{1, 2, 3, 4}));
}

TEST_F(ACADataFileIterTest, AFailingSourceLeavesNoTemporaryFile) {
  VectorIterator failing(ManyRecords(20), 15);
  ACADataFileIter file(*fpAdapter, {1}, 20);
  file.SetMemoryLimit(3 * 3 * sizeof(double));
  EXPECT_FALSE(file.FillDataFile(failing));
  EXPECT_EQ(file.GetState(), ACA_ITER_FAILED);
  EXPECT_TRUE(file.GetTempFiles().empty());
}
