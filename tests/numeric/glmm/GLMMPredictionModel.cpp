#include "numeric/glmm/GLMMPredictionModel.h"

#include "numeric/math/MCModelEffect.h"
#include "numeric/xml/IMCVariable.h"

using MCGLMM_850::GLMMRandomSpec;
using MCMath_850::MCModelEffect;

namespace {

std::string DataPath(const std::string& file) { return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file; }

// An effect over the predictor set of the settings (factors, then covariates).
MCModelEffect Effect(const std::vector<int>& set, int nFactors, const std::vector<int>& factors,
                     const std::vector<int>& covariates, const std::vector<int>& written) {
  MCModelEffect effect;
  effect.Setup(nFactors, static_cast<int>(set.size()) - nFactors, &set);
  for (int f : factors) effect.AddNewFactor(f, false);
  for (int c : covariates) effect.AddCovariate(c);
  effect.SetVarsIndicesForTheEffectInSetting(written);
  return effect;
}

}  // namespace

GLMMRandomSpec GLMMPredictionModel::Block(const std::vector<MCModelEffect>& effects, const std::vector<int>& subjects,
                                          GLMMConst_850::CovarType type, int index) const {
  GLMMRandomSpec block;
  for (const MCModelEffect& effect : effects) block.AddEffect(effect);
  for (int subject : subjects) block.AddSubjectVar(subject);
  block.SetCovarianceType(type);
  block.SetIndex(index);
  block.SetComputeEBLUPs(static_cast<std::size_t>(index) >= fvbAskEBLUPs.size() || fvbAskEBLUPs[static_cast<std::size_t>(index)]);
  return block;
}

std::string GLMMPredictionModel::FixturePath(const std::string& model) {
  return std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/eblup_" + model + ".json";
}

void GLMMPredictionModel::AddFactors(const std::vector<int>& factors) {
  for (int f : factors) fSettings.AddFactor(f, fRecords.GetVarList().GetVarAt(f)->GetNCategories());
}

bool GLMMPredictionModel::LoadSleepstudy() {
  if (!fRecords.Load(DataPath("sleepstudy.csv"), {"Reaction", "Days", "Subject"}, {"Subject"})) return false;
  fSettings.SetSingleDependent(0);
  fSettings.AddCovariate(1);
  const std::vector<int> set = {1};
  fSettings.AddModelEffect(Effect(set, 0, {}, {1}, {1}));
  fSettings.AddRandomSpec(Block({MCModelEffect(), Effect(set, 0, {}, {1}, {1})}, {2}, GLMMConst_850::UN, 0));
  fmGroupBlocks = {{"Subject", 0}};
  return true;
}

bool GLMMPredictionModel::LoadOrthodont() {
  if (!fRecords.Load(DataPath("orthodont.csv"), {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"})) {
    return false;
  }
  fSettings.SetSingleDependent(0);
  AddFactors({3});
  fSettings.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  fSettings.AddModelEffect(Effect(set, 1, {}, {1}, {1}));
  fSettings.AddModelEffect(Effect(set, 1, {3}, {}, {3}));
  fSettings.AddModelEffect(Effect(set, 1, {3}, {1}, {1, 3}));
  fSettings.AddRandomSpec(Block({MCModelEffect()}, {2}, GLMMConst_850::VC, 0));
  fmGroupBlocks = {{"Subject", 0}};
  return true;
}

bool GLMMPredictionModel::LoadOrthodontAR1() {
  if (!LoadOrthodont()) return false;
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  const std::vector<int> repeatedSet = {1};
  MCModelEffect position;
  position.Setup(1, 0, &repeatedSet);
  position.AddNewFactor(1, false);
  position.SetVarsIndicesForTheEffectInSetting(repeatedSet);
  repeated.AddEffect(position);
  repeated.AddSubjectVar(2);
  repeated.SetCovarianceType(GLMMConst_850::AR1);
  fSettings.SetRepeated(repeated);
  return true;
}

bool GLMMPredictionModel::LoadOats() {
  if (!fRecords.Load(DataPath("oats.csv"), {"yield", "Block", "Variety", "nitro"}, {"Block", "Variety", "nitro"})) {
    return false;
  }
  fSettings.SetSingleDependent(0);
  AddFactors({1, 2, 3});
  const std::vector<int> set = {1, 2, 3};
  fSettings.AddModelEffect(Effect(set, 3, {2}, {}, {2}));
  fSettings.AddModelEffect(Effect(set, 3, {3}, {}, {3}));
  fSettings.AddModelEffect(Effect(set, 3, {2, 3}, {}, {2, 3}));
  fSettings.AddRandomSpec(Block({MCModelEffect()}, {1}, GLMMConst_850::VC, 0));
  fSettings.AddRandomSpec(Block({MCModelEffect()}, {1, 2}, GLMMConst_850::VC, 1));
  fmGroupBlocks = {{"Block", 0}, {"Block:Variety", 1}};
  return true;
}

bool GLMMPredictionModel::LoadPenicillin() {
  if (!fRecords.Load(DataPath("penicillin.csv"), {"diameter", "plate", "sample"}, {"plate", "sample"})) return false;
  fSettings.SetSingleDependent(0);
  AddFactors({1, 2});
  const std::vector<int> set = {1, 2};
  fSettings.AddRandomSpec(Block({Effect(set, 2, {1}, {}, {1})}, {}, GLMMConst_850::VC, 0));
  fSettings.AddRandomSpec(Block({Effect(set, 2, {2}, {}, {2})}, {}, GLMMConst_850::VC, 1));
  fmGroupBlocks = {{"plate", 0}, {"sample", 1}};
  return true;
}
