// The host driving the model viewer's plug-in after a GLMIXFIT command.
#include "app/AppModelViewer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "base/MixExports.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/files/BEPesRepos.h"
#include "host/io/DataFileLoader.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "run/MixDriver.h"

namespace fs = std::filesystem;

namespace {

std::string FixturePath(const std::string& name) { return std::string(GLMIX_TEST_DATA_DIR) + "/documents/glmm/" + name; }

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The texts of the items of a heading, each as "kind: text" ("heading: ...",
// "message: ...", "text: ..."), tables by their sub-type.
std::vector<std::string> Outline(const OmHeading& heading) {
  std::vector<std::string> items;
  for (const OmItem& item : heading.fvItems) {
    switch (item.fKind) {
      case OmItem::HEADING:
        items.push_back("heading: " + item.fpHeading->fText);
        break;
      case OmItem::TABLE:
        items.push_back("table: " + item.fpTable->fSubType);
        break;
      case OmItem::MESSAGE:
        items.push_back("message: " + item.fpMessage->fText);
        break;
      case OmItem::TEXT:
        items.push_back("text: " + (item.fpText->fvLines.empty() ? std::string() : item.fpText->fvLines.back()));
        break;
      case OmItem::CHART:
        items.push_back("chart");
        break;
    }
  }
  return items;
}

// The heading of that text directly under a heading; a heading without
// items when there is none.
const OmHeading& Child(const OmHeading& heading, const std::string& text) {
  static const OmHeading kNone;
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::HEADING && item.fpHeading->fText == text) return *item.fpHeading;
  }
  return kNone;
}

bool Contains(const std::vector<std::string>& items, const std::string& text) {
  for (const std::string& item : items) {
    if (item.find(text) != std::string::npos) return true;
  }
  return false;
}

// The repository and the output of one command, driven by hand.
class ModelViewerDriver : public ::testing::Test {
 protected:
  void SetUp() override {
    ZORV_Session::Current().BeginCommand();
    BEPesRepos::BEPesClear();
    DataFileLoader::Load(FixturePath("clinic.csv"), fData);
    fDir = fs::temp_directory_path() / ("glmixfit-viewer-test-" + std::to_string(::getpid()));
    fs::create_directories(fDir);
    fProcedure.reset(new BpProcedure(fDocument.fRoot.AddHeading("Mixed Model"), "Mixed Model", "Mixed"));
    fProcedure->SetDataSource(&fData);
  }
  void TearDown() override {
    fProcedure.reset();
    BEPesRepos::BEPesClear();
    display_output = false;
    ZORV_Session::Current().BeginCommand();
    std::error_code ec;
    fs::remove_all(fDir, ec);
  }

  // Hands a document over as the procedure does, under its own name.
  void Store(const std::string& name, const std::string& content, int kind = BEPesRepos::KIND_XML) {
    const std::string path = (fDir / name).string();
    std::ofstream(path, std::ios::binary) << content;
    ASSERT_TRUE(TestAndStoreToPes(path.c_str(), kind, 1));
  }
  void StoreFixture(const std::string& name) {
    Store(name + ".pmml.xml", ReadText(FixturePath(name + ".pmml.xml")));
    Store(name + ".statxml.xml", ReadText(FixturePath(name + ".statxml.xml")));
  }
  // Makes the split of the treatment of a record of the data the current
  // one, as the procedure does while it fits that split.
  void EnterSplitOf(long row) {
    ZORV_Session::SplitValue split;
    split.fpVariable = fData.GetVariable(2);
    split.fvValue.assign(fData.GetCell(row, 2), fData.GetCell(row, 2) + fData.GetColumnWords(2));
    ZORV_Session::Current().SetCurrentSplit({split});
  }
  const OmHeading& Command() const { return *fDocument.fRoot.fvItems.front().fpHeading; }
  // The model viewer's output, under its heading after the command's own.
  const OmHeading& Viewer() const { return Child(Command(), "Model Viewer"); }

  ZORV_Dataset fData;
  OmDocument fDocument;
  std::unique_ptr<BpProcedure> fProcedure;
  fs::path fDir;
};

}  // namespace

TEST_F(ModelViewerDriver, AnEmptyRepositoryShowsNothing) {
  AppModelViewer::Run(*fProcedure, fData);
  EXPECT_TRUE(Command().fvItems.empty());
}

TEST_F(ModelViewerDriver, EachModelIsShownUnderTheCommand) {
  display_output = true;
  StoreFixture("poisson");
  Store("statjson.json", "{\"tables\": []}", BEPesRepos::KIND_JSON);
  StoreFixture("gamma");
  AppModelViewer::Run(*fProcedure, fData);
  // Each model's dump, then its tables; the StatJSON is not the viewer's,
  // so no JSON message.
  EXPECT_EQ(Outline(Command()), std::vector<std::string>{"heading: Model Viewer"});
  std::vector<std::string> dumps;
  std::size_t summaries = 0;
  for (const OmItem& item : Viewer().fvItems) {
    if (item.fKind == OmItem::TEXT) {
      std::string text;
      for (const std::string& line : item.fpText->fvLines) text += line + "\n";
      dumps.push_back(text);
    }
    if (item.fKind == OmItem::TABLE && item.fpTable->fSubType == "ModelSummary") ++summaries;
  }
  ASSERT_EQ(dumps.size(), 2u);
  EXPECT_NE(dumps[0].find("Distribution: POISSON"), std::string::npos);
  EXPECT_NE(dumps[1].find("Distribution: GAMMA"), std::string::npos);
  EXPECT_EQ(summaries, 2u);
  EXPECT_FALSE(Contains(Outline(Viewer()), "separately"));
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
}

TEST_F(ModelViewerDriver, WithoutTheDebugSwitchTheModelViewerWritesItsTables) {
  StoreFixture("poisson");
  AppModelViewer::Run(*fProcedure, fData);
  const std::vector<std::string> items = Outline(Viewer());
  ASSERT_FALSE(items.empty());
  EXPECT_EQ(items[0], "table: ModelSummary");
  EXPECT_FALSE(Contains(items, "text: "));
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
}

// A StatXML document that cannot be read says so, once, as an error.
TEST_F(ModelViewerDriver, ADocumentThatCannotBeReadIsReported) {
  Store("model.xml", ReadText(FixturePath("poisson.pmml.xml")));
  Store("statxml.xml", "<?xml version=\"1.0\"?>\n<StatXML><BuildSettings/></StatXML>");
  AppModelViewer::Run(*fProcedure, fData);
  const std::vector<std::string> items = Outline(Viewer());
  ASSERT_EQ(items.size(), 1u);
  EXPECT_TRUE(Contains(items, "message: The StatXML results document could not be read")) << items[0];
  EXPECT_TRUE(ZORV_Session::Current().IsFatal());
}

// Without a model file the viewer has no variables: nothing is shown.
TEST_F(ModelViewerDriver, AStatXMLWithoutAModelFileShowsNothing) {
  display_output = true;
  Store("statxml.xml", ReadText(FixturePath("poisson.statxml.xml")));
  AppModelViewer::Run(*fProcedure, fData);
  EXPECT_TRUE(Command().fvItems.empty());
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
}

// Each split's documents go under a heading titled by the split.
TEST_F(ModelViewerDriver, EachSplitStandsUnderItsTitle) {
  display_output = true;
  fData.SetSplitVars({2});
  EnterSplitOf(0);
  StoreFixture("poisson");
  EnterSplitOf(12);
  Store("model-b.xml", ReadText(FixturePath("poisson.pmml.xml")));
  Store("statxml-b.xml", "<StatXML/>");
  ZORV_Session::Current().ClearCurrentSplit();
  AppModelViewer::Run(*fProcedure, fData);
  const std::vector<std::string> items = Outline(Viewer());
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0], "heading: Split file: Treatment = Active");
  EXPECT_EQ(items[1], "heading: Split file: Treatment = Placebo");
  EXPECT_TRUE(Contains(Outline(*Viewer().fvItems[0].fpHeading), "text: "));
  EXPECT_TRUE(Contains(Outline(*Viewer().fvItems[0].fpHeading), "table: ModelSummary"));
  EXPECT_TRUE(Contains(Outline(*Viewer().fvItems[1].fpHeading), "message: The StatXML results document"));
  // The split is not left current, and the tables of the viewer are not
  // the run side's split tables.
  EXPECT_TRUE(ZORV_Session::Current().GetCurrentSplit().empty());
}

// A split whose documents show nothing leaves no heading.
TEST_F(ModelViewerDriver, AnEmptySplitHeadingGoes) {
  fData.SetSplitVars({2});
  EnterSplitOf(0);
  StoreFixture("poisson");
  EnterSplitOf(12);
  Store("statxml-b.xml", ReadText(FixturePath("poisson.statxml.xml")));
  ZORV_Session::Current().ClearCurrentSplit();
  AppModelViewer::Run(*fProcedure, fData);
  const std::vector<std::string> items = Outline(Viewer());
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0], "heading: Split file: Treatment = Active");
}

// The program drives the plug-in after every GLMIXFIT, split files
// included: with the debug switch each split's result model is shown under
// its title, and the numbers are the fit's.
TEST(AppModelViewer, TheProgramDrivesThePlugInAfterEachFit) {
  struct Hook {
    Hook() { AppProcedureHook::Set(MixDriver); }
    ~Hook() { AppProcedureHook::Set(nullptr); }
  } hook;
  const fs::path output = fs::temp_directory_path() / ("glmixfit-viewer-run-" + std::to_string(::getpid()));
  AppOptions options;
  options.fOutputDir = output.string();
  AppSession session(options);
  session.RunText(
      "LOAD 'data/orthodont.csv'.\nSPLIT BY Sex SEPARATE.\nDEBUG display_output ON.\n"
      "GLMIXFIT distance WITH age /FIXED age /RANDOM INTERCEPT SUBJECTS=Subject.\n",
      "t.gmx", std::string(GLMIX_SOURCE_DIR) + "/examples");
  EXPECT_EQ(session.ExitStatus(), 0);
  const OmHeading& command = *session.GetDocument().fRoot.fvItems.back().fpHeading;
  std::vector<const OmHeading*> splits;
  for (const OmItem& item : Child(command, "Model Viewer").fvItems) {
    if (item.fKind == OmItem::HEADING && item.fpHeading->fText.rfind("Split file: ", 0) == 0) {
      splits.push_back(item.fpHeading.get());
    }
  }
  ASSERT_EQ(splits.size(), 2u);
  EXPECT_NE(splits[0]->fText.find("Female"), std::string::npos) << splits[0]->fText;
  EXPECT_NE(splits[1]->fText.find("Male"), std::string::npos) << splits[1]->fText;
  for (const OmHeading* split : splits) {
    ASSERT_GT(split->fvItems.size(), 1u);
    ASSERT_EQ(split->fvItems[0].fKind, OmItem::TEXT);
    std::string text;
    for (const std::string& line : split->fvItems[0].fpText->fvLines) text += line;
    EXPECT_NE(text.find("Result model"), std::string::npos);
    EXPECT_NE(text.find("Target: distance"), std::string::npos);
    // The split's tables follow its dump.
    EXPECT_TRUE(Contains(Outline(*split), "table: ModelSummary"));
    EXPECT_TRUE(Contains(Outline(*split), "heading: Covariance Parameters"));
  }
  display_output = false;
  std::error_code ec;
  fs::remove_all(output, ec);
}
