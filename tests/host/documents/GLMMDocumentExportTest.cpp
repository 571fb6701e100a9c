// The model and result documents of fits, read back as the model viewer
// reads them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "host/documents/DocumentTestRecords.h"
#include "host/documents/SDOMXMLIterator.h"
#include "host/documents/SDOMXMLWrapper.h"
#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMXMLWriter.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCApplicInfo4XML.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCGLMM_850::GLMMThetaParamStat;
using MCGLMM_850::GLMMXMLWriter;
using MCMath_850::MCModelEffect;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

std::string DataPath(const std::string& file) { return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file; }

MCModelEffect Effect(const std::vector<int>& set, int nFactors, const std::vector<int>& factors,
                     const std::vector<int>& covariates, const std::vector<int>& written) {
  MCModelEffect effect;
  effect.Setup(nFactors, static_cast<int>(set.size()) - nFactors, &set);
  for (int f : factors) effect.AddNewFactor(f, false);
  for (int c : covariates) effect.AddCovariate(c);
  effect.SetVarsIndicesForTheEffectInSetting(written);
  return effect;
}

std::string Attr(const SDOMXMLWrapper* element, const std::string& name) {
  std::string value = "<absent>";
  if (element != nullptr) element->GetAttribute(name, value);
  return value;
}

double Number(const SDOMXMLWrapper* element, const std::string& name) {
  const std::string text = Attr(element, name);
  if (text.empty()) return MCCommon_850::MCMV::Missing();
  return std::strtod(text.c_str(), nullptr);
}

std::vector<SDOMXMLWrapper*> Children(SDOMXMLWrapper* parent, const std::string& name) {
  std::vector<SDOMXMLWrapper*> out;
  SDOMXMLIterator* it = nullptr;
  if (parent == nullptr || !parent->GetElementIterator(name, &it)) return out;
  SDOMXMLWrapper* element = nullptr;
  while (it->Next(&element)) out.push_back(element);
  return out;
}

SDOMXMLWrapper* First(SDOMXMLWrapper* parent, const std::string& path) {
  SDOMXMLWrapper* element = nullptr;
  if (parent == nullptr || !parent->GetFirstElement(path, &element)) return nullptr;
  return element;
}

SDOMXMLWrapper* WithAttr(SDOMXMLWrapper* parent, const std::string& name, const std::string& attribute,
                         const std::string& value) {
  for (SDOMXMLWrapper* element : Children(parent, name)) {
    if (Attr(element, attribute) == value) return element;
  }
  return nullptr;
}

std::vector<double> Numbers(SDOMXMLWrapper* array) {
  std::vector<double> out;
  std::vector<std::string> items;
  if (array == nullptr || !array->GetSimpleArray(items)) return out;
  for (const std::string& item : items) {
    out.push_back(item == "__MISSING__" ? MCCommon_850::MCMV::Missing() : std::strtod(item.c_str(), nullptr));
  }
  return out;
}

std::vector<std::string> ListValues(SDOMXMLWrapper* structured, const std::string& attributeName) {
  std::vector<std::string> out;
  SDOMXMLWrapper* list = First(WithAttr(structured, "Attribute", "name", attributeName), "ListValue");
  for (SDOMXMLWrapper* value : Children(list, "Value")) out.push_back(Attr(value, "value"));
  return out;
}

// A stream buffer on which every write fails.
class FailingBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type) override { return traits_type::eof(); }
};

class NoRecords : public MCCommon_850::RecordIterator {
 public:
  bool HasRecord() const override { return false; }
  void Next() override {}
  int GetState() const override { return 3; }
  void Rewind() override {}
  const double* Current() const override { return nullptr; }
};

struct Documents {
  std::string fPMML;
  std::string fStatXML;
  SDOMXMLWrapper fPMMLDoc;
  SDOMXMLWrapper fStatDoc;
};

// Exports both documents of a fit and parses them.
void Export(GLMMAlgorithm& algorithm, Documents& docs) {
  MCXML_850::MCApplicInfo4XML info("glmixfit", "1.0 \xCE\xB2", "(c) A & B <test>");
  std::ostringstream pmml;
  std::ostringstream statXML;
  ASSERT_FALSE(algorithm.ExportPMML(pmml, &info).IsError());
  ASSERT_FALSE(algorithm.ExportStatXML(statXML).IsError());
  docs.fPMML = pmml.str();
  docs.fStatXML = statXML.str();
  ASSERT_TRUE(docs.fPMMLDoc.LoadFromString(docs.fPMML)) << docs.fPMMLDoc.GetLastError();
  ASSERT_TRUE(docs.fStatDoc.LoadFromString(docs.fStatXML)) << docs.fStatDoc.GetLastError();
}

// Sleepstudy: Reaction 0, Days 1, Subject 2; Days fixed; intercept and Days
// random by Subject, unstructured.
struct Sleepstudy {
  DocumentTestRecords fRecords;
  GLMMSettings fSettings;
  std::vector<int> fSet{1};
  bool Load() {
    if (!fRecords.Load(DataPath("sleepstudy.csv"), {"Reaction", "Days", "Subject"}, {"Subject"})) return false;
    fSettings.SetSingleDependent(0);
    fSettings.AddCovariate(1);
    fSettings.AddModelEffect(Effect(fSet, 0, {}, {1}, {1}));
    GLMMRandomSpec block;
    block.AddEffect(MCModelEffect());
    block.AddEffect(Effect(fSet, 0, {}, {1}, {1}));
    block.AddSubjectVar(2);
    block.SetCovarianceType(GLMMConst_850::UN);
    block.SetIndex(0);
    fSettings.AddRandomSpec(block);
    return true;
  }
};

// Oats: yield 0, Block 1, Variety 2, nitro 3, all factors; Variety and
// nitro fixed.
struct Oats {
  DocumentTestRecords fRecords;
  GLMMSettings fSettings;
  std::vector<int> fSet{1, 2, 3};
  bool Load() {
    if (!fRecords.Load(DataPath("oats.csv"), {"yield", "Block", "Variety", "nitro"}, {"Block", "Variety", "nitro"})) {
      return false;
    }
    fSettings.SetSingleDependent(0);
    for (int f : {1, 2, 3}) fSettings.AddFactor(f, fRecords.GetVarList().GetVarAt(f)->GetNCategories());
    fSettings.AddModelEffect(Effect(fSet, 3, {2}, {}, {2}));
    fSettings.AddModelEffect(Effect(fSet, 3, {3}, {}, {3}));
    return true;
  }
};

// Orthodont with age repeated within Subject: distance 0, age 1 (a
// factor), Subject 2, Sex 3, Sex fixed. With a copy, age stands a second
// time at 4, recoded for the repeated effect as the procedure does when
// the repeated measure is also a factor of the model.
struct OrthodontRepeated {
  DocumentTestRecords fRecords;
  GLMMSettings fSettings;
  std::vector<int> fSet;
  bool Load(bool copy, GLMMConst_850::CovarType type) {
    std::vector<std::string> columns = {"distance", "age", "Subject", "Sex"};
    if (copy) columns.push_back("age");
    if (!fRecords.Load(DataPath("orthodont.csv"), columns, {"age", "Subject", "Sex"})) return false;
    const int repeatedVar = copy ? 4 : 1;
    fSet = copy ? std::vector<int>{1, 3, 4} : std::vector<int>{1, 3};
    const int nFactors = static_cast<int>(fSet.size());
    fSettings.SetSingleDependent(0);
    fSettings.AddFactor(1, fRecords.GetVarList().GetVarAt(1)->GetNCategories());
    fSettings.AddFactor(3, 2);
    if (copy) {
      MCXML_850::IMCVariable* pCopy = fRecords.GetVarList().GetVarAt(4);
      pCopy->SetName(MCXML_850::IMCVariable::RecodedName("age"));
      pCopy->SetMeasurementLevel(MCMath_850::MCConst::MEASURE_ORDINAL);
      fSettings.AddFactor(4, pCopy->GetNCategories());
      fSettings.AddModelEffect(Effect(fSet, nFactors, {1}, {}, {1}));
    }
    fSettings.AddModelEffect(Effect(fSet, nFactors, {3}, {}, {3}));
    GLMMRandomSpec repeated;
    repeated.Reset(true);
    repeated.AddEffect(Effect(fSet, nFactors, {repeatedVar}, {}, {repeatedVar}));
    repeated.AddSubjectVar(2);
    repeated.SetCovarianceType(type);
    fSettings.SetRepeated(repeated);
    return true;
  }
};

}  // namespace

TEST(GLMMDocumentExport, SleepstudyStatXMLHoldsSettingsEstimatesAndCovariances) {
  Sleepstudy model;
  ASSERT_TRUE(model.Load());
  GLMMAlgorithm algorithm(model.fSettings, model.fRecords.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* root = &docs.fStatDoc;

  EXPECT_EQ(Attr(First(root, "PMMLModel/PredictiveSummary"), "algorithmName"), "GLMM");
  SDOMXMLWrapper* build = First(root, "BuildSettings");
  ASSERT_NE(build, nullptr);
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "TargetField"), "value"), "Reaction");
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "DistributionOfTarget"), "value"), "NORMAL");
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "LinkFunctionType"), "value"), "IDENTITY");
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "Intercept"), "value"), "true");
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "CIn"), "value"), "0.95");
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "ResidualCovarianceType"), "value"), "ID");
  SDOMXMLWrapper* fixedList = First(WithAttr(build, "Parameter", "name", "FixedEffectList"), "ListValue");
  const std::vector<SDOMXMLWrapper*> fixedEffects = Children(fixedList, "StructuredValue");
  ASSERT_EQ(fixedEffects.size(), 1u);
  EXPECT_EQ(ListValues(fixedEffects[0], "Fields"), std::vector<std::string>{"Days"});
  EXPECT_EQ(ListValues(fixedEffects[0], "NestingLevels"), std::vector<std::string>{"0"});
  const std::vector<SDOMXMLWrapper*> blocks =
      Children(First(WithAttr(build, "Parameter", "name", "RandomSpecs"), "ListValue"), "StructuredValue");
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(Attr(WithAttr(blocks[0], "Attribute", "name", "Intercept"), "value"), "true");
  EXPECT_EQ(Attr(WithAttr(blocks[0], "Attribute", "name", "CovarianceType"), "value"), "UNSTRUCTURED");
  EXPECT_EQ(ListValues(First(WithAttr(blocks[0], "Attribute", "name", "SubjectSpec"), "StructuredValue"), "Fields"),
            std::vector<std::string>{"Subject"});
  const std::vector<SDOMXMLWrapper*> randomEffects =
      Children(First(WithAttr(blocks[0], "Attribute", "name", "EffectList"), "ListValue"), "StructuredValue");
  ASSERT_EQ(randomEffects.size(), 1u);
  EXPECT_EQ(ListValues(randomEffects[0], "Fields"), std::vector<std::string>{"Days"});

  SDOMXMLWrapper* diagnostics = First(root, "PMMLModel/ModelDiagnostics");
  ASSERT_NE(diagnostics, nullptr);
  EXPECT_EQ(Number(WithAttr(diagnostics, "Statistic", "name", "minus2LogLikelihood"), "value"),
            pStats->GetLogLikehood());
  EXPECT_EQ(Number(WithAttr(diagnostics, "Statistic", "name", "AICC"), "value"), pStats->GetAICC());
  EXPECT_EQ(Number(WithAttr(diagnostics, "Statistic", "name", "BIC"), "value"), pStats->GetBIC());
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfColsOfFixed"), "value"), "2");
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfColsOfRandom"), "value"), "2");
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfCovParamOfRandom"), "value"), "3");
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfCovParamOfRepeated"), "value"), "1");

  // One effect: the corrected model is its test, which is Type III.
  const MCMath_850::MCTestStats& daysTest = pStats->GetTypeIIITestStats()->GetTestStats(1);
  SDOMXMLWrapper* fixedTest = WithAttr(diagnostics, "ModelTestStats", "description", "fixedEffect");
  EXPECT_EQ(Attr(fixedTest, "testID"), "0");
  EXPECT_EQ(Attr(fixedTest, "testType"), "III");
  EXPECT_EQ(Number(First(fixedTest, "FTest"), "fStatistic"), daysTest.GetWald());
  EXPECT_EQ(Number(First(fixedTest, "FTest"), "df2"), daysTest.GetDF2());
  EXPECT_EQ(Number(First(fixedTest, "FTest"), "sig"), daysTest.GetSig());
  SDOMXMLWrapper* corrected = WithAttr(diagnostics, "ModelTestStats", "description", "correctedModel");
  EXPECT_EQ(Number(First(corrected, "FTest"), "fStatistic"), daysTest.GetWald());

  // Fixed coefficients, number for number.
  SDOMXMLWrapper* summary = First(root, "PMMLModel/TrainingSummary");
  SDOMXMLWrapper* fixed = WithAttr(summary, "ParameterEstimates", "parameterType", "fixed");
  const std::vector<SDOMXMLWrapper*> fixedStats = Children(fixed, "ParameterStats");
  ASSERT_EQ(fixedStats.size(), 2u);
  EXPECT_EQ(Attr(fixedStats[0], "paramLabel"), "Intercept");
  EXPECT_EQ(Attr(First(fixedStats[0], "RegressionParameter"), "isIntercept"), "true");
  EXPECT_EQ(Attr(fixedStats[1], "paramLabel"), "Days");
  EXPECT_EQ(Attr(First(fixedStats[1], "RegressionParameter/Covariate"), "field"), "Days");
  EXPECT_EQ(Attr(First(fixedStats[1], "RegressionParameter/Covariate"), "power"), "1");
  for (std::size_t i = 0; i < 2; ++i) {
    const MCMath_850::BetaParamStat& b = pStats->GetBetaParamStats()[i];
    EXPECT_EQ(Number(fixedStats[i], "estimate"), b.GetEstimate());
    EXPECT_EQ(Number(fixedStats[i], "stdError"), b.GetStdError());
    EXPECT_EQ(Number(fixedStats[i], "tTest"), b.GetTStat());
    EXPECT_EQ(Number(fixedStats[i], "df"), b.GetDF());
    EXPECT_EQ(Number(fixedStats[i], "sig"), b.GetSig());
    EXPECT_EQ(Number(fixedStats[i], "confIntervalLower"), b.GetLowerBound());
    EXPECT_EQ(Number(fixedStats[i], "confIntervalUpper"), b.GetUpperBound());
    EXPECT_EQ(Attr(fixedStats[i], "zTest"), "");
    EXPECT_EQ(Attr(fixedStats[i], "expEstimate"), "");
    EXPECT_EQ(Attr(fixedStats[i], "isRedundant"), "false");
  }

  // Covariance parameters: the residual's scale, then the block's UN.
  const std::vector<GLMMThetaParamStat>& theta = pStats->GetThetaParamStats();
  SDOMXMLWrapper* residual = WithAttr(summary, "ParameterEstimates", "parameterType", "repeated");
  const std::vector<SDOMXMLWrapper*> residualStats = Children(residual, "ParameterStats");
  ASSERT_EQ(residualStats.size(), 1u);
  EXPECT_EQ(Attr(First(residualStats[0], "PrintableList"), "pattern"), "Variance ");
  SDOMXMLWrapper* random = WithAttr(summary, "ParameterEstimates", "parameterType", "random");
  EXPECT_EQ(Attr(random, "block"), "0");
  const std::vector<SDOMXMLWrapper*> randomStats = Children(random, "ParameterStats");
  ASSERT_EQ(randomStats.size(), 3u);
  std::size_t r = 0;
  for (const GLMMThetaParamStat& st : theta) {
    SDOMXMLWrapper* element = st.GetBlockIndex() == 0 ? randomStats[r++] : residualStats[0];
    EXPECT_EQ(Attr(element, "paramName"), st.GetLabel());
    EXPECT_EQ(Number(element, "estimate"), st.GetEstimate());
    EXPECT_EQ(Number(element, "stdError"), st.GetStdError());
    EXPECT_EQ(Number(element, "zTest"), st.GetWaldZ());
    EXPECT_EQ(Number(element, "sig"), st.GetSig());
    EXPECT_EQ(Number(element, "confIntervalLower"), st.GetLowerBound());
    EXPECT_EQ(Number(element, "confIntervalUpper"), st.GetUpperBound());
  }
  // The label of a covariance parameter is a key of the string tables with
  // the numbers of the engine's label as its arguments.
  ASSERT_EQ(theta[0].GetLabel(), "UN(1,1)");
  SDOMXMLWrapper* unLabel = First(randomStats[0], "PrintableList");
  EXPECT_EQ(Attr(unLabel, "pattern"), "UN(^1,^2)");
  EXPECT_EQ(Attr(unLabel, "isKey"), "true");
  const std::vector<SDOMXMLWrapper*> unArgs = Children(unLabel, "PrintableList");
  ASSERT_EQ(unArgs.size(), 2u);
  EXPECT_EQ(Attr(unArgs[0], "pattern"), "1");
  EXPECT_EQ(Attr(unArgs[1], "pattern"), "1");
  EXPECT_EQ(Children(summary, "Message").size(), 0u);

  // The block's covariance matrix, a packed triangle that holds the UN
  // estimates, and its labels through the random map.
  SDOMXMLWrapper* covariances =
      WithAttr(diagnostics, "StructuredData", "description", "randomEffectCovariances");
  ASSERT_NE(covariances, nullptr);
  const std::vector<SDOMXMLWrapper*> labels = Children(First(covariances, "MatrixLabels/RowColLabels"), "Label");
  ASSERT_EQ(labels.size(), 2u);
  SDOMXMLWrapper* label1 = First(labels[1], "PrintableList");
  EXPECT_EQ(Attr(label1, "mapId"), "1");
  SDOMXMLWrapper* randomMap = WithAttr(First(root, "PMMLModel"), "StringMap", "mapId", "1");
  SDOMXMLWrapper* entry = WithAttr(randomMap, "MapEntry", "name", Attr(label1, "pattern"));
  EXPECT_EQ(Attr(First(entry, "Label/RegressionParameter/Covariate"), "field"), "Days");
  SDOMXMLWrapper* matrix = First(covariances, "SegmentData/Matrix");
  EXPECT_EQ(Attr(matrix, "kind"), "symmetric");
  EXPECT_EQ(Attr(matrix, "nbRows"), "2");
  ASSERT_NE(First(covariances, "SegmentData/SegmentInfo"), nullptr);
  const std::vector<double> packed = Numbers(First(matrix, "Array"));
  ASSERT_EQ(packed.size(), 3u);
  std::vector<double> un;
  for (const GLMMThetaParamStat& st : theta) {
    if (st.GetBlockIndex() == 0) un.push_back(st.GetEstimate());
  }
  ASSERT_EQ(un.size(), 3u);
  // Two variances and a covariance; the matrix holds them, in some order.
  std::vector<double> diag = {packed[0], packed[2]};
  for (double d : diag) EXPECT_TRUE(d == un[0] || d == un[1] || d == un[2]) << d;
  EXPECT_TRUE(packed[1] == un[0] || packed[1] == un[1] || packed[1] == un[2]) << packed[1];
  EXPECT_GT(packed[0], 0.0);
  EXPECT_GT(packed[2], 0.0);
}

TEST(GLMMDocumentExport, SleepstudyPMMLHoldsDictionarySchemaAndModel) {
  Sleepstudy model;
  ASSERT_TRUE(model.Load());
  GLMMAlgorithm algorithm(model.fSettings, model.fRecords.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* root = &docs.fPMMLDoc;
  EXPECT_EQ(root->GetName(), "PMML");
  EXPECT_EQ(Attr(First(root, "Header"), "copyright"), "(c) A & B <test>");
  EXPECT_EQ(Attr(First(root, "Header/Application"), "name"), "glmixfit");
  EXPECT_EQ(Attr(First(root, "Header/Application"), "version"), "1.0 \xCE\xB2");
  EXPECT_EQ(First(root, "Header/Timestamp"), nullptr);
  EXPECT_NE(docs.fPMML.find("&amp;"), std::string::npos);

  const std::vector<SDOMXMLWrapper*> fields = Children(First(root, "DataDictionary"), "DataField");
  ASSERT_EQ(fields.size(), 3u);
  EXPECT_EQ(Attr(fields[0], "name"), "Reaction");
  EXPECT_EQ(Attr(fields[0], "optype"), "continuous");
  EXPECT_EQ(Attr(fields[0], "dataType"), "double");
  EXPECT_EQ(Attr(fields[2], "optype"), "categorical");
  const std::vector<SDOMXMLWrapper*> values = Children(fields[2], "Value");
  const MCXML_850::IMCVariable* pSubject = model.fRecords.GetVarList().GetVarAt(2);
  ASSERT_EQ(values.size(), U(pSubject->GetNCategories()));
  EXPECT_EQ(Attr(values[0], "value"), "308");
  EXPECT_EQ(Attr(values[0], "displayValue"), pSubject->GetCategoryTexts()[0]);

  SDOMXMLWrapper* grm = First(root, "GeneralRegressionModel");
  ASSERT_NE(grm, nullptr);
  EXPECT_EQ(Attr(grm, "targetVariableName"), "Reaction");
  EXPECT_EQ(Attr(WithAttr(First(grm, "MiningSchema"), "MiningField", "name", "Reaction"), "usageType"), "target");
  EXPECT_EQ(Attr(WithAttr(First(grm, "MiningSchema"), "MiningField", "name", "Days"), "usageType"), "active");
  const std::vector<SDOMXMLWrapper*> params = Children(First(grm, "ParameterList"), "Parameter");
  ASSERT_EQ(params.size(), 2u);
  EXPECT_EQ(Attr(params[1], "label"), "Days");
  SDOMXMLWrapper* cell = WithAttr(First(grm, "PPMatrix"), "PPCell", "parameterName", Attr(params[1], "name"));
  EXPECT_EQ(Attr(cell, "predictorName"), "Days");
  const std::vector<SDOMXMLWrapper*> betas = Children(First(grm, "ParamMatrix"), "PCell");
  ASSERT_EQ(betas.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(Number(betas[i], "beta"), pStats->GetBetaParamStats()[i].GetEstimate());
  }
  EXPECT_EQ(Number(WithAttr(First(grm, "PCovMatrix"), "PCovCell", "pRow", Attr(params[1], "name")), "value"),
            pStats->GetCovarianceMatrixBeta()->GetElem(0, 0, 1, 0));
  SDOMXMLWrapper* structures = WithAttr(grm, "Extension", "name", "covarianceStructures");
  SDOMXMLWrapper* block = First(structures, "RandomBlock");
  EXPECT_EQ(Attr(block, "covarianceType"), "UNSTRUCTURED");
  EXPECT_EQ(Attr(First(block, "Subject"), "field"), "Subject");
  EXPECT_EQ(Children(block, "CovarianceParameter").size(), 3u);
  EXPECT_EQ(Children(First(structures, "ResidualBlock"), "CovarianceParameter").size(), 1u);
}

TEST(GLMMDocumentExport, OrthodontResidualStructureAndFactorLabels) {
  // distance 0, age 1, Subject 2, Sex 3; residual CS by Subject.
  DocumentTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("orthodont.csv"), {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(3, 2);
  settings.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {}, {1}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {}, {3}));
  settings.AddModelEffect(Effect(set, 1, {3}, {1}, {1, 3}));
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  repeated.AddSubjectVar(2);
  repeated.SetCovarianceType(GLMMConst_850::CS);
  settings.SetRepeated(repeated);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&records, 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* root = &docs.fStatDoc;

  SDOMXMLWrapper* build = First(root, "BuildSettings");
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "ResidualCovarianceType"), "value"), "CS");
  EXPECT_EQ(ListValues(First(WithAttr(build, "Parameter", "name", "ResidualSubjectSpec"), "StructuredValue"), "Fields"),
            std::vector<std::string>{"Subject"});
  const std::vector<SDOMXMLWrapper*> effects =
      Children(First(WithAttr(build, "Parameter", "name", "FixedEffectList"), "ListValue"), "StructuredValue");
  ASSERT_EQ(effects.size(), 3u);
  EXPECT_EQ(ListValues(effects[2], "Fields"), (std::vector<std::string>{"age", "Sex"}));

  SDOMXMLWrapper* diagnostics = First(root, "PMMLModel/ModelDiagnostics");
  EXPECT_EQ(Children(diagnostics, "ModelTestStats").size(), 4u);
  // Three effects: the corrected model is their joint test, three columns
  // beyond the intercept.
  SDOMXMLWrapper* corrected = First(WithAttr(diagnostics, "ModelTestStats", "description", "correctedModel"), "FTest");
  ASSERT_NE(corrected, nullptr);
  ASSERT_NE(pStats->GetCorrectedModelTest(), nullptr);
  EXPECT_EQ(Number(corrected, "df1"), 3.0);
  EXPECT_EQ(Number(corrected, "fStatistic"), pStats->GetCorrectedModelTest()->GetWald());
  EXPECT_GT(Number(corrected, "fStatistic"), 0.0);
  EXPECT_GT(Number(corrected, "df2"), 0.0);
  EXPECT_GE(Number(corrected, "sig"), 0.0);
  EXPECT_LT(Number(corrected, "sig"), 0.05);
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfCommonSubjects"), "value"), "27");

  // The first subject's records: M01's four ages, no repeated effect.
  const std::vector<SDOMXMLWrapper*> structured = Children(diagnostics, "StructuredData");
  ASSERT_EQ(structured.size(), 1u);
  EXPECT_EQ(Attr(structured[0], "description"), "firstSubjectRecordsForDataStructure");
  EXPECT_EQ(Attr(First(structured[0], "Counts"), "totalFreq"), "4");
  const std::vector<SDOMXMLWrapper*> fields = Children(First(structured[0], "SegmentData/SegmentInfo"), "FieldInfo");
  ASSERT_EQ(fields.size(), 1u);
  EXPECT_EQ(Attr(fields[0], "fieldName"), "Subject");
  EXPECT_EQ(Attr(fields[0], "fieldValue"), "M01");
  const std::vector<SDOMXMLWrapper*> groups =
      Children(First(structured[0], "SegmentData/MultivariateData"), "CoordinatesGroup");
  ASSERT_EQ(groups.size(), 1u);
  EXPECT_EQ(Attr(groups[0], "description"), "target");
  EXPECT_EQ(Attr(First(groups[0], "Coordinates"), "field"), "distance");
  EXPECT_EQ(Numbers(First(groups[0], "Coordinates/Array")), (std::vector<double>{26, 25, 29, 31}));

  SDOMXMLWrapper* summary = First(root, "PMMLModel/TrainingSummary");
  const std::vector<SDOMXMLWrapper*> fixedStats =
      Children(WithAttr(summary, "ParameterEstimates", "parameterType", "fixed"), "ParameterStats");
  const auto& beta = pStats->GetBetaParameters();
  ASSERT_EQ(fixedStats.size(), beta.size());
  std::vector<std::string> labels;
  for (SDOMXMLWrapper* element : fixedStats) labels.push_back(Attr(element, "paramLabel"));
  EXPECT_EQ(labels, (std::vector<std::string>{"Intercept", "age", "[Sex=Female]", "[Sex=Male]", "age*[Sex=Female]",
                                              "age*[Sex=Male]"}));
  SDOMXMLWrapper* factor = First(fixedStats[2], "RegressionParameter/Factor");
  EXPECT_EQ(Attr(factor, "field"), "Sex");
  EXPECT_EQ(Attr(factor, "value"), "Female");
  EXPECT_EQ(Attr(factor, "nest"), "false");
  for (std::size_t i = 0; i < beta.size(); ++i) {
    const MCMath_850::BetaParamStat& b = pStats->GetBetaParamStats()[i];
    EXPECT_EQ(Attr(fixedStats[i], "isRedundant"), b.GetRedundant() ? "true" : "false");
    EXPECT_EQ(Number(fixedStats[i], "estimate"), b.GetEstimate());
  }
  const std::vector<SDOMXMLWrapper*> residualStats =
      Children(WithAttr(summary, "ParameterEstimates", "parameterType", "repeated"), "ParameterStats");
  const std::vector<GLMMThetaParamStat>& theta = pStats->GetThetaParamStats();
  ASSERT_EQ(residualStats.size(), theta.size());
  for (std::size_t i = 0; i < theta.size(); ++i) {
    EXPECT_EQ(Number(residualStats[i], "estimate"), theta[i].GetEstimate());
    EXPECT_EQ(Attr(residualStats[i], "paramName"), theta[i].GetLabel());
  }
  EXPECT_EQ(WithAttr(summary, "ParameterEstimates", "parameterType", "random"), nullptr);

  // Lists without members are left out: a reader takes an empty list for a
  // broken one.
  EXPECT_EQ(WithAttr(build, "Parameter", "name", "RandomSpecs"), nullptr);
  EXPECT_EQ(WithAttr(build, "Parameter", "name", "EMMEANS"), nullptr);
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "pAdjustment"), "value"), "LSD");
  // Each coefficient but the intercept names the position of its effect.
  EXPECT_EQ(First(fixedStats[0], "Statistic"), nullptr);
  const std::vector<std::string> effectOf = {"0", "1", "1", "2", "2"};
  for (std::size_t i = 1; i < fixedStats.size(); ++i) {
    SDOMXMLWrapper* statistic = First(fixedStats[i], "Statistic");
    EXPECT_EQ(Attr(statistic, "name"), "fixedEffectIndex");
    EXPECT_EQ(Attr(statistic, "value"), effectOf[i - 1]) << i;
    EXPECT_EQ(Attr(statistic, "value"), std::to_string(beta[i].GetEffectIndex()));
  }
}

// A repeated measure that is also a factor of the model is a second,
// recoded variable of the record under a name of its own; the documents
// know it by its field's name, and describe the field once.
TEST(GLMMDocumentExport, ARepeatedMeasureGoesUnderItsFieldsName) {
  OrthodontRepeated model;
  ASSERT_TRUE(model.Load(true, GLMMConst_850::AR1));
  GLMMAlgorithm algorithm(model.fSettings, model.fRecords.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());
  Documents docs;
  Export(algorithm, docs);
  EXPECT_EQ(docs.fPMML.find("@#$"), std::string::npos);
  EXPECT_EQ(docs.fStatXML.find("@#$"), std::string::npos);

  SDOMXMLWrapper* dictionary = First(&docs.fPMMLDoc, "DataDictionary");
  const std::vector<SDOMXMLWrapper*> fields = Children(dictionary, "DataField");
  std::vector<std::string> names;
  for (SDOMXMLWrapper* field : fields) names.push_back(Attr(field, "name"));
  EXPECT_EQ(names, (std::vector<std::string>{"distance", "age", "Subject", "Sex"}));
  EXPECT_EQ(Attr(dictionary, "numberOfFields"), "4");
  EXPECT_EQ(Children(First(&docs.fPMMLDoc, "GeneralRegressionModel/MiningSchema"), "MiningField").size(), 4u);

  SDOMXMLWrapper* structure = WithAttr(First(&docs.fStatDoc, "PMMLModel/ModelDiagnostics"), "StructuredData",
                                       "description", "firstSubjectRecordsForDataStructure");
  SDOMXMLWrapper* measures =
      WithAttr(First(structure, "SegmentData/MultivariateData"), "CoordinatesGroup", "description", "repeatedMeasures");
  ASSERT_NE(measures, nullptr);
  EXPECT_EQ(Attr(First(measures, "Coordinates"), "field"), "age");
  std::vector<std::string> ages;
  ASSERT_TRUE(First(measures, "Coordinates/Array")->GetSimpleArray(ages));
  EXPECT_EQ(ages, (std::vector<std::string>{"8", "10", "12", "14"}));
}

// The overall mean is the grand mean: its group carries no request number,
// the build settings list only the requests of factors, and the grand mean
// statistics are the request's.
TEST(GLMMDocumentExport, AnOverallRequestIsTheGrandMean) {
  Oats model;
  ASSERT_TRUE(model.Load());
  MCMath_850::MCEmmeansSpec overall;
  MCMath_850::MCEmmeansSpec variety;
  variety.AddFactor(2, 0);
  model.fSettings.SetEmmeans({overall, variety});
  GLMMAlgorithm algorithm(model.fSettings, model.fRecords.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* build = First(&docs.fStatDoc, "BuildSettings");
  const std::vector<SDOMXMLWrapper*> requests =
      Children(First(WithAttr(build, "Parameter", "name", "EMMEANS"), "ListValue"), "StructuredValue");
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(ListValues(First(WithAttr(requests[0], "Attribute", "name", "Factors"), "StructuredValue"), "Fields"),
            std::vector<std::string>{"Variety"});

  SDOMXMLWrapper* diagnostics = First(&docs.fStatDoc, "PMMLModel/ModelDiagnostics");
  std::vector<SDOMXMLWrapper*> custom;
  for (SDOMXMLWrapper* group : Children(diagnostics, "DataGroup")) {
    if (Attr(group, "description") == "customEmmeans") custom.push_back(group);
  }
  ASSERT_EQ(custom.size(), 2u);
  EXPECT_EQ(WithAttr(custom[0], "Statistic", "name", "EMMEANSIndex"), nullptr);
  SDOMXMLWrapper* estimates = WithAttr(custom[0], "MultivariateData", "description", "estimates");
  EXPECT_EQ(First(estimates, "CoordinatesGroup"), nullptr);
  const std::vector<double> mean = Numbers(First(WithAttr(estimates, "Coordinates", "statistic", "mean"), "Array"));
  ASSERT_EQ(mean.size(), 1u);
  EXPECT_EQ(Attr(WithAttr(custom[1], "Statistic", "name", "EMMEANSIndex"), "value"), "0");
  const MCGLMM_850::GLMMEmmeansStat& stat = pStats->GetEmmeansStats()[0];
  EXPECT_EQ(mean[0], stat.GetMeans()[0].GetMean());
  EXPECT_EQ(Number(WithAttr(diagnostics, "Statistic", "name", "grandMean"), "value"), stat.GetMeans()[0].GetMean());
  EXPECT_EQ(Number(WithAttr(diagnostics, "Statistic", "name", "grandMeanStdErr"), "value"),
            stat.GetMeans()[0].GetStdError());
}

TEST(GLMMDocumentExport, OatsVarianceComponentsMarginalMeansAndMessages) {
  // yield 0, Block 1, Variety 2, nitro 3; Block and Block*Variety random.
  Oats model;
  ASSERT_TRUE(model.Load());
  DocumentTestRecords& records = model.fRecords;
  GLMMSettings& settings = model.fSettings;
  const std::vector<int>& set = model.fSet;
  GLMMRandomSpec block;
  block.AddEffect(Effect(set, 3, {1}, {}, {1}));
  block.AddEffect(Effect(set, 3, {1, 2}, {}, {1, 2}));
  block.SetCovarianceType(GLMMConst_850::VC);
  block.SetIndex(0);
  settings.AddRandomSpec(block);
  MCMath_850::MCEmmeansSpec request;
  request.AddFactor(2, 0);
  request.AddCompareFactor(2);
  request.SetContrastType(MCMath_850::MCConst::CONTRAST_PAIRWISE);
  settings.SetEmmeans({request});
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&records, 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* root = &docs.fStatDoc;

  SDOMXMLWrapper* build = First(root, "BuildSettings");
  const std::vector<SDOMXMLWrapper*> blocks =
      Children(First(WithAttr(build, "Parameter", "name", "RandomSpecs"), "ListValue"), "StructuredValue");
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(Attr(WithAttr(blocks[0], "Attribute", "name", "Intercept"), "value"), "false");
  EXPECT_EQ(Attr(WithAttr(blocks[0], "Attribute", "name", "CovarianceType"), "value"), "VC");
  const std::vector<SDOMXMLWrapper*> requests =
      Children(First(WithAttr(build, "Parameter", "name", "EMMEANS"), "ListValue"), "StructuredValue");
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(Attr(WithAttr(requests[0], "Attribute", "name", "CompareFactor"), "value"), "Variety");
  EXPECT_EQ(Attr(WithAttr(requests[0], "Attribute", "name", "ContrastType"), "value"), "Pairwise");
  EXPECT_EQ(Attr(WithAttr(build, "Parameter", "name", "pAdjustment"), "value"), "LSD");

  // Variance components name their effect by its number in the block.
  SDOMXMLWrapper* summary = First(root, "PMMLModel/TrainingSummary");
  const std::vector<SDOMXMLWrapper*> randomStats =
      Children(WithAttr(summary, "ParameterEstimates", "parameterType", "random"), "ParameterStats");
  ASSERT_EQ(randomStats.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    SDOMXMLWrapper* list = First(randomStats[i], "PrintableList");
    EXPECT_EQ(Attr(list, "pattern"), "VarOfEffect");
    EXPECT_EQ(Attr(First(list, "PrintableList"), "pattern"), std::to_string(i));
  }
  EXPECT_EQ(Attr(randomStats[1], "paramLabel"), "Var(Block * Variety)");
  bool c26 = false;
  for (SDOMXMLWrapper* message : Children(summary, "Message")) {
    c26 = c26 || Attr(First(message, "PrintableList"), "pattern") == "kGLMM_C26";
  }
  EXPECT_TRUE(c26);

  // The block's covariance matrix is diagonal: 6 Block and 18 Block*Variety
  // columns with the two variances.
  SDOMXMLWrapper* diagnostics = First(root, "PMMLModel/ModelDiagnostics");
  SDOMXMLWrapper* matrix =
      First(WithAttr(diagnostics, "StructuredData", "description", "randomEffectCovariances"), "SegmentData/Matrix");
  const std::vector<double> packed = Numbers(First(matrix, "Array"));
  ASSERT_EQ(packed.size(), 24u * 25u / 2u);
  const std::vector<GLMMThetaParamStat>& theta = pStats->GetThetaParamStats();
  EXPECT_EQ(packed[0], theta[0].GetEstimate());
  EXPECT_EQ(packed[23 * 24 / 2 + 23], theta[1].GetEstimate());
  EXPECT_EQ(packed[1], 0.0);

  // The request's means and pairwise contrasts.
  const MCGLMM_850::GLMMEmmeansStat& stat = pStats->GetEmmeansStats()[0];
  SDOMXMLWrapper* custom = WithAttr(diagnostics, "DataGroup", "description", "customEmmeans");
  ASSERT_NE(custom, nullptr);
  EXPECT_EQ(Attr(WithAttr(custom, "Statistic", "name", "EMMEANSIndex"), "value"), "0");
  SDOMXMLWrapper* estimates = WithAttr(custom, "MultivariateData", "description", "estimates");
  std::vector<std::string> varieties;
  ASSERT_TRUE(First(estimates, "CoordinatesGroup/Coordinates/Array")->GetSimpleArray(varieties));
  EXPECT_EQ(varieties, (std::vector<std::string>{"Golden Rain", "Marvellous", "Victory"}));
  EXPECT_EQ(Attr(First(estimates, "CoordinatesGroup/Coordinates"), "field"), "Variety");
  const std::vector<double> means = Numbers(First(WithAttr(estimates, "Coordinates", "statistic", "mean"), "Array"));
  ASSERT_EQ(means.size(), stat.GetMeans().size());
  for (std::size_t i = 0; i < means.size(); ++i) EXPECT_EQ(means[i], stat.GetMeans()[i].GetMean());
  SDOMXMLWrapper* contrasts = WithAttr(custom, "MultivariateData", "description", "contrasts");
  SDOMXMLWrapper* group = First(contrasts, "CoordinatesGroup");
  EXPECT_EQ(Attr(group, "description"), "pairwiseContrast");
  EXPECT_EQ(Children(group, "Coordinates").size(), 2u);
  const std::vector<double> estimate =
      Numbers(First(WithAttr(contrasts, "Coordinates", "statistic", "contrastEstimate"), "Array"));
  ASSERT_EQ(estimate.size(), stat.GetContrasts().size());
  for (std::size_t i = 0; i < estimate.size(); ++i) EXPECT_EQ(estimate[i], stat.GetContrasts()[i].GetEstimate());
  const std::vector<SDOMXMLWrapper*> tests = Children(custom, "ModelTestStats");
  ASSERT_EQ(tests.size(), stat.GetTests().size());
  EXPECT_EQ(Number(First(tests[0], "FTest"), "fStatistic"), stat.GetTests()[0].GetF());
  // The component's own tables of the fixed effects.
  EXPECT_FALSE(Children(diagnostics, "DataGroup").size() < 2u);

  // No subjects: one common subject and no first subject's records; two
  // effects, so the corrected model is their joint test over 2 + 3 columns.
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfCommonSubjects"), "value"), "1");
  EXPECT_EQ(WithAttr(diagnostics, "StructuredData", "description", "firstSubjectRecordsForDataStructure"), nullptr);
  SDOMXMLWrapper* corrected = First(WithAttr(diagnostics, "ModelTestStats", "description", "correctedModel"), "FTest");
  ASSERT_NE(corrected, nullptr);
  EXPECT_EQ(Number(corrected, "df1"), 5.0);
  EXPECT_GT(Number(corrected, "df2"), 0.0);
  EXPECT_LT(Number(corrected, "sig"), 0.05);
  // 72 plots: eight bins.
  SDOMXMLWrapper* target = WithAttr(diagnostics, "UnivariateData", "description", "TargetDistribution");
  EXPECT_EQ(Attr(First(target, "Counts"), "totalFreq"), "72");
  EXPECT_EQ(Numbers(First(WithAttr(target, "Coordinates", "feature", "observed"), "Array")).size(), 8u);
}

TEST(GLMMDocumentExport, SleepstudyDataStructureDistributionAndPredictions) {
  Sleepstudy model;
  ASSERT_TRUE(model.Load());
  GLMMAlgorithm algorithm(model.fSettings, model.fRecords.GetVarList());
  algorithm.SetCompScoreTypes({GLMMConst_850::SCORE_PREDICTED});
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* diagnostics = First(&docs.fStatDoc, "PMMLModel/ModelDiagnostics");
  ASSERT_NE(diagnostics, nullptr);
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfCommonSubjects"), "value"), "18");

  std::vector<double> reaction;
  std::vector<double> predicted;
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  for (model.fRecords.Rewind(); model.fRecords.HasRecord(); model.fRecords.Next()) {
    reaction.push_back(model.fRecords.Current()[0]);
    ASSERT_FALSE(algorithm.ScoreRecord(model.fRecords.Current(), scores, details).IsError());
    predicted.push_back(scores[0]);
  }
  ASSERT_EQ(reaction.size(), 180u);

  // Subject 308's ten days.
  SDOMXMLWrapper* structure =
      WithAttr(diagnostics, "StructuredData", "description", "firstSubjectRecordsForDataStructure");
  ASSERT_NE(structure, nullptr);
  EXPECT_EQ(Attr(First(structure, "Counts"), "totalFreq"), "10");
  EXPECT_EQ(Attr(First(structure, "SegmentData/SegmentInfo/FieldInfo"), "fieldName"), "Subject");
  EXPECT_EQ(Attr(First(structure, "SegmentData/SegmentInfo/FieldInfo"), "fieldValue"), "308");
  SDOMXMLWrapper* target = WithAttr(First(structure, "SegmentData/MultivariateData"), "CoordinatesGroup",
                                    "description", "target");
  EXPECT_EQ(Attr(First(target, "Coordinates"), "field"), "Reaction");
  EXPECT_EQ(Numbers(First(target, "Coordinates/Array")),
            std::vector<double>(reaction.begin(), reaction.begin() + 10));

  // The histogram: ceil(log2 180) + 1 = 9 equal bins over the range.
  SDOMXMLWrapper* distribution = WithAttr(diagnostics, "UnivariateData", "description", "TargetDistribution");
  ASSERT_NE(distribution, nullptr);
  EXPECT_EQ(Attr(First(distribution, "Counts"), "totalFreq"), "180");
  double sum = 0.0;
  for (double y : reaction) sum += y;
  EXPECT_NEAR(Number(WithAttr(distribution, "Statistic", "name", "mean"), "value"), sum / 180.0, 1e-9);
  EXPECT_GT(Number(WithAttr(distribution, "Statistic", "name", "stdDeviation"), "value"), 0.0);
  const std::vector<double> bins = Numbers(First(WithAttr(distribution, "Coordinates", "feature", "observed"), "Array"));
  const std::vector<double> counts =
      Numbers(First(WithAttr(distribution, "Coordinates", "feature", "frequency"), "Array"));
  ASSERT_EQ(bins.size(), 9u);
  ASSERT_EQ(counts.size(), 9u);
  double total = 0.0;
  for (double c : counts) total += c;
  EXPECT_EQ(total, 180.0);
  const double lo = *std::min_element(reaction.begin(), reaction.end());
  const double hi = *std::max_element(reaction.begin(), reaction.end());
  EXPECT_NEAR(bins[0], lo + (hi - lo) / 18.0, 1e-9);
  EXPECT_NEAR(bins[8], hi - (hi - lo) / 18.0, 1e-9);

  // Few records: one point per record, predictions with the random effects.
  SDOMXMLWrapper* points = WithAttr(diagnostics, "BivariateData", "description", "observedByPredicted");
  ASSERT_NE(points, nullptr);
  EXPECT_EQ(Attr(First(points, "Counts"), "totalFreq"), "180");
  EXPECT_EQ(Numbers(First(WithAttr(points, "Coordinates", "feature", "observed"), "Array")), reaction);
  EXPECT_EQ(Numbers(First(WithAttr(points, "Coordinates", "feature", "frequency"), "Array")),
            std::vector<double>(180, 1.0));
  const std::vector<double> fitted = Numbers(First(WithAttr(points, "Coordinates", "feature", "statistic"), "Array"));
  ASSERT_EQ(fitted.size(), 180u);
  for (std::size_t i = 0; i < fitted.size(); ++i) EXPECT_NEAR(fitted[i], predicted[i], 1e-6) << i;
}

TEST(GLMMDocumentExport, RepeatedEffectFieldsAreTheFirstSubjectsMeasures) {
  // distance 0, age 1 (a factor), Subject 2, Sex 3; Sex fixed, age repeated
  // within Subject with compound symmetry.
  OrthodontRepeated model;
  ASSERT_TRUE(model.Load(false, GLMMConst_850::CS));
  GLMMAlgorithm algorithm(model.fSettings, model.fRecords.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* structure = WithAttr(First(&docs.fStatDoc, "PMMLModel/ModelDiagnostics"), "StructuredData",
                                       "description", "firstSubjectRecordsForDataStructure");
  ASSERT_NE(structure, nullptr);
  SDOMXMLWrapper* data = First(structure, "SegmentData/MultivariateData");
  SDOMXMLWrapper* measures = WithAttr(data, "CoordinatesGroup", "description", "repeatedMeasures");
  ASSERT_NE(measures, nullptr);
  EXPECT_EQ(Attr(First(measures, "Coordinates"), "field"), "age");
  std::vector<std::string> ages;
  ASSERT_TRUE(First(measures, "Coordinates/Array")->GetSimpleArray(ages));
  EXPECT_EQ(ages, (std::vector<std::string>{"8", "10", "12", "14"}));
  EXPECT_NE(WithAttr(data, "CoordinatesGroup", "description", "target"), nullptr);
}

TEST(GLMMDocumentExport, ManyRecordsGivePredictionsOnAGrid) {
  // 3000 records in 30 groups: y = x + group effect + noise.
  const std::string path = ::testing::TempDir() + "glmm_document_many.csv";
  {
    std::ofstream csv(path);
    csv << "\"y\",\"x\",\"g\"\n";
    unsigned state = 12345u;
    auto uniform = [&state]() {
      state = state * 1103515245u + 12345u;
      return static_cast<double>((state >> 8) % 10000u) / 10000.0;
    };
    for (int i = 0; i < 3000; ++i) {
      const int g = i % 30;
      const double x = 10.0 * uniform();
      csv << (x + 0.1 * g + uniform() - 0.5) << "," << x << ",\"G" << g << "\"\n";
    }
  }
  DocumentTestRecords records;
  ASSERT_TRUE(records.Load(path, {"y", "x", "g"}, {"g"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddCovariate(1);
  const std::vector<int> set = {1};
  settings.AddModelEffect(Effect(set, 0, {}, {1}, {1}));
  GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddSubjectVar(2);
  block.SetIndex(0);
  settings.AddRandomSpec(block);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&records, 0).IsError());
  Documents docs;
  Export(algorithm, docs);
  std::remove(path.c_str());
  SDOMXMLWrapper* diagnostics = First(&docs.fStatDoc, "PMMLModel/ModelDiagnostics");
  SDOMXMLWrapper* points = WithAttr(diagnostics, "BivariateData", "description", "observedByPredicted");
  ASSERT_NE(points, nullptr);
  EXPECT_EQ(Attr(First(points, "Counts"), "totalFreq"), "3000");
  const std::vector<double> observed = Numbers(First(WithAttr(points, "Coordinates", "feature", "observed"), "Array"));
  const std::vector<double> fitted = Numbers(First(WithAttr(points, "Coordinates", "feature", "statistic"), "Array"));
  const std::vector<double> frequency =
      Numbers(First(WithAttr(points, "Coordinates", "feature", "frequency"), "Array"));
  ASSERT_EQ(observed.size(), fitted.size());
  ASSERT_EQ(observed.size(), frequency.size());
  EXPECT_LE(observed.size(), 2500u);
  EXPECT_LT(observed.size(), 3000u);
  double total = 0.0;
  for (std::size_t i = 0; i < observed.size(); ++i) {
    total += frequency[i];
    EXPECT_GE(frequency[i], 1.0);
    // A good fit: each cell's mean prediction lies near its mean observation.
    EXPECT_NEAR(observed[i], fitted[i], 1.0);
  }
  EXPECT_EQ(total, 3000.0);
  EXPECT_EQ(Attr(WithAttr(diagnostics, "Statistic", "name", "numOfCommonSubjects"), "value"), "30");
  // One fixed effect: the corrected model is its test.
  EXPECT_NE(First(WithAttr(diagnostics, "ModelTestStats", "description", "correctedModel"), "FTest"), nullptr);
}

TEST(GLMMDocumentExport, OddLabelsAndValuesAreEscaped) {
  Sleepstudy model;
  ASSERT_TRUE(model.Load());
  MCXML_850::MCVarList& varList = model.fRecords.GetVarList();
  varList.GetVarAt(0)->SetLabel("Reaction <ms> & \"time\"\tZ\xC3\xBCrich\x01\xFF");
  MCXML_850::IMCVariable* pSubject = varList.GetVarAt(2);
  std::vector<double> values = pSubject->GetCategoryValues();
  std::vector<std::string> texts = pSubject->GetCategoryTexts();
  texts[0] = "a \"b\" \\ <c>";
  pSubject->ClearCategories();
  for (std::size_t i = 0; i < values.size(); ++i) pSubject->AddCategory(values[i], texts[i]);
  pSubject->SetStringWidth(12);
  GLMMAlgorithm algorithm(model.fSettings, varList);
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());
  Documents docs;
  Export(algorithm, docs);
  SDOMXMLWrapper* field = WithAttr(First(&docs.fPMMLDoc, "DataDictionary"), "DataField", "name", "Reaction");
  EXPECT_EQ(Attr(field, "displayName"), "Reaction <ms> & \"time\"\tZ\xC3\xBCrich \xEF\xBF\xBD");
  SDOMXMLWrapper* subject = WithAttr(First(&docs.fPMMLDoc, "DataDictionary"), "DataField", "name", "Subject");
  EXPECT_EQ(Attr(subject, "dataType"), "string");
  EXPECT_EQ(Attr(First(subject, "Value"), "value"), "a \"b\" \\ <c>");
}

TEST(GLMMDocumentExport, XMLTextHelpers) {
  EXPECT_EQ(GLMMXMLWriter::NumberText(0.1), "0.1");
  EXPECT_EQ(GLMMXMLWriter::NumberText(1.0 / 3.0), "0.3333333333333333");
  EXPECT_EQ(std::strtod(GLMMXMLWriter::NumberText(1.0 / 3.0).c_str(), nullptr), 1.0 / 3.0);
  EXPECT_EQ(GLMMXMLWriter::NumberText(MCCommon_850::MCMV::Missing()), "");
  EXPECT_EQ(GLMMXMLWriter::NumberText(1.0 / 0.0), "");
  EXPECT_EQ(GLMMXMLWriter::ArrayItem("a b"), "\"a b\"");
  EXPECT_EQ(GLMMXMLWriter::ArrayItem(""), "\"\"");
  EXPECT_EQ(GLMMXMLWriter::ArrayItem("x\\\"y"), "\"x\\\\\\\"y\"");

  std::ostringstream os;
  GLMMXMLWriter xml(os);
  xml.Open("a");
  xml.Array({"1", "two words", "", "q\"uote"}, "string");
  xml.Finish();
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(os.str())) << os.str();
  std::vector<std::string> items;
  ASSERT_TRUE(First(&doc, "Array")->GetSimpleArray(items));
  EXPECT_EQ(items, (std::vector<std::string>{"1", "two words", "", "q\"uote"}));
}

TEST(GLMMDocumentExport, FailingStreamsAndFailedFitsGiveErrors) {
  Sleepstudy model;
  ASSERT_TRUE(model.Load());
  GLMMAlgorithm algorithm(model.fSettings, model.fRecords.GetVarList());
  std::ostringstream before;
  EXPECT_EQ(algorithm.ExportStatXML(before).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR);
  EXPECT_EQ(algorithm.ExportPMML(before, nullptr).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR);
  EXPECT_TRUE(before.str().empty());
  ASSERT_FALSE(algorithm.Execute(&model.fRecords, 0).IsError());

  std::ostringstream bad;
  bad.setstate(std::ios_base::badbit);
  EXPECT_EQ(algorithm.ExportPMML(bad, nullptr).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR);
  EXPECT_EQ(algorithm.ExportStatXML(bad).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR);

  // A stream that throws when a write fails: the failure is caught.
  FailingBuffer buffer;
  std::ostream throwing(&buffer);
  throwing.exceptions(std::ios_base::badbit | std::ios_base::failbit);
  EXPECT_NO_THROW(
      EXPECT_EQ(algorithm.ExportPMML(throwing, nullptr).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR));
  throwing.exceptions(std::ios_base::goodbit);
  throwing.clear();
  throwing.exceptions(std::ios_base::badbit | std::ios_base::failbit);
  EXPECT_NO_THROW(EXPECT_EQ(algorithm.ExportStatXML(throwing).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR));
  // Without exceptions the failure shows in the status.
  throwing.exceptions(std::ios_base::goodbit);
  throwing.clear();
  EXPECT_EQ(algorithm.ExportStatXML(throwing).GetErrorCode(), MCCommon_850::MC_OUTPUT_FILE_ERROR);

  // A null info writes an empty application.
  std::ostringstream pmml;
  ASSERT_FALSE(algorithm.ExportPMML(pmml, nullptr).IsError());
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(pmml.str()));
  EXPECT_EQ(Attr(First(&doc, "Header/Application"), "name"), "");

  // A failed fit answers with its error.
  GLMMSettings settings = model.fSettings;
  GLMMAlgorithm failing(settings, model.fRecords.GetVarList());
  NoRecords none;
  const MCCommon_850::MCStatus status = failing.Execute(&none, 0);
  ASSERT_TRUE(status.IsError());
  std::ostringstream afterFailure;
  EXPECT_EQ(failing.ExportStatXML(afterFailure).GetErrorCode(), status.GetErrorCode());
  EXPECT_EQ(failing.ExportPMML(afterFailure, nullptr).GetErrorCode(), status.GetErrorCode());
  EXPECT_TRUE(afterFailure.str().empty());
}
