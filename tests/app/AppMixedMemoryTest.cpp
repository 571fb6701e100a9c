#include <gtest/gtest.h>

#include <vector>

#include "AppTestSupport.h"
#include "app/AppMixedMemory.h"
#include "base/MIXCommandLayout.h"

using namespace apptest;
namespace L = MIXCommandLayout;

// Every check here reads the memory by its slots and word positions, the way
// the procedure reads it, independently of the code that wrote it.

namespace {

const ZORV_Dataset& Data() {
  static std::unique_ptr<ZORV_Dataset> data = LoadTrial();
  return *data;
}

// Parses and lays out a command; fails the test on a parse error.
void Lay(const std::string& text, ParserMemory& memory, const ZORV_Dataset& data = Data()) {
  AppMixedCommand command;
  std::string error = ParseMixed(data, text, command);
  ASSERT_EQ(error, "") << text;
  AppMixedMemory::Write(command, data, memory);
}

std::vector<INTEGER> Words(ParserMemory& memory, INTEGER position, INTEGER count) {
  std::vector<INTEGER> words;
  for (INTEGER i = 0; i < count; ++i) words.push_back(W(memory, position + i));
  return words;
}

std::vector<double> Reals(ParserMemory& memory, INTEGER position, INTEGER count) {
  std::vector<double> values;
  for (INTEGER i = 0; i < count; ++i) values.push_back(D(memory, position + i));
  return values;
}

// The index-th record (from 1) of the list whose head is at `offset`.
INTEGER Record(ParserMemory& memory, int offset, double index) {
  INTEGER head = N(memory, offset);
  return tmcget_(memory.GetIntegerWords(), memory.GetRealWords(), head, index);
}

INTEGER Packed(int type, int width, int decimals) { return (type << 16) | (width << 8) | decimals; }

// The ten items of /DISPLAY, in the order of their slots.
const int kDisplaySlots[] = {L::SHOW_CASES,     L::SHOW_ESTIMATE_CORRELATIONS, L::SHOW_ESTIMATE_COVARIANCES,
                             L::SHOW_COVARIANCE_TESTS, L::SHOW_VARIABLES, L::SHOW_G,
                             L::SHOW_HISTORY,   L::SHOW_L, L::SHOW_R, L::SHOW_ESTIMATES};

}  // namespace

TEST(AppMixedMemory, ACommandWithoutSettingsCarriesTheDefaults) {
  ParserMemory memory;
  Lay("GLMIXFIT y", memory);
  EXPECT_EQ(R(memory, L::CONFIDENCE), 95.0);
  EXPECT_EQ(R(memory, L::HESSIAN_CRITERION), 0.0);
  EXPECT_EQ(R(memory, L::LOGLIKELIHOOD_CRITERION), 0.0);
  EXPECT_EQ(R(memory, L::PARAMETER_CRITERION), 1e-6);
  EXPECT_EQ(R(memory, L::SINGULAR), 1e-12);
  EXPECT_EQ(N(memory, L::TARGET), 1);
  EXPECT_EQ(N(memory, L::CRITERIA_FORMAT), Packed(5, 40, 3));
  EXPECT_EQ(N(memory, L::ESTIMATES_FORMAT), Packed(5, 40, 4));
  EXPECT_EQ(N(memory, L::HESSIAN_KIND), 2);
  EXPECT_EQ(N(memory, L::HISTORY_STEP), 1);
  EXPECT_EQ(N(memory, L::SCORING), 1);
  EXPECT_EQ(N(memory, L::LOGLIKELIHOOD_KIND), 2);
  EXPECT_EQ(N(memory, L::METHOD), 2);
  EXPECT_EQ(N(memory, L::ITERATIONS), 100);
  EXPECT_EQ(N(memory, L::HALVING), 5);
  EXPECT_EQ(N(memory, L::PARAMETER_KIND), 1);
  const int empty[] = {L::N_COVARIATES,      L::N_RANDOM_TERMS, L::N_MEANS,   L::N_FACTORS,
                       L::N_RANDOM_BLOCKS,   L::N_REPEATED_SUBJECTS, L::N_REPEATED, L::N_COORDINATES,
                       L::N_SAVES,           L::N_RANDOM_SUBJECTS,   L::N_CONTRASTS, L::REPEATED_COVARIANCE,
                       L::SCALE_WEIGHT};
  for (int offset : empty) {
    EXPECT_EQ(N(memory, offset), 0) << offset;
  }
  EXPECT_EQ(N(memory, L::N_FIXED_TERMS), 1);  // the intercept's row, of no words
  EXPECT_EQ(N(memory, L::FILE_KIND), 4);
  EXPECT_EQ(N(memory, L::TEST_TYPE), 3);
  EXPECT_EQ(N(memory, L::INTERCEPT), 1);
  EXPECT_EQ(N(memory, L::INCLUDE_USER_MISSING), 0);
  for (int offset : kDisplaySlots) EXPECT_EQ(N(memory, offset), 0) << offset;
  EXPECT_EQ(Field(memory, L::MODEL_FILE), "out/model-1.xml");
  EXPECT_EQ(Field(memory, L::STATJSON_FILE), "out/statjson-1.json");
  EXPECT_EQ(Field(memory, L::STATXML_FILE), "out/statxml-1.xml");
  ASSERT_NE(memory.GetCommand(), nullptr);
  EXPECT_EQ(W(memory, 1), 0);
}

TEST(AppMixedMemory, EverySettingReachesItsSlot) {
  ParserMemory memory;
  Lay("GLMIXFIT z BY a WITH x"
      " /ESTIMATION METHOD=ML CONFIDENCE=90 ITERATIONS=250 HALVING=7 SCORING=0 SINGULAR=1E-10"
      "   CONVERGENCE=PARAMETERS(1E-8 ABSOLUTE) LOGLIKELIHOOD(1E-5 RELATIVE) HESSIAN(0.01 ABSOLUTE)"
      " /MISSING USERMISSING=INCLUDE /TESTS TYPE=1"
      " /DISPLAY ESTIMATES ESTIMATECOVARIANCES ESTIMATECORRELATIONS CASES COVARIANCETESTS GMATRIX RMATRIX LMATRIX"
      "   VARIABLES HISTORY(4)"
      " /FORMAT CRITERIA=F10.2 ESTIMATES=E12.5 /SCALEWEIGHT w",
      memory);
  EXPECT_EQ(N(memory, L::TARGET), 3);
  EXPECT_EQ(R(memory, L::CONFIDENCE), 90.0);
  EXPECT_EQ(N(memory, L::METHOD), 1);
  EXPECT_EQ(N(memory, L::ITERATIONS), 250);
  EXPECT_EQ(N(memory, L::HALVING), 7);
  EXPECT_EQ(N(memory, L::SCORING), 0);
  EXPECT_EQ(R(memory, L::SINGULAR), 1e-10);
  EXPECT_EQ(R(memory, L::PARAMETER_CRITERION), 1e-8);
  EXPECT_EQ(N(memory, L::PARAMETER_KIND), 2);
  EXPECT_EQ(R(memory, L::LOGLIKELIHOOD_CRITERION), 1e-5);
  EXPECT_EQ(N(memory, L::LOGLIKELIHOOD_KIND), 1);
  EXPECT_EQ(R(memory, L::HESSIAN_CRITERION), 0.01);
  EXPECT_EQ(N(memory, L::HESSIAN_KIND), 2);
  EXPECT_EQ(N(memory, L::INCLUDE_USER_MISSING), 1);
  EXPECT_EQ(N(memory, L::TEST_TYPE), 1);
  for (int offset : kDisplaySlots) EXPECT_EQ(N(memory, offset), 1) << offset;
  EXPECT_EQ(N(memory, L::HISTORY_STEP), 4);
  EXPECT_EQ(N(memory, L::CRITERIA_FORMAT), Packed(5, 10, 2));
  EXPECT_EQ(N(memory, L::ESTIMATES_FORMAT), Packed(6, 12, 5));
  EXPECT_EQ(N(memory, L::SCALE_WEIGHT), 4);
}

TEST(AppMixedMemory, EachDisplayItemSetsItsOwnSlot) {
  const std::vector<std::pair<const char*, int>> items = {
      {"CASES", L::SHOW_CASES},
      {"ESTIMATECORRELATIONS", L::SHOW_ESTIMATE_CORRELATIONS},
      {"ESTIMATECOVARIANCES", L::SHOW_ESTIMATE_COVARIANCES},
      {"COVARIANCETESTS", L::SHOW_COVARIANCE_TESTS},
      {"VARIABLES", L::SHOW_VARIABLES},
      {"GMATRIX", L::SHOW_G},
      {"HISTORY", L::SHOW_HISTORY},
      {"LMATRIX", L::SHOW_L},
      {"RMATRIX", L::SHOW_R},
      {"ESTIMATES", L::SHOW_ESTIMATES}};
  for (const auto& item : items) {
    ParserMemory memory;
    Lay(std::string("GLMIXFIT y /DISPLAY ") + item.first, memory);
    for (int offset : kDisplaySlots) {
      EXPECT_EQ(N(memory, offset), offset == item.second ? 1 : 0) << item.first << " at " << offset;
    }
    EXPECT_EQ(N(memory, L::HISTORY_STEP), 1);
  }
}

TEST(AppMixedMemory, ConvergenceKindsHaveDefaults) {
  ParserMemory memory;
  Lay("GLMIXFIT y /ESTIMATION CONVERGENCE=LOGLIKELIHOOD(0.5) PARAMETERS(0) HESSIAN(1 RELATIVE)", memory);
  EXPECT_EQ(R(memory, L::LOGLIKELIHOOD_CRITERION), 0.5);
  EXPECT_EQ(N(memory, L::LOGLIKELIHOOD_KIND), 2);
  EXPECT_EQ(R(memory, L::PARAMETER_CRITERION), 0.0);
  EXPECT_EQ(N(memory, L::PARAMETER_KIND), 1);
  EXPECT_EQ(R(memory, L::HESSIAN_CRITERION), 1.0);
  EXPECT_EQ(N(memory, L::HESSIAN_KIND), 1);
}

TEST(AppMixedMemory, TermsAreRowsOfLevelsAndPowers) {
  ParserMemory memory;
  // Factors a b s, covariates x z.
  Lay("GLMIXFIT y BY a b s WITH x z /FIXED a b(a) x*x z(a) a*B*x s(b(a)) x*z*z(s*a)", memory);
  EXPECT_EQ(N(memory, L::N_FACTORS), 3);
  EXPECT_EQ(Words(memory, N(memory, L::FACTORS), 3), (std::vector<INTEGER>{5, 6, 7}));
  EXPECT_EQ(N(memory, L::N_COVARIATES), 2);
  EXPECT_EQ(Words(memory, N(memory, L::COVARIATES), 2), (std::vector<INTEGER>{2, 3}));
  ASSERT_EQ(N(memory, L::N_FIXED_TERMS), 8);
  std::vector<INTEGER> rows = Words(memory, N(memory, L::FIXED_TERMS), 8 * 5);
  EXPECT_EQ(rows, (std::vector<INTEGER>{0, 0, 0, 0, 0,     // intercept
                                        1, 0, 0, 0, 0,     // a
                                        1, 2, 0, 0, 0,     // b(a): b within a
                                        0, 0, 0, 2, 0,     // x*x
                                        1, 0, 0, 0, -1,    // z(a)
                                        1, 1, 0, 1, 0,     // a*b*x
                                        1, 2, 3, 0, 0,     // s(b(a))
                                        1, 0, 1, -1, -2})); // x*z*z(s*a)
}

TEST(AppMixedMemory, WithoutTheInterceptTheRowsStartWithTheFirstTerm) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a WITH x /FIXED x a INTERCEPT=NO", memory);
  EXPECT_EQ(N(memory, L::INTERCEPT), 0);
  ASSERT_EQ(N(memory, L::N_FIXED_TERMS), 2);
  EXPECT_EQ(Words(memory, N(memory, L::FIXED_TERMS), 4), (std::vector<INTEGER>{0, 1, 1, 0}));
}

TEST(AppMixedMemory, AnEmptyInterceptModelStillHasAPosition) {
  ParserMemory memory;
  Lay("GLMIXFIT y /FIXED INTERCEPT=NO", memory);
  EXPECT_EQ(N(memory, L::N_FIXED_TERMS), 0);
  EXPECT_EQ(N(memory, L::INTERCEPT), 0);
  ParserMemory intercept;
  Lay("GLMIXFIT y /RANDOM INTERCEPT", intercept);
  EXPECT_EQ(N(intercept, L::N_RANDOM_TERMS), 1);
  EXPECT_GE(N(intercept, L::RANDOM_TERMS), 1);
  EXPECT_LE(N(intercept, L::RANDOM_TERMS), intercept.GetWordCount());
}

TEST(AppMixedMemory, RandomBlocksKeepCountsPerBlockAndDetailsAtTheirFirstTerm) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a b WITH x"
      " /RANDOM INTERCEPT x SUBJECTS=s STRUCTURE=UN PREDICT=YES"
      " /RANDOM a SUBJECTS=s*b STRUCTURE=CS"
      " /RANDOM INTERCEPT",
      memory);
  EXPECT_EQ(N(memory, L::N_RANDOM_BLOCKS), 3);
  ASSERT_EQ(N(memory, L::N_RANDOM_TERMS), 4);
  EXPECT_EQ(Words(memory, N(memory, L::RANDOM_TERMS), 4 * 3), (std::vector<INTEGER>{0, 0, 0,  // INTERCEPT
                                                                        0, 0, 1,  // x
                                                                        1, 0, 0,  // a
                                                                        0, 0, 0}));
  EXPECT_EQ(Words(memory, N(memory, L::BLOCK_TERM_COUNTS), 3), (std::vector<INTEGER>{2, 1, 1}));
  EXPECT_EQ(Words(memory, N(memory, L::BLOCK_PREDICT), 3), (std::vector<INTEGER>{1, 0, 0}));
  // Covariance codes and subjects at each block's first term: 0, 2 and 3.
  INTEGER covariances = N(memory, L::BLOCK_COVARIANCES);
  EXPECT_EQ(W(memory, covariances + 0), 15);
  EXPECT_EQ(W(memory, covariances + 2), 5);
  EXPECT_EQ(W(memory, covariances + 3), 0);
  INTEGER counts = N(memory, L::BLOCK_SUBJECT_COUNTS);
  INTEGER lists = N(memory, L::BLOCK_SUBJECT_LISTS);
  EXPECT_EQ(W(memory, counts + 0), 1);
  EXPECT_EQ(Words(memory, W(memory, lists + 0), 1), (std::vector<INTEGER>{7}));
  EXPECT_EQ(W(memory, counts + 2), 2);
  EXPECT_EQ(Words(memory, W(memory, lists + 2), 2), (std::vector<INTEGER>{7, 6}));
  EXPECT_EQ(W(memory, counts + 3), 0);
  EXPECT_EQ(N(memory, L::N_RANDOM_SUBJECTS), 2);
  EXPECT_EQ(Words(memory, N(memory, L::RANDOM_SUBJECTS), 2), (std::vector<INTEGER>{7, 6}));
}

TEST(AppMixedMemory, EveryStructureKeywordHasItsCode) {
  const std::vector<std::pair<const char*, int>> codes = {
      {"AD1", 1},  {"AR1", 2},  {"ARH1", 3}, {"ARMA11", 4}, {"CS", 5},   {"CSH", 6},  {"CSR", 7},  {"DIAG", 8},
      {"FA1", 9},  {"FAH1", 10}, {"HF", 11}, {"ID", 12},    {"TP", 13},  {"TPH", 14}, {"UN", 15},  {"UNR", 16},
      {"VC", 17}};
  for (const auto& code : codes) {
    ParserMemory random;
    Lay(std::string("GLMIXFIT y /RANDOM INTERCEPT STRUCTURE=") + code.first, random);
    EXPECT_EQ(W(random, N(random, L::BLOCK_COVARIANCES)), code.second) << code.first;
    ParserMemory residual;
    Lay(std::string("GLMIXFIT y /RESIDUAL STRUCTURE=") + code.first, residual);
    EXPECT_EQ(N(residual, L::REPEATED_COVARIANCE), code.second) << code.first;
  }
  const std::vector<std::pair<const char*, int>> spatial = {{"POWER", 20},  {"EXPONENTIAL", 21}, {"GAUSSIAN", 22},
                                                            {"LINEAR", 23}, {"LINEARLOG", 24},   {"SPHERICAL", 25}};
  for (const auto& code : spatial) {
    ParserMemory residual;
    Lay(std::string("GLMIXFIT y /RESIDUAL STRUCTURE=") + code.first + " COORDINATES=x t", residual);
    EXPECT_EQ(N(residual, L::REPEATED_COVARIANCE), code.second) << code.first;
    EXPECT_EQ(N(residual, L::N_COORDINATES), 2);
    EXPECT_EQ(Words(residual, N(residual, L::COORDINATES), 2), (std::vector<INTEGER>{2, 8}));
  }
}

TEST(AppMixedMemory, TheResidualBlockCarriesIndexSubjectsAndStructure) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY b WITH t /RESIDUAL INDEX=t*b SUBJECTS=s*name STRUCTURE=ar1", memory);
  EXPECT_EQ(N(memory, L::N_REPEATED), 2);
  EXPECT_EQ(Words(memory, N(memory, L::REPEATED), 2), (std::vector<INTEGER>{8, 6}));
  EXPECT_EQ(N(memory, L::N_REPEATED_SUBJECTS), 2);
  EXPECT_EQ(Words(memory, N(memory, L::REPEATED_SUBJECTS), 2), (std::vector<INTEGER>{7, 9}));
  EXPECT_EQ(N(memory, L::REPEATED_COVARIANCE), 2);
  EXPECT_EQ(N(memory, L::N_COORDINATES), 0);
}

TEST(AppMixedMemory, CustomTestsByEffects) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a WITH x /FIXED a x /RANDOM INTERCEPT x SUBJECTS=s"
      " /CONTRAST 'a1 vs a3' INTERCEPT 1 a 1 0 -1 | x 1 ; a 0 1 -1 K=0 0.5",
      memory);
  ASSERT_EQ(N(memory, L::N_CONTRASTS), 1);
  INTEGER record = Record(memory, L::CONTRAST_LIST, 1.0);
  ASSERT_GT(record, 0);
  std::vector<double> r = Reals(memory, record, L::CONTRAST_WORDS);
  EXPECT_NE(r[L::CONTRAST_ALL_VALUES], 1.0);
  EXPECT_EQ(r[L::CONTRAST_N_ROWS], 2.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(r[L::CONTRAST_FIXED]), 3), (std::vector<INTEGER>{1, 3, 0}));
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(r[L::CONTRAST_RANDOM]), 2), (std::vector<INTEGER>{0, 1}));
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[L::CONTRAST_VALUES]), 10),
            (std::vector<double>{1, 1, 0, -1, 1, /* row 2 */ 0, 0, 1, -1, 0}));
  EXPECT_EQ(r[L::CONTRAST_LABEL_LENGTH], 8.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(r[L::CONTRAST_LABEL]), 8), "a1 vs a3");
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[L::CONTRAST_K]), 2), (std::vector<double>{0, 0.5}));
}

TEST(AppMixedMemory, CustomTestsOverSeveralRandomBlocks) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a WITH x /FIXED a /RANDOM INTERCEPT x SUBJECTS=s /RANDOM INTERCEPT SUBJECTS=b"
      " /CONTRAST a 1 -1 0 | | INTERCEPT 2 /CONTRAST INTERCEPT 1 | x 1 INTERCEPT 3",
      memory);
  ASSERT_EQ(N(memory, L::N_CONTRASTS), 2);
  std::vector<double> first = Reals(memory, Record(memory, L::CONTRAST_LIST, 1.0), L::CONTRAST_WORDS);
  EXPECT_EQ(first[L::CONTRAST_N_ROWS], 1.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(first[L::CONTRAST_FIXED]), 2), (std::vector<INTEGER>{0, 3}));
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(first[L::CONTRAST_RANDOM]), 3), (std::vector<INTEGER>{0, 0, 1}));
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(first[L::CONTRAST_VALUES]), 4), (std::vector<double>{1, -1, 0, 2}));
  EXPECT_EQ(first[L::CONTRAST_LABEL_LENGTH], 0.0);
  EXPECT_EQ(first[L::CONTRAST_K], 0.0);
  std::vector<double> second = Reals(memory, Record(memory, L::CONTRAST_LIST, 2.0), L::CONTRAST_WORDS);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(second[L::CONTRAST_FIXED]), 2), (std::vector<INTEGER>{1, 0}));
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(second[L::CONTRAST_RANDOM]), 3), (std::vector<INTEGER>{1, 1, 0}));
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(second[L::CONTRAST_VALUES]), 3), (std::vector<double>{1, 3, 1}));
}

TEST(AppMixedMemory, CustomTestsByAllValues) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a /FIXED a /RANDOM INTERCEPT a SUBJECTS=s"
      " /CONTRAST 'all' ALL 0 1 -1 0 | ALL 1 0 ; ALL 0 0 1 -1 | ALL 0 1 K=1 2",
      memory);
  std::vector<double> r = Reals(memory, Record(memory, L::CONTRAST_LIST, 1.0), L::CONTRAST_WORDS);
  EXPECT_EQ(r[L::CONTRAST_ALL_VALUES], 1.0);
  EXPECT_EQ(r[L::CONTRAST_N_ROWS], 2.0);
  EXPECT_EQ(r[L::CONTRAST_FIXED], 4.0);
  EXPECT_EQ(r[L::CONTRAST_RANDOM], 2.0);
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[L::CONTRAST_VALUES]), 12),
            (std::vector<double>{0, 1, -1, 0, 1, 0, 0, 0, 1, -1, 0, 1}));
  EXPECT_EQ(r[L::CONTRAST_LABEL_LENGTH], 3.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(r[L::CONTRAST_LABEL]), 3), "all");
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[L::CONTRAST_K]), 2), (std::vector<double>{1, 2}));

  ParserMemory fixedOnly;
  Lay("GLMIXFIT y BY a /FIXED a /CONTRAST ALL 1 -1", fixedOnly);
  std::vector<double> f = Reals(fixedOnly, Record(fixedOnly, L::CONTRAST_LIST, 1.0), L::CONTRAST_WORDS);
  EXPECT_EQ(f[L::CONTRAST_ALL_VALUES], 1.0);
  EXPECT_EQ(f[L::CONTRAST_FIXED], 2.0);
  EXPECT_EQ(f[L::CONTRAST_RANDOM], 0.0);
}

TEST(AppMixedMemory, MarginalMeansWithEachKindOfReference) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a b WITH x z /FIXED a*b x z"
      " /MEANS a*b COMPARE=b REFERENCE=2 ADJUST=SEQUENTIALSIDAK AT=z(0.5)"
      " /MEANS a COMPARE=a REFERENCE='a2'"
      " /MEANS a COMPARE=a REFERENCE=FIRST ADJUST=SEQUENTIALBONFERRONI"
      " /MEANS b COMPARE=b REFERENCE=LAST ADJUST=LSD"
      " /MEANS b*a COMPARE=a"
      " /MEANS OVERALL AT=x(-1.25) z(3)"
      " /MEANS a COMPARE=a REFERENCE=MEAN",
      memory);
  ASSERT_EQ(N(memory, L::N_MEANS), 7);
  std::vector<std::vector<double>> records;
  for (int i = 1; i <= 7; ++i) records.push_back(Reals(memory, Record(memory, L::MEANS_LIST, i), L::MEANS_WORDS));

  const std::vector<double>& number = records[0];
  EXPECT_EQ(number[L::MEANS_N_FACTORS], 2.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(number[L::MEANS_FACTORS]), 2), (std::vector<INTEGER>{1, 2}));
  EXPECT_EQ(number[L::MEANS_COMPARE], 2.0);
  std::vector<double> block = Reals(memory, static_cast<INTEGER>(number[L::MEANS_COVARIATES]), 2 * L::COVARIATE_WORDS);
  EXPECT_GE(block[L::COVARIATE_HELD], 0.0);  // x at its mean
  EXPECT_LT(block[L::COVARIATE_WORDS + L::COVARIATE_HELD], 0.0);  // z held
  EXPECT_EQ(block[L::COVARIATE_WORDS + L::COVARIATE_VALUE], 0.5);
  EXPECT_EQ(block[L::COVARIATE_WORDS + L::COVARIATE_TEXT_LENGTH], 3.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(block[L::COVARIATE_WORDS + L::COVARIATE_TEXT]), 3), "0.5");
  EXPECT_EQ(number[L::MEANS_ADJUST], 3.0);
  EXPECT_EQ(number[L::MEANS_REFERENCE_KIND], 1.0);
  EXPECT_EQ(number[L::MEANS_REFERENCE], 2.0);

  const std::vector<double>& text = records[1];
  EXPECT_EQ(text[L::MEANS_COMPARE], 1.0);
  EXPECT_EQ(text[L::MEANS_REFERENCE_KIND], 2.0);
  EXPECT_EQ(text[L::MEANS_REFERENCE], 2.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(text[L::MEANS_REFERENCE_TEXT]), 8), "a2      ");
  EXPECT_EQ(text[L::MEANS_ADJUST], 1.0);

  EXPECT_EQ(records[2][L::MEANS_REFERENCE_KIND], 3.0);
  EXPECT_EQ(records[2][L::MEANS_ADJUST], 2.0);
  EXPECT_EQ(records[3][L::MEANS_REFERENCE_KIND], 4.0);
  EXPECT_EQ(records[3][L::MEANS_ADJUST], 1.0);
  EXPECT_EQ(records[4][L::MEANS_REFERENCE_KIND], 0.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(records[4][L::MEANS_FACTORS]), 2), (std::vector<INTEGER>{2, 1}));
  EXPECT_EQ(records[4][L::MEANS_COMPARE], 2.0);

  const std::vector<double>& overall = records[5];
  EXPECT_EQ(overall[L::MEANS_N_FACTORS], 0.0);
  EXPECT_EQ(overall[L::MEANS_COMPARE], 0.0);
  EXPECT_EQ(overall[L::MEANS_REFERENCE_KIND], 0.0);
  std::vector<double> held = Reals(memory, static_cast<INTEGER>(overall[L::MEANS_COVARIATES]), 2 * L::COVARIATE_WORDS);
  EXPECT_LT(held[L::COVARIATE_HELD], 0.0);
  EXPECT_EQ(held[L::COVARIATE_VALUE], -1.25);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(held[L::COVARIATE_TEXT]), 5), "-1.25");
  EXPECT_LT(held[L::COVARIATE_WORDS + L::COVARIATE_HELD], 0.0);
  EXPECT_EQ(held[L::COVARIATE_WORDS + L::COVARIATE_VALUE], 3.0);

  // The mean of all levels as the reference (deviation contrasts) has no
  // reference value.
  EXPECT_EQ(records[6][L::MEANS_REFERENCE_KIND], 5.0);
  EXPECT_EQ(records[6][L::MEANS_REFERENCE], 0.0);
}

TEST(AppMixedMemory, AReferenceTextCoversTheFactorsWidth) {
  ZORV_Dataset data;
  data.AddVariable("y", 0);
  data.AddVariable("group", 12);
  ParserMemory memory;
  Lay("GLMIXFIT y BY group /FIXED group /MEANS group COMPARE=group REFERENCE='ctl'", memory, data);
  std::vector<double> r = Reals(memory, Record(memory, L::MEANS_LIST, 1.0), L::MEANS_WORDS);
  EXPECT_EQ(r[L::MEANS_REFERENCE], 3.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(r[L::MEANS_REFERENCE_TEXT]), 16), "ctl" + std::string(13, ' '));
}

TEST(AppMixedMemory, SevenSavedVariablesFillEverySlot) {
  ParserMemory memory;
  Lay("GLMIXFIT y /SAVE PREDICTED(p) FIXEDPREDICTED RESIDUAL(r) PREDICTEDSE FIXEDPREDICTEDSE PREDICTEDDF "
      "FIXEDPREDICTEDDF",
      memory);
  ASSERT_EQ(N(memory, L::N_SAVES), 7);
  const std::vector<INTEGER> kinds = {2, 1, 3, 5, 4, 7, 6};
  const std::vector<std::string> names = {"p",           "FixedPredicted",   "r",
                                          "PredictedSE", "FixedPredictedSE", "PredictedDF",
                                          "FixedPredictedDF"};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(N(memory, L::SAVE_KINDS.At(i)), kinds[static_cast<std::size_t>(i)]) << i;
    std::string name = names[static_cast<std::size_t>(i)];
    EXPECT_EQ(Chars(memory, N(memory, L::SAVE_NAMES.At(i)), 64), name + std::string(64 - name.size(), ' ')) << i;
  }
}

// The values of generalized targets take kinds beyond the first seven, in
// the same slots.
TEST(AppMixedMemory, GeneralizedScoresAreKindsOfTheSameSlots) {
  ParserMemory memory;
  Lay("GLMIXFIT y /TARGET DISTRIBUTION=BINOMIAL /SAVE PREDICTEDCATEGORY LINEARPREDICTOR(eta) PEARSONRESIDUAL",
      memory);
  ASSERT_EQ(N(memory, L::N_SAVES), 3);
  const std::vector<INTEGER> kinds = {10, 8, 9};
  const std::vector<std::string> names = {"PredictedCategory", "eta", "PearsonResidual"};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(N(memory, L::SAVE_KINDS.At(i)), kinds[static_cast<std::size_t>(i)]) << i;
    std::string name = names[static_cast<std::size_t>(i)];
    EXPECT_EQ(Chars(memory, N(memory, L::SAVE_NAMES.At(i)), 64), name + std::string(64 - name.size(), ' ')) << i;
  }
}

TEST(AppMixedMemory, DefaultSaveNamesStayClearOfTheData) {
  ZORV_Dataset data;
  data.AddVariable("y", 0);
  data.AddVariable("Residual", 0);
  data.AddVariable("Residual_1", 0);
  ParserMemory memory;
  Lay("GLMIXFIT y /SAVE RESIDUAL PREDICTED(Residual_2)", memory, data);
  EXPECT_EQ(Chars(memory, N(memory, L::SAVE_NAMES), 10), "Residual_3");
  EXPECT_EQ(Chars(memory, N(memory, L::SAVE_NAMES.At(1)), 10), "Residual_2");
}

TEST(AppMixedMemory, UserFilesWinAndSayTheirKind) {
  ParserMemory model;
  Lay("GLMIXFIT y /EXPORT MODEL='m.xml' STATXML='sub/r.xml'", model);
  EXPECT_EQ(N(model, L::FILE_KIND), 2);
  EXPECT_EQ(Field(model, L::MODEL_FILE), "cmd/m.xml");
  EXPECT_EQ(Field(model, L::STATXML_FILE), "cmd/sub/r.xml");
  EXPECT_EQ(Field(model, L::STATJSON_FILE), "out/statjson-1.json");

  ParserMemory parameters;
  Lay("GLMIXFIT y /EXPORT PARAMETERS='/tmp/p.xml' STATJSON='../r.json'", parameters);
  EXPECT_EQ(N(parameters, L::FILE_KIND), 1);
  EXPECT_EQ(Field(parameters, L::MODEL_FILE), "/tmp/p.xml");
  EXPECT_EQ(Field(parameters, L::STATJSON_FILE), "r.json");
  EXPECT_EQ(Field(parameters, L::STATXML_FILE), "out/statxml-1.xml");

  // Files that share a name are left for the procedure to report.
  ParserMemory shared;
  Lay("GLMIXFIT y /EXPORT MODEL='same.xml' STATXML='SAME.xml'", shared);
  EXPECT_EQ(Field(shared, L::MODEL_FILE), "cmd/same.xml");
  EXPECT_EQ(Field(shared, L::STATXML_FILE), "cmd/SAME.xml");
}

TEST(AppMixedMemory, NonNumericCoordinatesAreLeftForTheProcedure) {
  ParserMemory memory;
  Lay("GLMIXFIT y /RESIDUAL STRUCTURE=POWER COORDINATES=name", memory);
  EXPECT_EQ(Words(memory, N(memory, L::COORDINATES), 1), (std::vector<INTEGER>{9}));
}

TEST(AppMixedMemory, WritingAgainStartsAfresh) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a /FIXED a /MEANS a /SAVE RESIDUAL", memory);
  EXPECT_EQ(N(memory, L::N_MEANS), 1);
  Lay("GLMIXFIT y", memory);
  EXPECT_EQ(N(memory, L::N_MEANS), 0);
  EXPECT_EQ(N(memory, L::N_SAVES), 0);
  EXPECT_EQ(N(memory, L::MEANS_LIST), 0);
}

TEST(AppMixedMemory, TheGeneralizedModelHasSlotsOfItsOwn) {
  ParserMemory memory;
  Lay("GLMIXFIT y /TARGET DISTRIBUTION=GAMMA LINK=POWER(-1) OFFSET=z /ESTIMATION COVB=ROBUST FIT=LAPLACE", memory);
  EXPECT_EQ(N(memory, L::DISTRIBUTION), 4);
  EXPECT_EQ(N(memory, L::LINK), 8);
  EXPECT_EQ(R(memory, L::LINK_POWER), -1.0);
  EXPECT_EQ(N(memory, L::OFFSET), 3);
  EXPECT_EQ(N(memory, L::COVARIANCE_KIND), 1);
  EXPECT_EQ(N(memory, L::FIT_METHOD), 1);
  EXPECT_EQ(N(memory, L::TRIALS), 0);

  ParserMemory binomial;
  Lay("GLMIXFIT y /TARGET DISTRIBUTION=BINOMIAL TRIALS=w /RANDOM INTERCEPT SUBJECTS=s "
      "/ESTIMATION FIT=QUADRATURE(9)",
      binomial);
  EXPECT_EQ(N(binomial, L::DISTRIBUTION), 1);
  EXPECT_EQ(N(binomial, L::LINK), 0);
  EXPECT_EQ(N(binomial, L::TRIALS), 4);
  EXPECT_EQ(R(binomial, L::TRIALS_VALUE), 0.0);
  EXPECT_EQ(N(binomial, L::FIT_METHOD), 2);
  EXPECT_EQ(N(binomial, L::QUADRATURE_POINTS), 9);

  ParserMemory reference;
  Lay("GLMIXFIT y /TARGET DISTRIBUTION=BINOMIAL TRIALS=20", reference);
  EXPECT_EQ(R(reference, L::TRIALS_VALUE), 20.0);
  Lay("GLMIXFIT y /TARGET DISTRIBUTION=BINOMIAL REFERENCE=2.5", reference);
  EXPECT_EQ(N(reference, L::REFERENCE_KIND), 2);
  EXPECT_EQ(R(reference, L::REFERENCE_VALUE), 2.5);
}

TEST(AppMixedMemory, TheLinearModelLeavesTheGeneralizedSlotsZero) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a WITH x /FIXED a x /RANDOM INTERCEPT SUBJECTS=s", memory);
  for (int offset = L::DISTRIBUTION; offset <= L::COVARIANCE_KIND; offset += 8) {
    EXPECT_EQ(N(memory, offset), 0) << offset;
  }
}
