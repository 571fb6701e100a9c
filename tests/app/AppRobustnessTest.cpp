#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "AppTestSupport.h"
#include "app/AppMixedMemory.h"
#include "app/AppSession.h"

using namespace apptest;

// Nothing a user types may crash the program: random and mangled commands
// either read as valid commands or give a message that points into them.

namespace {

const ZORV_Dataset& Data() {
  static std::unique_ptr<ZORV_Dataset> data = LoadTrial();
  return *data;
}

const char* const kVocabulary[] = {
    "GLMIXFIT", "y", "x", "z", "w", "a", "b", "s", "t", "name", "nosuch", "BY", "WITH", "/", "/", "/", "FIXED",
    "RANDOM", "RESIDUAL", "ESTIMATION", "MISSING", "TESTS", "DISPLAY", "FORMAT", "CONTRAST", "MEANS", "SAVE",
    "EXPORT", "SCALEWEIGHT", "INTERCEPT", "SUBJECTS", "STRUCTURE", "PREDICT", "INDEX", "COORDINATES", "METHOD",
    "CONFIDENCE", "ITERATIONS", "HALVING", "SCORING", "SINGULAR", "CONVERGENCE", "PARAMETERS", "LOGLIKELIHOOD",
    "HESSIAN", "RELATIVE", "ABSOLUTE", "USERMISSING", "INCLUDE", "TYPE", "ESTIMATES", "HISTORY", "CRITERIA",
    "F8.2", "A3", "ALL", "K", "COMPARE", "REFERENCE", "ADJUST", "AT", "OVERALL", "FIRST", "LAST", "YES", "NO",
    "UN", "VC", "POWER", "AR1", "PREDICTED", "PREDICTEDSE", "MODEL", "STATXML", "STATJSON", "=", "=", "=", "(",
    ")", "(", ")", "*", "*", ";", "|", "0", "1", "-1", "2.5", "1E-6", "100", "3000000000", "1e308", "'a1'", "''",
    "'m.xml'", "\"x\"", "!", "-", ",", "'open", "\n", "#c\n", "\xff", ".5", "5.", "x.y"};

std::string RandomText(std::mt19937& random) {
  const std::size_t n = sizeof kVocabulary / sizeof kVocabulary[0];
  std::uniform_int_distribution<std::size_t> pick(0, n - 1);
  std::uniform_int_distribution<int> length(0, 40);
  std::uniform_int_distribution<int> coin(0, 3);
  std::string text = coin(random) == 0 ? "" : "GLMIXFIT y BY a b WITH x z ";
  int count = length(random);
  for (int i = 0; i < count; ++i) {
    text += kVocabulary[pick(random)];
    if (coin(random) != 0) text += ' ';
  }
  return text;
}

const char* const kValid[] = {
    "GLMIXFIT y BY a b s WITH x z /FIXED a b(a) x*x z(a) a*b*x s(b(a)) /RANDOM INTERCEPT x SUBJECTS=s*b "
    "STRUCTURE=UN PREDICT=YES /RANDOM a /RESIDUAL INDEX=t SUBJECTS=s STRUCTURE=AR1",
    "GLMIXFIT y BY a WITH x /FIXED a x /RANDOM INTERCEPT x SUBJECTS=s /CONTRAST 'c' INTERCEPT 1 a 1 0 -1 | x 1 ; "
    "a 0 1 -1 K=0 0.5 /CONTRAST ALL 1 0 | ALL 1 0",
    "GLMIXFIT y BY a b WITH x z /FIXED a*b /MEANS a*b COMPARE=b REFERENCE=2 ADJUST=SEQUENTIALSIDAK AT=z(0.5) "
    "/MEANS a COMPARE=a REFERENCE='a2' /MEANS OVERALL",
    "GLMIXFIT z BY a WITH x /ESTIMATION METHOD=ML CONFIDENCE=90 CONVERGENCE=PARAMETERS(1E-8 ABSOLUTE) "
    "HESSIAN(0.01) /MISSING USERMISSING=INCLUDE /TESTS TYPE=1 /DISPLAY ESTIMATES HISTORY(4) /FORMAT "
    "CRITERIA=F10.2 /SAVE PREDICTED(p) RESIDUAL /EXPORT MODEL='m.xml' /SCALEWEIGHT w",
    "GLMIXFIT y /RESIDUAL STRUCTURE=POWER COORDINATES=x t"};

std::string Mangle(std::string text, std::mt19937& random) {
  std::uniform_int_distribution<int> kind(0, 5);
  std::uniform_int_distribution<std::size_t> place(0, text.size() - 1);
  int edits = 1 + kind(random) % 3;
  for (int e = 0; e < edits && !text.empty(); ++e) {
    place = std::uniform_int_distribution<std::size_t>(0, text.size() - 1);
    std::size_t at = place(random);
    switch (kind(random)) {
      case 0: text.erase(at, 1 + at % 7); break;
      case 1: text.resize(at); break;
      case 2: text.insert(at, kVocabulary[at % (sizeof kVocabulary / sizeof kVocabulary[0])]); break;
      case 3: text.insert(at, text.substr(place(random) % text.size(), 6)); break;
      case 4: if (at + 1 < text.size()) std::swap(text[at], text[at + 1]); break;
      default: text[at] = static_cast<char>(random() % 256); break;
    }
  }
  return text;
}

// A valid command, or a message "t.gmx:LINE:COLUMN: ...".
void CheckOne(const std::string& text, int& valid, int& invalid) {
  static const std::regex place("^t\\.gmx:[1-9][0-9]*:[1-9][0-9]*: .+");
  for (const AppCommandText& command : AppLexer::Split(text)) {
    AppCommandReader reader(command, "t.gmx");
    AppMixedParser parser(Data(), "cmd", "out", 1);
    try {
      AppMixedCommand parsed = parser.Parse(reader);
      ParserMemory memory;
      AppMixedMemory::Write(parsed, Data(), memory);
      ASSERT_GT(memory.GetWordCount(), 0) << text;
      ++valid;
    } catch (const AppCommandError& e) {
      ASSERT_TRUE(std::regex_match(std::string(e.what()), place)) << e.what() << "\nfor: " << text;
      ++invalid;
    }
  }
}

}  // namespace

TEST(AppRobustness, RandomCommandsNeverCrashTheParser) {
  std::mt19937 random(20240611u);
  int valid = 0, invalid = 0;
  for (int i = 0; i < 4000; ++i) {
    CheckOne(RandomText(random), valid, invalid);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(invalid, 1000);
  EXPECT_GT(valid, 0);
}

TEST(AppRobustness, MangledValidCommandsNeverCrashTheParser) {
  std::mt19937 random(7u);
  int valid = 0, invalid = 0;
  for (const char* text : kValid) CheckOne(text, valid, invalid);
  ASSERT_EQ(valid, 5);
  ASSERT_EQ(invalid, 0);
  for (int i = 0; i < 4000; ++i) {
    CheckOne(Mangle(kValid[static_cast<std::size_t>(i) % 5], random), valid, invalid);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(invalid, 1000);
}

TEST(AppRobustness, RandomBytesNeverCrashTheParser) {
  std::mt19937 random(99u);
  int valid = 0, invalid = 0;
  for (int i = 0; i < 2000; ++i) {
    std::string text = "GLMIXFIT ";
    int n = static_cast<int>(random() % 60);
    for (int k = 0; k < n; ++k) text += static_cast<char>(random() % 256);
    CheckOne(text, valid, invalid);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(invalid, 0);
}

TEST(AppRobustness, RandomCommandFilesNeverCrashTheSession) {
  const char* const host[] = {"LOAD 'trial.csv'", "LOAD 'nosuch.csv'", "LOAD", "SET VARIABLES=NAMES",
                              "SET", "SPLIT BY a", "SPLIT BY", "SPLIT OFF", "WEIGHT BY w", "WEIGHT BY name",
                              "WEIGHT OFF", "FROB", "GLMIXFIT y BY a /FIXED a", "5"};
  std::mt19937 random(3u);
  for (int run = 0; run < 40; ++run) {
    std::string text;
    int commands = 1 + static_cast<int>(random() % 8);
    for (int c = 0; c < commands; ++c) {
      std::string command = random() % 3 == 0 ? RandomText(random) : host[random() % (sizeof host / sizeof host[0])];
      if (random() % 4 == 0) command = Mangle(command + " ", random);
      text += command + ".\n";
    }
    AppOptions options;
    options.fOutputDir = "";
    AppSession session(options);
    session.RunText(text, "t.gmx", std::string(GLMIX_TEST_DATA_DIR) + "/app");
    int status = session.ExitStatus();
    EXPECT_TRUE(status == 0 || status == 1) << text;
    EXPECT_EQ(session.GetDocument().fRoot.fvItems.size(), AppLexer::Split(text).size()) << text;
  }
}
