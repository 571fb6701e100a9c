// The reader's object, its walk of the StatXML document, the build
// settings and model terms, the PMML side and the label maps. The
// statistics blocks are in GNLMParseOutXMLStatistics.cpp.
#include "results/GNLMParseOutXML.h"

#include <cfloat>
#include <climits>
#include <memory>
#include <sstream>

#include "base/MIXAssert.h"
#include "host/data/ZORV_DataSource.h"
#include "host/documents/SDOMXMLIterator.h"
#include "host/documents/SDOMXMLWrapper.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"
#include "host/text/NumericText.h"
#include "host/text/ZORVMBConverter.h"
#include "numeric/xml/MCPMMLParser.h"
#include "results/GNLMReaderSupport.h"

using Stats = GNLMOutputStats;
using namespace GNLMReaderSupport;

namespace {

Stats::EnumDistTypes DistOfToken(const std::string& token) {
  static const char* const kTokens[] = {"BINOMIAL", "GAMMA", "IGAUSS", "NOMINAL", "ORDINAL",
                                        "NEGBIN",   "NORMAL", "POISSON"};
  for (int i = 0; i < 8; ++i) {
    if (token == kTokens[i]) return static_cast<Stats::EnumDistTypes>(i);
  }
  return Stats::DIST_UNKNOWN;
}

Stats::EnumLinkTypes LinkOfToken(const std::string& token) {
  static const char* const kTokens[] = {"CLOGLOG", "IDENTITY", "LOG",    "LOGC",   "LOGIT",
                                        "NLOGLOG", "POWER",    "PROBIT", "CAUCHIT"};
  for (int i = 0; i < 9; ++i) {
    if (token == kTokens[i]) return static_cast<Stats::EnumLinkTypes>(i);
  }
  return Stats::LINK_UNKNOWN;
}

// The covariance structure of a token; the tokens after SPSPH are ours.
Stats::EnumCovarianceType XmlCT2EnumCovarianceType(const std::string& token) {
  static const std::pair<const char*, Stats::EnumCovarianceType> kTokens[] = {
      {"VC", Stats::VC},          {"AR1", Stats::AR1},       {"ARMA11", Stats::ARMA11},
      {"CS", Stats::CS},          {"DIAG", Stats::DIAG},     {"ID", Stats::ID},
      {"TP", Stats::TP},          {"UNSTRUCTURED", Stats::UNSTRUCTURED},
      {"SPPOW", Stats::SPPOW},    {"SPEXP", Stats::SPEXP},   {"SPGAU", Stats::SPGAU},
      {"SPLIN", Stats::SPLIN},    {"SPLINLOG", Stats::SPLINLOG}, {"SPSPH", Stats::SPSPH},
      {"ARH1", Stats::ARH1},      {"AD1", Stats::AD1},       {"CSH", Stats::CSH},
      {"CSR", Stats::CSR},        {"FA1", Stats::FA1},       {"FAH1", Stats::FAH1},
      {"HF", Stats::HF},          {"TPH", Stats::TPH},       {"UNR", Stats::UNR}};
  for (const auto& entry : kTokens) {
    if (token == entry.first) return entry.second;
  }
  return Stats::COV_UNKNOWN;
}

int AdjustmentOfToken(const std::string& token) {
  if (token == "LSD") return 0;
  if (token == "SEQBONFERRONI") return 1;
  if (token == "SEQSIDAK") return 2;
  return 3;
}

int ContrastOfToken(const std::string& token) {
  if (token == "Pairwise") return 0;
  if (token == "Deviation") return 1;
  if (token == "Simple") return 2;
  if (token == "None") return 3;
  return 4;
}

int ReferenceOfToken(const std::string& token) {
  if (token == "Last") return 0;
  if (token == "Value") return 1;
  return 2;
}

// The values before any Parameter is read. The algorithm's name comes from
// the predictive summary, read before the settings, and stays.
void SetBuildSettingsDefaults(Stats::BuildSettingsData& settings, double sysmis) {
  const std::string algorithmName = settings.fAlgorithmName;
  settings = Stats::BuildSettingsData();
  settings.fAlgorithmName = algorithmName;
  settings.fTargetIndex = -1;
  settings.fTrialsIndex = -1;
  settings.fDistribution = Stats::DIST_UNKNOWN;
  settings.fLinkFunction = Stats::LINK_UNKNOWN;
  settings.fLinkParam = sysmis;
  settings.fCIn = sysmis;
  settings.fIntercept = true;
  settings.fPAdjustment = 3;
}

}  // namespace

GNLMParseOutXML::GNLMParseOutXML(BpProcedure* pProcedure, ZORV_DataSource* pDataSource,
                                 GNLMOutputStats* pOutputStats, const std::string& pmml, const std::string& statXML)
    : fPMMLParsed(false),
      fStatXMLParsed(false),
      fSysmis(-DBL_MAX),
      fpConverter(ZORVMBConverterNew_A(0)),
      fpProcedure(pProcedure),
      fpDataSource(pDataSource),
      fpOutputStats(pOutputStats),
      fpBuildSettings(nullptr),
      fPMMLStr(pmml),
      fStatXMLStr(statXML) {}

GNLMParseOutXML::~GNLMParseOutXML() { ZORVMBConverterDelete_A(fpConverter); }

bool GNLMParseOutXML::ParseXML() {
  if (!parsePMML(fPMMLStr)) return false;
  return parseCustomStat(fStatXMLStr);
}

bool GNLMParseOutXML::parsePMML(const std::string& pmml) {
  if (fPMMLParsed) return true;
  std::istringstream stream(pmml);
  MCXML_850::MCPMMLParser parser;
  if (parser.ParseToDOM(stream).IsError()) return false;
  if (parser.FillVarList(*fpOutputStats->CreateMCVarList(), std::vector<std::string>(), false).IsError()) {
    return false;
  }
  fpOutputStats->UpdateVariableMapInfo();
  fPMMLParsed = true;
  return true;
}

bool GNLMParseOutXML::parseCustomStat(const std::string& statXML) {
  if (fStatXMLParsed) return true;
  if (statXML.empty()) return false;
  SDOMXMLWrapper document;
  const bool loaded = document.LoadFromString(statXML);
  fpBuildSettings = fpOutputStats->CreateBuildSettings();
  MIX_ASSERT(fpBuildSettings != 0, "fpBuildSettings != 0");
  if (loaded && readStatXML(document)) {
    fStatXMLParsed = true;
    return true;
  }
  BpError(BpString("StatXML parsing error ...", true), BpErrorShowOutput, BpErrorLevelError);
  return false;
}

bool GNLMParseOutXML::readStatXML(SDOMXMLWrapper& document) {
  SDOMXMLWrapper* summary = nullptr;
  if (!document.GetFirstElement("PMMLModel/PredictiveSummary", &summary)) return false;
  if (!summary->GetAttribute("algorithmName", fpBuildSettings->fAlgorithmName)) return false;
  if (fpBuildSettings->fAlgorithmName != "GLMM") return false;

  SDOMXMLWrapper* settings = nullptr;
  if (!document.GetFirstElement("BuildSettings", &settings)) return false;
  if (!fillBuildSettingsData(settings, *fpBuildSettings)) {
    fpOutputStats->DestroyBuildSettings();
    fpBuildSettings = nullptr;
    return false;
  }

  // The label maps come before the diagnostics, whose covariance matrices
  // are labelled through them while they are read.
  std::vector<Stats::StringMapData>* pStringMapCollect = fpOutputStats->CreateStringMapCollect();
  MIX_ASSERT(pStringMapCollect != 0, "pStringMapCollect != 0");
  SDOMXMLWrapper* model = nullptr;
  SDOMXMLIterator* maps = nullptr;
  document.GetFirstElement("PMMLModel", &model);
  if (!SDOMXMLWrapper::GetElementIterator(model, "StringMap", &maps)) return false;
  if (!fillStringMapCollectionData(maps, *pStringMapCollect)) return false;

  Stats::ModelDiagnosticsData* pModelDiagnostics = fpOutputStats->CreateModelDiagnostics();
  MIX_ASSERT(pModelDiagnostics != 0, "pModelDiagnostics != 0");
  SDOMXMLWrapper* diagnostics = nullptr;
  if (!document.GetFirstElement("PMMLModel/ModelDiagnostics", &diagnostics)) return false;
  if (!fillModelDiagnosticsData(diagnostics, *pModelDiagnostics)) return false;
  if (!readDiagnosticsBlocks(diagnostics)) return false;
  return readTrainingSummary(document);
}

bool GNLMParseOutXML::readDiagnosticsBlocks(SDOMXMLWrapper* diagnostics) {
  SDOMXMLIterator* structuredDataElmIter = nullptr;
  if (diagnostics->GetElementIterator("StructuredData", &structuredDataElmIter)) {
    MIX_ASSERT(structuredDataElmIter != 0, "structuredDataElmIter != 0");
    Stats::StructuredData* pStructuredData = fpOutputStats->CreateStructuredData();
    MIX_ASSERT(pStructuredData != 0, "pStructuredData != 0");
    if (!fillStructuredData(structuredDataElmIter, *pStructuredData)) return false;
  }
  SDOMXMLWrapper* classifMatrixElm = nullptr;
  if (diagnostics->GetFirstElement("Matrix", &classifMatrixElm)) {
    MIX_ASSERT(classifMatrixElm != 0, "classifMatrixElm != 0");
    std::string description;
    classifMatrixElm->GetAttribute("description", description);
    if (description == "classificationTable") {
      Stats::ClassifMatrixData* pClassifMatrixData = fpOutputStats->CreateClassifMatrix();
      MIX_ASSERT(pClassifMatrixData != 0, "pClassifMatrixData != 0");
      if (!fillClassifMatrixData(classifMatrixElm, *pClassifMatrixData)) return false;
    }
  }
  SDOMXMLIterator* dataGroupElmIter = nullptr;
  if (diagnostics->GetElementIterator("DataGroup", &dataGroupElmIter)) {
    if (!fillDataGroupData(dataGroupElmIter)) return false;
  }
  return true;
}

// A model that produced no estimates but did produce messages is read
// successfully; its tables find no parameters.
bool GNLMParseOutXML::readTrainingSummary(SDOMXMLWrapper& document) {
  Stats::ParamCollectData* pParamCollect = fpOutputStats->CreateParamCollect();
  MIX_ASSERT(pParamCollect != 0, "pParamCollect != 0");
  bool result = false;
  SDOMXMLWrapper* trainingSummaryElm = nullptr;
  SDOMXMLIterator* estimates = nullptr;
  if (document.GetFirstElement("PMMLModel/TrainingSummary", &trainingSummaryElm)) {
    MIX_ASSERT(trainingSummaryElm != 0, "trainingSummaryElm != 0");
    if (trainingSummaryElm->GetElementIterator("ParameterEstimates", &estimates) && estimates != nullptr) {
      result = fillParamEstimData(estimates, *pParamCollect);
    }
  }
  if (!result) fpOutputStats->DestroyParamCollect();
  SDOMXMLIterator* messages = nullptr;
  if (SDOMXMLWrapper::GetElementIterator(trainingSummaryElm, "Message", &messages)) {
    if (messages == nullptr) return false;
    result = fillWarningMessages(messages, fpOutputStats->GetAllWarnings());
  }
  return result;
}

bool GNLMParseOutXML::fillBuildSettingsData(SDOMXMLWrapper* elem, Stats::BuildSettingsData& settings) {
  SDOMXMLIterator* parameters = nullptr;
  const bool found = SDOMXMLWrapper::GetElementIterator(elem, "Parameter", &parameters);
  SetBuildSettingsDefaults(settings, fSysmis);
  if (!found) return false;
  if (parameters == nullptr) return true;
  SDOMXMLWrapper* parameter = nullptr;
  while (parameters->Next(&parameter)) {
    std::string name;
    if (!parameter->GetAttribute("name", name)) return false;
    std::string value;
    parameter->GetAttribute("value", value);
    if (!fillBuildSetting(parameter, name, value, settings)) return false;
  }
  return true;
}

bool GNLMParseOutXML::fillBuildSetting(SDOMXMLWrapper* parameter, const std::string& name, const std::string& value,
                                       Stats::BuildSettingsData& buildSettingsStruct) {
  if (name == "TargetField") {
    buildSettingsStruct.fTargetField = value;
    buildSettingsStruct.fTargetIndex = findField(value);
    MIX_ASSERT(buildSettingsStruct.fTargetIndex >= 0, "buildSettingsStruct.fTargetIndex >= 0");
  } else if (name == "UseTrials") {
    buildSettingsStruct.fUseTrials = value == "true";
  } else if (name == "TrialsField") {
    buildSettingsStruct.fTrialsField = value;
    buildSettingsStruct.fTrialsIndex = findField(value);
    MIX_ASSERT(buildSettingsStruct.fTrialsIndex >= 0, "buildSettingsStruct.fTrialsIndex >= 0");
  } else if (name == "TrialsValue") {
    double trials = 0.0;
    if (!readDouble(value, trials)) return false;
    buildSettingsStruct.fTrialsValue = TruncateToInt(trials);
  } else if (name == "DistributionOfTarget") {
    buildSettingsStruct.fDistributionText = value;
    buildSettingsStruct.fDistribution = DistOfToken(value);
  } else if (name == "LinkFunctionType") {
    buildSettingsStruct.fLinkFunctionText = value;
    buildSettingsStruct.fLinkFunction = LinkOfToken(value);
  } else if (name == "LinkFunctionParam") {
    buildSettingsStruct.fLinkParamText = value;
    if (!readDouble(value, buildSettingsStruct.fLinkParam)) return false;
  } else if (name == "Intercept") {
    buildSettingsStruct.fIntercept = value == "true";
  } else if (name == "ResidualCovarianceType") {
    buildSettingsStruct.fResidualCovarianceType = XmlCT2EnumCovarianceType(value);
  } else if (name == "ResidualCovarianceTBand") {
    if (!readInteger(value, buildSettingsStruct.fResidualCovarianceTBand, 2)) return false;
  } else if (name == "ResidualSubjectSpec") {
    SDOMXMLWrapper* structured = nullptr;
    if (parameter->GetFirstElement("StructuredValue", &structured)) {
      return fillEffectStruct(structured, buildSettingsStruct.fResidualSubjectSpec);
    }
  } else if (name == "ResidualGroupSpec") {
    SDOMXMLWrapper* list = nullptr;
    if (parameter->GetFirstElement("ListValue", &list)) {
      return fillSimpleListValue(list, buildSettingsStruct.fvResidualGroupSpec);
    }
  } else if (name == "CIn") {
    if (!readDouble(value, buildSettingsStruct.fCIn)) return false;
  } else if (name == "FixedEffectList") {
    SDOMXMLWrapper* list = nullptr;
    if (parameter->GetFirstElement("ListValue", &list)) {
      return fillEffectList(list, buildSettingsStruct.fvFixedEffectList);
    }
  } else if (name == "RandomSpecs") {
    return fillRandomSpecs(parameter, buildSettingsStruct.fvRandomSpecs);
  } else if (name == "EMMEANS") {
    return fillEMMEANSSpecs(parameter, buildSettingsStruct.fvEMMEANS);
  } else if (name == "pAdjustment") {
    buildSettingsStruct.fPAdjustment = AdjustmentOfToken(value);
  }
  return true;
}

bool GNLMParseOutXML::fillEffectStruct(SDOMXMLWrapper* elem, Stats::ModelEffectData& effect) {
  MIX_ASSERT(elem != nullptr, "effectStructElm");
  SDOMXMLIterator* attributes = nullptr;
  if (!elem->GetElementIterator("Attribute", &attributes)) return false;
  bool found = false;
  SDOMXMLWrapper* attribute = nullptr;
  while (attributes->Next(&attribute)) {
    std::string name;
    attribute->GetAttribute("name", name);
    SDOMXMLWrapper* list = nullptr;
    found = attribute->GetFirstElement("ListValue", &list);
    if (!found) continue;
    // The last attribute decides the result: a bad field name goes
    // unreported when nesting levels follow it.
    for (SDOMXMLWrapper* value : Children(list, "Value")) {
      const std::string text = Attribute(value, "value");
      if (name == "Fields") {
        effect.fvFieldNames.push_back(text);
        const int index = findField(text);
        if (index < 0) {
          found = false;
          break;
        }
        effect.fvFieldIndices.push_back(index);
      } else if (name == "NestingLevels") {
        int level = 0;
        if (!readInteger(text, level, 0)) {
          found = false;
          break;
        }
        effect.fvNestingLevels.push_back(level);
      }
    }
  }
  return found;
}

bool GNLMParseOutXML::fillEffectList(SDOMXMLWrapper* elem, std::vector<Stats::ModelEffectData>& list) {
  MIX_ASSERT(elem != nullptr, "effectListElm");
  return FillChildren(*this, &GNLMParseOutXML::fillEffectStruct, elem, "StructuredValue", list);
}

bool GNLMParseOutXML::fillSimpleListValue(SDOMXMLWrapper* elem, std::vector<std::string>& list) {
  MIX_ASSERT(elem != nullptr, "listValueElm");
  for (SDOMXMLWrapper* value : Children(elem, "Value")) list.push_back(Attribute(value, "value"));
  return true;
}

bool GNLMParseOutXML::fillRandomSpecs(SDOMXMLWrapper* elem, std::vector<Stats::RandomSpecsData>& list) {
  MIX_ASSERT(elem != nullptr, "effectListElm");
  std::vector<SDOMXMLWrapper*> blocks;
  if (!StructuredValues(elem, blocks)) return false;
  for (SDOMXMLWrapper* block : blocks) {
    Stats::RandomSpecsData spec;
    SDOMXMLIterator* attributes = nullptr;
    if (!block->GetElementIterator("Attribute", &attributes)) return false;
    SDOMXMLWrapper* attribute = nullptr;
    while (attributes->Next(&attribute)) {
      const std::string name = Attribute(attribute, "name");
      const std::string value = Attribute(attribute, "value");
      if (name == "EffectList") {
        SDOMXMLWrapper* effects = nullptr;
        if (!attribute->GetFirstElement("ListValue", &effects) || !fillEffectList(effects, spec.fvEffectList)) {
          return false;
        }
      } else if (name == "Intercept") {
        spec.fIntercept = value == "true";
      } else if (name == "SubjectSpec") {
        SDOMXMLWrapper* subjects = nullptr;
        if (!attribute->GetFirstElement("StructuredValue", &subjects) ||
            !fillEffectStruct(subjects, spec.fSubjectSpec)) {
          return false;
        }
      } else if (name == "GroupSpec") {
        SDOMXMLWrapper* groups = nullptr;
        if (attribute->GetFirstElement("ListValue", &groups)) fillSimpleListValue(groups, spec.fvGroupSpec);
      } else if (name == "CovarianceType") {
        spec.fCovarianceType = XmlCT2EnumCovarianceType(value);
      } else if (name == "CovarianceTBand") {
        if (!readInteger(value, spec.fCovarianceTBand, 2)) return false;
      }
    }
    list.push_back(spec);
  }
  return true;
}

bool GNLMParseOutXML::fillEMMEANSSpecs(SDOMXMLWrapper* elem, std::vector<Stats::EMMEANSData>& list) {
  MIX_ASSERT(elem != nullptr, "EMMEANSElm");
  std::vector<SDOMXMLWrapper*> requests;
  if (!StructuredValues(elem, requests)) return false;
  for (SDOMXMLWrapper* request : requests) {
    Stats::EMMEANSData means;
    means.fContrastType = 3;
    means.fReferenceType = 0;
    SDOMXMLIterator* attributes = nullptr;
    if (!request->GetElementIterator("Attribute", &attributes)) return false;
    bool ok = true;
    SDOMXMLWrapper* attribute = nullptr;
    while (ok && attributes->Next(&attribute)) {
      const std::string name = Attribute(attribute, "name");
      const std::string value = Attribute(attribute, "value");
      if (name == "Factors") {
        SDOMXMLWrapper* factors = nullptr;
        ok = attribute->GetFirstElement("StructuredValue", &factors) && fillEffectStruct(factors, means.fFactors);
      } else if (name == "EstimateMeans") {
        means.fEstimateMeans = value == "true";
      } else if (name == "CompareFactor") {
        means.fCompareFactor = value;
      } else if (name == "ContrastType") {
        means.fContrastType = ContrastOfToken(value);
      } else if (name == "ReferenceType") {
        means.fReferenceType = ReferenceOfToken(value);
      } else if (name == "ReferenceValue") {
        means.fReferenceValue = value;
      } else if (name == "PAdjustment") {
        means.fPAdjustment = AdjustmentOfToken(value);
      }
    }
    list.push_back(means);
    if (!ok) return false;
  }
  return true;
}

bool GNLMParseOutXML::fillCovariateData(SDOMXMLWrapper* elem, Stats::CovariateData& covariate) {
  if (!elem->GetAttribute("field", covariate.fField)) return false;
  covariate.fFieldIndex = findField(covariate.fField);
  return readInteger(Attribute(elem, "power"), covariate.fPower, 0);
}

bool GNLMParseOutXML::fillFactorData(SDOMXMLWrapper* elem, Stats::FactorData& factor) {
  if (!elem->GetAttribute("field", factor.fField)) return false;
  factor.fFieldIndex = findField(factor.fField);
  factor.fValue.SetStringValue(Attribute(elem, "value"));
  if (!loadValue(factor.fValue, factor.fFieldIndex)) return false;
  factor.fNest = Attribute(elem, "nest") == "true";
  return true;
}

bool GNLMParseOutXML::fillRegrParamData(SDOMXMLWrapper* elem, Stats::RegrParamData& param) {
  std::string isIntercept;
  if (!elem->GetAttribute("isIntercept", isIntercept)) return false;
  param.fIsIntercept = isIntercept == "true";
  elem->GetAttribute("name", param.fName);
  if (param.fIsIntercept) return true;
  return FillChildren(*this, &GNLMParseOutXML::fillCovariateData, elem, "Covariate", param.fvCovariates) &&
         FillChildren(*this, &GNLMParseOutXML::fillFactorData, elem, "Factor", param.fvFactors);
}

bool GNLMParseOutXML::fillRepMeasVarData(SDOMXMLWrapper* elem, Stats::RepMeasVarData& repeatMeasVarStruct) {
  const Stats::VariableMapInfo* pVarMapInfo = fpOutputStats->GetVariableMapInfo();
  MIX_ASSERT(pVarMapInfo != 0, "pVarMapInfo != 0");
  if (elem == nullptr || !elem->GetAttribute("field", repeatMeasVarStruct.fField)) return false;
  repeatMeasVarStruct.fRepMeasInd = findField(repeatMeasVarStruct.fField);
  MIX_ASSERT(repeatMeasVarStruct.fRepMeasInd >= 0, "repeatMeasVarStruct.fRepMeasInd >= 0");
  const int var = MappedVariable(*pVarMapInfo, repeatMeasVarStruct.fRepMeasInd);
  repeatMeasVarStruct.fNumCategories = var >= 0 ? pVarMapInfo->fvNumCategories[static_cast<std::size_t>(var)] : 0;
  SDOMXMLWrapper* array = nullptr;
  std::vector<std::string> items;
  if (!elem->GetFirstElement("Array", &array) || !array->GetSimpleArray(items)) return false;
  for (const std::string& item : items) {
    CFStatVariableValue value(item);
    if (!loadValue(value, repeatMeasVarStruct.fRepMeasInd)) return false;
    repeatMeasVarStruct.fValues.push_back(value);
  }
  return true;
}

bool GNLMParseOutXML::fillStringMapCollectionData(SDOMXMLIterator* stringMapCollectIter,
                                                  std::vector<Stats::StringMapData>& list) {
  MIX_ASSERT(stringMapCollectIter != nullptr, "stringMapCollectIter");
  bool result = true;
  SDOMXMLWrapper* mapElm = nullptr;
  while (stringMapCollectIter->Next(&mapElm)) {
    Stats::StringMapData map;
    if (!readInteger(Attribute(mapElm, "mapId"), map.fMapId, -1)) return false;
    SDOMXMLIterator* entries = nullptr;
    result = mapElm->GetElementIterator("MapEntry", &entries);
    SDOMXMLWrapper* entryElm = nullptr;
    // A bad entry is dropped; the last entry looked at decides the result.
    while (entries != nullptr && entries->Next(&entryElm)) {
      Stats::MapEntryData entry;
      entryElm->GetAttribute("name", entry.fName);
      SDOMXMLWrapper* param = nullptr;
      result = entryElm->GetFirstElement("Label/RegressionParameter", &param) &&
               fillRegrParamData(param, entry.fRegrParam);
      if (result) map.fvEntries.push_back(entry);
    }
    list.push_back(map);
  }
  return result;
}

bool GNLMParseOutXML::getNumericArray(SDOMXMLWrapper* elem, std::vector<double>& values) {
  values.clear();
  std::vector<std::string> items;
  if (elem == nullptr || !elem->GetSimpleArray(items)) return false;
  values.resize(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i] == "__MISSING__") {
      values[i] = fSysmis;
    } else if (!readDouble(items[i], values[i], 0.0)) {
      return false;
    }
  }
  return true;
}

bool GNLMParseOutXML::getIntegerArray(SDOMXMLWrapper* elem, std::vector<int>& values) {
  values.clear();
  std::vector<std::string> items;
  if (elem == nullptr || !elem->GetSimpleArray(items)) return false;
  values.resize(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!readInteger(items[i], values[i], 0)) return false;
  }
  return true;
}

std::string GNLMParseOutXML::transcodeToUTF8(const char* text) const {
  std::string out;
  const int errCode = ZORVMBGenericToU8(fpConverter, text != nullptr ? text : "", out);
  MIX_ASSERT(errCode == 0, "errCode == 0");
  return out;
}

std::string GNLMParseOutXML::transcodeFromUTF8(const char* text) const {
  std::string out;
  const int errCode = ZORVMBU8ToGeneric(fpConverter, text != nullptr ? text : "", out);
  MIX_ASSERT(errCode == 0, "errCode == 0");
  return out;
}

bool GNLMParseOutXML::readDouble(const std::string& text, double& value) const {
  return readDouble(text, value, fSysmis);
}

bool GNLMParseOutXML::readDouble(const std::string& text, double& value, double empty) const {
  if (text.empty()) {
    value = empty;
    return true;
  }
  bool ok = true;
  value = String2Double(text, &ok);
  return ok;
}

bool GNLMParseOutXML::readInteger(const std::string& text, int& value, int empty) const {
  if (text.empty()) {
    value = empty;
    return true;
  }
  bool ok = true;
  value = String2Integer(text, &ok);
  return ok;
}

int GNLMParseOutXML::findField(const std::string& name) const {
  if (fpDataSource == nullptr) return -1;
  return fpDataSource->FindVarIndex(name.c_str(), 0);
}

const ZORV_Variable* GNLMParseOutXML::variableOf(int fieldIndex) const {
  if (fpDataSource == nullptr || fieldIndex < 0) return nullptr;
  return fpDataSource->GetVariable(fieldIndex);
}

bool GNLMParseOutXML::loadValue(CFStatVariableValue& value, int fieldIndex) const {
  const ZORV_Variable* variable = variableOf(fieldIndex);
  return variable != nullptr && value.LoadObsValue(*variable, false);
}
