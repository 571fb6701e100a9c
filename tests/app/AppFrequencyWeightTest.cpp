// WEIGHT BY against the same records written out as many times as their
// weight, rounded, says: every table of the fit holds the same numbers, for
// the weighted example and for a split file.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "AppReportRunFixture.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

// The top-level headings of the fitting commands, in order.
std::vector<json> Fits(const json& report) {
  std::vector<json> fits;
  for (const json& item : report["items"]) {
    if (item["kind"] == "heading" && item["text"] == "Mixed Model") fits.push_back(item);
  }
  return fits;
}

// The tables of a command, the notes table aside (it says how weights are
// handled, and is the one table that should differ).
void CollectTables(const json& items, std::vector<json>& out) {
  for (const json& item : items) {
    if (item["kind"] == "heading") CollectTables(item["items"], out);
    if (item["kind"] == "table" && item["subtype"] != "Notes") out.push_back(item);
  }
}

void CollectMessages(const json& items, std::vector<std::string>& out) {
  for (const json& item : items) {
    if (item["kind"] == "heading") CollectMessages(item["items"], out);
    if (item["kind"] == "message") out.push_back(item["text"].get<std::string>());
  }
}

// The same tables with the same structure, and every number to a relative
// 1e-8 (the tables show numbers as the fit computed them).
void ExpectSameTables(const json& weighted, const json& written) {
  std::vector<json> a, b;
  CollectTables(weighted["items"], a);
  CollectTables(written["items"], b);
  ASSERT_EQ(a.size(), b.size());
  ASSERT_FALSE(a.empty());
  for (std::size_t t = 0; t < a.size(); ++t) {
    SCOPED_TRACE(a[t]["subtype"].get<std::string>());
    EXPECT_EQ(a[t]["subtype"], b[t]["subtype"]);
    EXPECT_EQ(a[t]["dimensions"], b[t]["dimensions"]);
    ASSERT_EQ(a[t]["cells"].size(), b[t]["cells"].size());
    for (std::size_t c = 0; c < a[t]["cells"].size(); ++c) {
      const json &x = a[t]["cells"][c], &y = b[t]["cells"][c];
      EXPECT_EQ(x["coordinates"], y["coordinates"]);
      if (!x["value"].is_number() || !y["value"].is_number()) {
        EXPECT_EQ(x["value"], y["value"]) << x["coordinates"].dump();
        continue;
      }
      const double u = x["value"].get<double>(), v = y["value"].get<double>();
      EXPECT_NEAR(u, v, 1e-8 * std::fabs(v) + 1e-12) << x["coordinates"].dump();
    }
  }
}

std::vector<std::string> ReadLines(const fs::path& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

class AppFrequencyWeightTest : public AppReportRunFixture {
 protected:
  json RunText(const std::string& name, const std::string& commands) {
    {
      std::ofstream out(fOutput / (name + ".gmx"));
      out << commands;
    }
    return RunFile(fOutput / (name + ".gmx"), name + "-output");
  }

  // Writes `name`.csv: the header, then each data line as many times as
  // copies says, beside a copy of the dictionary.
  void WriteCopies(const std::vector<std::string>& lines, const std::vector<int>& copies, const std::string& name,
                   const fs::path& dictionary) {
    std::ofstream out(fOutput / (name + ".csv"));
    out << lines[0] << "\n";
    for (std::size_t r = 1; r < lines.size(); ++r) {
      for (int j = 0; j < copies[r - 1]; ++j) out << lines[r] << "\n";
    }
    fs::copy_file(dictionary, fOutput / (name + ".dictionary.json"), fs::copy_options::overwrite_existing);
  }
};

}  // namespace

TEST_F(AppFrequencyWeightTest, TheWeightedExampleFitsItsRecordsWrittenOut) {
  // Each record of examples/cbpp-weighted.gmx counted as often as its herd
  // has cattle.
  const fs::path data = fs::path(GLMIX_SOURCE_DIR) / "examples" / "data";
  const std::vector<std::string> lines = ReadLines(data / "cbpp-rates.csv");
  ASSERT_EQ(lines[0], "herd,period,incidence,size,rate");
  std::vector<int> copies;
  for (std::size_t r = 1; r < lines.size(); ++r) {
    std::istringstream fields(lines[r]);
    std::string field;
    for (int column = 0; column < 4; ++column) std::getline(fields, field, ',');
    copies.push_back(std::stoi(field));
  }
  WriteCopies(lines, copies, "written", data / "cbpp-rates.dictionary.json");

  const std::vector<json> example = Fits(RunFile(fs::path(GLMIX_SOURCE_DIR) / "examples" / "cbpp-weighted.gmx", "example"));
  ASSERT_EQ(example.size(), 2u);
  const std::vector<json> written = Fits(RunText("written",
                                                 "LOAD 'written.csv'.\n"
                                                 "GLMIXFIT rate BY period /FIXED period\n"
                                                 "  /RANDOM INTERCEPT SUBJECTS=herd /DISPLAY ESTIMATES.\n"));
  ASSERT_EQ(written.size(), 1u);
  ExpectSameTables(example[1], written[0]);
}

TEST_F(AppFrequencyWeightTest, ASplitFileFitsItsRecordsWrittenOut) {
  // Weights that vary within the children and round: 0.4 drops its record,
  // 2.5 counts three times.
  const fs::path data = fs::path(GLMIX_SOURCE_DIR) / "examples" / "data";
  std::vector<std::string> lines = ReadLines(data / "orthodont.csv");
  const std::vector<std::string> weights = {"1.2", "2.5", "0.4", "2.6", "1.49", "3", "1"};
  std::vector<int> copies;
  lines[0] += ",\"w\"";
  for (std::size_t r = 1; r < lines.size(); ++r) {
    const std::string& w = weights[(r - 1) % weights.size()];
    lines[r] += "," + w;
    copies.push_back(static_cast<int>(std::lround(std::stod(w))));
  }
  {
    std::ofstream out(fOutput / "weighted.csv");
    for (const std::string& line : lines) out << line << "\n";
  }
  fs::copy_file(data / "orthodont.dictionary.json", fOutput / "weighted.dictionary.json");
  WriteCopies(lines, copies, "written", data / "orthodont.dictionary.json");

  const std::string model =
      "GLMIXFIT distance WITH age /FIXED age\n"
      "  /RANDOM INTERCEPT age SUBJECTS=Subject /DISPLAY ESTIMATES ESTIMATECOVARIANCES.\n";
  const std::vector<json> weighted =
      Fits(RunText("weighted", "LOAD 'weighted.csv'.\nSPLIT BY Sex.\nWEIGHT BY w.\n" + model));
  const std::vector<json> written = Fits(RunText("written", "LOAD 'written.csv'.\nSPLIT BY Sex.\n" + model));
  ASSERT_EQ(weighted.size(), 1u);
  ASSERT_EQ(written.size(), 1u);
  ExpectSameTables(weighted[0], written[0]);
}

TEST_F(AppFrequencyWeightTest, WeightsThatDifferWithinAChildUnderAnAutoregressiveResidual) {
  // Copies of one record would share its age within the child: an error for
  // each split, and no tables.
  const fs::path data = fs::path(GLMIX_SOURCE_DIR) / "examples" / "data";
  std::vector<std::string> lines = ReadLines(data / "orthodont.csv");
  lines[0] += ",\"w\"";
  for (std::size_t r = 1; r < lines.size(); ++r) lines[r] += r % 2 == 0 ? ",1" : ",2";
  {
    std::ofstream out(fOutput / "weighted.csv");
    for (const std::string& line : lines) out << line << "\n";
  }
  const std::vector<json> fits = Fits(RunText("weighted",
                                              "LOAD 'weighted.csv'.\nWEIGHT BY w.\n"
                                              "GLMIXFIT distance WITH age /FIXED age\n"
                                              "  /RESIDUAL INDEX=age SUBJECTS=Subject STRUCTURE=AR1.\n"));
  ASSERT_EQ(fits.size(), 1u);
  std::vector<std::string> messages;
  CollectMessages(fits[0]["items"], messages);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].rfind("The frequency weight differs between records of the same subject.", 0), 0u)
      << messages[0];
  std::vector<json> tables;
  CollectTables(fits[0]["items"], tables);
  EXPECT_TRUE(tables.empty());
}
