#include "host/data/ZORV_PMMLPooling.h"

#include "host/data/ProcedureDataSource.h"

ZORV_PMMLPooling::ZORV_PMMLPooling(const ZORV_DataSource& dataSource, const std::string& name)
    : fpDataSource(&dataSource), fBaseName(name) {}

std::string ZORV_PMMLPooling::SplitKey(const std::vector<OBS*>& splitValues) const {
  const auto* procedureSource = dynamic_cast<const ProcedureDataSource*>(fpDataSource);
  std::string key;
  for (std::size_t i = 0; i < splitValues.size(); ++i) {
    int width = static_cast<int>(sizeof(OBS));
    if (procedureSource != nullptr && static_cast<int>(i) < procedureSource->GetNSplitVars()) {
      const ZORV_Variable* variable = procedureSource->GetVariable(procedureSource->GetSplitVar(static_cast<int>(i)));
      if (variable != nullptr && variable->GetType() > 0) width = variable->GetType();
    }
    // Each part is tagged so that a missing value differs from any value.
    if (splitValues[i] == nullptr) {
      key += 'N';
      continue;
    }
    key += 'V';
    key.append(reinterpret_cast<const char*>(splitValues[i]), static_cast<std::size_t>(width));
  }
  return key;
}

std::string ZORV_PMMLPooling::NameForSplit(std::size_t ordinal) const {
  std::size_t slash = fBaseName.find_last_of('/');
  std::size_t start = (slash == std::string::npos) ? 0 : slash + 1;
  std::size_t dot = fBaseName.find_last_of('.');
  // A leading dot names a hidden file; it does not start an extension.
  if (dot == std::string::npos || dot <= start) dot = fBaseName.size();
  return fBaseName.substr(0, dot) + "_split" + std::to_string(ordinal) + fBaseName.substr(dot);
}

bool ZORV_PMMLPooling::GetCurrentPMMLName(std::string& name, const std::vector<OBS*>& splitValues) {
  name.clear();
  if (fbComplete || fBaseName.empty()) return false;
  if (splitValues.empty()) {
    name = fBaseName;
    return true;
  }
  std::string key = SplitKey(splitValues);
  for (std::size_t i = 0; i < fvSplitKeys.size(); ++i) {
    if (fvSplitKeys[i] == key) {
      name = fvFileNames[i];
      return true;
    }
  }
  fvSplitKeys.push_back(key);
  fvFileNames.push_back(NameForSplit(fvSplitKeys.size()));
  name = fvFileNames.back();
  return true;
}

void ZORV_PMMLPooling::CompletePMML() { fbComplete = true; }
