// Custom tests and marginal means requests reached through the parser's
// record lists, from reading to a split's settings.
#include <gtest/gtest.h>

#include <memory>

#include "SpecsFixture.h"
#include "host/adapter/ACAInputAdapter.h"
#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMSettings.h"

using namespace specs_test;
using MCGLMM_850::CustomTest;
using MCGLMM_850::GLMMSettings;
using MCGLMM_850::LMatrixRow;
using MCMath_850::MCEmmeansSpec;
namespace MCConst = MCMath_850::MCConst;

namespace {

class SpecsLists : public SpecsFixture {
 protected:
  INTEGER TestRecord(double form, int rows, INTEGER fixed, INTEGER random, INTEGER values, const std::string& label,
                     INTEGER kValues) {
    const INTEGER labelAt = fMemory.AddText(label);
    return fMemory.AddReals({form, static_cast<double>(rows), static_cast<double>(fixed), static_cast<double>(random),
                             static_cast<double>(values), static_cast<double>(label.size()),
                             static_cast<double>(labelAt), static_cast<double>(kValues)});
  }

  INTEGER MeansRecord(const std::vector<INTEGER>& factors, int compare, INTEGER covariates, int adjust,
                      int refCatType, double word7 = 0.0, INTEGER word8 = 0) {
    const INTEGER places = fMemory.AddIntegers(factors);
    return fMemory.AddReals({0.0, static_cast<double>(factors.size()), static_cast<double>(places),
                             static_cast<double>(compare), static_cast<double>(covariates),
                             static_cast<double>(adjust), static_cast<double>(refCatType), word7,
                             static_cast<double>(word8)});
  }

  // A text reference, blank padded to at least the factor's width.
  INTEGER MeansTextRecord(const std::vector<INTEGER>& factors, int compare, const std::string& text) {
    const INTEGER textAt = fMemory.AddText(text, 8);
    return MeansRecord(factors, compare, 0, 0, 2, static_cast<double>(text.size()), textAt);
  }
};

}  // namespace

TEST_F(SpecsLists, CustomTestsInBothForms) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
  SetVarList(L::N_COVARIATES, L::COVARIATES, {X});
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{}, {1, 0, 0}, {0, 1, 0}});
  // One random block: the intercept and a, by subj.
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}, {1, 0, 0}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 1);
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({2}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({0, 0}));
  const INTEGER subjects = List({SUBJ + 1});
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({1, 1}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({subjects, subjects}));
  SetVarList(L::N_RANDOM_SUBJECTS, L::RANDOM_SUBJECTS, {SUBJ});

  // By effects: the intercept, b, then a's random values.
  const INTEGER fixedCounts = List({1, 0, 1});
  const INTEGER randomCounts = List({0, 3});
  const INTEGER values = fMemory.AddReals({1, -1, 0.5, 0.25, 0.125});
  const INTEGER k = fMemory.AddReals({9});
  const INTEGER byEffects = TestRecord(0.0, 1, fixedCounts, randomCounts, values, "b and a", k);
  // All values: three fixed, no random.
  const INTEGER allValues = TestRecord(1.0, 2, 3, 0, fMemory.AddReals({1, 0, 0, 0, 1, 0}), "", 0);
  fMemory.SetNumericInteger(L::N_CONTRASTS, 2);
  fMemory.SetNumericInteger(L::CONTRAST_LIST, fMemory.AddList({byEffects, allValues}));

  MIXValidSpecs& specs = ReadAndComplete();
  EXPECT_TRUE(fbRead);
  ASSERT_EQ(specs.GetNCustomTests(), 2);
  ASSERT_EQ(specs.GetCompCustomTests().size(), 2u);
  for (const std::vector<CustomTest>* tests : {&specs.GetCustomTests(), &specs.GetCompCustomTests()}) {
    const CustomTest& first = (*tests)[0];
    EXPECT_EQ(first.GetLabel(), "b and a");
    ASSERT_EQ(first.GetNRows(), 1);
    ASSERT_TRUE(first.HasRandomPart(0));
    const LMatrixRow& fixed = first.GetFixedRows()[0];
    EXPECT_EQ(fixed.GetType(), GLMMConst_850::LROW_FIXED_WITH_INTERCEPT);
    EXPECT_EQ(fixed.GetCount(), 2);
    EXPECT_EQ(fixed.GetFirstValue(), 1.0);
    EXPECT_EQ(fixed.GetEffectValues(1), std::vector<double>{-1});
    const LMatrixRow& random = first.GetRandomRows()[0];
    EXPECT_EQ(random.GetType(), GLMMConst_850::LROW_RANDOM);
    EXPECT_EQ(random.GetPairEffects(), std::vector<int>{1});
    EXPECT_EQ(random.GetEffectValues(1), (std::vector<double>{0.5, 0.25, 0.125}));
    EXPECT_EQ(first.GetKMatrix(), std::vector<double>{9});

    const CustomTest& second = (*tests)[1];
    EXPECT_EQ(second.GetLabel(), "");
    ASSERT_EQ(second.GetNRows(), 2);
    EXPECT_EQ(second.GetFixedRows()[1].GetAllValues(), (std::vector<double>{0, 1, 0}));
    EXPECT_FALSE(second.HasRandomPart(1));
  }
}

TEST_F(SpecsLists, MeansRequestsWithEveryReferenceKind) {
  // Split by c, so that every request is checked in two splits.
  fData.SetSplitVars({C});
  SetVarList(L::N_FACTORS, L::FACTORS, {A, G});
  SetVarList(L::N_COVARIATES, L::COVARIATES, {X});
  const INTEGER heldAt = fMemory.AddText("0.5");
  const INTEGER covariates = fMemory.AddReals({-1, 0.5, 3, static_cast<double>(heldAt)});
  const std::vector<INTEGER> records = {
      MeansRecord({1, 2}, 0, covariates, 2, 0),  // pairwise, a plain table
      MeansRecord({1}, 1, 0, 3, 1, 2.0),         // a = 2
      MeansTextRecord({1, 2}, 2, "mid"),         // g = "mid"
      MeansTextRecord({2}, 1, "medium"),         // wider than g
      MeansRecord({1}, 1, 0, 0, 3),              // the first category
      MeansRecord({2}, 1, 0, 0, 4),              // the last category
      MeansRecord({1}, 1, 0, 0, 1, 7.0),         // a = 7, in no split
  };
  fMemory.SetNumericInteger(L::N_MEANS, static_cast<INTEGER>(records.size()));
  fMemory.SetNumericInteger(L::MEANS_LIST, fMemory.AddList(records));

  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(fbRead);
  ASSERT_EQ(specs.GetNEMMeans(), 7);
  EXPECT_EQ(specs.GetContrastPairList().size(), 7u);
  EXPECT_EQ(specs.GetEmmFixCovStr().size(), 7u);
  EXPECT_EQ(specs.GetEmmRCTypeList(),
            (std::vector<MIXValidSpecs::RefCatTypes>{MIXValidSpecs::REFCAT_NONE, MIXValidSpecs::REFCAT_VALUE,
                                                     MIXValidSpecs::REFCAT_TEXT, MIXValidSpecs::REFCAT_TEXT,
                                                     MIXValidSpecs::REFCAT_FIRST, MIXValidSpecs::REFCAT_LAST,
                                                     MIXValidSpecs::REFCAT_VALUE}));
  EXPECT_EQ(specs.GetEmmRCLongList(), (std::vector<bool>{false, false, false, true, false, false, false}));
  EXPECT_EQ(specs.GetContrastString(2), "mid");
  EXPECT_EQ(specs.GetContrastString(3), "medium");
  EXPECT_EQ(specs.GetContrastString(0), "");
  EXPECT_EQ(specs.GetEmmFixCovStr()[0], std::vector<std::string>{"0.5"});
  EXPECT_EQ(specs.GetEmmFixCovStr()[1], std::vector<std::string>{""});
  EXPECT_EQ(specs.GetEMMeansList()[0].GetCovariateValues(), std::vector<double>{0.5});
  EXPECT_EQ(specs.GetEMMeansList()[1].GetCovariateValues(), std::vector<double>{MCCommon_850::MCMV::Missing()});
  EXPECT_EQ(specs.GetContrastPairList()[0].first, nullptr);
  ASSERT_NE(specs.GetContrastPairList()[1].first, nullptr);
  EXPECT_EQ(specs.GetContrastPairList()[1].first->fNum, 2.0);
  EXPECT_EQ(specs.GetContrastPairList()[1].second, ZORV_Format(ZORV_Format::F, 3, 0));
  EXPECT_EQ(specs.GetContrastPairList()[2].second, ZORV_Format(ZORV_Format::A, 4, 0));
  EXPECT_EQ(specs.GetEMMeansList()[0].GetPAdjust(), MCConst::PADJUST_SEQ_BONFERRONI);
  EXPECT_EQ(specs.GetEMMeansList()[1].GetPAdjust(), MCConst::PADJUST_SEQ_SIDAK);

  specs.CompleteSpecs();
  ASSERT_EQ(specs.GetCompEMMeansList().size(), 7u);
  // Record: y 0, a g 1 2, x 3.
  EXPECT_EQ(specs.GetCompEMMeansList()[2].GetFactors(), (std::vector<int>{1, 2}));
  EXPECT_EQ(specs.GetCompEMMeansList()[2].GetCompareFactors(), std::vector<int>{2});
  EXPECT_EQ(specs.GetCompEMMeansList()[0].GetCovariates(), std::vector<int>{3});

  auto adapter = OpenAdapter();
  GLMMSettings first;
  specs.CompleteSettings(&first, adapter.get(), 0);
  adapter->ChangeSplitNoIter();
  GLMMSettings second;
  specs.CompleteSettings(&second, adapter.get(), 1);
  specs.CompleteSplits(adapter->GetSplitCount());

  const std::vector<bool> expected = {true, true, true, false, true, true, false};
  EXPECT_EQ(specs.GetEmmValidList(), (std::vector<std::vector<bool>>{expected, expected}));
  for (const GLMMSettings* settings : {&first, &second}) {
    const std::vector<MCEmmeansSpec>& requests = settings->GetEmmeans();
    ASSERT_EQ(requests.size(), 7u);
    EXPECT_EQ(requests[0].GetContrastType(), MCConst::CONTRAST_PAIRWISE);
    EXPECT_EQ(requests[1].GetRefCateg(), 1);
    // g in ascending order: hi lo mid.
    EXPECT_EQ(requests[2].GetRefCateg(), 2);
    EXPECT_EQ(requests[3].GetRefCateg(), -1);
    EXPECT_EQ(requests[4].GetRefCateg(), 0);
    EXPECT_EQ(requests[5].GetRefCateg(), -1);
    EXPECT_EQ(requests[6].GetRefCateg(), -1);
  }
}

TEST_F(SpecsLists, NoRequestsMeansNoList) {
  MIXValidSpecs& specs = ReadAndComplete();
  EXPECT_TRUE(fbRead);
  EXPECT_EQ(specs.GetNCustomTests(), 0);
  EXPECT_TRUE(specs.GetCompCustomTests().empty());
  EXPECT_EQ(specs.GetNEMMeans(), 0);
  EXPECT_TRUE(specs.GetCompSettingsPtr()->GetEmmeans().empty());
}
