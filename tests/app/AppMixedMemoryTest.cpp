#include <gtest/gtest.h>

#include <vector>

#include "AppTestSupport.h"
#include "app/AppMixedMemory.h"

using namespace apptest;

// Every check here reads the memory by its byte offsets and word positions,
// the way the procedure reads it, with the numbers written out.

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

}  // namespace

TEST(AppMixedMemory, ACommandWithoutSettingsCarriesTheDefaults) {
  ParserMemory memory;
  Lay("GLMIXFIT y", memory);
  EXPECT_EQ(R(memory, 0), 95.0);
  EXPECT_EQ(R(memory, 8), 0.0);
  EXPECT_EQ(R(memory, 16), 0.0);
  EXPECT_EQ(R(memory, 64), 1e-6);
  EXPECT_EQ(R(memory, 80), 1e-12);
  EXPECT_EQ(N(memory, 104), 1);
  EXPECT_EQ(N(memory, 128), Packed(5, 40, 3));
  EXPECT_EQ(N(memory, 136), Packed(5, 40, 4));
  EXPECT_EQ(N(memory, 144), 2);
  EXPECT_EQ(N(memory, 232), 1);
  EXPECT_EQ(N(memory, 240), 1);
  EXPECT_EQ(N(memory, 272), 2);
  EXPECT_EQ(N(memory, 312), 2);
  EXPECT_EQ(N(memory, 336), 100);
  EXPECT_EQ(N(memory, 344), 5);
  EXPECT_EQ(N(memory, 584), 1);
  for (int offset : {360, 376, 384, 392, 480, 504, 512, 520, 528, 544, 552, 1536, 1560}) {
    EXPECT_EQ(N(memory, offset), 0) << offset;
  }
  EXPECT_EQ(N(memory, 368), 1);  // the intercept's row, of no words
  EXPECT_EQ(N(memory, 1688), 4);
  EXPECT_EQ(N(memory, 1696), 3);
  EXPECT_EQ(N(memory, 1736), 1);
  for (int offset = 1752; offset <= 1832; offset += 8) EXPECT_EQ(N(memory, offset), 0) << offset;
  EXPECT_EQ(Field(memory, 40), "out/model-1.xml");
  EXPECT_EQ(Field(memory, 295), "out/statjson-1.json");
  EXPECT_EQ(Field(memory, 550), "out/statxml-1.xml");
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
  EXPECT_EQ(N(memory, 104), 3);
  EXPECT_EQ(R(memory, 0), 90.0);
  EXPECT_EQ(N(memory, 312), 1);
  EXPECT_EQ(N(memory, 336), 250);
  EXPECT_EQ(N(memory, 344), 7);
  EXPECT_EQ(N(memory, 240), 0);
  EXPECT_EQ(R(memory, 80), 1e-10);
  EXPECT_EQ(R(memory, 64), 1e-8);
  EXPECT_EQ(N(memory, 584), 2);
  EXPECT_EQ(R(memory, 16), 1e-5);
  EXPECT_EQ(N(memory, 272), 1);
  EXPECT_EQ(R(memory, 8), 0.01);
  EXPECT_EQ(N(memory, 144), 2);
  EXPECT_EQ(N(memory, 1752), 1);
  EXPECT_EQ(N(memory, 1696), 1);
  for (int offset = 1760; offset <= 1832; offset += 8) EXPECT_EQ(N(memory, offset), 1) << offset;
  EXPECT_EQ(N(memory, 232), 4);
  EXPECT_EQ(N(memory, 128), Packed(5, 10, 2));
  EXPECT_EQ(N(memory, 136), Packed(6, 12, 5));
  EXPECT_EQ(N(memory, 1560), 4);
}

TEST(AppMixedMemory, EachDisplayItemSetsItsOwnSlot) {
  const std::vector<std::pair<const char*, int>> items = {
      {"CASES", 1760},           {"ESTIMATECORRELATIONS", 1768}, {"ESTIMATECOVARIANCES", 1776},
      {"COVARIANCETESTS", 1784}, {"VARIABLES", 1792},            {"GMATRIX", 1800},
      {"HISTORY", 1808},         {"LMATRIX", 1816},              {"RMATRIX", 1824},
      {"ESTIMATES", 1832}};
  for (const auto& item : items) {
    ParserMemory memory;
    Lay(std::string("GLMIXFIT y /DISPLAY ") + item.first, memory);
    for (int offset = 1760; offset <= 1832; offset += 8) {
      EXPECT_EQ(N(memory, offset), offset == item.second ? 1 : 0) << item.first << " at " << offset;
    }
    EXPECT_EQ(N(memory, 232), 1);
  }
}

TEST(AppMixedMemory, ConvergenceKindsHaveDefaults) {
  ParserMemory memory;
  Lay("GLMIXFIT y /ESTIMATION CONVERGENCE=LOGLIKELIHOOD(0.5) PARAMETERS(0) HESSIAN(1 RELATIVE)", memory);
  EXPECT_EQ(R(memory, 16), 0.5);
  EXPECT_EQ(N(memory, 272), 2);
  EXPECT_EQ(R(memory, 64), 0.0);
  EXPECT_EQ(N(memory, 584), 1);
  EXPECT_EQ(R(memory, 8), 1.0);
  EXPECT_EQ(N(memory, 144), 1);
}

TEST(AppMixedMemory, TermsAreRowsOfLevelsAndPowers) {
  ParserMemory memory;
  // Factors a b s, covariates x z.
  Lay("GLMIXFIT y BY a b s WITH x z /FIXED a b(a) x*x z(a) a*B*x s(b(a)) x*z*z(s*a)", memory);
  EXPECT_EQ(N(memory, 392), 3);
  EXPECT_EQ(Words(memory, N(memory, 720), 3), (std::vector<INTEGER>{5, 6, 7}));
  EXPECT_EQ(N(memory, 360), 2);
  EXPECT_EQ(Words(memory, N(memory, 600), 2), (std::vector<INTEGER>{2, 3}));
  ASSERT_EQ(N(memory, 368), 8);
  std::vector<INTEGER> rows = Words(memory, N(memory, 696), 8 * 5);
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
  EXPECT_EQ(N(memory, 1736), 0);
  ASSERT_EQ(N(memory, 368), 2);
  EXPECT_EQ(Words(memory, N(memory, 696), 4), (std::vector<INTEGER>{0, 1, 1, 0}));
}

TEST(AppMixedMemory, AnEmptyInterceptModelStillHasAPosition) {
  ParserMemory memory;
  Lay("GLMIXFIT y /FIXED INTERCEPT=NO", memory);
  EXPECT_EQ(N(memory, 368), 0);
  EXPECT_EQ(N(memory, 1736), 0);
  ParserMemory intercept;
  Lay("GLMIXFIT y /RANDOM INTERCEPT", intercept);
  EXPECT_EQ(N(intercept, 376), 1);
  EXPECT_GE(N(intercept, 712), 1);
  EXPECT_LE(N(intercept, 712), intercept.GetWordCount());
}

TEST(AppMixedMemory, RandomBlocksKeepCountsPerBlockAndDetailsAtTheirFirstTerm) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a b WITH x"
      " /RANDOM INTERCEPT x SUBJECTS=s STRUCTURE=UN PREDICT=YES"
      " /RANDOM a SUBJECTS=s*b STRUCTURE=CS"
      " /RANDOM INTERCEPT",
      memory);
  EXPECT_EQ(N(memory, 480), 3);
  ASSERT_EQ(N(memory, 376), 4);
  EXPECT_EQ(Words(memory, N(memory, 712), 4 * 3), (std::vector<INTEGER>{0, 0, 0,  // INTERCEPT
                                                                        0, 0, 1,  // x
                                                                        1, 0, 0,  // a
                                                                        0, 0, 0}));
  EXPECT_EQ(Words(memory, N(memory, 968), 3), (std::vector<INTEGER>{2, 1, 1}));
  EXPECT_EQ(Words(memory, N(memory, 1336), 3), (std::vector<INTEGER>{1, 0, 0}));
  // Covariance codes and subjects at each block's first term: 0, 2 and 3.
  INTEGER covariances = N(memory, 1144);
  EXPECT_EQ(W(memory, covariances + 0), 15);
  EXPECT_EQ(W(memory, covariances + 2), 5);
  EXPECT_EQ(W(memory, covariances + 3), 0);
  INTEGER counts = N(memory, 1232);
  INTEGER lists = N(memory, 1296);
  EXPECT_EQ(W(memory, counts + 0), 1);
  EXPECT_EQ(Words(memory, W(memory, lists + 0), 1), (std::vector<INTEGER>{7}));
  EXPECT_EQ(W(memory, counts + 2), 2);
  EXPECT_EQ(Words(memory, W(memory, lists + 2), 2), (std::vector<INTEGER>{7, 6}));
  EXPECT_EQ(W(memory, counts + 3), 0);
  EXPECT_EQ(N(memory, 544), 2);
  EXPECT_EQ(Words(memory, N(memory, 1384), 2), (std::vector<INTEGER>{7, 6}));
}

TEST(AppMixedMemory, EveryStructureKeywordHasItsCode) {
  const std::vector<std::pair<const char*, int>> codes = {
      {"AD1", 1},  {"AR1", 2},  {"ARH1", 3}, {"ARMA11", 4}, {"CS", 5},   {"CSH", 6},  {"CSR", 7},  {"DIAG", 8},
      {"FA1", 9},  {"FAH1", 10}, {"HF", 11}, {"ID", 12},    {"TP", 13},  {"TPH", 14}, {"UN", 15},  {"UNR", 16},
      {"VC", 17}};
  for (const auto& code : codes) {
    ParserMemory random;
    Lay(std::string("GLMIXFIT y /RANDOM INTERCEPT STRUCTURE=") + code.first, random);
    EXPECT_EQ(W(random, N(random, 1144)), code.second) << code.first;
    ParserMemory residual;
    Lay(std::string("GLMIXFIT y /RESIDUAL STRUCTURE=") + code.first, residual);
    EXPECT_EQ(N(residual, 1536), code.second) << code.first;
  }
  const std::vector<std::pair<const char*, int>> spatial = {{"POWER", 20},  {"EXPONENTIAL", 21}, {"GAUSSIAN", 22},
                                                            {"LINEAR", 23}, {"LINEARLOG", 24},   {"SPHERICAL", 25}};
  for (const auto& code : spatial) {
    ParserMemory residual;
    Lay(std::string("GLMIXFIT y /RESIDUAL STRUCTURE=") + code.first + " COORDINATES=x t", residual);
    EXPECT_EQ(N(residual, 1536), code.second) << code.first;
    EXPECT_EQ(N(residual, 520), 2);
    EXPECT_EQ(Words(residual, N(residual, 1256), 2), (std::vector<INTEGER>{2, 8}));
  }
}

TEST(AppMixedMemory, TheResidualBlockCarriesIndexSubjectsAndStructure) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY b WITH t /RESIDUAL INDEX=t*b SUBJECTS=s*name STRUCTURE=ar1", memory);
  EXPECT_EQ(N(memory, 512), 2);
  EXPECT_EQ(Words(memory, N(memory, 1264), 2), (std::vector<INTEGER>{8, 6}));
  EXPECT_EQ(N(memory, 504), 2);
  EXPECT_EQ(Words(memory, N(memory, 1128), 2), (std::vector<INTEGER>{7, 9}));
  EXPECT_EQ(N(memory, 1536), 2);
  EXPECT_EQ(N(memory, 520), 0);
}

TEST(AppMixedMemory, CustomTestsByEffects) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a WITH x /FIXED a x /RANDOM INTERCEPT x SUBJECTS=s"
      " /CONTRAST 'a1 vs a3' INTERCEPT 1 a 1 0 -1 | x 1 ; a 0 1 -1 K=0 0.5",
      memory);
  ASSERT_EQ(N(memory, 552), 1);
  INTEGER record = Record(memory, 1048, 1.0);
  ASSERT_GT(record, 0);
  std::vector<double> r = Reals(memory, record, 8);
  EXPECT_NE(r[0], 1.0);
  EXPECT_EQ(r[1], 2.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(r[2]), 3), (std::vector<INTEGER>{1, 3, 0}));
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(r[3]), 2), (std::vector<INTEGER>{0, 1}));
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[4]), 10),
            (std::vector<double>{1, 1, 0, -1, 1, /* row 2 */ 0, 0, 1, -1, 0}));
  EXPECT_EQ(r[5], 8.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(r[6]), 8), "a1 vs a3");
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[7]), 2), (std::vector<double>{0, 0.5}));
}

TEST(AppMixedMemory, CustomTestsOverSeveralRandomBlocks) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a WITH x /FIXED a /RANDOM INTERCEPT x SUBJECTS=s /RANDOM INTERCEPT SUBJECTS=b"
      " /CONTRAST a 1 -1 0 | | INTERCEPT 2 /CONTRAST INTERCEPT 1 | x 1 INTERCEPT 3",
      memory);
  ASSERT_EQ(N(memory, 552), 2);
  std::vector<double> first = Reals(memory, Record(memory, 1048, 1.0), 8);
  EXPECT_EQ(first[1], 1.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(first[2]), 2), (std::vector<INTEGER>{0, 3}));
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(first[3]), 3), (std::vector<INTEGER>{0, 0, 1}));
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(first[4]), 4), (std::vector<double>{1, -1, 0, 2}));
  EXPECT_EQ(first[5], 0.0);
  EXPECT_EQ(first[7], 0.0);
  std::vector<double> second = Reals(memory, Record(memory, 1048, 2.0), 8);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(second[2]), 2), (std::vector<INTEGER>{1, 0}));
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(second[3]), 3), (std::vector<INTEGER>{1, 1, 0}));
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(second[4]), 3), (std::vector<double>{1, 3, 1}));
}

TEST(AppMixedMemory, CustomTestsByAllValues) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a /FIXED a /RANDOM INTERCEPT a SUBJECTS=s"
      " /CONTRAST 'all' ALL 0 1 -1 0 | ALL 1 0 ; ALL 0 0 1 -1 | ALL 0 1 K=1 2",
      memory);
  std::vector<double> r = Reals(memory, Record(memory, 1048, 1.0), 8);
  EXPECT_EQ(r[0], 1.0);
  EXPECT_EQ(r[1], 2.0);
  EXPECT_EQ(r[2], 4.0);
  EXPECT_EQ(r[3], 2.0);
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[4]), 12),
            (std::vector<double>{0, 1, -1, 0, 1, 0, 0, 0, 1, -1, 0, 1}));
  EXPECT_EQ(r[5], 3.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(r[6]), 3), "all");
  EXPECT_EQ(Reals(memory, static_cast<INTEGER>(r[7]), 2), (std::vector<double>{1, 2}));

  ParserMemory fixedOnly;
  Lay("GLMIXFIT y BY a /FIXED a /CONTRAST ALL 1 -1", fixedOnly);
  std::vector<double> f = Reals(fixedOnly, Record(fixedOnly, 1048, 1.0), 8);
  EXPECT_EQ(f[0], 1.0);
  EXPECT_EQ(f[2], 2.0);
  EXPECT_EQ(f[3], 0.0);
}

TEST(AppMixedMemory, MarginalMeansWithEachKindOfReference) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a b WITH x z /FIXED a*b x z"
      " /MEANS a*b COMPARE=b REFERENCE=2 ADJUST=SEQUENTIALSIDAK AT=z(0.5)"
      " /MEANS a COMPARE=a REFERENCE='a2'"
      " /MEANS a COMPARE=a REFERENCE=FIRST ADJUST=SEQUENTIALBONFERRONI"
      " /MEANS b COMPARE=b REFERENCE=LAST ADJUST=LSD"
      " /MEANS b*a COMPARE=a"
      " /MEANS OVERALL AT=x(-1.25) z(3)",
      memory);
  ASSERT_EQ(N(memory, 384), 6);
  std::vector<std::vector<double>> records;
  for (int i = 1; i <= 6; ++i) records.push_back(Reals(memory, Record(memory, 1032, i), 9));

  const std::vector<double>& number = records[0];
  EXPECT_EQ(number[1], 2.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(number[2]), 2), (std::vector<INTEGER>{1, 2}));
  EXPECT_EQ(number[3], 2.0);
  std::vector<double> block = Reals(memory, static_cast<INTEGER>(number[4]), 8);
  EXPECT_GE(block[0], 0.0);  // x at its mean
  EXPECT_LT(block[4], 0.0);  // z held
  EXPECT_EQ(block[5], 0.5);
  EXPECT_EQ(block[6], 3.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(block[7]), 3), "0.5");
  EXPECT_EQ(number[5], 3.0);
  EXPECT_EQ(number[6], 1.0);
  EXPECT_EQ(number[7], 2.0);

  const std::vector<double>& text = records[1];
  EXPECT_EQ(text[3], 1.0);
  EXPECT_EQ(text[6], 2.0);
  EXPECT_EQ(text[7], 2.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(text[8]), 8), "a2      ");
  EXPECT_EQ(text[5], 1.0);

  EXPECT_EQ(records[2][6], 3.0);
  EXPECT_EQ(records[2][5], 2.0);
  EXPECT_EQ(records[3][6], 4.0);
  EXPECT_EQ(records[3][5], 1.0);
  EXPECT_EQ(records[4][6], 0.0);
  EXPECT_EQ(Words(memory, static_cast<INTEGER>(records[4][2]), 2), (std::vector<INTEGER>{2, 1}));
  EXPECT_EQ(records[4][3], 2.0);

  const std::vector<double>& overall = records[5];
  EXPECT_EQ(overall[1], 0.0);
  EXPECT_EQ(overall[3], 0.0);
  EXPECT_EQ(overall[6], 0.0);
  std::vector<double> held = Reals(memory, static_cast<INTEGER>(overall[4]), 8);
  EXPECT_LT(held[0], 0.0);
  EXPECT_EQ(held[1], -1.25);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(held[3]), 5), "-1.25");
  EXPECT_LT(held[4], 0.0);
  EXPECT_EQ(held[5], 3.0);
}

TEST(AppMixedMemory, AReferenceTextCoversTheFactorsWidth) {
  ZORV_Dataset data;
  data.AddVariable("y", 0);
  data.AddVariable("group", 12);
  ParserMemory memory;
  Lay("GLMIXFIT y BY group /FIXED group /MEANS group COMPARE=group REFERENCE='ctl'", memory, data);
  std::vector<double> r = Reals(memory, Record(memory, 1032, 1.0), 9);
  EXPECT_EQ(r[7], 3.0);
  EXPECT_EQ(Chars(memory, static_cast<INTEGER>(r[8]), 16), "ctl" + std::string(13, ' '));
}

TEST(AppMixedMemory, SevenSavedVariablesFillEverySlot) {
  ParserMemory memory;
  Lay("GLMIXFIT y /SAVE PREDICTED(p) FIXEDPREDICTED RESIDUAL(r) PREDICTEDSE FIXEDPREDICTEDSE PREDICTEDDF "
      "FIXEDPREDICTEDDF",
      memory);
  ASSERT_EQ(N(memory, 528), 7);
  const std::vector<INTEGER> kinds = {2, 1, 3, 5, 4, 7, 6};
  const std::vector<std::string> names = {"p",           "FixedPredicted",   "r",
                                          "PredictedSE", "FixedPredictedSE", "PredictedDF",
                                          "FixedPredictedDF"};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(N(memory, 1576 + 8 * i), kinds[static_cast<std::size_t>(i)]) << i;
    std::string name = names[static_cast<std::size_t>(i)];
    EXPECT_EQ(Chars(memory, N(memory, 1632 + 8 * i), 64), name + std::string(64 - name.size(), ' ')) << i;
  }
}

TEST(AppMixedMemory, DefaultSaveNamesStayClearOfTheData) {
  ZORV_Dataset data;
  data.AddVariable("y", 0);
  data.AddVariable("Residual", 0);
  data.AddVariable("Residual_1", 0);
  ParserMemory memory;
  Lay("GLMIXFIT y /SAVE RESIDUAL PREDICTED(Residual_2)", memory, data);
  EXPECT_EQ(Chars(memory, N(memory, 1632), 10), "Residual_3");
  EXPECT_EQ(Chars(memory, N(memory, 1640), 10), "Residual_2");
}

TEST(AppMixedMemory, UserFilesWinAndSayTheirKind) {
  ParserMemory model;
  Lay("GLMIXFIT y /EXPORT MODEL='m.xml' STATXML='sub/r.xml'", model);
  EXPECT_EQ(N(model, 1688), 2);
  EXPECT_EQ(Field(model, 40), "cmd/m.xml");
  EXPECT_EQ(Field(model, 550), "cmd/sub/r.xml");
  EXPECT_EQ(Field(model, 295), "out/statjson-1.json");

  ParserMemory parameters;
  Lay("GLMIXFIT y /EXPORT PARAMETERS='/tmp/p.xml' STATJSON='../r.json'", parameters);
  EXPECT_EQ(N(parameters, 1688), 1);
  EXPECT_EQ(Field(parameters, 40), "/tmp/p.xml");
  EXPECT_EQ(Field(parameters, 295), "r.json");
  EXPECT_EQ(Field(parameters, 550), "out/statxml-1.xml");

  // Files that share a name are left for the procedure to report.
  ParserMemory shared;
  Lay("GLMIXFIT y /EXPORT MODEL='same.xml' STATXML='SAME.xml'", shared);
  EXPECT_EQ(Field(shared, 40), "cmd/same.xml");
  EXPECT_EQ(Field(shared, 550), "cmd/SAME.xml");
}

TEST(AppMixedMemory, NonNumericCoordinatesAreLeftForTheProcedure) {
  ParserMemory memory;
  Lay("GLMIXFIT y /RESIDUAL STRUCTURE=POWER COORDINATES=name", memory);
  EXPECT_EQ(Words(memory, N(memory, 1256), 1), (std::vector<INTEGER>{9}));
}

TEST(AppMixedMemory, WritingAgainStartsAfresh) {
  ParserMemory memory;
  Lay("GLMIXFIT y BY a /FIXED a /MEANS a /SAVE RESIDUAL", memory);
  EXPECT_EQ(N(memory, 384), 1);
  Lay("GLMIXFIT y", memory);
  EXPECT_EQ(N(memory, 384), 0);
  EXPECT_EQ(N(memory, 528), 0);
  EXPECT_EQ(N(memory, 1032), 0);
}
