#include "host/viz/VarDataProcessor.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "host/viz/XMarkupData.h"

int VarDataProcessor::AddDataSource(const std::string& name, long rowCount) {
  rowCount = std::max(rowCount, 0L);
  int existing = FindDataSource(name);
  if (existing >= 0) {
    OmChartData::Source& source = fData.fvSources[static_cast<std::size_t>(existing)];
    source.fRowCount = std::max(source.fRowCount, rowCount);
    return existing;
  }
  OmChartData::Source source;
  source.fName = name;
  source.fRowCount = rowCount;
  fData.fvSources.push_back(source);
  return GetDataSourceCount() - 1;
}

bool VarDataProcessor::AddVariable(const std::string& source, const std::string& name, VarInfo* info) {
  int s = FindDataSource(source);
  if (s < 0 || name.empty()) return false;
  std::vector<OmChartData::Variable>& variables = fData.fvSources[static_cast<std::size_t>(s)].fvVariables;
  int v = 0;
  while (v < static_cast<int>(variables.size()) && variables[static_cast<std::size_t>(v)].fName != name) ++v;
  if (v == static_cast<int>(variables.size())) {
    OmChartData::Variable variable;
    variable.fName = name;
    variables.push_back(variable);
  }
  if (info != nullptr) {
    info->fSource = s;
    info->fVariable = v;
  }
  return true;
}

OmChartData::Variable* VarDataProcessor::Find(const VarInfo& info) {
  if (info.fSource < 0 || info.fSource >= GetDataSourceCount()) return nullptr;
  std::vector<OmChartData::Variable>& variables = fData.fvSources[static_cast<std::size_t>(info.fSource)].fvVariables;
  if (info.fVariable < 0 || info.fVariable >= static_cast<int>(variables.size())) return nullptr;
  return &variables[static_cast<std::size_t>(info.fVariable)];
}

const OmChartData::Variable* VarDataProcessor::Find(const VarInfo& info) const {
  return const_cast<VarDataProcessor*>(this)->Find(info);
}

const OmChartData::Cell* VarDataProcessor::FindCell(const VarInfo& info, long row) const {
  const OmChartData::Variable* variable = Find(info);
  if (variable == nullptr) return nullptr;
  auto found = variable->fCells.find(row);
  return found == variable->fCells.end() ? nullptr : &found->second;
}

bool VarDataProcessor::Store(const VarInfo& info, long row, const OmChartData::Cell& cell) {
  OmChartData::Variable* variable = Find(info);
  if (variable == nullptr || row < 0 || row == std::numeric_limits<long>::max()) return false;
  variable->fCells[row] = cell;
  OmChartData::Source& source = fData.fvSources[static_cast<std::size_t>(info.fSource)];
  source.fRowCount = std::max(source.fRowCount, row + 1);
  return true;
}

bool VarDataProcessor::SetVariableValue(const VarInfo& info, long row, double value) {
  OmChartData::Cell cell;
  cell.fNumber = value;
  return Store(info, row, cell);
}

bool VarDataProcessor::SetStringVariableValue(const VarInfo& info, long row, const std::string& value) {
  OmChartData::Cell cell;
  cell.fbText = true;
  cell.fText = value;
  return Store(info, row, cell);
}

int VarDataProcessor::FindDataSource(const std::string& name) const {
  for (std::size_t i = 0; i < fData.fvSources.size(); ++i) {
    if (fData.fvSources[i].fName == name) return static_cast<int>(i);
  }
  return -1;
}

std::string VarDataProcessor::GetDataSourceName(int source) const {
  if (source < 0 || source >= GetDataSourceCount()) return std::string();
  return fData.fvSources[static_cast<std::size_t>(source)].fName;
}

long VarDataProcessor::GetRowCount(int source) const {
  if (source < 0 || source >= GetDataSourceCount()) return 0;
  return fData.fvSources[static_cast<std::size_t>(source)].fRowCount;
}

int VarDataProcessor::GetVariableCount(int source) const {
  if (source < 0 || source >= GetDataSourceCount()) return 0;
  return static_cast<int>(fData.fvSources[static_cast<std::size_t>(source)].fvVariables.size());
}

std::string VarDataProcessor::GetVariableName(int source, int variable) const {
  const OmChartData::Variable* found = Find(VarInfo{source, variable});
  return found != nullptr ? found->fName : std::string();
}

bool VarDataProcessor::FindVariable(const std::string& source, const std::string& name, VarInfo* info) const {
  int s = FindDataSource(source);
  if (s < 0) return false;
  const std::vector<OmChartData::Variable>& variables = fData.fvSources[static_cast<std::size_t>(s)].fvVariables;
  for (std::size_t v = 0; v < variables.size(); ++v) {
    if (variables[v].fName != name) continue;
    if (info != nullptr) {
      info->fSource = s;
      info->fVariable = static_cast<int>(v);
    }
    return true;
  }
  return false;
}

bool VarDataProcessor::IsValueSet(const VarInfo& info, long row) const { return FindCell(info, row) != nullptr; }

bool VarDataProcessor::GetNumericValue(const VarInfo& info, long row, double& value) const {
  const OmChartData::Cell* cell = FindCell(info, row);
  if (cell == nullptr || cell->fbText) return false;
  value = cell->fNumber;
  return true;
}

bool VarDataProcessor::GetStringValue(const VarInfo& info, long row, std::string& value) const {
  const OmChartData::Cell* cell = FindCell(info, row);
  if (cell == nullptr || !cell->fbText) return false;
  value = cell->fText;
  return true;
}

char* VarDataProcessor::GetDataStream(long& length) const {
  const std::string text = XMarkupData::Write(fData);
  length = static_cast<long>(text.size());
  char* bytes = new char[text.size() > 0 ? text.size() : 1];
  std::memcpy(bytes, text.data(), text.size());
  return bytes;
}
