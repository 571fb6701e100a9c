#pragma once

#include <gtest/gtest.h>

#include <cfloat>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/cf/CFMetaData.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/io/DataFileLoader.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "results/GNLMOutputStats.h"
#include "results/GNLMParseOutXML.h"

// Shared by the tests of the result reader: the data of the hand-written
// documents (tests/data/documents/glmm, made by make_fixtures.py there), and
// a reading of two documents into a result model under an output of its own.
namespace results_test {

const double kSysmis = -DBL_MAX;

inline std::string FixturePath(const std::string& name) {
  return std::string(GLMIX_TEST_DATA_DIR) + "/documents/glmm/" + name;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// clinic.csv with its dictionary: patient 0, visit 1, treatment 2 (string),
// dose 3, events 4, trials 5, count 6, cost 7, severity 8, choice 9 (string).
inline std::unique_ptr<ZORV_Dataset> LoadClinic() {
  std::unique_ptr<ZORV_Dataset> data(new ZORV_Dataset());
  DataFileLoader::Load(FixturePath("clinic.csv"), *data);
  return data;
}

// A StatXML document in pieces, each replaceable; the defaults make the
// smallest document the reader accepts: target cost, an intercept, one
// statistic and the intercept's estimate.
struct StatXMLPieces {
  std::string fRootName = "StatXML";
  std::string fAlgorithm = "<PredictiveSummary algorithmName=\"GLMM\"/>";
  std::string fSettings = "<Parameter name=\"TargetField\" value=\"cost\"/>";
  std::string fMaps =
      "<StringMap mapId=\"0\"><MapEntry name=\"B0\"><Label><RegressionParameter isIntercept=\"true\" "
      "name=\"B0\"/></Label></MapEntry></StringMap>";
  std::string fDiagnostics = "<Statistic name=\"AICC\" value=\"10.5\"/>";
  std::string fTraining =
      "<ParameterEstimates parameterType=\"fixed\">" + FixedStats("B0", "<RegressionParameter isIntercept=\"true\" "
                                                                       "name=\"B0\"/>") +
      "</ParameterEstimates>";

  // A ParameterStats element with every attribute and the given children.
  static std::string FixedStats(const std::string& name, const std::string& children,
                                const std::string& estimate = "1.5") {
    return "<ParameterStats paramName=\"" + name + "\" paramLabel=\"" + name + "\" estimate=\"" + estimate +
           "\" stdError=\"0.5\" df=\"20\" confIntervalLower=\"0.457\" confIntervalUpper=\"2.543\" tTest=\"3\" "
           "zTest=\"\" sig=\"0.007\" chiSquare=\"\" expEstimate=\"\" expCILower=\"\" expCIUpper=\"\" "
           "isRedundant=\"false\">" +
           children + "</ParameterStats>";
  }

  std::string Text() const {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + fRootName + "><BuildSettings>" + fSettings +
           "</BuildSettings><PMMLModel>" + fAlgorithm + fMaps + "<ModelDiagnostics>" + fDiagnostics +
           "</ModelDiagnostics><TrainingSummary>" + fTraining + "</TrainingSummary></PMMLModel></" + fRootName + ">";
  }
};

// Reads documents into fStats, with the clinic data as the data source and
// its dictionary as the metadata, under a procedure of its own.
class ReaderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZORV_Session::Current().BeginCommand();
    fData = LoadClinic();
    fMetaData = CFMetaData(*fData);
    fStats.SetDictMetadata(&fMetaData);
    fProcedure.reset(new BpProcedure(fDocument.fRoot.AddHeading("Model"), "Model", "Generalized Linear Mixed Models"));
    fPMML = ReadFile(FixturePath("clinic.pmml.xml"));
  }
  void TearDown() override {
    fProcedure.reset();
    ZORV_Session::Current().BeginCommand();
  }

  bool Read(const std::string& pmml, const std::string& statXML) {
    GNLMParseOutXML reader(fProcedure.get(), fData.get(), &fStats, pmml, statXML);
    return reader.ParseXML();
  }
  bool Read(const StatXMLPieces& pieces) { return Read(fPMML, pieces.Text()); }
  bool ReadFixture(const std::string& name) {
    return Read(ReadFile(FixturePath(name + ".pmml.xml")), ReadFile(FixturePath(name + ".statxml.xml")));
  }

  // The messages the reading left in the output.
  std::vector<std::string> Messages() const {
    std::vector<std::string> texts;
    for (const OmItem& item : fDocument.fRoot.fvItems.front().fpHeading->fvItems) {
      if (item.fKind == OmItem::MESSAGE) texts.push_back(item.fpMessage->fText);
    }
    return texts;
  }
  // A failed reading says so once, as an error.
  void ExpectTheOneParsingError() const {
    const std::vector<std::string> messages = Messages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].find("StatXML results document could not be read"), std::string::npos) << messages[0];
    EXPECT_TRUE(ZORV_Session::Current().IsFatal());
  }

  std::unique_ptr<ZORV_Dataset> fData;
  CFMetaData fMetaData;
  GNLMOutputStats fStats;
  OmDocument fDocument;
  std::unique_ptr<BpProcedure> fProcedure;
  std::string fPMML;
};

}  // namespace results_test
