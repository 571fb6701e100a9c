#include "numeric/common/RecordIterator.h"
#include "numeric/common/MCQueryCancel.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// Records held in memory, two values each.
class VectorIterator : public MCCommon_850::RecordIterator {
 public:
  VectorIterator(std::vector<double> values, bool* pDeleted) : fvValues(std::move(values)), fpDeleted(pDeleted) {}
  ~VectorIterator() override { *fpDeleted = true; }
  bool HasRecord() const override { return fPos + 2 <= fvValues.size(); }
  void Next() override { fPos += 2; }
  int GetState() const override { return HasRecord() ? 0 : 3; }
  void Rewind() override { fPos = 0; }
  const double* Current() const override { return HasRecord() ? &fvValues[fPos] : nullptr; }

 private:
  std::vector<double> fvValues;
  std::size_t fPos = 0;
  bool* fpDeleted;
};

class CountdownCancel : public MCCommon_850::MCQueryCancel {
 public:
  explicit CountdownCancel(int polls) : fPolls(polls) {}
  bool IsCancelled() const override { return --fPolls < 0; }

 private:
  mutable int fPolls;
};

}  // namespace

TEST(RecordIterator, WalksAndRewindsThroughTheInterface) {
  bool deleted = false;
  std::unique_ptr<MCCommon_850::RecordIterator> iter(new VectorIterator({1, 2, 3, 4}, &deleted));
  double sum = 0;
  for (; iter->HasRecord(); iter->Next()) sum += iter->Current()[0] + iter->Current()[1];
  EXPECT_EQ(sum, 10.0);
  EXPECT_EQ(iter->GetState(), 3);
  EXPECT_EQ(iter->Current(), nullptr);
  iter->Rewind();
  ASSERT_TRUE(iter->HasRecord());
  EXPECT_EQ(iter->Current()[1], 2.0);
  iter.reset();
  EXPECT_TRUE(deleted);
}

TEST(MCQueryCancel, IsPolledThroughTheInterface) {
  CountdownCancel cancel(2);
  const MCCommon_850::MCQueryCancel& query = cancel;
  EXPECT_FALSE(query.IsCancelled());
  EXPECT_FALSE(query.IsCancelled());
  EXPECT_TRUE(query.IsCancelled());
}
