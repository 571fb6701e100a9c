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
#include "host/data/ZORV_Session.h"

namespace fs = std::filesystem;
using apptest::CollectMessages;
using apptest::CollectTables;
using apptest::Labels;
using apptest::ReadJson;
using apptest::Value;
using nlohmann::json;

namespace {

void ExpectNear(double actual, double expected, double relative, const std::string& what) {
  EXPECT_NEAR(actual, expected, relative * std::fabs(expected)) << what;
}

class AppFittingTest : public AppReportRunFixture {};

TEST_F(AppFittingTest, TheSleepStudyExampleIsFittedAndReported) {
  json report = RunExample("sleepstudy");
  EXPECT_EQ(fExitStatus, 0);
  std::vector<std::string> messages;
  CollectMessages(report["items"], messages);
  EXPECT_TRUE(messages.empty()) << messages.front();

  std::multimap<std::string, json> tables;
  CollectTables(report["items"], tables);
  const json reference = ReadJson(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / "sleepstudy_un.json");
  const double minus2ll = reference["minus2ll"].get<double>();

  // Information criteria: REML counts the four covariance parameters.
  ASSERT_EQ(tables.count("Information Criteria"), 1u);
  const json& criteria = tables.find("Information Criteria")->second;
  ASSERT_EQ(criteria["dimensions"].size(), 1u);
  const std::vector<std::string> criteriaRows = Labels(criteria["dimensions"][0]["children"]);
  ASSERT_EQ(criteriaRows.size(), 5u);
  EXPECT_EQ(criteriaRows[0], "-2 Restricted Log Likelihood");
  std::vector<double> values;
  for (const json& cell : criteria["cells"]) values.push_back(cell["value"].get<double>());
  ASSERT_EQ(values.size(), 5u);
  ExpectNear(values[0], minus2ll, 1e-6, "-2 restricted log likelihood");
  ExpectNear(values[1], minus2ll + 2.0 * 4.0, 1e-6, "AIC");
  const double n = 180.0 - 2.0;
  ExpectNear(values[3], minus2ll + 4.0 * (std::log(n) + 1.0), 1e-6, "CAIC");

  // Tests of fixed effects.
  ASSERT_EQ(tables.count("Tests of Fixed Effects"), 1u);
  const json& tests = tables.find("Tests of Fixed Effects")->second;
  EXPECT_EQ(tests["title"]["text"], "Type III Tests of Fixed Effects");
  ASSERT_EQ(tests["dimensions"].size(), 2u);
  EXPECT_EQ(Labels(tests["dimensions"][0]["children"]), (std::vector<std::string>{"Intercept", "Days"}));
  EXPECT_EQ(Labels(tests["dimensions"][1]["children"]),
            (std::vector<std::string>{"Numerator df", "Denominator df", "F", "Sig."}));
  const json& days = reference["typeIII"][0];
  EXPECT_EQ(Value(tests, 1, 0), days["numDF"].get<double>());
  ExpectNear(Value(tests, 1, 1), days["denDF"].get<double>(), 1e-5, "denominator df");
  ExpectNear(Value(tests, 1, 2), days["F"].get<double>(), 1e-5, "F");
  ExpectNear(Value(tests, 1, 3), days["p"].get<double>(), 1e-4, "significance");

  // Estimates of fixed effects.
  ASSERT_EQ(tables.count("Parameter Estimates"), 1u);
  const json& estimates = tables.find("Parameter Estimates")->second;
  ASSERT_EQ(estimates["dimensions"].size(), 2u);
  EXPECT_EQ(Labels(estimates["dimensions"][0]["children"]), (std::vector<std::string>{"Intercept", "Days"}));
  const std::vector<std::string> statistics = Labels(estimates["dimensions"][1]["children"]);
  ASSERT_GE(statistics.size(), 5u);
  EXPECT_EQ(statistics[0], "Estimate");
  EXPECT_EQ(statistics[1], "Std. Error");
  EXPECT_EQ(statistics[2], "df");
  EXPECT_EQ(statistics[4], "Sig.");
  for (int row = 0; row < 2; ++row) {
    const json& beta = reference["beta"][static_cast<std::size_t>(row)];
    const std::string name = beta["name"].get<std::string>();
    ExpectNear(Value(estimates, row, 0), beta["estimate"].get<double>(), 1e-6, name + " estimate");
    ExpectNear(Value(estimates, row, 1), beta["se"].get<double>(), 1e-5, name + " standard error");
    ExpectNear(Value(estimates, row, 2), beta["df"].get<double>(), 1e-5, name + " df");
    ExpectNear(Value(estimates, row, 4), beta["p"].get<double>(), 1e-4, name + " significance");
  }

  // The command's documents were saved in the output folder.
  EXPECT_TRUE(fs::exists(ReportFolder() / "statjson-1.json"));
  EXPECT_GT(fs::file_size(ReportFolder() / "statjson-1.json"), 0u);
}

TEST_F(AppFittingTest, AFitErrorEndsTheCommandWithAnErrorAndTheNextCommandRuns) {
  const fs::path dir = fOutput;
  {
    std::ofstream data(dir / "one.csv");
    data << "y,x,s\n1.5,1,1\n";
    std::ofstream commands(dir / "run.gmx");
    commands << "LOAD 'one.csv'.\nGLMIXFIT y WITH x /FIXED x /RANDOM INTERCEPT SUBJECTS=s.\n"
                "GLMIXFIT y WITH x /FIXED x /RANDOM INTERCEPT SUBJECTS=s.\n";
  }
  AppOptions options;
  options.fOutputDir = ReportFolder().string();
  options.fbText = false;
  AppSession session(options);
  ASSERT_TRUE(session.RunFile((dir / "run.gmx").string()));
  EXPECT_EQ(session.ExitStatus(), 1);
  int errors = 0;
  int fitted = 0;
  for (const OmItem& item : session.GetDocument().fRoot.fvItems) {
    if (item.fKind != OmItem::HEADING || item.fpHeading->fText != "Mixed Model") continue;
    ++fitted;
    int errorsHere = 0;
    for (const OmItem& inner : item.fpHeading->fvItems) {
      if (inner.fKind == OmItem::MESSAGE && inner.fpMessage->fLevel == OmMessage::ERROR) ++errorsHere;
      EXPECT_NE(inner.fKind == OmItem::TABLE ? inner.fpTable->fSubType : std::string(), "Information Criteria");
    }
    EXPECT_EQ(errorsHere, 1);
    errors += errorsHere;
  }
  EXPECT_EQ(fitted, 2);
  EXPECT_EQ(errors, 2);
}

// A model without fixed parameters is legitimate: it is fitted, with every
// option that used to stop at the empty fixed part, and the first fit's
// numbers are R's.
TEST_F(AppFittingTest, AModelWithoutFixedParametersIsFitted) {
  const fs::path dir = fOutput;
  fs::copy_file(fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / "dyestuff.csv", dir / "dyestuff.csv");
  {
    std::ofstream commands(dir / "run.gmx");
    commands << "LOAD 'dyestuff.csv'.\n"
                "GLMIXFIT Yield /FIXED INTERCEPT=NO /RANDOM INTERCEPT SUBJECTS=Batch /MEANS OVERALL.\n"
                "GLMIXFIT Yield /FIXED INTERCEPT=NO /RESIDUAL SUBJECTS=Batch STRUCTURE=CS /SAVE PREDICTED "
                "RESIDUAL.\n"
                "WEIGHT BY Yield.\nGLMIXFIT Yield /FIXED INTERCEPT=NO /RANDOM INTERCEPT SUBJECTS=Batch.\n"
                "WEIGHT OFF.\nSPLIT BY Batch.\nGLMIXFIT Yield /FIXED INTERCEPT=NO /MEANS OVERALL.\n";
  }
  const json report = RunFile(dir / "run.gmx");
  EXPECT_EQ(fExitStatus, 0);
  std::vector<std::string> messages;
  CollectMessages(report["items"], messages);
  for (const std::string& message : messages) EXPECT_NE(message.rfind("error", 0), 0u) << message;

  std::multimap<std::string, json> tables;
  CollectTables(report["items"], tables);
  EXPECT_EQ(tables.count("Information Criteria"), 4u);
  const json reference = ReadJson(fs::path(GLMIX_TEST_DATA_DIR) / "numeric" / "reference" / "dyestuff_no_fixed.json");
  const json& criteria = tables.find("Information Criteria")->second;
  ExpectNear(criteria["cells"][0]["value"].get<double>(), reference["minus2ll"].get<double>(), 1e-6,
             "-2 restricted log likelihood");
  const json& random = tables.find("CovarianceParameters")->second;
  ExpectNear(Value(random, 0, 0), reference["var_batch"].get<double>(), 1e-5, "batch variance");
  const json& residual = tables.find("ResidualEffect")->second;
  ExpectNear(Value(residual, 0, 0), reference["var_residual"].get<double>(), 1e-5, "residual variance");
}

// Subjects whose measurements alternate around their mean (data made with
// Python's random.seed(3): y = u * (+1, -1, +1, -1) + N(0, 1) + x / 2, u ~
// N(0, 9), 60 subjects): an unstructured intercept-and-slope block converges
// to a G that is not positive definite, and the run says so.
TEST_F(AppFittingTest, AnIndefiniteEstimatedGIsAWarningNamingTheBlock) {
  const fs::path dir = fOutput;
  fs::copy_file(fs::path(GLMIX_TEST_DATA_DIR) / "app" / "indefinite-g.csv", dir / "g.csv");
  std::ofstream(dir / "run.gmx") << "LOAD 'g.csv'.\nGLMIXFIT y WITH x /FIXED x /RANDOM INTERCEPT SUBJECTS=s\n"
                                    "  /RANDOM INTERCEPT x SUBJECTS=s STRUCTURE=UN /EXPORT MODEL='m.xml' STATXML='s.xml'.\n";
  const json report = RunFile(dir / "run.gmx");
  EXPECT_EQ(fExitStatus, 0);
  std::vector<std::string> messages;
  CollectMessages(report["items"], messages);
  // Once with the command's tables, once in the model viewer, which reads
  // it from the results document.
  std::vector<std::string> warnings;
  for (const std::string& message : messages) {
    if (message.find("not positive definite") != std::string::npos) warnings.push_back(message);
  }
  EXPECT_EQ(warnings,
            (std::vector<std::string>{
                "warning: The estimated covariance matrix (G) of the random effects of /RANDOM block 2 is not "
                "positive definite. Its structure keeps no bound that prevents this; the fit may be what is wanted, "
                "but its variances and covariances do not describe a possible distribution of the random effects.",
                "warning: Covariance Parameters: The estimated covariance matrix of the random effects of block 2 "
                "is not positive definite."}));

  // The claim checked on the estimates themselves: the second block's G has
  // a negative determinant.
  std::multimap<std::string, json> tables;
  CollectTables(report["items"], tables);
  std::vector<double> g;
  for (auto it = tables.lower_bound("CovarianceParameters"); it != tables.upper_bound("CovarianceParameters"); ++it) {
    if (Labels(it->second["dimensions"][0]["children"]).size() == 3) {
      for (int row = 0; row < 3; ++row) g.push_back(Value(it->second, row, 0));
    }
  }
  ASSERT_EQ(g.size(), 3u);
  if (std::isnan(g[0])) g[0] = 0.0;  // a redundant parameter, held at 0
  EXPECT_LT(g[0] * g[2] - g[1] * g[1], 0.0);

  // The document the viewer reads carries it too.
  std::ifstream xml(dir / "s.xml");
  std::stringstream text;
  text << xml.rdbuf();
  EXPECT_NE(text.str().find("kGLMM_GNotPD"), std::string::npos);
}

}  // namespace

// An output folder given relative to the working folder holds the
// documents, although the command file's names are taken from its own folder.
TEST_F(AppFittingTest, ARelativeOutputFolderReceivesTheDocuments) {
  const fs::path workingBefore = fs::current_path();
  fs::current_path(fOutput);
  AppOptions options;
  options.fOutputDir = "relative-output";
  options.fbText = false;
  bool ran = false;
  {
    AppSession session(options);
    ran = session.RunFile((fs::path(GLMIX_SOURCE_DIR) / "examples" / "dyestuff.gmx").string());
  }
  fs::current_path(workingBefore);
  ASSERT_TRUE(ran);
  EXPECT_TRUE(fs::exists(fOutput / "relative-output" / "model-1.xml"));
  EXPECT_TRUE(fs::exists(fOutput / "relative-output" / "statxml-1.xml"));
  EXPECT_FALSE(fs::exists(fs::path(GLMIX_SOURCE_DIR) / "examples" / "relative-output"));
}
