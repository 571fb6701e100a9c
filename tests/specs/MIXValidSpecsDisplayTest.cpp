// The debug text of the record.
#include <gtest/gtest.h>

#include <sstream>

#include "SpecsFixture.h"
#include "host/adapter/ACACommonDisplay.h"

using namespace specs_test;

namespace {

using SpecsDisplay = SpecsFixture;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool HasLine(const std::vector<std::string>& lines, const std::string& line) {
  for (const std::string& each : lines) {
    if (each == line) return true;
  }
  return false;
}

}  // namespace

TEST_F(SpecsDisplay, AFreshRecordShowsWhatIsNotDefined) {
  MIXValidSpecs specs(nullptr, fData);
  std::ostream* before = ACACommonDisplay::GetOutStream();
  std::ostringstream stream;
  specs.Display(stream);
  EXPECT_EQ(ACACommonDisplay::GetOutStream(), before);

  const std::vector<std::string> lines = Lines(stream.str());
  ASSERT_GE(lines.size(), 6u);
  // A banner of four lines, then the start line; the end line closes.
  EXPECT_NE(lines[1].find("This text output is for debugging purposes only."), std::string::npos);
  EXPECT_EQ(lines[0], lines[3]);
  EXPECT_EQ(lines[4], "MIXValidSpecs display start");
  EXPECT_EQ(lines.back(), "MIXValidSpecs display end");
  EXPECT_TRUE(HasLine(lines, "Dependent variable is not defined"));
  EXPECT_TRUE(HasLine(lines, "Factors are not defined"));
  EXPECT_TRUE(HasLine(lines, "Covariates are not defined"));
  EXPECT_TRUE(HasLine(lines, "Fixed effects are not defined"));
  EXPECT_TRUE(HasLine(lines, "Random effects are not defined"));
  EXPECT_TRUE(HasLine(lines, "Offset is not defined"));
  EXPECT_TRUE(HasLine(lines, "Frequency weight is not defined"));
  EXPECT_TRUE(HasLine(lines, "Regression weight is not defined"));
  EXPECT_TRUE(HasLine(lines, "Custom tests are not defined"));
  EXPECT_TRUE(HasLine(lines, "EMMEANS are not defined"));
  EXPECT_TRUE(HasLine(lines, "Saved variables are not defined"));
  EXPECT_TRUE(HasLine(lines, "OUTFILE MODEL is not defined"));
  EXPECT_TRUE(HasLine(lines, "OUTFILE PARAMETER is not defined"));
  EXPECT_TRUE(HasLine(lines, "OUTFILE STATXML is not defined"));
  EXPECT_TRUE(HasLine(lines, "OUTFILE STATJSON is not defined"));
  EXPECT_TRUE(HasLine(lines, "Component settings are not defined"));
  EXPECT_TRUE(HasLine(lines, "Confidence level (%): 95"));
  EXPECT_TRUE(HasLine(lines, "Maximum iterations: 100"));
  EXPECT_TRUE(HasLine(lines, "Missing value: missing"));
}

TEST_F(SpecsDisplay, AReadRecordShowsItsValues) {
  fData.SetWeightVar(W);
  SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
  SetVarList(L::N_COVARIATES, L::COVARIATES, {X});
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{}, {1, 0, 0}});
  fMemory.SetNumericInteger(L::FILE_KIND, 2);
  SetText(L::MODEL_FILE, "model.xml");
  SetText(L::STATXML_FILE, "stats.xml");
  fMemory.SetNumericInteger(L::N_SAVES, 1);
  fMemory.SetNumericInteger(L::SAVE_KINDS, 3);
  fMemory.SetNumericInteger(L::SAVE_NAMES, fMemory.AddText("RESID", L::SAVE_NAME_BYTES));
  MIXValidSpecs& specs = ReadAndComplete();
  std::ostringstream stream;
  specs.Display(stream);
  const std::vector<std::string> lines = Lines(stream.str());
  EXPECT_TRUE(HasLine(lines, "Dependent variable: y (0)"));
  EXPECT_TRUE(HasLine(lines, "Dependent variable (component): 0"));
  EXPECT_TRUE(HasLine(lines, "Factors: \"a (1)\", \"b (2)\""));
  EXPECT_TRUE(HasLine(lines, "Covariates: \"x (4)\""));
  EXPECT_TRUE(HasLine(lines, "Frequency weight: w (8)"));
  EXPECT_TRUE(HasLine(lines, "OUTFILE MODEL: model.xml"));
  EXPECT_TRUE(HasLine(lines, "OUTFILE STATXML: stats.xml"));
  EXPECT_TRUE(HasLine(lines, "OUTFILE PARAMETER is not defined"));
  EXPECT_TRUE(HasLine(lines, "Saved variable: RESID"));
  EXPECT_TRUE(HasLine(lines, "Label: Residual"));
  EXPECT_TRUE(HasLine(lines, "Format: F11.4"));
  EXPECT_TRUE(HasLine(lines, "Component settings:"));
  EXPECT_FALSE(HasLine(lines, "Dependent variable is not defined"));
  EXPECT_FALSE(HasLine(lines, "Fixed effects are not defined"));
  EXPECT_EQ(lines.back(), "MIXValidSpecs display end");
}

TEST_F(SpecsDisplay, TheSameTextGoesToTheFrontEndInPieces) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{}, {1, 0}, {0, 1}, {1, 1}});
  MIXValidSpecs& specs = ReadAndComplete();
  std::ostringstream stream;
  specs.Display(stream);
  ASSERT_GT(stream.str().size(), 4096u);

  specs.Display();
  const OmHeading& node = *fDocument.fRoot.fvItems[0].fpHeading;
  ASSERT_FALSE(node.fvItems.empty());
  ASSERT_EQ(node.fvItems.back().fKind, OmItem::TEXT);
  const std::vector<std::string>& lines = node.fvItems.back().fpText->fvLines;
  // A new line, continued by each piece.
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], stream.str());
}
