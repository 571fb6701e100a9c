// The generalized model: the target's distribution and link, the offset and
// the robust covariance read from the command and handed to every settings.
#include <gtest/gtest.h>

#include <memory>

#include "SpecsFixture.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "numeric/glmm/GLMMSettings.h"

using namespace specs_test;
using MCGLMM_850::GLMMSettings;
using MCGLMM_850::GLMMTargetSpec;
namespace G = GLMMConst_850;
namespace MCConst = MCMath_850::MCConst;

namespace {

using SpecsTarget = SpecsFixture;

}  // namespace

TEST_F(SpecsTarget, ACommandWithoutTargetIsTheLinearModel) {
  ReadAndComplete();
  ASSERT_TRUE(fbRead);
  const GLMMTargetSpec& spec = fSpecs->GetCompSettingsPtr()->GetTargetSpec();
  EXPECT_TRUE(spec.IsLinear());
  EXPECT_EQ(spec.GetLinkGiven(), G::LINK_DEFAULT);
  EXPECT_EQ(spec.GetTrialsType(), G::TRIALS_NONE);
  EXPECT_EQ(spec.GetFitMethod(), G::FIT_PSEUDO_LIKELIHOOD);
  EXPECT_EQ(fSpecs->GetTargetOffsetIndex(), -1);
  EXPECT_FALSE(fSpecs->GetTargetRobust());
  EXPECT_EQ(fSpecs->GetCompSettingsPtr()->GetOffsetType(), MCConst::OFFSET_NONE);
  EXPECT_EQ(fSpecs->GetCompSettingsPtr()->GetCovbType(), MCConst::COVB_MODEL_BASED);
}

TEST_F(SpecsTarget, TheSlotsBecomeTheTargetSpec) {
  fMemory.SetNumericInteger(L::DISTRIBUTION, G::DIST_GAMMA);
  fMemory.SetNumericInteger(L::LINK, G::LINK_POWER + 1);
  fMemory.SetNumericReal(L::LINK_POWER, -1.0);
  fMemory.SetNumericInteger(L::FIT_METHOD, G::FIT_LAPLACE);
  ReadAndComplete();
  ASSERT_TRUE(fbRead);
  const GLMMTargetSpec& spec = fSpecs->GetCompSettingsPtr()->GetTargetSpec();
  EXPECT_EQ(spec.GetDistribution(), G::DIST_GAMMA);
  EXPECT_EQ(spec.GetLink(), G::LINK_POWER);
  EXPECT_EQ(spec.GetLinkPower(), -1.0);
  EXPECT_EQ(spec.GetFitMethod(), G::FIT_LAPLACE);
  EXPECT_FALSE(spec.IsLinear());
  // The engine's offset type and covariance type keep their defaults.
  EXPECT_EQ(fSpecs->GetOffsetType(), MCConst::OFFSET_NONE);
  EXPECT_EQ(fSpecs->GetCovbType(), MCConst::COVB_MODEL_BASED);
}

TEST_F(SpecsTarget, ADefaultLinkIsTheDistributions) {
  fMemory.SetNumericInteger(L::DISTRIBUTION, G::DIST_POISSON);
  fMemory.SetNumericInteger(L::FIT_METHOD, G::FIT_QUADRATURE);
  fMemory.SetNumericInteger(L::QUADRATURE_POINTS, 7);
  ReadAndComplete();
  const GLMMTargetSpec& spec = fSpecs->GetTargetSpec();
  EXPECT_EQ(spec.GetLinkGiven(), G::LINK_DEFAULT);
  EXPECT_EQ(spec.GetLink(), G::LINK_LOG);
  EXPECT_EQ(spec.GetQuadraturePoints(), 7);
}

TEST_F(SpecsTarget, TrialsAndReferenceOfABinomialTarget) {
  fMemory.SetNumericInteger(L::DISTRIBUTION, G::DIST_BINOMIAL);
  fMemory.SetNumericReal(L::TRIALS_VALUE, 12.0);
  fMemory.SetNumericInteger(L::REFERENCE_KIND, G::REFERENCE_VALUE);
  fMemory.SetNumericReal(L::REFERENCE_VALUE, 2.5);
  ReadAndComplete();
  const GLMMTargetSpec& spec = fSpecs->GetCompSettingsPtr()->GetTargetSpec();
  EXPECT_EQ(spec.GetTrialsType(), G::TRIALS_VALUE);
  EXPECT_EQ(spec.GetTrialsValue(), 12.0);
  EXPECT_EQ(spec.GetReferenceType(), G::REFERENCE_VALUE);
  EXPECT_EQ(spec.GetReferenceValue(), "2.5");
  EXPECT_FALSE(spec.GetOrdered());
}

TEST_F(SpecsTarget, AnOrdinalMultinomialTargetHasOrderedCategories) {
  fData.GetVariable(Y)->SetMeasurementLevel(ZORV_Variable::ORDINAL);
  fMemory.SetNumericInteger(L::DISTRIBUTION, G::DIST_MULTINOMIAL);
  fMemory.SetNumericInteger(L::REFERENCE_KIND, G::REFERENCE_FIRST);
  ReadAndComplete();
  EXPECT_TRUE(fSpecs->GetTargetSpec().GetOrdered());
  EXPECT_EQ(fSpecs->GetTargetSpec().GetReferenceType(), G::REFERENCE_FIRST);
}

// The trials and the offset are variables of the record: the settings of
// each split name them by their record index, which differs from the host's.
TEST_F(SpecsTarget, TrialsOffsetAndRobustCovarianceReachEverySplit) {
  fMemory.SetNumericInteger(L::DISTRIBUTION, G::DIST_BINOMIAL);
  fMemory.SetNumericInteger(L::TRIALS, SW + 1);
  fMemory.SetNumericInteger(L::OFFSET, CY + 1);
  fMemory.SetNumericInteger(L::COVARIANCE_KIND, 1);
  ReadAndComplete();
  ASSERT_TRUE(fbRead);
  EXPECT_EQ(fSpecs->GetTargetSpec().GetTrialsVariable(), SW);
  EXPECT_EQ(fSpecs->GetTargetOffsetIndex(), CY);
  EXPECT_TRUE(fSpecs->GetTargetRobust());

  const ACAVarValidSpecs& record = *fSpecs->GetVarValidSpecsPtr();
  // The target, then the offset and the trials.
  ASSERT_EQ(record.GetNRecordVars(), 3);
  auto adapter = OpenAdapter();
  GLMMSettings split;
  fSpecs->CompleteSettings(&split, adapter.get(), 0);
  EXPECT_EQ(split.GetOffsetType(), MCConst::OFFSET_VARIABLE);
  EXPECT_EQ(split.GetOffset(), 1);
  EXPECT_EQ(split.GetTargetSpec().GetTrialsType(), G::TRIALS_VARIABLE);
  EXPECT_EQ(split.GetTargetSpec().GetTrialsVariable(), 2);
  EXPECT_EQ(split.GetCovbType(), MCConst::COVB_ROBUST);
  const GLMMSettings& run = *fSpecs->GetCompSettingsPtr();
  EXPECT_EQ(run.GetOffset(), 1);
  EXPECT_EQ(run.GetTargetSpec().GetTrialsVariable(), 2);
}

TEST_F(SpecsTarget, CodesOutsideTheirRangeReadAsTheDefaults) {
  fMemory.SetNumericInteger(L::DISTRIBUTION, 7);
  fMemory.SetNumericInteger(L::LINK, 10);
  fMemory.SetNumericInteger(L::REFERENCE_KIND, -1);
  fMemory.SetNumericInteger(L::FIT_METHOD, 3);
  ReadAndComplete();
  const GLMMTargetSpec& spec = fSpecs->GetTargetSpec();
  EXPECT_TRUE(spec.IsLinear());
  EXPECT_EQ(spec.GetLinkGiven(), G::LINK_DEFAULT);
  EXPECT_EQ(spec.GetReferenceType(), G::REFERENCE_LAST);
  EXPECT_EQ(spec.GetFitMethod(), G::FIT_PSEUDO_LIKELIHOOD);
}
