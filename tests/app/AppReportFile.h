#pragma once

#include <filesystem>
#include <cmath>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

// Shared by the tests that read the program's JSON documents and reports.
namespace apptest {

// The JSON document in a file, read as bytes.
inline nlohmann::json ReadJson(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return nlohmann::json::parse(text.str());
}

// The tables of a rendered report, by sub-type, in the order written.
inline void CollectTables(const nlohmann::json& items, std::multimap<std::string, nlohmann::json>& tables) {
  for (const nlohmann::json& item : items) {
    if (item["kind"] == "heading") CollectTables(item["items"], tables);
    if (item["kind"] == "table") tables.emplace(item["subtype"].get<std::string>(), item);
  }
}

inline void CollectMessages(const nlohmann::json& items, std::vector<std::string>& messages) {
  for (const nlohmann::json& item : items) {
    if (item["kind"] == "heading") CollectMessages(item["items"], messages);
    if (item["kind"] == "message") {
      messages.push_back(item["level"].get<std::string>() + ": " + item["text"].get<std::string>());
    }
  }
}

// The leaves of a dimension, in index order.
inline std::vector<std::string> Labels(const nlohmann::json& nodes) {
  std::vector<std::string> labels;
  for (const nlohmann::json& node : nodes) {
    if (node["kind"] == "category") {
      labels.push_back(node["label"]["text"].get<std::string>());
    } else {
      std::vector<std::string> inner = Labels(node["children"]);
      labels.insert(labels.end(), inner.begin(), inner.end());
    }
  }
  return labels;
}

// The raw value of the cell at row `row` and column `column` of a table with
// a row and a column dimension, or NaN.
inline double Value(const nlohmann::json& table, int row, int column) {
  for (const nlohmann::json& cell : table["cells"]) {
    if (cell["coordinates"] == nlohmann::json::array({row, column})) {
      return cell["value"].is_number() ? cell["value"].get<double>() : std::nan("");
    }
  }
  return std::nan("");
}

}  // namespace apptest
