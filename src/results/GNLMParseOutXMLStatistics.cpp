// The reader's statistics blocks: the children of the model diagnostics
// and of the training summary.
#include <algorithm>

#include "base/MIXAssert.h"
#include "host/data/ZORV_DataSource.h"
#include "host/documents/SDOMXMLIterator.h"
#include "host/documents/SDOMXMLWrapper.h"
#include "host/text/NumericText.h"
#include "results/GNLMParseOutXML.h"
#include "results/GNLMReaderSupport.h"

using Stats = GNLMOutputStats;
using namespace GNLMReaderSupport;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

int FeatureOfToken(const std::string& token) {
  if (token == "observed") return 0;
  if (token == "frequency") return 1;
  if (token == "statistic") return 2;
  if (token == "fields") return 3;
  return 4;
}

int StorageOfToken(const std::string& token) {
  static const char* const kTokens[] = {"integer", "real", "string", "date", "time", "timestamp"};
  for (int i = 0; i < 6; ++i) {
    if (token == kTokens[i]) return i + 1;
  }
  return 0;
}

int ContrastKindOfDescription(const std::string& description) {
  if (description == "pairwiseContrast") return 0;
  if (description == "deviationContrast") return 1;
  if (description == "simpleContrast") return 2;
  return 3;
}

}  // namespace

bool GNLMParseOutXML::fillModelDiagnosticsData(SDOMXMLWrapper* elem, Stats::ModelDiagnosticsData& diag) {
  SDOMXMLIterator* statistics = nullptr;
  const bool found = SDOMXMLWrapper::GetElementIterator(elem, "Statistic", &statistics);
  diag = Stats::ModelDiagnosticsData();
  for (double* number : {&diag.fAICC, &diag.fBIC, &diag.fMinus2LogLikelihood, &diag.fClassificationAccuracy,
                         &diag.fGrandMean, &diag.fGrandMeanStdErr, &diag.fGrandMeanCILower, &diag.fGrandMeanCIUpper}) {
    *number = fSysmis;
  }
  for (int* count : {&diag.fNumOfCovParamOfRepeated, &diag.fNumOfCovParamOfRandom, &diag.fNumOfColsOfFixed,
                     &diag.fNumOfColsOfRandom, &diag.fNumOfCommonSubjects}) {
    *count = -1;
  }
  if (!found) return false;
  SDOMXMLWrapper* statistic = nullptr;
  while (statistics != nullptr && statistics->Next(&statistic)) {
    std::string name, value;
    if (!statistic->GetAttribute("name", name) || !statistic->GetAttribute("value", value)) return false;
    if (!fillDiagnosticsStatistic(name, value, diag)) return false;
  }

  SDOMXMLIterator* targetDistDataElmIter = nullptr;
  if (elem->GetElementIterator("UnivariateData", &targetDistDataElmIter)) {
    MIX_ASSERT(targetDistDataElmIter != 0, "targetDistDataElmIter != 0");
    if (!fillTargetDistData(targetDistDataElmIter, diag.fTargetDist)) return false;
  }
  SDOMXMLIterator* predByObservDataElmIter = nullptr;
  if (elem->GetElementIterator("BivariateData", &predByObservDataElmIter)) {
    MIX_ASSERT(predByObservDataElmIter != 0, "predByObservDataElmIter != 0");
    if (!fillPredByObservData(predByObservDataElmIter, diag.fPredByObserv)) return false;
  }
  SDOMXMLIterator* effectTestDataElmIter = nullptr;
  if (!elem->GetElementIterator("ModelTestStats", &effectTestDataElmIter)) return true;
  MIX_ASSERT(effectTestDataElmIter != 0, "effectTestDataElmIter != 0");
  Stats::EffectTestData* pEffectTest = fpOutputStats->CreateEffectTest();
  MIX_ASSERT(pEffectTest != 0, "pEffectTest != 0");
  return fillEffectTestData(effectTestDataElmIter, *pEffectTest);
}

bool GNLMParseOutXML::fillDiagnosticsStatistic(const std::string& name, const std::string& value,
                                               Stats::ModelDiagnosticsData& diag) {
  const std::pair<const char*, double*> doubles[] = {{"AICC", &diag.fAICC},
                                                     {"BIC", &diag.fBIC},
                                                     {"minus2LogLikelihood", &diag.fMinus2LogLikelihood},
                                                     {"classificationAccuracy", &diag.fClassificationAccuracy},
                                                     {"grandMean", &diag.fGrandMean},
                                                     {"grandMeanStdErr", &diag.fGrandMeanStdErr},
                                                     {"grandMeanCILower", &diag.fGrandMeanCILower},
                                                     {"grandMeanCIUpper", &diag.fGrandMeanCIUpper}};
  for (const auto& entry : doubles) {
    if (name == entry.first) return readDouble(value, *entry.second);
  }
  const std::pair<const char*, int*> counts[] = {{"numOfCovParamOfRepeated", &diag.fNumOfCovParamOfRepeated},
                                                 {"numOfCovParamOfRandom", &diag.fNumOfCovParamOfRandom},
                                                 {"numOfColsOfFixed", &diag.fNumOfColsOfFixed},
                                                 {"numOfColsOfRandom", &diag.fNumOfColsOfRandom},
                                                 {"numOfCommonSubjects", &diag.fNumOfCommonSubjects}};
  for (const auto& entry : counts) {
    if (name != entry.first) continue;
    // An empty count is the system-missing value cut to a whole number.
    if (value.empty()) {
      *entry.second = TruncateToInt(fSysmis);
      return true;
    }
    return readInteger(value, *entry.second, 0);
  }
  return true;
}

bool GNLMParseOutXML::fillTargetDistData(SDOMXMLIterator* targetDistDataElmIter, Stats::TargetDistData& data) {
  MIX_ASSERT(targetDistDataElmIter != nullptr, "targetDistDataElmIter");
  data.fMean = 0.0;
  data.fStdDeviation = 0.0;
  data.fTotalFreq = 0;
  bool result = true;
  SDOMXMLWrapper* element = nullptr;
  while (targetDistDataElmIter->Next(&element)) {
    data.fShape = data.fRate = data.fR = data.fP = 0.0;
    result = element->GetAttribute("description", data.fDescription);
    if (data.fDescription != "TargetDistribution") continue;
    SDOMXMLWrapper* countsElm = nullptr;
    if (element->GetFirstElement("Counts", &countsElm)) {
      MIX_ASSERT(countsElm != nullptr, "countsElm");
      if (!readInteger(Attribute(countsElm, "totalFreq"), data.fTotalFreq, 0)) return false;
    }
    const std::pair<const char*, double*> named[] = {{"mean", &data.fMean},   {"stdDeviation", &data.fStdDeviation},
                                                     {"shape", &data.fShape}, {"rate", &data.fRate},
                                                     {"r", &data.fR},         {"p", &data.fP}};
    const std::vector<SDOMXMLWrapper*> statistics = Children(element, "Statistic");
    if (statistics.empty()) continue;
    for (SDOMXMLWrapper* statisticElm : statistics) {
      MIX_ASSERT(statisticElm != nullptr, "statisticElm");
      const std::string name = Attribute(statisticElm, "name");
      for (const auto& entry : named) {
        if (name == entry.first && !readDouble(Attribute(statisticElm, "value"), *entry.second, 0.0)) return false;
      }
    }
    const std::vector<SDOMXMLWrapper*> coordinates = Children(element, "Coordinates");
    if (coordinates.empty()) continue;
    for (SDOMXMLWrapper* coordinatesElm : coordinates) {
      MIX_ASSERT(coordinatesElm != nullptr, "coordinatesElm");
      const std::string feature = Attribute(coordinatesElm, "feature");
      SDOMXMLWrapper* arrayElm = nullptr;
      coordinatesElm->GetFirstElement("Array", &arrayElm);
      if (feature != "frequency" && feature != "observed") continue;
      if (arrayElm == nullptr) return false;
      if (!getNumericArray(arrayElm, feature == "frequency" ? data.fvFrequency : data.fvObserved)) return false;
    }
    // Only the first complete block counts.
    return true;
  }
  return result;
}

bool GNLMParseOutXML::fillPredByObservData(SDOMXMLIterator* predByObservDataElmIter,
                                           Stats::PredByObservData& data) {
  data.fMinValue = 0.0;
  data.fMaxValue = 0.0;
  data.fTotalFreq = 0;
  SDOMXMLWrapper* predByObservDataElm = nullptr;
  while (predByObservDataElmIter->Next(&predByObservDataElm)) {
    MIX_ASSERT(predByObservDataElm != 0, "predByObservDataElm != 0");
    if (!predByObservDataElm->GetAttribute("description", data.fDescription)) return false;
    if (data.fDescription == "observedByPredicted") return fillObservedByPredicted(predByObservDataElm, data);
  }
  return true;
}

bool GNLMParseOutXML::fillObservedByPredicted(SDOMXMLWrapper* elem, Stats::PredByObservData& data) {
  SDOMXMLWrapper* counts = nullptr;
  if (elem->GetFirstElement("Counts", &counts) && !readInteger(Attribute(counts, "totalFreq"), data.fTotalFreq, 0)) {
    return false;
  }
  const std::vector<SDOMXMLWrapper*> coordinates = Children(elem, "Coordinates");
  if (coordinates.empty()) return false;
  for (SDOMXMLWrapper* coordinatesElm : coordinates) {
    std::string feature;
    SDOMXMLWrapper* arrayElm = nullptr;
    if (!coordinatesElm->GetAttribute("feature", feature) || !coordinatesElm->GetFirstElement("Array", &arrayElm)) {
      return false;
    }
    MIX_ASSERT(arrayElm != 0, "arrayElm != 0");
    std::vector<double>* pTarget = feature == "observed"    ? &data.fvObserved
                                   : feature == "statistic" ? &data.fvPredicted
                                   : feature == "frequency" ? &data.fvFrequency
                                                            : nullptr;
    if (pTarget != nullptr && !getNumericArray(arrayElm, *pTarget)) return false;
  }
  // The system-missing value takes part like any number.
  bool first = true;
  for (const std::vector<double>* values : {&data.fvObserved, &data.fvPredicted}) {
    if (values->empty()) continue;
    const auto range = std::minmax_element(values->begin(), values->end());
    data.fMinValue = first ? *range.first : std::min(data.fMinValue, *range.first);
    data.fMaxValue = first ? *range.second : std::max(data.fMaxValue, *range.second);
    first = false;
  }
  return true;
}

bool GNLMParseOutXML::fillEffectTestData(SDOMXMLIterator* effectTestElmIter, Stats::EffectTestData& data) {
  MIX_ASSERT(effectTestElmIter != nullptr, "effectTestElmIter");
  SDOMXMLWrapper* modelTestStatsElm = nullptr;
  while (effectTestElmIter->Next(&modelTestStatsElm)) {
    MIX_ASSERT(modelTestStatsElm != nullptr, "modelTestStatsElm");
    const std::string description = Attribute(modelTestStatsElm, "description");
    Stats::EffectStatData test;
    test.fFStatistic = test.fDf1 = test.fDf2 = test.fSig = fSysmis;
    SDOMXMLWrapper* fTestElm = nullptr;
    if (modelTestStatsElm->GetFirstElement("FTest", &fTestElm)) {
      MIX_ASSERT(fTestElm != nullptr, "fTestElm");
      if (!readDouble(Attribute(fTestElm, "fStatistic"), test.fFStatistic) ||
          !readDouble(Attribute(fTestElm, "sig"), test.fSig) || !readDouble(Attribute(fTestElm, "df1"), test.fDf1) ||
          !readDouble(Attribute(fTestElm, "df2"), test.fDf2)) {
        return false;
      }
    }
    const std::string testType = Attribute(modelTestStatsElm, "testType");
    bool ok = true;
    test.fTestType = testType.empty() ? 0 : Roman2Integer(testType, &ok);
    if (!ok) return false;
    if (description == "correctedModel") {
      data.fCorrectedModel = test;
    } else if (description == "fixedEffect") {
      if (!readInteger(Attribute(modelTestStatsElm, "testID"), test.fTestID, 0)) return false;
      data.fvFixedEffects.push_back(test);
    }
  }
  return true;
}

bool GNLMParseOutXML::fillStructuredData(SDOMXMLIterator* structuredDataElmIter, Stats::StructuredData& data) {
  if (structuredDataElmIter == nullptr) return true;
  SDOMXMLWrapper* element = nullptr;
  while (structuredDataElmIter->Next(&element)) {
    std::string description;
    if (!element->GetAttribute("description", description)) return false;
    if (description == "firstSubjectRecordsForDataStructure") {
      if (!fillRepMeasSubjectData(element, data)) return false;
    } else if (description == "randomEffectCovariances") {
      Stats::RandEffCovarMatData matrices;
      if (!fillRandEffCovarMatData(element, matrices)) return false;
      data.fvRandEffCovarMats.push_back(matrices);
    }
  }
  return true;
}

bool GNLMParseOutXML::fillRepMeasSubjectData(SDOMXMLWrapper* elem, Stats::RepMeasSubjectData& data) {
  SDOMXMLWrapper* counts = nullptr;
  std::string totalFreq;
  const bool hasCounts = elem->GetFirstElement("Counts", &counts) && counts->GetAttribute("totalFreq", totalFreq);
  MIX_ASSERT(fpOutputStats->GetVariableMapInfo() != 0, "pVarMapInfo != 0");
  if (!hasCounts || !readInteger(totalFreq, data.fTotalFreq, 0)) return false;
  SDOMXMLWrapper* segment = nullptr;
  if (!elem->GetFirstElement("SegmentData/SegmentInfo", &segment)) return false;
  if (!fillSimpleSubjectData(segment, data.fSubjectData)) return false;
  SDOMXMLWrapper* multivariate = nullptr;
  if (!elem->GetFirstElement("SegmentData/MultivariateData", &multivariate)) return false;
  for (SDOMXMLWrapper* group : Children(multivariate, "CoordinatesGroup")) {
    const std::string description = Attribute(group, "description");
    if (description == "repeatedMeasures") {
      if (!FillChildren(*this, &GNLMParseOutXML::fillRepMeasVarData, group, "Coordinates", data.fvRepMeasVars)) {
        return false;
      }
    } else if (description == "target") {
      if (!fillTargetRecords(group, data)) return false;
    } else {
      return false;
    }
  }
  return true;
}

// The values of the target, and of the trials field, in the first
// subject's records. Both are coded as the target's values.
bool GNLMParseOutXML::fillTargetRecords(SDOMXMLWrapper* group, Stats::RepMeasSubjectData& data) {
  const int targetIndex = fpBuildSettings != nullptr ? fpBuildSettings->fTargetIndex : -1;
  const int trialsIndex = fpBuildSettings != nullptr ? fpBuildSettings->fTrialsIndex : -1;
  for (SDOMXMLWrapper* coordinates : Children(group, "Coordinates")) {
    const int index = findField(Attribute(coordinates, "field"));
    SDOMXMLWrapper* array = nullptr;
    std::vector<std::string> items;
    if (!coordinates->GetFirstElement("Array", &array) || !array->GetSimpleArray(items)) return false;
    for (const std::string& item : items) {
      CFStatVariableValue value(item);
      loadValue(value, targetIndex);
      if (index >= 0 && index == targetIndex) {
        data.fvTargetValues.push_back(value);
      } else if (index >= 0 && index == trialsIndex) {
        data.fvTrialsValues.push_back(value);
      }
    }
  }
  return true;
}

bool GNLMParseOutXML::fillSimpleSubjectData(SDOMXMLWrapper* elem, Stats::SimpleSubjectData& data) {
  const Stats::VariableMapInfo* pVarMapInfo = fpOutputStats->GetVariableMapInfo();
  MIX_ASSERT(pVarMapInfo != 0, "pVarMapInfo != 0");
  for (SDOMXMLWrapper* field : Children(elem, "FieldInfo")) {
    std::string name, text;
    if (!field->GetAttribute("fieldName", name) || !field->GetAttribute("fieldValue", text)) return false;
    const int index = findField(name);
    CFStatVariableValue value(text);
    if (index < 0 || !loadValue(value, index)) return false;
    // Subjects are categorical fields of the model.
    const int var = MappedVariable(*pVarMapInfo, index);
    if (var < 0 || !pVarMapInfo->fvIsCategorical[U(var)]) return false;
    data.fFieldNames.push_back(name);
    data.fFieldIndices.push_back(index);
    data.fSubjectValues.push_back(value);
    data.fNumCategories.push_back(pVarMapInfo->fvNumCategories[U(var)]);
  }
  return true;
}

bool GNLMParseOutXML::fillRandEffCovarMatData(SDOMXMLWrapper* randEffCovarMatElm, Stats::RandEffCovarMatData& data) {
  MIX_ASSERT(randEffCovarMatElm != nullptr, "randEffCovarMatElm");
  SDOMXMLWrapper* statistic = nullptr;
  if (!randEffCovarMatElm->GetFirstElement("Statistic", &statistic) ||
      !fillSimpleStatData(statistic, data.fStatName, data.fStatValue)) {
    return false;
  }
  SDOMXMLWrapper* labels = nullptr;
  SDOMXMLIterator* labelIter = nullptr;
  if (!randEffCovarMatElm->GetFirstElement("MatrixLabels/RowColLabels", &labels) ||
      !labels->GetElementIterator("Label", &labelIter)) {
    return false;
  }
  bool result = true;
  SDOMXMLWrapper* label = nullptr;
  while (labelIter->Next(&label)) {
    SDOMXMLWrapper* listElm = nullptr;
    Stats::PrintableListData list;
    std::string text;
    result = label->GetFirstElement("PrintableList", &listElm) && fillPrintableList(listElm, list) &&
             fpOutputStats->formatEffectLabel(list, text);
    data.fEffectLabels.push_back(text);
  }
  if (!result) return false;
  SDOMXMLIterator* segments = nullptr;
  if (!randEffCovarMatElm->GetElementIterator("SegmentData", &segments)) return false;
  SDOMXMLWrapper* segment = nullptr;
  while (result && segments->Next(&segment)) {
    SDOMXMLWrapper* info = nullptr;
    SDOMXMLWrapper* matrix = nullptr;
    Stats::SimpleSubjectData subject;
    Stats::ClassifMatrixData values;
    // A segment without subject fields has an empty subject, so that the
    // subjects and the matrices stay parallel.
    segment->GetFirstElement("SegmentInfo", &info);
    result = fillSimpleSubjectData(info, subject);
    if (result) data.fSimpleSubjects.push_back(subject);
    result = result && segment->GetFirstElement("Matrix", &matrix) && fillClassifMatrixData(matrix, values);
    if (result) data.fMatrixValues.push_back(values);
  }
  return result;
}

bool GNLMParseOutXML::fillClassifMatrixData(SDOMXMLWrapper* elem, Stats::ClassifMatrixData& matrix) {
  std::string rowsText;
  int columns = 0;
  if (!elem->GetAttribute("nbRows", rowsText) || !readInteger(rowsText, matrix.fNumRows, 0) ||
      !readInteger(Attribute(elem, "nbCols"), columns, 0)) {
    return false;
  }
  const std::string kind = Attribute(elem, "kind");
  if (fpBuildSettings == nullptr || !fpBuildSettings->fUseTrials) {
    SDOMXMLWrapper* labels = nullptr;
    if (elem->GetFirstElement("MatrixLabels/RowColLabels", &labels)) {
      SDOMXMLIterator* labelIter = nullptr;
      if (!labels->GetElementIterator("Label", &labelIter)) return false;
      SDOMXMLWrapper* label = nullptr;
      while (labelIter->Next(&label)) {
        std::string text;
        if (!label->GetAttribute("label", text)) return false;
        CFStatVariableValue value(text);
        loadValue(value, fpBuildSettings != nullptr ? fpBuildSettings->fTargetIndex : -1);
        matrix.fLabels.push_back(value);
      }
    }
  }
  SDOMXMLWrapper* arrayElm = nullptr;
  if (!elem->GetFirstElement("Array", &arrayElm)) return false;
  MIX_ASSERT(arrayElm != 0, "arrayElm != 0");
  std::vector<double> values;
  if (!getNumericArray(arrayElm, values)) return false;
  return fillMatrixCells(values, kind, columns, matrix);
}

bool GNLMParseOutXML::fillMatrixCells(const std::vector<double>& values, const std::string& kind, int columns,
                                      Stats::ClassifMatrixData& matrix) {
  const long long r = matrix.fNumRows;
  long long c = columns;
  if (r < 0 || c < 0) return false;
  long long needed = 0;
  if (kind == "diagonal") {
    needed = r;
  } else if (kind == "symmetric") {
    needed = r * (r + 1) / 2;
  } else {
    if (c == 0) c = r;
    needed = r * c;
  }
  if (static_cast<long long>(values.size()) != needed) return false;
  matrix.fRows.assign(U(matrix.fNumRows), Stats::ClassifRowData());
  for (long long i = 0; i < r; ++i) {
    Stats::ClassifRowData& row = matrix.fRows[static_cast<std::size_t>(i)];
    row.fValues.assign(static_cast<std::size_t>(r), 0.0);
    for (long long j = 0; j < r; ++j) {
      const long long hi = std::max(i, j);
      const long long lo = std::min(i, j);
      long long at = -1;
      if (kind == "diagonal") {
        at = i == j ? i : -1;
      } else if (kind == "symmetric") {
        at = hi * (hi + 1) / 2 + lo;
      } else if (j < c) {
        at = i * c + j;
      }
      if (at >= 0) row.fValues[static_cast<std::size_t>(j)] = values[static_cast<std::size_t>(at)];
    }
    for (double value : row.fValues) row.fRowSum += value;
  }
  return true;
}

bool GNLMParseOutXML::fillParamEstimData(SDOMXMLIterator* iter, Stats::ParamCollectData& collect) {
  SDOMXMLWrapper* element = nullptr;
  while (iter->Next(&element)) {
    std::string type;
    int block = 0;
    if (!element->GetAttribute("parameterType", type) || !readInteger(Attribute(element, "block"), block, 0)) {
      return false;
    }
    Stats::ParamEstimData set;
    if (type == "fixed") {
      SDOMXMLWrapper* field = nullptr;
      if (element->GetFirstElement("SegmentInfo/FieldInfo", &field)) {
        std::string value;
        if (!field->GetAttribute("fieldValue", value)) return false;
        set.fTargetValue.SetStringValue(value);
        if (!loadValue(set.fTargetValue, fpBuildSettings != nullptr ? fpBuildSettings->fTargetIndex : -1)) {
          return false;
        }
      }
    } else {
      SDOMXMLWrapper* segment = nullptr;
      if (element->GetFirstElement("SegmentInfo", &segment) && !fillSimpleSubjectData(segment, set.fFiledData)) {
        return false;
      }
    }
    const std::vector<SDOMXMLWrapper*> parameters = Children(element, "ParameterStats");
    if (parameters.empty()) return false;
    for (SDOMXMLWrapper* parameter : parameters) {
      Stats::ParamStatsData stats;
      if (!fillParamStatsData(parameter, stats)) return false;
      set.fvParamStats.push_back(stats);
    }
    if (type == "fixed") {
      collect.fvFixedParamEstim.push_back(set);
    } else if (type == "repeated") {
      collect.fvRepeatedParamEstim.push_back(set);
    } else if (type == "random") {
      if (block < 0) return false;
      // Blocks that fill a gap take the block number of the set that made
      // the gap, not their own position.
      while (collect.fvRandomParamEstim.size() < U(block) + 1) {
        Stats::ParamEstimBlockCollection added;
        added.fBlockIndex = block;
        collect.fvRandomParamEstim.push_back(added);
      }
      collect.fvRandomParamEstim[U(block)].fvParamEstim.push_back(set);
    }
  }
  return true;
}

bool GNLMParseOutXML::fillParamStatsData(SDOMXMLWrapper* elem, Stats::ParamStatsData& stats) {
  SDOMXMLWrapper* param = nullptr;
  if (elem->GetFirstElement("RegressionParameter", &param) && !fillRegrParamData(param, stats.fRegrParam)) {
    return false;
  }
  stats.fStatisticValue = -1;
  SDOMXMLWrapper* statistic = nullptr;
  if (elem->GetFirstElement("Statistic", &statistic)) {
    // An intercept belongs to no effect.
    if (stats.fRegrParam.fIsIntercept) return false;
    if (!fillSimpleStatData(statistic, stats.fStatistic)) return false;
    if (!readInteger(stats.fStatistic.fValue, stats.fStatisticValue, 0)) return false;
  }
  SDOMXMLWrapper* list = nullptr;
  if (elem->GetFirstElement("PrintableList", &list) && !fillPrintableList(list, stats.fParamList)) return false;

  if (!elem->GetAttribute("paramName", stats.fParamName) || !elem->GetAttribute("paramLabel", stats.fParamLabel)) {
    return false;
  }
  const std::pair<const char*, double*> numbers[] = {{"estimate", &stats.fEstimate},
                                                     {"stdError", &stats.fStdError},
                                                     {"df", &stats.fDf},
                                                     {"confIntervalLower", &stats.fConfIntervalLower},
                                                     {"confIntervalUpper", &stats.fConfIntervalUpper},
                                                     {"tTest", &stats.fTTest},
                                                     {"zTest", &stats.fZTest},
                                                     {"sig", &stats.fSig},
                                                     {"chiSquare", &stats.fChiSquare},
                                                     {"expEstimate", &stats.fExpEstimate},
                                                     {"expCILower", &stats.fExpCILower},
                                                     {"expCIUpper", &stats.fExpCIUpper}};
  for (const auto& entry : numbers) {
    std::string text;
    if (!elem->GetAttribute(entry.first, text) || !readDouble(text, *entry.second)) return false;
  }
  std::string redundant;
  if (!elem->GetAttribute("isRedundant", redundant)) return false;
  stats.fIsRedundant = redundant == "true";
  return true;
}

bool GNLMParseOutXML::fillWarningMessages(SDOMXMLIterator* iter, std::vector<Stats::WarningMsgData>& list) {
  if (iter == nullptr) return true;
  SDOMXMLWrapper* warningMsgElm = nullptr;
  while (iter->Next(&warningMsgElm)) {
    MIX_ASSERT(warningMsgElm != 0, "warningMsgElm != 0");
    SDOMXMLWrapper* printListElm = nullptr;
    if (!warningMsgElm->GetFirstElement("PrintableList", &printListElm)) return false;
    MIX_ASSERT(printListElm != 0, "printListElm != 0");
    Stats::WarningMsgData warning;
    if (!printListElm->GetAttribute("pattern", warning.fPattern)) return false;
    if (warning.fPattern.empty()) continue;
    bool complete = true;
    for (SDOMXMLWrapper* value : Children(printListElm, "PrintableValue")) {
      std::string text;
      if (!value->GetAttribute("value", text)) {
        complete = false;
        continue;
      }
      if (!text.empty()) warning.fWarningParameters.push_back(text);
    }
    list.push_back(warning);
    if (!complete) return false;
  }
  return true;
}

bool GNLMParseOutXML::fillDataGroupData(SDOMXMLIterator* dataGroupElmIter) {
  MIX_ASSERT(dataGroupElmIter != nullptr, "dataGroupElmIter");
  SDOMXMLWrapper* group = nullptr;
  while (dataGroupElmIter->Next(&group)) {
    const std::string description = Attribute(group, "description");
    if (description == "Emmeans") {
      std::vector<Stats::EMMEANSEstimatesData>* pCollect = fpOutputStats->GetEMMEANSSignifCollect();
      if (pCollect == nullptr) pCollect = fpOutputStats->CreateEMMEANSSignifCollect();
      SDOMXMLWrapper* multivariate = nullptr;
      Stats::EMMEANSEstimatesData estimates;
      if (!group->GetFirstElement("MultivariateData", &multivariate) ||
          !fillEMMEANSEstimatesData(multivariate, estimates)) {
        return false;
      }
      pCollect->push_back(estimates);
    } else if (description == "customEmmeans") {
      std::vector<Stats::EMMEANSCustomData>* pCollect = fpOutputStats->GetEMMEANSCustomCollect();
      if (pCollect == nullptr) pCollect = fpOutputStats->CreateEMMEANSCustomCollect();
      Stats::EMMEANSCustomData custom;
      if (!fillEMMEANSCustomData(group, custom)) return false;
      pCollect->push_back(custom);
    }
  }
  return true;
}

bool GNLMParseOutXML::fillEMMEANSCustomData(SDOMXMLWrapper* emmeansCustomElm, Stats::EMMEANSCustomData& data) {
  MIX_ASSERT(emmeansCustomElm != nullptr, "emmeansCustomElm");
  data.fEMMEANSIndex = -1;
  SDOMXMLWrapper* label = nullptr;
  emmeansCustomElm->GetFirstElement("Label/PrintableList", &label);
  for (SDOMXMLWrapper* fieldList : Children(label, "PrintableList")) {
    Stats::SimpleFiledValueData pair;
    pair.fFieldName = Attribute(fieldList, "pattern");
    SDOMXMLWrapper* valueList = nullptr;
    fieldList->GetFirstElement("PrintableList", &valueList);
    const std::string text = Attribute(valueList, "pattern");
    const int index = findField(pair.fFieldName);
    if (index >= 0 && variableOf(index) != nullptr) {
      pair.fValue.SetCompleteValue(text, *variableOf(index), false);
    } else {
      pair.fValue.SetStringValue(text);
    }
    data.fvFieldValues.push_back(pair);
  }
  SDOMXMLWrapper* statistic = nullptr;
  if (emmeansCustomElm->GetFirstElement("Statistic", &statistic)) {
    std::string name, value;
    if (!statistic->GetAttribute("name", name) || !statistic->GetAttribute("value", value)) return false;
    if (name == "EMMEANSIndex" && !readInteger(value, data.fEMMEANSIndex, -1)) return false;
  }
  const std::vector<SDOMXMLWrapper*> blocks = Children(emmeansCustomElm, "MultivariateData");
  if (blocks.empty()) return false;
  for (SDOMXMLWrapper* block : blocks) {
    const std::string description = Attribute(block, "description");
    if (description == "estimates" && !fillEMMEANSEstimatesData(block, data.fEstimates)) return false;
    if (description == "contrasts" && !fillEMMEANSContrastsData(block, data.fContrasts)) return false;
  }
  if (!FillChildren(*this, &GNLMParseOutXML::fillEMMEANSOverallTestData, emmeansCustomElm, "ModelTestStats",
                    data.fvOverallTests)) {
    return false;
  }
  SDOMXMLIterator* messages = nullptr;
  if (!emmeansCustomElm->GetElementIterator("Message", &messages)) return true;
  return fillWarningMessages(messages, data.fvWarningList);
}

bool GNLMParseOutXML::fillEMMEANSEstimatesData(SDOMXMLWrapper* emmeansEstiElm, Stats::EMMEANSEstimatesData& data) {
  MIX_ASSERT(emmeansEstiElm != nullptr, "emmeansEstiElm");
  SDOMXMLWrapper* group = nullptr;
  if (emmeansEstiElm->GetFirstElement("CoordinatesGroup", &group) && !fillCoordinatesGroup(group, data.fvGroup)) {
    return false;
  }
  const std::pair<const char*, Stats::CoordinatesData*> columns[] = {{"mean", &data.fMean},
                                                                     {"stdErr", &data.fStdErr},
                                                                     {"confIntervalLower", &data.fConfIntervalLower},
                                                                     {"confIntervalUpper", &data.fConfIntervalUpper}};
  return fillStatisticColumns(emmeansEstiElm, columns, sizeof columns / sizeof columns[0]);
}

bool GNLMParseOutXML::fillEMMEANSContrastsData(SDOMXMLWrapper* emmeansContrastElm,
                                               Stats::EMMEANSContrastsData& data) {
  MIX_ASSERT(emmeansContrastElm != nullptr, "emmeansContrastElm");
  SDOMXMLWrapper* statistic = nullptr;
  if (emmeansContrastElm->GetFirstElement("Statistic", &statistic)) {
    std::string name;
    double value = fSysmis;
    if (!statistic->GetAttribute("name", name) || !readDouble(Attribute(statistic, "value"), value)) return false;
    if (name == "adjustedSigLevel") data.fAdjustedSigLevel = value;
  }
  SDOMXMLWrapper* group = nullptr;
  if (emmeansContrastElm->GetFirstElement("CoordinatesGroup", &group)) {
    data.fContrastKind = ContrastKindOfDescription(Attribute(group, "description"));
    if (!fillCoordinatesGroup(group, data.fvGroup)) return false;
  }
  const std::pair<const char*, Stats::CoordinatesData*> columns[] = {
      {"contrastEstimate", &data.fContrastEstimate},   {"stdErr", &data.fStdErr},
      {"tTest", &data.fTTest},                         {"df", &data.fDf},
      {"adjustedSig", &data.fAdjustedSig},             {"confIntervalLower", &data.fConfIntervalLower},
      {"confIntervalUpper", &data.fConfIntervalUpper}};
  return fillStatisticColumns(emmeansContrastElm, columns, sizeof columns / sizeof columns[0]);
}

bool GNLMParseOutXML::fillCoordinatesGroup(SDOMXMLWrapper* group, std::vector<Stats::CoordinatesData>& list) {
  return FillChildren(*this, &GNLMParseOutXML::fillCoordinatesData, group, "Coordinates", list);
}

bool GNLMParseOutXML::fillStatisticColumns(SDOMXMLWrapper* elem,
                                           const std::pair<const char*, Stats::CoordinatesData*>* columns,
                                           std::size_t nColumns) {
  const std::vector<SDOMXMLWrapper*> children = Children(elem, "Coordinates");
  if (children.empty()) return false;
  for (SDOMXMLWrapper* coordinates : children) {
    const std::string statistic = Attribute(coordinates, "statistic");
    for (std::size_t k = 0; k < nColumns; ++k) {
      if (statistic == columns[k].first && !fillCoordinatesData(coordinates, *columns[k].second)) return false;
    }
  }
  return true;
}

bool GNLMParseOutXML::fillEMMEANSOverallTestData(SDOMXMLWrapper* emmeansOverallTestElm,
                                                 Stats::EMMEANSOverallTestData& data) {
  MIX_ASSERT(emmeansOverallTestElm != nullptr, "emmeansOverallTestElm");
  if (!readInteger(Attribute(emmeansOverallTestElm, "testID"), data.fTestID, -1)) return false;
  SDOMXMLWrapper* segment = nullptr;
  if (emmeansOverallTestElm->GetFirstElement("SegmentInfo", &segment) && !fillSimpleSubjectData(segment, data)) {
    return false;
  }
  SDOMXMLWrapper* fTest = nullptr;
  if (!emmeansOverallTestElm->GetFirstElement("FTest", &fTest)) return false;
  const std::pair<const char*, double*> numbers[] = {
      {"fStatistic", &data.fFStatistic}, {"sig", &data.fSig}, {"df1", &data.fDf1}, {"df2", &data.fDf2}};
  for (const auto& entry : numbers) {
    std::string text;
    if (!fTest->GetAttribute(entry.first, text) || !readDouble(text, *entry.second)) return false;
  }
  return true;
}

bool GNLMParseOutXML::fillCoordinatesData(SDOMXMLWrapper* coordinatesElm, Stats::CoordinatesData& coord) {
  MIX_ASSERT(coordinatesElm != nullptr, "coordinatesElm");
  coord.fFeature = FeatureOfToken(Attribute(coordinatesElm, "feature"));
  coord.fField = Attribute(coordinatesElm, "field");
  coord.fStatistic = Attribute(coordinatesElm, "statistic");
  SDOMXMLWrapper* arrayElm = nullptr;
  if (!coordinatesElm->GetFirstElement("Array", &arrayElm)) return false;
  MIX_ASSERT(arrayElm != 0, "arrayElm != 0");
  coord.fValues.clear();
  return arrayElm->GetSimpleArray(coord.fValues);
}

bool GNLMParseOutXML::fillSimpleStatData(SDOMXMLWrapper* elem, Stats::SimpleStatData& stat) {
  if (!elem->GetAttribute("name", stat.fName)) return false;
  return elem->GetAttribute("value", stat.fValue);
}

bool GNLMParseOutXML::fillSimpleStatData(SDOMXMLWrapper* elem, std::string& name, double& value) {
  if (!elem->GetAttribute("name", name)) return false;
  return readDouble(Attribute(elem, "value"), value);
}

bool GNLMParseOutXML::fillPrintableList(SDOMXMLWrapper* printableListElm, Stats::PrintableListData& list) {
  MIX_ASSERT(printableListElm != nullptr, "printableListElm");
  list.fPattern = Attribute(printableListElm, "pattern");
  list.fIsKey = Attribute(printableListElm, "isKey") == "true";
  if (!readInteger(Attribute(printableListElm, "mapId"), list.fMapId, -1)) return false;
  return FillChildren(*this, &GNLMParseOutXML::fillPrintableList, printableListElm, "PrintableList",
                      list.fvSubLists) &&
         FillChildren(*this, &GNLMParseOutXML::fillPrintableValue, printableListElm, "PrintableValue", list.fvValues);
}

bool GNLMParseOutXML::fillPrintableValue(SDOMXMLWrapper* printableValueElm, Stats::PrintableValueData& value) {
  MIX_ASSERT(printableValueElm != nullptr, "printableValueElm");
  std::string storage;
  if (!printableValueElm->GetAttribute("storage", storage) || !printableValueElm->GetAttribute("value", value.fValue)) {
    return false;
  }
  value.fStorage = StorageOfToken(storage);
  value.fIsNull = Attribute(printableValueElm, "isNull") == "true";
  value.fLabel = Attribute(printableValueElm, "label");
  return true;
}
