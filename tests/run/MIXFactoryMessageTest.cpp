#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "RunTestSupport.h"
#include "host/strings/FacSTDictionary.h"
#include "numeric/common/MCStatus.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"
#include "run/MIXFactory.h"

namespace run_test {
namespace {

using MCCommon_850::MCStatus;

// The user's text of each status, plain and for a split, as the procedure
// must choose it; kept here apart from the code.
struct ExpectedMessage {
  long fCode;
  const char* fpPlain;
  const char* fpSplit;
  bool fbContinues;
};

const ExpectedMessage kExpected[] = {
    {MCCommon_850::MC_SETTINGS_INVALID, "Component Settings are invalid...",
     "Component Settings are invalid for split [%1 = %2:,^1 = ^2:]1...", false},
    {MCCommon_850::MC_MAX_STEP_HALVING, "Max number of step-halving reached ...",
     "Max number of step-halving reached for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_INITIAL_VALUE_FAILED, "Initial Value Failed...",
     "Initial Value Failed for split [%1 = %2:,^1 = ^2:]1...", false},
    {MCCommon_850::MC_LOGLIK_NEAR_ZERO, "The log likelihood value is approaching zero.",
     "The log likelihood value is approaching zero for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_QUASI_SEPARATION, "A quasi-complete separation may exist in the data.",
     "A quasi-complete separation may exist in the data for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_SAME_SUBJECT_WITHIN, "Same subject and within-subject values...",
     "Same subject and within-subject values for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_HESSIAN_SINGULAR, "An unexpected singularity in the Hessian matrix was encountered.",
     "An unexpected singularity in the Hessian matrix was encountered for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_HESSIAN_NOT_PD,
     "All convergence criteria are satisfied. but the final Hessian matrix is not positive definite.",
     "All convergence criteria are satisfied, but the final Hessian matrix for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_SCALE_ZERO, "Scale parameter is zero...",
     "Scale parameter is zero for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_WEIGHTS_DIFFER_IN_SUBJECT, "Different weights in subject...",
     "Different weights in subject for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_INVALID_RECORDS_OVERFLOW, "Invalid records overflow...",
     "Invalid records overflow for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_NO_HESSIAN_CONVERGENCE, "Convergence was achieved, but no Hessian convergence ...",
     "Convergence achieved, no Hessian in split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_FILE_OPEN_FAILED, "Failed to open file for new pass...",
     "Failed to open file for new pass for split [%1 = %2:,^1 = ^2:]1...", false},
    {MCCommon_850::MC_POST_ESTIMATION_FAILED, "Post estimation failed ...",
     "Post estimation failed for split [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_OUTPUT_FILE_ERROR, "Output file error...", "Output file error for split [%1 = %2:,^1 = ^2:]1...",
     false},
    {MCCommon_850::MC_NO_VALID_CASES, "No valid cases ...", "No valid cases in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_DUPLICATE_REPEATED, "Duplicate repeated measure ...",
     "Duplicate rep. meas. split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_ITERATION_LIMIT, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_CONVERGED_SINGULAR_HESSIAN, "Converged singular Hessian ...",
     "Converged singular Hessian in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PARAM_HESSIAN_SINGULAR, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PARAM_AT_LOWER_BOUND, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PERFECT_FIT, "Perfect fit ...", "Perfect fit [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_STEP_HALVING_LIMIT, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PARAM_AT_UPPER_BOUND, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
};

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

class MIXFactoryMessageTest : public RunFixture {
 protected:
  MIXFactoryMessageTest() : fDictionary(FacSTDictionary::SessionDirectory()) { fDictionary.SetProcedure("Mixed"); }

  // The text a key gives, with the split pattern filled for the first split.
  std::string Expected(const std::string& key, bool split, int number = -1) const {
    EXPECT_TRUE(fDictionary.Contains(key)) << key;
    std::string text = fDictionary.LookUp(key);
    if (split) {
      text = Replace(text, "[%1 = %2:,^1 = ^2:]1", "grp = 1");
      text = Replace(text, "[%1=%2:,^1=^2:]1", "grp=1");
      text = Replace(text, "[%1 = %2:,^1 = ^2:]2", "grp = 1");
    }
    if (number >= 0) text = Replace(text, "^1", std::to_string(number));
    return text;
  }

  // A factory on the growth data, standing on the first split.
  MIXFactory& Factory(bool split) {
    MakeGrowthData(fData, {{12, false}, {12, false}});
    if (split) fData.SetSplitVars({GRP});
    fpFactory.reset(new MIXFactory(&Specs(CommandData()), fData, &fProcedure));
    EXPECT_TRUE(fpFactory->StartNewSplit(true));
    return *fpFactory;
  }

  FacSTDictionary fDictionary;
  std::unique_ptr<MIXFactory> fpFactory;
};

TEST_F(MIXFactoryMessageTest, EveryCodeHasItsPlainTextAtItsLevelOnAnUnsplitFile) {
  MIXFactory& factory = Factory(false);
  for (const ExpectedMessage& message : kExpected) {
    ZORV_Session::Current().BeginCommand();
    const std::size_t before = Messages().size();
    MCStatus status(message.fCode, false);
    factory.DisplayMessage(status);
    std::vector<MessageText> messages = Messages();
    ASSERT_EQ(messages.size(), before + 1) << message.fCode;
    EXPECT_EQ(messages.back().fText, Expected(message.fpPlain, false)) << message.fCode;
    EXPECT_EQ(messages.back().fLevel, status.IsError() ? 3 : 2) << message.fCode;
    EXPECT_EQ(Fatal(), status.IsError()) << message.fCode;
  }
}

TEST_F(MIXFactoryMessageTest, EveryCodeHasItsSplitTextAtWarningLevelInASplit) {
  MIXFactory& factory = Factory(true);
  for (const ExpectedMessage& message : kExpected) {
    const std::size_t before = Messages().size();
    factory.DisplayMessage(MCStatus(message.fCode, false));
    std::vector<MessageText> messages = Messages();
    ASSERT_EQ(messages.size(), before + 1) << message.fCode;
    EXPECT_EQ(messages.back().fText, Expected(message.fpSplit, true)) << message.fCode;
    EXPECT_EQ(messages.back().fLevel, 2) << message.fCode;
  }
  EXPECT_FALSE(Fatal());
}

TEST_F(MIXFactoryMessageTest, SixWarningsLetTheProcedureContinue) {
  Factory(false);
  int raised = 0;
  for (const ExpectedMessage& message : kExpected) {
    fpFactory.reset();
    fpFactory.reset(new MIXFactory(&*fSpecs, fData, &fProcedure));
    ASSERT_TRUE(fpFactory->StartNewSplit(true));
    ASSERT_FALSE(fpFactory->GetProcContinues());
    fpFactory->DisplayMessage(MCStatus(message.fCode, false));
    EXPECT_EQ(fpFactory->GetProcContinues(), message.fbContinues) << message.fCode;
    raised += fpFactory->GetProcContinues() ? 1 : 0;
  }
  EXPECT_EQ(raised, 6);
}

TEST_F(MIXFactoryMessageTest, ANewSplitClearsTheContinueFlag) {
  MIXFactory& factory = Factory(true);
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_HESSIAN_SINGULAR, false));
  ASSERT_TRUE(factory.GetProcContinues());
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_FALSE(factory.GetProcContinues());
}

TEST_F(MIXFactoryMessageTest, AnOkStatusSaysNothing) {
  MIXFactory& factory = Factory(false);
  factory.DisplayMessage(MCStatus());
  factory.DisplayMessage(MCStatus(0, false));
  EXPECT_TRUE(Messages().empty());
  EXPECT_FALSE(Fatal());
}

TEST_F(MIXFactoryMessageTest, BuildModelTextFollowsTheKindNotTheCode) {
  MIXFactory& factory = Factory(false);
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_BUILD_MODEL, true));
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_BUILD_MODEL, false));
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].fText, Expected("Warning building model...", false));
  EXPECT_EQ(messages[0].fLevel, 2);
  EXPECT_EQ(messages[1].fText, Expected("Error building model...", false));
  EXPECT_EQ(messages[1].fLevel, 3);
}

TEST_F(MIXFactoryMessageTest, BuildModelInASplitHasTheSplitForms) {
  MIXFactory& factory = Factory(true);
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_BUILD_MODEL, true));
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_BUILD_MODEL, false));
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].fText, Expected("Warning building model for split [%1 = %2:,^1 = ^2:]1...", true));
  EXPECT_EQ(messages[1].fText, Expected("Error building model for split [%1 = %2:,^1 = ^2:]1...", true));
  EXPECT_EQ(messages[1].fLevel, 2);
}

TEST_F(MIXFactoryMessageTest, SilentCodesSayNothingAndDoNotTurnTheHostFatal) {
  MIXFactory& factory = Factory(false);
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_CANCELLED, false));
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_TESTS_INCOMPLETE, false));
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_COVPARAM_REDUNDANT, false));
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_CANCELLED, MCCommon_850::STATUS_ERROR));
  EXPECT_TRUE(Messages().empty());
  EXPECT_FALSE(Fatal());
}

TEST_F(MIXFactoryMessageTest, AMarginalMeansRequestNumberFillsTheText) {
  MIXFactory& factory = Factory(false);
  MCStatus status(MCCommon_850::MC_EMMEANS_ONE_LEVEL, false);
  status.SetDiscreteDatum(0, 3);
  factory.DisplayMessage(status);
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fText,
            Expected("The compared factor has at most one level on estimated marginal means request number ^1...",
                     false, 3));
  EXPECT_EQ(messages[0].fLevel, 2);
}

TEST_F(MIXFactoryMessageTest, AMarginalMeansRequestNumberAndTheSplitFillTheSplitText) {
  MIXFactory& factory = Factory(true);
  MCStatus status(MCCommon_850::MC_EMMEANS_ONE_LEVEL, false);
  status.SetDiscreteDatum(0, 2);
  factory.DisplayMessage(status);
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fText, Expected("The compared factor has at most one level on estimated marginal means request "
                                        "number ^1 for split file [%1 = %2:,^1 = ^2:]2.",
                                        true, 2));
}

// The component names the target by its place in the split's variable
// list and counts the records outside its distribution's support.
TEST_F(MIXFactoryMessageTest, ATargetOutsideItsSupportIsNamedWithItsCount) {
  MIXFactory& factory = Factory(false);
  ASSERT_TRUE(factory.ProcedureDataPass(true));
  ASSERT_TRUE(factory.CompleteMetaData());
  ASSERT_FALSE(factory.GetVarLists().empty());
  const MCXML_850::MCVarList& list = *factory.GetVarLists().front();
  const int target = list.FindVar("y");
  ASSERT_GE(target, 0);
  MCStatus status(MCCommon_850::MC_TARGET_OUT_OF_SUPPORT, false);
  status.SetDiscreteDatum(0, target);
  status.SetDiscreteDatum(1, 7);
  const std::size_t before = Messages().size();
  factory.DisplayMessage(status);
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), before + 1);
  EXPECT_EQ(messages.back().fText,
            "The target y has 7 records outside the support of its distribution (for a binomial target, events "
            "outside 0 to the trials). No model is fitted.");
  EXPECT_EQ(messages.back().fLevel, 3);
}

TEST_F(MIXFactoryMessageTest, ATargetOutsideItsSupportInASplitNamesTheSplitToo) {
  MIXFactory& factory = Factory(true);
  ASSERT_TRUE(factory.ProcedureDataPass(true));
  ASSERT_TRUE(factory.CompleteMetaData());
  ASSERT_FALSE(factory.GetVarLists().empty());
  const int target = factory.GetVarLists().front()->FindVar("y");
  ASSERT_GE(target, 0);
  MCStatus status(MCCommon_850::MC_TARGET_OUT_OF_SUPPORT, false);
  status.SetDiscreteDatum(0, target);
  status.SetDiscreteDatum(1, 2);
  const std::size_t before = Messages().size();
  factory.DisplayMessage(status);
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), before + 1);
  const std::string text = messages.back().fText;
  EXPECT_EQ(text.rfind("The target y has 2 records outside the support of its distribution for split grp=", 0), 0u)
      << text;
  EXPECT_NE(text.find(". No model is fitted."), std::string::npos) << text;
}

// The count of a refused group's work is the status's second datum.
TEST_F(MIXFactoryMessageTest, RandomEffectsTooLargeForAGroupAreRefusedWithTheirWork) {
  MIXFactory& factory = Factory(false);
  MCStatus status(MCCommon_850::MC_RANDOM_EFFECTS_TOO_LARGE, false);
  status.SetDiscreteDatum(1, 4000);
  factory.DisplayMessage(status);
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fText,
            "A group of records that the random effects join (crossed random effects make all records one group) "
            "needs 4000 million multiplications at each evaluation of the likelihood, its records times their "
            "random effects; the limit is 1000 million. No model is fitted.");
  EXPECT_EQ(messages[0].fLevel, 3);
  EXPECT_TRUE(Fatal());
}

TEST_F(MIXFactoryMessageTest, AnUnknownCodeIsAnInternalErrorOrWarning) {
  MIXFactory& factory = Factory(false);
  factory.DisplayMessage(MCStatus(999999, MCCommon_850::STATUS_WARNING));
  factory.DisplayMessage(MCStatus(999999, MCCommon_850::STATUS_ERROR));
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].fText, Expected("Internal warning ...", false));
  EXPECT_EQ(messages[0].fLevel, 2);
  EXPECT_EQ(messages[1].fText, Expected("Internal error ...", false));
  EXPECT_EQ(messages[1].fLevel, 3);
}

TEST_F(MIXFactoryMessageTest, AnUnknownErrorInASplitStaysAWarning) {
  MIXFactory& factory = Factory(true);
  factory.DisplayMessage(MCStatus(999999, MCCommon_850::STATUS_ERROR));
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fText, Expected("Internal warning for split [%1 = %2:,^1 = ^2:]1 ...", true));
  EXPECT_EQ(messages[0].fLevel, 2);
  EXPECT_FALSE(Fatal());
}

TEST_F(MIXFactoryMessageTest, TheSplitFormNamesTheCurrentSplit) {
  MIXFactory& factory = Factory(true);
  ASSERT_TRUE(factory.StartNewSplit(true));
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_PERFECT_FIT, false));
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_NE(messages[0].fText.find("grp=2"), std::string::npos) << messages[0].fText;
}

TEST_F(MIXFactoryMessageTest, AllMessagesOfAnAlgorithmWithoutWarningsKeepTheContinueFlag) {
  MakeGrowthData(fData, {{24, false}});
  MIXFactory factory(&Specs(CommandData()), fData, &fProcedure);
  ASSERT_TRUE(factory.StartNewSplit(true));
  ASSERT_TRUE(factory.ProcedureDataPass(true));
  ASSERT_TRUE(factory.CompleteMetaData());
  ASSERT_TRUE(factory.CreateParamAggregators());
  ASSERT_TRUE(factory.PrepareComponentRun(true));
  ASSERT_TRUE(factory.StartNewSplit(true));
  ASSERT_TRUE(factory.RunGLMMComponent());
  ASSERT_NE(factory.GetGLMMAlgorithm(), nullptr);
  ASSERT_TRUE(factory.GetGLMMAlgorithm()->GetWarnings().empty());
  EXPECT_TRUE(Messages().empty());

  // A warning that lets the procedure go on raises the flag; the algorithm's
  // empty list leaves it, and the line that the procedure continues follows.
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_MAX_STEP_HALVING, false));
  ASSERT_TRUE(factory.GetProcContinues());
  factory.DisplayAllMessages();
  EXPECT_TRUE(factory.GetProcContinues());
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[1].fText, Replace(fDictionary.LookUp("^1 procedure continues ..."), "^1", "MIXED"));
  EXPECT_EQ(messages[1].fLevel, 2);
}

TEST_F(MIXFactoryMessageTest, AllMessagesWithoutAnAlgorithmSayNothing) {
  MIXFactory& factory = Factory(false);
  factory.DisplayMessage(MCStatus(MCCommon_850::MC_MAX_STEP_HALVING, false));
  const std::size_t before = Messages().size();
  factory.DisplayAllMessages();
  EXPECT_EQ(Messages().size(), before);
}

class StatusDisplayTest : public MIXFactoryMessageTest {
 protected:
  StatusDisplayTest() : fpSaved(MCDisplay_850::GetOutStream()) { MCDisplay_850::SetOutStream(fDebug); }
  ~StatusDisplayTest() override { MCDisplay_850::SetOutStream(*fpSaved); }
  std::ostream* fpSaved;
  std::ostringstream fDebug;
};

TEST_F(StatusDisplayTest, ShowsTheCodeAndTheKind) {
  MIXFactory& factory = Factory(false);
  factory.SetStatus(MCStatus(MCCommon_850::MC_MAX_STEP_HALVING, false));
  factory.DisplayStatus();
  std::vector<std::string> lines = FrontEndLines();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2], " ");
  EXPECT_EQ(lines.back(), "GLMM algorithm status: Warning");
  EXPECT_EQ(fDebug.str(), "GLMM algorithm returned code: 130024\n");

  factory.SetStatus(MCStatus());
  factory.DisplayStatus();
  EXPECT_EQ(FrontEndLines().back(), "GLMM algorithm status: OK");
  factory.SetStatus(MCStatus(MCCommon_850::MC_NO_VALID_CASES, false));
  factory.DisplayStatus();
  EXPECT_EQ(FrontEndLines().back(), "GLMM algorithm status: Error");
}

TEST_F(StatusDisplayTest, AStatusOfNoKindPrintsOnlyTheFirstTwoLines) {
  MIXFactory& factory = Factory(false);
  const std::size_t before = FrontEndLines().size();
  factory.SetStatus(MCStatus(4711, MCCommon_850::STATUS_NOTE));
  factory.DisplayStatus();
  std::vector<std::string> lines = FrontEndLines();
  ASSERT_EQ(lines.size(), before + 1);
  EXPECT_EQ(lines.back(), " ");
  EXPECT_EQ(fDebug.str(), "GLMM algorithm returned code: 4711\n");
}

}  // namespace
}  // namespace run_test
