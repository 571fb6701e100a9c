// The PMML side of the reader and the label maps of the StatXML.
#include <gtest/gtest.h>

#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"
#include "results/ResultsTestSupport.h"

using namespace results_test;
using Stats = GNLMOutputStats;

namespace {

class ParsePMML : public ReaderTest {};

std::string Entry(const std::string& name, const std::string& param) {
  return "<MapEntry name=\"" + name + "\"><Label>" + param + "</Label></MapEntry>";
}

const char kIntercept[] = "<RegressionParameter isIntercept=\"true\" name=\"B0\"/>";
const char kBroken[] = "<RegressionParameter name=\"B9\"/>";

}  // namespace

TEST_F(ParsePMML, TheModelFileGivesTheVariableList) {
  ASSERT_TRUE(Read(StatXMLPieces()));
  const MCXML_850::MCVarList* list = fStats.GetMCVarList();
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->Size(), 10);
  EXPECT_EQ(list->GetVarAt(7)->GetName(), "cost");
  const Stats::VariableMapInfo* info = fStats.GetVariableMapInfo();
  EXPECT_EQ(info->fvFieldToVar, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(info->fvNumCategories, (std::vector<int>{6, 4, 2, 0, 0, 0, 0, 0, 3, 3}));
  EXPECT_EQ(info->fvIsCategorical[2], true);
  EXPECT_EQ(info->fvIsCategorical[3], false);
}

TEST_F(ParsePMML, AModelFileThatCannotBeReadFailsWithoutAMessage) {
  EXPECT_FALSE(Read("<PMML><Header/>", StatXMLPieces().Text()));
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(fStats.GetBuildSettings(), nullptr);
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
  EXPECT_FALSE(Read(std::string(), StatXMLPieces().Text()));
  EXPECT_FALSE(Read("<StatXML/>", StatXMLPieces().Text()));
  EXPECT_TRUE(Messages().empty());
}

// A second ParseXML on the same reader does no work.
TEST_F(ParsePMML, ASecondParseDoesNoWork) {
  const std::string statXML = StatXMLPieces().Text();
  GNLMParseOutXML reader(fProcedure.get(), fData.get(), &fStats, fPMML, statXML);
  ASSERT_TRUE(reader.ParseXML());
  const Stats::BuildSettingsData* settings = fStats.GetBuildSettings();
  const MCXML_850::MCVarList* list = fStats.GetMCVarList();
  ASSERT_TRUE(reader.ParseXML());
  EXPECT_EQ(fStats.GetBuildSettings(), settings);
  EXPECT_EQ(fStats.GetMCVarList(), list);
  EXPECT_TRUE(reader.parsePMML("not a document"));
  EXPECT_TRUE(reader.parseCustomStat("not a document"));
}

TEST_F(ParsePMML, LabelMaps) {
  StatXMLPieces pieces;
  pieces.fMaps = "<StringMap mapId=\"0\">" + Entry("B0", kIntercept) +
                 Entry("B1", "<RegressionParameter isIntercept=\"false\" name=\"B1\"><Factor field=\"treatment\" "
                             "value=\"B\"/></RegressionParameter>") +
                 "</StringMap><StringMap mapId=\"\">" + Entry("K", kIntercept) +
                 "</StringMap><StringMap mapId=\"4\"/><StringMap mapId=\"5\">" + Entry("K", kIntercept) +
                 "</StringMap>";
  ASSERT_TRUE(Read(pieces));
  const std::vector<Stats::StringMapData>* maps = fStats.GetStringMapCollect();
  ASSERT_NE(maps, nullptr);
  ASSERT_EQ(maps->size(), 4u);
  EXPECT_EQ((*maps)[0].fMapId, 0);
  ASSERT_EQ((*maps)[0].fvEntries.size(), 2u);
  EXPECT_EQ((*maps)[0].fvEntries[1].fName, "B1");
  EXPECT_EQ((*maps)[0].fvEntries[1].fRegrParam.fvFactors[0].fFieldIndex, 2);
  // A map without an id is found only by -1.
  EXPECT_EQ((*maps)[1].fMapId, -1);
  Stats::RegrParamData found;
  EXPECT_EQ(fStats.FindValueFromStringMap(-1, "K", found), 0);
  // A map without entries is kept with none.
  EXPECT_EQ((*maps)[2].fMapId, 4);
  EXPECT_TRUE((*maps)[2].fvEntries.empty());
  std::string label;
  Stats::PrintableListData list;
  list.fPattern = "B1";
  list.fMapId = 0;
  EXPECT_TRUE(fStats.formatEffectLabel(list, label));
  EXPECT_EQ(label, "treatment=B");
}

// A bad entry followed by a good one goes unnoticed; the entry is dropped.
TEST_F(ParsePMML, ABadEntryBeforeAGoodOneIsDropped) {
  StatXMLPieces pieces;
  pieces.fMaps = "<StringMap mapId=\"0\">" + Entry("B9", kBroken) + Entry("B0", kIntercept) + "</StringMap>";
  ASSERT_TRUE(Read(pieces));
  ASSERT_EQ(fStats.GetStringMapCollect()->front().fvEntries.size(), 1u);
  EXPECT_EQ(fStats.GetStringMapCollect()->front().fvEntries[0].fName, "B0");
}

TEST_F(ParsePMML, ABadLastEntryFails) {
  StatXMLPieces pieces;
  pieces.fMaps = "<StringMap mapId=\"0\">" + Entry("B0", kIntercept) + Entry("B9", kBroken) + "</StringMap>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
  ASSERT_NE(fStats.GetStringMapCollect(), nullptr);
  EXPECT_EQ(fStats.GetStringMapCollect()->front().fvEntries.size(), 1u);
}

TEST_F(ParsePMML, AnEntryWithoutItsParameterFails) {
  StatXMLPieces pieces;
  pieces.fMaps = "<StringMap mapId=\"0\"><MapEntry name=\"B0\"/></StringMap>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

TEST_F(ParsePMML, TheLabelMapsAreRequired) {
  StatXMLPieces pieces;
  pieces.fMaps = "";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}

// A map's last entry decides; a map with no entry at all is no failure of
// its own, but the map after it starts afresh.
TEST_F(ParsePMML, AnEmptyMapLastFails) {
  StatXMLPieces pieces;
  pieces.fMaps = "<StringMap mapId=\"0\">" + Entry("B0", kIntercept) + "</StringMap><StringMap mapId=\"1\"/>";
  EXPECT_FALSE(Read(pieces));
  ExpectTheOneParsingError();
}
