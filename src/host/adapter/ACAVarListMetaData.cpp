#include "host/adapter/ACAVarListMetaData.h"

#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "numeric/common/MCMV.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

using MCMath_850::MCConst::MCMeasureLevel;
using MCMath_850::MCConst::MCVarRole;

ACAVarListMetaData::ACAVarListMetaData(MCXML_850::MCVarList& varList, const ACAVarValidSpecs* varSpecs,
                                       const ProcedureDataSource& dataSource, const ACAInputAdapter* adapter,
                                       bool withCategories)
    : fpVarList(&varList), fpVarSpecs(varSpecs), fpDataSource(&dataSource), fpAdapter(adapter),
      fbWithCategories(withCategories) {}

const ZORV_Variable* ACAVarListMetaData::HostVariable(int recIndex) const {
  if (fpVarSpecs == nullptr || fpVarSpecs->GetRecordVar(recIndex) == nullptr) return nullptr;
  int hostIndex = fpVarSpecs->GetZORVVarIndex(recIndex);
  return hostIndex >= 0 ? fpDataSource->GetVariable(hostIndex) : nullptr;
}

bool ACAVarListMetaData::AddRecVariable(int recIndex, bool categorical, MCVarRole role, const char* label,
                                        const std::string& name) {
  const ZORV_Variable* host = HostVariable(recIndex);
  if (host == nullptr) return false;

  MCMeasureLevel level = MCMath_850::MCConst::MEASURE_CONTINUOUS;
  if (categorical) {
    level = host->GetMeasurementLevel() == ZORV_Variable::ORDINAL ? MCMath_850::MCConst::MEASURE_ORDINAL
                                                                  : MCMath_850::MCConst::MEASURE_NOMINAL;
  }
  MCXML_850::IMCVariable variable(name.empty() ? std::string(host->GetName()) : name, role, level);
  const char* hostLabel = label ? label : host->GetLabel();
  variable.SetLabel(hostLabel ? hostLabel : "");
  variable.SetRecordIndex(recIndex);
  variable.SetStringWidth(host->GetType() > 0 ? host->GetType() : 0);

  if (categorical && fbWithCategories && fpAdapter != nullptr) {
    int nCategories = fpAdapter->GetRecordCatVarSize(recIndex);
    for (int code = 0; code < nCategories; ++code) {
      int type = 0;
      const OBS* value = fpAdapter->DecodeCatValue(recIndex, code, type);
      if (value == nullptr) return false;
      std::string text = fpVarSpecs->ConvertObsToString(value, host->GetFormat(), false);
      variable.AddCategory(type == 0 ? value->fNum : MCCommon_850::MCMV::Missing(), text);
    }
  }
  fpVarList->AddVariable(variable);
  return true;
}

bool ACAVarListMetaData::AddRecWeightVar(int recIndex, MCVarRole role, int rounding, const std::string& name) {
  const ZORV_Variable* host = HostVariable(recIndex);
  if (host == nullptr) return false;
  MCXML_850::IMCVariable variable(name.empty() ? std::string(host->GetName()) : name, role, MCMath_850::MCConst::MEASURE_CONTINUOUS);
  const char* hostLabel = host->GetLabel();
  variable.SetLabel(hostLabel ? hostLabel : "");
  variable.SetRecordIndex(recIndex);
  variable.SetWeightRounding(rounding);
  fpVarList->AddVariable(variable);
  return true;
}
