#include "specs/MIXValidSpecs.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <ostream>
#include <sstream>

#include "base/MIXAssert.h"
#include "base/MIXCommandLayout.h"
#include "base/MixExports.h"
#include "host/adapter/ACACommonDisplay.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAStopProcessor.h"
#include "host/adapter/ACAVarListMetaData.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BP_Character.h"
#include "host/output/BP_ToFront.h"
#include "host/output/BpComposite.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/parser/ParserText.h"
#include "host/strings/errtxn_.h"
#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMComponentDisplay.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/gzl/GZLComponentDisplay.h"
#include "numeric/xml/MCVarList.h"

using MCGLMM_850::CustomTest;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCGLMM_850::LMatrixRow;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
namespace MCConst = MCMath_850::MCConst;

namespace {

namespace L = MIXCommandLayout;

const int kMaxSavedVars = L::SAVE_SLOTS;
const std::size_t kSavedNameLength = L::SAVE_NAME_BYTES;
const std::size_t kMessageLength = 256;
// Host messages that label the saved variables, by SaveTypes.
const long kSaveLabelMessages[kMaxSavedVars] = {15904, 15903, 15902, 15905, 15906, 15907, 15908};

const int kMaxNumericWidth = 40;
const int kMaxDecimals = 16;

// A word of a record is a double; as a count, code or position it is
// truncated. Values no integer can hold give 0.
INTEGER Truncated(double value) {
  if (!std::isfinite(value) || std::fabs(value) >= 9.0e18) return 0;
  return static_cast<INTEGER>(value);
}

int TruncatedInt(double value) {
  const INTEGER word = Truncated(value);
  if (word > std::numeric_limits<int>::max() || word < std::numeric_limits<int>::min()) return 0;
  return static_cast<int>(word);
}

std::string UpperCase(const std::string& text) { return GetUpperString(text); }

}  // namespace

// ---------------------------------------------------------------------------
// Construction

MIXValidSpecs::MIXValidSpecs(void* command, const ProcedureDataSource& source)
    : CommandLR(static_cast<const LR*>(command)),
      CommandInteger(static_cast<INTEGER*>(command)),
      DataSource(&source),
      DependVar(-1),
      CompDependVar(-1),
      FactorSortOrder(MCConst::CATEG_ASCENDING),
      InterceptInModel(true),
      OffsetType(MCConst::OFFSET_NONE),
      OffsetIndex(-1),
      CompOffsetIndex(-1),
      OffsetValue(0.0),
      ZORVWeightIndex(-1),
      CompZORVWeightIndex(-1),
      RegrWeightIndex(-1),
      CompRegrWeightIndex(-1),
      EffectAnalysisType(MCConst::EFFECT_TYPE_III),
      EffectAnalysisStat(GZLConst_850::EFFECT_STAT_WALD),
      IterSep(20),
      HConvType(MCConst::CONV_RELATIVE),
      LConvType(MCConst::CONV_RELATIVE),
      LConvTypeSetByUser(false),
      PConvType(MCConst::CONV_RELATIVE),
      HConvCrit(0.0),
      LConvCrit(0.0),
      LConvCritSetByUser(false),
      PConvCrit(1e-6),
      MaxIter(100),
      MaxStepHalving(5),
      CILevelPct(95.0),
      CIType(GZLConst_850::CI_WALD),
      CIConvProfile(1e-4),
      CovbType(MCConst::COVB_MODEL_BASED),
      ThetaEstType(GLMMConst_850::REML),
      EstMethod(MCConst::HESSIAN_FISHER_THEN_NEWTON),
      MaxFisherSteps(1),
      Tolerance(1e-12),
      ClassMissInclude(false),
      PrintOptionCORB(false),
      PrintOptionCOVB(false),
      PrintOptionCPS(false),
      PrintOptionFIT(false),
      PrintOptionGEF(false),
      PrintOptionHISTORY(false),
      PrintOptionLAGRANGE(false),
      PrintOptionLMATRIX(false),
      PrintOptionMODELINFO(false),
      PrintOptionSOLUTION(false),
      PrintOptionSUMMARY(false),
      PrintOptionVARIABLEINFO(false),
      PrintOptionWORKINGCORR(false),
      PrintHistPar(1),
      PrintOptionEXPONENTIATED(false),
      PrintOptionTestCov(false),
      PrintOptionGMatrix(false),
      PrintOptionRMatrix(false),
      PrintOptionNONE(false),
      MaxObsAdded(0),
      UseStatJSON(false),
      VarValidSpecsPtr(nullptr),
      CompSettingsPtr(nullptr),
      StopProcessor(nullptr),
      ConvTypeTypeIandIII(MCConst::CONV_RELATIVE),
      ConvCritTypeIandIII(1e-4),
      MissingValue(MCCommon_850::MCMV_Missing()) {}

MIXValidSpecs::~MIXValidSpecs() { DestroyOwned(); }

void MIXValidSpecs::DestroyOwned() {
  delete VarValidSpecsPtr;
  VarValidSpecsPtr = nullptr;
  delete CompSettingsPtr;
  CompSettingsPtr = nullptr;
  delete StopProcessor;
  StopProcessor = nullptr;
}

// ---------------------------------------------------------------------------
// Setters with preconditions or side effects

void MIXValidSpecs::SetIterSep(int iterSep) {
  MIX_ASSERT(iterSep >= 0, "iterSep >= 0");
  IterSep = iterSep;
}

void MIXValidSpecs::SetLConvType(MCConst::MCConvType type) {
  LConvType = type;
  LConvTypeSetByUser = true;
}

void MIXValidSpecs::SetHConvCrit(double convCrit) {
  MIX_ASSERT(convCrit >= 0.0, "convCrit >= 0.0");
  HConvCrit = convCrit;
}

void MIXValidSpecs::SetLConvCrit(double convCrit) {
  MIX_ASSERT(convCrit >= 0.0, "convCrit >= 0.0");
  LConvCrit = convCrit;
  LConvCritSetByUser = true;
}

void MIXValidSpecs::SetPConvCrit(double convCrit) {
  MIX_ASSERT(convCrit >= 0.0, "convCrit >= 0.0");
  PConvCrit = convCrit;
}

void MIXValidSpecs::SetMaxIter(int maxIter) {
  MIX_ASSERT(maxIter >= 0, "maxIter >= 0");
  MaxIter = maxIter;
}

void MIXValidSpecs::SetMaxStepHalving(int maxStepHalving) {
  MIX_ASSERT(maxStepHalving > 0, "maxStepHalving > 0");
  MaxStepHalving = maxStepHalving;
}

void MIXValidSpecs::SetCILevelPct(double ciLevelPct) {
  MIX_ASSERT(ciLevelPct >= 0.0, "ciLevelPct >= 0.0");
  MIX_ASSERT(ciLevelPct < 100.0, "ciLevelPct < 100.0");
  CILevelPct = ciLevelPct;
}

void MIXValidSpecs::SetCIConvProfile(double convCrit) {
  MIX_ASSERT(convCrit >= 0.0, "convCrit >= 0.0");
  CIConvProfile = convCrit;
}

void MIXValidSpecs::SetMaxFisherSteps(int maxFisherSteps) {
  MIX_ASSERT(maxFisherSteps >= 0, "maxFisherSteps >= 0");
  MaxFisherSteps = maxFisherSteps;
  EstMethod = maxFisherSteps != 0 ? MCConst::HESSIAN_FISHER_THEN_NEWTON : MCConst::HESSIAN_NEWTON_RAPHSON;
}

void MIXValidSpecs::SetTolerance(double toler) {
  MIX_ASSERT(toler > 0.0, "toler > 0.0");
  Tolerance = toler;
}

void MIXValidSpecs::SetConvCritTypeIandIII(double convCrit) {
  MIX_ASSERT(convCrit >= 0.0, "convCrit >= 0.0");
  ConvCritTypeIandIII = convCrit;
}

void MIXValidSpecs::SetPrintHistPar(int printHistPar) {
  MIX_ASSERT(printHistPar > 0, "printHistPar > 0");
  PrintHistPar = printHistPar;
}

void MIXValidSpecs::SetModelEffectList(const std::vector<MCModelEffect>& effects,
                                       const std::vector<std::vector<bool>>& nestedFlags) {
  ModelEffectList = effects;
  CovarateNested = nestedFlags;
}

void MIXValidSpecs::SetRandomSpec(const std::vector<GLMMRandomSpec>& specs, const std::vector<int>& effectCounts,
                                  const std::vector<std::vector<bool>>& nestedFlags) {
  RandomList = specs;
  NRandEffects = effectCounts;
  RandCovarNested = nestedFlags;
}

void MIXValidSpecs::SetEMMeansSpec(const std::vector<MCEmmeansSpec>& specs, const std::vector<ContrastPair>& pairs,
                                   const std::vector<std::string>& strings, const std::vector<RefCatTypes>& refCatTypes,
                                   const std::vector<std::vector<std::string>>& fixCovStrings) {
  const std::size_t nEMMeans = specs.size();
  const std::size_t nContrasts = pairs.size();
  const std::size_t nValues = strings.size();
  const std::size_t nRefCatTypes = refCatTypes.size();
  const std::size_t nvFixCovStr = fixCovStrings.size();
  MIX_ASSERT(nEMMeans == nContrasts, "nEMMeans == nContrasts");
  MIX_ASSERT(nEMMeans == nValues, "nEMMeans == nValues");
  MIX_ASSERT(nEMMeans == nRefCatTypes, "nEMMeans == nRefCatTypes");
  MIX_ASSERT(nEMMeans == nvFixCovStr, "nEMMeans == nvFixCovStr");
  EMMeansList = specs;
  ContrastPairList = pairs;
  ContrastStringList = strings;
  EmmRCTypeList = refCatTypes;
  EmmFixCovStr = fixCovStrings;
}

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
    if (type >= 0 && type < kMaxSavedVars) {
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

// ---------------------------------------------------------------------------
// Model terms

bool MIXValidSpecs::FillModelEffect(INTEGER*& cursor, MCModelEffect& effect, std::vector<bool>& nestedFlags) {
  const int nFactors = static_cast<int>(FactorList.size());
  const int nCovariates = static_cast<int>(CovariateList.size());
  effect.Reset();
  effect.Setup(nFactors, nCovariates, &ModelVarList);
  nestedFlags.clear();

  std::vector<std::pair<INTEGER, int>> levels;
  for (int i = 0; i < nFactors; ++i) levels.emplace_back(cursor[i], i);
  std::sort(levels.begin(), levels.end());
  INTEGER oldFactLev = 0;
  for (const auto& pair : levels) {
    const INTEGER factLev = pair.first;
    MIX_ASSERT(factLev >= oldFactLev, "factLev >= oldFactLev");
    if (factLev > 0) {
      effect.AddNewFactor(FactorList[static_cast<std::size_t>(pair.second)], oldFactLev < factLev);
      if (oldFactLev < factLev) {
        MIX_ASSERT(factLev == oldFactLev + 1, "factLev == oldFactLev + 1");
        oldFactLev = factLev;
      }
    }
  }

  for (int j = 0; j < nCovariates; ++j) {
    const INTEGER word = cursor[nFactors + j];
    nestedFlags.push_back(word < 0);
    const INTEGER times = word < 0 ? -word : word;
    for (INTEGER k = 0; k < times; ++k) effect.AddCovariate(CovariateList[static_cast<std::size_t>(j)]);
  }

  std::vector<int> ordered;
  if (!effect.IsIntercept()) {
    const std::vector<int> factors = effect.GetFactors();
    const std::vector<int>& factorLevels = effect.GetFactorLevels();
    std::vector<int> factorList;
    if (!factorLevels.empty()) {
      const int highest = *std::max_element(factorLevels.begin(), factorLevels.end());
      for (int level = highest; level >= 0; --level) {
        std::vector<int> ofLevel;
        for (std::size_t f = 0; f < factors.size(); ++f) {
          if (factorLevels[f] == level) ofLevel.push_back(factors[f]);
        }
        factorList.insert(factorList.begin(), ofLevel.begin(), ofLevel.end());
      }
    }
    std::vector<int> covariateList;
    for (int covariate : effect.GetCovariates()) {
      const int mult = effect.GetCovariateMult(covariate);
      for (int k = 0; k < std::max(mult, 1); ++k) covariateList.push_back(covariate);
    }
    if (factorList.empty()) {
      ordered = covariateList;
    } else if (effect.GetFactorsInParens()) {
      ordered = covariateList;
      ordered.insert(ordered.end(), factorList.begin(), factorList.end());
    } else {
      ordered = factorList;
      ordered.insert(ordered.end(), covariateList.begin(), covariateList.end());
    }
  }
  effect.SetVarsIndicesForTheEffectInSetting(ordered);

  cursor += ModelVarList.size();
  return true;
}

bool MIXValidSpecs::FillRandomSpec(int& blockIndex, int& firstEffect, GLMMRandomSpec& spec, int& nEffects,
                                   std::vector<std::vector<bool>>& nestedFlags) {
  spec.Reset(false);
  nestedFlags.clear();

  const INTEGER count = WordAt(CmnWord(L::BLOCK_TERM_COUNTS), blockIndex);
  nEffects = static_cast<int>(count < 0 ? -count : count);
  if (nEffects > 0) {
    const long rowLength = static_cast<long>(CmnInt(L::N_FACTORS)) + CmnInt(L::N_COVARIATES);
    INTEGER* cursor = WordPointer(CmnWord(L::RANDOM_TERMS)) + static_cast<long>(firstEffect) * rowLength;
    for (int e = 0; e < nEffects; ++e) {
      MCModelEffect effect;
      std::vector<bool> flags;
      FillModelEffect(cursor, effect, flags);
      spec.AddEffect(effect);
      nestedFlags.push_back(flags);
    }
  }

  // Per block: the effect count and the EBLUP flag. Per first effect of the
  // block: the covariance code and the subjects.
  spec.SetComputeEBLUPs(WordAt(CmnWord(L::BLOCK_PREDICT), blockIndex) == 1);
  spec.SetCovarianceType(GetCovarType(static_cast<long>(WordAt(CmnWord(L::BLOCK_COVARIANCES), firstEffect)), false));
  const INTEGER nSubjects = WordAt(CmnWord(L::BLOCK_SUBJECT_COUNTS), firstEffect);
  if (nSubjects > 0) {
    const INTEGER subjectList = WordAt(CmnWord(L::BLOCK_SUBJECT_LISTS), firstEffect);
    for (INTEGER s = 0; s < nSubjects; ++s) {
      const INTEGER zorvInd = WordAt(subjectList, static_cast<long>(s)) - 1;
      MIX_ASSERT(zorvInd >= 0, "zorvInd >= 0");
      spec.AddSubjectVar(static_cast<int>(zorvInd));
    }
  }

  spec.SetIndex(blockIndex);
  ++blockIndex;
  firstEffect += nEffects;
  return true;
}

bool MIXValidSpecs::CreateCompEffect(const MCModelEffect& effect, MCModelEffect& compEffect) {
  compEffect = effect;
  compEffect.SetVarIndices(&CompModelVarList);
  std::vector<int> compVars;
  for (int predInd : effect.GetVarsIndicesForTheEffectInSetting()) {
    MIX_ASSERT(predInd >= 0, "predInd >= 0");
    const int compPredInd = VarValidSpecsPtr != nullptr ? VarValidSpecsPtr->GetRecVarIndex(predInd) : -1;
    MIX_ASSERT(compPredInd >= 0, "compPredInd >= 0");
    compVars.push_back(compPredInd);
  }
  compEffect.SetVarsIndicesForTheEffectInSetting(compVars);
  return true;
}

bool MIXValidSpecs::CreateCompRandom(const GLMMRandomSpec& spec, GLMMRandomSpec& compSpec, bool isRepeated) {
  compSpec.Reset(false);
  for (const MCModelEffect& effect : spec.GetEffects()) {
    MCModelEffect compEffect;
    if (isRepeated) {
      compEffect = effect;
      compEffect.SetVarIndices(&CompRepeatedVarList);
      compEffect.SetVarsIndicesForTheEffectInSetting(CompRepeatedVarList);
    } else {
      CreateCompEffect(effect, compEffect);
    }
    compSpec.AddEffect(compEffect);
  }

  const std::vector<int>& subjects = spec.GetSubjectVars();
  for (std::size_t s = 0; s < subjects.size(); ++s) {
    const int zorvSubjVar = subjects[s];
    MIX_ASSERT(zorvSubjVar >= 0, "zorvSubjVar >= 0");
    int compSubjVar = -1;
    if (isRepeated) {
      if (s < CompRepeatedSubjVarList.size()) compSubjVar = CompRepeatedSubjVarList[s];
    } else if (VarValidSpecsPtr != nullptr) {
      compSubjVar = VarValidSpecsPtr->GetRecVarIndex(zorvSubjVar);
    }
    MIX_ASSERT(compSubjVar >= 0, "compSubjVar >= 0");
    compSpec.AddSubjectVar(compSubjVar);
  }

  compSpec.SetCovarianceType(spec.GetCovarianceType());
  compSpec.SetIndex(spec.GetIndex());
  compSpec.SetComputeEBLUPs(spec.GetComputeEBLUPs());
  return true;
}

// ---------------------------------------------------------------------------
// Custom tests and marginal means

bool MIXValidSpecs::FillCustomTest(const LR* record, CustomTest& test, bool useCompEffects) {
  // Rows name a random effect by its place in the flat list of random
  // effects. The place is the same in host and component terms, so the two
  // forms of a test differ only in the list those places refer to.
  static_cast<void>(useCompEffects);

  test.Reset();
  const int nFixEffExt = CmnInt(L::N_FIXED_TERMS);
  MIX_ASSERT(nFixEffExt > 0, "nFixEffExt > 0");
  const int nRandEff = std::max(CmnInt(L::N_RANDOM_TERMS), 0);
  const int nFixEff = InterceptInModel ? nFixEffExt - 1 : nFixEffExt;

  const bool allValues = record[L::CONTRAST_ALL_VALUES] == 1.0;
  const int nRows = TruncatedInt(record[L::CONTRAST_N_ROWS]);
  std::vector<int> fixCounts;
  std::vector<int> randCounts;
  int fixTotal = 0;
  int randTotal = 0;
  if (allValues) {
    fixTotal = std::max(TruncatedInt(record[L::CONTRAST_FIXED]), 0);
    randTotal = std::max(TruncatedInt(record[L::CONTRAST_RANDOM]), 0);
  } else {
    const INTEGER fixPosition = Truncated(record[L::CONTRAST_FIXED]);
    for (int i = 0; i < nFixEffExt; ++i) {
      fixCounts.push_back(static_cast<int>(WordAt(fixPosition, i)));
      fixTotal += std::max(fixCounts.back(), 0);
    }
    if (nRandEff > 0) {
      const INTEGER randPosition = Truncated(record[L::CONTRAST_RANDOM]);
      for (int i = 0; i < nRandEff; ++i) {
        randCounts.push_back(static_cast<int>(WordAt(randPosition, i)));
        randTotal += std::max(randCounts.back(), 0);
      }
    }
  }

  const int labelLength = TruncatedInt(record[L::CONTRAST_LABEL_LENGTH]);
  if (labelLength >= 1) {
    const INTEGER intLabPtr = Truncated(record[L::CONTRAST_LABEL]);
    MIX_ASSERT(intLabPtr > 0, "intLabPtr > 0");
    test.SetLabel(std::string(reinterpret_cast<const char*>(CommandInteger + (intLabPtr - 1)),
                              static_cast<std::size_t>(labelLength)));
  }

  // The values of all rows follow one another.
  INTEGER valuePosition = Truncated(record[L::CONTRAST_VALUES]);
  auto nextValues = [this, &valuePosition](int n) {
    std::vector<double> values;
    for (int k = 0; k < n; ++k) values.push_back(CommandLR[valuePosition - 1 + k]);
    valuePosition += n;
    return values;
  };

  for (int r = 0; r < nRows; ++r) {
    LMatrixRow fixedRow;
    if (allValues) {
      fixedRow.Setup(GLMMConst_850::LROW_ALL_VALUES, nFixEffExt);
      fixedRow.SetAllValues(nextValues(fixTotal));
    } else {
      std::size_t firstEffectCount = 0;
      if (InterceptInModel) {
        const int nEffCols = fixCounts[0];
        if (nEffCols < 1) {
          fixedRow.Setup(GLMMConst_850::LROW_FIXED, nFixEff);
        } else {
          MIX_ASSERT(nEffCols == 1, "nEffCols == 1");
          fixedRow.Setup(GLMMConst_850::LROW_FIXED_WITH_INTERCEPT, nFixEff);
          fixedRow.SetFirstValue(nextValues(1)[0]);
        }
        firstEffectCount = 1;
      } else {
        fixedRow.Setup(GLMMConst_850::LROW_FIXED, nFixEff);
      }
      for (int i = 0; i < nFixEff; ++i) {
        const int n = fixCounts[firstEffectCount + static_cast<std::size_t>(i)];
        if (n > 0) fixedRow.AddNewPair(i, nextValues(n));
      }
    }

    if (randTotal == 0) {
      test.AddFixedRow(fixedRow);
      continue;
    }
    LMatrixRow randomRow;
    if (allValues) {
      randomRow.Setup(GLMMConst_850::LROW_ALL_VALUES, nRandEff);
      randomRow.SetAllValues(nextValues(randTotal));
    } else {
      randomRow.Setup(GLMMConst_850::LROW_RANDOM, nRandEff);
      for (int i = 0; i < nRandEff; ++i) {
        const int n = randCounts[static_cast<std::size_t>(i)];
        if (n > 0) randomRow.AddNewPair(i, nextValues(n));
      }
    }
    test.AddMixedRow(fixedRow, randomRow);
  }

  const INTEGER kPosition = Truncated(record[L::CONTRAST_K]);
  if (kPosition > 0) {
    std::vector<double> kValues;
    for (int r = 0; r < nRows; ++r) kValues.push_back(CommandLR[kPosition - 1 + r]);
    test.SetKMatrix(kValues);
  }
  return true;
}

bool MIXValidSpecs::FillEMMeansSpec(const LR* record, MCEmmeansSpec& spec, const OBS*& refValue, ZORV_Format& format,
                                    std::string& refText, RefCatTypes& refCatType, bool& tooLong,
                                    std::vector<std::string>& fixCovStrings) {
  spec.Reset();
  refValue = nullptr;
  format = ZORV_Format(0, 0, 0);
  refText.clear();
  refCatType = REFCAT_NONE;
  tooLong = false;
  fixCovStrings.clear();

  auto factorAt = [this](INTEGER place) {
    return place >= 0 && place < static_cast<INTEGER>(FactorList.size()) ? FactorList[static_cast<std::size_t>(place)]
                                                                          : -1;
  };

  const int nTabFacts = std::max(TruncatedInt(record[L::MEANS_N_FACTORS]), 0);
  const INTEGER factorPosition = Truncated(record[L::MEANS_FACTORS]);
  std::vector<INTEGER> tablePlaces;
  for (int k = 0; k < nTabFacts; ++k) {
    tablePlaces.push_back(WordAt(factorPosition, k) - 1);
    spec.AddFactor(factorAt(tablePlaces.back()), 0);
  }

  int compareFactInd = -1;
  const int comparePlace = TruncatedInt(record[L::MEANS_COMPARE]);
  if (comparePlace >= 1) {
    const int locComprFactInd = comparePlace - 1;
    MIX_ASSERT(locComprFactInd < nTabFacts, "locComprFactInd < nTabFacts");
    const INTEGER tabComprFactInd = tablePlaces[static_cast<std::size_t>(locComprFactInd)];
    MIX_ASSERT(tabComprFactInd >= 0, "tabComprFactInd >= 0");
    compareFactInd = factorAt(tabComprFactInd);
    MIX_ASSERT(compareFactInd >= 0, "compareFactInd >= 0");
    spec.AddCompareFactor(compareFactInd);
    if (const ZORV_Variable* variable = DataSource->GetVariable(compareFactInd)) {
      int type = 0;
      int width = 0;
      int decimals = 0;
      variable->GetFormatEx(type, width, decimals);
      format = ZORV_Format(static_cast<std::uint8_t>(type), static_cast<std::uint16_t>(width),
                           static_cast<std::uint8_t>(decimals));
    }
  }

  // Four words per covariate: fixed or not, the value, and the value as
  // written (length and position of its characters).
  const INTEGER covariatePosition = Truncated(record[L::MEANS_COVARIATES]);
  for (std::size_t j = 0; j < CovariateList.size(); ++j) {
    double value = MissingValue;
    std::string text;
    if (covariatePosition > 0) {
      const LR* block = CommandLR + (covariatePosition - 1) + L::COVARIATE_WORDS * static_cast<long>(j);
      if (block[L::COVARIATE_HELD] < 0.0) value = block[L::COVARIATE_VALUE];
      const int length = TruncatedInt(block[L::COVARIATE_TEXT_LENGTH]);
      const INTEGER textPosition = Truncated(block[L::COVARIATE_TEXT]);
      if (length > 0 && textPosition > 0) {
        text.assign(reinterpret_cast<const char*>(CommandLR + (textPosition - 1)), static_cast<std::size_t>(length));
      }
    }
    fixCovStrings.push_back(text);
    spec.AddCovariate(CovariateList[j], value);
  }

  const int adjustment = TruncatedInt(record[L::MEANS_ADJUST]);
  spec.SetPAdjust(adjustment == 2   ? MCConst::PADJUST_SEQ_BONFERRONI
                  : adjustment == 3 ? MCConst::PADJUST_SEQ_SIDAK
                                    : MCConst::PADJUST_LSD);

  refCatType = static_cast<RefCatTypes>(TruncatedInt(record[L::MEANS_REFERENCE_KIND]));
  spec.SetReferenceType(refCatType == REFCAT_LAST ? MCConst::REFERENCE_LAST : MCConst::REFERENCE_CATEGORY);
  if (refCatType == REFCAT_VALUE) {
    refValue = reinterpret_cast<const OBS*>(record + L::MEANS_REFERENCE);
  } else if (refCatType == REFCAT_TEXT) {
    MIX_ASSERT(compareFactInd >= 0, "compareFactInd >= 0");
    const int length = std::max(TruncatedInt(record[L::MEANS_REFERENCE]), 0);
    const INTEGER textPosition = Truncated(record[L::MEANS_REFERENCE_TEXT]);
    refValue = reinterpret_cast<const OBS*>(CommandLR + (textPosition - 1));
    refText.assign(reinterpret_cast<const char*>(refValue), static_cast<std::size_t>(length));
    tooLong = length > static_cast<int>(format.fWidth);
  }
  spec.SetContrastType(refCatType == REFCAT_NONE ? MCConst::CONTRAST_PAIRWISE : MCConst::CONTRAST_SIMPLE);
  return true;
}

bool MIXValidSpecs::CreateCompEMMeans(const MCEmmeansSpec& spec, MCEmmeansSpec& compSpec) {
  compSpec.Reset();
  auto recIndex = [this](int hostIndex) {
    return VarValidSpecsPtr != nullptr ? VarValidSpecsPtr->GetRecVarIndex(hostIndex) : -1;
  };

  const std::vector<int>& factors = spec.GetFactors();
  const std::vector<int>& nestLevels = spec.GetFactorsNestLevel();
  const bool withLevels = nestLevels.size() == factors.size();
  for (std::size_t f = 0; f < factors.size(); ++f) {
    const int index = recIndex(factors[f]);
    if (index < 0) return false;
    if (compSpec.AddFactor(index, withLevels ? nestLevels[f] : 0) < 0) return false;
  }

  const std::vector<int>& covariates = spec.GetCovariates();
  const std::vector<double>& values = spec.GetCovariateValues();
  for (std::size_t c = 0; c < covariates.size(); ++c) {
    const int index = recIndex(covariates[c]);
    if (index < 0) return false;
    const double value = c < values.size() ? values[c] : MissingValue;
    if (compSpec.AddCovariate(index, value) < 0) return false;
  }

  compSpec.SetEmmScaleType(spec.GetEmmScaleType());

  for (int factor : spec.GetCompareFactors()) {
    const int index = recIndex(factor);
    if (index < 0) return false;
    if (compSpec.AddCompareFactor(index) < 0) return false;
  }

  compSpec.SetContrastType(spec.GetContrastType());
  if (spec.GetContrastType() == MCConst::CONTRAST_SIMPLE) compSpec.SetRefCateg(spec.GetRefCateg());
  if (spec.GetContrastType() == MCConst::CONTRAST_POLYNOMIAL) {
    if (!compSpec.SetMetricValueList(spec.GetMetricValueList())) return false;
  }
  compSpec.SetPAdjust(spec.GetPAdjust());
  return true;
}

std::string MIXValidSpecs::GetContrastString(int emmeansIndex) const {
  MIX_ASSERT((emmeansIndex >= 0) && (emmeansIndex < GetNEMMeans()),
             "(emmeansIndex >= 0) && (emmeansIndex < GetNEMMeans())");
  const std::size_t index = static_cast<std::size_t>(emmeansIndex);
  return index < ContrastStringList.size() ? ContrastStringList[index] : std::string();
}

// ---------------------------------------------------------------------------
// Codes

GLMMConst_850::CovarType MIXValidSpecs::GetCovarType(long code, bool repeated) {
  return GLMMConst_850::CovarTypeFromKeyword(code, repeated);
}

GLMMConst_850::ScoreType MIXValidSpecs::GetScoreType(SaveTypes type) {
  switch (type) {
    case SAVE_FIXED_PREDICTED: return GLMMConst_850::SCORE_FIXED_PREDICTED;
    case SAVE_PREDICTED: return GLMMConst_850::SCORE_PREDICTED;
    case SAVE_RESIDUAL: return GLMMConst_850::SCORE_RESIDUAL;
    case SAVE_FIXED_PREDICTED_SE: return GLMMConst_850::SCORE_FIXED_PREDICTED_SE;
    case SAVE_PREDICTED_SE: return GLMMConst_850::SCORE_PREDICTED_SE;
    case SAVE_FIXED_PREDICTED_DF: return GLMMConst_850::SCORE_FIXED_PREDICTED_DF;
    case SAVE_PREDICTED_DF: return GLMMConst_850::SCORE_PREDICTED_DF;
  }
  return GLMMConst_850::SCORE_INVALID;
}

ZORV_Format MIXValidSpecs::GetSaveFormat(SaveTypes type) const {
  const ZORV_Format plain(ZORV_Format::F, 8, 2);
  if (type < SAVE_FIXED_PREDICTED || type > SAVE_PREDICTED_SE) return plain;
  const ZORV_Variable* target = DataSource != nullptr ? DataSource->GetVariable(DependVar) : nullptr;
  const ZORV_Format base = target != nullptr ? target->GetFormat() : plain;
  const int width = std::min(static_cast<int>(base.fWidth) + 3, kMaxNumericWidth);
  const int decimals = std::min(static_cast<int>(base.fDecimals) + 2, kMaxDecimals);
  return ZORV_Format(base.fType, static_cast<std::uint16_t>(width), static_cast<std::uint8_t>(decimals));
}

long MIXValidSpecs::GetConvCode(long code, int* sign) {
  long result = 0;
  int resultSign = 0;
  switch (code) {
    case 230036: result = 3; break;
    case 230037: result = 4; break;
    case 230038: result = 6; break;
    case 230087:
      result = 3;
      resultSign = -1;
      break;
    case 230092: result = 8; break;
    case 230094: result = 2; break;
    case 230095:
      result = 3;
      resultSign = 1;
      break;
    default: break;
  }
  if (sign != nullptr) *sign = resultSign;
  return result;
}

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

void MIXValidSpecs::CompleteSettings(GLMMSettings* pSettings, ACAInputAdapter* pInpAdapt, int iSplit) {
  MIX_ASSERT(pSettings != nullptr, "pSettings != 0");
  GLMMSettings& settings = *pSettings;
  settings.SetUse4Mixed(true);
  settings.SetTransformEffects(false);

  MIX_ASSERT(fvvbEMMeansValid.size() == fvbSplitValid.size(), "fvvbEMMeansValid.size() == fvbSplitValid.size()");
  const std::size_t nRequests = EMMeansList.size();
  if (iSplit >= 0 && static_cast<std::size_t>(iSplit) >= fvbSplitValid.size()) {
    fvbSplitValid.resize(static_cast<std::size_t>(iSplit) + 1, false);
    fvvbEMMeansValid.resize(static_cast<std::size_t>(iSplit) + 1, std::vector<bool>(nRequests, false));
  }
  if (iSplit >= 0) {
    const bool withData = pInpAdapt != nullptr;
    fvbSplitValid[static_cast<std::size_t>(iSplit)] = withData;
    std::vector<bool>& requestsValid = fvvbEMMeansValid[static_cast<std::size_t>(iSplit)];
    std::fill(requestsValid.begin(), requestsValid.end(), withData);
  }

  if (CompDependVar >= 0) settings.SetSingleDependent(CompDependVar);

  auto addFactors = [this, &settings, pInpAdapt](const std::vector<int>& factors) {
    for (int index : factors) {
      if (pInpAdapt == nullptr) {
        settings.AddFactor(index, 1);
        continue;
      }
      const int categories = pInpAdapt->GetRecordCatVarSize(index);
      if (FactorSortOrder == MCConst::CATEG_ASCENDING) pInpAdapt->ReorderRecordCats(index, true);
      if (FactorSortOrder == MCConst::CATEG_DESCENDING) pInpAdapt->ReorderRecordCats(index, false);
      settings.AddFactor(index, categories);
    }
  };
  addFactors(CompFactorList);
  for (int index : CompCovariateList) settings.AddCovariate(index);
  for (const MCModelEffect& effect : CompModelEffectList) settings.AddModelEffect(effect);

  // The offset and the frequency weight belong to the run's own settings
  // only; a split's settings carry neither.
  if (CompSettingsPtr != nullptr) {
    if (OffsetType == MCConst::OFFSET_VARIABLE && CompOffsetIndex >= 0) CompSettingsPtr->SetOffset(CompOffsetIndex);
    if (OffsetType == MCConst::OFFSET_VALUE) CompSettingsPtr->SetOffsetValue(OffsetValue);
    if (CompZORVWeightIndex >= 0) CompSettingsPtr->SetFrequencyWeightVar(CompZORVWeightIndex);
  }
  if (CompRegrWeightIndex >= 0) settings.SetRegrWeightVar(CompRegrWeightIndex);

  for (const GLMMRandomSpec& block : CompRandomList) settings.AddRandomSpec(block);

  if (!CompEMMeansList.empty()) {
    std::vector<MCEmmeansSpec> requests;
    for (std::size_t i = 0; i < CompEMMeansList.size(); ++i) {
      MCEmmeansSpec request = CompEMMeansList[i];
      bool valid = true;
      const std::vector<int>& compareFactors = request.GetCompareFactors();
      const RefCatTypes refCatType = i < EmmRCTypeList.size() ? EmmRCTypeList[i] : REFCAT_NONE;
      const OBS* refValue = i < ContrastPairList.size() ? ContrastPairList[i].first : nullptr;
      if (compareFactors.empty() || compareFactors[0] < 1 || pInpAdapt == nullptr) {
        valid = true;
      } else if (refCatType == REFCAT_FIRST) {
        request.SetRefCateg(0);
      } else if (refValue == nullptr) {
        valid = true;
      } else if (i < EmmRCLongList.size() && EmmRCLongList[i]) {
        valid = false;
      } else {
        // A text is compared blank padded to the factor's width, so that
        // the adapter never reads past the characters of the command.
        std::vector<OBS> padded;
        if (refCatType == REFCAT_TEXT) {
          const std::string& text = ContrastStringList[i];
          const std::size_t width = std::max<std::size_t>(text.size(), ContrastPairList[i].second.fWidth);
          padded.resize(static_cast<std::size_t>(ObsWordsForWidth(static_cast<int>(std::max<std::size_t>(width, 1)))));
          std::memset(padded.data(), ' ', padded.size() * sizeof(OBS));
          std::memcpy(padded.data(), text.data(), text.size());
          refValue = padded.data();
        }
        bool notFound = false;
        const int code = pInpAdapt->EncodeRecordCatValue(compareFactors[0], refValue, notFound, false);
        if (notFound) {
          valid = false;
        } else {
          request.SetRefCateg(code);
        }
      }
      requests.push_back(request);
      if (pInpAdapt != nullptr && iSplit >= 0) {
        std::vector<bool>& requestsValid = fvvbEMMeansValid[static_cast<std::size_t>(iSplit)];
        if (i < requestsValid.size()) requestsValid[i] = valid;
      }
    }
    settings.SetEmmeans(requests);
  }

  addFactors(CompRepeatedVarList);
  settings.SetRepeated(CompRepeatedSpec);
  for (int index : CompSpatVarInds) settings.AddSpatialVar(index);

  settings.SetInterceptUse(InterceptInModel);
  settings.SetEffectAnalysisType(EffectAnalysisType);
  settings.SetEffectAnalysisStat(EffectAnalysisStat);
  settings.SetCSIteration(IterSep);
  settings.SetConfidenceLevel(CILevelPct / 100.0);
  settings.SetCIType(CIType);
  settings.SetCIConvProfile(CIConvProfile);
  settings.SetToleranceLogLikePLCI(CIConvProfile);
  settings.SetToleranceHessianPLCI(CIConvProfile);
  settings.SetCovbType(CovbType);
  settings.SetHConvergeType(HConvType);
  settings.SetLConvergeType(LConvType);
  settings.SetPConvergeType(PConvType);
  settings.SetToleranceHessian(HConvCrit);
  settings.SetLLConCriterion(LConvCrit);
  settings.SetParamEstConCriterion(PConvCrit);
  settings.SetMaxIterations(MaxIter);
  settings.SetMaxStepHalvingValue(MaxStepHalving);
  settings.SetThetaEstType(ThetaEstType);
  settings.SetHessianCompMethod(EstMethod);
  settings.SetMaxFisherIterNum(EstMethod == MCConst::HESSIAN_NEWTON_RAPHSON ? MaxFisherSteps : MaxFisherSteps + 1);
  settings.SetTolerance(Tolerance);
  settings.SetMaxIterationsPLCI(MaxIter);
  settings.SetMaxIterationsSQP(MaxIter);
  settings.SetToleranceHessianSQP(HConvCrit);
  settings.SetToleranceLogLikeSQP(LConvCrit);
  settings.SetToleranceParamSQP(PConvCrit);
  settings.SetHConvergeTypeSQP(HConvType);
  settings.SetLConvergeTypeSQP(LConvType);
  settings.SetPConvergeTypeSQP(PConvType);
  if (LConvTypeSetByUser) settings.SetLConvergeTypeTypeIandIII(LConvType);
  if (LConvCritSetByUser) settings.SetTolLogLikeTypeIandIII(LConvCrit);
  settings.SetDegreesFreedomType(GLMMConst_850::DF_SATTERTHWAITE);
  settings.SetGEFTest(PrintOptionGEF);
  settings.SetIterationFrequency(PrintHistPar);
  settings.SetModelFittingTest(PrintOptionSUMMARY);
  settings.SetScoringTypes(SaveScoreTypes);
  settings.SetCancelPointer(StopProcessor);
}

void MIXValidSpecs::CompleteSplits(int nSplits) {
  MIX_ASSERT(fvvbEMMeansValid.size() == fvbSplitValid.size(), "fvvbEMMeansValid.size() == fvbSplitValid.size()");
  if (nSplits <= static_cast<int>(fvbSplitValid.size())) return;
  fvbSplitValid.resize(static_cast<std::size_t>(nSplits), false);
  fvvbEMMeansValid.resize(static_cast<std::size_t>(nSplits), std::vector<bool>(EMMeansList.size(), false));
}

bool MIXValidSpecs::CompleteVarList(MCXML_850::MCVarList* pVarList, ACAInputAdapter* pInpAdapt) {
  if (pVarList == nullptr || pInpAdapt == nullptr) return true;
  ACAVarListMetaData metaData(*pVarList, VarValidSpecsPtr, *DataSource, pInpAdapt, true);

  std::map<int, int> repeatedHostIndex;
  for (std::size_t k = 0; k < CompRepeatedVarList.size() && k < RepeatedVarList.size(); ++k) {
    repeatedHostIndex.emplace(CompRepeatedVarList[k], RepeatedVarList[k]);
  }

  bool ok = true;
  const int nRecordVars = VarValidSpecsPtr != nullptr ? VarValidSpecsPtr->GetNRecordVars() : 0;
  for (int i = 0; i < nRecordVars && ok; ++i) {
    if (i == CompZORVWeightIndex) {
      ok = metaData.AddRecWeightVar(i, MCConst::ROLE_FREQUENCY_WEIGHT, 1, "");
    } else if (i == CompDependVar) {
      ok = metaData.AddRecVariable(i, false, MCConst::ROLE_TARGET, nullptr, "");
    } else if (repeatedHostIndex.count(i) != 0) {
      // A repeated measure that is also a factor needs a name of its own.
      const int zorvInd = repeatedHostIndex[i];
      MIX_ASSERT(zorvInd >= 0, "zorvInd >= 0");
      const ZORV_Variable* variable = DataSource->GetVariable(zorvInd);
      const std::string name = MCXML_850::IMCVariable::RecodedName(variable != nullptr ? variable->GetName() : "");
      ok = metaData.AddRecVariable(i, true, MCConst::ROLE_PREDICTOR, nullptr, name);
    } else {
      ok = metaData.AddRecVariable(i, VarValidSpecsPtr->GetRecordCatVar(i), MCConst::ROLE_PREDICTOR, nullptr, "");
    }
  }

  pVarList->SetListwiseDeletion(true);
  pVarList->SetUnWeightedCount(pInpAdapt->GetUnweightedCount());
  pVarList->SetWeightedCount(pInpAdapt->GetWeightedCount());
  pVarList->SetDroppedCount(pInpAdapt->GetDroppedCount());
  pVarList->SetWeightedDroppedCount(pInpAdapt->GetWeightedDroppedCount());
  return ok;
}

// ---------------------------------------------------------------------------
// Debug text

namespace {

std::string VarText(const ProcedureDataSource* source, int index) {
  const ZORV_Variable* variable = source != nullptr ? source->GetVariable(index) : nullptr;
  std::ostringstream text;
  if (variable != nullptr) text << variable->GetName() << ' ';
  text << '(' << index << ')';
  return text.str();
}

std::vector<std::string> VarTexts(const ProcedureDataSource* source, const std::vector<int>& indices) {
  std::vector<std::string> texts;
  for (int index : indices) texts.push_back(VarText(source, index));
  return texts;
}

void DisplayVarList(const ProcedureDataSource* source, const std::string& label, const std::vector<int>& hostIndices,
                    const std::vector<int>& compIndices, const std::string& absent) {
  if (hostIndices.empty()) {
    ACACommonDisplay::DisplayText(absent);
    return;
  }
  ACACommonDisplay::DisplaySV(label + ":", VarTexts(source, hostIndices));
  ACACommonDisplay::DisplayIV(label + " (component):", compIndices);
}

void DisplayVar(const ProcedureDataSource* source, const std::string& label, int hostIndex, int compIndex,
                const std::string& absent) {
  if (hostIndex < 0) {
    ACACommonDisplay::DisplayText(absent);
    return;
  }
  ACACommonDisplay::DisplayS(label + ":", VarText(source, hostIndex));
  ACACommonDisplay::DisplayI(label + " (component):", compIndex);
}

void DisplayFileName(const std::string& keyword, const std::string& name) {
  if (name.empty()) {
    ACACommonDisplay::DisplayText(keyword + " is not defined");
  } else {
    ACACommonDisplay::DisplayS(keyword + ":", name);
  }
}

}  // namespace

void MIXValidSpecs::Display(std::ostream& os) const {
  std::ostream* pSaveCompStream = ACACommonDisplay::GetOutStream();
  MIX_ASSERT(pSaveCompStream != nullptr, "pSaveCompStream != 0");
  ACACommonDisplay::SetOutStream(os);
  using ACA = ACACommonDisplay;

  ACA::DisplayText("**************************************************");
  ACA::DisplayText("*  This text output is for debugging purposes only.");
  ACA::DisplayText("*  It shows the validated specification of the run.");
  ACA::DisplayText("**************************************************");
  ACA::DisplayText("MIXValidSpecs display start");

  // Variables.
  DisplayVar(DataSource, "Dependent variable", DependVar, CompDependVar, "Dependent variable is not defined");
  DisplayVarList(DataSource, "Factors", FactorList, CompFactorList, "Factors are not defined");
  ACA::DisplaySV("Refined factors:", VarTexts(DataSource, RefinedFactorList));
  ACA::DisplayIV("Factor levels:", NFactorLevelList);
  MCDisplay_850::DisplayC(os, "Factor sort order:", FactorSortOrder);
  DisplayVarList(DataSource, "Covariates", CovariateList, CompCovariateList, "Covariates are not defined");
  ACA::DisplaySV("Refined covariates:", VarTexts(DataSource, RefinedCovariateList));
  ACA::DisplaySV("Model variables:", VarTexts(DataSource, ModelVarList));
  ACA::DisplayIV("Model variables (component):", CompModelVarList);

  // Fixed effects.
  ACA::DisplayB("Intercept in model:", InterceptInModel);
  if (ModelEffectList.empty()) ACA::DisplayText("Fixed effects are not defined");
  for (std::size_t e = 0; e < ModelEffectList.size(); ++e) {
    ACA::DisplayI("Fixed effect:", static_cast<long>(e));
    ModelEffectList[e].Display(os);
    if (e < CovarateNested.size()) ACA::DisplayBV("Nested covariates:", CovarateNested[e]);
    if (e < CompModelEffectList.size()) {
      ACA::DisplayText("In component indices:");
      CompModelEffectList[e].Display(os);
    }
  }

  // Random effects.
  if (RandEffectList.empty()) ACA::DisplayText("Random effects are not defined");
  for (std::size_t e = 0; e < RandEffectList.size(); ++e) {
    ACA::DisplayI("Random effect:", static_cast<long>(e));
    RandEffectList[e].Display(os);
    if (e < RandEffectNested.size()) ACA::DisplayBV("Nested covariates:", RandEffectNested[e]);
    if (e < CompRandEffectList.size()) {
      ACA::DisplayText("In component indices:");
      CompRandEffectList[e].Display(os);
    }
  }
  DisplayVarList(DataSource, "Random subjects", RandVarList, CompRandVarList, "Random subjects are not defined");
  if (RandomList.empty()) ACA::DisplayText("Random blocks are not defined");
  for (std::size_t b = 0; b < RandomList.size(); ++b) {
    ACA::DisplayI("Random block:", static_cast<long>(b));
    if (b < NRandEffects.size()) ACA::DisplayI("Effects in block:", NRandEffects[b]);
    RandomList[b].Display(os);
    if (b < CompRandomList.size()) {
      ACA::DisplayText("In component indices:");
      CompRandomList[b].Display(os);
    }
  }
  for (const std::vector<bool>& flags : RandCovarNested) ACA::DisplayBV("Nested covariates in blocks:", flags);

  // Repeated block.
  DisplayVarList(DataSource, "Repeated measures", RepeatedVarList, CompRepeatedVarList,
                 "Repeated measures are not defined");
  DisplayVarList(DataSource, "Repeated subjects", RepeatedSubjVarList, CompRepeatedSubjVarList,
                 "Repeated subjects are not defined");
  ACA::DisplayText("Repeated block:");
  RepeatedSpec.Display(os);
  ACA::DisplayText("Repeated block in component indices:");
  CompRepeatedSpec.Display(os);
  DisplayVarList(DataSource, "Spatial coordinates", SpatVarInds, CompSpatVarInds,
                 "Spatial coordinates are not defined");

  // Offset and weights.
  MCDisplay_850::DisplayC(os, "Offset type:", OffsetType);
  if (OffsetType == MCConst::OFFSET_VARIABLE) {
    DisplayVar(DataSource, "Offset variable", OffsetIndex, CompOffsetIndex, "Offset variable is not defined");
  } else if (OffsetType == MCConst::OFFSET_VALUE) {
    ACA::DisplayD("Offset value:", OffsetValue);
  } else {
    ACA::DisplayText("Offset is not defined");
  }
  DisplayVar(DataSource, "Frequency weight", ZORVWeightIndex, CompZORVWeightIndex,
             "Frequency weight is not defined");
  DisplayVar(DataSource, "Regression weight", RegrWeightIndex, CompRegrWeightIndex,
             "Regression weight is not defined");

  // Estimation.
  MCDisplay_850::DisplayC(os, "Effect analysis type:", EffectAnalysisType);
  GZLComponentDisplay_850::DisplayC(os, "Effect analysis statistic:", EffectAnalysisStat);
  ACA::DisplayI("Separation check from iteration:", IterSep);
  MCDisplay_850::DisplayC(os, "Hessian convergence type:", HConvType);
  ACA::DisplayD("Hessian convergence criterion:", HConvCrit);
  MCDisplay_850::DisplayC(os, "Log-likelihood convergence type:", LConvType);
  ACA::DisplayB("Log-likelihood convergence type set:", LConvTypeSetByUser);
  ACA::DisplayD("Log-likelihood convergence criterion:", LConvCrit);
  ACA::DisplayB("Log-likelihood convergence criterion set:", LConvCritSetByUser);
  MCDisplay_850::DisplayC(os, "Parameter convergence type:", PConvType);
  ACA::DisplayD("Parameter convergence criterion:", PConvCrit);
  ACA::DisplayI("Maximum iterations:", MaxIter);
  ACA::DisplayI("Maximum step-halvings:", MaxStepHalving);
  ACA::DisplayD("Confidence level (%):", CILevelPct);
  GZLComponentDisplay_850::DisplayC(os, "Confidence interval type:", CIType);
  ACA::DisplayD("Profile interval convergence:", CIConvProfile);
  MCDisplay_850::DisplayC(os, "Parameter covariance:", CovbType);
  GLMMComponentDisplay_850::DisplayC(os, "Covariance parameter estimation:", ThetaEstType);
  MCDisplay_850::DisplayC(os, "Estimation method:", EstMethod);
  ACA::DisplayI("Maximum Fisher steps:", MaxFisherSteps);
  ACA::DisplayD("Singularity tolerance:", Tolerance);
  MCDisplay_850::DisplayC(os, "Type I and III convergence type:", ConvTypeTypeIandIII);
  ACA::DisplayD("Type I and III convergence criterion:", ConvCritTypeIandIII);
  ACA::DisplayD("Missing value:", MissingValue);

  // Custom tests.
  if (CustomTests.empty() && CompCustomTests.empty()) ACA::DisplayText("Custom tests are not defined");
  for (std::size_t t = 0; t < CustomTests.size(); ++t) {
    ACA::DisplayI("Custom test:", static_cast<long>(t));
    CustomTests[t].Display(os);
  }
  for (std::size_t t = 0; t < CompCustomTests.size(); ++t) {
    ACA::DisplayI("Custom test in component indices:", static_cast<long>(t));
    CompCustomTests[t].Display(os);
  }

  // Marginal means.
  if (EMMeansList.empty()) ACA::DisplayText("EMMEANS are not defined");
  for (std::size_t r = 0; r < EMMeansList.size(); ++r) {
    ACA::DisplayI("EMMEANS request:", static_cast<long>(r));
    EMMeansList[r].Display(os);
    if (r < EmmRCTypeList.size()) ACA::DisplayI("Reference category kind:", EmmRCTypeList[r]);
    if (r < ContrastPairList.size()) {
      const ContrastPair& pair = ContrastPairList[r];
      ACA::DisplayS("Compare factor format:", pair.second.fType != 0 ? pair.second.ToText() : "(none)");
      if (pair.first == nullptr) {
        ACA::DisplayText("Reference value is not defined");
      } else if (r < EmmRCTypeList.size() && EmmRCTypeList[r] == REFCAT_TEXT) {
        ACA::DisplayS("Reference value:", r < ContrastStringList.size() ? "\"" + ContrastStringList[r] + "\"" : "");
      } else {
        ACA::DisplayObs("Reference value:", pair.first, 0);
      }
    }
    if (r < EmmRCLongList.size()) ACA::DisplayB("Reference text too long:", EmmRCLongList[r]);
    if (r < EmmFixCovStr.size()) ACA::DisplaySV("Fixed covariate values:", EmmFixCovStr[r]);
    if (r < CompEMMeansList.size()) {
      ACA::DisplayText("In component indices:");
      CompEMMeansList[r].Display(os);
    }
  }

  // Per split.
  ACA::DisplayBV("Valid splits:", fvbSplitValid);
  for (std::size_t s = 0; s < fvvbEMMeansValid.size(); ++s) ACA::DisplayBV("Valid EMMEANS of split:", fvvbEMMeansValid[s]);

  // Printed output.
  ACA::DisplayB("Include user-missing categories:", ClassMissInclude);
  ACA::DisplayB("PRINT CORB:", PrintOptionCORB);
  ACA::DisplayB("PRINT COVB:", PrintOptionCOVB);
  ACA::DisplayB("PRINT CPS:", PrintOptionCPS);
  ACA::DisplayB("PRINT FIT:", PrintOptionFIT);
  ACA::DisplayB("PRINT GEF:", PrintOptionGEF);
  ACA::DisplayB("PRINT HISTORY:", PrintOptionHISTORY);
  ACA::DisplayI("PRINT HISTORY interval:", PrintHistPar);
  ACA::DisplayB("PRINT LAGRANGE:", PrintOptionLAGRANGE);
  ACA::DisplayB("PRINT LMATRIX:", PrintOptionLMATRIX);
  ACA::DisplayB("PRINT MODELINFO:", PrintOptionMODELINFO);
  ACA::DisplayB("PRINT SOLUTION:", PrintOptionSOLUTION);
  ACA::DisplayB("PRINT SUMMARY:", PrintOptionSUMMARY);
  ACA::DisplayB("PRINT VARIABLEINFO:", PrintOptionVARIABLEINFO);
  ACA::DisplayB("PRINT WORKINGCORR:", PrintOptionWORKINGCORR);
  ACA::DisplayB("PRINT EXPONENTIATED:", PrintOptionEXPONENTIATED);
  ACA::DisplayB("PRINT TESTCOV:", PrintOptionTestCov);
  ACA::DisplayB("PRINT G:", PrintOptionGMatrix);
  ACA::DisplayB("PRINT R:", PrintOptionRMatrix);
  ACA::DisplayB("PRINT NONE:", PrintOptionNONE);

  // Saved variables.
  if (SaveVarNames.empty()) ACA::DisplayText("Saved variables are not defined");
  for (std::size_t v = 0; v < SaveVarNames.size(); ++v) {
    ACA::DisplayS("Saved variable:", SaveVarNames[v]);
    if (v < SaveVarTypes.size()) ACA::DisplayI("Saved type:", SaveVarTypes[v]);
    if (v < SaveScoreTypes.size()) GLMMComponentDisplay_850::DisplayC(os, "Score type:", SaveScoreTypes[v]);
    if (v < SaveVarLabels.size()) ACA::DisplayS("Label:", SaveVarLabels[v]);
    if (v < SaveVarFormats.size()) ACA::DisplayS("Format:", SaveVarFormats[v].ToText());
  }
  ACA::DisplayI("Maximum new variables:", MaxObsAdded);

  // Files.
  DisplayFileName("OUTFILE MODEL", OutFModelFileName);
  DisplayFileName("OUTFILE PARAMETER", OutFParameterFileName);
  DisplayFileName("OUTFILE STATXML", OutFStatXMLFileName);
  DisplayFileName("OUTFILE STATJSON", OutFStatJSONFileName);
  ACA::DisplayB("StatJSON required:", UseStatJSON);

  // Completed objects.
  if (VarValidSpecsPtr == nullptr) {
    ACA::DisplayText("Record layout is not defined");
  } else {
    ACA::DisplayI("Record variables:", VarValidSpecsPtr->GetNRecordVars());
  }
  if (CompSettingsPtr == nullptr) {
    ACA::DisplayText("Component settings are not defined");
  } else {
    ACA::DisplayText("Component settings:");
    CompSettingsPtr->Display(os);
  }

  ACA::DisplayText("MIXValidSpecs display end");
  ACACommonDisplay::SetOutStream(*pSaveCompStream);
}

void MIXValidSpecs::Display() const {
  std::ostringstream stream;
  Display(stream);
  const std::string text = stream.str();
  BP_ToFront(1, BP_Character(""));
  std::size_t start = 0;
  while (text.size() - start > static_cast<std::size_t>(kBP_ToFrontMaxLength)) {
    BP_ToFront(0, BP_Character(text.substr(start, static_cast<std::size_t>(kBP_ToFrontMaxLength))));
    start += static_cast<std::size_t>(kBP_ToFrontMaxLength);
  }
  if (start < text.size()) BP_ToFront(0, BP_Character(text.substr(start)));
}
