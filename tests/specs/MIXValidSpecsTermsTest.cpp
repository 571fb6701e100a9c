// Model terms: term rows, random blocks, the repeated block, and their
// translation to component indices.
#include <gtest/gtest.h>

#include "base/AssertText.h"
#include "SpecsFixture.h"
#include "host/adapter/ACAVarValidSpecs.h"

using namespace specs_test;
using MCGLMM_850::GLMMRandomSpec;
using MCMath_850::MCModelEffect;

namespace {

// Factors a, b, c and covariates x, z: a term row has five words.
class SpecsTerms : public SpecsFixture {
 protected:
  SpecsTerms() {
    SetVarList(L::N_FACTORS, L::FACTORS, {A, B, C});
    SetVarList(L::N_COVARIATES, L::COVARIATES, {X, Z});
  }

  // Reads one row with the record's lists; the cursor must move by a row.
  MCModelEffect ReadRow(const std::vector<INTEGER>& row, std::vector<bool>& flags) {
    const INTEGER position = fMemory.AddIntegers(row);
    INTEGER* cursor = fMemory.GetIntegerWords() + (position - 1);
    MCModelEffect effect;
    EXPECT_TRUE(fSpecs->FillModelEffect(cursor, effect, flags));
    EXPECT_EQ(cursor, fMemory.GetIntegerWords() + (position - 1) + 5);
    return effect;
  }

  // A list of words in the array; returns its position.
  INTEGER List(const std::vector<INTEGER>& words) { return fMemory.AddIntegers(words); }
};

using SpecsTermsDeathTest = SpecsTerms;

}  // namespace

TEST_F(SpecsTerms, AllZeroRowIsTheIntercept) {
  Read();
  std::vector<bool> flags = {true, true, true};
  MCModelEffect effect = ReadRow({0, 0, 0, 0, 0}, flags);
  EXPECT_TRUE(effect.IsIntercept());
  EXPECT_EQ(flags, (std::vector<bool>{false, false}));
  EXPECT_TRUE(effect.GetVarsIndicesForTheEffectInSetting().empty());
  EXPECT_EQ(effect.GetVarIndices(), (std::vector<int>{A, B, C, X, Z}));
}

TEST_F(SpecsTerms, FactorsByLevelThenInListOrder) {
  Read();
  std::vector<bool> flags;
  // a at level 2, b and c at level 1: a is nested in b*c.
  MCModelEffect effect = ReadRow({2, 1, 1, 0, 0}, flags);
  EXPECT_EQ(effect.GetFactors(), (std::vector<int>{B, C, A}));
  // b opens the first level, c joins it, a opens the next.
  EXPECT_EQ(effect.GetFactorLevels(), (std::vector<int>{0, 0, 1}));
  EXPECT_EQ(effect.GetVarsIndicesForTheEffectInSetting(), (std::vector<int>{B, C, A}));
}

TEST_F(SpecsTerms, CrossedFactorsShareOneLevel) {
  Read();
  std::vector<bool> flags;
  MCModelEffect effect = ReadRow({1, 0, 1, 0, 0}, flags);
  EXPECT_EQ(effect.GetFactors(), (std::vector<int>{A, C}));
  EXPECT_EQ(effect.GetFactorLevels(), (std::vector<int>{0, 0}));
}

TEST_F(SpecsTermsDeathTest, LevelsMustNotJump) {
  Read();
  std::vector<bool> flags;
  EXPECT_DEATH(ReadRow({1, 3, 0, 0, 0}, flags), AssertText("factLev == oldFactLev + 1"));
  EXPECT_DEATH(ReadRow({-1, 0, 0, 0, 0}, flags), AssertText("factLev >= oldFactLev"));
}

TEST_F(SpecsTerms, NegativeCovariateWordRepeatsAndFlags) {
  Read();
  std::vector<bool> flags;
  MCModelEffect effect = ReadRow({0, 0, 0, -2, 1}, flags);
  EXPECT_EQ(effect.GetCovariates(), (std::vector<int>{X, Z}));
  EXPECT_EQ(effect.GetCovariateMult(X), 2);
  EXPECT_EQ(effect.GetCovariateMult(Z), 1);
  EXPECT_EQ(flags, (std::vector<bool>{true, false}));
  EXPECT_EQ(effect.GetVarsIndicesForTheEffectInSetting(), (std::vector<int>{X, X, Z}));
}

TEST_F(SpecsTerms, FactorsComeBeforeCovariates) {
  Read();
  std::vector<bool> flags;
  MCModelEffect effect = ReadRow({0, 1, 0, 0, -1}, flags);
  EXPECT_EQ(effect.GetVarsIndicesForTheEffectInSetting(), (std::vector<int>{B, Z}));
  EXPECT_EQ(flags, (std::vector<bool>{false, true}));
}

TEST_F(SpecsTerms, TwoBlocksWithTheirTwoIndexBases) {
  // Random rows: a, x (block 0), the intercept (block 1).
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{1, 0, 0, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 0}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 2);
  // By block: effect counts and EBLUP flags.
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({2, 1}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0, 1}));
  // By first effect: covariance codes, subject counts and subject lists.
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({15, 99, 2}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({1, 0, 2}));
  const INTEGER first = List({SUBJ + 1});
  const INTEGER second = List({SUBJ + 1, NAME + 1});
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({first, 0, second}));
  SetVarList(L::N_RANDOM_SUBJECTS, L::RANDOM_SUBJECTS, {SUBJ, NAME});

  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(fbRead);
  ASSERT_EQ(specs.GetNRandSpecs(), 2);
  EXPECT_EQ(specs.GetNRandEffects(), (std::vector<int>{2, 1}));
  const GLMMRandomSpec& block0 = specs.GetRandomList()[0];
  const GLMMRandomSpec& block1 = specs.GetRandomList()[1];
  ASSERT_EQ(block0.GetNEffects(), 2);
  EXPECT_EQ(block0.GetEffects()[0].GetFactors(), std::vector<int>{A});
  EXPECT_EQ(block0.GetEffects()[1].GetCovariates(), std::vector<int>{X});
  EXPECT_EQ(block0.GetCovarianceType(), GLMMConst_850::UN);
  EXPECT_EQ(block0.GetSubjectVars(), std::vector<int>{SUBJ});
  EXPECT_FALSE(block0.GetComputeEBLUPs());
  EXPECT_EQ(block0.GetIndex(), 0);
  // The second block reads rows from row 2 and its covariance code and
  // subjects from entry 2, but its count and EBLUP flag from entry 1.
  ASSERT_EQ(block1.GetNEffects(), 1);
  EXPECT_TRUE(block1.GetEffects()[0].IsIntercept());
  EXPECT_EQ(block1.GetCovarianceType(), GLMMConst_850::AR1);
  EXPECT_EQ(block1.GetSubjectVars(), (std::vector<int>{SUBJ, NAME}));
  EXPECT_TRUE(block1.GetComputeEBLUPs());
  EXPECT_EQ(block1.GetIndex(), 1);
  EXPECT_TRUE(specs.GetUseStatJSON());
  EXPECT_EQ(specs.GetRandCovarNested(), (std::vector<std::vector<bool>>{{false, false}, {false, false}, {false, false}}));
}

TEST_F(SpecsTerms, ANegativeEffectCountCountsAsItsSize) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 1);
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({-2}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({0, 0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({0, 0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({0, 0}));
  MIXValidSpecs& specs = Read();
  ASSERT_EQ(specs.GetNRandSpecs(), 1);
  EXPECT_EQ(specs.GetNRandEffects(), std::vector<int>{2});
  EXPECT_EQ(specs.GetRandomList()[0].GetNEffects(), 2);
  EXPECT_EQ(specs.GetRandomList()[0].GetEffects()[1].GetFactors(), std::vector<int>{C});
  // Code 0 is the random block's default; no subjects; no EBLUPs.
  EXPECT_EQ(specs.GetRandomList()[0].GetCovarianceType(), GLMMConst_850::VC);
  EXPECT_TRUE(specs.GetRandomList()[0].GetSubjectVars().empty());
  EXPECT_FALSE(specs.GetUseStatJSON());
}

TEST_F(SpecsTerms, ARandomInterceptBlockKeepsItsEffect) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 1);
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({1}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({1}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({5}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({1}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({List({SUBJ + 1})}));
  MIXValidSpecs& specs = Read();
  ASSERT_EQ(specs.GetNRandSpecs(), 1);
  ASSERT_EQ(specs.GetRandomList()[0].GetNEffects(), 1);
  EXPECT_TRUE(specs.GetRandomList()[0].GetEffects()[0].IsIntercept());
  EXPECT_EQ(specs.GetRandomList()[0].GetCovarianceType(), GLMMConst_850::CS);
}

TEST_F(SpecsTerms, ABlockWithoutEffectsReadsNoRow) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{1, 0, 0, 0, 0}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 2);
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({0, 1}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0, 0}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({12}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({0}));
  MIXValidSpecs& specs = Read();
  ASSERT_EQ(specs.GetNRandSpecs(), 2);
  EXPECT_EQ(specs.GetRandomList()[0].GetNEffects(), 0);
  // Both blocks start at effect 0, so both take its code.
  EXPECT_EQ(specs.GetRandomList()[0].GetCovarianceType(), GLMMConst_850::ID);
  EXPECT_EQ(specs.GetRandomList()[1].GetCovarianceType(), GLMMConst_850::ID);
  EXPECT_EQ(specs.GetRandomList()[1].GetEffects()[0].GetFactors(), std::vector<int>{A});
}

TEST_F(SpecsTerms, FillRandomSpecAdvancesBothCounters) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{1, 0, 0, 0, 0}, {0, 0, 0, -1, 0}, {0, 0, 1, 0, 0}});
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({2, 1}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0, 0}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({0, 0, 17}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({0, 0, 0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({0, 0, 0}));
  Read();
  int blockIndex = 0;
  int firstEffect = 0;
  int nEffects = -1;
  GLMMRandomSpec spec;
  std::vector<std::vector<bool>> flags = {{true}};
  EXPECT_TRUE(fSpecs->FillRandomSpec(blockIndex, firstEffect, spec, nEffects, flags));
  EXPECT_EQ(blockIndex, 1);
  EXPECT_EQ(firstEffect, 2);
  EXPECT_EQ(nEffects, 2);
  EXPECT_EQ(flags, (std::vector<std::vector<bool>>{{false, false}, {true, false}}));
  EXPECT_TRUE(fSpecs->FillRandomSpec(blockIndex, firstEffect, spec, nEffects, flags));
  EXPECT_EQ(blockIndex, 2);
  EXPECT_EQ(firstEffect, 3);
  EXPECT_EQ(nEffects, 1);
  EXPECT_EQ(spec.GetIndex(), 1);
  EXPECT_EQ(spec.GetEffects()[0].GetFactors(), std::vector<int>{C});
  EXPECT_EQ(spec.GetCovarianceType(), GLMMConst_850::VC);
}

TEST_F(SpecsTermsDeathTest, SubjectEntriesArePositions) {
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 1);
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({1}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({1}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({List({0})}));
  EXPECT_DEATH(Read(), AssertText("zorvInd >= 0"));
}

TEST_F(SpecsTerms, RepeatedBlockIsOneEffectOfCrossedMeasures) {
  SetVarList(L::N_REPEATED, L::REPEATED, {T, C});
  SetVarList(L::N_REPEATED_SUBJECTS, L::REPEATED_SUBJECTS, {SUBJ});
  fMemory.SetNumericInteger(L::REPEATED_COVARIANCE, 20);
  MIXValidSpecs& specs = Read();
  const GLMMRandomSpec& repeated = specs.GetRepeatedSpec();
  ASSERT_EQ(repeated.GetNEffects(), 1);
  const MCModelEffect& effect = repeated.GetEffects()[0];
  EXPECT_EQ(effect.GetFactors(), (std::vector<int>{T, C}));
  EXPECT_EQ(effect.GetFactorLevels(), (std::vector<int>{0, 0}));
  EXPECT_EQ(effect.GetVarsIndicesForTheEffectInSetting(), (std::vector<int>{T, C}));
  EXPECT_EQ(effect.GetVarIndices(), (std::vector<int>{T, C}));
  EXPECT_EQ(repeated.GetSubjectVars(), std::vector<int>{SUBJ});
  EXPECT_EQ(repeated.GetCovarianceType(), GLMMConst_850::SP_POW);
  EXPECT_EQ(repeated.GetIndex(), -1);
  EXPECT_FALSE(repeated.GetComputeEBLUPs());
}

TEST_F(SpecsTerms, RepeatedBlockWithoutMeasuresKeepsItsSubjectsAndType) {
  SetVarList(L::N_REPEATED_SUBJECTS, L::REPEATED_SUBJECTS, {SUBJ, NAME});
  fMemory.SetNumericInteger(L::REPEATED_COVARIANCE, 2);
  MIXValidSpecs& specs = Read();
  const GLMMRandomSpec& repeated = specs.GetRepeatedSpec();
  EXPECT_EQ(repeated.GetNEffects(), 0);
  EXPECT_EQ(repeated.GetSubjectVars(), (std::vector<int>{SUBJ, NAME}));
  EXPECT_EQ(repeated.GetCovarianceType(), GLMMConst_850::AR1);
  EXPECT_EQ(repeated.GetIndex(), -1);
  fMemory.SetNumericInteger(L::REPEATED_COVARIANCE, 0);
  EXPECT_EQ(Read().GetRepeatedSpec().GetCovarianceType(), GLMMConst_850::DIAG);
}

// ---- component indices ----

TEST_F(SpecsTerms, EffectsAndBlocksInComponentIndices) {
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{}, {1, 0, 0, 0, 0}, {0, 1, 0, -1, 0}});
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}, {0, 0, 1, 0, 0}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 1);
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({2}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({1}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({15, 0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({1, 0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({List({NAME + 1}), 0}));
  SetVarList(L::N_RANDOM_SUBJECTS, L::RANDOM_SUBJECTS, {NAME});
  MIXValidSpecs& specs = ReadAndComplete();
  // Record: y 0, a b c 1 2 3, x z 4 5, name 6.
  ASSERT_EQ(specs.GetCompModelEffectList().size(), 2u);
  const MCModelEffect& compA = specs.GetCompModelEffectList()[0];
  EXPECT_EQ(compA.GetVarIndices(), (std::vector<int>{1, 2, 3, 4, 5}));
  EXPECT_EQ(compA.GetFactors(), std::vector<int>{1});
  EXPECT_EQ(compA.GetVarsIndicesForTheEffectInSetting(), std::vector<int>{1});
  const MCModelEffect& compBX = specs.GetCompModelEffectList()[1];
  EXPECT_EQ(compBX.GetFactors(), std::vector<int>{2});
  EXPECT_EQ(compBX.GetCovariates(), std::vector<int>{4});
  EXPECT_EQ(compBX.GetFactorLevels(), specs.GetModelEffectList()[1].GetFactorLevels());
  EXPECT_EQ(compBX.GetVarsIndicesForTheEffectInSetting(), (std::vector<int>{2, 4}));

  ASSERT_EQ(specs.GetCompRandomList().size(), 1u);
  const GLMMRandomSpec& block = specs.GetCompRandomList()[0];
  ASSERT_EQ(block.GetNEffects(), 2);
  EXPECT_TRUE(block.GetEffects()[0].IsIntercept());
  EXPECT_EQ(block.GetEffects()[1].GetVarsIndicesForTheEffectInSetting(), std::vector<int>{3});
  EXPECT_EQ(block.GetSubjectVars(), std::vector<int>{6});
  EXPECT_EQ(block.GetCovarianceType(), GLMMConst_850::UN);
  EXPECT_EQ(block.GetIndex(), 0);
  EXPECT_TRUE(block.GetComputeEBLUPs());
}

TEST_F(SpecsTerms, RepeatedBlockInComponentIndices) {
  SetVarList(L::N_REPEATED, L::REPEATED, {T, A});
  SetVarList(L::N_REPEATED_SUBJECTS, L::REPEATED_SUBJECTS, {SUBJ});
  fMemory.SetNumericInteger(L::REPEATED_COVARIANCE, 9);
  MIXValidSpecs& specs = ReadAndComplete();
  // Record: y 0, a b c 1 2 3, x z 4 5, subj 6, then t 7 and a once more 8
  // (the repeated measures have positions of their own).
  const GLMMRandomSpec& repeated = specs.GetCompRepeatedSpec();
  ASSERT_EQ(repeated.GetNEffects(), 1);
  EXPECT_EQ(repeated.GetEffects()[0].GetVarIndices(), (std::vector<int>{7, 8}));
  EXPECT_EQ(repeated.GetEffects()[0].GetVarsIndicesForTheEffectInSetting(), (std::vector<int>{7, 8}));
  EXPECT_EQ(repeated.GetEffects()[0].GetFactors(), (std::vector<int>{7, 8}));
  EXPECT_EQ(repeated.GetSubjectVars(), std::vector<int>{6});
  EXPECT_EQ(repeated.GetCovarianceType(), GLMMConst_850::FA1);
  EXPECT_EQ(repeated.GetIndex(), -1);
}

TEST_F(SpecsTermsDeathTest, TranslationChecks) {
  MIXValidSpecs& specs = ReadAndComplete();
  MCModelEffect effect;
  MCModelEffect out;
  effect.SetVarsIndicesForTheEffectInSetting({-1});
  EXPECT_DEATH(specs.CreateCompEffect(effect, out), AssertText("predInd >= 0"));
  effect.SetVarsIndicesForTheEffectInSetting({SW});
  EXPECT_DEATH(specs.CreateCompEffect(effect, out), AssertText("compPredInd >= 0"));

  GLMMRandomSpec block;
  GLMMRandomSpec compBlock;
  block.AddSubjectVar(-1);
  EXPECT_DEATH(specs.CreateCompRandom(block, compBlock, false), AssertText("zorvSubjVar >= 0"));
  GLMMRandomSpec unregistered;
  unregistered.AddSubjectVar(SW);
  EXPECT_DEATH(specs.CreateCompRandom(unregistered, compBlock, false), AssertText("compSubjVar >= 0"));
  // The repeated block takes its subjects from its own list, by place.
  EXPECT_DEATH(specs.CreateCompRandom(unregistered, compBlock, true), AssertText("compSubjVar >= 0"));
}
