#include "output/MIXSplitResults.h"

#include <gtest/gtest.h>

#include "OutputFixture.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "output/MIXComOutputData.h"
#include "output/MIXOutput.h"

namespace output_test {
namespace {

// The answers of a run controller, with the status replaced: the output side
// knows the split only through these answers.
class ChangedStatus final : public MIXSplitResults {
 public:
  ChangedStatus(const MIXSplitResults& run, MCCommon_850::MCStatus status) : fpRun(&run), fStatus(status) {}
  MCGLMM_850::GLMMAlgorithm* GetGLMMAlgorithm() const override { return fpRun->GetGLMMAlgorithm(); }
  MCGLMM_850::GLMMSettings* GetGLMMSettings() const override { return fpRun->GetGLMMSettings(); }
  MCCommon_850::MCStatus GetStatus() const override { return fStatus; }
  const MCGLMM_850::GLMMOutputStats* GetOutputStats() const override { return fpRun->GetOutputStats(); }
  ACAInputAdapter* GetInputAdapter() const override { return fpRun->GetInputAdapter(); }
  MIXParameterAggregator* GetFixParamAggr() const override { return fpRun->GetFixParamAggr(); }

 private:
  const MIXSplitResults* fpRun;
  MCCommon_850::MCStatus fStatus;
};

class SplitResults : public OutputFixture {
 protected:
  void SetUp() override {
    Load("oats");
    Command("yield", {"Variety"}, {"nitro"}, {{1, 0}, {0, 1}}, {RandomBlock{{{}}, {"Block"}, false}});
    ASSERT_TRUE(Run());
  }
};

TEST_F(SplitResults, TheTablesShowWhatTheSplitResultsAnswer) {
  ChangedStatus same(*fFactory, fFactory->GetStatus());
  fOutput->SetFactory(&same);
  fOutput->DisplayOutput();
  EXPECT_EQ(TablesOf("Information Criteria").size(), 1u);
  EXPECT_EQ(fOutput->GetComOutputData()->GetFactory(), &same);
}

TEST_F(SplitResults, AnErrorStatusLeavesTheInformationCriteriaOut) {
  ChangedStatus failed(*fFactory, MCCommon_850::MCStatus(MCCommon_850::MC_SCALE_ZERO, false));
  fOutput->SetFactory(&failed);
  fOutput->DisplayInfoCriteria();
  EXPECT_TRUE(TablesOf("Information Criteria").empty());
}

}  // namespace
}  // namespace output_test
