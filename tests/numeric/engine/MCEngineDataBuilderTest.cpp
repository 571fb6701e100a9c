// The data preparation of a fit polls the cancel query inside its passes over
// the records and its sweep over the columns, and a stop ends it at the
// question that said stop.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCancelAfter.h"
#include "numeric/engine/detail/MCEngineDataBuilder.h"

using namespace MCEngine_850;

namespace {

constexpr int kRecords = 20000;
constexpr int kLevels = 200;
constexpr int kSubjects = 100;

std::size_t U(int i) { return static_cast<std::size_t>(i); }

using StopAt = MCEngineTestCancelAfter;

// An intercept and a factor of kLevels levels over kRecords records, with a
// random intercept per subject: a dense design of kLevels + 1 columns.
MCEngineInput ManyRecords() {
  const int P = kLevels + 1;
  std::vector<double> y(U(kRecords)), X(U(kRecords) * U(P), 0.0);
  std::vector<int> subjects(U(kRecords));
  for (int r = 0; r < kRecords; ++r) {
    const int level = r % kLevels;
    subjects[U(r)] = (r / 7) % kSubjects;
    X[U(r) * U(P)] = 1.0;
    X[U(r) * U(P) + 1 + U(level)] = 1.0;
    y[U(r)] = 0.01 * level + 0.1 * subjects[U(r)] + 0.001 * ((r * 7919) % 1000);
  }
  MCEngineInput input;
  input.SetY(y);
  input.SetX(P, X);
  input.AddTerm(MCEngineTerm::Intercept(0));
  input.AddTerm(MCEngineTerm(1, kLevels, {1}, {}));
  MCEngineRandomBlock block;
  block.SetCovType(MCEngineCovType::VC);
  std::vector<int> rowStart(U(kRecords) + 1);
  for (int r = 0; r <= kRecords; ++r) rowStart[U(r)] = r;
  block.SetColumns(1, rowStart, std::vector<int>(U(kRecords), 0), std::vector<double>(U(kRecords), 1.0));
  block.SetSubjects(subjects);
  input.AddRandomBlock(block);
  return input;
}

// The questions a preparation that is never stopped asks.
int QuestionsOfAWholeBuild(const MCEngineInput& input) {
  StopAt never(INT_MAX);
  MCEngineData data;
  EXPECT_FALSE(MCEngineDataBuilder::Build(input, 1e-12, data, &never).IsError());
  EXPECT_EQ(data.fNRecords, kRecords);
  return never.GetCount();
}

}  // namespace

TEST(MCEngineDataBuilder, AsksAsOftenAsItsWorkGrows) {
  const MCEngineInput input = ManyRecords();
  // Two passes over the dense rows (the usable records and X'X) alone do
  // 2 n (P + 1) operations; a question comes at least once per stride of them.
  const double rowWork = 2.0 * kRecords * (kLevels + 2);
  EXPECT_GE(QuestionsOfAWholeBuild(input), static_cast<int>(rowWork / MCCommon_850::MCStopPoll::kDefaultStride));
}

TEST(MCEngineDataBuilder, AStopEndsThePreparationAtTheQuestionThatSaidIt) {
  const MCEngineInput input = ManyRecords();
  const int questions = QuestionsOfAWholeBuild(input);
  ASSERT_GE(questions, 4);
  for (int stopAt : {0, 1, questions / 2, questions - 1}) {
    StopAt stop(stopAt);
    MCEngineData data;
    const MCEngineStatus status = MCEngineDataBuilder::Build(input, 1e-12, data, &stop);
    EXPECT_TRUE(status.IsError());
    EXPECT_EQ(status.GetCode(), MCEngineStatus::kCancelled) << "stopped at question " << stopAt;
    EXPECT_EQ(stop.GetCount(), stopAt + 1) << "no question after the one that said stop";
  }
}

TEST(MCEngineDataBuilder, TheSweepOverManyColumnsAsksToo) {
  // Aliasing over P columns sweeps about P^3 / 3 operations, with no record
  // in between: 600 columns are some 72 million.
  const int P = 600;
  const std::vector<double> identity = [&] {
    std::vector<double> m(U(P) * U(P), 0.0);
    for (int i = 0; i < P; ++i) m[U(i) * U(P) + U(i)] = 1.0;
    return m;
  }();
  StopAt never(INT_MAX);
  MCCommon_850::MCStopPoll poll(&never);
  const std::vector<bool> aliased = MCEngineDataBuilder::FindAliased(identity, P, 1e-12, &poll);
  EXPECT_EQ(aliased, std::vector<bool>(U(P), false));
  // A question comes once the work since the last reaches the stride, and a
  // pivot's step is at most P^2 of it.
  const double perQuestion = MCCommon_850::MCStopPoll::kDefaultStride + static_cast<double>(P) * P;
  EXPECT_GE(never.GetCount(), static_cast<int>(P / 3.0 * P * P / perQuestion) - 1);
  StopAt soon(2);
  MCCommon_850::MCStopPoll stopped(&soon);
  MCEngineDataBuilder::FindAliased(identity, P, 1e-12, &stopped);
  EXPECT_TRUE(stopped.Stopped());
  EXPECT_EQ(soon.GetCount(), 3);
}

TEST(MCEngineDataBuilder, AFitStoppedWhileItsDataIsPreparedEndsCancelled) {
  const MCEngineInput input = ManyRecords();
  StopAt stop(1);
  MCEngineSettings settings;
  settings.SetCancel(&stop);
  MCEngineFitter fitter;
  fitter.Fit(input, settings);
  EXPECT_EQ(fitter.GetResult().GetStatus().GetCode(), MCEngineStatus::kCancelled);
  // The preparation's second question said stop; the fit asks once more
  // only to say why it ended.
  EXPECT_LE(stop.GetCount(), 3);
}
