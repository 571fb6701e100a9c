#include "output/MIXComOutputData.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstring>
#include <string>
#include <vector>

#include "base/MIXCommandLayout.h"
#include "base/MixExports.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/OmDocument.h"
#include "host/parser/ParserMemory.h"
#include "params/MIXParameterMap.h"
#include "specs/MIXValidSpecs.h"

namespace {

namespace L = MIXCommandLayout;

const double kMissing = -DBL_MAX;

TEST(EncodeDouble, TheMissingValueIsAPointWhateverTheFormat) {
  EXPECT_EQ(MIXComOutputData::EncodeDouble(kMissing, nullptr), ".");
  const ZORV_Format f(ZORV_Format::F, 12, 2);
  EXPECT_EQ(MIXComOutputData::EncodeDouble(kMissing, &f), ".");
  // A string format would be a broken invariant for any other value.
  const ZORV_Format a(ZORV_Format::A, 8, 0);
  EXPECT_EQ(MIXComOutputData::EncodeDouble(kMissing, &a), ".");
}

TEST(EncodeDouble, WithoutFormatSeventeenSignificantDigits) {
  EXPECT_EQ(MIXComOutputData::EncodeDouble(0.1, nullptr), "0.10000000000000001");
  EXPECT_EQ(MIXComOutputData::EncodeDouble(2.0, nullptr), "2");
  EXPECT_EQ(MIXComOutputData::EncodeDouble(-1234.5, nullptr), "-1234.5");
  EXPECT_EQ(MIXComOutputData::EncodeDouble(1e300, nullptr), "1.0000000000000001e+300");
  // A decimal comma could only come from the locale, and never passes.
  EXPECT_EQ(MIXComOutputData::EncodeDouble(1.0 / 3.0, nullptr).find(','), std::string::npos);
}

TEST(EncodeDouble, AFormatIsWidenedToFortyAndTrimmed) {
  const ZORV_Format f12(ZORV_Format::F, 12, 2);
  EXPECT_EQ(MIXComOutputData::EncodeDouble(3.14159, &f12), "3.14");
  // Too wide for twelve places, yet written in full once widened.
  EXPECT_EQ(MIXComOutputData::EncodeDouble(123456789012345.0, &f12), "123456789012345.00");
  const ZORV_Format f3(ZORV_Format::F, 3, 0);
  EXPECT_EQ(MIXComOutputData::EncodeDouble(-98765.0, &f3), "-98765");
  const ZORV_Format comma(ZORV_Format::COMMA, 6, 1);
  EXPECT_EQ(MIXComOutputData::EncodeDouble(1234567.25, &comma), "1,234,567.3");
}

TEST(EncodeDeathTest, AStringFormatIsABrokenInvariant) {
  const ZORV_Format a(ZORV_Format::A, 8, 0);
  EXPECT_DEATH(MIXComOutputData::EncodeDouble(1.0, &a), "type != ZORV_Format::A && type != ZORV_Format::AHEX");
  const ZORV_Format date(20, 41, 0);
  EXPECT_DEATH(MIXComOutputData::EncodeDouble(1.0, &date),
               "width <= \\(unsigned short\\)ZORV_Variable::MAXNUMFMTWID");
}

class FormatWords : public ::testing::Test {
 protected:
  FormatWords() { fMemory.AddInteger(0); }
  ~FormatWords() override { exposemix_(0, 0); }

  ZORV_Format At128(std::uint32_t word) {
    fMemory.SetNumericInteger(L::CRITERIA_FORMAT, word);
    exposemix_(fMemory.GetNumericAddress(), fMemory.GetCharacterAddress());
    return MIXComOutputData::GetTableFormat(L::CRITERIA_FORMAT);
  }

  static std::uint32_t Word(int type, int width, int decimals) {
    return static_cast<std::uint32_t>(decimals) | (static_cast<std::uint32_t>(width) << 8) |
           (static_cast<std::uint32_t>(type) << 16);
  }

  ParserMemory fMemory;
};

TEST_F(FormatWords, ThePackedWordGivesTheFormat) {
  EXPECT_EQ(At128(Word(5, 40, 3)), ZORV_Format(ZORV_Format::F, 40, 3));
  EXPECT_EQ(At128(Word(6, 12, 4)), ZORV_Format(ZORV_Format::E, 12, 4));
  // A numeric width above 40 becomes 40.
  EXPECT_EQ(At128(Word(5, 60, 2)), ZORV_Format(ZORV_Format::F, 40, 2));
  // String formats keep their width; A carries its high byte in the decimals.
  EXPECT_EQ(At128(Word(2, 60, 0)), ZORV_Format(ZORV_Format::AHEX, 60, 0));
  EXPECT_EQ(At128(Word(1, 4, 1)), ZORV_Format(ZORV_Format::A, 260, 0));
  // The word at 136 is read the same way; only the low 32 bits count.
  fMemory.SetNumericInteger(L::ESTIMATES_FORMAT, (static_cast<INTEGER>(7) << 40) | Word(5, 12, 4));
  EXPECT_EQ(MIXComOutputData::GetTableFormat(L::ESTIMATES_FORMAT), ZORV_Format(ZORV_Format::F, 12, 4));
  EXPECT_EQ(MIXComOutputData::GetCmnMixMap(), fMemory.GetNumericAddress());
  EXPECT_EQ(MIXComOutputData::GetCmaMixMap(), fMemory.GetCharacterAddress());
}

TEST(GlobalDisplayOption, ReadsTheFourSettingsLessOne) {
  ZORV_Session& session = ZORV_Session::Current();
  session.SetVariableDisplay(ZORV_Session::NAMES, ZORV_Session::BOTH);
  session.SetValueDisplay(ZORV_Session::LABELS, ZORV_Session::NAMES);
  EXPECT_EQ(MIXComOutputData::GlobalDisplayOption(false, true), 2);
  EXPECT_EQ(MIXComOutputData::GlobalDisplayOption(false, false), 0);
  EXPECT_EQ(MIXComOutputData::GlobalDisplayOption(true, true), 0);
  EXPECT_EQ(MIXComOutputData::GlobalDisplayOption(true, false), 1);
  session.BeginCommand();
  session.SetVariableDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
  session.SetValueDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
}

// Split variables: a numeric one with labels, a string one with value
// labels only, and a numeric one with neither.
class SplitNames : public ::testing::Test {
 protected:
  SplitNames() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed"), fSpecs(nullptr, fData) {
    fGroup = fData.AddVariable("group", 0);
    fSite = fData.AddVariable("site", 6);
    fRun = fData.AddVariable("run", 0);
    ZORV_Variable& group = *fData.GetVariable(fGroup);
    group.SetLabel("Treatment group");
    group.SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
    group.ValueLabels().Add(1.0, "Control");
    group.SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
    fData.GetVariable(fSite)->ValueLabels().Add("north", "Northern site");
    fData.GetVariable(fRun)->SetFormat(ZORV_Format(ZORV_Format::F, 5, 1));
    fValues[0].fNum = 1.0;
    std::memcpy(fValues[1].fStr, "north   ", 8);
    fValues[2].fNum = 2.25;
    fPointers = {&fValues[0], &fValues[1], &fValues[2]};
  }
  ~SplitNames() override {
    ZORV_Session& session = ZORV_Session::Current();
    session.BeginCommand();
    session.SetVariableDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
    session.SetValueDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
  }

  std::string Name(ZORV_Session::Display variables, ZORV_Session::Display values) {
    ZORV_Session::Current().SetVariableDisplay(ZORV_Session::NAMES, variables);
    ZORV_Session::Current().SetValueDisplay(ZORV_Session::NAMES, values);
    MIXComOutputData data(&fSpecs, nullptr, fData, &fProcedure);
    return data.GetSplitName(fPointers, true);
  }

  ZORV_Dataset fData;
  OmDocument fDocument;
  BpProcedure fProcedure;
  MIXValidSpecs fSpecs;
  int fGroup = -1;
  int fSite = -1;
  int fRun = -1;
  OBS fValues[3];
  std::vector<OBS*> fPointers;
};

TEST_F(SplitNames, AnUnsplitFileHasNoName) {
  EXPECT_EQ(Name(ZORV_Session::BOTH, ZORV_Session::BOTH), "");
}

TEST_F(SplitNames, NamesAndValuesAsTheDisplaySettingsSay) {
  ASSERT_TRUE(fData.SetSplitVars({fGroup, fSite, fRun}));
  EXPECT_EQ(Name(ZORV_Session::NAMES, ZORV_Session::NAMES), "group = 1, site = north , run = 2.3");
  EXPECT_EQ(Name(ZORV_Session::LABELS, ZORV_Session::LABELS),
            "Treatment group = Control, site = Northern site, run = 2.3");
  EXPECT_EQ(Name(ZORV_Session::BOTH, ZORV_Session::BOTH),
            "group Treatment group = 1 Control, site = north  Northern site, run = 2.3");
}

TEST_F(SplitNames, TheCaptionSettingsCountNotTheTableSettings) {
  ASSERT_TRUE(fData.SetSplitVars({fGroup}));
  ZORV_Session::Current().SetVariableDisplay(ZORV_Session::LABELS, ZORV_Session::NAMES);
  ZORV_Session::Current().SetValueDisplay(ZORV_Session::LABELS, ZORV_Session::NAMES);
  MIXComOutputData data(&fSpecs, nullptr, fData, &fProcedure);
  EXPECT_EQ(data.GetSplitName(fPointers, true), "group = 1");
  EXPECT_EQ(data.GetSplitName(fPointers, false), "Treatment group = Control");
}

TEST_F(SplitNames, AVariableWithoutLabelKeepsItsName) {
  ASSERT_TRUE(fData.SetSplitVars({fRun}));
  const std::vector<OBS*> values = {&fValues[2]};
  for (ZORV_Session::Display display : {ZORV_Session::NAMES, ZORV_Session::LABELS, ZORV_Session::BOTH}) {
    ZORV_Session::Current().SetVariableDisplay(ZORV_Session::NAMES, display);
    ZORV_Session::Current().SetValueDisplay(ZORV_Session::NAMES, display);
    MIXComOutputData data(&fSpecs, nullptr, fData, &fProcedure);
    EXPECT_EQ(data.GetSplitName(values, true), "run = 2.3") << display;
  }
}

TEST_F(SplitNames, WithoutFactoryTheDataHasEmptyMapsAndNoCaptions) {
  MIXComOutputData data(&fSpecs, nullptr, fData, &fProcedure);
  EXPECT_EQ(data.GetFactory(), nullptr);
  EXPECT_EQ(data.GetCompSettings(), nullptr);
  ASSERT_NE(data.GetFixParamMap(), nullptr);
  EXPECT_EQ(data.GetFixParamMap()->GetParamMapSize(), 0);
  EXPECT_TRUE(data.GetRandParamMaps()->empty());
  data.GenerateMaps();
  EXPECT_EQ(data.GetFixParamMap()->GetEffectMapSize(), 0);
  BpPivotTable table = fProcedure.PivotTable(BpString("Information Criteria", true), BpString("Probe", false), true);
  data.AddTableCaption(table, true);
  EXPECT_TRUE(table.GetOmTable()->fvNotes.empty());
}

}  // namespace
