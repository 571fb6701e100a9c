#include "specs/MIXValidSpecs.h"

#include "base/MIXAssert.h"
#include "base/MIXCommandLayout.h"
#include "host/adapter/ACAStopProcessor.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "numeric/glmm/GLMMSettings.h"

using MCGLMM_850::CustomTest;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
namespace MCConst = MCMath_850::MCConst;

namespace {

namespace L = MIXCommandLayout;

}  // namespace

// ---------------------------------------------------------------------------
// Completing the specification

void MIXValidSpecs::CompleteSpecs() {
  DestroyOwned();
  VarValidSpecsPtr = new ACAVarValidSpecs(true, true, true);
  CompSettingsPtr = new GLMMSettings();
  StopProcessor = new ACAStopProcessor(0.0);

  const bool userMissingExcluded = !ClassMissInclude;
  ACAVarValidSpecs& varSpecs = *VarValidSpecsPtr;

  CompDependVar = -1;
  if (DependVar >= 0) CompDependVar = varSpecs.AddVariable(DependVar, false, false, true, true);

  CompModelVarList.clear();
  CompFactorList.clear();
  if (!FactorList.empty()) {
    varSpecs.AddVariables(FactorList, CompFactorList, true, false, userMissingExcluded, true);
    CompModelVarList.insert(CompModelVarList.end(), CompFactorList.begin(), CompFactorList.end());
  }
  CompCovariateList.clear();
  if (!CovariateList.empty()) {
    varSpecs.AddVariables(CovariateList, CompCovariateList, false, false, true, true);
    CompModelVarList.insert(CompModelVarList.end(), CompCovariateList.begin(), CompCovariateList.end());
  }

  CompModelEffectList.clear();
  for (const MCModelEffect& effect : ModelEffectList) {
    MCModelEffect compEffect;
    CreateCompEffect(effect, compEffect);
    CompModelEffectList.push_back(compEffect);
  }
  CompRandEffectList.clear();
  for (const MCModelEffect& effect : RandEffectList) {
    MCModelEffect compEffect;
    CreateCompEffect(effect, compEffect);
    CompRandEffectList.push_back(compEffect);
  }

  CompOffsetIndex = -1;
  if (OffsetType == MCConst::OFFSET_VARIABLE && OffsetIndex >= 0) {
    CompOffsetIndex = varSpecs.AddVariable(OffsetIndex, false, false, true, true);
  }
  CompTargetOffsetIndex = -1;
  if (TargetOffsetIndex >= 0) CompTargetOffsetIndex = varSpecs.AddVariable(TargetOffsetIndex, false, false, true, true);
  CompTrialsIndex = -1;
  if (TargetSpec.GetTrialsType() == GLMMConst_850::TRIALS_VARIABLE) {
    CompTrialsIndex = varSpecs.AddVariable(TargetSpec.GetTrialsVariable(), false, false, true, true);
  }
  CompZORVWeightIndex = -1;
  if (ZORVWeightIndex >= 0) CompZORVWeightIndex = varSpecs.SetWeightVar();
  CompRegrWeightIndex = -1;
  if (RegrWeightIndex >= 0) CompRegrWeightIndex = varSpecs.AddVariable(RegrWeightIndex, false, false, true, true);

  CompRandVarList.clear();
  if (!RandVarList.empty()) varSpecs.AddVariables(RandVarList, CompRandVarList, true, false, userMissingExcluded, true);

  CompRandomList.clear();
  for (const GLMMRandomSpec& block : RandomList) {
    GLMMRandomSpec compBlock;
    const bool randomOK = CreateCompRandom(block, compBlock, false);
    MIX_ASSERT(randomOK, "randomOK");
    CompRandomList.push_back(compBlock);
  }

  // The component form of a custom test is read from the command again, so
  // that its random rows refer to the component's random effects.
  CompCustomTests.clear();
  if (HasCommand()) {
    const int nCustomTests = CmnInt(L::N_CONTRASTS);
    const INTEGER testHead = CmnWord(L::CONTRAST_LIST);
    for (int k = 1; k <= nCustomTests; ++k) {
      const LR index = static_cast<LR>(k);
      const INTEGER position = tmcget_(CommandInteger, reinterpret_cast<LR*>(CommandInteger), testHead, index);
      CustomTest compTest;
      const bool custTestOK = FillCustomTest(CommandLR + (position - 1), compTest, true);
      MIX_ASSERT(custTestOK, "custTestOK");
      CompCustomTests.push_back(compTest);
    }
  }

  CompEMMeansList.clear();
  for (const MCEmmeansSpec& request : EMMeansList) {
    MCEmmeansSpec compRequest;
    const bool emMeansOK = CreateCompEMMeans(request, compRequest);
    MIX_ASSERT(emMeansOK, "emMeansOK");
    CompEMMeansList.push_back(compRequest);
  }

  CompRepeatedSubjVarList.clear();
  if (!RepeatedSubjVarList.empty()) {
    varSpecs.AddVariables(RepeatedSubjVarList, CompRepeatedSubjVarList, true, false, userMissingExcluded, true);
  }
  CompSpatVarInds.clear();
  if (!SpatVarInds.empty()) varSpecs.AddVariables(SpatVarInds, CompSpatVarInds, false, false, userMissingExcluded, true);

  // The repeated measures get record positions of their own, even when they
  // are also factors of the model.
  varSpecs.SetMultRecode(true);
  CompRepeatedVarList.clear();
  if (!RepeatedVarList.empty()) {
    varSpecs.AddVariables(RepeatedVarList, CompRepeatedVarList, true, false, userMissingExcluded, true);
  }
  const bool repeatOK = CreateCompRandom(RepeatedSpec, CompRepeatedSpec, true);
  MIX_ASSERT(repeatOK, "repeatOK");

  CompleteSettings(CompSettingsPtr, nullptr, -1);
}
