#include "specs/MIXValidSpecs.h"

#include <algorithm>
#include <cstring>

#include "base/MIXAssert.h"
#include "base/MIXCommandLayout.h"
#include "base/MixExports.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpComposite.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/parser/ParserText.h"
#include "host/strings/errtxn_.h"

using MCGLMM_850::CustomTest;
using MCGLMM_850::GLMMRandomSpec;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
namespace MCConst = MCMath_850::MCConst;

namespace {

namespace L = MIXCommandLayout;

const int kMaxSavedVars = L::SAVE_SLOTS;

const std::size_t kSavedNameLength = L::SAVE_NAME_BYTES;

const std::size_t kMessageLength = 256;

// Host messages that label the saved variables, by SaveTypes.
const long kSaveLabelMessages[MIXValidSpecs::kNSaveKinds] = {15904, 15903, 15902, 15905, 15906,
                                                              15907, 15908, 15909, 15910, 15911};

std::string UpperCase(const std::string& text) { return GetUpperString(text); }

}  // namespace

// ---------------------------------------------------------------------------
// The parser's memory

bool MIXValidSpecs::HasCommand() const { return CmnMix != 0 && CommandInteger != nullptr; }

double MIXValidSpecs::CmnReal(MIXCommandLayout::Slot<MIXCommandLayout::REAL> slot) const {
  double value = 0.0;
  std::memcpy(&value, reinterpret_cast<const char*>(CmnMix) + slot.fOffset, sizeof value);
  return value;
}

INTEGER MIXValidSpecs::CmnWordAt(int offset) const {
  INTEGER value = 0;
  std::memcpy(&value, reinterpret_cast<const char*>(CmnMix) + offset, sizeof value);
  return value;
}

int MIXValidSpecs::CmnInt(MIXCommandLayout::Slot<MIXCommandLayout::CODE> slot) const {
  // Counts and codes live in the low half of their word.
  return static_cast<int>(static_cast<std::int32_t>(static_cast<std::uint32_t>(CmnWordAt(slot) & 0xffffffff)));
}

bool MIXValidSpecs::CmnFlag(MIXCommandLayout::Slot<MIXCommandLayout::FLAG> slot) const {
  return (CmnWordAt(slot) & 1) != 0;
}

INTEGER MIXValidSpecs::WordAt(INTEGER position, long entry) const { return CommandInteger[position - 1 + entry]; }

INTEGER* MIXValidSpecs::WordPointer(INTEGER position) const {
  // Rows without words may have no position; nothing is read through them.
  return position >= 1 ? CommandInteger + (position - 1) : CommandInteger;
}

void MIXValidSpecs::ReadVarList(int count, INTEGER position, std::vector<int>& list) const {
  list.clear();
  for (int i = 0; i < count; ++i) list.push_back(DataSource->VarIndex(static_cast<long>(WordAt(position, i) - 1)));
}

std::string MIXValidSpecs::ReadBlockName(MIXCommandLayout::Text field) const {
  if (CmaMix == 0) return std::string();
  std::vector<char> buffer(static_cast<std::size_t>(field.fBytes) + 1, '\0');
  std::memcpy(buffer.data(), reinterpret_cast<const char*>(CmaMix) + field.fOffset, buffer.size() - 1);
  return ZORVMBstrtrim_A(buffer.data());
}

// ---------------------------------------------------------------------------
// Reading the command

bool MIXValidSpecs::SetMixedSpecs() {
  MIX_ASSERT(CmnMix != 0, "CmnMix != 0");

  ZORVWeightIndex = DataSource->GetWeightVarIndex();
  DependVar = DataSource->VarIndex(static_cast<long>(CmnWord(L::TARGET) - 1));

  const int nFactors = CmnInt(L::N_FACTORS);
  FactorList.clear();
  if (nFactors > 0) ReadVarList(nFactors, CmnWord(L::FACTORS), FactorList);
  RefinedFactorList = FactorList;
  const int nCovariates = CmnInt(L::N_COVARIATES);
  CovariateList.clear();
  if (nCovariates > 0) ReadVarList(nCovariates, CmnWord(L::COVARIATES), CovariateList);
  RefinedCovariateList = CovariateList;
  ModelVarList = FactorList;
  ModelVarList.insert(ModelVarList.end(), CovariateList.begin(), CovariateList.end());

  CILevelPct = CmnReal(L::CONFIDENCE);
  const int hConvType = CmnInt(L::HESSIAN_KIND);
  if (hConvType == MCConst::CONV_RELATIVE || hConvType == MCConst::CONV_ABSOLUTE) {
    HConvType = static_cast<MCConst::MCConvType>(hConvType);
  }
  HConvCrit = CmnReal(L::HESSIAN_CRITERION);
  const int lConvType = CmnInt(L::LOGLIKELIHOOD_KIND);
  if (lConvType == MCConst::CONV_RELATIVE || lConvType == MCConst::CONV_ABSOLUTE) {
    LConvType = static_cast<MCConst::MCConvType>(lConvType);
    LConvTypeSetByUser = true;
  }
  LConvCrit = CmnReal(L::LOGLIKELIHOOD_CRITERION);
  LConvCritSetByUser = true;
  const int pConvType = CmnInt(L::PARAMETER_KIND);
  if (pConvType == MCConst::CONV_RELATIVE || pConvType == MCConst::CONV_ABSOLUTE) {
    PConvType = static_cast<MCConst::MCConvType>(pConvType);
  }
  PConvCrit = CmnReal(L::PARAMETER_CRITERION);
  Tolerance = CmnReal(L::SINGULAR);
  MaxFisherSteps = CmnInt(L::SCORING);
  EstMethod = MaxFisherSteps > 0 ? MCConst::HESSIAN_FISHER_THEN_NEWTON : MCConst::HESSIAN_NEWTON_RAPHSON;
  const int maxIter = CmnInt(L::ITERATIONS);
  MaxIter = maxIter > 0 ? maxIter : 1;
  MaxStepHalving = CmnInt(L::HALVING);
  InterceptInModel = CmnFlag(L::INTERCEPT);
  const int effectAnalysis = CmnInt(L::TEST_TYPE);
  if (effectAnalysis == 1) EffectAnalysisType = MCConst::EFFECT_TYPE_I;
  if (effectAnalysis == 3) EffectAnalysisType = MCConst::EFFECT_TYPE_III;

  // Fixed terms; the intercept's row is counted but kept only as the flag.
  ModelEffectList.clear();
  CovarateNested.clear();
  const int nFixedTerms = CmnInt(L::N_FIXED_TERMS);
  if (nFixedTerms > 0) {
    INTEGER* cursor = WordPointer(CmnWord(L::FIXED_TERMS));
    for (int t = 0; t < nFixedTerms; ++t) {
      MCModelEffect effect;
      std::vector<bool> flags;
      FillModelEffect(cursor, effect, flags);
      if (effect.IsIntercept()) continue;
      ModelEffectList.push_back(effect);
      CovarateNested.push_back(flags);
    }
  }

  const int thetaEst = CmnInt(L::METHOD);
  if (thetaEst == 1) ThetaEstType = GLMMConst_850::ML;
  if (thetaEst == 2) ThetaEstType = GLMMConst_850::REML;
  ClassMissInclude = CmnFlag(L::INCLUDE_USER_MISSING);

  if (!ReadOutputFiles()) return false;

  PrintHistPar = CmnInt(L::HISTORY_STEP);
  PrintOptionCPS = CmnFlag(L::SHOW_CASES);
  PrintOptionCORB = CmnFlag(L::SHOW_ESTIMATE_CORRELATIONS);
  PrintOptionCOVB = CmnFlag(L::SHOW_ESTIMATE_COVARIANCES);
  PrintOptionTestCov = CmnFlag(L::SHOW_COVARIANCE_TESTS);
  PrintOptionVARIABLEINFO = CmnFlag(L::SHOW_VARIABLES);
  PrintOptionGMatrix = CmnFlag(L::SHOW_G);
  PrintOptionHISTORY = CmnFlag(L::SHOW_HISTORY);
  PrintOptionLMATRIX = CmnFlag(L::SHOW_L);
  PrintOptionRMatrix = CmnFlag(L::SHOW_R);
  PrintOptionSOLUTION = CmnFlag(L::SHOW_ESTIMATES);

  // Random terms of all blocks in one list; an intercept row stays here.
  RandEffectList.clear();
  RandEffectNested.clear();
  const int nRandomTerms = CmnInt(L::N_RANDOM_TERMS);
  if (nRandomTerms > 0) {
    INTEGER* cursor = WordPointer(CmnWord(L::RANDOM_TERMS));
    for (int t = 0; t < nRandomTerms; ++t) {
      MCModelEffect effect;
      std::vector<bool> flags;
      FillModelEffect(cursor, effect, flags);
      RandEffectList.push_back(effect);
      RandEffectNested.push_back(flags);
    }
  }

  const int nRandomSubjects = CmnInt(L::N_RANDOM_SUBJECTS);
  RandVarList.clear();
  if (nRandomSubjects > 0) ReadVarList(nRandomSubjects, CmnWord(L::RANDOM_SUBJECTS), RandVarList);

  RandomList.clear();
  NRandEffects.clear();
  RandCovarNested.clear();
  const int nBlocks = CmnInt(L::N_RANDOM_BLOCKS);
  int blockIndex = 0;
  int firstEffect = 0;
  for (int b = 0; b < nBlocks; ++b) {
    GLMMRandomSpec spec;
    int nEffects = 0;
    std::vector<std::vector<bool>> flags;
    FillRandomSpec(blockIndex, firstEffect, spec, nEffects, flags);
    RandomList.push_back(spec);
    NRandEffects.push_back(nEffects);
    RandCovarNested.insert(RandCovarNested.end(), flags.begin(), flags.end());
    if (spec.GetComputeEBLUPs()) UseStatJSON = true;
  }

  ReadTargetSpec();
  const INTEGER scaleWeight = CmnWord(L::SCALE_WEIGHT);
  if (scaleWeight > 0) RegrWeightIndex = DataSource->VarIndex(static_cast<long>(scaleWeight - 1));

  const int nRepeatedVars = CmnInt(L::N_REPEATED);
  RepeatedVarList.clear();
  if (nRepeatedVars > 0) ReadVarList(nRepeatedVars, CmnWord(L::REPEATED), RepeatedVarList);
  const int nRepeatedSubjects = CmnInt(L::N_REPEATED_SUBJECTS);
  RepeatedSubjVarList.clear();
  if (nRepeatedSubjects > 0) ReadVarList(nRepeatedSubjects, CmnWord(L::REPEATED_SUBJECTS), RepeatedSubjVarList);
  BuildRepeatedSpec(CmnInt(L::REPEATED_COVARIANCE));

  if (!ReadSpatialVars()) return false;

  ReadSavedVars();

  bool ok = true;
  CustomTests.clear();
  const int nCustomTests = CmnInt(L::N_CONTRASTS);
  const INTEGER testHead = CmnWord(L::CONTRAST_LIST);
  for (int k = 1; k <= nCustomTests; ++k) {
    const LR index = static_cast<LR>(k);
    const INTEGER position = tmcget_(CommandInteger, reinterpret_cast<LR*>(CommandInteger), testHead, index);
    CustomTest test;
    ok = FillCustomTest(CommandLR + (position - 1), test, false);
    CustomTests.push_back(test);
  }

  EMMeansList.clear();
  ContrastPairList.clear();
  ContrastStringList.clear();
  EmmRCTypeList.clear();
  EmmRCLongList.clear();
  EmmFixCovStr.clear();
  const int nEMMeans = CmnInt(L::N_MEANS);
  const INTEGER emmHead = CmnWord(L::MEANS_LIST);
  for (int k = 1; k <= nEMMeans; ++k) {
    const LR index = static_cast<LR>(k);
    const INTEGER position = tmcget_(CommandInteger, reinterpret_cast<LR*>(CommandInteger), emmHead, index);
    MCEmmeansSpec spec;
    const OBS* refValue = nullptr;
    ZORV_Format format;
    std::string refText;
    RefCatTypes refCatType = REFCAT_NONE;
    bool tooLong = false;
    std::vector<std::string> fixCovStrings;
    ok = FillEMMeansSpec(CommandLR + (position - 1), spec, refValue, format, refText, refCatType, tooLong,
                         fixCovStrings);
    EMMeansList.push_back(spec);
    ContrastPairList.push_back(ContrastPair(refValue, format));
    ContrastStringList.push_back(refText);
    EmmRCTypeList.push_back(refCatType);
    EmmRCLongList.push_back(tooLong);
    EmmFixCovStr.push_back(fixCovStrings);
  }
  return ok;
}

bool MIXValidSpecs::ReadOutputFiles() {
  const int kind = CmnInt(L::FILE_KIND);
  const bool modelFile = kind == 2 || kind == 4;
  const bool parameterFile = kind == 1 || kind == 3;
  if (!modelFile && !parameterFile) return true;

  const std::string first = ReadBlockName(L::MODEL_FILE);
  const std::string statJSON = ReadBlockName(L::STATJSON_FILE);
  const std::string statXML = ReadBlockName(L::STATXML_FILE);
  const std::string upperFirst = UpperCase(first);
  const std::string upperJSON = UpperCase(statJSON);
  const std::string upperXML = UpperCase(statXML);
  auto same = [](const std::string& a, const std::string& b) { return !a.empty() && a == b; };

  const char* name = nullptr;
  const char* firstKeyword = nullptr;
  const char* secondKeyword = nullptr;
  if (same(upperFirst, upperXML)) {
    name = first.c_str();
    firstKeyword = "MODEL";
    secondKeyword = "STATXML";
  } else if (same(upperFirst, upperJSON)) {
    name = first.c_str();
    firstKeyword = "MODEL";
    secondKeyword = "STATJSON";
  } else if (same(upperXML, upperJSON)) {
    name = statXML.c_str();
    firstKeyword = "STATXML";
    secondKeyword = "STATJSON";
  }
  if (name != nullptr) {
    BpComposite text("File ^1 shouldn't be used for both ^2 and ^3...", true);
    text.Add(BpString(name, false, false));
    text.Add(BpString(firstKeyword, false));
    text.Add(BpString(secondKeyword, false));
    text.Finish();
    BpError(text, 2, 3);
    return false;
  }

  if (modelFile) {
    OutFModelFileName = first;
  } else {
    OutFParameterFileName = first;
  }
  OutFStatXMLFileName = statXML;
  OutFStatJSONFileName = statJSON;
  return true;
}

bool MIXValidSpecs::ReadSpatialVars() {
  SpatVarInds.clear();
  const int nSpatial = CmnInt(L::N_COORDINATES);
  if (nSpatial <= 0) return true;
  const INTEGER position = CmnWord(L::COORDINATES);
  for (int i = 0; i < nSpatial; ++i) {
    const int index = DataSource->VarIndex(static_cast<long>(WordAt(position, i) - 1));
    const ZORV_Variable* variable = DataSource->GetVariable(index);
    if (variable != nullptr && variable->GetType() != 0) {
      BpComposite text("Not numeric REPEATED SPCOORDS ^1 ...", true);
      text.Add(BpVariable(*variable, 2));
      text.Finish();
      BpError(text, 2, 3);
      return false;
    }
    SpatVarInds.push_back(index);
  }
  return true;
}

void MIXValidSpecs::ReadSavedVars() {
  SaveVarTypes.clear();
  SaveScoreTypes.clear();
  SaveVarNames.clear();
  SaveVarLabels.clear();
  SaveVarFormats.clear();
  const int nSaved = std::min(CmnInt(L::N_SAVES), kMaxSavedVars);
  for (int slot = 0; slot < nSaved; ++slot) {
    const SaveTypes type = static_cast<SaveTypes>(CmnInt(L::SAVE_KINDS.At(slot)) - 1);

    char name[kSavedNameLength + 1];
    std::memcpy(name, CommandInteger + (CmnWord(L::SAVE_NAMES.At(slot)) - 1), kSavedNameLength);
    name[kSavedNameLength] = '\0';

    std::string label;
    if (type >= 0 && type < kNSaveKinds) {
      char buffer[kMessageLength];
      const long zero = 0;
      const long length = static_cast<long>(kMessageLength);
      errtxn_(kSaveLabelMessages[type], buffer, length, zero, zero, zero);
      buffer[kMessageLength - 1] = '\0';
      label = ZORVMBstrtrim_A(buffer);
    }

    SaveVarTypes.push_back(type);
    SaveScoreTypes.push_back(GetScoreType(type));
    SaveVarNames.push_back(ZORVMBstrtrim_A(name));
    SaveVarLabels.push_back(label);
    SaveVarFormats.push_back(GetSaveFormat(type));
  }
  MaxObsAdded = static_cast<int>(SaveVarNames.size());
}

void MIXValidSpecs::BuildRepeatedSpec(long covarianceCode) {
  RepeatedSpec.Reset(true);
  if (!RepeatedVarList.empty()) {
    // The repeated measures form one effect: crossed factors on one level.
    MCModelEffect effect;
    effect.Setup(static_cast<int>(RepeatedVarList.size()), 0, &RepeatedVarList);
    for (int index : RepeatedVarList) effect.AddNewFactor(index, false);
    effect.SetVarsIndicesForTheEffectInSetting(RepeatedVarList);
    RepeatedSpec.AddEffect(effect);
  }
  for (int index : RepeatedSubjVarList) RepeatedSpec.AddSubjectVar(index);
  RepeatedSpec.SetCovarianceType(GetCovarType(covarianceCode, true));
  RepeatedSpec.SetIndex(-1);
}
