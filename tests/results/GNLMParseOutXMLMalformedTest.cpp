// Documents that are broken: each read fails with the one message, leaves
// the model as far as it was filled, and the model goes away cleanly.
#include <gtest/gtest.h>

#include "results/ResultsTestSupport.h"

using namespace results_test;

namespace {

class ParseMalformed : public ReaderTest {
 protected:
  void ExpectFailure(const std::string& statXML) {
    SCOPED_TRACE(statXML.substr(0, 200));
    EXPECT_FALSE(Read(fPMML, statXML));
    ExpectTheOneParsingError();
  }
  // The poisson fixture with every occurrence of a text replaced by
  // another; the text must be there.
  std::string Broken(const std::string& from, const std::string& to) {
    std::string text = ReadFile(FixturePath("poisson.statxml.xml"));
    EXPECT_NE(text.find(from), std::string::npos) << from;
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
      text.replace(at, from.size(), to);
    }
    return text;
  }
  void ExpectPoissonFailure(const std::string& from, const std::string& to) {
    SCOPED_TRACE(from + " -> " + to);
    EXPECT_FALSE(Read(ReadFile(FixturePath("poisson.pmml.xml")), WithoutMessages(Broken(from, to))));
    ExpectTheOneParsingError();
  }
  // The model's messages turned into elements the reader passes over: a
  // model with messages is read even when its estimates cannot be.
  static std::string WithoutMessages(std::string text) {
    for (const char* tag : {"<Message>", "</Message>"}) {
      const std::string from(tag);
      const std::string to = from[1] == '/' ? "</Note>" : "<Note>";
      for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
        text.replace(at, from.size(), to);
      }
    }
    return text;
  }
};

}  // namespace

TEST_F(ParseMalformed, TheUnbrokenFixtureReads) {
  EXPECT_TRUE(ReadFixture("poisson"));
  EXPECT_TRUE(Messages().empty());
}

TEST_F(ParseMalformed, ADocumentThatIsNotWellFormed) {
  ExpectFailure("<StatXML><BuildSettings></StatXML>");
  ASSERT_NE(fStats.GetBuildSettings(), nullptr);
  EXPECT_EQ(fStats.GetModelDiagnostics(), nullptr);
}

TEST_F(ParseMalformed, ATruncatedDocument) {
  const std::string text = ReadFile(FixturePath("poisson.statxml.xml"));
  ExpectFailure(text.substr(0, text.size() / 2));
}

TEST_F(ParseMalformed, TextThatIsNotUTF8) {
  ExpectFailure(Broken("value=\"count\"", "value=\"co\xFF\xFEunt\""));
}

TEST_F(ParseMalformed, TheWrongDocument) {
  ExpectFailure(fPMML);
}

TEST_F(ParseMalformed, TheWrongRootElementWithoutTheModel) {
  StatXMLPieces pieces;
  pieces.fRootName = "Report";
  pieces.fAlgorithm = "";
  ExpectFailure(pieces.Text());
}

TEST_F(ParseMalformed, MissingRequiredElements) {
  ExpectPoissonFailure("BuildSettings>", "Settings>");
  fStats.DestroyBuildSettings();
  ZORV_Session::Current().BeginCommand();
  fDocument.fRoot.fvItems.front().fpHeading->fvItems.clear();
  ExpectPoissonFailure("ModelDiagnostics>", "Diagnostics>");
}

TEST_F(ParseMalformed, AMissingEstimatesAttribute) {
  ExpectPoissonFailure("paramLabel=\"Intercept\"", "");
  EXPECT_EQ(fStats.GetParamCollect(), nullptr);
  // What was read before the estimates stays.
  EXPECT_NE(fStats.GetEffectTest(), nullptr);
  EXPECT_NE(fStats.GetEMMEANSCustomCollect(), nullptr);
}

// Estimates that cannot be read in a model with messages: the read
// succeeds, and the model has messages and no estimates.
TEST_F(ParseMalformed, BrokenEstimatesOfAModelWithMessages) {
  EXPECT_TRUE(Read(ReadFile(FixturePath("poisson.pmml.xml")), Broken("paramLabel=\"Intercept\"", "")));
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(fStats.GetParamCollect(), nullptr);
  EXPECT_TRUE(fStats.HasWarning("kGLMM_C18"));
}

TEST_F(ParseMalformed, ANumberThatIsNotANumber) {
  ExpectPoissonFailure("name=\"AICC\" value=\"", "name=\"AICC\" value=\"x");
}

TEST_F(ParseMalformed, ANumberInAnArrayThatIsNotANumber) {
  ExpectPoissonFailure("<Array n=\"6\" type=\"real\">", "<Array n=\"6\" type=\"real\">1e ");
}

TEST_F(ParseMalformed, AnArrayWhoseCountIsWrong) {
  ExpectPoissonFailure("<Array n=\"2\" type=\"string\">A B</Array>", "<Array n=\"3\" type=\"string\">A B</Array>");
}

TEST_F(ParseMalformed, ATestTypeThatIsNotARomanNumeral) {
  ExpectPoissonFailure("testType=\"III\"", "testType=\"3\"");
}

TEST_F(ParseMalformed, AFactorValueThatIsNotAValueOfItsField) {
  ExpectPoissonFailure("<Factor field=\"treatment\" value=\"A\"", "<Factor field=\"treatment\" value=\"ABC\"");
}

TEST_F(ParseMalformed, ARepeatedMeasureThatIsNotANumber) {
  ExpectPoissonFailure("<Array n=\"4\" type=\"string\">1 2 3 4", "<Array n=\"4\" type=\"string\">one 2 3 4");
  ASSERT_NE(fStats.GetStructuredData(), nullptr);
  ASSERT_TRUE(fStats.GetStructuredData()->fvRepMeasVars.empty());
}

TEST_F(ParseMalformed, ABlockNumberThatIsNegative) {
  ExpectPoissonFailure("parameterType=\"random\" block=\"0\"", "parameterType=\"random\" block=\"-1\"");
}

TEST_F(ParseMalformed, AReaderOfAnEmptyModelCanGoAtOnce) {
  auto* stats = new GNLMOutputStats;
  {
    const std::string broken = "<";
    GNLMParseOutXML reader(fProcedure.get(), fData.get(), stats, fPMML, broken);
    EXPECT_FALSE(reader.ParseXML());
  }
  delete stats;
  ExpectTheOneParsingError();
}
