#pragma once

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

// Shared by the tests that read the program's JSON documents and reports.
namespace apptest {

// The JSON document in a file, read as bytes.
inline nlohmann::json ReadJson(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return nlohmann::json::parse(text.str());
}

}  // namespace apptest
