#include "numeric/engine/MCEngineTestCsv.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>

namespace {

std::vector<std::string> SplitLine(const std::string& line) {
  std::vector<std::string> out;
  std::string cell;
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quoted) {
      if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
        cell += '"';
        ++i;
      } else if (c == '"') {
        quoted = false;
      } else {
        cell += c;
      }
    } else if (c == '"') {
      quoted = true;
    } else if (c == ',') {
      out.push_back(cell);
      cell.clear();
    } else if (c != '\r') {
      cell += c;
    }
  }
  out.push_back(cell);
  return out;
}

}  // namespace

bool MCEngineTestCsv::Read(const std::string& path) {
  std::ifstream in(path);
  if (!in) return false;
  std::string line;
  if (!std::getline(in, line)) return false;
  fvNames = SplitLine(line);
  fvRows.clear();
  while (std::getline(in, line)) {
    if (line.empty() || line == "\r") continue;
    std::vector<std::string> cells = SplitLine(line);
    if (cells.size() != fvNames.size()) return false;
    fvRows.push_back(std::move(cells));
  }
  return true;
}

int MCEngineTestCsv::FindColumn(const std::string& name) const {
  for (std::size_t i = 0; i < fvNames.size(); ++i) {
    if (fvNames[i] == name) return static_cast<int>(i);
  }
  return -1;
}

double MCEngineTestCsv::GetNumber(int row, int col) const {
  const std::string& s = GetText(row, col);
  if (s.empty() || s == "NA") return std::numeric_limits<double>::quiet_NaN();
  char* end = nullptr;
  const double v = std::strtod(s.c_str(), &end);
  if (end == s.c_str() || *end != '\0') return std::numeric_limits<double>::quiet_NaN();
  return v;
}

bool MCEngineTestCsv::IsNumeric(int col) const {
  for (int r = 0; r < GetNRows(); ++r) {
    const std::string& s = GetText(r, col);
    if (s.empty() || s == "NA") continue;
    if (std::isnan(GetNumber(r, col))) return false;
  }
  return true;
}
