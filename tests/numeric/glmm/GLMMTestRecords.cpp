#include "numeric/glmm/GLMMTestRecords.h"

#include <algorithm>

#include "numeric/common/MCMV.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/xml/IMCVariable.h"

using namespace MCMath_850::MCConst;

bool GLMMTestRecords::Load(const std::string& path, const std::vector<std::string>& columns,
                           const std::set<std::string>& factors) {
  MCEngineTestCsv csv;
  if (!csv.Read(path)) return false;
  fVarList.Clear();
  fvvRecords.assign(static_cast<std::size_t>(csv.GetNRows()), std::vector<double>(columns.size()));
  fCurrent = 0;
  for (std::size_t v = 0; v < columns.size(); ++v) {
    const int col = csv.FindColumn(columns[v]);
    if (col < 0) return false;
    const bool factor = factors.count(columns[v]) > 0;
    MCXML_850::IMCVariable var(columns[v], v == 0 ? ROLE_TARGET : ROLE_PREDICTOR,
                               factor ? MEASURE_NOMINAL : MEASURE_CONTINUOUS);
    var.SetRecordIndex(static_cast<int>(v));
    std::vector<std::string> levels;
    if (factor) {
      for (int r = 0; r < csv.GetNRows(); ++r) {
        const std::string& s = csv.GetText(r, col);
        if (!s.empty() && s != "NA" && std::find(levels.begin(), levels.end(), s) == levels.end()) levels.push_back(s);
      }
      if (csv.IsNumeric(col)) {
        std::sort(levels.begin(), levels.end(),
                  [](const std::string& a, const std::string& b) { return std::stod(a) < std::stod(b); });
      } else {
        std::sort(levels.begin(), levels.end());
      }
      for (const std::string& level : levels) {
        var.AddCategory(csv.IsNumeric(col) ? std::stod(level) : MCCommon_850::MCMV::Missing(), level);
      }
    }
    for (int r = 0; r < csv.GetNRows(); ++r) {
      double value = MCCommon_850::MCMV::Missing();
      if (factor) {
        const auto it = std::find(levels.begin(), levels.end(), csv.GetText(r, col));
        if (it != levels.end()) value = static_cast<double>(it - levels.begin());
      } else {
        const double x = csv.GetNumber(r, col);
        if (x == x) value = x;
      }
      fvvRecords[static_cast<std::size_t>(r)][v] = value;
    }
    fVarList.AddVariable(var);
  }
  return true;
}

void GLMMTestRecords::AddScaledVariable(const std::string& name, int source, double factor) {
  MCXML_850::IMCVariable var(name, ROLE_PREDICTOR, MEASURE_CONTINUOUS);
  var.SetRecordIndex(fVarList.Size());
  for (std::vector<double>& record : fvvRecords) {
    const double x = record[static_cast<std::size_t>(source)];
    record.push_back(MCCommon_850::MCMV::IsMissing(x) ? x : factor * x);
  }
  fVarList.AddVariable(var);
}

void GLMMTestRecords::AddVariable(const std::string& name, const std::vector<double>& values) {
  MCXML_850::IMCVariable var(name, ROLE_PREDICTOR, MEASURE_CONTINUOUS);
  var.SetRecordIndex(fVarList.Size());
  for (std::size_t r = 0; r < fvvRecords.size(); ++r) fvvRecords[r].push_back(values[r]);
  fVarList.AddVariable(var);
}

void GLMMTestRecords::SetFrequencyWeight(int var) {
  MCXML_850::IMCVariable* pVar = fVarList.GetVarAt(var);
  pVar->SetRole(ROLE_FREQUENCY_WEIGHT);
  pVar->SetWeightRounding(1);
}

GLMMTestRecords GLMMTestRecords::Repeated(const std::vector<int>& copies) const {
  GLMMTestRecords out;
  out.fVarList = fVarList;
  for (int v = 0; v < out.fVarList.Size(); ++v) {
    MCXML_850::IMCVariable* pVar = out.fVarList.GetVarAt(v);
    if (pVar->GetRole() == ROLE_FREQUENCY_WEIGHT) pVar->SetRole(ROLE_PREDICTOR);
  }
  for (std::size_t r = 0; r < fvvRecords.size(); ++r) {
    for (int j = 0; j < copies[r]; ++j) out.fvvRecords.push_back(fvvRecords[r]);
  }
  return out;
}
