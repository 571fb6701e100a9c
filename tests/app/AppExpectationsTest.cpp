// Runs every example command file through the session, end to end, and
// compares the JSON report with its expectation in tests/data/app/expected:
// texts exactly, numbers to a relative 1e-6 (1e-9 absolute near zero). The
// output folder and the source folder, which differ from machine to machine,
// stand as "<output>" and "<source>" in the expectations.
//
// To accept a deliberate change of the output, run the tests with the
// environment variable GLMIX_UPDATE_GOLDEN=1: the expectations are then
// rewritten instead of compared, and the diff can be reviewed.
//
// Beside the comparison, each test states the behaviour its example stands
// for in explicit assertions, and the fitted numbers are held against the
// reference fits in tests/data/numeric/reference where one exists for the
// example's model.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>
#include <unistd.h>

#include "app/AppProcedureHook.h"
#include "AppReportFile.h"
#include "app/AppViewerReference.h"
#include "app/AppSession.h"
#include "base/MixExports.h"
#include "run/MixDriver.h"

namespace fs = std::filesystem;
using apptest::ReadJson;
using nlohmann::json;

namespace {

bool Updating() {
  const char* value = std::getenv("GLMIX_UPDATE_GOLDEN");
  return value != nullptr && std::string(value) == "1";
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// Every string of `value` with the machine's folders replaced by names.
void Normalise(json& value, const std::vector<std::pair<std::string, std::string>>& folders) {
  if (value.is_string()) {
    std::string text = value.get<std::string>();
    for (const auto& folder : folders) ReplaceAll(text, folder.first, folder.second);
    value = text;
  } else if (value.is_array() || value.is_object()) {
    for (json& inner : value) Normalise(inner, folders);
  }
}

bool Close(double actual, double expected) {
  const double scale = std::max(std::fabs(actual), std::fabs(expected));
  return std::fabs(actual - expected) <= std::max(1e-6 * scale, 1e-9);
}

std::string Show(const json& value) {
  std::string text = value.dump();
  return text.size() > 120 ? text.substr(0, 117) + "..." : text;
}

// The places where `actual` differs from `expected`, at most `limit` of them.
void Compare(const json& expected, const json& actual, const std::string& path, std::vector<std::string>& out,
             std::size_t limit = 20) {
  if (out.size() >= limit) return;
  if (expected.is_number() && actual.is_number()) {
    if (!Close(actual.get<double>(), expected.get<double>())) {
      out.push_back(path + ": expected " + Show(expected) + ", found " + Show(actual));
    }
    return;
  }
  if (expected.type() != actual.type()) {
    out.push_back(path + ": expected " + Show(expected) + ", found " + Show(actual));
    return;
  }
  if (expected.is_object()) {
    for (auto it = expected.begin(); it != expected.end(); ++it) {
      if (!actual.contains(it.key())) {
        out.push_back(path + "/" + it.key() + ": missing");
      } else {
        Compare(it.value(), actual[it.key()], path + "/" + it.key(), out, limit);
      }
    }
    for (auto it = actual.begin(); it != actual.end(); ++it) {
      if (!expected.contains(it.key())) out.push_back(path + "/" + it.key() + ": not expected");
    }
    return;
  }
  if (expected.is_array()) {
    if (expected.size() != actual.size()) {
      out.push_back(path + ": expected " + std::to_string(expected.size()) + " elements, found " +
                    std::to_string(actual.size()));
    }
    const std::size_t common = std::min(expected.size(), actual.size());
    for (std::size_t i = 0; i < common; ++i) Compare(expected[i], actual[i], path + "/" + std::to_string(i), out, limit);
    return;
  }
  if (expected != actual) out.push_back(path + ": expected " + Show(expected) + ", found " + Show(actual));
}

// --- Reading the report ----------------------------------------------------

// The top-level headings with the given text (the commands of that kind), in
// order.
std::vector<json> Commands(const json& report, const std::string& title) {
  std::vector<json> commands;
  for (const json& item : report["items"]) {
    if (item["kind"] == "heading" && item["text"] == title) commands.push_back(item);
  }
  return commands;
}

void CollectTables(const json& items, const std::string& subtype, std::vector<json>& out) {
  for (const json& item : items) {
    if (item["kind"] == "heading") CollectTables(item["items"], subtype, out);
    if (item["kind"] == "table" && item["subtype"] == subtype) out.push_back(item);
  }
}

// The tables of a command with the given sub-type, in the order written.
std::vector<json> Tables(const json& command, const std::string& subtype) {
  std::vector<json> tables;
  CollectTables(command["items"], subtype, tables);
  return tables;
}

void CollectSubTypes(const json& items, std::vector<std::string>& out) {
  for (const json& item : items) {
    if (item["kind"] == "heading") CollectSubTypes(item["items"], out);
    if (item["kind"] == "table") out.push_back(item["subtype"].get<std::string>());
  }
}

// The sub-types of all tables of a command, in the order written.
std::vector<std::string> SubTypes(const json& command) {
  std::vector<std::string> subTypes;
  CollectSubTypes(command["items"], subTypes);
  return subTypes;
}

// The sub-types of the model viewer's tables: those that follow the
// command's own tables, from the model summary on.
std::vector<std::string> ViewerSubTypes(const json& command) {
  const std::vector<std::string> all = SubTypes(command);
  const auto first = std::find(all.begin(), all.end(), "ModelSummary");
  return std::vector<std::string>(first, all.end());
}

// The headings directly under a heading, in order.
std::vector<std::string> Headings(const json& heading) {
  std::vector<std::string> headings;
  for (const json& item : heading["items"]) {
    if (item["kind"] == "heading") headings.push_back(item["text"].get<std::string>());
  }
  return headings;
}

// The model viewer's heading of a command; null when there is none.
json ViewerHeading(const json& command) {
  for (const json& item : command["items"]) {
    if (item["kind"] == "heading" && item["text"] == "Model Viewer") return item;
  }
  return json();
}

json Reference(const std::string& fixture) {
  return ReadJson(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / (fixture + ".json"));
}

// The covariance parameters the model viewer shows, against a reference fit.
void ExpectViewerCovarianceParameters(const json& command, const std::string& fixture) {
  SCOPED_TRACE("covariance parameters of " + fixture);
  viewer_reference::ExpectCovarianceParameters(Tables(command, "CovarianceParameters"),
                                               Tables(command, "ResidualEffect"), Reference(fixture));
}

// The tables of the model viewer after the classic tables of a model with
// random blocks and without marginal means.
const std::vector<std::string> kViewerTables = {"ModelSummary",   "DataStructure",
                                                "FixedEffects",   "FixedCoefficients",
                                                "RandomEffects",  "CovarianceParametersSummary",
                                                "ResidualEffect", "CovarianceParameters"};

void CollectMessages(const json& items, std::vector<std::string>& out) {
  for (const json& item : items) {
    if (item["kind"] == "heading") CollectMessages(item["items"], out);
    if (item["kind"] == "message") out.push_back(item["level"].get<std::string>() + ": " + item["text"].get<std::string>());
  }
}

// "level: text" of each message of a command, in order.
std::vector<std::string> Messages(const json& command) {
  std::vector<std::string> messages;
  CollectMessages(command["items"], messages);
  return messages;
}

// The front-end lines of a command, one string.
std::string FrontEndText(const json& command) {
  std::string text;
  for (const json& item : command["items"]) {
    if (item["kind"] != "text") continue;
    for (const json& line : item["lines"]) text += line.get<std::string>() + "\n";
  }
  return text;
}

// The leaf labels of a table's dimension.
std::vector<std::string> Labels(const json& table, std::size_t dimension) {
  return apptest::Labels(table["dimensions"][dimension]["children"]);
}

double Value(const json& table, const std::vector<int>& coordinates) {
  for (const json& cell : table["cells"]) {
    if (cell["coordinates"].get<std::vector<int>>() == coordinates) {
      return cell["value"].is_number() ? cell["value"].get<double>() : std::nan("");
    }
  }
  return std::nan("");
}

std::vector<std::string> Captions(const json& table) {
  std::vector<std::string> captions;
  for (const json& caption : table["captions"]) captions.push_back(caption["text"].get<std::string>());
  return captions;
}

// The value of a row of the notes table, by its name.
std::string NotesValue(const json& command, const std::string& name) {
  const std::vector<json> notes = Tables(command, "Notes");
  if (notes.size() != 1) return "<no notes table>";
  const json& table = notes[0];
  const std::vector<std::string> rows = Labels(table, 0);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (rows[row] != name) continue;
    for (const json& cell : table["cells"]) {
      if (cell["coordinates"][0] == static_cast<int>(row)) return cell["text"].get<std::string>();
    }
  }
  return "<no row " + name + ">";
}

// A parameter or effect label in one form for the tables and the reference
// fits: "[Sex=Female] * age" and "age*Sex=Female" are both "Sex=Female*age".
std::string Key(const std::string& label) {
  std::vector<std::string> parts;
  std::string part;
  for (char c : label + "*") {
    if (c == '*') {
      parts.push_back(part);
      part.clear();
    } else if (c != '[' && c != ']' && c != ' ') {
      part += c;
    }
  }
  std::sort(parts.begin(), parts.end());
  std::string key;
  for (const std::string& p : parts) key += (key.empty() ? "" : "*") + p;
  return key;
}

void ExpectRelative(double actual, double expected, double relative, const std::string& what) {
  EXPECT_NEAR(actual, expected, relative * std::max(std::fabs(expected), 1e-12)) << what;
}

// Holds the fitted numbers of one split of a command (the `split`-th table
// of each kind) against a reference fit: the -2 log likelihood, the tests of
// the fixed effects and, when the command shows them, the estimates (each
// as far as the reference has it).
void ExpectReferenceFit(const json& command, const std::string& fixture, std::size_t split = 0) {
  SCOPED_TRACE("reference fit " + fixture);
  const json reference = ReadJson(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / (fixture + ".json"));

  const std::vector<json> criteria = Tables(command, "Information Criteria");
  ASSERT_GT(criteria.size(), split);
  const std::string label = Labels(criteria[split], 0).at(0);
  EXPECT_EQ(label, reference["method"] == "ML" ? "-2 Log Likelihood" : "-2 Restricted Log Likelihood");
  ExpectRelative(Value(criteria[split], {0}), reference["minus2ll"].get<double>(), 1e-6, label);

  const std::vector<json> tests = Tables(command, "Tests of Fixed Effects");
  ASSERT_GT(tests.size(), split);
  const std::vector<std::string> sources = Labels(tests[split], 0);
  for (const json& test : reference.value("typeIII", json::array())) {
    const std::string term = test["term"].get<std::string>();
    int row = -1;
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (Key(sources[i]) == Key(term)) row = static_cast<int>(i);
    }
    ASSERT_GE(row, 0) << "no test of " << term;
    EXPECT_EQ(Value(tests[split], {row, 0}), test["numDF"].get<double>()) << term;
    ExpectRelative(Value(tests[split], {row, 1}), test["denDF"].get<double>(), 1e-5, term + " denominator df");
    ExpectRelative(Value(tests[split], {row, 2}), test["F"].get<double>(), 1e-5, term + " F");
    EXPECT_NEAR(Value(tests[split], {row, 3}), test["p"].get<double>(), 1e-6) << term + " significance";
  }

  const std::vector<json> estimates = Tables(command, "Parameter Estimates");
  if (estimates.size() <= split) return;
  const std::vector<std::string> parameters = Labels(estimates[split], 0);
  for (const json& beta : reference["beta"]) {
    const std::string name = beta["name"].get<std::string>();
    int row = -1;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
      if (Key(parameters[i]) == Key(name)) row = static_cast<int>(i);
    }
    ASSERT_GE(row, 0) << "no estimate of " << name;
    ExpectRelative(Value(estimates[split], {row, 0}), beta["estimate"].get<double>(), 1e-6, name + " estimate");
    ExpectRelative(Value(estimates[split], {row, 1}), beta["se"].get<double>(), 1e-5, name + " standard error");
    if (beta.contains("df")) ExpectRelative(Value(estimates[split], {row, 2}), beta["df"].get<double>(), 1e-5, name + " df");
  }
}

// The model viewer reads the fit back from its documents; what it shows
// must be what the command's own tables show from the fit itself: the
// information criteria and the F of each fixed effect.
void ExpectViewerAgreesWithTheCommand(const json& command) {
  const std::vector<json> summaries = Tables(command, "ModelSummary");
  const std::vector<json> criteria = Tables(command, "Information Criteria");
  if (summaries.size() != 1 || criteria.size() != 1 || criteria[0]["dimensions"].size() != 1) return;
  SCOPED_TRACE("the model viewer against the command's own tables");
  const std::vector<std::string> items = Labels(summaries[0], 0);
  const std::size_t aicc = std::find(items.begin(), items.end(), "Akaike Corrected") - items.begin();
  EXPECT_EQ(Value(summaries[0], {static_cast<int>(aicc)}), Value(criteria[0], {2}));
  EXPECT_EQ(Value(summaries[0], {static_cast<int>(aicc + 1)}), Value(criteria[0], {4}));

  const std::vector<json> viewerTests = Tables(command, "FixedEffects");
  const std::vector<json> tests = Tables(command, "Tests of Fixed Effects");
  ASSERT_EQ(viewerTests.size(), 1u);
  ASSERT_EQ(tests.size(), 1u);
  const std::vector<std::string> sources = Labels(tests[0], 0);
  const std::vector<std::string> effects = Labels(viewerTests[0], 0);
  for (std::size_t row = 1; row < effects.size(); ++row) {
    const auto at = std::find(sources.begin(), sources.end(), effects[row]);
    ASSERT_NE(at, sources.end()) << effects[row];
    ExpectRelative(Value(viewerTests[0], {static_cast<int>(row), 0}),
                   Value(tests[0], {static_cast<int>(at - sources.begin()), 2}), 1e-12, effects[row] + " F");
  }
}

// --- The fixture -----------------------------------------------------------

class AppExpectationsTest : public ::testing::Test {
 protected:
  void SetUp() override { AppProcedureHook::Set(MixDriver); }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    if (!fOutput.empty()) fs::remove_all(fOutput);
  }

  // Runs examples/<name>.gmx with JSON output, compares the report with its
  // expectation, and returns the report as compared.
  json RunExample(const std::string& name) {
    fOutput = fs::temp_directory_path() / ("glmixfit-expected-" + name + "-" + std::to_string(::getpid()));
    fs::remove_all(fOutput);
    AppOptions options;
    options.fOutputDir = fOutput.string();
    options.fbText = false;
    options.fbJson = true;
    json report;
    {
      AppSession session(options);
      EXPECT_TRUE(session.RunFile((fs::path(GLMIX_SOURCE_DIR) / "examples" / (name + ".gmx")).string()));
      std::ostringstream terminal;
      std::string error;
      EXPECT_TRUE(session.WriteReports(terminal, error)) << error;
      fExitStatus = session.ExitStatus();
    }
    report = ReadJson(fOutput / "report.json");
    const std::string source = fs::path(GLMIX_SOURCE_DIR).lexically_normal().string();
    Normalise(report, {{fOutput.string(), "<output>"},
                       {fOutput.lexically_normal().string(), "<output>"},
                       {source, "<source>"}});
    CheckExpectation(name, report);
    return report;
  }

  // Runs the example, checks its exit status, and gives its fitting
  // commands, of which there must be `count`.
  void RunFits(const std::string& name, int exitStatus, std::size_t count, std::vector<json>& commands) {
    const json report = RunExample(name);
    EXPECT_EQ(fExitStatus, exitStatus);
    commands = Commands(report, "Mixed Model");
    ASSERT_EQ(commands.size(), count);
    for (const json& command : commands) ExpectViewerAgreesWithTheCommand(command);
  }

  // An example of one fit that agrees with a reference fit.
  void ExpectExampleFitsLikeItsReference(const std::string& name, const std::string& fixture) {
    std::vector<json> commands;
    ASSERT_NO_FATAL_FAILURE(RunFits(name, 0, 1, commands));
    ExpectReferenceFit(commands[0], fixture);
  }

  void CheckExpectation(const std::string& name, const json& report) {
    const fs::path path = fs::path(GLMIX_TEST_DATA_DIR) / "app" / "expected" / (name + ".json");
    if (Updating()) {
      fs::create_directories(path.parent_path());
      std::ofstream out(path, std::ios::binary);
      out << report.dump(2) << "\n";
      ASSERT_TRUE(out.good()) << "cannot write " << path;
      return;
    }
    ASSERT_TRUE(fs::is_regular_file(path)) << "missing expectation " << path
                                           << " (run with GLMIX_UPDATE_GOLDEN=1 to create it)";
    std::vector<std::string> differences;
    Compare(ReadJson(path), report, "", differences);
    std::string listed;
    for (const std::string& difference : differences) listed += "\n  " + difference;
    EXPECT_TRUE(differences.empty()) << "the report of examples/" << name << ".gmx differs from " << path << ":"
                                     << listed;
  }

  fs::path fOutput;
  int fExitStatus = -1;
};

// --- One test per example --------------------------------------------------

// Random intercept and slope, unstructured: the fit agrees with the
// reference, and the predictions of the random effects are shown.
TEST_F(AppExpectationsTest, SleepStudyFitsARandomSlopeModelAndPredictsTheSubjects) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("sleepstudy", 0, 1, commands));
  EXPECT_TRUE(Messages(commands[0]).empty());
  ExpectReferenceFit(commands[0], "sleepstudy_un");
  const std::vector<json> criteria = Tables(commands[0], "Information Criteria");
  ASSERT_EQ(criteria.size(), 1u);
  EXPECT_EQ(criteria[0]["cells"][0]["text"], "1743.628");
  const std::vector<json> estimates = Tables(commands[0], "Parameter Estimates");
  ASSERT_EQ(estimates.size(), 1u);
  EXPECT_EQ(Labels(estimates[0], 0), (std::vector<std::string>{"Intercept", "Days"}));
  EXPECT_NEAR(Value(estimates[0], {1, 0}), 10.4673, 5e-5);
  EXPECT_EQ(Tables(commands[0], "Empirical Best Linear Unbiased Predictions").size(), 1u);
  EXPECT_EQ(NotesValue(commands[0], "Model File"), "<output>/model-1.xml");
  // After the classic tables and the predictions, once, the model viewer's.
  EXPECT_EQ(ViewerSubTypes(commands[0]), kViewerTables);
  const std::vector<std::string> all = SubTypes(commands[0]);
  EXPECT_LT(std::find(all.begin(), all.end(), "Empirical Best Linear Unbiased Predictions"),
            std::find(all.begin(), all.end(), "ModelSummary"));
  ExpectViewerCovarianceParameters(commands[0], "sleepstudy_un");
}

// A factor crossed with a covariate, random intercept and slope per child.
TEST_F(AppExpectationsTest, OrthodontFitsGrowthLinesBySex) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("orthodont", 0, 1, commands));
  ExpectReferenceFit(commands[0], "orthodont_un_g");
  const std::vector<json> tests = Tables(commands[0], "Tests of Fixed Effects");
  ASSERT_EQ(tests.size(), 1u);
  EXPECT_EQ(Labels(tests[0], 0), (std::vector<std::string>{"Intercept", "Sex", "age", "Sex * age"}));
  // The redundant parameters of the last category are set to zero.
  const std::vector<json> estimates = Tables(commands[0], "Parameter Estimates");
  ASSERT_EQ(estimates.size(), 1u);
  ASSERT_EQ(estimates[0]["footnotes"].size(), 1u);
  EXPECT_EQ(estimates[0]["footnotes"][0]["text"], "This parameter is set to zero because it is redundant.");
  ExpectViewerCovarianceParameters(commands[0], "orthodont_un_g");
  // The marginal means of the sexes at the age of 11, Female the reference.
  const std::vector<std::string> viewer = ViewerSubTypes(commands[0]);
  EXPECT_EQ(std::vector<std::string>(viewer.end() - 4, viewer.end()),
            (std::vector<std::string>{"GrandMeans", "Estimates", "Contrasts", "OverallTestResults"}));
  const std::vector<json> contrasts = Tables(commands[0], "Contrasts");
  ASSERT_EQ(contrasts.size(), 1u);
  EXPECT_EQ(contrasts[0]["title"]["text"], "Simple Contrasts");
  EXPECT_EQ(Labels(contrasts[0], 0), std::vector<std::string>{"Male - Female"});
}

// Split plot with two random blocks (no reference fit of this model: the
// reference treats nitrogen as a factor).
TEST_F(AppExpectationsTest, OatsFitsTwoRandomBlocks) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("oats", 0, 1, commands));
  EXPECT_TRUE(Messages(commands[0]).empty());
  const std::vector<json> tests = Tables(commands[0], "Tests of Fixed Effects");
  ASSERT_EQ(tests.size(), 1u);
  EXPECT_EQ(Labels(tests[0], 0), (std::vector<std::string>{"Intercept", "Variety", "nitro"}));
  EXPECT_EQ(Value(tests[0], {1, 0}), 2.0);
  // The whole plots give the Variety test 10 denominator degrees of freedom.
  EXPECT_NEAR(Value(tests[0], {1, 1}), 10.0, 1e-3);
  const std::vector<json> criteria = Tables(commands[0], "Information Criteria");
  ASSERT_EQ(criteria.size(), 1u);
  EXPECT_EQ(criteria[0]["cells"][0]["text"], "578.892");
  // Both random blocks in the viewer, and the varieties' pairwise contrasts.
  const std::vector<json> blocks = Tables(commands[0], "CovarianceParameters");
  ASSERT_EQ(blocks.size(), 2u);
  EXPECT_EQ(blocks[0]["title"]["text"], "Random Effect Block 1");
  EXPECT_EQ(blocks[1]["title"]["text"], "Random Effect Block 2");
  const std::vector<json> contrasts = Tables(commands[0], "Contrasts");
  ASSERT_EQ(contrasts.size(), 1u);
  EXPECT_EQ(Labels(contrasts[0], 0).size(), 3u);
}

// Crossed subjects: workers, and workers by machines.
TEST_F(AppExpectationsTest, MachinesFitsCrossedSubjects) {
  ExpectExampleFitsLikeItsReference("machines", "machines");
}

// A nested random term.
TEST_F(AppExpectationsTest, PastesFitsANestedRandomTerm) {
  ExpectExampleFitsLikeItsReference("pastes", "pastes");
}

// Two crossed random intercepts.
TEST_F(AppExpectationsTest, PenicillinFitsCrossedRandomIntercepts) {
  ExpectExampleFitsLikeItsReference("penicillin", "penicillin");
}

// Maximum likelihood: the criteria count the fixed parameters too.
TEST_F(AppExpectationsTest, DyestuffFitsByMaximumLikelihood) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("dyestuff", 0, 1, commands));
  const std::vector<json> criteria = Tables(commands[0], "Information Criteria");
  ASSERT_EQ(criteria.size(), 1u);
  EXPECT_EQ(Labels(criteria[0], 0).at(0), "-2 Log Likelihood");
  // One fixed parameter and two variances.
  EXPECT_NEAR(Value(criteria[0], {1}) - Value(criteria[0], {0}), 6.0, 1e-9);
  const std::vector<json> estimates = Tables(commands[0], "Parameter Estimates");
  ASSERT_EQ(estimates.size(), 1u);
  EXPECT_NEAR(Value(estimates[0], {0, 0}), 1527.5, 1e-6);
}

// A periodic model whose season terms the command file computes from the
// time: the fit agrees with R, and the data it writes hold the predictions
// and residuals that R gives.
TEST_F(AppExpectationsTest, OvaryComputesSeasonTermsFitsThemAndWritesTheScores) {
  const json report = RunExample("ovary");
  EXPECT_EQ(fExitStatus, 0);
  std::vector<json> commands = Commands(report, "Mixed Model");
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_TRUE(Messages(commands[0]).empty());
  ExpectReferenceFit(commands[0], "ovary");
  EXPECT_EQ(Commands(report, "Compute").size(), 2u);
  const std::vector<json> written = Commands(report, "Write Data");
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(FrontEndText(written[0]), "WRITE.\n308 cases and 7 variables written to <output>/data-1.csv, their "
                                      "dictionary to <output>/data-1.dictionary.json.\n");

  const json reference = ReadJson(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / "ovary.json");
  std::ifstream data(fOutput / "data-1.csv");
  std::string line;
  ASSERT_TRUE(std::getline(data, line));
  EXPECT_EQ(line, "Mare,Time,follicles,cycle_sin,cycle_cos,Predicted,Residual");
  std::size_t row = 0;
  for (; std::getline(data, line); ++row) {
    ASSERT_LT(row, reference["scores"].size());
    std::vector<double> values;
    std::stringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) values.push_back(std::stod(field));
    ASSERT_EQ(values.size(), 7u) << line;
    const json& expected = reference["scores"][row];
    EXPECT_NEAR(values[5], expected["predicted"].get<double>(), 1e-6 * std::fabs(values[5])) << row;
    EXPECT_NEAR(values[6], expected["residual"].get<double>(), 1e-5) << row;
  }
  EXPECT_EQ(row, 308u);
}

// Random slopes with autoregressive residuals (the reference fit has no
// random effects, so only the form is checked here).
TEST_F(AppExpectationsTest, BodyweightFitsRandomSlopesWithAutoregressiveResiduals) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("bodyweight", 0, 1, commands));
  const std::vector<json> tests = Tables(commands[0], "Tests of Fixed Effects");
  ASSERT_EQ(tests.size(), 1u);
  EXPECT_EQ(Labels(tests[0], 0), (std::vector<std::string>{"Intercept", "Diet", "Time", "Diet * Time"}));
}

// LAYERED: every split is fitted, and the splits are shown together: one
// table of each kind, whose outermost rows are the splits.
TEST_F(AppExpectationsTest, OrthodontSplitLayeredReportsBothSplits) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("orthodont-split", 0, 1, commands));
  EXPECT_TRUE(Messages(commands[0]).empty());

  const std::vector<json> criteria = Tables(commands[0], "Information Criteria");
  ASSERT_EQ(criteria.size(), 1u);
  ASSERT_EQ(criteria[0]["dimensions"].size(), 2u);
  EXPECT_EQ(criteria[0]["dimensions"][0]["name"]["text"], "Sex of the child");
  EXPECT_EQ(criteria[0]["dimensions"][0]["place"], "row");
  EXPECT_EQ(Labels(criteria[0], 0), (std::vector<std::string>{"Female", "Male"}));
  EXPECT_EQ(Labels(criteria[0], 1).at(0), "-2 Restricted Log Likelihood");
  EXPECT_NEAR(Value(criteria[0], {0, 0}), 141.218, 5e-4);
  EXPECT_NEAR(Value(criteria[0], {1, 0}), 273.448, 5e-4);
  // The split is in the rows, not in a caption.
  EXPECT_EQ(Captions(criteria[0]),
            (std::vector<std::string>{"The information criteria are displayed in smaller-is-better form."}));

  const std::vector<json> estimates = Tables(commands[0], "Parameter Estimates");
  ASSERT_EQ(estimates.size(), 1u);
  EXPECT_EQ(Labels(estimates[0], 0), (std::vector<std::string>{"Female", "Male"}));
  EXPECT_EQ(Labels(estimates[0], 1), (std::vector<std::string>{"Intercept", "age"}));
  EXPECT_NEAR(Value(estimates[0], {0, 0, 0}), 17.3727, 5e-5);
  EXPECT_NEAR(Value(estimates[0], {0, 1, 0}), 0.4795, 5e-5);
  EXPECT_NEAR(Value(estimates[0], {1, 0, 0}), 16.3406, 5e-5);
  EXPECT_NEAR(Value(estimates[0], {1, 1, 0}), 0.7844, 5e-5);

  EXPECT_EQ(Tables(commands[0], "Tests of Fixed Effects").size(), 1u);
  EXPECT_EQ(Tables(commands[0], "Correlation Matrix").size(), 1u);
  EXPECT_EQ(Tables(commands[0], "Covariance Matrix").size(), 1u);
  // The model viewer shows each split under its title, after the
  // command's own tables.
  EXPECT_EQ(Headings(commands[0]).back(), "Model Viewer");
  EXPECT_EQ(Headings(ViewerHeading(commands[0])),
            (std::vector<std::string>{"Split file: Sex of the child = Female", "Split file: Sex of the child = Male"}));
  EXPECT_EQ(Tables(commands[0], "ModelSummary").size(), 2u);
}

// SEPARATE: each split with tables of its own.
TEST_F(AppExpectationsTest, OrthodontSplitSeparateGivesEachSplitItsTables) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("orthodont-split-separate", 0, 1, commands));
  for (const char* subtype : {"Information Criteria", "Tests of Fixed Effects", "Parameter Estimates"}) {
    const std::vector<json> tables = Tables(commands[0], subtype);
    ASSERT_EQ(tables.size(), 2u) << subtype;
    EXPECT_EQ(Captions(tables[0]).at(0), "Split file: Sex of the child = Female") << subtype;
    EXPECT_EQ(Captions(tables[1]).at(0), "Split file: Sex of the child = Male") << subtype;
  }
  // The same fits as the layered run.
  const std::vector<json> criteria = Tables(commands[0], "Information Criteria");
  EXPECT_EQ(criteria[0]["cells"][0]["text"], "141.218");
  EXPECT_EQ(criteria[1]["cells"][0]["text"], "273.448");
  // The model viewer's tables of each split, the criteria the same.
  const std::vector<json> summaries = Tables(commands[0], "ModelSummary");
  ASSERT_EQ(summaries.size(), 2u);
  EXPECT_EQ(Value(summaries[0], {3}), Value(criteria[0], {2}));
  EXPECT_EQ(Value(summaries[1], {3}), Value(criteria[1], {2}));
}

// A scale weight, then a frequency weight: the notes say how weights are
// handled.
TEST_F(AppExpectationsTest, CbppWeightedFitsWithAScaleAndAFrequencyWeight) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("cbpp-weighted", 0, 2, commands));
  EXPECT_EQ(NotesValue(commands[0], "Weight Handling"), "Not applicable");
  EXPECT_EQ(NotesValue(commands[1], "Weight Handling"), "Weight values are rounded to the nearest whole number.");
  EXPECT_EQ(NotesValue(commands[1], "Model File"), "<output>/model-2.xml");
  const std::vector<json> first = Tables(commands[0], "Information Criteria");
  const std::vector<json> second = Tables(commands[1], "Information Criteria");
  ASSERT_EQ(first.size(), 1u);
  ASSERT_EQ(second.size(), 1u);
  EXPECT_NE(Value(first[0], {0}), Value(second[0], {0}));
}

// A generalized example: the estimates and their standard errors agree with
// the R implementation of the residual pseudo-likelihood that the engine's
// tests hold, the target's table names the model, and the exponentiated
// estimates are the exponentials of the estimates.
namespace {

void ExpectGeneralizedFit(const json& command, const json& reference, const std::string& distribution,
                          const std::string& link) {
  const std::vector<json> model = Tables(command, "Target Model");
  ASSERT_EQ(model.size(), 1u);
  bool named = false;
  for (const json& cell : model[0]["cells"]) named = named || cell["text"] == distribution;
  EXPECT_TRUE(named) << distribution;
  bool linked = false;
  for (const json& cell : model[0]["cells"]) linked = linked || cell["text"] == link;
  EXPECT_TRUE(linked) << link;
  const std::vector<json> estimates = Tables(command, "Parameter Estimates");
  ASSERT_EQ(estimates.size(), 1u);
  const std::vector<std::string> statistics = Labels(estimates[0], 1);
  const int exp = static_cast<int>(std::find(statistics.begin(), statistics.end(), "Exp(Estimate)") - statistics.begin());
  ASSERT_LT(exp, static_cast<int>(statistics.size()));
  const std::vector<std::string> parameters = Labels(estimates[0], 0);
  for (std::size_t k = 0; k < reference["estimates"].size(); ++k) {
    const std::string name = reference["columns"][k].get<std::string>();
    // A factor's parameter is labelled [factor=value].
    const std::string label = name.find('=') == std::string::npos ? name : "[" + name + "]";
    const int row = static_cast<int>(std::find(parameters.begin(), parameters.end(), label) - parameters.begin());
    ASSERT_LT(row, static_cast<int>(parameters.size())) << label;
    ExpectRelative(Value(estimates[0], {row, 0}), reference["estimates"][k].get<double>(), 1e-4, name + " estimate");
    ExpectRelative(Value(estimates[0], {row, 1}), reference["std_errors"][k].get<double>(), 1e-4, name + " error");
    ExpectRelative(Value(estimates[0], {row, exp}), std::exp(reference["estimates"][k].get<double>()), 1e-4,
                   name + " exponentiated");
  }
}

void ExpectPseudoLikelihoodFit(const json& command, const std::string& fixture, const std::string& distribution,
                               const std::string& link) {
  ExpectGeneralizedFit(command, Reference("pseudo_likelihood")[fixture], distribution, link);
}

}  // namespace

// Events out of trials: new cases out of each herd's size.
TEST_F(AppExpectationsTest, CbppFitsABinomialTargetOfEventsOutOfTrials) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("cbpp", 0, 1, commands));
  ExpectPseudoLikelihoodFit(commands[0], "cbpp_reml", "Binomial", "Logit");
}

// The same herds by maximum likelihood: the Laplace fit and ten-point
// quadrature agree with lme4::glmer, whose values the engine's tests hold;
// -2 log likelihood keeps all its constants (glmer's quadrature deviance
// leaves out the saturated model's part).
TEST_F(AppExpectationsTest, CbppLaplaceAndQuadratureAgreeWithTheLikelihoodReference) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("cbpp-laplace", 0, 2, commands));
  const json laplace = Reference("laplace")["cbpp_laplace"];
  const json quadrature = Reference("laplace")["cbpp_quadrature10"];
  ExpectGeneralizedFit(commands[0], laplace, "Binomial", "Logit");
  ExpectGeneralizedFit(commands[1], quadrature, "Binomial", "Logit");
  const std::vector<json> first = Tables(commands[0], "Information Criteria");
  const std::vector<json> second = Tables(commands[1], "Information Criteria");
  ASSERT_EQ(first.size(), 1u);
  ASSERT_EQ(second.size(), 1u);
  ExpectRelative(Value(first[0], {0}), laplace["minus2loglik"].get<double>(), 1e-6, "Laplace -2 log likelihood");
  ExpectRelative(Value(second[0], {0}),
                 quadrature["minus2loglik"].get<double>() + quadrature["saturated_minus2loglik"].get<double>(), 1e-6,
                 "quadrature -2 log likelihood");
}

// Positive reaction times by their likelihood: the gamma fit agrees with
// glmmTMB and the inverse Gaussian with its own link POWER(-2) with the
// direct Laplace approximation of the reference script, whose values the
// engine's tests hold; the dispersion is the residual effect's variance.
TEST_F(AppExpectationsTest, SleepstudyGammaFitsPositiveTargetsByTheirLikelihood) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("sleepstudy-gamma", 0, 2, commands));
  const json fits = Reference("laplace");
  const char* const names[] = {"sleepstudy_gamma_laplace", "sleepstudy_igauss_power_laplace"};
  ExpectGeneralizedFit(commands[0], fits[names[0]], "Gamma", "Log");
  for (std::size_t c = 0; c < 2; ++c) {
    SCOPED_TRACE(names[c]);
    const json& reference = fits[names[c]];
    const std::vector<json> criteria = Tables(commands[c], "Information Criteria");
    ASSERT_EQ(criteria.size(), 1u);
    ExpectRelative(Value(criteria[0], {0}), reference["minus2loglik"].get<double>(), 1e-6, "-2 log likelihood");
    const std::vector<json> estimates = Tables(commands[c], "Parameter Estimates");
    ASSERT_EQ(estimates.size(), 1u);
    for (int k = 0; k < 2; ++k) {
      const std::string name = reference["columns"][static_cast<std::size_t>(k)].get<std::string>();
      ASSERT_EQ(Labels(estimates[0], 0).at(static_cast<std::size_t>(k)), name);
      ExpectRelative(Value(estimates[0], {k, 0}), reference["estimates"][static_cast<std::size_t>(k)].get<double>(), 1e-4,
                     name + " estimate");
      ExpectRelative(Value(estimates[0], {k, 1}), reference["std_errors"][static_cast<std::size_t>(k)].get<double>(),
                     1e-4, name + " error");
    }
    const std::vector<json> random = Tables(commands[c], "CovarianceParameters");
    const std::vector<json> residual = Tables(commands[c], "ResidualEffect");
    ASSERT_EQ(random.size(), 1u);
    ASSERT_EQ(residual.size(), 1u);
    ExpectRelative(Value(random[0], {0, 0}), reference["random_covariance"].get<double>(), 1e-4, "random variance");
    ExpectRelative(Value(residual[0], {0, 0}), reference["dispersion"].get<double>(), 1e-4, "dispersion");
    ExpectRelative(Value(residual[0], {0, 1}), reference["dispersion_se"].get<double>(), 1e-4, "its error");
  }
  const std::vector<json> model = Tables(commands[1], "Target Model");
  ASSERT_EQ(model.size(), 1u);
  bool linked = false;
  for (const json& cell : model[0]["cells"]) linked = linked || cell["text"] == "Power (-2)";
  EXPECT_TRUE(linked);
}

// Counts with the log link.
TEST_F(AppExpectationsTest, EpilepsyFitsAPoissonTarget) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("epilepsy", 0, 1, commands));
  ExpectPseudoLikelihoodFit(commands[0], "epil_reml", "Poisson", "Log");
}

// An ordinal target: the wine ratings by cumulative logit with ten-point
// quadrature agree with ordinal::clmm, whose values the engine's tests hold;
// the thresholds stand in the intercept's place and the means are latent.
TEST_F(AppExpectationsTest, WineFitsAnOrdinalTargetWithItsThresholds) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("wine", 0, 1, commands));
  const json reference = Reference("ordinal")["fits"][1];
  ASSERT_EQ(reference["nAGQ"].get<int>(), 10);
  const std::vector<json> estimates = Tables(commands[0], "Parameter Estimates");
  ASSERT_EQ(estimates.size(), 1u);
  const std::vector<std::string> parameters = Labels(estimates[0], 0);
  const auto expectRow = [&](const std::string& label, const json& estimate, const json& error) {
    const int row = static_cast<int>(std::find(parameters.begin(), parameters.end(), label) - parameters.begin());
    ASSERT_LT(row, static_cast<int>(parameters.size())) << label;
    ExpectRelative(Value(estimates[0], {row, 0}), estimate.get<double>(), 1e-4, label + " estimate");
    ExpectRelative(Value(estimates[0], {row, 1}), error.get<double>(), 1e-4, label + " error");
  };
  EXPECT_EQ(std::find(parameters.begin(), parameters.end(), "Intercept"), parameters.end());
  for (std::size_t j = 0; j < 4; ++j) {
    expectRow("Threshold [rating=" + std::to_string(j + 1) + "]", reference["thresholds"][j],
              reference["threshold_se"][j]);
  }
  expectRow("[temp=cold]", reference["beta"][0], reference["beta_se"][0]);
  expectRow("[contact=no]", reference["beta"][1], reference["beta_se"][1]);
  const std::vector<json> criteria = Tables(commands[0], "Information Criteria");
  ASSERT_EQ(criteria.size(), 1u);
  ExpectRelative(Value(criteria[0], {0}), -2.0 * reference["loglik"].get<double>(), 1e-6, "-2 log likelihood");

  // The means of the temperatures on the latent scale, as emmeans gives them
  // for clmm's fit with mode = "latent".
  const std::vector<json> means = Tables(commands[0], "Estimates");
  ASSERT_EQ(means.size(), 2u);
  const json& latent = reference["latent_temp"];
  const std::vector<std::string> levels = Labels(means[0], 0);
  ASSERT_EQ(levels.size(), 2u);
  for (std::size_t k = 0; k < 2; ++k) {
    const std::string level = latent["levels"]["temp"][k].get<std::string>();
    const int row = static_cast<int>(std::find(levels.begin(), levels.end(), level) - levels.begin());
    ASSERT_LT(row, 2) << level;
    ExpectRelative(Value(means[0], {row, 0}), latent["emmean"][k].get<double>(), 1e-4, level + " mean");
    ExpectRelative(Value(means[0], {row, 1}), latent["se"][k].get<double>(), 1e-4, level + " error");
  }

  // The classification table: each rating against the category clmm's fit
  // finds most probable for its record.
  const std::vector<json> classification = Tables(commands[0], "Classification");
  ASSERT_EQ(classification.size(), 1u);
  std::vector<std::vector<double>> counts(5, std::vector<double>(5, 0.0));
  std::ifstream data(fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / "wine.csv");
  std::string line;
  std::getline(data, line);
  for (std::size_t r = 0; std::getline(data, line); ++r) {
    std::vector<std::string> fields;
    std::stringstream cells(line);
    for (std::string field; std::getline(cells, field, ',');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 6u);
    const int observed = std::stoi(fields[4]), predicted = reference["predicted_category"][r].get<int>();
    counts[static_cast<std::size_t>(observed - 1)][static_cast<std::size_t>(predicted - 1)] += 1.0;
  }
  for (int i = 0; i < 5; ++i) {
    for (int j = 0; j < 5; ++j) {
      EXPECT_EQ(Value(classification[0], {i, 0, j}), counts[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)])
          << "observed " << i + 1 << ", predicted " << j + 1;
    }
  }
}

// No valid case on the whole file: an error, which ends the command. A split
// without cases: a warning, and the other split is fitted.
TEST_F(AppExpectationsTest, FailuresReportNoValidCasesAsAnErrorAndAnEmptySplitAsAWarning) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("failures", 1, 2, commands));

  EXPECT_EQ(Messages(commands[0]), (std::vector<std::string>{"error: There are no valid cases for this analysis."}));
  EXPECT_TRUE(Tables(commands[0], "Information Criteria").empty());
  EXPECT_EQ(Tables(commands[0], "Notes").size(), 1u);

  EXPECT_EQ(Messages(commands[1]),
            (std::vector<std::string>{
                "warning: There are no valid cases in this split file group. The analysis of the group is skipped."}));
  // The splits are shown together (the default): the tables have rows for
  // the fitted split only.
  const std::vector<json> criteria = Tables(commands[1], "Information Criteria");
  ASSERT_EQ(criteria.size(), 1u);
  EXPECT_EQ(Labels(criteria[0], 0), (std::vector<std::string>{"Male"}));
  const std::vector<json> estimates = Tables(commands[1], "Parameter Estimates");
  ASSERT_EQ(estimates.size(), 1u);
  EXPECT_EQ(Labels(estimates[0], 0), (std::vector<std::string>{"Male"}));
  EXPECT_EQ(Labels(estimates[0], 1), (std::vector<std::string>{"Intercept", "age"}));
}

// DEBUG switches: the specification is shown after the data pass, the sorted
// records are written to the output folder, and the switches are off again
// after the run.
TEST_F(AppExpectationsTest, DebugSwitchesShowTheSettingsAndWriteTheRecords) {
  const json report = RunExample("debug");
  EXPECT_EQ(fExitStatus, 0);
  const std::vector<json> debug = Commands(report, "Debug");
  ASSERT_EQ(debug.size(), 2u);
  EXPECT_NE(FrontEndText(debug[0]).find("Debug switches on: display_settings, write_text_data."), std::string::npos);
  EXPECT_NE(FrontEndText(debug[1]).find("All debug switches are off."), std::string::npos);
  const std::vector<json> commands = Commands(report, "Mixed Model");
  ASSERT_EQ(commands.size(), 1u);
  const std::string text = FrontEndText(commands[0]);
  EXPECT_NE(text.find("MIXValidSpecs display start"), std::string::npos);
  EXPECT_NE(text.find("OUTFILE MODEL: <output>/model-1.xml"), std::string::npos);
  ExpectReferenceFit(commands[0], "dyestuff");

  std::ifstream records(fOutput / "mixed_sorted_encoded_records.txt");
  ASSERT_TRUE(records.good());
  std::string line;
  int lines = 0;
  while (std::getline(records, line)) ++lines;
  EXPECT_EQ(lines, 31);  // the names, then the 30 cases
  EXPECT_FALSE(display_settings);
  EXPECT_FALSE(write_text_data);
}

// The oats trial with nitrogen as a factor, as the reference fit has it:
// the fit, the covariance parameters and every table of marginal means
// agree with R, and its custom tests stand in a heading of their own.
TEST_F(AppExpectationsTest, OatsFactorialShowsMeansAndContrastsOfEachKind) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("oats-factorial", 0, 1, commands));
  EXPECT_TRUE(Messages(commands[0]).empty());
  ExpectReferenceFit(commands[0], "oats");
  ExpectViewerCovarianceParameters(commands[0], "oats");

  EXPECT_EQ(Headings(commands[0]), (std::vector<std::string>{"Fixed Effects", "Custom Hypothesis Tests", "Model Viewer"}));
  EXPECT_EQ(Headings(ViewerHeading(commands[0])),
            (std::vector<std::string>{"Random Effect Covariances", "Covariance Parameters",
                                      "Estimated Marginal Means for Top Significant Fixed Effects",
                                      "Estimated Marginal Means 1: Variety of oats * Nitrogen (hundredweight per acre)",
                                      "Estimated Marginal Means 2: Variety of oats * Nitrogen (hundredweight per acre)",
                                      "Estimated Marginal Means 3: Nitrogen (hundredweight per acre)"}));
  const json means = Reference("emmeans/oats");
  const std::vector<json> grand = Tables(commands[0], "GrandMeans");
  ASSERT_EQ(grand.size(), 1u);
  viewer_reference::ExpectShown(&grand[0]["cells"][0], means["grand_mean"]["estimate"].get<double>(), "grand mean");
  viewer_reference::ExpectShown(&grand[0]["cells"][1], means["grand_mean"]["se"].get<double>(), "its error");

  // The requests in the command's order, and the reference's of each.
  const std::size_t references[] = {2, 1, 3};
  const std::vector<json> estimates = Tables(commands[0], "Estimates");
  const std::vector<json> contrasts = Tables(commands[0], "Contrasts");
  const std::vector<json> tests = Tables(commands[0], "OverallTestResults");
  ASSERT_EQ(estimates.size(), 3u);
  ASSERT_EQ(contrasts.size(), 3u);
  ASSERT_EQ(tests.size(), 3u);
  for (std::size_t r = 0; r < 3; ++r) {
    const json& request = means["requests"][references[r]];
    SCOPED_TRACE(request["name"].get<std::string>());
    viewer_reference::ExpectEstimates(estimates[r], request);
    viewer_reference::ExpectContrasts(contrasts[r], request);
    viewer_reference::ExpectOverallTests(tests[r], request);
  }
  EXPECT_EQ(contrasts[0]["title"]["text"], "Deviation Contrasts");
  EXPECT_EQ(contrasts[1]["title"]["text"], "Simple Contrasts");
  EXPECT_EQ(contrasts[2]["title"]["text"], "Pairwise Contrasts");
  // Each request says how its significance values are adjusted.
  EXPECT_NE(Captions(contrasts[0]).at(0).find("sequential Sidak"), std::string::npos);
  EXPECT_NE(Captions(contrasts[1]).at(0).find("sequential Bonferroni"), std::string::npos);
  EXPECT_NE(Captions(contrasts[2]).at(0).find("sequential Bonferroni"), std::string::npos);
}

// Residual structures without random effects: first-order autoregressive,
// then unstructured, each as its reference fit.
TEST_F(AppExpectationsTest, OrthodontResidualFitsTheResidualStructures) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("orthodont-residual", 0, 2, commands));
  ExpectReferenceFit(commands[0], "orthodont_ar1");
  ExpectViewerCovarianceParameters(commands[0], "orthodont_ar1");
  ExpectReferenceFit(commands[1], "orthodont_un");
  ExpectViewerCovarianceParameters(commands[1], "orthodont_un");
  // No random block: no covariance matrices and no random parameters.
  EXPECT_EQ(ViewerSubTypes(commands[0]), (std::vector<std::string>{"ModelSummary", "DataStructure", "FixedEffects",
                                                                   "FixedCoefficients", "CovarianceParametersSummary",
                                                                   "ResidualEffect"}));
  const std::vector<json> residual = Tables(commands[1], "ResidualEffect");
  ASSERT_EQ(residual.size(), 1u);
  EXPECT_EQ(Labels(residual[0], 0).size(), 10u);
}

// A spatial structure over the weighing days.
TEST_F(AppExpectationsTest, BodyweightSpatialFitsAnExponentialResidual) {
  std::vector<json> commands;
  ASSERT_NO_FATAL_FAILURE(RunFits("bodyweight-spatial", 0, 1, commands));
  ExpectReferenceFit(commands[0], "covariance/bodyweight_sp_exp");
  ExpectViewerCovarianceParameters(commands[0], "covariance/bodyweight_sp_exp");
  const std::vector<json> residual = Tables(commands[0], "ResidualEffect");
  ASSERT_EQ(residual.size(), 1u);
  EXPECT_EQ(Labels(residual[0], 0), (std::vector<std::string>{"SP(EXP) range", "Variance"}));
  EXPECT_NE(Captions(residual[0]).at(0).find("Spatial exponential"), std::string::npos);
}

// Every example command file has its test above.
TEST(AppExpectationsCoverage, EveryExampleHasAnExpectation) {
  int files = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(GLMIX_SOURCE_DIR) / "examples")) {
    if (entry.path().extension() != ".gmx") continue;
    ++files;
    const fs::path expected =
        fs::path(GLMIX_TEST_DATA_DIR) / "app" / "expected" / (entry.path().stem().string() + ".json");
    EXPECT_TRUE(fs::is_regular_file(expected)) << "no expectation for " << entry.path();
  }
  EXPECT_EQ(files, 22);
}

}  // namespace
