#include "numeric/xml/MCPMMLParser.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/xml/MCVarList.h"

using MCXML_850::IMCVariable;
using MCXML_850::MCPMMLParser;
using MCXML_850::MCVarList;
using namespace MCMath_850::MCConst;

namespace {

const char kModel[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<PMML xmlns="http://www.dmg.org/PMML-4_4" version="4.4">
  <DataDictionary numberOfFields="4">
    <DataField name="y" displayName="Reaction time" optype="continuous" dataType="double">
      <Extension extender="glmixfit" name="recordIndex" value="0"/>
    </DataField>
    <DataField name="g" optype="categorical" dataType="double">
      <Extension extender="glmixfit" name="recordIndex" value="2"/>
      <Value value="1" displayValue="low"/>
      <Value value="2.5" displayValue="high"/>
    </DataField>
    <DataField name="s" optype="ordinal" dataType="string">
      <Extension extender="glmixfit" name="recordIndex" value="1"/>
      <Extension extender="glmixfit" name="stringWidth" value="6"/>
      <Value value="a b" displayValue=""/>
      <Value value="c" displayValue="C"/>
    </DataField>
    <DataField name="w" optype="continuous" dataType="double"/>
  </DataDictionary>
  <GeneralRegressionModel algorithmName="GLMM">
    <MiningSchema>
      <MiningField name="y" usageType="target"/>
      <MiningField name="g" usageType="active"/>
      <MiningField name="w" usageType="frequencyWeight"/>
    </MiningSchema>
  </GeneralRegressionModel>
</PMML>
)";

MCCommon_850::MCStatus Parse(MCPMMLParser& parser, const std::string& text) {
  std::istringstream stream(text);
  return parser.ParseToDOM(stream);
}

}  // namespace

TEST(MCPMMLParser, TheDataDictionaryGivesTheVariables) {
  MCPMMLParser parser;
  EXPECT_FALSE(parser.IsParsed());
  ASSERT_TRUE(Parse(parser, kModel).IsOK());
  EXPECT_TRUE(parser.IsParsed());
  MCVarList list;
  ASSERT_TRUE(parser.FillVarList(list, {}, false).IsOK());
  ASSERT_EQ(list.Size(), 4);
  const IMCVariable& y = *list.GetVarAt(0);
  EXPECT_EQ(y.GetName(), "y");
  EXPECT_EQ(y.GetLabel(), "Reaction time");
  EXPECT_EQ(y.GetMeasurementLevel(), MEASURE_CONTINUOUS);
  EXPECT_EQ(y.GetRole(), ROLE_TARGET);
  EXPECT_EQ(y.GetRecordIndex(), 0);
  const IMCVariable& g = *list.GetVarAt(1);
  EXPECT_EQ(g.GetMeasurementLevel(), MEASURE_NOMINAL);
  EXPECT_TRUE(g.IsCategorical());
  EXPECT_EQ(g.GetRole(), ROLE_PREDICTOR);
  EXPECT_EQ(g.GetCategoryValues(), (std::vector<double>{1.0, 2.5}));
  EXPECT_EQ(g.GetCategoryTexts(), (std::vector<std::string>{"low", "high"}));
  const IMCVariable& s = *list.GetVarAt(2);
  EXPECT_EQ(s.GetMeasurementLevel(), MEASURE_ORDINAL);
  EXPECT_EQ(s.GetStringWidth(), 6);
  EXPECT_EQ(s.GetRecordIndex(), 1);
  EXPECT_EQ(s.GetRole(), ROLE_NONE);
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(s.GetCategoryValues()[0]));
  EXPECT_EQ(s.GetCategoryTexts(), (std::vector<std::string>{"a b", "C"}));
  EXPECT_EQ(list.GetVarAt(3)->GetRole(), ROLE_FREQUENCY_WEIGHT);
  EXPECT_EQ(list.GetVarAt(3)->GetRecordIndex(), -1);
}

TEST(MCPMMLParser, TheVariablesCanBeChosen) {
  MCPMMLParser parser;
  ASSERT_TRUE(Parse(parser, kModel).IsOK());
  MCVarList list;
  list.AddVariable(IMCVariable("old", ROLE_NONE, MEASURE_UNKNOWN));
  ASSERT_TRUE(parser.FillVarList(list, {"w", "g"}, false).IsOK());
  ASSERT_EQ(list.Size(), 2);
  EXPECT_EQ(list.GetVarAt(0)->GetName(), "g");
  EXPECT_EQ(list.GetVarAt(1)->GetName(), "w");
  ASSERT_TRUE(parser.FillVarList(list, {}, true).IsOK());
  ASSERT_EQ(list.Size(), 1);
  EXPECT_EQ(list.GetVarAt(0)->GetName(), "y");
}

TEST(MCPMMLParser, TheEnginesOwnModelFileReadsBack) {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/documents/glmm/clinic.pmml.xml");
  std::ostringstream text;
  text << in.rdbuf();
  MCPMMLParser parser;
  ASSERT_TRUE(Parse(parser, text.str()).IsOK());
  MCVarList list;
  ASSERT_TRUE(parser.FillVarList(list, {}, false).IsOK());
  ASSERT_EQ(list.Size(), 10);
  EXPECT_EQ(list.GetVarAt(9)->GetCategoryTexts(), (std::vector<std::string>{"home", "ward", "icu"}));
  EXPECT_EQ(list.GetVarAt(9)->GetStringWidth(), 4);
  EXPECT_EQ(list.GetVarAt(7)->GetRole(), ROLE_TARGET);
}

TEST(MCPMMLParser, WhatIsNotAModelFileIsAnError) {
  for (const std::string& text : {std::string(), std::string("<PMML>"), std::string("<StatXML/>"),
                                 std::string("<PMML version=\"4.4\"/>"), std::string("<PMML>\xFF</PMML>")}) {
    MCPMMLParser parser;
    const MCCommon_850::MCStatus status = Parse(parser, text);
    EXPECT_TRUE(status.IsError()) << text;
    EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_MODEL_FILE_ERROR);
    EXPECT_FALSE(parser.IsParsed());
    MCVarList list;
    EXPECT_TRUE(parser.FillVarList(list, {}, false).IsError());
  }
}

TEST(MCPMMLParser, AFieldThatCannotBeReadIsAnError) {
  const std::pair<std::string, std::string> breaks[] = {
      {"name=\"y\"", "title=\"y\""},
      {"value=\"2.5\"", "value=\"2,5\""},
      {"name=\"recordIndex\" value=\"2\"", "name=\"recordIndex\" value=\"two\""},
      {"name=\"stringWidth\" value=\"6\"", "name=\"stringWidth\" value=\"-6\""}};
  for (const auto& change : breaks) {
    std::string text = kModel;
    text.replace(text.find(change.first), change.first.size(), change.second);
    MCPMMLParser parser;
    ASSERT_TRUE(Parse(parser, text).IsOK()) << change.second;
    MCVarList list;
    EXPECT_TRUE(parser.FillVarList(list, {}, false).IsError()) << change.second;
    EXPECT_EQ(list.Size(), 0);
  }
}
