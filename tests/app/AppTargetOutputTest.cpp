// The run side's tables of a generalized model: the target's table and the
// exponentiated estimates, which a linear model does not show.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "AppReportRunFixture.h"

namespace fs = std::filesystem;
using apptest::CollectTables;
using apptest::Labels;
using apptest::Value;
using nlohmann::json;

namespace {

class AppTargetOutputTest : public AppReportRunFixture {
 protected:
  // Runs commands on the cbpp data and returns the tables of the report.
  std::multimap<std::string, json> Run(const std::string& command) {
    std::multimap<std::string, json> tables;
    CollectTables(RunInExamples("LOAD 'data/cbpp.csv'.\n" + command)["items"], tables);
    return tables;
  }
};

// The texts of a one-dimensional table's cells, in row order.
std::vector<std::string> CellTexts(const json& table) {
  std::vector<std::string> texts(Labels(table["dimensions"][0]["children"]).size());
  for (const json& cell : table["cells"]) {
    const std::size_t row = cell["coordinates"][0].get<std::size_t>();
    if (row < texts.size()) texts[row] = cell["text"].get<std::string>();
  }
  return texts;
}

const std::string kModel = "GLMIXFIT incidence BY period\n  /FIXED period\n  /RANDOM INTERCEPT SUBJECTS=herd\n";

}  // namespace

TEST_F(AppTargetOutputTest, ALinearModelHasNoTargetTableAndNoExponentiatedEstimates) {
  std::multimap<std::string, json> tables = Run(kModel + "  /DISPLAY ESTIMATES.\n");
  EXPECT_EQ(tables.count("Target Model"), 0u);
  ASSERT_EQ(tables.count("Parameter Estimates"), 1u);
  const std::vector<std::string> statistics =
      Labels(tables.find("Parameter Estimates")->second["dimensions"][1]["children"]);
  EXPECT_EQ(std::find(statistics.begin(), statistics.end(), "Exp(Estimate)"), statistics.end());
}

TEST_F(AppTargetOutputTest, ABinomialTargetShowsItsModelAndTheOddsRatios) {
  std::multimap<std::string, json> tables =
      Run(kModel + "  /TARGET DISTRIBUTION=BINOMIAL TRIALS=size\n  /DISPLAY ESTIMATES.\n");
  ASSERT_EQ(tables.count("Target Model"), 1u);
  const json& model = tables.find("Target Model")->second;
  EXPECT_EQ(Labels(model["dimensions"][0]["children"]),
            (std::vector<std::string>{"Target", "Trials", "Probability Distribution", "Link Function",
                                      "Fitting Method"}));
  EXPECT_EQ(CellTexts(model), (std::vector<std::string>{"incidence", "size", "Binomial", "Logit",
                                                         "Residual pseudo-likelihood"}));
  ASSERT_EQ(model["notes"].size(), 2u);
  EXPECT_EQ(model["notes"][1]["text"], "The distribution fixes the scale parameter at 1.");

  ASSERT_EQ(tables.count("Parameter Estimates"), 1u);
  const json& estimates = tables.find("Parameter Estimates")->second;
  const std::vector<std::string> statistics = Labels(estimates["dimensions"][1]["children"]);
  ASSERT_EQ(statistics.size(), 10u);
  EXPECT_EQ(statistics[7], "Exp(Estimate)");
  // Each exponentiated cell is the exponential of the estimate and of its
  // bounds.
  for (int row = 0; row < 4; ++row) {
    if (std::isnan(Value(estimates, row, 1)) || Value(estimates, row, 1) == 0.0) continue;
    EXPECT_NEAR(Value(estimates, row, 7), std::exp(Value(estimates, row, 0)), 1e-12 * std::exp(Value(estimates, row, 0)));
    EXPECT_NEAR(Value(estimates, row, 8), std::exp(Value(estimates, row, 5)), 1e-12 * std::exp(Value(estimates, row, 5)));
    EXPECT_NEAR(Value(estimates, row, 9), std::exp(Value(estimates, row, 6)), 1e-12 * std::exp(Value(estimates, row, 6)));
  }
}

TEST_F(AppTargetOutputTest, TheTargetTableNamesTheOffsetAndTheMaximumPseudoLikelihood) {
  std::multimap<std::string, json> tables =
      Run("COMPUTE logsize = LN(size).\n" + kModel +
          "  /TARGET DISTRIBUTION=POISSON OFFSET=logsize\n  /ESTIMATION METHOD=ML\n  /DISPLAY ESTIMATES.\n");
  ASSERT_EQ(tables.count("Target Model"), 1u);
  const json& model = tables.find("Target Model")->second;
  EXPECT_EQ(CellTexts(model), (std::vector<std::string>{"incidence", "Poisson", "Log", "logsize",
                                                         "Maximum pseudo-likelihood"}));
  const std::vector<std::string> statistics =
      Labels(tables.find("Parameter Estimates")->second["dimensions"][1]["children"]);
  EXPECT_EQ(statistics.size(), 10u);
}

TEST_F(AppTargetOutputTest, AGammaTargetKeepsItsScaleAndNamesTheMaximumPseudoLikelihood) {
  std::multimap<std::string, json> tables =
      Run("GLMIXFIT size BY period\n  /TARGET DISTRIBUTION=GAMMA\n  /ESTIMATION METHOD=ML.\n");
  ASSERT_EQ(tables.count("Target Model"), 1u);
  const json& model = tables.find("Target Model")->second;
  EXPECT_EQ(CellTexts(model),
            (std::vector<std::string>{"size", "Gamma", "Log", "Maximum pseudo-likelihood"}));
  // Only the target's caption: the gamma distribution's scale is estimated.
  EXPECT_EQ(model["notes"].size(), 1u);
}
