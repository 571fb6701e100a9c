#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// Holds the model viewer's tables of a JSON report against the reference
// fits made in R (tests/data/numeric/reference): a number shown with fixed
// decimals must read as the reference value printed with those decimals; a
// number in another form agrees to a relative 1e-4. The standard errors of
// covariance parameters, and the significance and bounds made from them,
// are known in the references only to a relative 2e-3 (they come from a
// numerical Hessian): where their printed texts differ, the shown value
// must lie within that accuracy.
namespace viewer_reference {

using nlohmann::json;

inline void CollectLeaves(const json& nodes, const std::string& prefix, std::vector<std::string>& out) {
  for (const json& node : nodes) {
    const std::string label = prefix + node["label"]["text"].get<std::string>();
    if (node["kind"] == "category") {
      out.push_back(label);
    } else {
      CollectLeaves(node["children"], label + "/", out);
    }
  }
}

// A dimension's leaves, each as the labels of its path joined by "/".
inline std::vector<std::string> LeafPaths(const json& table, std::size_t dimension) {
  std::vector<std::string> leaves;
  CollectLeaves(table["dimensions"][dimension]["children"], "", leaves);
  return leaves;
}

// Whether a category shown in a table is the reference's level: the same
// text, or the same number ("0.0" and "0").
inline bool SameLevel(const std::string& shown, const std::string& reference) {
  if (shown == reference) return true;
  char* end1 = nullptr;
  char* end2 = nullptr;
  const double a = std::strtod(shown.c_str(), &end1);
  const double b = std::strtod(reference.c_str(), &end2);
  return !shown.empty() && !reference.empty() && *end1 == '\0' && *end2 == '\0' && a == b;
}

// A contrast's label "level - reference" against the reference's two
// levels; a missing reference level stands for "Mean".
inline bool SameContrast(const std::string& shown, const std::string& level, const std::string& reference) {
  const std::size_t dash = shown.find(" - ");
  if (dash == std::string::npos) return false;
  return SameLevel(shown.substr(0, dash), level) && SameLevel(shown.substr(dash + 3), reference);
}

// Whether a leaf is the column of that name, alone or under a group.
inline bool IsColumn(const std::string& leaf, const std::string& name) {
  const std::string tail = "/" + name;
  return leaf == name || (leaf.size() > tail.size() && leaf.compare(leaf.size() - tail.size(), tail.size(), tail) == 0);
}

// The cell at the leaves chosen per dimension by a test of the leaf's
// label; null when a dimension has no such leaf or there is no cell.
template <typename Match>
const json* FindCell(const json& table, Match match) {
  std::vector<int> coordinates;
  for (std::size_t d = 0; d < table["dimensions"].size(); ++d) {
    const std::vector<std::string> leaves = LeafPaths(table, d);
    int found = -1;
    for (std::size_t i = 0; i < leaves.size() && found < 0; ++i) {
      if (match(d, leaves[i])) found = static_cast<int>(i);
    }
    if (found < 0) return nullptr;
    coordinates.push_back(found);
  }
  for (const json& cell : table["cells"]) {
    if (cell["coordinates"].get<std::vector<int>>() == coordinates) return &cell;
  }
  return nullptr;
}

// The number of decimals of a fixed format ("F40.3" gives 3); -1 otherwise.
inline int FixedDecimals(const std::string& format) {
  if (format.empty() || format[0] != 'F') return -1;
  const std::size_t dot = format.find('.');
  return dot == std::string::npos ? 0 : std::atoi(format.c_str() + dot + 1);
}

inline std::string Printed(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string text = buffer;
  // A negative value that rounds to zero is shown without its sign.
  if (text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
  return text;
}

// The accuracy of a reference's covariance parameter standard errors.
const double kNumericalHessian = 2e-3;

inline void ExpectShown(const json* pCell, double reference, const std::string& what, double accuracy = 0.0) {
  ASSERT_NE(pCell, nullptr) << what;
  const json& cell = *pCell;
  // A number too small for its decimals is shown in E notation.
  const bool fixed = cell["text"].get<std::string>().find('E') == std::string::npos;
  const int decimals = fixed ? FixedDecimals(cell["format"].get<std::string>()) : -1;
  if (decimals >= 0 && accuracy > 0.0 && cell["text"].get<std::string>() != Printed(reference, decimals)) {
    EXPECT_NEAR(cell["value"].get<double>(), reference, accuracy * std::fabs(reference)) << what;
  } else if (decimals >= 0) {
    EXPECT_EQ(cell["text"].get<std::string>(), Printed(reference, decimals)) << what << " (reference " << reference
                                                                             << ")";
  } else {
    ASSERT_TRUE(cell["value"].is_number()) << what;
    EXPECT_NEAR(cell["value"].get<double>(), reference, 1e-4 * std::fabs(reference)) << what;
  }
}

// The covariance parameters of the random blocks' tables, in block order,
// then of the residual's table, against the reference's list: estimate,
// standard error and Wald Z, and the significance and bounds where the
// reference has them.
inline void ExpectCovarianceParameters(const std::vector<json>& randomTables, const std::vector<json>& residualTables,
                                       const json& reference) {
  struct Row {
    const json* fpTable;
    std::string fLabel;
  };
  std::vector<Row> rows;
  for (const json& table : randomTables) {
    for (const std::string& label : LeafPaths(table, 0)) rows.push_back({&table, label});
  }
  for (const json& table : residualTables) {
    for (const std::string& label : LeafPaths(table, 0)) rows.push_back({&table, label});
  }
  const json& parameters = reference["covparams"];
  ASSERT_EQ(rows.size(), parameters.size());
  const std::pair<const char*, const char*> columns[] = {{"Estimate", "estimate"}, {"Std. Error", "se"},
                                                         {"Z", "z"},               {"Sig.", "p"},
                                                         {"Lower", "lower"},       {"Upper", "upper"}};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const json& parameter = parameters[i];
    for (const auto& column : columns) {
      if (!parameter.contains(column.second)) continue;
      const std::string wanted = column.first;
      const json* pCell = FindCell(*rows[i].fpTable, [&](std::size_t d, const std::string& leaf) {
        return d == 0 ? leaf == rows[i].fLabel : IsColumn(leaf, wanted);
      });
      const bool exact = wanted == "Estimate" || wanted == "Z";
      ExpectShown(pCell, parameter[column.second].get<double>(),
                  rows[i].fLabel + " (" + parameter["label"].get<std::string>() + ") " + wanted,
                  exact ? 0.0 : kNumericalHessian);
    }
  }
}

// Whether the leaf of a factor's dimension is the reference's level of it.
inline bool LevelOf(const json& levels, const std::vector<std::string>& factors, std::size_t d,
                    const std::string& leaf) {
  return d < factors.size() && SameLevel(leaf, levels[factors[d]].get<std::string>());
}

// The cells of each reference row: the row's levels (under `levelsKey`)
// of the given factors pick the table's rows, and each column its value
// (under the column's key).
template <std::size_t N>
void ExpectRows(const json& table, const json& rows, const std::string& levelsKey,
                const std::vector<std::string>& factors, const std::pair<const char*, const char*> (&columns)[N]) {
  ASSERT_EQ(table["cells"].size(), N * rows.size());
  for (const json& row : rows) {
    for (const auto& column : columns) {
      const std::string wanted = column.first;
      const json* pCell = FindCell(table, [&](std::size_t d, const std::string& leaf) {
        if (d < factors.size()) return LevelOf(row[levelsKey], factors, d, leaf);
        return IsColumn(leaf, wanted);
      });
      ExpectShown(pCell, row[column.second].template get<double>(), row[levelsKey].dump() + " " + wanted);
    }
  }
}

// The estimates table of a marginal means request: one row per reference
// mean; its factors are the dimensions in the request's order.
inline void ExpectEstimates(const json& table, const json& request) {
  const std::pair<const char*, const char*> columns[] = {
      {"Mean", "estimate"}, {"Std. Error", "se"}, {"Lower", "lower"}, {"Upper", "upper"}};
  ExpectRows(table, request["means"], "levels", request["factors"].get<std::vector<std::string>>(), columns);
}

// A request's factors other than the compared one, in its order.
inline std::vector<std::string> OtherFactors(const json& request) {
  std::vector<std::string> others;
  for (const std::string& factor : request["factors"].get<std::vector<std::string>>()) {
    if (factor != request["compare"].get<std::string>()) others.push_back(factor);
  }
  return others;
}

// The contrasts table: the factors other than the compared one, then the
// comparisons.
inline void ExpectContrasts(const json& table, const json& request) {
  const std::vector<std::string> others = OtherFactors(request);
  const std::pair<const char*, const char*> columns[] = {
      {"Contrast Estimate", "estimate"}, {"Std. Error", "se"}, {"t", "t"},         {"df", "df"},
      {"Adj. Sig.", "p_adjusted"},       {"Lower", "lower"},   {"Upper", "upper"}};
  ASSERT_EQ(table["cells"].size(), 7 * request["contrasts"].size());
  for (const json& contrast : request["contrasts"]) {
    const std::string level = contrast["level"].get<std::string>();
    const std::string reference = contrast["reference"].is_null() ? "Mean" : contrast["reference"].get<std::string>();
    for (const auto& column : columns) {
      const std::string wanted = column.first;
      const json* pCell = FindCell(table, [&](std::size_t d, const std::string& leaf) {
        if (d < others.size()) return LevelOf(contrast["by"], others, d, leaf);
        if (d == others.size()) return SameContrast(leaf, level, reference);
        return IsColumn(leaf, wanted);
      });
      ExpectShown(pCell, contrast[column.second].get<double>(), contrast["label"].get<std::string>() + " " + wanted);
    }
  }
}

// The overall tests: one row per combination of the other factors.
inline void ExpectOverallTests(const json& table, const json& request) {
  const std::pair<const char*, const char*> columns[] = {{"F", "F"}, {"df1", "df1"}, {"df2", "df2"}, {"Sig.", "p"}};
  ExpectRows(table, request["tests"], "by", OtherFactors(request), columns);
}

}  // namespace viewer_reference
