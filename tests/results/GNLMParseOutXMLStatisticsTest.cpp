// The reader's statistics blocks, on documents written for each case.
#include <gtest/gtest.h>

#include <climits>

#include "results/ResultsTestSupport.h"

using namespace results_test;
using Stats = GNLMOutputStats;

namespace {

class ParseStatistics : public ReaderTest {};

std::string Stat(const std::string& name, const std::string& value) {
  return "<Statistic name=\"" + name + "\" value=\"" + value + "\"/>";
}

std::string Array(const std::string& items, int n) {
  return "<Array n=\"" + std::to_string(n) + "\" type=\"real\">" + items + "</Array>";
}

std::string Matrix(const std::string& attributes, const std::string& items, int n,
                   const std::string& description = "classificationTable") {
  return "<Matrix description=\"" + description + "\" " + attributes + ">" + Array(items, n) + "</Matrix>";
}

std::string RandomSet(const std::string& block) {
  return "<ParameterEstimates parameterType=\"random\" block=\"" + block + "\">" +
         StatXMLPieces::FixedStats("Variance", "<PrintableList pattern=\"VarOfEffect\" isKey=\"true\">"
                                               "<PrintableList pattern=\"0\"/></PrintableList>") +
         "</ParameterEstimates>";
}

std::string Message(const std::string& key, const std::string& values = "") {
  return "<Message><PrintableList pattern=\"" + key + "\" isKey=\"true\">" + values + "</PrintableList></Message>";
}

// A custom means group with one mean and what else it is given.
std::string MeansGroup(const std::string& more) {
  return "<DataGroup description=\"customEmmeans\"><MultivariateData description=\"estimates\">"
         "<Coordinates statistic=\"mean\">" + Array("3.5", 1) + "</Coordinates></MultivariateData>" + more +
         "</DataGroup>";
}

std::string Value(const std::string& value) {
  return "<PrintableValue storage=\"string\" value=\"" + value + "\"/>";
}

}  // namespace

TEST_F(ParseStatistics, DiagnosticStatistics) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "101.5") + Stat("BIC", "") + Stat("minus2LogLikelihood", "95.25") +
                        Stat("classificationAccuracy", "0.75") + Stat("numOfCovParamOfRepeated", "1") +
                        Stat("numOfCovParamOfRandom", "3") + Stat("numOfColsOfFixed", "") +
                        Stat("numOfColsOfRandom", "2") + Stat("grandMean", "3.5") + Stat("somethingElse", "x");
  ASSERT_TRUE(Read(pieces));
  const Stats::ModelDiagnosticsData* diag = fStats.GetModelDiagnostics();
  ASSERT_NE(diag, nullptr);
  EXPECT_EQ(diag->fAICC, 101.5);
  EXPECT_EQ(diag->fBIC, kSysmis);
  EXPECT_EQ(diag->fMinus2LogLikelihood, 95.25);
  EXPECT_EQ(diag->fClassificationAccuracy, 0.75);
  EXPECT_EQ(diag->fNumOfCovParamOfRepeated, 1);
  EXPECT_EQ(diag->fNumOfCovParamOfRandom, 3);
  // An empty count stores the most negative int, not -1.
  EXPECT_EQ(diag->fNumOfColsOfFixed, INT_MIN);
  EXPECT_EQ(diag->fNumOfColsOfRandom, 2);
  EXPECT_EQ(diag->fNumOfCommonSubjects, -1);
  EXPECT_EQ(diag->fGrandMean, 3.5);
  EXPECT_EQ(diag->fGrandMeanStdErr, kSysmis);
  // Without tests the tests block stays absent.
  EXPECT_EQ(fStats.GetEffectTest(), nullptr);
}

TEST_F(ParseStatistics, DiagnosticsWithoutStatisticsFail) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = "";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  ASSERT_NE(fStats.GetModelDiagnostics(), nullptr);
  EXPECT_EQ(fStats.GetModelDiagnostics()->fAICC, kSysmis);
}

TEST_F(ParseStatistics, AStatisticWithoutAValueFails) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = "<Statistic name=\"AICC\"/>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseStatistics, TheFirstCompleteTargetDistributionCounts) {
  StatXMLPieces pieces;
  pieces.fDiagnostics =
      Stat("AICC", "1") +
      "<UnivariateData description=\"other\"><Counts totalFreq=\"99\"/></UnivariateData>"
      "<UnivariateData description=\"TargetDistribution\"><Counts totalFreq=\"24\"/>" +
      Stat("mean", "12.5") + Stat("stdDeviation", "2.5") + Stat("shape", "") + Stat("rate", "0.25") +
      "<Coordinates feature=\"observed\">" + Array("10 15", 2) + "</Coordinates><Coordinates feature=\"frequency\">" +
      Array("20 4", 2) + "</Coordinates><Coordinates feature=\"other\">" + Array("x", 1) +
      "</Coordinates></UnivariateData>"
      "<UnivariateData description=\"TargetDistribution\"><Counts totalFreq=\"7\"/></UnivariateData>";
  ASSERT_TRUE(Read(pieces));
  const Stats::TargetDistData& target = fStats.GetModelDiagnostics()->fTargetDist;
  EXPECT_EQ(target.fDescription, "TargetDistribution");
  EXPECT_EQ(target.fTotalFreq, 24);
  EXPECT_EQ(target.fMean, 12.5);
  EXPECT_EQ(target.fStdDeviation, 2.5);
  // Here an empty statistic is 0.
  EXPECT_EQ(target.fShape, 0.0);
  EXPECT_EQ(target.fRate, 0.25);
  EXPECT_EQ(target.fvObserved, (std::vector<double>{10, 15}));
  EXPECT_EQ(target.fvFrequency, (std::vector<double>{20, 4}));
}

// "__MISSING__" takes part in the range as the lowest number.
TEST_F(ParseStatistics, AMissingPredictionIsTheLowestOfTheRange) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") +
                        "<BivariateData description=\"observedByPredicted\"><Counts totalFreq=\"3\"/>"
                        "<Coordinates feature=\"observed\">" + Array("1 5 3", 3) +
                        "</Coordinates><Coordinates feature=\"statistic\">" + Array("2 __MISSING__ 6", 3) +
                        "</Coordinates><Coordinates feature=\"frequency\">" + Array("1 1 1", 3) +
                        "</Coordinates></BivariateData>";
  ASSERT_TRUE(Read(pieces));
  const Stats::PredByObservData& points = fStats.GetModelDiagnostics()->fPredByObserv;
  EXPECT_EQ(points.fTotalFreq, 3);
  EXPECT_EQ(points.fvPredicted, (std::vector<double>{2, kSysmis, 6}));
  EXPECT_EQ(points.fMinValue, kSysmis);
  EXPECT_EQ(points.fMaxValue, 6.0);
}

TEST_F(ParseStatistics, PredictedByObservedWithoutItsArraysFails) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + "<BivariateData description=\"observedByPredicted\"/>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseStatistics, Tests) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") +
                        "<ModelTestStats description=\"correctedModel\" testType=\"III\"/>"
                        "<ModelTestStats description=\"fixedEffect\" testID=\"0\" testType=\"III\">"
                        "<FTest fStatistic=\"4.5\" sig=\"0.04\" df1=\"1\" df2=\"20.5\"/></ModelTestStats>"
                        "<ModelTestStats description=\"fixedEffect\" testID=\"\" testType=\"\">"
                        "<FTest fStatistic=\"\" sig=\"\" df1=\"2\" df2=\"\"/></ModelTestStats>"
                        "<ModelTestStats description=\"somethingElse\"/>";
  ASSERT_TRUE(Read(pieces));
  const Stats::EffectTestData* tests = fStats.GetEffectTest();
  ASSERT_NE(tests, nullptr);
  // A corrected model without its F test keeps four missing numbers.
  EXPECT_EQ(tests->fCorrectedModel.fTestType, 3);
  EXPECT_EQ(tests->fCorrectedModel.fFStatistic, kSysmis);
  EXPECT_EQ(tests->fCorrectedModel.fDf1, kSysmis);
  EXPECT_EQ(tests->fCorrectedModel.fDf2, kSysmis);
  EXPECT_EQ(tests->fCorrectedModel.fSig, kSysmis);
  ASSERT_EQ(tests->fvFixedEffects.size(), 2u);
  EXPECT_EQ(tests->fvFixedEffects[0].fFStatistic, 4.5);
  EXPECT_EQ(tests->fvFixedEffects[0].fDf2, 20.5);
  EXPECT_EQ(tests->fvFixedEffects[1].fTestID, 0);
  EXPECT_EQ(tests->fvFixedEffects[1].fTestType, 0);
  EXPECT_EQ(tests->fvFixedEffects[1].fDf1, 2.0);
  EXPECT_EQ(tests->fvFixedEffects[1].fSig, kSysmis);
}

TEST_F(ParseStatistics, ASymmetricMatrixIsAPackedTriangle) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + Matrix("nbRows=\"3\" nbCols=\"3\" kind=\"symmetric\"", "1 2 3 4 5 6", 6);
  ASSERT_TRUE(Read(pieces));
  const Stats::ClassifMatrixData* matrix = fStats.GetClassifMatrix();
  ASSERT_NE(matrix, nullptr);
  ASSERT_EQ(matrix->fNumRows, 3);
  EXPECT_EQ(matrix->fRows[0].fValues, (std::vector<double>{1, 2, 4}));
  EXPECT_EQ(matrix->fRows[1].fValues, (std::vector<double>{2, 3, 5}));
  EXPECT_EQ(matrix->fRows[2].fValues, (std::vector<double>{4, 5, 6}));
  EXPECT_EQ(matrix->fRows[2].fRowSum, 15.0);
  EXPECT_EQ(matrix->fRows[0].fRowSum, 7.0);
}

TEST_F(ParseStatistics, ADiagonalMatrix) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + Matrix("nbRows=\"2\" kind=\"diagonal\"", "3 4", 2);
  ASSERT_TRUE(Read(pieces));
  const Stats::ClassifMatrixData* matrix = fStats.GetClassifMatrix();
  EXPECT_EQ(matrix->fRows[0].fValues, (std::vector<double>{3, 0}));
  EXPECT_EQ(matrix->fRows[1].fValues, (std::vector<double>{0, 4}));
  EXPECT_EQ(matrix->fRows[1].fRowSum, 4.0);
}

// Without a column count a matrix of r * r values is square.
TEST_F(ParseStatistics, AMatrixWithoutColumnsIsSquare) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + Matrix("nbRows=\"2\" nbCols=\"\" kind=\"general\"", "5 1 2 6", 4);
  ASSERT_TRUE(Read(pieces));
  EXPECT_EQ(fStats.GetClassifMatrix()->fRows[0].fValues, (std::vector<double>{5, 1}));
  EXPECT_EQ(fStats.GetClassifMatrix()->fRows[1].fValues, (std::vector<double>{2, 6}));
  EXPECT_EQ(fStats.GetClassifMatrix()->fRows[1].fRowSum, 8.0);
}

TEST_F(ParseStatistics, AMatrixOfTheWrongSizeFails) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + Matrix("nbRows=\"2\" kind=\"general\"", "5 1 2", 3);
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseStatistics, OnlyAClassificationTableIsReadAndOnlyTheFirstMatrix) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + Matrix("nbRows=\"1\"", "1", 1, "somethingElse") +
                        Matrix("nbRows=\"1\"", "1", 1);
  ASSERT_TRUE(Read(pieces));
  EXPECT_EQ(fStats.GetClassifMatrix(), nullptr);
}

TEST_F(ParseStatistics, ClassificationLabelsAreTargetValues) {
  StatXMLPieces pieces;
  pieces.fSettings = "<Parameter name=\"TargetField\" value=\"choice\"/>";
  pieces.fDiagnostics = Stat("AICC", "1") +
                        "<Matrix description=\"classificationTable\" nbRows=\"2\" nbCols=\"2\"><MatrixLabels>"
                        "<RowColLabels><Label label=\"home\"/><Label label=\"much too long\"/></RowColLabels>"
                        "</MatrixLabels>" +
                        Array("3 1 1 3", 4) + "</Matrix>";
  ASSERT_TRUE(Read(pieces));
  const Stats::ClassifMatrixData* matrix = fStats.GetClassifMatrix();
  ASSERT_EQ(matrix->fLabels.size(), 2u);
  EXPECT_TRUE(matrix->fLabels[0].IsLoaded());
  // A label that does not load is kept as text.
  EXPECT_FALSE(matrix->fLabels[1].IsLoaded());
  EXPECT_EQ(matrix->fLabels[1].GetStringValue(), "much too long");
}

TEST_F(ParseStatistics, TheFirstSubjectsRecords) {
  StatXMLPieces pieces;
  pieces.fDiagnostics =
      Stat("AICC", "1") +
      "<StructuredData description=\"firstSubjectRecordsForDataStructure\"><Counts totalFreq=\"12\"/><SegmentData>"
      "<SegmentInfo><FieldInfo fieldName=\"patient\" fieldValue=\"3\"/></SegmentInfo><MultivariateData>"
      "<CoordinatesGroup description=\"repeatedMeasures\"><Coordinates field=\"visit\">" +
      Array("1 2", 2) + "</Coordinates></CoordinatesGroup><CoordinatesGroup description=\"target\">" +
      "<Coordinates field=\"cost\">" + Array("151 164.25", 2) + "</Coordinates><Coordinates field=\"dose\">" +
      Array("10 20", 2) + "</Coordinates></CoordinatesGroup></MultivariateData></SegmentData></StructuredData>";
  ASSERT_TRUE(Read(pieces));
  const Stats::StructuredData* data = fStats.GetStructuredData();
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->fTotalFreq, 12);
  EXPECT_EQ(data->fSubjectData.fFieldNames, std::vector<std::string>{"patient"});
  EXPECT_EQ(data->fSubjectData.fFieldIndices, std::vector<int>{0});
  EXPECT_EQ(data->fSubjectData.fNumCategories, std::vector<int>{6});
  EXPECT_EQ(data->fSubjectData.fSubjectValues[0].GetObsValue()->fNum, 3.0);
  ASSERT_EQ(data->fvRepMeasVars.size(), 1u);
  EXPECT_EQ(data->fvRepMeasVars[0].fRepMeasInd, 1);
  EXPECT_EQ(data->fvRepMeasVars[0].fNumCategories, 4);
  EXPECT_EQ(data->fvRepMeasVars[0].fValues[1].GetObsValue()->fNum, 2.0);
  ASSERT_EQ(data->fvTargetValues.size(), 2u);
  EXPECT_EQ(data->fvTargetValues[1].GetObsValue()->fNum, 164.25);
  // A field that is neither target nor trials is dropped.
  EXPECT_TRUE(data->fvTrialsValues.empty());
}

TEST_F(ParseStatistics, TrialsValuesOfTheFirstSubject) {
  StatXMLPieces pieces;
  pieces.fSettings = "<Parameter name=\"TargetField\" value=\"events\"/><Parameter name=\"UseTrials\" "
                     "value=\"true\"/><Parameter name=\"TrialsField\" value=\"trials\"/>";
  pieces.fDiagnostics =
      Stat("AICC", "1") +
      "<StructuredData description=\"firstSubjectRecordsForDataStructure\"><Counts totalFreq=\"2\"/><SegmentData>"
      "<SegmentInfo/><MultivariateData><CoordinatesGroup description=\"target\"><Coordinates field=\"events\">" +
      Array("5 7", 2) + "</Coordinates><Coordinates field=\"trials\">" + Array("10 11", 2) +
      "</Coordinates></CoordinatesGroup></MultivariateData></SegmentData></StructuredData>";
  ASSERT_TRUE(Read(pieces));
  const Stats::StructuredData* data = fStats.GetStructuredData();
  ASSERT_EQ(data->fvTrialsValues.size(), 2u);
  EXPECT_EQ(data->fvTrialsValues[1].GetObsValue()->fNum, 11.0);
  EXPECT_EQ(data->fvTargetValues[0].GetObsValue()->fNum, 5.0);
}

// Subjects are categorical fields of the model: a scale field fails.
TEST_F(ParseStatistics, AScaleFieldAsSubjectFailsTheBlock) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") +
                        "<StructuredData description=\"firstSubjectRecordsForDataStructure\"><Counts totalFreq=\"1\"/>"
                        "<SegmentData><SegmentInfo><FieldInfo fieldName=\"dose\" fieldValue=\"10\"/></SegmentInfo>"
                        "<MultivariateData/></SegmentData></StructuredData>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseStatistics, AnUnknownCoordinatesGroupFails) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") +
                        "<StructuredData description=\"firstSubjectRecordsForDataStructure\"><Counts totalFreq=\"1\"/>"
                        "<SegmentData><SegmentInfo/><MultivariateData><CoordinatesGroup description=\"other\"/>"
                        "</MultivariateData></SegmentData></StructuredData>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseStatistics, RandomEffectCovariancesAreLabelledThroughTheMap) {
  StatXMLPieces pieces;
  pieces.fMaps += "<StringMap mapId=\"1\"><MapEntry name=\"G0.0\"><Label><RegressionParameter isIntercept=\"true\" "
                  "name=\"G0.0\"/></Label></MapEntry><MapEntry name=\"G0.1\"><Label><RegressionParameter "
                  "isIntercept=\"false\" name=\"G0.1\"><Covariate field=\"dose\" power=\"1\"/></RegressionParameter>"
                  "</Label></MapEntry></StringMap>";
  pieces.fDiagnostics = Stat("AICC", "1") +
                        "<StructuredData description=\"randomEffectCovariances\">" + Stat("randomEffectBlock", "0") +
                        "<MatrixLabels><RowColLabels><Label><PrintableList pattern=\"G0.0\" mapId=\"1\"/></Label>"
                        "<Label><PrintableList pattern=\"G0.1\" mapId=\"1\"/></Label></RowColLabels></MatrixLabels>"
                        "<SegmentData><SegmentInfo/>" +
                        Matrix("nbRows=\"2\" nbCols=\"2\" kind=\"symmetric\"", "4 1 9", 3, "randomEffectCovariance") +
                        "</SegmentData></StructuredData>";
  ASSERT_TRUE(Read(pieces));
  ASSERT_NE(fStats.GetStructuredData(), nullptr);
  ASSERT_EQ(fStats.GetStructuredData()->fvRandEffCovarMats.size(), 1u);
  const Stats::RandEffCovarMatData& block = fStats.GetStructuredData()->fvRandEffCovarMats[0];
  EXPECT_EQ(block.fStatName, "randomEffectBlock");
  EXPECT_EQ(block.fStatValue, 0.0);
  EXPECT_EQ(block.fEffectLabels, (std::vector<std::string>{"Intercept", "dose"}));
  ASSERT_EQ(block.fSimpleSubjects.size(), 1u);
  ASSERT_EQ(block.fMatrixValues.size(), 1u);
  EXPECT_EQ(block.fMatrixValues[0].fRows[1].fValues, (std::vector<double>{1, 9}));
  // The first subject's block is absent, so no subject fields.
  EXPECT_TRUE(fStats.GetStructuredData()->fSubjectData.fFieldNames.empty());
}

TEST_F(ParseStatistics, ACovarianceLabelTheMapDoesNotHoldFails) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + "<StructuredData description=\"randomEffectCovariances\">" +
                        Stat("randomEffectBlock", "0") +
                        "<MatrixLabels><RowColLabels><Label><PrintableList pattern=\"G0.7\" mapId=\"1\"/></Label>"
                        "</RowColLabels></MatrixLabels><SegmentData><SegmentInfo/>" +
                        Matrix("nbRows=\"1\" kind=\"symmetric\"", "4", 1, "randomEffectCovariance") +
                        "</SegmentData></StructuredData>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

// A set of block 2 in an empty collection makes three blocks, all numbered
// 2: the gaps take the number of the set that made them.
TEST_F(ParseStatistics, ARandomSetBeyondTheCollectionFillsTheGap) {
  StatXMLPieces pieces;
  pieces.fTraining += RandomSet("2");
  ASSERT_TRUE(Read(pieces));
  const Stats::ParamCollectData* collect = fStats.GetParamCollect();
  ASSERT_NE(collect, nullptr);
  ASSERT_EQ(collect->fvRandomParamEstim.size(), 3u);
  for (const Stats::ParamEstimBlockCollection& block : collect->fvRandomParamEstim) EXPECT_EQ(block.fBlockIndex, 2);
  EXPECT_TRUE(collect->fvRandomParamEstim[0].fvParamEstim.empty());
  ASSERT_EQ(collect->fvRandomParamEstim[2].fvParamEstim.size(), 1u);
  const Stats::ParamStatsData& variance = collect->fvRandomParamEstim[2].fvParamEstim[0].fvParamStats[0];
  EXPECT_EQ(variance.fParamList.fPattern, "VarOfEffect");
  EXPECT_TRUE(variance.fParamList.fIsKey);
  EXPECT_EQ(variance.fParamList.fMapId, -1);
  ASSERT_EQ(variance.fParamList.fvSubLists.size(), 1u);
  EXPECT_EQ(variance.fParamList.fvSubLists[0].fPattern, "0");
}

TEST_F(ParseStatistics, ParameterStatistics) {
  StatXMLPieces pieces;
  pieces.fTraining =
      "<ParameterEstimates parameterType=\"fixed\">" +
      StatXMLPieces::FixedStats("B0", "<RegressionParameter isIntercept=\"true\" name=\"B0\"/>") +
      StatXMLPieces::FixedStats("B1",
                                "<RegressionParameter isIntercept=\"false\" name=\"B1\"><Covariate field=\"dose\"/>"
                                "<Factor field=\"treatment\" value=\"A\" nest=\"true\"/></RegressionParameter>" +
                                    Stat("fixedEffectIndex", "4"),
                                "") +
      "</ParameterEstimates><ParameterEstimates parameterType=\"repeated\"><SegmentInfo><FieldInfo "
      "fieldName=\"treatment\" fieldValue=\"B\"/></SegmentInfo>" +
      StatXMLPieces::FixedStats("Residual", "<PrintableList pattern=\"Variance \" isKey=\"true\"/>") +
      "</ParameterEstimates><ParameterEstimates parameterType=\"other\">" +
      StatXMLPieces::FixedStats("X", "") + "</ParameterEstimates>";
  ASSERT_TRUE(Read(pieces));
  const Stats::ParamCollectData* collect = fStats.GetParamCollect();
  ASSERT_EQ(collect->fvFixedParamEstim.size(), 1u);
  const std::vector<Stats::ParamStatsData>& fixed = collect->fvFixedParamEstim[0].fvParamStats;
  ASSERT_EQ(fixed.size(), 2u);
  EXPECT_EQ(fixed[0].fStatisticValue, -1);
  EXPECT_TRUE(fixed[0].fRegrParam.fIsIntercept);
  EXPECT_EQ(fixed[0].fEstimate, 1.5);
  EXPECT_EQ(fixed[0].fTTest, 3.0);
  EXPECT_EQ(fixed[0].fZTest, kSysmis);
  EXPECT_EQ(fixed[0].fExpEstimate, kSysmis);
  EXPECT_FALSE(fixed[0].fIsRedundant);
  EXPECT_EQ(fixed[1].fStatistic.fName, "fixedEffectIndex");
  EXPECT_EQ(fixed[1].fStatisticValue, 4);
  EXPECT_EQ(fixed[1].fEstimate, kSysmis);
  ASSERT_EQ(fixed[1].fRegrParam.fvCovariates.size(), 1u);
  EXPECT_EQ(fixed[1].fRegrParam.fvCovariates[0].fPower, 0);
  EXPECT_EQ(fixed[1].fRegrParam.fvCovariates[0].fFieldIndex, 3);
  ASSERT_EQ(fixed[1].fRegrParam.fvFactors.size(), 1u);
  EXPECT_TRUE(fixed[1].fRegrParam.fvFactors[0].fNest);
  EXPECT_TRUE(fixed[1].fRegrParam.fvFactors[0].fValue.IsLoaded());
  ASSERT_EQ(collect->fvRepeatedParamEstim.size(), 1u);
  EXPECT_EQ(collect->fvRepeatedParamEstim[0].fFiledData.fFieldNames, std::vector<std::string>{"treatment"});
  EXPECT_EQ(collect->fvRepeatedParamEstim[0].fvParamStats[0].fParamList.fPattern, "Variance ");
}

TEST_F(ParseStatistics, AnInterceptCannotBelongToAnEffect) {
  StatXMLPieces pieces;
  pieces.fTraining = "<ParameterEstimates parameterType=\"fixed\">" +
                     StatXMLPieces::FixedStats("B0", "<RegressionParameter isIntercept=\"true\" name=\"B0\"/>" +
                                                         Stat("fixedEffectIndex", "0")) +
                     "</ParameterEstimates>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  EXPECT_EQ(fStats.GetParamCollect(), nullptr);
}

TEST_F(ParseStatistics, AParameterWithoutAnAttributeFails) {
  StatXMLPieces pieces;
  pieces.fTraining = "<ParameterEstimates parameterType=\"fixed\"><ParameterStats paramName=\"B0\" "
                     "paramLabel=\"B0\" estimate=\"1\"/></ParameterEstimates>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

// A model that produced messages and no estimates is read; its tables
// find no parameters.
TEST_F(ParseStatistics, MessagesWithoutEstimatesAreARead) {
  StatXMLPieces pieces;
  pieces.fTraining = Message("kGLMM_C26");
  ASSERT_TRUE(Read(pieces));
  EXPECT_EQ(fStats.GetParamCollect(), nullptr);
  EXPECT_TRUE(fStats.HasWarning("kGLMM_C26"));
  EXPECT_TRUE(Messages().empty());
}

TEST_F(ParseStatistics, NoEstimatesAndNoMessagesFail) {
  StatXMLPieces pieces;
  pieces.fTraining = "";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  EXPECT_EQ(fStats.GetParamCollect(), nullptr);
  // What was read before stays.
  EXPECT_NE(fStats.GetModelDiagnostics(), nullptr);
  EXPECT_NE(fStats.GetBuildSettings(), nullptr);
}

// A message with an empty pattern is skipped and the next one is read;
// empty values are no arguments.
TEST_F(ParseStatistics, Messages) {
  StatXMLPieces pieces;
  pieces.fTraining += Message("") + Message("kGLMM_C19_1", Value("treatment") + Value("")) + Message("kGLMM_C18");
  ASSERT_TRUE(Read(pieces));
  const std::vector<Stats::WarningMsgData>& warnings = fStats.GetAllWarnings();
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_EQ(warnings[0].fPattern, "kGLMM_C19_1");
  EXPECT_EQ(warnings[0].fWarningParameters, std::vector<std::string>{"treatment"});
  EXPECT_EQ(warnings[1].fPattern, "kGLMM_C18");
}

TEST_F(ParseStatistics, AMessageValueWithoutItsValueFailsAfterItsRecord) {
  StatXMLPieces pieces;
  pieces.fTraining += Message("kGLMM_C18", "<PrintableValue storage=\"string\"/>") + Message("kGLMM_C26");
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  ASSERT_EQ(fStats.GetAllWarnings().size(), 1u);
  EXPECT_EQ(fStats.GetAllWarnings()[0].fPattern, "kGLMM_C18");
}

TEST_F(ParseStatistics, PrintableListsAndValues) {
  StatXMLPieces pieces;
  pieces.fTraining =
      "<ParameterEstimates parameterType=\"repeated\">" +
      StatXMLPieces::FixedStats(
          "Residual",
          "<PrintableList pattern=\"p\" isKey=\"false\" mapId=\"3\"><PrintableList pattern=\"q\"/>"
          "<PrintableValue storage=\"integer\" value=\"7\"/><PrintableValue storage=\"timestamp\" value=\"t\" "
          "isNull=\"true\" label=\"L\"/><PrintableValue storage=\"other\" value=\"\"/></PrintableList>") +
      "</ParameterEstimates>";
  ASSERT_TRUE(Read(pieces));
  const Stats::PrintableListData& list = fStats.GetParamCollect()->fvRepeatedParamEstim[0].fvParamStats[0].fParamList;
  EXPECT_EQ(list.fPattern, "p");
  EXPECT_FALSE(list.fIsKey);
  EXPECT_EQ(list.fMapId, 3);
  ASSERT_EQ(list.fvSubLists.size(), 1u);
  EXPECT_EQ(list.fvSubLists[0].fMapId, -1);
  ASSERT_EQ(list.fvValues.size(), 3u);
  EXPECT_EQ(list.fvValues[0].fStorage, 1);
  EXPECT_EQ(list.fvValues[0].fValue, "7");
  EXPECT_EQ(list.fvValues[1].fStorage, 6);
  EXPECT_TRUE(list.fvValues[1].fIsNull);
  EXPECT_EQ(list.fvValues[1].fLabel, "L");
  EXPECT_EQ(list.fvValues[1].fpFormat, nullptr);
  EXPECT_EQ(list.fvValues[2].fStorage, 0);
}

TEST_F(ParseStatistics, APrintableValueWithoutStorageFails) {
  StatXMLPieces pieces;
  pieces.fTraining = "<ParameterEstimates parameterType=\"repeated\">" +
                     StatXMLPieces::FixedStats("Residual", "<PrintableList pattern=\"p\"><PrintableValue "
                                                           "value=\"7\"/></PrintableList>") +
                     "</ParameterEstimates>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

// A means group without a request number gets -1.
TEST_F(ParseStatistics, AMeansGroupWithoutARequestNumber) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + MeansGroup("") + "<DataGroup description=\"other\"/>";
  ASSERT_TRUE(Read(pieces));
  ASSERT_NE(fStats.GetEMMEANSCustomCollect(), nullptr);
  ASSERT_EQ(fStats.GetEMMEANSCustomCollect()->size(), 1u);
  const Stats::EMMEANSCustomData& custom = fStats.GetEMMEANSCustomCollect()->front();
  EXPECT_EQ(custom.fEMMEANSIndex, -1);
  EXPECT_TRUE(custom.fEstimates.fvGroup.empty());
  EXPECT_EQ(custom.fEstimates.fMean.fValues, std::vector<std::string>{"3.5"});
  EXPECT_EQ(custom.fEstimates.fMean.fFeature, 4);
  EXPECT_EQ(fStats.GetEMMEANSSignifCollect(), nullptr);
}

TEST_F(ParseStatistics, AMeansGroupWithoutData) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + "<DataGroup description=\"customEmmeans\">" +
                        Stat("EMMEANSIndex", "0") + "</DataGroup>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseStatistics, TheComponentsOwnMeansNeedTheirData) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + "<DataGroup description=\"Emmeans\"/>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  ASSERT_NE(fStats.GetEMMEANSSignifCollect(), nullptr);
  EXPECT_TRUE(fStats.GetEMMEANSSignifCollect()->empty());
}

TEST_F(ParseStatistics, AnOverallTestNeedsEveryNumber) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") + MeansGroup("<ModelTestStats testID=\"0\"><FTest fStatistic=\"1\" "
                                                     "sig=\"0.3\" df1=\"1\"/></ModelTestStats>");
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseStatistics, ContrastsOfAnUnknownKind) {
  StatXMLPieces pieces;
  pieces.fDiagnostics = Stat("AICC", "1") +
                        MeansGroup("<MultivariateData description=\"contrasts\">" + Stat("alpha", "0.1") +
                                   "<CoordinatesGroup description=\"helmertContrast\"/><Coordinates statistic=\"df\">" +
                                   Array("20", 1) + "</Coordinates><Coordinates statistic=\"unused\">" + Array("1", 1) +
                                   "</Coordinates></MultivariateData>");
  ASSERT_TRUE(Read(pieces));
  const Stats::EMMEANSContrastsData& contrasts = fStats.GetEMMEANSCustomCollect()->front().fContrasts;
  EXPECT_EQ(contrasts.fContrastKind, 3);
  EXPECT_EQ(contrasts.fAdjustedSigLevel, 0.0);
  EXPECT_EQ(contrasts.fDf.fValues, std::vector<std::string>{"20"});
}
