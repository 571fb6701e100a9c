#include "viewer/GNLMProcCustom.h"

#include <gtest/gtest.h>

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
#include "viewer/GNLMExports.h"
#include "viewer/GNLMJsonOutput.h"

namespace {

std::string Fixture(const std::string& name) {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/documents/glmm/" + name, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// A plug-in as the host makes it: the factory's object, given an output, the
// clinic data and their dictionary.
class PlugInTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZORV_Session::Current().BeginCommand();
    DataFileLoader::Load(std::string(GLMIX_TEST_DATA_DIR) + "/documents/glmm/clinic.csv", fData);
    fMetaData = CFMetaData(fData);
    fProcedure.reset(new BpProcedure(fDocument.fRoot.AddHeading("Model"), "Model", "Generalized Linear Mixed Models"));
    fPlugIn.reset(GetCFProcCustom());
    fPlugIn->SetProcedure(fProcedure.get());
    fPlugIn->SetDataSource(&fData);
    fPlugIn->SetMetaData(&fMetaData);
  }
  void TearDown() override {
    fPlugIn.reset();
    fProcedure.reset();
    display_result_model = false;
    ZORV_Session::Current().BeginCommand();
  }

  GNLMProcCustom& Custom() { return dynamic_cast<GNLMProcCustom&>(*fPlugIn); }
  const std::vector<OmItem>& Items() const { return fDocument.fRoot.fvItems.front().fpHeading->fvItems; }
  bool Process(const std::string& name) {
    return fPlugIn->ProcessOutputXML(std::vector<std::string>{Fixture(name + ".pmml.xml")},
                                     std::vector<CFStatXMLInfoBlock>{CFStatXMLInfoBlock(name, Fixture(name + ".statxml.xml"))},
                                     std::string());
  }

  ZORV_Dataset fData;
  CFMetaData fMetaData;
  OmDocument fDocument;
  std::unique_ptr<BpProcedure> fProcedure;
  std::unique_ptr<CFProcCustom> fPlugIn;
};

// A plug-in whose two-argument form is its own: the vector form reaches it
// through the table of virtual operations.
class OverridingPlugIn : public GNLMProcCustom {
 public:
  using GNLMProcCustom::ProcessOutputXML;
  bool ProcessOutputXML(const std::string& pmml, const CFStatXMLInfoBlock& block) override {
    fSeen = pmml + "|" + block.fStatXML;
    return true;
  }
  std::string fSeen;
};

}  // namespace

TEST_F(PlugInTest, TheFactoryMakesTheViewersPlugIn) {
  ASSERT_NE(dynamic_cast<GNLMProcCustom*>(fPlugIn.get()), nullptr);
  ASSERT_NE(Custom().GetOutputStats(), nullptr);
  EXPECT_EQ(Custom().GetJsonOutput(), nullptr);
  EXPECT_EQ(DllMain(nullptr, 0, nullptr), 1);
  GNLMProcCustom withHost(fProcedure.get(), &fData);
  EXPECT_EQ(withHost.GetProcedure(), fProcedure.get());
  EXPECT_EQ(withHost.GetDataSource(), &fData);
  EXPECT_NE(withHost.GetOutputStats(), nullptr);
}

TEST_F(PlugInTest, ProcessSyntaxTakesNoInterest) { EXPECT_TRUE(fPlugIn->ProcessSyntax(nullptr, nullptr)); }

TEST_F(PlugInTest, ADocumentPairReadsIntoTheModel) {
  ASSERT_TRUE(Process("poisson"));
  const GNLMOutputStats* stats = Custom().GetOutputStats();
  EXPECT_EQ(stats->GetDictMetadata(), &fMetaData);
  ASSERT_NE(stats->GetBuildSettings(), nullptr);
  EXPECT_EQ(stats->GetBuildSettings()->fDistribution, GNLMOutputStats::POISSON);
  ASSERT_NE(stats->GetParamCollect(), nullptr);
  // The model viewer's output follows, beginning with the model summary.
  ASSERT_FALSE(Items().empty());
  ASSERT_EQ(Items()[0].fKind, OmItem::TABLE);
  EXPECT_EQ(Items()[0].fpTable->fSubType, "ModelSummary");
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
}

TEST_F(PlugInTest, TheDebugSwitchShowsTheResultModel) {
  display_result_model = true;
  ASSERT_TRUE(Process("binomial"));
  ASSERT_GT(Items().size(), 1u);
  ASSERT_EQ(Items()[0].fKind, OmItem::TEXT);
  EXPECT_EQ(Items()[1].fKind, OmItem::TABLE);
  std::string text;
  for (const std::string& line : Items()[0].fpText->fvLines) text += line;
  EXPECT_NE(text.find("Result model"), std::string::npos);
  EXPECT_NE(text.find("Distribution: BINOMIAL (0)"), std::string::npos);
  EXPECT_NE(text.find("Message: kGLMM_C23"), std::string::npos);
}

// A read that fails leaves the model as far as it was filled, writes only
// the reader's message, and the object goes away cleanly.
TEST_F(PlugInTest, AFailedReadWritesOnlyItsMessage) {
  display_result_model = true;
  std::string broken = Fixture("poisson.statxml.xml");
  broken.resize(broken.find("<TrainingSummary>"));
  EXPECT_FALSE(fPlugIn->ProcessOutputXML(Fixture("poisson.pmml.xml"), CFStatXMLInfoBlock("poisson", broken)));
  ASSERT_EQ(Items().size(), 1u);
  EXPECT_EQ(Items()[0].fKind, OmItem::MESSAGE);
  EXPECT_NE(Custom().GetOutputStats()->GetBuildSettings(), nullptr);
  EXPECT_EQ(Custom().GetOutputStats()->GetModelDiagnostics(), nullptr);
  fPlugIn.reset();
}

TEST_F(PlugInTest, AModelFileThatCannotBeReadWritesNothing) {
  EXPECT_FALSE(fPlugIn->ProcessOutputXML(std::string(), CFStatXMLInfoBlock("x", Fixture("poisson.statxml.xml"))));
  EXPECT_TRUE(Items().empty());
  EXPECT_EQ(Custom().GetOutputStats()->GetBuildSettings(), nullptr);
}

TEST_F(PlugInTest, TheVectorFormTakesExactlyOneOfEach) {
  const std::vector<std::string> one{"p"};
  const std::vector<CFStatXMLInfoBlock> block{CFStatXMLInfoBlock("n", "s")};
  EXPECT_DEATH(fPlugIn->ProcessOutputXML(std::vector<std::string>{}, block, ""), "vPMMLStr.size\\(\\) == 1");
  EXPECT_DEATH(fPlugIn->ProcessOutputXML(std::vector<std::string>{"a", "b"}, block, ""), "vPMMLStr.size\\(\\) == 1");
  EXPECT_DEATH(fPlugIn->ProcessOutputXML(one, std::vector<CFStatXMLInfoBlock>{}, ""),
               "vStatXMLBlocks.size\\(\\) == 1");
  EXPECT_DEATH(fPlugIn->ProcessOutputXML(one, block, "<summary/>"), "summaryXMLStr.empty\\(\\)");
}

TEST_F(PlugInTest, TheVectorFormCallsTheTwoArgumentFormVirtually) {
  OverridingPlugIn plugIn;
  CFProcCustom& base = plugIn;
  EXPECT_TRUE(base.ProcessOutputXML(std::vector<std::string>{"pmml"},
                                    std::vector<CFStatXMLInfoBlock>{CFStatXMLInfoBlock("n", "statxml")}, ""));
  EXPECT_EQ(plugIn.fSeen, "pmml|statxml");
}

TEST_F(PlugInTest, WithoutStatJSONTheJSONOutputIsNothing) {
  EXPECT_TRUE(fPlugIn->ProcessOutputJSON());
  EXPECT_TRUE(Items().empty());
}

// Only the first document counts, and only when it is not empty.
TEST_F(PlugInTest, AnEmptyFirstStatJSONIsIgnored) {
  fPlugIn->SetStatJSON({});
  EXPECT_EQ(Custom().GetJsonOutput(), nullptr);
  fPlugIn->SetStatJSON({"", "{\"tables\": []}"});
  EXPECT_EQ(Custom().GetJsonOutput(), nullptr);
  EXPECT_TRUE(fPlugIn->ProcessOutputJSON());
  EXPECT_TRUE(Items().empty());
}

TEST_F(PlugInTest, AStatJSONDocumentIsKeptAndItsTablesAnnounced) {
  fPlugIn->SetStatJSON({"{\"tables\": []}", "ignored"});
  const GNLMJsonOutput* first = Custom().GetJsonOutput();
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(first->IsGood());
  fPlugIn->SetStatJSON({"not json"});
  ASSERT_NE(Custom().GetJsonOutput(), nullptr);
  EXPECT_FALSE(Custom().GetJsonOutput()->IsGood());
  EXPECT_TRUE(fPlugIn->ProcessOutputJSON());
  ASSERT_EQ(Items().size(), 1u);
  ASSERT_EQ(Items()[0].fKind, OmItem::MESSAGE);
  EXPECT_EQ(Items()[0].fpMessage->fLevel, OmMessage::WARNING);
  EXPECT_NE(Items()[0].fpMessage->fText.find("separately from the model viewer"), std::string::npos);
}

// A StatJSON document given before the documents: its tables stand after
// the covariance parameters among the model viewer's tables, and the JSON
// output writes them once more with its message. (The program therefore
// does not give the plug-in the StatJSON, whose tables it shows itself.)
TEST_F(PlugInTest, AStatJSONGivenFirstShowsItsTablesInTheirPlace) {
  fPlugIn->SetStatJSON({R"({"tables": [{"name": "t", "dimensions": [{"name": "Subject", "categories": [{"label": "1"}]}],
                           "cells": [{"at": [0], "value": 0.5}]}]})"});
  ASSERT_TRUE(Process("poisson"));
  std::vector<std::string> headings;
  for (const OmItem& item : Items()) {
    if (item.fKind == OmItem::HEADING) headings.push_back(item.fpHeading->fText);
  }
  EXPECT_EQ(headings, (std::vector<std::string>{"Random Effect Covariances", "Covariance Parameters",
                                                "Random Effects Parameters",
                                                "Estimated Marginal Means for Top Significant Fixed Effects",
                                                "Estimated Marginal Means: Treatment"}));
  EXPECT_TRUE(fPlugIn->ProcessOutputJSON());
  ASSERT_GE(Items().size(), 2u);
  EXPECT_EQ(Items()[Items().size() - 2].fpHeading->fText, "Random Effects Parameters");
  EXPECT_EQ(Items().back().fKind, OmItem::MESSAGE);
}
