#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "host/cf/CFStatVariableValue.h"

class BpCellText;
class CFFormat;
class CFMetaData;
class ParserMessage;

namespace MCXML_850 {
class MCVarList;
}

// The results of one model as the model viewer holds them: what the reader
// (GNLMParseOutXML) took from the model's PMML and StatXML documents. Only
// the reader writes it; tables and charts read it through const access.
//
// The records are plain structures with public fields. A number that a
// document may leave empty is a double whose absent value is the
// system-missing value, -DBL_MAX; a field index is the data source's index
// of the field's name, negative when there is no such field. All text is
// held as the documents gave it. A getter that returns null means that the
// block was not in the documents, or that its reading was undone.
class GNLMOutputStats {
 public:
  // Target distributions, by the documents' tokens.
  enum EnumDistTypes {
    BINOMIAL = 0,
    GAMMA = 1,
    IGAUSS = 2,
    NOMINAL = 3,
    ORDINAL = 4,
    NEGBIN = 5,
    NORMAL = 6,
    POISSON = 7,
    DIST_UNKNOWN = 8  // not given or not recognised
  };

  // Link functions, by the documents' tokens.
  enum EnumLinkTypes {
    CLOGLOG = 0,
    IDENTITY = 1,
    LOG = 2,
    LOGC = 3,
    LOGIT = 4,
    NLOGLOG = 5,
    POWER = 6,
    PROBIT = 7,
    CAUCHIT = 8,
    LINK_UNKNOWN = 9  // not given or not recognised
  };

  // Covariance structures, by the documents' tokens. The structures from
  // ARH1 on are an extension of ours: the engine fits them, and their
  // tokens are the structures' own names.
  enum EnumCovarianceType {
    VC = 0,
    AR1 = 1,
    ARMA11 = 2,
    CS = 3,
    DIAG = 4,
    ID = 5,
    TP = 6,
    UNSTRUCTURED = 7,
    SPPOW = 8,
    SPEXP = 9,
    SPGAU = 10,
    SPLIN = 11,
    SPLINLOG = 12,
    SPSPH = 13,
    COV_UNKNOWN = 14,  // not recognised
    ARH1 = 15,
    AD1 = 16,
    CSH = 17,
    CSR = 18,
    FA1 = 19,
    FAH1 = 20,
    HF = 21,
    TPH = 22,
    UNR = 23
  };

  // Maps between the fields of the data's dictionary and the model's
  // variable list.
  struct VariableMapInfo {
    std::vector<int> fvFieldToVar;     // by field: position in the list, -1 for none
    std::vector<int> fvVarToField;     // by position: field index, -1 for none
    std::vector<bool> fvIsCategorical; // by position
    std::vector<int> fvNumCategories;  // by position: categories of a categorical variable, else 0
  };

  // One model term, or one list of subject fields. A rise of the nesting
  // level from one field to the next opens a nested part.
  struct ModelEffectData {
    std::vector<std::string> fvFieldNames;
    std::vector<int> fvFieldIndices;
    std::vector<int> fvNestingLevels;
  };

  // One random effect block.
  struct RandomSpecsData {
    std::vector<ModelEffectData> fvEffectList;
    bool fIntercept = false;
    ModelEffectData fSubjectSpec;
    std::vector<std::string> fvGroupSpec;
    EnumCovarianceType fCovarianceType = VC;
    int fCovarianceTBand = 0;
  };

  // One requested table of marginal means.
  struct EMMEANSData {
    ModelEffectData fFactors;
    bool fEstimateMeans = false;
    std::string fCompareFactor;
    int fContrastType = 0;   // 0 pairwise, 1 deviation, 2 simple, 3 none, 4 anything else
    int fReferenceType = 0;  // 0 last, 1 value, 2 anything else
    std::string fReferenceValue;
    // Our extension: the request's own adjustment, coded as the build
    // settings' fPAdjustment; -1 when the document gives none, and the
    // build settings' adjustment holds.
    int fPAdjustment = -1;
  };

  // Settings of the model build.
  struct BuildSettingsData {
    std::string fTargetField;
    int fTargetIndex = 0;
    bool fUseTrials = false;
    std::string fTrialsField;
    int fTrialsIndex = 0;
    int fTrialsValue = 0;
    std::string fDistributionText;
    EnumDistTypes fDistribution = BINOMIAL;
    std::string fLinkFunctionText;
    EnumLinkTypes fLinkFunction = CLOGLOG;
    double fLinkParam = 0.0;
    std::string fLinkParamText;
    std::string fAlgorithmName;
    double fCIn = 0.0;  // confidence level as a proportion
    bool fIntercept = false;
    EnumCovarianceType fResidualCovarianceType = VC;
    int fResidualCovarianceTBand = 0;
    ModelEffectData fResidualSubjectSpec;
    std::vector<std::string> fvResidualGroupSpec;
    std::vector<ModelEffectData> fvFixedEffectList;
    std::vector<RandomSpecsData> fvRandomSpecs;
    std::vector<EMMEANSData> fvEMMEANS;
    int fPAdjustment = 0;  // 0 LSD, 1 sequential Bonferroni, 2 sequential Sidak, 3 anything else
  };

  // The histogram behind the target distribution chart.
  struct TargetDistData {
    std::string fDescription;
    int fTotalFreq = 0;
    double fMean = 0.0;
    double fStdDeviation = 0.0;
    double fShape = 0.0;
    double fRate = 0.0;
    double fR = 0.0;
    double fP = 0.0;
    std::vector<double> fvObserved;
    std::vector<double> fvFrequency;
  };

  struct PredByObservData {
    std::string fDescription;
    int fTotalFreq = 0;
    std::vector<double> fvObserved;
    std::vector<double> fvPredicted;
    std::vector<double> fvFrequency;
    double fMinValue = 0.0;  // over observed and predicted together
    double fMaxValue = 0.0;
  };

  struct ModelDiagnosticsData {
    double fAICC = 0.0;
    double fBIC = 0.0;
    double fMinus2LogLikelihood = 0.0;
    double fClassificationAccuracy = 0.0;  // a proportion
    int fNumOfCovParamOfRepeated = 0;
    int fNumOfCovParamOfRandom = 0;
    int fNumOfColsOfFixed = 0;
    int fNumOfColsOfRandom = 0;
    int fNumOfCommonSubjects = 0;
    double fGrandMean = 0.0;
    double fGrandMeanStdErr = 0.0;
    double fGrandMeanCILower = 0.0;
    double fGrandMeanCIUpper = 0.0;
    TargetDistData fTargetDist;
    PredByObservData fPredByObserv;
  };

  // One row of the tests table.
  struct EffectStatData {
    int fTestID = 0;
    int fTestType = 0;  // the document's Roman numeral
    double fFStatistic = 0.0;
    double fDf1 = 0.0;
    double fDf2 = 0.0;
    double fSig = 0.0;
  };

  struct EffectTestData {
    EffectStatData fCorrectedModel;
    std::vector<EffectStatData> fvFixedEffects;  // in document order
  };

  struct CovariateData {
    std::string fField;
    int fFieldIndex = 0;
    int fPower = 0;
  };

  struct FactorData {
    std::string fField;
    int fFieldIndex = 0;
    CFStatVariableValue fValue;
    bool fNest = false;  // nested in what stands before it
  };

  // The coded form of one regression parameter.
  struct RegrParamData {
    std::vector<CovariateData> fvCovariates;
    std::vector<FactorData> fvFactors;
    bool fIsIntercept = false;
    std::string fName;
  };

  struct SimpleStatData {
    std::string fName;
    std::string fValue;
  };

  // One typed argument of a printable list.
  struct PrintableValueData {
    PrintableValueData() = default;
    PrintableValueData(const PrintableValueData& other);
    PrintableValueData& operator=(const PrintableValueData& other);
    ~PrintableValueData();

    int fStorage = 0;  // 1 integer, 2 real, 3 string, 4 date, 5 time, 6 timestamp, 0 anything else
    std::string fValue;
    bool fIsNull = false;
    std::string fLabel;
    CFFormat* fpFormat = nullptr;  // owned; cloned by a copy
  };

  // A text pattern with arguments, recursive.
  struct PrintableListData {
    std::string fPattern;  // a pattern, a key or a plain value
    bool fIsKey = false;   // fPattern is a key of the string tables
    int fMapId = 0;        // -1 for none; else fPattern is a key into that label map
    std::vector<PrintableListData> fvSubLists;
    std::vector<PrintableValueData> fvValues;
  };

  // Parallel vectors, one element per field.
  struct SimpleSubjectData {
    std::vector<std::string> fFieldNames;
    std::vector<int> fFieldIndices;
    std::vector<CFStatVariableValue> fSubjectValues;
    std::vector<int> fNumCategories;
  };

  struct ParamStatsData {
    SimpleStatData fStatistic;
    int fStatisticValue = 0;  // fStatistic's value as an integer; -1 when there is none
    RegrParamData fRegrParam;
    PrintableListData fParamList;  // a covariance parameter's label
    std::string fParamName;
    std::string fParamLabel;
    double fEstimate = 0.0;
    double fStdError = 0.0;
    double fDf = 0.0;
    double fConfIntervalLower = 0.0;
    double fConfIntervalUpper = 0.0;
    double fTTest = 0.0;
    double fZTest = 0.0;
    double fSig = 0.0;
    double fChiSquare = 0.0;
    double fExpEstimate = 0.0;
    double fExpCILower = 0.0;
    double fExpCIUpper = 0.0;
    bool fIsRedundant = false;
  };

  struct ParamEstimData {
    CFStatVariableValue fTargetValue;  // fixed parameters: the target category of the set
    SimpleSubjectData fFiledData;      // covariance parameters: the subject or group of the set
    std::vector<ParamStatsData> fvParamStats;
  };

  struct ParamEstimBlockCollection {
    std::int64_t fBlockIndex = 0;
    std::vector<ParamEstimData> fvParamEstim;
  };

  struct ParamCollectData {
    std::vector<ParamEstimData> fvFixedParamEstim;
    std::vector<ParamEstimData> fvRepeatedParamEstim;
    std::vector<ParamEstimBlockCollection> fvRandomParamEstim;  // by block
  };

  struct MapEntryData {
    std::string fName;  // the key
    RegrParamData fRegrParam;
  };

  struct StringMapData {
    int fMapId = 0;
    std::vector<MapEntryData> fvEntries;
  };

  struct WarningMsgData {
    std::string fPattern;  // the message's key
    std::vector<std::string> fWarningParameters;
  };

  struct SimpleFiledValueData {
    std::string fFieldName;
    CFStatVariableValue fValue;
  };

  struct RepMeasVarData {
    std::string fField;
    int fRepMeasInd = 0;  // field index
    std::vector<CFStatVariableValue> fValues;
    int fNumCategories = 0;
  };

  struct RepMeasSubjectData {
    int fTotalFreq = 0;  // records of the first subject
    SimpleSubjectData fSubjectData;
    std::vector<RepMeasVarData> fvRepMeasVars;
    std::vector<CFStatVariableValue> fvTargetValues;
    std::vector<CFStatVariableValue> fvTrialsValues;
  };

  struct ClassifRowData {
    std::vector<double> fValues;
    double fRowSum = 0.0;
  };

  // A square matrix with labels: the classification table, or one
  // segment's covariance matrix.
  struct ClassifMatrixData {
    int fNumRows = 0;
    std::vector<CFStatVariableValue> fLabels;
    std::vector<ClassifRowData> fRows;
  };

  // The covariance matrices of one random effect block.
  struct RandEffCovarMatData {
    std::string fStatName;
    double fStatValue = 0.0;
    std::vector<std::string> fEffectLabels;
    std::vector<SimpleSubjectData> fSimpleSubjects;  // one per segment
    std::vector<ClassifMatrixData> fMatrixValues;    // one per segment, same order
  };

  struct StructuredData : RepMeasSubjectData {
    std::vector<RandEffCovarMatData> fvRandEffCovarMats;
  };

  // One named array of a multivariate block; the values stay text.
  struct CoordinatesData {
    int fFeature = 0;  // 0 observed, 1 frequency, 2 statistic, 3 fields, 4 anything else
    std::string fField;
    std::string fStatistic;
    std::vector<std::string> fValues;
  };

  struct EMMEANSEstimatesData {
    std::vector<CoordinatesData> fvGroup;  // the cells' factor values
    CoordinatesData fMean;
    CoordinatesData fStdErr;
    CoordinatesData fConfIntervalLower;
    CoordinatesData fConfIntervalUpper;
  };

  struct EMMEANSContrastsData {
    double fAdjustedSigLevel = 0.0;
    int fContrastKind = 0;  // 0 pairwise, 1 deviation, 2 simple, 3 anything else
    std::vector<CoordinatesData> fvGroup;
    CoordinatesData fContrastEstimate;
    CoordinatesData fStdErr;
    CoordinatesData fTTest;
    CoordinatesData fDf;
    CoordinatesData fAdjustedSig;
    CoordinatesData fConfIntervalLower;
    CoordinatesData fConfIntervalUpper;
  };

  struct EMMEANSOverallTestData : SimpleSubjectData {
    int fTestID = 0;
    double fFStatistic = 0.0;
    double fDf1 = 0.0;
    double fDf2 = 0.0;
    double fSig = 0.0;
  };

  struct EMMEANSCustomData {
    int fEMMEANSIndex = 0;  // -1 when absent; index into fvEMMEANS
    std::vector<SimpleFiledValueData> fvFieldValues;
    EMMEANSEstimatesData fEstimates;
    EMMEANSContrastsData fContrasts;
    std::vector<EMMEANSOverallTestData> fvOverallTests;
    std::vector<WarningMsgData> fvWarningList;
  };

  // Keys of the model's messages.
  static const std::string csKey_C8, csKey_C9, csKey_C10, csKey_C11, csKey_C12, csKey_C13, csKey_C14, csKey_C15,
      csKey_C16, csKey_C17, csKey_C18, csKey_C19, csKey_C20, csKey_C21, csKey_C22, csKey_C23, csKey_C24,
      csKey_C25, csKey_C26, csKey_C27, csKey_C28, csKey_C29, csKey_C30;
  // An estimated covariance matrix that is not positive definite: of a
  // random block (its number, from 1, is the message's parameter) or of the
  // residual block.
  static const std::string csKey_GNotPD, csKey_RNotPD;

  GNLMOutputStats();
  ~GNLMOutputStats();
  GNLMOutputStats(const GNLMOutputStats&) = delete;
  GNLMOutputStats& operator=(const GNLMOutputStats&) = delete;

  // Create makes a new, empty block in place of the old one and returns
  // it; Destroy deletes the block and leaves null.
  BuildSettingsData* CreateBuildSettings();
  void DestroyBuildSettings();
  BuildSettingsData* GetBuildSettings() { return fpBuildSettings; }
  const BuildSettingsData* GetBuildSettings() const { return fpBuildSettings; }

  ModelDiagnosticsData* CreateModelDiagnostics();
  void DestroyModelDiagnostics();
  ModelDiagnosticsData* GetModelDiagnostics() { return fpModelDiagnostics; }
  const ModelDiagnosticsData* GetModelDiagnostics() const { return fpModelDiagnostics; }

  StructuredData* CreateStructuredData();
  void DestroyStructuredData();
  StructuredData* GetStructuredData() { return fpStructuredData; }
  const StructuredData* GetStructuredData() const { return fpStructuredData; }

  ClassifMatrixData* CreateClassifMatrix();
  void DestroyClassifMatrix();
  ClassifMatrixData* GetClassifMatrix() { return fpClassifMatrix; }
  const ClassifMatrixData* GetClassifMatrix() const { return fpClassifMatrix; }

  EffectTestData* CreateEffectTest();
  void DestroyEffectTest();
  EffectTestData* GetEffectTest() { return fpEffectTest; }
  const EffectTestData* GetEffectTest() const { return fpEffectTest; }

  ParamCollectData* CreateParamCollect();
  void DestroyParamCollect();
  ParamCollectData* GetParamCollect() { return fpParamCollect; }
  const ParamCollectData* GetParamCollect() const { return fpParamCollect; }

  std::vector<EMMEANSEstimatesData>* CreateEMMEANSSignifCollect();
  void DestroyEMMEANSSignifCollect();
  std::vector<EMMEANSEstimatesData>* GetEMMEANSSignifCollect() { return fpEMMEANSSignifCollect; }
  const std::vector<EMMEANSEstimatesData>* GetEMMEANSSignifCollect() const { return fpEMMEANSSignifCollect; }

  std::vector<EMMEANSCustomData>* CreateEMMEANSCustomCollect();
  void DestroyEMMEANSCustomCollect();
  std::vector<EMMEANSCustomData>* GetEMMEANSCustomCollect() { return fpEMMEANSCustomCollect; }
  const std::vector<EMMEANSCustomData>* GetEMMEANSCustomCollect() const { return fpEMMEANSCustomCollect; }

  std::vector<StringMapData>* CreateStringMapCollect();
  void DestroyStringMapCollect();
  std::vector<StringMapData>* GetStringMapCollect() { return fpStringMapCollect; }
  const std::vector<StringMapData>* GetStringMapCollect() const { return fpStringMapCollect; }

  MCXML_850::MCVarList* CreateMCVarList();
  void DestroyMCVarList();
  MCXML_850::MCVarList* GetMCVarList() { return fpMCVarList; }
  const MCXML_850::MCVarList* GetMCVarList() const { return fpMCVarList; }

  void SetDictMetadata(const CFMetaData* pMetaData) { fpDictMetadata = pMetaData; }
  const CFMetaData* GetDictMetadata() const { return fpDictMetadata; }

  VariableMapInfo* GetVariableMapInfo() { return &fVariableMapInfo; }
  const VariableMapInfo* GetVariableMapInfo() const { return &fVariableMapInfo; }
  void ClearVariableMapInfo();
  // Rebuilds the maps from the variable list and the dictionary. A variable
  // whose name the dictionary does not hold keeps -1 and maps no field.
  void UpdateVariableMapInfo();

  std::vector<WarningMsgData>& GetAllWarnings() { return fvAllWarnings; }
  const std::vector<WarningMsgData>& GetAllWarnings() const { return fvAllWarnings; }
  // Whether some message of the model has exactly that key.
  bool HasWarning(const std::string& key) const;

  // The field's own format from the dictionary; null without a dictionary
  // or such a field.
  const CFFormat* GetCFFormat(int fieldIndex) const;

  // The text of a key of the string tables, with up to five arguments.
  std::string GetTranslatedText(const char* key, const char* a1 = nullptr, const char* a2 = nullptr,
                                const char* a3 = nullptr, const char* a4 = nullptr,
                                const char* a5 = nullptr) const;

  // Display strings: the English text of a distribution, a link function
  // (which depends on the distribution) or a covariance structure, or with
  // `translate` its translation.
  std::string DistToDisplayString(EnumDistTypes dist, bool translate) const;
  std::string LinkToDisplayString(EnumLinkTypes link, EnumDistTypes dist, bool translate) const;
  // The pattern of a link with a parameter ("Power(^1)"); empty for one
  // without.
  static std::string LinkWithParamKey(EnumLinkTypes link, EnumDistTypes dist);
  std::string CovarianceToDisplayString(EnumCovarianceType type, bool translate) const;

  // The label of a regression parameter: "Intercept" translated, or its
  // covariates joined by "*" (each as often as its power), then its
  // factors as [field=value], a nested one in parentheses. Always true.
  bool formatEffectLabel(const RegrParamData& param, std::string& out) const;
  // A list's plain pattern, or the label of the parameter its key stands
  // for in a label map; false, and `out` unchanged, when the map has no
  // such key.
  bool formatEffectLabel(const PrintableListData& list, std::string& out) const;
  // The label of effect number `index` of a random block, where number 0
  // is the intercept when the block has one: its fields joined by " * ",
  // a nested part in parentheses. Always true.
  bool formatRandomEffectLabel(const RandomSpecsData& spec, unsigned long index, std::string& out) const;
  // The label of a covariance parameter of a block (-1 for the residual)
  // from its printable list: the key, its arguments and the translated
  // text. False when the list names an effect that cannot be labelled.
  bool formatRandomEffectLabel(const PrintableListData& list, unsigned long block, std::string& key,
                               std::vector<std::string>& args, std::string& text) const;
  // An effect's label from a text for each of its fields: the texts
  // joined by " * ", a rise of the nesting level opening a parenthesis
  // that closes at the end, as in "A * B(C(D))".
  static std::string JoinEffectFields(const ModelEffectData& effect, const std::vector<std::string>& texts);
  // The parameter of a label map's key: 0 found; 1 no maps; 2 no map of
  // that id; 3 no such key.
  int FindValueFromStringMap(int mapId, const std::string& key, RegrParamData& out) const;
  // A cell text for a text of any length: a plain string, or for 256 bytes
  // and more a composite of pieces of 255 bytes. The caller deletes it.
  static BpCellText* LongStrToComposite(const std::string& text);

  // A readable dump of the whole model, for debugging and tests.
  void Display(std::ostream& os) const;

 private:
  ParserMessage* fpParserMessage;
  const CFMetaData* fpDictMetadata;
  MCXML_850::MCVarList* fpMCVarList;
  VariableMapInfo fVariableMapInfo;
  BuildSettingsData* fpBuildSettings;
  ModelDiagnosticsData* fpModelDiagnostics;
  StructuredData* fpStructuredData;
  ClassifMatrixData* fpClassifMatrix;
  EffectTestData* fpEffectTest;
  ParamCollectData* fpParamCollect;
  std::vector<EMMEANSEstimatesData>* fpEMMEANSSignifCollect;
  std::vector<EMMEANSCustomData>* fpEMMEANSCustomCollect;
  std::vector<WarningMsgData> fvAllWarnings;
  std::vector<StringMapData>* fpStringMapCollect;
};
