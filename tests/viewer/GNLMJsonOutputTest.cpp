#include "viewer/GNLMJsonOutput.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/json/PredictionTables.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"

namespace {

using namespace prediction_tables;

// The viewer's procedure, writing into a document of its own.
class GNLMJsonOutputTest : public ::testing::Test {
 protected:
  GNLMJsonOutputTest()
      : fProcedure(fDocument.fRoot.AddHeading("Model"), "Model", "Generalized Linear Mixed Models") {}
  ~GNLMJsonOutputTest() override { ZORV_Session::Current().BeginCommand(); }

  void Show(const std::string& json) {
    GNLMJsonOutput output(&fProcedure, &fData, json);
    output.DisplayOutput();
  }
  const std::vector<OmItem>& Items() const { return fDocument.fRoot.fvItems.front().fpHeading->fvItems; }
  // The titles of the tables under the one heading, which must be there.
  std::vector<std::string> Titles() const {
    std::vector<std::string> titles;
    EXPECT_EQ(Items().size(), 1u);
    if (Items().empty()) return titles;
    EXPECT_EQ(Items()[0].fpHeading->fText, "Random Effects Parameters");
    for (const OmItem& item : Items()[0].fpHeading->fvItems) {
      EXPECT_EQ(item.fpTable->fSubType, kTitle);
      titles.push_back(item.fpTable->fTitle.fText);
    }
    return titles;
  }

  ZORV_Dataset fData;
  OmDocument fDocument;
  BpProcedure fProcedure;
};

TEST_F(GNLMJsonOutputTest, OneTableHasTheTitleAlone) {
  Show(Nested("[" + Table("a") + "]"));
  EXPECT_EQ(Titles(), std::vector<std::string>{kTitle});
  const OmTable& table = *Items()[0].fpHeading->fvItems[0].fpTable;
  ASSERT_NE(table.CellAt({1, 1}), nullptr);
  EXPECT_EQ(table.CellAt({1, 1})->fValue, 0.25);
}

TEST_F(GNLMJsonOutputTest, SeveralTablesAreNumbered) {
  Show(Nested("[" + Table("a") + "," + Table("b") + "]"));
  EXPECT_EQ(Titles(), (std::vector<std::string>{std::string(kTitle) + " 1", std::string(kTitle) + " 2"}));
}

TEST_F(GNLMJsonOutputTest, TablesAtTheTopServeWithoutTheFullPath) {
  Show(R"({"tables": [)" + Table("a") + "]}");
  EXPECT_EQ(Titles(), std::vector<std::string>{kTitle});
}

TEST_F(GNLMJsonOutputTest, ADocumentWithNeitherPathIsOneTable) {
  Show(Table("a"));
  EXPECT_EQ(Titles(), std::vector<std::string>{kTitle});
}

TEST_F(GNLMJsonOutputTest, AnEmptyArrayWritesOnlyTheHeading) {
  Show(R"({"tables": []})");
  EXPECT_TRUE(Titles().empty());
}

TEST_F(GNLMJsonOutputTest, ADocumentThatDoesNotParseWritesNothing) {
  Show("{not json");
  EXPECT_TRUE(Items().empty());
  GNLMJsonOutput output(&fProcedure, &fData, "{not json");
  EXPECT_FALSE(output.IsGood());
}

TEST_F(GNLMJsonOutputTest, TheMessageSaysTheTablesStandApart) {
  GNLMJsonOutput output(&fProcedure, &fData, "{}");
  output.MessageModelViewer();
  ASSERT_EQ(Items().size(), 1u);
  ASSERT_EQ(Items()[0].fKind, OmItem::MESSAGE);
  EXPECT_EQ(Items()[0].fpMessage->fLevel, OmMessage::WARNING);
  EXPECT_EQ(Items()[0].fpMessage->fText,
            "The table of empirical best linear unbiased predictions is shown separately from the model viewer "
            "output.");
}

}  // namespace
