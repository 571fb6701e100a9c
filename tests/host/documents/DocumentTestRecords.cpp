#include "host/documents/DocumentTestRecords.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "numeric/common/MCMV.h"
#include "numeric/xml/IMCVariable.h"

using namespace MCMath_850::MCConst;

namespace {

std::vector<std::string> SplitCsvLine(const std::string& line) {
  std::vector<std::string> cells(1);
  bool quoted = false;
  for (char c : line) {
    if (c == '"') {
      quoted = !quoted;
    } else if (c == ',' && !quoted) {
      cells.emplace_back();
    } else if (c != '\r') {
      cells.back() += c;
    }
  }
  return cells;
}

bool IsNumber(const std::string& text) {
  if (text.empty()) return false;
  char* end = nullptr;
  std::strtod(text.c_str(), &end);
  return end != nullptr && *end == '\0';
}

}  // namespace

bool DocumentTestRecords::Load(const std::string& path, const std::vector<std::string>& columns,
                               const std::set<std::string>& factors) {
  std::ifstream in(path);
  std::string line;
  if (!std::getline(in, line)) return false;
  const std::vector<std::string> header = SplitCsvLine(line);
  std::vector<std::vector<std::string>> rows;
  while (std::getline(in, line)) {
    if (!line.empty()) rows.push_back(SplitCsvLine(line));
  }
  fVarList.Clear();
  fvvRecords.assign(rows.size(), std::vector<double>(columns.size()));
  fCurrent = 0;
  for (std::size_t v = 0; v < columns.size(); ++v) {
    const auto at = std::find(header.begin(), header.end(), columns[v]);
    if (at == header.end()) return false;
    const std::size_t col = static_cast<std::size_t>(at - header.begin());
    const bool factor = factors.count(columns[v]) > 0;
    MCXML_850::IMCVariable var(columns[v], v == 0 ? ROLE_TARGET : ROLE_PREDICTOR,
                               factor ? MEASURE_NOMINAL : MEASURE_CONTINUOUS);
    var.SetRecordIndex(static_cast<int>(v));
    std::vector<std::string> levels;
    bool numeric = true;
    if (factor) {
      for (const auto& row : rows) {
        const std::string& s = row[col];
        if (!s.empty() && s != "NA" && std::find(levels.begin(), levels.end(), s) == levels.end()) {
          levels.push_back(s);
          numeric = numeric && IsNumber(s);
        }
      }
      if (numeric) {
        std::sort(levels.begin(), levels.end(),
                  [](const std::string& a, const std::string& b) { return std::stod(a) < std::stod(b); });
      } else {
        std::sort(levels.begin(), levels.end());
        int width = 1;
        for (const std::string& level : levels) width = std::max(width, static_cast<int>(level.size()));
        var.SetStringWidth(width);
      }
      for (const std::string& level : levels) {
        var.AddCategory(numeric ? std::stod(level) : MCCommon_850::MCMV::Missing(), level);
      }
    }
    for (std::size_t r = 0; r < rows.size(); ++r) {
      const std::string& s = rows[r][col];
      double value = MCCommon_850::MCMV::Missing();
      if (factor) {
        const auto it = std::find(levels.begin(), levels.end(), s);
        if (it != levels.end()) value = static_cast<double>(it - levels.begin());
      } else if (IsNumber(s)) {
        value = std::strtod(s.c_str(), nullptr);
      }
      fvvRecords[r][v] = value;
    }
    fVarList.AddVariable(var);
  }
  return !rows.empty();
}
