#include "host/adapter/ACAVarValidSpecs.h"

#include "host/adapter/ACACommonDisplay.h"
#include "host/output/ToString.h"

ACAVarValidSpecs::ACAVarValidSpecs(bool useFilter, bool useWeight, bool useSplit)
    : fbUseFilter(useFilter), fbUseWeight(useWeight), fbUseSplit(useSplit) {}

int ACAVarValidSpecs::FindRecordVar(int hostIndex, bool multRecode) const {
  for (std::size_t i = 0; i < fvRecordVars.size(); ++i) {
    const RecordVarData& var = fvRecordVars[i];
    if (!var.fbWeight && var.fHostIndex == hostIndex && var.fbMultRecode == multRecode) return static_cast<int>(i);
  }
  return -1;
}

int ACAVarValidSpecs::AddVariable(int hostIndex, bool categorical, bool sysmisValid, bool userMissingExcluded,
                                  bool listwise) {
  if (hostIndex < 0) return -1;
  int existing = FindRecordVar(hostIndex, fbMultRecode);
  if (existing >= 0) return existing;
  RecordVarData var;
  var.fHostIndex = hostIndex;
  var.fbCategorical = categorical;
  var.fbSysmisValid = sysmisValid;
  var.fbUserMissingExcluded = userMissingExcluded;
  var.fbListwise = listwise;
  var.fbMultRecode = fbMultRecode;
  fvRecordVars.push_back(var);
  return static_cast<int>(fvRecordVars.size()) - 1;
}

bool ACAVarValidSpecs::AddVariables(const std::vector<int>& hostIndices, std::vector<int>& recIndices,
                                    bool categorical, bool sysmisValid, bool userMissingExcluded, bool listwise) {
  recIndices.clear();
  bool ok = true;
  for (int hostIndex : hostIndices) {
    int recIndex = AddVariable(hostIndex, categorical, sysmisValid, userMissingExcluded, listwise);
    if (recIndex < 0) ok = false;
    recIndices.push_back(recIndex);
  }
  return ok;
}

int ACAVarValidSpecs::SetWeightVar() {
  if (fWeightRecIndex >= 0) return fWeightRecIndex;
  RecordVarData var;
  var.fbWeight = true;
  // A case without a valid weight does not count.
  var.fbUserMissingExcluded = true;
  var.fbListwise = true;
  var.fbMultRecode = fbMultRecode;
  fvRecordVars.push_back(var);
  fWeightRecIndex = static_cast<int>(fvRecordVars.size()) - 1;
  return fWeightRecIndex;
}

void ACAVarValidSpecs::SetWeightHostIndex(int hostIndex) {
  if (fWeightRecIndex >= 0) fvRecordVars[static_cast<std::size_t>(fWeightRecIndex)].fHostIndex = hostIndex;
}

int ACAVarValidSpecs::GetRecVarIndex(int hostIndex) const {
  if (hostIndex < 0) return -1;
  int index = FindRecordVar(hostIndex, false);
  return index >= 0 ? index : FindRecordVar(hostIndex, true);
}

const ACAVarValidSpecs::RecordVarData* ACAVarValidSpecs::GetRecordVar(int recIndex) const {
  if (recIndex < 0 || recIndex >= GetNRecordVars()) return nullptr;
  return &fvRecordVars[static_cast<std::size_t>(recIndex)];
}

bool ACAVarValidSpecs::GetRecordCatVar(int recIndex) const {
  const RecordVarData* var = GetRecordVar(recIndex);
  return var != nullptr && var->fbCategorical;
}

int ACAVarValidSpecs::GetZORVVarIndex(int recIndex) const {
  const RecordVarData* var = GetRecordVar(recIndex);
  return var ? var->fHostIndex : -1;
}

std::string ACAVarValidSpecs::ConvertObsToString(const OBS* value, const ZORV_Format& format, bool padded) const {
  if (!padded) return ToString(value, format);
  std::vector<char> buffer(static_cast<std::size_t>(format.fWidth) + 1, '\0');
  if (ToString(value, format, buffer.data()) != 0) return std::string();
  return std::string(buffer.data(), format.fWidth);
}

void ACAVarValidSpecs::Display() const {
  ACACommonDisplay::DisplayText("Record variables");
  ACACommonDisplay::DisplayB("use filter", fbUseFilter);
  ACACommonDisplay::DisplayB("use weight", fbUseWeight);
  ACACommonDisplay::DisplayB("use split", fbUseSplit);
  ACACommonDisplay::DisplayI("weight position", fWeightRecIndex);
  ACACommonDisplay::DisplayI("count", GetNRecordVars());
  for (std::size_t i = 0; i < fvRecordVars.size(); ++i) {
    const RecordVarData& var = fvRecordVars[i];
    std::string flags;
    if (var.fbCategorical) flags += " categorical";
    if (var.fbSysmisValid) flags += " sysmis-valid";
    if (var.fbUserMissingExcluded) flags += " user-missing-excluded";
    if (var.fbListwise) flags += " listwise";
    if (var.fbWeight) flags += " weight";
    if (var.fbMultRecode) flags += " mult-recode";
    ACACommonDisplay::DisplayS("position " + std::to_string(i), "column " + std::to_string(var.fHostIndex) + flags);
  }
}
