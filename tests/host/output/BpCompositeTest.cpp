#include "host/output/BpComposite.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpNumber.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/strings/FacSTDictionary.h"

namespace {

const std::string kSample = std::string(GLMIX_TEST_DATA_DIR) + "/strings/sample";

// Makes a split current for one test.
class CurrentSplit {
 public:
  CurrentSplit() {
    fRegion.ValueLabels().Add(1.0, "North");
    fRegion.SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
    fYear.SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
    ZORV_Session::SplitValue region;
    region.fpVariable = &fRegion;
    region.fvValue.resize(1);
    region.fvValue[0].fNum = 1.0;
    ZORV_Session::SplitValue year = region;
    year.fpVariable = &fYear;
    year.fvValue[0].fNum = 2001.0;
    ZORV_Session::Current().SetCurrentSplit({region, year});
  }
  ~CurrentSplit() { ZORV_Session::Current().ClearCurrentSplit(); }

 private:
  ZORV_Variable fRegion{"region", 0};
  ZORV_Variable fYear{"year", 0};
};

}  // namespace

TEST(BpComposite, TranslatesThePatternBeforeExpandingIt) {
  FacSTDictionary dictionary(kSample);
  dictionary.SetProcedure("Sample");
  BpComposite composite("Value ^1 of ^2", true);
  composite.Add(BpNumber(3.0, BpProcedure::SigDigit(3.0)));
  composite.Add(BpString("x", false));
  composite.Finish();
  EXPECT_EQ(composite.GetText(BpTextContext(&dictionary, false)), "x has the value 3");
  EXPECT_EQ(composite.GetText(), "Value 3 of x");
  BpComposite plain("Value ^1 of ^2", false);
  plain.Add(BpString("1", false));
  plain.Add(BpString("y", false));
  EXPECT_EQ(plain.GetText(BpTextContext(&dictionary, false)), "Value 1 of y");
}

TEST(BpComposite, ArgumentsAreTranslatedOnTheirOwn) {
  FacSTDictionary dictionary(kSample);
  dictionary.SetProcedure("Sample");
  BpComposite composite("^1: ^2", false);
  composite.Add(BpString("Hello", true));
  composite.Add(BpString("Hello", false));
  EXPECT_EQ(composite.GetText(BpTextContext(&dictionary, false)), "Bonjour: Hello");
}

TEST(BpComposite, TranslatedListPatternKeepsItsList) {
  FacSTDictionary dictionary(kSample);
  dictionary.SetProcedure("Sample");
  BpComposite composite("Pairs [%1=%2:,^1=^2:]1", true);
  composite.Sublist();
  composite.Add(BpString("A", false));
  composite.Add(BpString("1", false));
  composite.Add(BpString("B", false));
  composite.Add(BpString("2", false));
  composite.EndSublist();
  composite.Finish();
  EXPECT_EQ(composite.GetText(BpTextContext(&dictionary, false)), "Paires : A -> 1; B -> 2");
}

TEST(BpComposite, SplitListAddsTheCurrentSplitAsPairs) {
  CurrentSplit split;
  BpComposite composite("No valid cases in split [%1=%2:,^1=^2:]1 ...", false);
  composite.Sublist();
  composite.SplitList();
  composite.EndSublist();
  composite.Finish();
  // Captions and messages use the second display setting: labels.
  EXPECT_EQ(composite.GetText(BpTextContext(nullptr, true)), "No valid cases in split region=North,year=2001 ...");
  // Without an open list, the split list is an argument of its own.
  BpComposite own("^1 [%1 = %2:, ^1 = ^2:]2", false);
  own.Add(BpString("Split", false));
  own.SplitList();
  EXPECT_EQ(own.GetText(BpTextContext(nullptr, true)), "Split region = North, year = 2001");
}

TEST(BpComposite, TheSplitIsTakenWhenTheListIsMade) {
  std::unique_ptr<BpComposite> composite(new BpComposite("[%1=%2:,^1=^2:]1", false));
  {
    CurrentSplit split;
    composite->SplitList();
  }
  EXPECT_EQ(composite->GetText(BpTextContext(nullptr, true)), "region=North,year=2001");
}

TEST(BpComposite, EmptyListAndNoSplit) {
  BpComposite composite("split [%1=%2:,^1=^2:]1.", false);
  composite.Sublist();
  composite.SplitList();
  composite.EndSublist();
  composite.Finish();
  EXPECT_EQ(composite.GetText(), "split .");
}

TEST(BpComposite, UnfinishedCompositeExpandsWithItsArguments) {
  BpComposite composite("^1 procedure continues ...", false);
  composite.Add(BpString("MIXED", false));
  EXPECT_FALSE(composite.IsFinished());
  EXPECT_EQ(composite.GetText(), "MIXED procedure continues ...");
  BpComposite open("[%1:, ^1:]1 and ^2", false);
  open.Sublist();
  open.Add(BpString("a", false));
  open.Add(BpString("b", false));
  EXPECT_EQ(open.GetText(), "a, b and ^2");
}

TEST(BpComposite, ReplicateCopiesEveryArgument) {
  std::unique_ptr<BpCellText> copy;
  {
    BpComposite composite("[:^1:]1", true);
    composite.Sublist();
    composite.Add(BpString(std::string(255, 'x'), false));
    composite.Add(BpString("y", false));
    composite.EndSublist();
    composite.Finish();
    copy.reset(composite.Replicate());
  }
  EXPECT_EQ(copy->GetText(), std::string(255, 'x') + "y");
  BpComposite assigned("other", false);
  assigned = *static_cast<BpComposite*>(copy.get());
  EXPECT_EQ(assigned.GetText(), copy->GetText());
  EXPECT_TRUE(assigned.IsFinished());
}

TEST(BpComposite, CompositeAsAnArgument) {
  BpComposite note("Target ^1", false);
  note.Add(BpString("y", false));
  BpComposite both("[%1:\n^1:]1", false);
  both.Sublist();
  both.Add(note);
  both.Add(BpString("Subject field not used ...", false));
  both.EndSublist();
  EXPECT_EQ(both.GetText(), "Target y\nSubject field not used ...");
}
