#include <gtest/gtest.h>

#include <cfloat>
#include <cstring>
#include <memory>
#include <string>

#include "host/data/ZORV_DataSource.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpFormatSpec.h"
#include "host/output/BpNumber.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/output/OmDocument.h"
#include "host/strings/FacSTDictionary.h"

namespace {

// Sets the host's display settings for one test and restores them.
class DisplaySettings {
 public:
  DisplaySettings(ZORV_Session::Display variables, ZORV_Session::Display values) {
    long varSecond = 0, valSecond = 0, varFirst = 0, valFirst = 0;
    ZORV_Session::Current().GetDisplayOptions(&varSecond, &valSecond, &varFirst, &valFirst);
    fVarFirst = static_cast<ZORV_Session::Display>(varFirst);
    fVarSecond = static_cast<ZORV_Session::Display>(varSecond);
    fValFirst = static_cast<ZORV_Session::Display>(valFirst);
    fValSecond = static_cast<ZORV_Session::Display>(valSecond);
    ZORV_Session::Current().SetVariableDisplay(variables, ZORV_Session::NAMES);
    ZORV_Session::Current().SetValueDisplay(values, ZORV_Session::NAMES);
  }
  ~DisplaySettings() {
    ZORV_Session::Current().SetVariableDisplay(fVarFirst, fVarSecond);
    ZORV_Session::Current().SetValueDisplay(fValFirst, fValSecond);
  }

 private:
  ZORV_Session::Display fVarFirst, fVarSecond, fValFirst, fValSecond;
};

class OneVariableSource : public ZORV_DataSource {
 public:
  std::vector<ZORV_Variable> fvVariables;
  int ColumnCount() const override { return static_cast<int>(fvVariables.size()); }
  const ZORV_Variable* GetVariable(int index) const override { return &fvVariables.at(static_cast<std::size_t>(index)); }
  ZORV_Variable* GetVariable(int index) override { return &fvVariables.at(static_cast<std::size_t>(index)); }
  int FindVarIndex(const char*, int) const override { return -1; }
  bool MakeVariable(int, unsigned int*) override { return false; }
};

std::string Format(const BpFormatSpec& spec, double value) { return BpNumber(value, spec).GetText(); }

}  // namespace

TEST(BpString, TranslatesFixedTextsOnly) {
  FacSTDictionary dictionary(FacSTDictionary::SessionDirectory());
  dictionary.SetProcedure("Mixed");
  BpTextContext context(&dictionary, false);
  EXPECT_EQ(BpString("Dep variable is ^1", true).GetText(context), "Dependent Variable: ^1.");
  EXPECT_EQ(BpString("Dep variable is ^1", false).GetText(context), "Dep variable is ^1");
  EXPECT_EQ(BpString("B0", true).GetText(), "B0");
}

TEST(BpString, OneLineTextsLoseTheirBreaks) {
  EXPECT_EQ(BpString("C:\\data\nfile\tname", false, false).GetText(), "C:\\data file name");
  EXPECT_EQ(BpString("two\nlines", false).GetText(), "two\nlines");
}

TEST(BpNumber, WritesTheFormatAndKeepsTheValue) {
  OmCell cell;
  BpNumber(3.14159, BpFormatSpec(ZORV_Format(ZORV_Format::F, 8, 2))).FillCell(cell, BpTextContext());
  EXPECT_EQ(cell.fContent.fText, "3.14");
  EXPECT_TRUE(cell.fbNumeric);
  EXPECT_FALSE(cell.fbMissing);
  EXPECT_DOUBLE_EQ(cell.fValue, 3.14159);
  EXPECT_EQ(cell.fFormat, "F8.2");
}

TEST(BpNumber, MissingValueIsAnEmptyCell) {
  OmCell cell;
  BpNumber(-1.7976931348623157e308, BpFormatSpec()).FillCell(cell, BpTextContext());
  EXPECT_EQ(cell.fContent.fText, "");
  EXPECT_TRUE(cell.fbMissing);
  EXPECT_TRUE(cell.fbNumeric);
  EXPECT_TRUE(BpFormatSpec::IsMissing(BpFormatSpec::Missing()));
}

TEST(BpFormatSpec, StringOrUnknownFormatsWriteTenSignificantDigits) {
  EXPECT_EQ(Format(BpFormatSpec(ZORV_Format(ZORV_Format::A, 8, 0)), 2.0 / 3.0), "0.6666666667");
  EXPECT_EQ(Format(BpFormatSpec(ZORV_Format(0, 0, 0)), 1234.5), "1234.5");
  EXPECT_EQ(Format(BpFormatSpec(ZORV_Format(ZORV_Format::F, 200, 2)), 1.5), "1.50");
}

TEST(BpProcedure, NumberFormats) {
  OmDocument document;
  BpProcedure procedure(document.fRoot.AddHeading("Mixed"), "Mixed", "Mixed");
  EXPECT_EQ(Format(procedure.Count(), 12.0), "12");
  EXPECT_EQ(Format(procedure.Count(), 11.6), "12");
  EXPECT_EQ(Format(procedure.GeneralStat(), 3.14159), "3.142");
  EXPECT_EQ(Format(procedure.Significance(), 0.0004), "0.000");
  EXPECT_EQ(Format(procedure.Significance(), 0.0456), "0.046");
  EXPECT_EQ(Format(procedure.Correlation(), -0.98765), "-0.988");
  EXPECT_EQ(Format(procedure.Coefficient(), 12.34567), "12.346");
  EXPECT_EQ(Format(procedure.Coefficient(), 0.00001234), "1.234E-05");
  EXPECT_EQ(Format(procedure.Coefficient(), 0.0), "0.000");
  EXPECT_EQ(Format(procedure.CoefficientSE(), 0.0002), "2.000E-04");
  EXPECT_EQ(Format(procedure.Percent(), 45.26), "45.3%");
  EXPECT_EQ(Format(procedure.Mean(0), 2.5), "2.500");
}

TEST(BpProcedure, MeanTakesTheVariablesFormatWithTwoMoreDecimals) {
  OneVariableSource source;
  source.fvVariables.emplace_back("x", 0);
  source.fvVariables.back().SetFormat(ZORV_Format(ZORV_Format::F, 8, 1));
  source.fvVariables.emplace_back("s", 8);
  OmDocument document;
  BpProcedure procedure(document.fRoot.AddHeading("Mixed"), "Mixed", "Mixed");
  procedure.SetDataSource(&source);
  EXPECT_EQ(Format(procedure.Mean(0), 2.123456), "2.123");
  source.fvVariables[0].SetFormat(ZORV_Format(ZORV_Format::F, 8, 0));
  EXPECT_EQ(Format(procedure.Mean(0), 2.5), "2.50");
  EXPECT_EQ(Format(procedure.Mean(1), 2.5), "2.500");
  EXPECT_EQ(Format(procedure.Mean(7), 2.5), "2.500");
}

TEST(BpProcedure, SigDigitKeepsTheDigitsOfTheValue) {
  EXPECT_EQ(BpProcedure::SigDigit(95.0).GetFormat().fDecimals, 0);
  EXPECT_EQ(BpProcedure::SigDigit(97.5).GetFormat().fDecimals, 1);
  EXPECT_EQ(BpProcedure::SigDigit(0.025).GetFormat().fDecimals, 3);
  EXPECT_EQ(BpProcedure::SigDigit(1.5e-5).GetFormat().fDecimals, 6);
  EXPECT_EQ(BpProcedure::SigDigit(1e20).GetFormat().fDecimals, 0);
  EXPECT_EQ(BpProcedure::SigDigit(-DBL_MAX).GetFormat().fDecimals, 0);
  EXPECT_EQ(Format(BpProcedure::SigDigit(97.5), 97.5), "97.5");
}

TEST(BpVariable, ShowsNameLabelOrAsTheHostSays) {
  ZORV_Variable variable("age", 0);
  variable.SetLabel("Age in years");
  ZORV_Variable plain("w", 0);
  {
    DisplaySettings settings(ZORV_Session::BOTH, ZORV_Session::NAMES);
    EXPECT_EQ(BpVariable(variable, 0).GetText(), "age");
    EXPECT_EQ(BpVariable(variable, 1).GetText(), "Age in years");
    EXPECT_EQ(BpVariable(variable, 2).GetText(), "age Age in years");
    EXPECT_EQ(BpVariable(plain, 1).GetText(), "w");
    EXPECT_EQ(BpVariable(plain, 2).GetText(), "w");
    // The second setting (captions) says names.
    EXPECT_EQ(BpVariable(variable, 2).GetText(BpTextContext(nullptr, true)), "age");
  }
  {
    DisplaySettings settings(ZORV_Session::LABELS, ZORV_Session::NAMES);
    EXPECT_EQ(BpVariable(variable, BpVariable::AS_SET).GetText(), "Age in years");
  }
}

TEST(BpDataValue, ShowsValueLabelOrAsTheHostSays) {
  ZORV_Variable sex("sex", 0);
  sex.SetFormat(ZORV_Format(ZORV_Format::F, 8, 0));
  sex.ValueLabels().Add(1.0, "Male");
  OBS one;
  one.fNum = 1.0;
  OBS two;
  two.fNum = 2.0;
  DisplaySettings settings(ZORV_Session::NAMES, ZORV_Session::BOTH);
  EXPECT_EQ(BpDataValue(sex, &one, 0).GetText(), "1");
  EXPECT_EQ(BpDataValue(sex, &one, 1).GetText(), "Male");
  EXPECT_EQ(BpDataValue(sex, &one, 2).GetText(), "1 Male");
  EXPECT_EQ(BpDataValue(sex, &two, 1).GetText(), "2");
  OBS missing;
  missing.fNum = -DBL_MAX;
  EXPECT_EQ(BpDataValue(sex, &missing, 0).GetText(), ".");

  ZORV_Variable city("city", 10);
  city.ValueLabels().Add("NY", "New York");
  OBS cells[2];
  std::memcpy(cells[0].fStr, "NY      ", 8);
  std::memcpy(cells[1].fStr, "        ", 8);
  EXPECT_EQ(BpDataValue(city, cells, 0).GetText(), "NY");
  EXPECT_EQ(BpDataValue(city, cells, 1).GetText(), "New York");
}

TEST(BpAnnotation, OwnsAReplicatedText) {
  BpString text("Redundant parameter ...", true);
  BpAnnotation annotation(text.Replicate());
  EXPECT_EQ(annotation.GetMarker(), -1);
  EXPECT_EQ(annotation.GetFlag(), 0);
  BpAnnotation copy = annotation;
  ASSERT_NE(copy.GetText(), nullptr);
  EXPECT_NE(copy.GetText(), annotation.GetText());
  EXPECT_EQ(copy.Render(BpTextContext()), "Redundant parameter ...");
  BpAnnotation flagged(BpNumber(2.0).Replicate(), -1, false);
  EXPECT_EQ(flagged.GetFlag(), 0);
}
