#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "base/MIXCommandLayout.h"
#include "host/data/OBS.h"
#include "host/data/ZORV_Format.h"
#include "host/parser/ParserWords.h"
#include "numeric/glmm/CustomTest.h"
#include "numeric/glmm/GLMMConst.h"
#include "numeric/glmm/GLMMRandomSpec.h"
#include "numeric/glmm/GLMMTargetSpec.h"
#include "numeric/gzl/GZLConst.h"
#include "numeric/math/MCConst.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/math/MCModelEffect.h"

class ACAInputAdapter;
class ACAStopProcessor;
class ACAVarValidSpecs;
class ProcedureDataSource;
namespace MCGLMM_850 {
class GLMMSettings;
}
namespace MCXML_850 {
class MCVarList;
}

// The validated specification of one run of the procedure.
//
// SetMixedSpecs reads the parser's memory (the numeric block CmnMix, the
// character block CmaMix and the command's word array) into fields that name
// variables by their host index, their column in the data source.
// CompleteSpecs then registers every variable with the data adapter's record
// layout and builds a parallel description in component indices, the
// variables' positions in the record the numeric component reads: the fields
// whose names carry "Comp". CompleteSettings and CompleteVarList turn the
// record into the component's settings and variable list, once for the run
// and again for each split.
//
// Command reading stores into the fields directly; the setters check their
// preconditions and are for other callers. The parser's memory must be
// published (exposemix_) before reading, and stay in place until
// CompleteSpecs has run: the custom tests are read from it a second time,
// and the reference values of marginal means point into it.
//
// Display is the one virtual operation and the destructor is not virtual;
// the class is final, so that nothing derives from it.
//
// The implementation is in one file per step: MIXValidSpecs.cpp (the record,
// its setters and codes), MIXValidSpecsRead.cpp (reading the parser's
// blocks), MIXValidSpecsTerms.cpp (model terms and random blocks),
// MIXValidSpecsTestsAndMeans.cpp (custom tests and marginal means),
// MIXValidSpecsComplete.cpp (the component form of the record),
// MIXValidSpecsSettings.cpp (settings and variable list per split) and
// MIXValidSpecsDisplay.cpp (the debug text).
class MIXValidSpecs final {
 public:
  // What a saved variable holds.
  enum SaveTypes : int {
    SAVE_FIXED_PREDICTED = 0,
    SAVE_PREDICTED = 1,
    SAVE_RESIDUAL = 2,
    SAVE_FIXED_PREDICTED_SE = 3,
    SAVE_PREDICTED_SE = 4,
    SAVE_FIXED_PREDICTED_DF = 5,
    SAVE_PREDICTED_DF = 6,
    // Of generalized targets (our extension).
    SAVE_LINEAR_PREDICTOR = 7,
    SAVE_PEARSON_RESIDUAL = 8,
    SAVE_PREDICTED_CATEGORY = 9
  };
  // The number of kinds above.
  static constexpr int kNSaveKinds = 10;

  // How the reference category of a marginal means request is given.
  enum RefCatTypes : int {
    REFCAT_NONE = 0,   // no reference: pairwise comparisons
    REFCAT_VALUE = 1,  // a number in the request's record
    REFCAT_TEXT = 2,   // a text in the request's record
    REFCAT_FIRST = 3,  // the first category
    REFCAT_LAST = 4,   // the last category, chosen by the component
    // Our extension: no reference category; each category is compared with
    // the mean of all (deviation contrasts).
    REFCAT_MEAN = 5
  };

  // Per request: the reference value (null when there is none; it points
  // into the command's word array) and the format of the compare factor.
  typedef std::pair<const OBS*, ZORV_Format> ContrastPair;

  // The command handle is the parser's word array, kept but not read here.
  MIXValidSpecs(void* command, const ProcedureDataSource& source);
  ~MIXValidSpecs();
  MIXValidSpecs(const MIXValidSpecs&) = delete;
  MIXValidSpecs& operator=(const MIXValidSpecs&) = delete;

  // ---- reading the command ----
  // False after a user error has been reported; what was read before it
  // stays in the record.
  bool SetMixedSpecs();
  // Reads one term row at the cursor and moves the cursor to the next row.
  bool FillModelEffect(INTEGER*& cursor, MCMath_850::MCModelEffect& effect, std::vector<bool>& nestedFlags);
  // Reads one random block; advances both counters for the next block.
  bool FillRandomSpec(int& blockIndex, int& firstEffect, MCGLMM_850::GLMMRandomSpec& spec, int& nEffects,
                      std::vector<std::vector<bool>>& nestedFlags);
  bool FillCustomTest(const LR* record, MCGLMM_850::CustomTest& test, bool useCompEffects);
  bool FillEMMeansSpec(const LR* record, MCMath_850::MCEmmeansSpec& spec, const OBS*& refValue, ZORV_Format& format,
                       std::string& refText, RefCatTypes& refCatType, bool& tooLong,
                       std::vector<std::string>& fixCovStrings);

  // ---- completing ----
  void CompleteSpecs();
  void CompleteSettings(MCGLMM_850::GLMMSettings* pSettings, ACAInputAdapter* pInpAdapt, int iSplit);
  bool CompleteVarList(MCXML_850::MCVarList* pVarList, ACAInputAdapter* pInpAdapt);
  void CompleteSplits(int nSplits);
  bool CreateCompEffect(const MCMath_850::MCModelEffect& effect, MCMath_850::MCModelEffect& compEffect);
  bool CreateCompRandom(const MCGLMM_850::GLMMRandomSpec& spec, MCGLMM_850::GLMMRandomSpec& compSpec,
                        bool isRepeated);
  bool CreateCompEMMeans(const MCMath_850::MCEmmeansSpec& spec, MCMath_850::MCEmmeansSpec& compSpec);

  // ---- codes ----
  // The covariance structure of a keyword code; codes that do not belong to
  // the kind of block give its default (DIAG residual, VC random).
  static GLMMConst_850::CovarType GetCovarType(long code, bool repeated);
  static GLMMConst_850::ScoreType GetScoreType(SaveTypes type);
  // The format of a new variable: for predictions, residuals and their
  // standard errors the target's format made 3 wider (at most 40) with 2
  // more decimals (at most 16); F8.2 for degrees of freedom.
  ZORV_Format GetSaveFormat(SaveTypes type) const;
  static long GetConvCode(long code, int* sign);
  std::string GetContrastString(int emmeansIndex) const;

  // ---- debug text ----
  virtual void Display(std::ostream& os) const;
  // The same text, to the front end.
  void Display() const;

  // ---- per split ----
  const std::vector<bool>& GetValidSplits() const { return fvbSplitValid; }
  const std::vector<std::vector<bool>>& GetEmmValidList() const { return fvvbEMMeansValid; }

  // ---- variables ----
  int GetDependVar() const { return DependVar; }
  void SetDependVar(int index) { DependVar = index; }

  const std::vector<int>& GetFactorList() const { return FactorList; }
  void SetFactorList(const std::vector<int>& list) { FactorList = list; }
  const std::vector<int>& GetRefinedFactorList() const { return RefinedFactorList; }
  void SetRefinedFactorList(const std::vector<int>& list) { RefinedFactorList = list; }
  const std::vector<int>& GetCompFactorList() const { return CompFactorList; }
  const std::vector<int>& GetNFactorLevelList() const { return NFactorLevelList; }
  void SetNFactorLevelList(const std::vector<int>& list) { NFactorLevelList = list; }
  MCMath_850::MCConst::MCCategOrder GetFactorSortOrder() const { return FactorSortOrder; }
  void SetFactorSortOrder(MCMath_850::MCConst::MCCategOrder order) { FactorSortOrder = order; }
  int GetNFactorVar() const { return static_cast<int>(FactorList.size()); }
  int GetNRefinedFactorVar() const { return static_cast<int>(RefinedFactorList.size()); }

  const std::vector<int>& GetCovariateList() const { return CovariateList; }
  void SetCovariateList(const std::vector<int>& list) { CovariateList = list; }
  const std::vector<int>& GetRefinedCovariateList() const { return RefinedCovariateList; }
  void SetRefinedCovariateList(const std::vector<int>& list) { RefinedCovariateList = list; }
  const std::vector<int>& GetCompCovariateList() const { return CompCovariateList; }
  int GetNCovariateVar() const { return static_cast<int>(CovariateList.size()); }
  int GetNRefinedCovariateVar() const { return static_cast<int>(RefinedCovariateList.size()); }

  // ---- fixed effects ----
  const std::vector<MCMath_850::MCModelEffect>& GetModelEffectList() const { return ModelEffectList; }
  const std::vector<std::vector<bool>>& GetCovarateNested() const { return CovarateNested; }
  void SetModelEffectList(const std::vector<MCMath_850::MCModelEffect>& effects,
                          const std::vector<std::vector<bool>>& nestedFlags);
  const std::vector<MCMath_850::MCModelEffect>& GetCompModelEffectList() const { return CompModelEffectList; }
  int GetNModelEffect() const { return static_cast<int>(ModelEffectList.size()); }
  bool GetInterceptInModel() const { return InterceptInModel; }
  void SetInterceptInModel(bool intercept) { InterceptInModel = intercept; }

  // ---- offset and weights ----
  MCMath_850::MCConst::MCOffsetType GetOffsetType() const { return OffsetType; }
  void SetOffsetType(MCMath_850::MCConst::MCOffsetType type) { OffsetType = type; }
  int GetOffsetIndex() const { return OffsetIndex; }
  void SetOffsetIndex(int index) { OffsetIndex = index; }
  double GetOffsetValue() const { return OffsetValue; }
  void SetOffsetValue(double value) { OffsetValue = value; }
  int GetZORVWeightIndex() const { return ZORVWeightIndex; }
  void SetZORVWeightIndex(int index) { ZORVWeightIndex = index; }
  int GetRegrWeightIndex() const { return RegrWeightIndex; }
  void SetRegrWeightIndex(int index) { RegrWeightIndex = index; }

  // ---- the generalized model (our extension) ----
  // The target's distribution and link; its trials variable as a host index.
  const MCGLMM_850::GLMMTargetSpec& GetTargetSpec() const { return TargetSpec; }
  void SetTargetSpec(const MCGLMM_850::GLMMTargetSpec& spec) { TargetSpec = spec; }
  // The command's offset variable (host index, -1 none) and robust
  // covariance of the fixed effects. Unlike OffsetType and CovbType, which
  // command reading leaves at their defaults, they reach the settings of
  // every split.
  int GetTargetOffsetIndex() const { return TargetOffsetIndex; }
  bool GetTargetRobust() const { return TargetRobust; }

  // ---- estimation ----
  MCMath_850::MCConst::MCEffectAnalysisType GetEffectAnalysisType() const { return EffectAnalysisType; }
  void SetEffectAnalysisType(MCMath_850::MCConst::MCEffectAnalysisType type) { EffectAnalysisType = type; }
  GZLConst_850::EffectAnalysisStat GetEffectAnalysisStat() const { return EffectAnalysisStat; }
  void SetEffectAnalysisStat(GZLConst_850::EffectAnalysisStat stat) { EffectAnalysisStat = stat; }
  int GetIterSep() const { return IterSep; }
  void SetIterSep(int iterSep);
  MCMath_850::MCConst::MCConvType GetHConvType() const { return HConvType; }
  void SetHConvType(MCMath_850::MCConst::MCConvType type) { HConvType = type; }
  MCMath_850::MCConst::MCConvType GetLConvType() const { return LConvType; }
  // Also records that the type was set explicitly.
  void SetLConvType(MCMath_850::MCConst::MCConvType type);
  MCMath_850::MCConst::MCConvType GetPConvType() const { return PConvType; }
  void SetPConvType(MCMath_850::MCConst::MCConvType type) { PConvType = type; }
  double GetHConvCrit() const { return HConvCrit; }
  void SetHConvCrit(double convCrit);
  double GetLConvCrit() const { return LConvCrit; }
  // Also records that the criterion was set explicitly.
  void SetLConvCrit(double convCrit);
  double GetPConvCrit() const { return PConvCrit; }
  void SetPConvCrit(double convCrit);
  int GetMaxIter() const { return MaxIter; }
  void SetMaxIter(int maxIter);
  int GetMaxStepHalving() const { return MaxStepHalving; }
  void SetMaxStepHalving(int maxStepHalving);
  double GetCILevelPct() const { return CILevelPct; }
  void SetCILevelPct(double ciLevelPct);
  GZLConst_850::CIType GetCIType() const { return CIType; }
  void SetCIType(GZLConst_850::CIType type) { CIType = type; }
  double GetCIConvProfile() const { return CIConvProfile; }
  void SetCIConvProfile(double convCrit);
  MCMath_850::MCConst::MCCovbType GetCovbType() const { return CovbType; }
  void SetCovbType(MCMath_850::MCConst::MCCovbType type) { CovbType = type; }
  GLMMConst_850::ThetaEstType GetThetaEstType() const { return ThetaEstType; }
  void SetThetaEstType(GLMMConst_850::ThetaEstType type) { ThetaEstType = type; }
  MCMath_850::MCConst::MCHessianCompMethod GetEstMethod() const { return EstMethod; }
  void SetEstMethod(MCMath_850::MCConst::MCHessianCompMethod method) { EstMethod = method; }
  int GetMaxFisherSteps() const { return MaxFisherSteps; }
  // Also chooses the method: Fisher scoring first (3) for a positive count,
  // Newton-Raphson throughout (2) for none.
  void SetMaxFisherSteps(int maxFisherSteps);
  double GetTolerance() const { return Tolerance; }
  void SetTolerance(double toler);
  MCMath_850::MCConst::MCConvType GetConvTypeTypeIandIII() const { return ConvTypeTypeIandIII; }
  void SetConvTypeTypeIandIII(MCMath_850::MCConst::MCConvType type) { ConvTypeTypeIandIII = type; }
  double GetConvCritTypeIandIII() const { return ConvCritTypeIandIII; }
  void SetConvCritTypeIandIII(double convCrit);

  // ---- random and repeated blocks ----
  const std::vector<MCGLMM_850::GLMMRandomSpec>& GetRandomList() const { return RandomList; }
  const std::vector<int>& GetNRandEffects() const { return NRandEffects; }
  const std::vector<std::vector<bool>>& GetRandCovarNested() const { return RandCovarNested; }
  void SetRandomSpec(const std::vector<MCGLMM_850::GLMMRandomSpec>& specs, const std::vector<int>& effectCounts,
                     const std::vector<std::vector<bool>>& nestedFlags);
  const std::vector<MCGLMM_850::GLMMRandomSpec>& GetCompRandomList() const { return CompRandomList; }
  int GetNRandSpecs() const { return static_cast<int>(RandomList.size()); }
  const MCGLMM_850::GLMMRandomSpec& GetRepeatedSpec() const { return RepeatedSpec; }
  const MCGLMM_850::GLMMRandomSpec& GetCompRepeatedSpec() const { return CompRepeatedSpec; }
  const std::vector<int>& GetSpatVarInds() const { return SpatVarInds; }
  const std::vector<int>& GetCompSpatVarInds() const { return CompSpatVarInds; }
  int GetNSpatVars() const { return static_cast<int>(SpatVarInds.size()); }

  // ---- custom tests ----
  const std::vector<MCGLMM_850::CustomTest>& GetCustomTests() const { return CustomTests; }
  const std::vector<MCGLMM_850::CustomTest>& GetCompCustomTests() const { return CompCustomTests; }
  int GetNCustomTests() const { return static_cast<int>(CustomTests.size()); }

  // ---- marginal means ----
  const std::vector<MCMath_850::MCEmmeansSpec>& GetEMMeansList() const { return EMMeansList; }
  const std::vector<ContrastPair>& GetContrastPairList() const { return ContrastPairList; }
  const std::vector<RefCatTypes>& GetEmmRCTypeList() const { return EmmRCTypeList; }
  const std::vector<bool>& GetEmmRCLongList() const { return EmmRCLongList; }
  const std::vector<std::vector<std::string>>& GetEmmFixCovStr() const { return EmmFixCovStr; }
  const std::vector<MCMath_850::MCEmmeansSpec>& GetCompEMMeansList() const { return CompEMMeansList; }
  int GetNEMMeans() const { return static_cast<int>(EMMeansList.size()); }
  // Replaces the requests and their by-products, all but the flags of
  // reference texts that are too long.
  void SetEMMeansSpec(const std::vector<MCMath_850::MCEmmeansSpec>& specs, const std::vector<ContrastPair>& pairs,
                      const std::vector<std::string>& strings, const std::vector<RefCatTypes>& refCatTypes,
                      const std::vector<std::vector<std::string>>& fixCovStrings);

  // ---- missing values ----
  bool GetClassMissInclude() const { return ClassMissInclude; }
  void SetClassMissInclude(bool include) { ClassMissInclude = include; }

  // ---- printed output ----
  bool GetPrintOptionCORB() const { return PrintOptionCORB; }
  void SetPrintOptionCORB(bool option) { PrintOptionCORB = option; }
  bool GetPrintOptionCOVB() const { return PrintOptionCOVB; }
  void SetPrintOptionCOVB(bool option) { PrintOptionCOVB = option; }
  bool GetPrintOptionCPS() const { return PrintOptionCPS; }
  void SetPrintOptionCPS(bool option) { PrintOptionCPS = option; }
  bool GetPrintOptionFIT() const { return PrintOptionFIT; }
  void SetPrintOptionFIT(bool option) { PrintOptionFIT = option; }
  bool GetPrintOptionGEF() const { return PrintOptionGEF; }
  void SetPrintOptionGEF(bool option) { PrintOptionGEF = option; }
  bool GetPrintOptionHISTORY() const { return PrintOptionHISTORY; }
  void SetPrintOptionHISTORY(bool option) { PrintOptionHISTORY = option; }
  bool GetPrintOptionLAGRANGE() const { return PrintOptionLAGRANGE; }
  void SetPrintOptionLAGRANGE(bool option) { PrintOptionLAGRANGE = option; }
  bool GetPrintOptionLMATRIX() const { return PrintOptionLMATRIX; }
  void SetPrintOptionLMATRIX(bool option) { PrintOptionLMATRIX = option; }
  bool GetPrintOptionMODELINFO() const { return PrintOptionMODELINFO; }
  void SetPrintOptionMODELINFO(bool option) { PrintOptionMODELINFO = option; }
  bool GetPrintOptionSOLUTION() const { return PrintOptionSOLUTION; }
  void SetPrintOptionSOLUTION(bool option) { PrintOptionSOLUTION = option; }
  bool GetPrintOptionSUMMARY() const { return PrintOptionSUMMARY; }
  void SetPrintOptionSUMMARY(bool option) { PrintOptionSUMMARY = option; }
  bool GetPrintOptionVARIABLEINFO() const { return PrintOptionVARIABLEINFO; }
  void SetPrintOptionVARIABLEINFO(bool option) { PrintOptionVARIABLEINFO = option; }
  bool GetPrintOptionWORKINGCORR() const { return PrintOptionWORKINGCORR; }
  void SetPrintOptionWORKINGCORR(bool option) { PrintOptionWORKINGCORR = option; }
  int GetPrintHistPar() const { return PrintHistPar; }
  void SetPrintHistPar(int printHistPar);
  bool GetPrintOptionEXPONENTIATED() const { return PrintOptionEXPONENTIATED; }
  void SetPrintOptionEXPONENTIATED(bool option) { PrintOptionEXPONENTIATED = option; }
  bool GetPrintOptionTestCov() const { return PrintOptionTestCov; }
  void SetPrintOptionTestCov(bool option) { PrintOptionTestCov = option; }
  bool GetPrintOptionGMatrix() const { return PrintOptionGMatrix; }
  void SetPrintOptionGMatrix(bool option) { PrintOptionGMatrix = option; }
  bool GetPrintOptionRMatrix() const { return PrintOptionRMatrix; }
  void SetPrintOptionRMatrix(bool option) { PrintOptionRMatrix = option; }
  bool GetPrintOptionNONE() const { return PrintOptionNONE; }
  void SetPrintOptionNONE(bool option) { PrintOptionNONE = option; }

  // ---- saved variables ----
  const std::vector<SaveTypes>& GetSaveVarTypes() const { return SaveVarTypes; }
  const std::vector<GLMMConst_850::ScoreType>& GetSaveScoreTypes() const { return SaveScoreTypes; }
  const std::vector<std::string>& GetSaveVarNames() const { return SaveVarNames; }
  const std::vector<std::string>& GetSaveVarLabels() const { return SaveVarLabels; }
  const std::vector<ZORV_Format>& GetSaveVarFormats() const { return SaveVarFormats; }
  int GetNSaveVars() const { return static_cast<int>(SaveVarNames.size()); }
  int GetMaxObsAdded() const { return MaxObsAdded; }
  void SetMaxObsAdded(int count) { MaxObsAdded = count; }

  // ---- files ----
  const std::string& GetOutFModelFileName() const { return OutFModelFileName; }
  void SetOutFModelFileName(const std::string& name) { OutFModelFileName = name; }
  const std::string& GetOutFParameterFileName() const { return OutFParameterFileName; }
  void SetOutFParameterFileName(const std::string& name) { OutFParameterFileName = name; }
  const std::string& GetOutFStatXMLFileName() const { return OutFStatXMLFileName; }
  void SetOutFStatXMLFileName(const std::string& name) { OutFStatXMLFileName = name; }
  const std::string& GetOutFStatJSONFileName() const { return OutFStatJSONFileName; }
  void SetOutFStatJSONFileName(const std::string& name) { OutFStatJSONFileName = name; }
  bool GetOutFOptionMODEL() const { return !OutFModelFileName.empty(); }
  bool GetOutFOptionPARAMETER() const { return !OutFParameterFileName.empty(); }
  bool GetOutFOptionStatXML() const { return !OutFStatXMLFileName.empty(); }
  bool GetOutFOptionStatJSON() const { return !OutFStatJSONFileName.empty(); }
  bool GetUseStatJSON() const { return UseStatJSON; }

  // ---- owned objects, made by CompleteSpecs ----
  ACAVarValidSpecs* GetVarValidSpecsPtr() const { return VarValidSpecsPtr; }
  MCGLMM_850::GLMMSettings* GetCompSettingsPtr() const { return CompSettingsPtr; }

 private:
  // The parser's memory.
  double CmnReal(MIXCommandLayout::Slot<MIXCommandLayout::REAL> slot) const;
  int CmnInt(MIXCommandLayout::Slot<MIXCommandLayout::CODE> slot) const;
  bool CmnFlag(MIXCommandLayout::Slot<MIXCommandLayout::FLAG> slot) const;
  // A dictionary position, a word array position or a list head: the whole
  // word.
  template <MIXCommandLayout::Kind K>
  INTEGER CmnWord(MIXCommandLayout::Slot<K> slot) const {
    static_assert(
        K == MIXCommandLayout::VARIABLE || K == MIXCommandLayout::POSITION || K == MIXCommandLayout::LIST_HEAD,
        "the slot holds no whole word");
    return CmnWordAt(slot);
  }
  INTEGER CmnWordAt(int offset) const;
  bool HasCommand() const;
  INTEGER WordAt(INTEGER position, long entry) const;
  INTEGER* WordPointer(INTEGER position) const;
  // Reads `count` dictionary positions from the list at `position` into
  // host indices.
  void ReadVarList(int count, INTEGER position, std::vector<int>& list) const;
  std::string ReadBlockName(MIXCommandLayout::Text field) const;
  bool ReadOutputFiles();
  bool ReadSpatialVars();
  void ReadSavedVars();
  void BuildRepeatedSpec(long covarianceCode);
  void ReadTargetSpec();
  // The target spec of the component: the trials variable as its record index.
  MCGLMM_850::GLMMTargetSpec CompTargetSpec() const;
  void CompleteTargetSettings(MCGLMM_850::GLMMSettings& settings) const;
  void DestroyOwned();

  const LR* CommandLR;
  INTEGER* CommandInteger;
  const ProcedureDataSource* DataSource;

  std::vector<bool> fvbSplitValid;

  int DependVar;
  int CompDependVar;
  std::vector<int> FactorList;
  std::vector<int> RefinedFactorList;
  std::vector<int> CompFactorList;
  std::vector<int> NFactorLevelList;
  MCMath_850::MCConst::MCCategOrder FactorSortOrder;
  std::vector<int> CovariateList;
  std::vector<int> RefinedCovariateList;
  std::vector<int> CompCovariateList;
  std::vector<int> ModelVarList;
  std::vector<MCMath_850::MCModelEffect> ModelEffectList;
  std::vector<std::vector<bool>> CovarateNested;
  std::vector<int> CompModelVarList;
  std::vector<MCMath_850::MCModelEffect> CompModelEffectList;
  bool InterceptInModel;
  std::vector<MCMath_850::MCModelEffect> RandEffectList;
  std::vector<std::vector<bool>> RandEffectNested;
  std::vector<MCMath_850::MCModelEffect> CompRandEffectList;
  std::vector<int> RandVarList;
  std::vector<int> CompRandVarList;
  MCMath_850::MCConst::MCOffsetType OffsetType;
  int OffsetIndex;
  int CompOffsetIndex;
  double OffsetValue;
  MCGLMM_850::GLMMTargetSpec TargetSpec;
  int CompTrialsIndex;
  int TargetOffsetIndex;
  int CompTargetOffsetIndex;
  bool TargetRobust;
  int ZORVWeightIndex;
  int CompZORVWeightIndex;
  int RegrWeightIndex;
  int CompRegrWeightIndex;
  MCMath_850::MCConst::MCEffectAnalysisType EffectAnalysisType;
  GZLConst_850::EffectAnalysisStat EffectAnalysisStat;
  int IterSep;
  MCMath_850::MCConst::MCConvType HConvType;
  MCMath_850::MCConst::MCConvType LConvType;
  bool LConvTypeSetByUser;
  MCMath_850::MCConst::MCConvType PConvType;
  double HConvCrit;
  double LConvCrit;
  bool LConvCritSetByUser;
  double PConvCrit;
  int MaxIter;
  int MaxStepHalving;
  double CILevelPct;
  GZLConst_850::CIType CIType;
  double CIConvProfile;
  MCMath_850::MCConst::MCCovbType CovbType;
  GLMMConst_850::ThetaEstType ThetaEstType;
  MCMath_850::MCConst::MCHessianCompMethod EstMethod;
  int MaxFisherSteps;
  double Tolerance;
  std::vector<MCGLMM_850::GLMMRandomSpec> RandomList;
  std::vector<int> NRandEffects;
  std::vector<std::vector<bool>> RandCovarNested;
  std::vector<MCGLMM_850::GLMMRandomSpec> CompRandomList;
  MCGLMM_850::GLMMRandomSpec RepeatedSpec;
  MCGLMM_850::GLMMRandomSpec CompRepeatedSpec;
  std::vector<int> RepeatedVarList;
  std::vector<int> CompRepeatedVarList;
  std::vector<int> RepeatedSubjVarList;
  std::vector<int> CompRepeatedSubjVarList;
  std::vector<int> SpatVarInds;
  std::vector<int> CompSpatVarInds;
  std::vector<MCGLMM_850::CustomTest> CustomTests;
  std::vector<MCGLMM_850::CustomTest> CompCustomTests;
  std::vector<MCMath_850::MCEmmeansSpec> EMMeansList;
  std::vector<ContrastPair> ContrastPairList;
  std::vector<std::string> ContrastStringList;
  std::vector<RefCatTypes> EmmRCTypeList;
  std::vector<bool> EmmRCLongList;
  std::vector<std::vector<std::string>> EmmFixCovStr;
  std::vector<MCMath_850::MCEmmeansSpec> CompEMMeansList;
  std::vector<std::vector<bool>> fvvbEMMeansValid;
  bool ClassMissInclude;
  bool PrintOptionCORB;
  bool PrintOptionCOVB;
  bool PrintOptionCPS;
  bool PrintOptionFIT;
  bool PrintOptionGEF;
  bool PrintOptionHISTORY;
  bool PrintOptionLAGRANGE;
  bool PrintOptionLMATRIX;
  bool PrintOptionMODELINFO;
  bool PrintOptionSOLUTION;
  bool PrintOptionSUMMARY;
  bool PrintOptionVARIABLEINFO;
  bool PrintOptionWORKINGCORR;
  int PrintHistPar;
  bool PrintOptionEXPONENTIATED;
  bool PrintOptionTestCov;
  bool PrintOptionGMatrix;
  bool PrintOptionRMatrix;
  bool PrintOptionNONE;
  std::vector<SaveTypes> SaveVarTypes;
  std::vector<GLMMConst_850::ScoreType> SaveScoreTypes;
  std::vector<std::string> SaveVarNames;
  std::vector<std::string> SaveVarLabels;
  std::vector<ZORV_Format> SaveVarFormats;
  int MaxObsAdded;
  std::string OutFModelFileName;
  std::string OutFParameterFileName;
  std::string OutFStatXMLFileName;
  std::string OutFStatJSONFileName;
  bool UseStatJSON;
  ACAVarValidSpecs* VarValidSpecsPtr;
  MCGLMM_850::GLMMSettings* CompSettingsPtr;
  ACAStopProcessor* StopProcessor;
  MCMath_850::MCConst::MCConvType ConvTypeTypeIandIII;
  double ConvCritTypeIandIII;
  double MissingValue;
};
