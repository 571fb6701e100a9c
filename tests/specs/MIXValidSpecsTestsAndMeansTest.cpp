// Custom tests and marginal means requests, read from their records.
#include <gtest/gtest.h>

#include "base/AssertText.h"
#include "SpecsFixture.h"
#include "numeric/common/MCMV.h"

using namespace specs_test;
using MCGLMM_850::CustomTest;
using MCGLMM_850::LMatrixRow;
using MCMath_850::MCEmmeansSpec;
namespace MCConst = MCMath_850::MCConst;

namespace {

// Factors a, b and covariate x; fixed terms: the intercept, a, b and x.
class SpecsCustomTests : public SpecsFixture {
 protected:
  SpecsCustomTests() {
    SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
    SetVarList(L::N_COVARIATES, L::COVARIATES, {X});
    SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  }

  // A test record; returns its position.
  INTEGER Record(double form, int rows, INTEGER fixed, INTEGER random, INTEGER values, int labelLength,
                 INTEGER label, INTEGER kValues) {
    return fMemory.AddReals({form, static_cast<double>(rows), static_cast<double>(fixed), static_cast<double>(random),
                             static_cast<double>(values), static_cast<double>(labelLength),
                             static_cast<double>(label), static_cast<double>(kValues)});
  }

  CustomTest Fill(INTEGER record, bool useCompEffects = false) {
    CustomTest test;
    test.SetLabel("stale");
    EXPECT_TRUE(fSpecs->FillCustomTest(RealsAt(record), test, useCompEffects));
    return test;
  }
};

using SpecsCustomTestsDeathTest = SpecsCustomTests;

}  // namespace

TEST_F(SpecsCustomTests, ByEffectsWithTheInterceptsValueFirst) {
  const INTEGER counts = fMemory.AddIntegers({1, 2, 0, 1});
  const INTEGER values = fMemory.AddReals({1, 0.5, -0.5, 2, 0, 1, -1, 0});
  const INTEGER label = fMemory.AddText("a versus b");
  const INTEGER k = fMemory.AddReals({3, 4});
  const INTEGER record = Record(0.0, 2, counts, 0, values, 6, label, k);
  Read();
  const CustomTest test = Fill(record);

  EXPECT_EQ(test.GetLabel(), "a vers");
  ASSERT_EQ(test.GetNRows(), 2);
  EXPECT_FALSE(test.HasRandomPart(0));
  EXPECT_FALSE(test.HasRandomPart(1));
  const LMatrixRow& row0 = test.GetFixedRows()[0];
  EXPECT_EQ(row0.GetType(), GLMMConst_850::LROW_FIXED_WITH_INTERCEPT);
  EXPECT_EQ(row0.GetCount(), 3);
  EXPECT_EQ(row0.GetFirstValue(), 1.0);
  // b has no values, so no pair.
  EXPECT_EQ(row0.GetPairEffects(), (std::vector<int>{0, 2}));
  EXPECT_EQ(row0.GetEffectValues(0), (std::vector<double>{0.5, -0.5}));
  EXPECT_EQ(row0.GetEffectValues(2), std::vector<double>{2});
  const LMatrixRow& row1 = test.GetFixedRows()[1];
  EXPECT_EQ(row1.GetFirstValue(), 0.0);
  EXPECT_EQ(row1.GetEffectValues(0), (std::vector<double>{1, -1}));
  EXPECT_EQ(row1.GetEffectValues(2), std::vector<double>{0});
  EXPECT_EQ(test.GetKMatrix(), (std::vector<double>{3, 4}));
}

TEST_F(SpecsCustomTests, ByEffectsWithoutTheInterceptsValue) {
  const INTEGER counts = fMemory.AddIntegers({0, 2, 1, 0});
  const INTEGER values = fMemory.AddReals({1, -1, 5});
  const INTEGER record = Record(0.0, 1, counts, 0, values, 0, 0, 0);
  Read();
  const CustomTest test = Fill(record);
  ASSERT_EQ(test.GetNRows(), 1);
  const LMatrixRow& row = test.GetFixedRows()[0];
  EXPECT_EQ(row.GetType(), GLMMConst_850::LROW_FIXED);
  EXPECT_EQ(row.GetCount(), 3);
  EXPECT_EQ(row.GetEffectValues(0), (std::vector<double>{1, -1}));
  EXPECT_EQ(row.GetEffectValues(1), std::vector<double>{5});
  EXPECT_EQ(row.GetNPairs(), 2);
  // No label, no K values.
  EXPECT_EQ(test.GetLabel(), "");
  EXPECT_TRUE(test.GetKMatrix().empty());
}

TEST_F(SpecsCustomTestsDeathTest, TheInterceptTakesOneValue) {
  const INTEGER counts = fMemory.AddIntegers({2, 0, 0, 0});
  const INTEGER values = fMemory.AddReals({1, 1});
  const INTEGER record = Record(0.0, 1, counts, 0, values, 0, 0, 0);
  Read();
  CustomTest test;
  EXPECT_DEATH(fSpecs->FillCustomTest(RealsAt(record), test, false), AssertText("nEffCols == 1"));
}

TEST_F(SpecsCustomTests, WithoutAnInterceptTheCountsStartWithTheFirstEffect) {
  fMemory.SetNumericInteger(L::INTERCEPT, 0);
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  const INTEGER counts = fMemory.AddIntegers({2, 1, 0});
  const INTEGER values = fMemory.AddReals({1, -1, 3});
  const INTEGER record = Record(0.0, 1, counts, 0, values, 0, 0, 0);
  Read();
  const CustomTest test = Fill(record);
  const LMatrixRow& row = test.GetFixedRows()[0];
  EXPECT_EQ(row.GetType(), GLMMConst_850::LROW_FIXED);
  EXPECT_EQ(row.GetCount(), 3);
  EXPECT_EQ(row.GetEffectValues(0), (std::vector<double>{1, -1}));
  EXPECT_EQ(row.GetEffectValues(1), std::vector<double>{3});
}

TEST_F(SpecsCustomTests, AllValuesSizedByTheTermsWithTheIntercept) {
  const INTEGER values = fMemory.AddReals({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  const INTEGER k = fMemory.AddReals({0.5, 0.25});
  const INTEGER record = Record(1.0, 2, 5, 0, values, 0, 0, k);
  Read();
  const CustomTest test = Fill(record);
  ASSERT_EQ(test.GetNRows(), 2);
  const LMatrixRow& row0 = test.GetFixedRows()[0];
  EXPECT_EQ(row0.GetType(), GLMMConst_850::LROW_ALL_VALUES);
  EXPECT_EQ(row0.GetCount(), 4);
  EXPECT_EQ(row0.GetAllValues(), (std::vector<double>{1, 2, 3, 4, 5}));
  EXPECT_EQ(test.GetFixedRows()[1].GetAllValues(), (std::vector<double>{6, 7, 8, 9, 10}));
  EXPECT_FALSE(test.HasRandomPart(0));
  EXPECT_EQ(test.GetKMatrix(), (std::vector<double>{0.5, 0.25}));
}

TEST_F(SpecsCustomTests, RandomPartByEffects) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}, {1, 0, 0}});
  const INTEGER fixedCounts = fMemory.AddIntegers({1, 0, 1, 0});
  const INTEGER randomCounts = fMemory.AddIntegers({1, 2});
  // Per row: intercept, b, then the random intercept and two values of a.
  const INTEGER values = fMemory.AddReals({1, 2, 3, 4, 5, 10, 20, 30, 40, 50});
  const INTEGER record = Record(0.0, 2, fixedCounts, randomCounts, values, 0, 0, 0);
  Read();
  for (bool useCompEffects : {false, true}) {
    const CustomTest test = Fill(record, useCompEffects);
    ASSERT_EQ(test.GetNRows(), 2);
    EXPECT_TRUE(test.HasRandomPart(0));
    EXPECT_TRUE(test.HasRandomPart(1));
    const LMatrixRow& fixed = test.GetFixedRows()[1];
    EXPECT_EQ(fixed.GetFirstValue(), 10.0);
    EXPECT_EQ(fixed.GetEffectValues(1), std::vector<double>{20});
    const LMatrixRow& random = test.GetRandomRows()[0];
    EXPECT_EQ(random.GetType(), GLMMConst_850::LROW_RANDOM);
    EXPECT_EQ(random.GetCount(), 2);
    EXPECT_EQ(random.GetEffectValues(0), std::vector<double>{3});
    EXPECT_EQ(random.GetEffectValues(1), (std::vector<double>{4, 5}));
    EXPECT_EQ(test.GetRandomRows()[1].GetEffectValues(1), (std::vector<double>{40, 50}));
  }
}

TEST_F(SpecsCustomTests, RandomPartOfAllValues) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}, {1, 0, 0}});
  const INTEGER values = fMemory.AddReals({1, 2, 3, 4, 5, 6});
  const INTEGER record = Record(1.0, 1, 3, 3, values, 0, 0, 0);
  Read();
  const CustomTest test = Fill(record);
  ASSERT_EQ(test.GetNRows(), 1);
  EXPECT_EQ(test.GetFixedRows()[0].GetAllValues(), (std::vector<double>{1, 2, 3}));
  const LMatrixRow& random = test.GetRandomRows()[0];
  EXPECT_EQ(random.GetType(), GLMMConst_850::LROW_ALL_VALUES);
  EXPECT_EQ(random.GetCount(), 2);
  EXPECT_EQ(random.GetAllValues(), (std::vector<double>{4, 5, 6}));
}

TEST_F(SpecsCustomTests, RandomTermsWithoutRandomValuesGiveFixedRowsOnly) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}});
  const INTEGER fixedCounts = fMemory.AddIntegers({0, 1, 0, 0});
  const INTEGER randomCounts = fMemory.AddIntegers({0});
  const INTEGER values = fMemory.AddReals({7});
  const INTEGER record = Record(0.0, 1, fixedCounts, randomCounts, values, 0, 0, 0);
  Read();
  const CustomTest test = Fill(record);
  ASSERT_EQ(test.GetNRows(), 1);
  EXPECT_FALSE(test.HasRandomPart(0));
  EXPECT_EQ(test.GetFixedRows()[0].GetEffectValues(0), std::vector<double>{7});
}

TEST_F(SpecsCustomTestsDeathTest, RecordChecks) {
  const INTEGER counts = fMemory.AddIntegers({0, 1, 0, 0});
  const INTEGER values = fMemory.AddReals({1});
  const INTEGER noLabel = Record(0.0, 1, counts, 0, values, 4, 0, 0);
  const INTEGER record = Record(0.0, 1, counts, 0, values, 0, 0, 0);
  Read();
  CustomTest test;
  EXPECT_DEATH(fSpecs->FillCustomTest(RealsAt(noLabel), test, false), AssertText("intLabPtr > 0"));
  fMemory.SetNumericInteger(L::N_FIXED_TERMS, 0);
  EXPECT_DEATH(fSpecs->FillCustomTest(RealsAt(record), test, false), AssertText("nFixEffExt > 0"));
}

// ---- marginal means ----

namespace {

// Factors a, b and g (a string of width 4), covariates x and z.
class SpecsMeans : public SpecsFixture {
 protected:
  SpecsMeans() {
    SetVarList(L::N_FACTORS, L::FACTORS, {A, B, G});
    SetVarList(L::N_COVARIATES, L::COVARIATES, {X, Z});
  }

  // A request record; `factors` are 1-based places in the factor list.
  INTEGER Record(const std::vector<INTEGER>& factors, int compare, INTEGER covariates, int adjust, int refCatType,
                 double word7 = 0.0, INTEGER word8 = 0) {
    const INTEGER places = fMemory.AddIntegers(factors);
    return fMemory.AddReals({0.0, static_cast<double>(factors.size()), static_cast<double>(places),
                             static_cast<double>(compare), static_cast<double>(covariates),
                             static_cast<double>(adjust), static_cast<double>(refCatType), word7,
                             static_cast<double>(word8)});
  }

  struct Filled {
    MCEmmeansSpec fSpec;
    const OBS* fpRefValue = nullptr;
    ZORV_Format fFormat;
    std::string fRefText;
    MIXValidSpecs::RefCatTypes fRefCatType = MIXValidSpecs::REFCAT_FIRST;
    bool fbTooLong = true;
    std::vector<std::string> fvFixCov;
  };

  Filled Fill(INTEGER record) {
    Filled out;
    out.fRefText = "stale";
    out.fvFixCov = {"stale"};
    EXPECT_TRUE(fSpecs->FillEMMeansSpec(RealsAt(record), out.fSpec, out.fpRefValue, out.fFormat,
                                        out.fRefText, out.fRefCatType, out.fbTooLong, out.fvFixCov));
    return out;
  }
};

using SpecsMeansDeathTest = SpecsMeans;

}  // namespace

TEST_F(SpecsMeans, PairwiseComparisonsWithoutAReference) {
  // x fixed at 2.5 as written "2.50"; z not fixed.
  const INTEGER text = fMemory.AddText("2.50");
  const INTEGER covariates = fMemory.AddReals({-1, 2.5, 4, static_cast<double>(text), 0, 99, 0, 0});
  const INTEGER record = Record({1, 2}, 2, covariates, 2, 0);
  Read();
  const Filled out = Fill(record);
  EXPECT_EQ(out.fSpec.GetFactors(), (std::vector<int>{A, B}));
  EXPECT_EQ(out.fSpec.GetFactorsNestLevel(), (std::vector<int>{0, 0}));
  EXPECT_EQ(out.fSpec.GetCompareFactors(), std::vector<int>{B});
  EXPECT_EQ(out.fSpec.GetCovariates(), (std::vector<int>{X, Z}));
  EXPECT_EQ(out.fSpec.GetCovariateValues(), (std::vector<double>{2.5, MCCommon_850::MCMV::Missing()}));
  EXPECT_EQ(out.fvFixCov, (std::vector<std::string>{"2.50", ""}));
  EXPECT_EQ(out.fSpec.GetPAdjust(), MCConst::PADJUST_SEQ_BONFERRONI);
  EXPECT_EQ(out.fSpec.GetContrastType(), MCConst::CONTRAST_PAIRWISE);
  EXPECT_EQ(out.fSpec.GetReferenceType(), MCConst::REFERENCE_CATEGORY);
  EXPECT_EQ(out.fRefCatType, MIXValidSpecs::REFCAT_NONE);
  EXPECT_EQ(out.fpRefValue, nullptr);
  EXPECT_EQ(out.fRefText, "");
  EXPECT_FALSE(out.fbTooLong);
  EXPECT_EQ(out.fFormat, ZORV_Format(ZORV_Format::F, 8, 2));
}

TEST_F(SpecsMeans, APlainTableOfMeans) {
  const INTEGER record = Record({3}, 0, 0, 1, 0);
  Read();
  const Filled out = Fill(record);
  EXPECT_EQ(out.fSpec.GetFactors(), std::vector<int>{G});
  EXPECT_TRUE(out.fSpec.GetCompareFactors().empty());
  EXPECT_EQ(out.fSpec.GetContrastType(), MCConst::CONTRAST_PAIRWISE);
  EXPECT_EQ(out.fSpec.GetPAdjust(), MCConst::PADJUST_LSD);
  // Without a covariate block every covariate is at its mean.
  EXPECT_EQ(out.fSpec.GetCovariateValues(),
            (std::vector<double>{MCCommon_850::MCMV::Missing(), MCCommon_850::MCMV::Missing()}));
  EXPECT_EQ(out.fvFixCov, (std::vector<std::string>{"", ""}));
  // The format is zero without a compare factor.
  EXPECT_EQ(out.fFormat, ZORV_Format(0, 0, 0));
}

TEST_F(SpecsMeans, ANumericReference) {
  const INTEGER record = Record({1}, 1, 0, 3, 1, 2.0);
  Read();
  const Filled out = Fill(record);
  EXPECT_EQ(out.fSpec.GetCompareFactors(), std::vector<int>{A});
  EXPECT_EQ(out.fSpec.GetContrastType(), MCConst::CONTRAST_SIMPLE);
  EXPECT_EQ(out.fSpec.GetReferenceType(), MCConst::REFERENCE_CATEGORY);
  EXPECT_EQ(out.fSpec.GetPAdjust(), MCConst::PADJUST_SEQ_SIDAK);
  EXPECT_EQ(out.fRefCatType, MIXValidSpecs::REFCAT_VALUE);
  // The value stays in the record.
  ASSERT_NE(out.fpRefValue, nullptr);
  EXPECT_EQ(static_cast<const void*>(out.fpRefValue), static_cast<const void*>(RealsAt(record) + 7));
  EXPECT_EQ(out.fpRefValue->fNum, 2.0);
  EXPECT_EQ(out.fFormat, ZORV_Format(ZORV_Format::F, 3, 0));
}

TEST_F(SpecsMeans, ATextReference) {
  const INTEGER text = fMemory.AddText("mid");
  const INTEGER record = Record({1, 3}, 2, 0, 0, 2, 3.0, text);
  Read();
  const Filled out = Fill(record);
  EXPECT_EQ(out.fSpec.GetCompareFactors(), std::vector<int>{G});
  EXPECT_EQ(out.fRefCatType, MIXValidSpecs::REFCAT_TEXT);
  EXPECT_EQ(out.fRefText, "mid");
  ASSERT_NE(out.fpRefValue, nullptr);
  EXPECT_EQ(static_cast<const void*>(out.fpRefValue), static_cast<const void*>(RealsAt(text)));
  EXPECT_FALSE(out.fbTooLong);
  EXPECT_EQ(out.fFormat, ZORV_Format(ZORV_Format::A, 4, 0));
  EXPECT_EQ(out.fSpec.GetContrastType(), MCConst::CONTRAST_SIMPLE);
}

TEST_F(SpecsMeans, AReferenceTextWiderThanTheFactor) {
  const INTEGER text = fMemory.AddText("medium");
  const INTEGER record = Record({3}, 1, 0, 0, 2, 6.0, text);
  Read();
  const Filled out = Fill(record);
  EXPECT_EQ(out.fRefText, "medium");
  EXPECT_TRUE(out.fbTooLong);
}

TEST_F(SpecsMeans, FirstAndLastCategories) {
  const INTEGER firstRecord = Record({1}, 1, 0, 0, 3);
  const INTEGER lastRecord = Record({1}, 1, 0, 0, 4);
  Read();
  const Filled first = Fill(firstRecord);
  EXPECT_EQ(first.fRefCatType, MIXValidSpecs::REFCAT_FIRST);
  EXPECT_EQ(first.fSpec.GetContrastType(), MCConst::CONTRAST_SIMPLE);
  EXPECT_EQ(first.fSpec.GetReferenceType(), MCConst::REFERENCE_CATEGORY);
  EXPECT_EQ(first.fpRefValue, nullptr);
  const Filled last = Fill(lastRecord);
  EXPECT_EQ(last.fRefCatType, MIXValidSpecs::REFCAT_LAST);
  EXPECT_EQ(last.fSpec.GetContrastType(), MCConst::CONTRAST_SIMPLE);
  EXPECT_EQ(last.fSpec.GetReferenceType(), MCConst::REFERENCE_LAST);
  EXPECT_EQ(last.fpRefValue, nullptr);
}

// Our extension: the mean of all categories as the reference asks for
// deviation contrasts, with no reference value.
TEST_F(SpecsMeans, TheMeanOfAllCategoriesGivesDeviationContrasts) {
  const INTEGER record = Record({1}, 1, 0, 0, 5);
  Read();
  const Filled mean = Fill(record);
  EXPECT_EQ(mean.fRefCatType, MIXValidSpecs::REFCAT_MEAN);
  EXPECT_EQ(mean.fSpec.GetContrastType(), MCConst::CONTRAST_DEVIATION);
  EXPECT_EQ(mean.fpRefValue, nullptr);
}

TEST_F(SpecsMeansDeathTest, CompareFactorChecks) {
  const INTEGER beyondTable = Record({1}, 2, 0, 0, 0);
  const INTEGER noPlace = Record({0}, 1, 0, 0, 0);
  const INTEGER noFactor = Record({9}, 1, 0, 0, 0);
  const INTEGER text = fMemory.AddText("x");
  const INTEGER textWithoutCompare = Record({1}, 0, 0, 0, 2, 1.0, text);
  Read();
  MCEmmeansSpec spec;
  const OBS* refValue = nullptr;
  ZORV_Format format;
  std::string refText;
  MIXValidSpecs::RefCatTypes refCatType = MIXValidSpecs::REFCAT_NONE;
  bool tooLong = false;
  std::vector<std::string> fixCov;
  auto fill = [&](INTEGER record) {
    fSpecs->FillEMMeansSpec(RealsAt(record), spec, refValue, format, refText, refCatType, tooLong, fixCov);
  };
  EXPECT_DEATH(fill(beyondTable), AssertText("locComprFactInd < nTabFacts"));
  EXPECT_DEATH(fill(noPlace), AssertText("tabComprFactInd >= 0"));
  EXPECT_DEATH(fill(noFactor), AssertText("compareFactInd >= 0"));
  EXPECT_DEATH(fill(textWithoutCompare), AssertText("compareFactInd >= 0"));
}

TEST_F(SpecsMeans, RequestsInComponentIndices) {
  Read();
  MCEmmeansSpec pairwise;
  pairwise.AddFactor(A, 0);
  pairwise.AddFactor(G, 0);
  pairwise.AddCovariate(X, 1.5);
  pairwise.AddCovariate(Z, MCCommon_850::MCMV::Missing());
  pairwise.AddCompareFactor(G);
  pairwise.SetContrastType(MCConst::CONTRAST_PAIRWISE);
  pairwise.SetRefCateg(4);
  pairwise.SetPAdjust(MCConst::PADJUST_SEQ_SIDAK);
  pairwise.SetEmmScaleType(MCConst::EMM_SCALE_TRANSFORMED);
  pairwise.SetReferenceType(MCConst::REFERENCE_LAST);
  MCEmmeansSpec simple;
  simple.AddFactor(B, 0);
  simple.AddCompareFactor(B);
  simple.SetContrastType(MCConst::CONTRAST_SIMPLE);
  simple.SetRefCateg(1);
  MCEmmeansSpec polynomial;
  polynomial.AddFactor(A, 0);
  polynomial.AddCompareFactor(A);
  polynomial.SetContrastType(MCConst::CONTRAST_POLYNOMIAL);
  ASSERT_TRUE(polynomial.SetMetricValueList({1, 2, 4}));
  const MIXValidSpecs::ContrastPair noValue(nullptr, ZORV_Format());
  fSpecs->SetEMMeansSpec({pairwise, simple, polynomial}, {noValue, noValue, noValue}, {"", "", ""},
                         {MIXValidSpecs::REFCAT_NONE, MIXValidSpecs::REFCAT_FIRST, MIXValidSpecs::REFCAT_LAST},
                         {{"1.5", ""}, {"", ""}, {"", ""}});
  fSpecs->CompleteSpecs();
  // Record: y 0, a b g 1 2 3, x z 4 5.
  const std::vector<MCEmmeansSpec>& comp = fSpecs->GetCompEMMeansList();
  ASSERT_EQ(comp.size(), 3u);
  EXPECT_EQ(comp[0].GetFactors(), (std::vector<int>{1, 3}));
  EXPECT_EQ(comp[0].GetFactorsNestLevel(), (std::vector<int>{0, 0}));
  EXPECT_EQ(comp[0].GetCovariates(), (std::vector<int>{4, 5}));
  EXPECT_EQ(comp[0].GetCovariateValues(), (std::vector<double>{1.5, MCCommon_850::MCMV::Missing()}));
  EXPECT_EQ(comp[0].GetCompareFactors(), std::vector<int>{3});
  EXPECT_EQ(comp[0].GetContrastType(), MCConst::CONTRAST_PAIRWISE);
  EXPECT_EQ(comp[0].GetPAdjust(), MCConst::PADJUST_SEQ_SIDAK);
  EXPECT_EQ(comp[0].GetEmmScaleType(), MCConst::EMM_SCALE_TRANSFORMED);
  // The reference category goes over only with a simple contrast, and the
  // reference type never does.
  EXPECT_EQ(comp[0].GetRefCateg(), -1);
  EXPECT_EQ(comp[0].GetReferenceType(), MCConst::REFERENCE_CATEGORY);
  EXPECT_EQ(comp[1].GetFactors(), std::vector<int>{2});
  EXPECT_EQ(comp[1].GetRefCateg(), 1);
  EXPECT_EQ(comp[2].GetContrastType(), MCConst::CONTRAST_POLYNOMIAL);
  EXPECT_EQ(comp[2].GetMetricValueList(), (std::vector<double>{1, 2, 4}));
}

TEST_F(SpecsMeans, ARequestOnAnUnregisteredVariableCannotBeTranslated) {
  ReadAndComplete();
  MCEmmeansSpec request;
  request.AddFactor(SW, 0);
  MCEmmeansSpec comp;
  EXPECT_FALSE(fSpecs->CreateCompEMMeans(request, comp));
  MCEmmeansSpec withCovariate;
  withCovariate.AddCovariate(SW, 1.0);
  EXPECT_FALSE(fSpecs->CreateCompEMMeans(withCovariate, comp));
  MCEmmeansSpec withCompare;
  withCompare.AddCompareFactor(SW);
  EXPECT_FALSE(fSpecs->CreateCompEMMeans(withCompare, comp));
  MCEmmeansSpec fine;
  fine.AddFactor(A, 2);
  ASSERT_TRUE(fSpecs->CreateCompEMMeans(fine, comp));
  EXPECT_EQ(comp.GetFactors(), std::vector<int>{1});
  EXPECT_EQ(comp.GetFactorsNestLevel(), std::vector<int>{2});
}

TEST_F(SpecsMeansDeathTest, AnUntranslatableRequestIsABrokenInvariant) {
  Read();
  MCEmmeansSpec request;
  request.AddFactor(SW, 0);
  fSpecs->SetEMMeansSpec({request}, {MIXValidSpecs::ContrastPair(nullptr, ZORV_Format())}, {""},
                         {MIXValidSpecs::REFCAT_NONE}, {{"", ""}});
  EXPECT_DEATH(fSpecs->CompleteSpecs(), AssertText("emMeansOK"));
}
