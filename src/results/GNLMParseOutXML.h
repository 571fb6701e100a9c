#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "results/GNLMOutputStats.h"

class BpProcedure;
class SDOMXMLIterator;
class SDOMXMLWrapper;
class ZORV_DataSource;
class ZORV_Variable;
class ZORVMBConverter;

// Reads the two documents of one model, its PMML text and its StatXML
// text, into a GNLMOutputStats. The PMML gives the model's variables (which
// fields are categorical, with how many categories); the StatXML gives
// everything else. This reader is the one description of the StatXML shape
// that the viewer side holds.
//
// Every fill operation takes an element (or an iterator over elements) and
// the record to fill, and returns false when the element does not have the
// shape the record needs; the first false ends the read, which then issues
// the one message "StatXML parsing error ..." and leaves the model as far as
// it was filled. A number that does not read as a number counts as a broken
// shape too; an empty one is the system-missing value unless a rule says
// otherwise. A reader serves one ParseXML: a second call does no work.
class GNLMParseOutXML {
 public:
  // Both texts are held by reference and must outlive the reader.
  GNLMParseOutXML(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, GNLMOutputStats* pOutputStats,
                  const std::string& pmml, const std::string& statXML);
  ~GNLMParseOutXML();
  GNLMParseOutXML(const GNLMParseOutXML&) = delete;
  GNLMParseOutXML& operator=(const GNLMParseOutXML&) = delete;

  // The PMML first, then the StatXML. False when either cannot be read; a
  // PMML that cannot be read says nothing.
  bool ParseXML();

  bool parsePMML(const std::string& pmml);
  bool parseCustomStat(const std::string& statXML);

  // Build settings and model structure.
  bool fillBuildSettingsData(SDOMXMLWrapper* elem, GNLMOutputStats::BuildSettingsData& settings);
  bool fillEffectList(SDOMXMLWrapper* elem, std::vector<GNLMOutputStats::ModelEffectData>& list);
  bool fillEffectStruct(SDOMXMLWrapper* elem, GNLMOutputStats::ModelEffectData& effect);
  bool fillSimpleListValue(SDOMXMLWrapper* elem, std::vector<std::string>& list);
  bool fillRandomSpecs(SDOMXMLWrapper* elem, std::vector<GNLMOutputStats::RandomSpecsData>& list);
  bool fillEMMEANSSpecs(SDOMXMLWrapper* elem, std::vector<GNLMOutputStats::EMMEANSData>& list);
  bool fillFactorData(SDOMXMLWrapper* elem, GNLMOutputStats::FactorData& factor);
  bool fillCovariateData(SDOMXMLWrapper* elem, GNLMOutputStats::CovariateData& covariate);
  bool fillRegrParamData(SDOMXMLWrapper* elem, GNLMOutputStats::RegrParamData& param);
  bool fillRepMeasVarData(SDOMXMLWrapper* elem, GNLMOutputStats::RepMeasVarData& repeatMeasVarStruct);

  // Label maps.
  bool fillStringMapCollectionData(SDOMXMLIterator* stringMapCollectIter,
                                   std::vector<GNLMOutputStats::StringMapData>& list);

  // Statistics blocks.
  bool fillModelDiagnosticsData(SDOMXMLWrapper* elem, GNLMOutputStats::ModelDiagnosticsData& diag);
  bool fillTargetDistData(SDOMXMLIterator* targetDistDataElmIter, GNLMOutputStats::TargetDistData& data);
  bool fillPredByObservData(SDOMXMLIterator* predByObservDataElmIter, GNLMOutputStats::PredByObservData& data);
  bool fillEffectTestData(SDOMXMLIterator* effectTestElmIter, GNLMOutputStats::EffectTestData& data);
  bool fillStructuredData(SDOMXMLIterator* structuredDataElmIter, GNLMOutputStats::StructuredData& data);
  bool fillRepMeasSubjectData(SDOMXMLWrapper* elem, GNLMOutputStats::RepMeasSubjectData& data);
  bool fillSimpleSubjectData(SDOMXMLWrapper* elem, GNLMOutputStats::SimpleSubjectData& data);
  bool fillRandEffCovarMatData(SDOMXMLWrapper* randEffCovarMatElm, GNLMOutputStats::RandEffCovarMatData& data);
  bool fillClassifMatrixData(SDOMXMLWrapper* elem, GNLMOutputStats::ClassifMatrixData& matrix);
  bool fillParamEstimData(SDOMXMLIterator* iter, GNLMOutputStats::ParamCollectData& collect);
  bool fillParamStatsData(SDOMXMLWrapper* elem, GNLMOutputStats::ParamStatsData& stats);
  bool fillWarningMessages(SDOMXMLIterator* iter, std::vector<GNLMOutputStats::WarningMsgData>& list);
  bool fillDataGroupData(SDOMXMLIterator* dataGroupElmIter);
  bool fillEMMEANSCustomData(SDOMXMLWrapper* emmeansCustomElm, GNLMOutputStats::EMMEANSCustomData& data);
  bool fillEMMEANSEstimatesData(SDOMXMLWrapper* emmeansEstiElm, GNLMOutputStats::EMMEANSEstimatesData& data);
  bool fillEMMEANSContrastsData(SDOMXMLWrapper* emmeansContrastElm, GNLMOutputStats::EMMEANSContrastsData& data);
  bool fillEMMEANSOverallTestData(SDOMXMLWrapper* emmeansOverallTestElm,
                                  GNLMOutputStats::EMMEANSOverallTestData& data);
  bool fillCoordinatesData(SDOMXMLWrapper* coordinatesElm, GNLMOutputStats::CoordinatesData& coord);
  bool fillSimpleStatData(SDOMXMLWrapper* elem, GNLMOutputStats::SimpleStatData& stat);
  bool fillSimpleStatData(SDOMXMLWrapper* elem, std::string& name, double& value);
  bool fillPrintableList(SDOMXMLWrapper* printableListElm, GNLMOutputStats::PrintableListData& list);
  bool fillPrintableValue(SDOMXMLWrapper* printableValueElm, GNLMOutputStats::PrintableValueData& value);

  // The items of an array element as numbers ("__MISSING__" is the
  // system-missing value) or whole numbers; false for a null element, a
  // broken array or an item that is not a number.
  bool getNumericArray(SDOMXMLWrapper* elem, std::vector<double>& values);
  bool getIntegerArray(SDOMXMLWrapper* elem, std::vector<int>& values);

  // Text of the local code page to UTF-8 and back.
  std::string transcodeToUTF8(const char* text) const;
  std::string transcodeFromUTF8(const char* text) const;

 private:
  // The steps of the walk after the document has loaded.
  bool readStatXML(SDOMXMLWrapper& document);
  bool readDiagnosticsBlocks(SDOMXMLWrapper* diagnostics);
  bool readTrainingSummary(SDOMXMLWrapper& document);
  // One Parameter of the build settings, by its name.
  bool fillBuildSetting(SDOMXMLWrapper* parameter, const std::string& name, const std::string& value,
                        GNLMOutputStats::BuildSettingsData& buildSettingsStruct);

  // Parts of the statistics blocks.
  bool fillDiagnosticsStatistic(const std::string& name, const std::string& value,
                                GNLMOutputStats::ModelDiagnosticsData& diag);
  bool fillObservedByPredicted(SDOMXMLWrapper* elem, GNLMOutputStats::PredByObservData& data);
  bool fillTargetRecords(SDOMXMLWrapper* group, GNLMOutputStats::RepMeasSubjectData& data);
  bool fillMatrixCells(const std::vector<double>& values, const std::string& kind, int columns,
                       GNLMOutputStats::ClassifMatrixData& matrix);
  bool fillCoordinatesGroup(SDOMXMLWrapper* group, std::vector<GNLMOutputStats::CoordinatesData>& list);
  // The Coordinates children of an element, each into the column of its
  // statistic's name; others are passed over. False when there are none.
  bool fillStatisticColumns(SDOMXMLWrapper* elem,
                            const std::pair<const char*, GNLMOutputStats::CoordinatesData*>* columns,
                            std::size_t nColumns);

  // The number of a text: the system-missing value (or `empty`) for an
  // empty text; false for a text that is not a number.
  bool readDouble(const std::string& text, double& value) const;
  bool readDouble(const std::string& text, double& value, double empty) const;
  bool readInteger(const std::string& text, int& value, int empty) const;
  // The data source's index of a field name, negative when there is none.
  int findField(const std::string& name) const;
  const ZORV_Variable* variableOf(int fieldIndex) const;
  // Loads a value against the variable of a field; false when either fails.
  bool loadValue(CFStatVariableValue& value, int fieldIndex) const;

  bool fPMMLParsed;
  bool fStatXMLParsed;
  double fSysmis;
  ZORVMBConverter* fpConverter;
  BpProcedure* fpProcedure;
  ZORV_DataSource* fpDataSource;
  GNLMOutputStats* fpOutputStats;
  GNLMOutputStats::BuildSettingsData* fpBuildSettings;
  const std::string& fPMMLStr;
  const std::string& fStatXMLStr;
};
