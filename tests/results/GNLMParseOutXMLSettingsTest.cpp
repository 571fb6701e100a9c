// The reader's walk, its build settings and model terms.
#include <gtest/gtest.h>

#include <climits>

#include "results/ResultsTestSupport.h"

using namespace results_test;
using Stats = GNLMOutputStats;

namespace {

class ParseSettings : public ReaderTest {
 protected:
  const Stats::BuildSettingsData& Settings() {
    EXPECT_NE(fStats.GetBuildSettings(), nullptr);
    return *fStats.GetBuildSettings();
  }
};

std::string Param(const std::string& name, const std::string& value) {
  return "<Parameter name=\"" + name + "\" value=\"" + value + "\"/>";
}

std::string Effect(const std::vector<std::string>& fields, const std::vector<std::string>& levels) {
  std::string text = "<StructuredValue><Attribute name=\"Fields\"><ListValue>";
  for (const std::string& f : fields) text += "<Value value=\"" + f + "\"/>";
  text += "</ListValue></Attribute><Attribute name=\"NestingLevels\"><ListValue>";
  for (const std::string& l : levels) text += "<Value value=\"" + l + "\"/>";
  return text + "</ListValue></Attribute></StructuredValue>";
}

}  // namespace

TEST_F(ParseSettings, TheSmallestDocumentReads) {
  StatXMLPieces pieces;
  ASSERT_TRUE(Read(pieces));
  EXPECT_TRUE(Messages().empty());
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
  const Stats::BuildSettingsData& settings = Settings();
  EXPECT_EQ(settings.fTargetField, "cost");
  EXPECT_EQ(settings.fTargetIndex, 7);
  EXPECT_EQ(settings.fAlgorithmName, "GLMM");
  // The defaults of what the document leaves out.
  EXPECT_EQ(settings.fTrialsIndex, -1);
  EXPECT_EQ(settings.fDistribution, Stats::DIST_UNKNOWN);
  EXPECT_EQ(settings.fLinkFunction, Stats::LINK_UNKNOWN);
  EXPECT_EQ(settings.fLinkParam, kSysmis);
  EXPECT_EQ(settings.fCIn, kSysmis);
  EXPECT_TRUE(settings.fIntercept);
  EXPECT_EQ(settings.fResidualCovarianceType, Stats::VC);
  EXPECT_EQ(settings.fResidualCovarianceTBand, 0);
  EXPECT_EQ(settings.fPAdjustment, 3);
  ASSERT_NE(fStats.GetParamCollect(), nullptr);
  EXPECT_EQ(fStats.GetParamCollect()->fvFixedParamEstim.size(), 1u);
}

TEST_F(ParseSettings, EveryScalarSetting) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "events") + Param("UseTrials", "true") + Param("TrialsField", "trials") +
                     Param("DistributionOfTarget", "BINOMIAL") + Param("LinkFunctionType", "LOGIT") +
                     Param("LinkFunctionParam", "0.5") + Param("Intercept", "false") + Param("CIn", "0.9") +
                     Param("ResidualCovarianceType", "AR1") + Param("ResidualCovarianceTBand", "3") +
                     Param("pAdjustment", "SEQBONFERRONI") + Param("SomethingElse", "ignored");
  ASSERT_TRUE(Read(pieces));
  const Stats::BuildSettingsData& settings = Settings();
  EXPECT_EQ(settings.fTargetIndex, 4);
  EXPECT_TRUE(settings.fUseTrials);
  EXPECT_EQ(settings.fTrialsField, "trials");
  EXPECT_EQ(settings.fTrialsIndex, 5);
  EXPECT_EQ(settings.fDistributionText, "BINOMIAL");
  EXPECT_EQ(settings.fDistribution, Stats::BINOMIAL);
  EXPECT_EQ(settings.fLinkFunction, Stats::LOGIT);
  EXPECT_EQ(settings.fLinkParamText, "0.5");
  EXPECT_EQ(settings.fLinkParam, 0.5);
  EXPECT_FALSE(settings.fIntercept);
  EXPECT_EQ(settings.fCIn, 0.9);
  EXPECT_EQ(settings.fResidualCovarianceType, Stats::AR1);
  EXPECT_EQ(settings.fResidualCovarianceTBand, 3);
  EXPECT_EQ(settings.fPAdjustment, 1);
}

TEST_F(ParseSettings, TokensAreMatchedExactly) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + Param("UseTrials", "TRUE") + Param("DistributionOfTarget", "normal") +
                     Param("LinkFunctionType", "Identity") + Param("ResidualCovarianceType", "cs") +
                     Param("pAdjustment", "lsd");
  ASSERT_TRUE(Read(pieces));
  const Stats::BuildSettingsData& settings = Settings();
  EXPECT_FALSE(settings.fUseTrials);
  EXPECT_EQ(settings.fDistribution, Stats::DIST_UNKNOWN);
  EXPECT_EQ(settings.fLinkFunction, Stats::LINK_UNKNOWN);
  EXPECT_EQ(settings.fResidualCovarianceType, Stats::COV_UNKNOWN);
  EXPECT_EQ(settings.fPAdjustment, 3);
}

TEST_F(ParseSettings, CovarianceTokens) {
  const std::pair<const char*, Stats::EnumCovarianceType> tokens[] = {
      {"VC", Stats::VC},         {"AR1", Stats::AR1},     {"ARMA11", Stats::ARMA11}, {"CS", Stats::CS},
      {"DIAG", Stats::DIAG},     {"ID", Stats::ID},       {"TP", Stats::TP},         {"UNSTRUCTURED", Stats::UNSTRUCTURED},
      {"SPPOW", Stats::SPPOW},   {"SPEXP", Stats::SPEXP}, {"SPGAU", Stats::SPGAU},   {"SPLIN", Stats::SPLIN},
      {"SPLINLOG", Stats::SPLINLOG}, {"SPSPH", Stats::SPSPH}, {"ARH1", Stats::ARH1}, {"AD1", Stats::AD1},
      {"CSH", Stats::CSH},       {"CSR", Stats::CSR},     {"FA1", Stats::FA1},       {"FAH1", Stats::FAH1},
      {"HF", Stats::HF},         {"TPH", Stats::TPH},     {"UNR", Stats::UNR},       {"UN", Stats::COV_UNKNOWN}};
  for (const auto& token : tokens) {
    fStats.DestroyBuildSettings();
    GNLMOutputStats stats;
    stats.SetDictMetadata(&fMetaData);
    StatXMLPieces pieces;
    pieces.fSettings = Param("TargetField", "cost") + Param("ResidualCovarianceType", token.first);
    const std::string statXML = pieces.Text();
    GNLMParseOutXML reader(fProcedure.get(), fData.get(), &stats, fPMML, statXML);
    ASSERT_TRUE(reader.ParseXML()) << token.first;
    EXPECT_EQ(stats.GetBuildSettings()->fResidualCovarianceType, token.second) << token.first;
  }
  EXPECT_EQ(Stats::CS, 3);
  EXPECT_EQ(Stats::COV_UNKNOWN, 14);
}

// An empty number of trials is the system-missing value cut to a whole
// number: the most negative int.
TEST_F(ParseSettings, EmptyValuesOfNumbers) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + Param("TrialsValue", "") + Param("ResidualCovarianceTBand", "") +
                     Param("CIn", "") + Param("LinkFunctionParam", "");
  ASSERT_TRUE(Read(pieces));
  const Stats::BuildSettingsData& settings = Settings();
  EXPECT_EQ(settings.fTrialsValue, INT_MIN);
  EXPECT_EQ(settings.fResidualCovarianceTBand, 2);
  EXPECT_EQ(settings.fCIn, kSysmis);
  EXPECT_EQ(settings.fLinkParam, kSysmis);
}

TEST_F(ParseSettings, AConstantNumberOfTrialsIsCutToAWholeNumber) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "events") + Param("UseTrials", "true") + Param("TrialsValue", "12.7");
  ASSERT_TRUE(Read(pieces));
  EXPECT_EQ(Settings().fTrialsValue, 12);
  EXPECT_EQ(Settings().fTrialsIndex, -1);
}

TEST_F(ParseSettings, ALaterParameterWins) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + Param("CIn", "0.9") + Param("CIn", "0.99") +
                     "<Parameter name=\"ResidualGroupSpec\"><ListValue><Value value=\"a\"/><Value value=\"\"/>"
                     "</ListValue></Parameter><Parameter name=\"ResidualGroupSpec\"><ListValue><Value value=\"b\"/>"
                     "</ListValue></Parameter>";
  ASSERT_TRUE(Read(pieces));
  EXPECT_EQ(Settings().fCIn, 0.99);
  EXPECT_EQ(Settings().fvResidualGroupSpec, (std::vector<std::string>{"a", "", "b"}));
}

// A Parameter without a name fails the whole read.
TEST_F(ParseSettings, AParameterWithoutANameFailsTheRead) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + "<Parameter value=\"x\"/>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  // The settings' reading is undone.
  EXPECT_EQ(fStats.GetBuildSettings(), nullptr);
}

TEST_F(ParseSettings, TheAlgorithmMustBeExactlyGLMM) {
  StatXMLPieces pieces;
  pieces.fAlgorithm = "<PredictiveSummary algorithmName=\"GLMM \"/>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  ASSERT_NE(fStats.GetBuildSettings(), nullptr);
  EXPECT_EQ(fStats.GetBuildSettings()->fTargetField, "");
  EXPECT_EQ(fStats.GetBuildSettings()->fAlgorithmName, "GLMM ");
}

TEST_F(ParseSettings, AMissingAlgorithmNameFails) {
  StatXMLPieces pieces;
  pieces.fAlgorithm = "<PredictiveSummary/>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseSettings, ModelTermsAndTheirNesting) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + "<Parameter name=\"FixedEffectList\"><ListValue>" +
                     Effect({"treatment"}, {"0"}) + Effect({"dose", "treatment"}, {"0", "1"}) +
                     "</ListValue></Parameter><Parameter name=\"ResidualSubjectSpec\">" + Effect({"patient"}, {"0"}) +
                     "</Parameter>";
  ASSERT_TRUE(Read(pieces));
  const Stats::BuildSettingsData& settings = Settings();
  ASSERT_EQ(settings.fvFixedEffectList.size(), 2u);
  EXPECT_EQ(settings.fvFixedEffectList[1].fvFieldNames, (std::vector<std::string>{"dose", "treatment"}));
  EXPECT_EQ(settings.fvFixedEffectList[1].fvFieldIndices, (std::vector<int>{3, 2}));
  EXPECT_EQ(settings.fvFixedEffectList[1].fvNestingLevels, (std::vector<int>{0, 1}));
  EXPECT_EQ(settings.fResidualSubjectSpec.fvFieldIndices, std::vector<int>{0});
}

// A FixedEffectList without its list is no error.
TEST_F(ParseSettings, AFixedEffectListWithoutAListStaysEmpty) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + "<Parameter name=\"FixedEffectList\"/>" + Param("CIn", "0.95");
  ASSERT_TRUE(Read(pieces));
  EXPECT_TRUE(Settings().fvFixedEffectList.empty());
  EXPECT_EQ(Settings().fCIn, 0.95);
}

// A bad field name goes unreported when nesting levels follow it; it is
// kept among the names but not the indices.
TEST_F(ParseSettings, ABadFieldBeforeNestingLevelsGoesUnreported) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + "<Parameter name=\"FixedEffectList\"><ListValue>" +
                     Effect({"nosuchfield", "dose"}, {"0", "0"}) + "</ListValue></Parameter>";
  ASSERT_TRUE(Read(pieces));
  ASSERT_EQ(Settings().fvFixedEffectList.size(), 1u);
  EXPECT_EQ(Settings().fvFixedEffectList[0].fvFieldNames, std::vector<std::string>{"nosuchfield"});
  EXPECT_TRUE(Settings().fvFixedEffectList[0].fvFieldIndices.empty());
  EXPECT_EQ(Settings().fvFixedEffectList[0].fvNestingLevels, (std::vector<int>{0, 0}));
}

TEST_F(ParseSettings, ABadFieldInTheLastAttributeFails) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") +
                     "<Parameter name=\"FixedEffectList\"><ListValue><StructuredValue><Attribute name=\"Fields\">"
                     "<ListValue><Value value=\"nosuchfield\"/></ListValue></Attribute></StructuredValue></ListValue>"
                     "</Parameter>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseSettings, RandomBlocks) {
  StatXMLPieces pieces;
  pieces.fSettings =
      Param("TargetField", "cost") +
      "<Parameter name=\"RandomSpecs\"><ListValue><StructuredValue>"
      "<Attribute name=\"EffectList\"><ListValue>" +
      Effect({"dose"}, {"0"}) +
      "</ListValue></Attribute><Attribute name=\"Intercept\" value=\"true\"/>"
      "<Attribute name=\"SubjectSpec\">" +
      Effect({"patient"}, {"0"}) +
      "</Attribute><Attribute name=\"GroupSpec\"><ListValue><Value value=\"treatment\"/></ListValue></Attribute>"
      "<Attribute name=\"CovarianceType\" value=\"CSH\"/><Attribute name=\"CovarianceTBand\" value=\"\"/>"
      "</StructuredValue><StructuredValue><Attribute name=\"CovarianceType\" value=\"VC\"/></StructuredValue>"
      "</ListValue></Parameter>";
  ASSERT_TRUE(Read(pieces));
  ASSERT_EQ(Settings().fvRandomSpecs.size(), 2u);
  const Stats::RandomSpecsData& block = Settings().fvRandomSpecs[0];
  EXPECT_TRUE(block.fIntercept);
  ASSERT_EQ(block.fvEffectList.size(), 1u);
  EXPECT_EQ(block.fvEffectList[0].fvFieldIndices, std::vector<int>{3});
  EXPECT_EQ(block.fSubjectSpec.fvFieldNames, std::vector<std::string>{"patient"});
  EXPECT_EQ(block.fvGroupSpec, std::vector<std::string>{"treatment"});
  EXPECT_EQ(block.fCovarianceType, Stats::CSH);
  EXPECT_EQ(block.fCovarianceTBand, 2);
  // A block the document says little of starts at zero.
  EXPECT_FALSE(Settings().fvRandomSpecs[1].fIntercept);
  EXPECT_EQ(Settings().fvRandomSpecs[1].fCovarianceTBand, 0);
}

// A list of random blocks must have members: an empty list is broken.
TEST_F(ParseSettings, AnEmptyListOfRandomBlocksFails) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") + "<Parameter name=\"RandomSpecs\"><ListValue/></Parameter>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseSettings, MeansRequests) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") +
                     "<Parameter name=\"EMMEANS\"><ListValue><StructuredValue><Attribute name=\"Factors\">" +
                     Effect({"treatment"}, {"0"}) +
                     "</Attribute><Attribute name=\"EstimateMeans\" value=\"true\"/>"
                     "<Attribute name=\"CompareFactor\" value=\"treatment\"/>"
                     "<Attribute name=\"ContrastType\" value=\"Deviation\"/>"
                     "<Attribute name=\"ReferenceType\" value=\"Value\"/>"
                     "<Attribute name=\"ReferenceValue\" value=\"B\"/></StructuredValue>"
                     "<StructuredValue><Attribute name=\"ContrastType\" value=\"Helmert\"/>"
                     "<Attribute name=\"ReferenceType\" value=\"First\"/></StructuredValue>"
                     "<StructuredValue><Attribute name=\"EstimateMeans\" value=\"false\"/></StructuredValue>"
                     "</ListValue></Parameter>";
  ASSERT_TRUE(Read(pieces));
  ASSERT_EQ(Settings().fvEMMEANS.size(), 3u);
  const Stats::EMMEANSData& first = Settings().fvEMMEANS[0];
  EXPECT_EQ(first.fFactors.fvFieldIndices, std::vector<int>{2});
  EXPECT_TRUE(first.fEstimateMeans);
  EXPECT_EQ(first.fCompareFactor, "treatment");
  EXPECT_EQ(first.fContrastType, 1);
  EXPECT_EQ(first.fReferenceType, 1);
  EXPECT_EQ(first.fReferenceValue, "B");
  EXPECT_EQ(Settings().fvEMMEANS[1].fContrastType, 4);
  EXPECT_EQ(Settings().fvEMMEANS[1].fReferenceType, 2);
  // Without attributes of its own, a request is no contrast, by the last.
  EXPECT_EQ(Settings().fvEMMEANS[2].fContrastType, 3);
  EXPECT_EQ(Settings().fvEMMEANS[2].fReferenceType, 0);
}

// A request whose factors cannot be read is kept, and the read fails.
TEST_F(ParseSettings, ABrokenMeansRequestIsKeptAndFails) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "cost") +
                     "<Parameter name=\"EMMEANS\"><ListValue><StructuredValue><Attribute name=\"CompareFactor\" "
                     "value=\"treatment\"/><Attribute name=\"Factors\"/></StructuredValue></ListValue></Parameter>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParseSettings, AnEmptyStatXMLTextFailsSilently) {
  const std::string empty;
  GNLMParseOutXML reader(fProcedure.get(), fData.get(), &fStats, fPMML, empty);
  EXPECT_FALSE(reader.ParseXML());
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(fStats.GetBuildSettings(), nullptr);
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
}

TEST_F(ParseSettings, TheTranscodingOfTheLocalPage) {
  const std::string text = "Caf\xC3\xA9";
  GNLMParseOutXML reader(fProcedure.get(), fData.get(), &fStats, fPMML, text);
  EXPECT_EQ(reader.transcodeToUTF8(text.c_str()), text);
  EXPECT_EQ(reader.transcodeFromUTF8(text.c_str()), text);
  EXPECT_EQ(reader.transcodeToUTF8(nullptr), "");
  EXPECT_EQ(reader.transcodeFromUTF8("bad \xFF"), "bad \xEF\xBF\xBD");
}

TEST_F(ParseSettings, AnUnknownTargetIsABrokenInvariant) {
  StatXMLPieces pieces;
  pieces.fSettings = Param("TargetField", "nosuchfield");
  EXPECT_DEATH(Read(pieces), "buildSettingsStruct.fTargetIndex >= 0");
}
