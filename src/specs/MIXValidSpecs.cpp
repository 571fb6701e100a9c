#include "specs/MIXValidSpecs.h"

#include <algorithm>

#include "base/MIXAssert.h"
#include "host/adapter/ACAStopProcessor.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMSettings.h"

using MCGLMM_850::GLMMRandomSpec;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
namespace MCConst = MCMath_850::MCConst;

namespace {

const int kMaxNumericWidth = 40;

const int kMaxDecimals = 16;

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
      CompTrialsIndex(-1),
      TargetOffsetIndex(-1),
      CompTargetOffsetIndex(-1),
      TargetRobust(false),
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
    case SAVE_LINEAR_PREDICTOR: return GLMMConst_850::SCORE_LINEAR_PREDICTOR;
    case SAVE_PEARSON_RESIDUAL: return GLMMConst_850::SCORE_PEARSON_RESIDUAL;
    case SAVE_PREDICTED_CATEGORY: return GLMMConst_850::SCORE_PREDICTED_CATEGORY;
  }
  return GLMMConst_850::SCORE_INVALID;
}

ZORV_Format MIXValidSpecs::GetSaveFormat(SaveTypes type) const {
  const ZORV_Format plain(ZORV_Format::F, 8, 2);
  const ZORV_Variable* target = DataSource != nullptr ? DataSource->GetVariable(DependVar) : nullptr;
  const ZORV_Format base = target != nullptr ? target->GetFormat() : plain;
  // A category is one of the target's values.
  if (type == SAVE_PREDICTED_CATEGORY) return base;
  if (type < SAVE_FIXED_PREDICTED || type > SAVE_PREDICTED_SE) return plain;
  const int width = std::min(static_cast<int>(base.fWidth) + 3, kMaxNumericWidth);
  const int decimals = std::min(static_cast<int>(base.fDecimals) + 2, kMaxDecimals);
  return ZORV_Format(base.fType, static_cast<std::uint16_t>(width), static_cast<std::uint8_t>(decimals));
}

long MIXValidSpecs::GetConvCode(long code, int* sign) {
  long result = 0;
  int resultSign = 0;
  switch (code) {
    case MCCommon_850::MC_ITERATION_LIMIT:
      result = 3;
      break;
    case MCCommon_850::MC_CONVERGED_SINGULAR_HESSIAN:
      result = 4;
      break;
    case MCCommon_850::MC_PARAM_HESSIAN_SINGULAR:
      result = 6;
      break;
    case MCCommon_850::MC_PARAM_AT_LOWER_BOUND:
      result = 3;
      resultSign = -1;
      break;
    case MCCommon_850::MC_PERFECT_FIT:
      result = 8;
      break;
    case MCCommon_850::MC_STEP_HALVING_LIMIT:
      result = 2;
      break;
    case MCCommon_850::MC_PARAM_AT_UPPER_BOUND:
      result = 3;
      resultSign = 1;
      break;
    default: break;
  }
  if (sign != nullptr) *sign = resultSign;
  return result;
}
