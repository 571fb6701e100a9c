#include <gtest/gtest.h>

#include <cstring>

#include "AppTestSupport.h"
#include "app/AppMixedMemory.h"

using namespace apptest;

namespace {

const ZORV_Dataset& Data() {
  static std::unique_ptr<ZORV_Dataset> data = LoadTrial();
  return *data;
}

AppMixedCommand Parse(const std::string& text) {
  AppMixedCommand command;
  std::string error = ParseMixed(Data(), text, command);
  EXPECT_EQ(error, "") << text;
  return command;
}

bool SameNumericBlock(const std::string& a, const std::string& b) {
  ParserMemory first, second;
  AppMixedMemory::Write(Parse(a), Data(), first);
  AppMixedMemory::Write(Parse(b), Data(), second);
  return std::memcmp(first.GetNumericBlock(), second.GetNumericBlock(), ParserMemory::kNumericBytes) == 0;
}

}  // namespace

TEST(AppMixedParser, ReadsTheHeader) {
  AppMixedCommand c = Parse("GLMIXFIT y WITH x z BY a s");
  EXPECT_EQ(c.fTarget, 0);
  EXPECT_EQ(c.fvFactors, (std::vector<int>{4, 6}));
  EXPECT_EQ(c.fvCovariates, (std::vector<int>{1, 2}));
  EXPECT_TRUE(c.fbIntercept);
  EXPECT_TRUE(c.fvFixedTerms.empty());
}

TEST(AppMixedParser, KeywordsAndNamesIgnoreCase) {
  AppMixedCommand c = Parse(
      "glmixfit Y by A with X /fixed a a*x /random intercept Subjects=S structure=cs predict=yes "
      "/residual index=T structure=diag /estimation method=ml /missing usermissing=include /tests type=1 "
      "/display estimates history(2) /format criteria=f8.2 /contrast a 1 -1 0 k=0 /means a compare=A "
      "reference=last adjust=sequentialsidak at=X(1) /save residual(res) /export model='m.xml' /scaleweight W");
  EXPECT_EQ(c.fTarget, 0);
  EXPECT_EQ(c.fvFixedTerms.size(), 2u);
  ASSERT_EQ(c.fvRandomBlocks.size(), 1u);
  EXPECT_EQ(c.fvRandomBlocks[0].fCovariance, 5);
  EXPECT_TRUE(c.fvRandomBlocks[0].fbPredict);
  EXPECT_EQ(c.fvRandomBlocks[0].fvSubjects, (std::vector<int>{6}));
  EXPECT_EQ(c.fvRepeated, (std::vector<int>{7}));
  EXPECT_EQ(c.fRepeatedCovariance, 8);
  EXPECT_FALSE(c.fbReml);
  EXPECT_TRUE(c.fbIncludeUserMissing);
  EXPECT_EQ(c.fTestType, 1);
  EXPECT_TRUE(c.fbShowEstimates);
  EXPECT_TRUE(c.fbShowHistory);
  EXPECT_EQ(c.fHistoryStep, 2);
  EXPECT_EQ(c.fCriteriaFormat, ZORV_Format(ZORV_Format::F, 8, 2));
  ASSERT_EQ(c.fvContrasts.size(), 1u);
  EXPECT_EQ(c.fvContrasts[0].fvK, (std::vector<double>{0}));
  ASSERT_EQ(c.fvMeans.size(), 1u);
  EXPECT_EQ(c.fvMeans[0].fReference, AppMixedCommand::REFERENCE_LAST);
  EXPECT_EQ(c.fvMeans[0].fAdjust, 3);
  EXPECT_TRUE(c.fvMeans[0].fvbHeld[0]);
  ASSERT_EQ(c.fvSaves.size(), 1u);
  EXPECT_EQ(c.fvSaves[0].fName, "res");
  EXPECT_EQ(c.fFileKind, AppMixedCommand::FILE_MODEL_USER);
  EXPECT_EQ(c.fScaleWeight, 3);
}

TEST(AppMixedParser, ExplicitDefaultsEqualNoSettings) {
  EXPECT_TRUE(SameNumericBlock(
      "GLMIXFIT y",
      "GLMIXFIT y /FIXED INTERCEPT=YES /ESTIMATION METHOD=REML CONFIDENCE=95 ITERATIONS=100 HALVING=5 SCORING=1 "
      "SINGULAR=1E-12 CONVERGENCE=PARAMETERS(1E-6) LOGLIKELIHOOD(0) HESSIAN(0) /MISSING USERMISSING=EXCLUDE "
      "/TESTS TYPE=3 /FORMAT CRITERIA=F40.3 ESTIMATES=F40.4"));
  EXPECT_TRUE(SameNumericBlock("GLMIXFIT y", "GLMIXFIT y /ESTIMATION CONVERGENCE=PARAMETERS(1E-6 RELATIVE) "
                                             "LOGLIKELIHOOD(0 ABSOLUTE) HESSIAN(0 ABSOLUTE)"));
  EXPECT_FALSE(SameNumericBlock("GLMIXFIT y", "GLMIXFIT y /ESTIMATION CONVERGENCE=PARAMETERS(1E-6 ABSOLUTE)"));
  AppMixedCommand c = Parse("GLMIXFIT y /ESTIMATION CONVERGENCE=PARAMETERS(1E-6 ABSOLUTE) HESSIAN(0 RELATIVE)");
  EXPECT_EQ(c.fParameterKind, 2);
  EXPECT_EQ(c.fHessianKind, 1);
  EXPECT_EQ(c.fLogLikelihoodKind, 2);
}

TEST(AppMixedParser, RandomBlocksTakeTheirDefaults) {
  AppMixedCommand c = Parse("GLMIXFIT y BY a /RANDOM a PREDICT=NO /RANDOM INTERCEPT a");
  ASSERT_EQ(c.fvRandomBlocks.size(), 2u);
  EXPECT_EQ(c.fvRandomBlocks[0].fCovariance, 0);
  EXPECT_FALSE(c.fvRandomBlocks[0].fbPredict);
  EXPECT_TRUE(c.fvRandomBlocks[0].fvSubjects.empty());
  EXPECT_EQ(c.fvRandomBlocks[1].fvTerms.size(), 2u);
  EXPECT_EQ(c.CountRandomTerms(), 3);
}

TEST(AppMixedParser, SubcommandsMayComeInAnyOrder) {
  AppMixedCommand c = Parse("GLMIXFIT y BY a /CONTRAST a 1 -1 | a 1 /MEANS a /RANDOM a /FIXED a INTERCEPT=NO");
  ASSERT_EQ(c.fvContrasts.size(), 1u);
  EXPECT_EQ(c.fvContrasts[0].fvFixedCounts, (std::vector<int>{2}));
  EXPECT_EQ(c.fvContrasts[0].fvRandomCounts, (std::vector<int>{1}));
  EXPECT_EQ(c.fvContrasts[0].fvRows, (std::vector<std::vector<double>>{{1, -1, 1}}));
}

TEST(AppMixedParser, TestRowsGiveZerosToTermsTheyLeaveOut) {
  AppMixedCommand c = Parse("GLMIXFIT y BY a b /FIXED a b /CONTRAST a 1 -1 0 ; b 1 -1 ; INTERCEPT 1");
  ASSERT_EQ(c.fvContrasts.size(), 1u);
  const AppMixedCommand::ContrastData& t = c.fvContrasts[0];
  EXPECT_FALSE(t.fbAllValues);
  EXPECT_EQ(t.fvFixedCounts, (std::vector<int>{1, 3, 2}));
  EXPECT_EQ(t.fvRows, (std::vector<std::vector<double>>{
                          {0, 1, -1, 0, 0, 0}, {0, 0, 0, 0, 1, -1}, {1, 0, 0, 0, 0, 0}}));
  EXPECT_TRUE(t.fvK.empty());
  EXPECT_TRUE(t.fLabel.empty());
}

TEST(AppMixedParser, NestedTermsInRandomBlocksAndTests) {
  AppMixedCommand c = Parse("GLMIXFIT y BY a b /FIXED a /RANDOM b(a) /CONTRAST a 1 0 -1 | b(a) 1 -1");
  ASSERT_EQ(c.fvRandomBlocks.size(), 1u);
  EXPECT_EQ(c.fvRandomBlocks[0].fvTerms[0].fvWords, (std::vector<INTEGER>{1, 2}));
  EXPECT_EQ(c.fvRandomBlocks[0].fvTerms[0].fText, "b(a)");
  EXPECT_EQ(c.fvContrasts[0].fvRandomCounts, (std::vector<int>{2}));
}

TEST(AppMixedParser, ComparisonsDefaultToAllPairsAndNoAdjustment) {
  AppMixedCommand c = Parse("GLMIXFIT y BY a b /MEANS a*b COMPARE=a /MEANS b");
  ASSERT_EQ(c.fvMeans.size(), 2u);
  EXPECT_EQ(c.fvMeans[0].fCompare, 1);
  EXPECT_EQ(c.fvMeans[0].fReference, AppMixedCommand::REFERENCE_NONE);
  EXPECT_EQ(c.fvMeans[0].fAdjust, 1);
  EXPECT_EQ(c.fvMeans[1].fCompare, 0);
  EXPECT_EQ(c.fvMeans[1].fvFactors, (std::vector<int>{1}));
}

TEST(AppMixedParser, DocumentsAreNamedInTheOutputFolderUnlessGiven) {
  AppMixedCommand c = Parse("GLMIXFIT y");
  EXPECT_EQ(c.fFileKind, AppMixedCommand::FILE_MODEL_HOST);
  EXPECT_EQ(c.fModelFile, "out/model-1.xml");
  EXPECT_EQ(c.fStatXmlFile, "out/statxml-1.xml");
  EXPECT_EQ(c.fStatJsonFile, "out/statjson-1.json");
  AppMixedCommand p = Parse("GLMIXFIT y /EXPORT PARAMETERS='p.xml'");
  EXPECT_EQ(p.fFileKind, AppMixedCommand::FILE_PARAMETERS_USER);
  EXPECT_EQ(p.fModelFile, "cmd/p.xml");
}

TEST(AppMixedParser, TheLinearModelIsTheDefaultTarget) {
  AppMixedCommand c = Parse("GLMIXFIT y");
  EXPECT_EQ(c.fDistribution, 0);
  EXPECT_EQ(c.fLink, -1);
  EXPECT_EQ(c.fTrials, -1);
  EXPECT_EQ(c.fTrialsValue, 0.0);
  EXPECT_EQ(c.fOffset, -1);
  EXPECT_EQ(c.fFitMethod, 0);
  EXPECT_FALSE(c.fbRobust);
  EXPECT_TRUE(SameNumericBlock("GLMIXFIT y", "GLMIXFIT y /TARGET DISTRIBUTION=NORMAL /ESTIMATION COVB=MODEL"));
  EXPECT_FALSE(SameNumericBlock("GLMIXFIT y", "GLMIXFIT y /TARGET LINK=LOG"));
}

TEST(AppMixedParser, ReadsTheTargetsDistributionAndLink) {
  AppMixedCommand c = Parse(
      "GLMIXFIT y WITH x /target distribution=binomial link=cloglog trials=W offset=z "
      "/estimation fit=laplace covb=robust");
  EXPECT_EQ(c.fDistribution, 1);
  EXPECT_EQ(c.fLink, 4);
  EXPECT_EQ(c.fTrials, 3);
  EXPECT_EQ(c.fOffset, 2);
  EXPECT_EQ(c.fFitMethod, 1);
  EXPECT_TRUE(c.fbRobust);

  c = Parse("GLMIXFIT y /TARGET DISTRIBUTION=GAMMA LINK=POWER(-1)");
  EXPECT_EQ(c.fDistribution, 4);
  EXPECT_EQ(c.fLink, 7);
  EXPECT_EQ(c.fLinkPower, -1.0);

  c = Parse("GLMIXFIT y /TARGET DISTRIBUTION=BINOMIAL TRIALS=12");
  EXPECT_EQ(c.fTrials, -1);
  EXPECT_EQ(c.fTrialsValue, 12.0);

  c = Parse("GLMIXFIT y /TARGET DISTRIBUTION=BINOMIAL REFERENCE=0");
  EXPECT_EQ(c.fReferenceKind, 2);
  EXPECT_EQ(c.fReferenceValue, 0.0);

  c = Parse("GLMIXFIT y BY a /TARGET DISTRIBUTION=POISSON /RANDOM INTERCEPT SUBJECTS=s "
            "/ESTIMATION FIT=QUADRATURE(7)");
  EXPECT_EQ(c.fDistribution, 2);
  EXPECT_EQ(c.fLink, -1);
  EXPECT_EQ(c.fFitMethod, 2);
  EXPECT_EQ(c.fQuadraturePoints, 7);

  // A random slope on a covariate is one effect per subject too.
  c = Parse("GLMIXFIT y WITH x /TARGET DISTRIBUTION=POISSON /RANDOM x SUBJECTS=s /ESTIMATION FIT=QUADRATURE(1)");
  EXPECT_EQ(c.fQuadraturePoints, 1);
  // Pseudo-likelihood takes a residual structure; the linear model takes an offset.
  Parse("GLMIXFIT y /TARGET DISTRIBUTION=POISSON /RESIDUAL INDEX=t SUBJECTS=s STRUCTURE=AR1 /ESTIMATION FIT=PL");
  EXPECT_EQ(Parse("GLMIXFIT y /TARGET OFFSET=x").fOffset, 1);
}
