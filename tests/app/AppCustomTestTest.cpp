// Custom hypothesis tests (/CONTRAST) from the command to the report: the
// examples' tests against the committed lmerTest references of
// tests/data/numeric/reference/custom_tests (written by
// tests/numeric/reference/make_custom_test_reference.R), and tests that
// cannot be computed, each with its note.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "AppReportRunFixture.h"

namespace fs = std::filesystem;
using apptest::CollectMessages;
using apptest::Labels;
using apptest::ReadJson;
using apptest::Value;
using nlohmann::json;

namespace {

constexpr double kTol = 1e-5;

// The tables of each custom test's heading, by the heading's text.
struct TestTables {
  const json* fpEstimates = nullptr;
  const json* fpResults = nullptr;
  const json* fpCoefficients = nullptr;
};

void CollectCustomTests(const json& items, std::vector<std::pair<std::string, TestTables>>& out, bool inside) {
  for (const json& item : items) {
    if (item["kind"] != "heading") continue;
    const std::string text = item["text"].get<std::string>();
    if (inside) {
      TestTables tables;
      for (const json& inner : item["items"]) {
        if (inner["kind"] != "table") continue;
        const std::string subtype = inner["subtype"].get<std::string>();
        if (subtype == "Contrast Estimates") tables.fpEstimates = &inner;
        if (subtype == "Test Results") tables.fpResults = &inner;
        if (subtype == "L Matrix") tables.fpCoefficients = &inner;
      }
      out.emplace_back(text, tables);
    } else {
      CollectCustomTests(item["items"], out, text == "Custom Hypothesis Tests");
    }
  }
}

void ExpectNear(double actual, double expected, double relative, const std::string& what) {
  EXPECT_NEAR(actual, expected, relative * std::fabs(expected) + 1e-12) << what;
}

// The columns of the estimates table.
enum Column { kEstimate = 0, kTestValue, kStdError, kDF, kT, kSig, kLower, kUpper };

class AppCustomTestTest : public AppReportRunFixture {
 protected:
  // Commands after the LOAD of an example's data file: `commands` begins
  // with the file's name.
  json RunCommands(const std::string& commands) { return RunInExamples("LOAD 'data/" + commands); }

  std::vector<std::pair<std::string, TestTables>> CustomTests(const json& report) {
    std::vector<std::pair<std::string, TestTables>> tests;
    CollectCustomTests(report["items"], tests, false);
    return tests;
  }
};

json Reference(const std::string& name) {
  return ReadJson(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / "custom_tests" / (name + ".json"));
}

// A computed test's two tables against a reference test.
void ExpectTest(const TestTables& tables, const json& reference) {
  ASSERT_NE(tables.fpEstimates, nullptr);
  ASSERT_NE(tables.fpResults, nullptr);
  const json& estimates = *tables.fpEstimates;
  const json& rows = reference["rows"];
  ASSERT_EQ(Labels(estimates["dimensions"][0]["children"]).size(), rows.size());
  EXPECT_EQ(Labels(estimates["dimensions"][1]["children"]),
            (std::vector<std::string>{"Estimate", "Test Value", "Std. Error", "df", "t", "Sig.", "Lower Bound",
                                      "Upper Bound"}));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const json& r = rows[i];
    const int row = static_cast<int>(i);
    SCOPED_TRACE("row " + std::to_string(i + 1));
    ExpectNear(Value(estimates, row, kEstimate), r["estimate"].get<double>(), kTol, "estimate");
    EXPECT_EQ(Value(estimates, row, kTestValue), r["K"].get<double>());
    ExpectNear(Value(estimates, row, kStdError), r["se"].get<double>(), kTol, "standard error");
    ExpectNear(Value(estimates, row, kDF), r["df"].get<double>(), kTol, "df");
    ExpectNear(Value(estimates, row, kT), r["t"].get<double>(), kTol, "t");
    ExpectNear(Value(estimates, row, kSig), r["p"].get<double>(), 1e-4, "significance");
    ExpectNear(Value(estimates, row, kLower), r["lower"].get<double>(), kTol, "lower bound");
    ExpectNear(Value(estimates, row, kUpper), r["upper"].get<double>(), kTol, "upper bound");
  }
  const json& results = *tables.fpResults;
  EXPECT_EQ(Labels(results["dimensions"][0]["children"]), (std::vector<std::string>{reference["label"].get<std::string>()}));
  EXPECT_EQ(Labels(results["dimensions"][1]["children"]),
            (std::vector<std::string>{"Numerator df", "Denominator df", "F", "Sig."}));
  const json& joint = reference["joint"];
  EXPECT_EQ(Value(results, 0, 0), joint["numDF"].get<double>());
  ExpectNear(Value(results, 0, 1), joint["denDF"].get<double>(), kTol, "denominator df");
  ExpectNear(Value(results, 0, 2), joint["F"].get<double>(), kTol, "F");
  ExpectNear(Value(results, 0, 3), joint["p"].get<double>(), 1e-4, "joint significance");
}

// The footnotes of a table, as text.
std::vector<std::string> Notes(const json& table) {
  std::vector<std::string> notes;
  for (const json& note : table["footnotes"]) notes.push_back(note["text"].get<std::string>());
  return notes;
}

}  // namespace

TEST_F(AppCustomTestTest, TheOrthodontExampleTestsTheDifferenceOfTheSlopesAsLmerTestDoes) {
  const json report = RunExample("orthodont");
  EXPECT_EQ(fExitStatus, 0);
  const auto tests = CustomTests(report);
  ASSERT_EQ(tests.size(), 1u);
  EXPECT_EQ(tests[0].first, "Difference of the slopes");
  EXPECT_EQ(tests[0].second.fpCoefficients, nullptr);
  ExpectTest(tests[0].second, Reference("orthodont")["tests"][0]);
}

TEST_F(AppCustomTestTest, TheOatsExampleTestsTrendsOfNitrogenAsLmerTestDoesAndReportsTheTestThatIsNotEstimable) {
  const json report = RunExample("oats-factorial");
  EXPECT_EQ(fExitStatus, 0);
  const auto tests = CustomTests(report);
  ASSERT_EQ(tests.size(), 3u);
  const json reference = Reference("oats");
  EXPECT_EQ(tests[0].first, "Linear trend of nitrogen");
  ExpectTest(tests[0].second, reference["tests"][0]);
  EXPECT_EQ(tests[1].first, "Trends of nitrogen within Victory");
  ExpectTest(tests[1].second, reference["tests"][1]);

  // Variety 0 1 -1 without the interaction terms is not a function of the
  // estimable parameters: no numbers, a note on the row and on the test.
  EXPECT_EQ(tests[2].first, "Custom Hypothesis Test 3");
  ASSERT_NE(tests[2].second.fpEstimates, nullptr);
  const json& estimates = *tests[2].second.fpEstimates;
  EXPECT_TRUE(std::isnan(Value(estimates, 0, kEstimate)));
  EXPECT_TRUE(std::isnan(Value(estimates, 0, kStdError)));
  EXPECT_EQ(Notes(estimates).size(), 1u);
  EXPECT_NE(report.dump().find("This row is not estimable"), std::string::npos);
  const json& results = *tests[2].second.fpResults;
  EXPECT_TRUE(std::isnan(Value(results, 0, 2)));
  EXPECT_NE(report.dump().find("The joint test is not computed because a row of the test is not computed."),
            std::string::npos);

  // /DISPLAY LMATRIX: the coefficients over the parameters, the second
  // test's rows side by side.
  ASSERT_NE(tests[1].second.fpCoefficients, nullptr);
  const json& L = *tests[1].second.fpCoefficients;
  const std::vector<std::string> parameters = Labels(L["dimensions"][0]["children"]);
  ASSERT_EQ(parameters.size(), 1u + 3u + 4u + 12u);
  EXPECT_EQ(Labels(L["dimensions"][1]["children"]), (std::vector<std::string>{"L1", "L2"}));
  // nitro=0 is the fifth parameter; the last is Victory at nitro=0.6.
  EXPECT_EQ(Value(L, 4, 0), -3.0);
  EXPECT_EQ(Value(L, 4, 1), 1.0);
  EXPECT_EQ(Value(L, 19, 0), 3.0);
  EXPECT_EQ(Value(L, 19, 1), 1.0);
  EXPECT_EQ(Value(L, 0, 0), 0.0);
}

TEST_F(AppCustomTestTest, TheSleepStudyExamplePredictsSubjectsAtDayFiveWithTheirRandomEffects) {
  const json report = RunExample("sleepstudy");
  EXPECT_EQ(fExitStatus, 0);
  const auto tests = CustomTests(report);
  ASSERT_EQ(tests.size(), 3u);
  const json reference = Reference("sleepstudy");
  ExpectTest(tests[0].second, reference["tests"][0]);
  for (std::size_t k = 1; k < 3; ++k) {
    const json& prediction = reference["predictions"][k - 1];
    SCOPED_TRACE(tests[k].first);
    EXPECT_EQ(tests[k].first, "Subject " + prediction["subject"].get<std::string>() + " at day 5");
    const json& estimates = *tests[k].second.fpEstimates;
    ExpectNear(Value(estimates, 0, kEstimate), prediction["estimate"].get<double>(), kTol, "prediction");
    ExpectNear(Value(estimates, 0, kStdError), prediction["se"].get<double>(), kTol, "prediction's standard error");
    // t and the joint F of a single row agree with each other.
    const double t = Value(estimates, 0, kT);
    EXPECT_NEAR(t, prediction["estimate"].get<double>() / prediction["se"].get<double>(), 1e-4 * std::fabs(t));
    EXPECT_GT(Value(estimates, 0, kDF), 0.0);
    const json& results = *tests[k].second.fpResults;
    EXPECT_NEAR(Value(results, 0, 2), t * t, 1e-9 * t * t);
    EXPECT_EQ(Value(results, 0, 1), Value(estimates, 0, kDF));
  }
}

TEST_F(AppCustomTestTest, RowsThatDoNotMatchTheModelAreReportedWithTheirReasonAndTheRunGoesOn) {
  std::string manySubjects;
  for (int i = 0; i < 19; ++i) manySubjects += " 1";
  const json report = RunCommands(
      "sleepstudy.csv'.\n"
      "GLMIXFIT Reaction WITH Days\n"
      "  /FIXED Days\n"
      "  /RANDOM INTERCEPT Days SUBJECTS=Subject STRUCTURE=UN\n"
      "  /CONTRAST 'Too short' Days 1 2\n"
      "  /CONTRAST 'Too many subjects' INTERCEPT 1 | INTERCEPT" + manySubjects + "\n"
      "  /CONTRAST 'Two subjects' INTERCEPT 1 | INTERCEPT 1 0 ; INTERCEPT 1 | INTERCEPT 0 1\n"
      "  /CONTRAST 'Nothing' INTERCEPT 0.\n");
  EXPECT_EQ(fExitStatus, 0);
  std::vector<std::string> messages;
  CollectMessages(report["items"], messages);
  EXPECT_TRUE(messages.empty()) << messages.front();
  const auto tests = CustomTests(report);
  ASSERT_EQ(tests.size(), 4u);
  const std::string text = report.dump();

  // Days has one parameter: two values are the wrong length.
  EXPECT_TRUE(std::isnan(Value(*tests[0].second.fpEstimates, 0, kEstimate)));
  EXPECT_NE(text.find("This row's values do not match the parameters of this model"), std::string::npos);
  // The data have 18 subjects.
  EXPECT_TRUE(std::isnan(Value(*tests[1].second.fpEstimates, 0, kEstimate)));
  EXPECT_NE(text.find("The random part of this row does not match the random effects of this model"),
            std::string::npos);
  // Two predictions: each row has its numbers, the joint test has none.
  const json& two = *tests[2].second.fpEstimates;
  EXPECT_FALSE(std::isnan(Value(two, 0, kEstimate)));
  EXPECT_FALSE(std::isnan(Value(two, 1, kEstimate)));
  EXPECT_NE(Value(two, 0, kEstimate), Value(two, 1, kEstimate));
  EXPECT_TRUE(std::isnan(Value(*tests[2].second.fpResults, 0, 2)));
  EXPECT_NE(text.find("A joint test of several rows with random parts is not computed."), std::string::npos);
  // A row of zeros has no variance.
  EXPECT_TRUE(std::isnan(Value(*tests[3].second.fpResults, 0, 2)));
  EXPECT_NE(text.find("its variance is zero or not available"), std::string::npos);
}

namespace {

// The least-squares slope of distance on age within one sex, from the data
// file. Every child is measured at the same four ages, so the slope of the
// model with a random intercept per child is this slope.
double SlopeOfSex(const std::string& sex) {
  std::ifstream in(fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / "orthodont.csv");
  std::string line;
  std::getline(in, line);
  double n = 0.0, sx = 0.0, sy = 0.0, sxx = 0.0, sxy = 0.0;
  while (std::getline(in, line)) {
    std::stringstream fields(line);
    std::string distance, age, subject, rowSex;
    std::getline(fields, distance, ',');
    std::getline(fields, age, ',');
    std::getline(fields, subject, ',');
    std::getline(fields, rowSex, ',');
    if (rowSex != "\"" + sex + "\"") continue;
    const double x = std::stod(age), y = std::stod(distance);
    n += 1.0;
    sx += x;
    sy += y;
    sxx += x * x;
    sxy += x * y;
  }
  return (sxy - sx * sy / n) / (sxx - sx * sx / n);
}

}  // namespace

TEST_F(AppCustomTestTest, OnASplitFileEachSplitHasItsTestsLayeredOrSeparate) {
  const std::string model =
      "GLMIXFIT distance WITH age\n"
      "  /FIXED age\n"
      "  /RANDOM INTERCEPT SUBJECTS=Subject STRUCTURE=VC\n"
      "  /CONTRAST 'Growth over two years' age 2.\n";
  const json report = RunCommands("orthodont.csv'.\nSPLIT BY Sex LAYERED.\n" + model +
                                  "SPLIT BY Sex SEPARATE.\n" + model);
  EXPECT_EQ(fExitStatus, 0);
  const double female = 2.0 * SlopeOfSex("Female");
  const double male = 2.0 * SlopeOfSex("Male");
  const auto tests = CustomTests(report);
  ASSERT_EQ(tests.size(), 3u);

  // Layered: one table, the split as its first dimension.
  const json& layered = *tests[0].second.fpEstimates;
  ASSERT_EQ(layered["dimensions"].size(), 3u);
  EXPECT_EQ(Labels(layered["dimensions"][0]["children"]), (std::vector<std::string>{"Female", "Male"}));
  std::map<int, double> estimates;
  for (const json& cell : layered["cells"]) {
    if (cell["coordinates"][1] == 0 && cell["coordinates"][2] == kEstimate) {
      estimates[cell["coordinates"][0].get<int>()] = cell["value"].get<double>();
    }
  }
  ASSERT_EQ(estimates.size(), 2u);
  ExpectNear(estimates[0], female, 1e-9, "girls' growth");
  ExpectNear(estimates[1], male, 1e-9, "boys' growth");

  // Separate: a heading of tests for each split, in split order.
  EXPECT_EQ(tests[1].first, "Growth over two years");
  ExpectNear(Value(*tests[1].second.fpEstimates, 0, kEstimate), female, 1e-9, "girls' growth");
  ExpectNear(Value(*tests[2].second.fpEstimates, 0, kEstimate), male, 1e-9, "boys' growth");
  EXPECT_NE(tests[1].second.fpResults->dump().find("Female"), std::string::npos);
  EXPECT_NE(tests[2].second.fpResults->dump().find("= Male"), std::string::npos);
  EXPECT_EQ(tests[2].second.fpResults->dump().find("Female"), std::string::npos);
}

// An ordinal target's tests stand on the linear predictor's scale: cold less
// warm is clmm's coefficient of cold (warm the aliased level), with its
// standard error, and F is t squared. A row that weighs the intercept, whose
// place the thresholds take, has no estimate.
TEST_F(AppCustomTestTest, TheWineRatingsTestTheTemperatureAsClmmEstimatesIt) {
  const json report = RunCommands(
      "wine.csv'.\nGLMIXFIT rating BY temp contact /FIXED temp contact /RANDOM INTERCEPT SUBJECTS=judge"
      " /TARGET DISTRIBUTION=MULTINOMIAL /ESTIMATION FIT=QUADRATURE(10)"
      " /CONTRAST 'Cold less warm' temp 1 -1 /CONTRAST 'Cold with the intercept' INTERCEPT 1 temp 1 0.\n");
  EXPECT_EQ(fExitStatus, 0);
  const auto tests = CustomTests(report);
  ASSERT_EQ(tests.size(), 2u);
  const json fit = ReadJson(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / "ordinal.json")["fits"][1];
  ASSERT_EQ(fit["nAGQ"].get<int>(), 10);
  ASSERT_NE(tests[0].second.fpEstimates, nullptr);
  const json& estimates = *tests[0].second.fpEstimates;
  ExpectNear(Value(estimates, 0, kEstimate), fit["beta"][0].get<double>(), 1e-4, "estimate");
  ExpectNear(Value(estimates, 0, kStdError), fit["beta_se"][0].get<double>(), 1e-4, "standard error");
  const double t = Value(estimates, 0, kT);
  EXPECT_NEAR(t, Value(estimates, 0, kEstimate) / Value(estimates, 0, kStdError), 1e-9 * std::fabs(t));
  ASSERT_NE(tests[0].second.fpResults, nullptr);
  EXPECT_NEAR(Value(*tests[0].second.fpResults, 0, 2), t * t, 1e-9 * t * t);

  ASSERT_NE(tests[1].second.fpEstimates, nullptr);
  EXPECT_TRUE(std::isnan(Value(*tests[1].second.fpEstimates, 0, kEstimate)));
  EXPECT_NE(report.dump().find("This row is not estimable"), std::string::npos);
}
