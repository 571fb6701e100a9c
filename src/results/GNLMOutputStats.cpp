#include "results/GNLMOutputStats.h"

#include "host/cf/CFField.h"
#include "host/cf/CFFormat.h"
#include "host/cf/CFMetaData.h"
#include "host/strings/ParserMessage.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace {

// A new, empty block in place of the old one.
template <typename Block>
Block* Renew(Block*& pBlock) {
  delete pBlock;
  pBlock = new Block();
  return pBlock;
}

template <typename Block>
void Release(Block*& pBlock) {
  delete pBlock;
  pBlock = nullptr;
}

std::size_t U(int i) { return static_cast<std::size_t>(i); }

}  // namespace

const std::string GNLMOutputStats::csKey_C8 = "kGLMM_C8";
const std::string GNLMOutputStats::csKey_C9 = "kGLMM_C9";
const std::string GNLMOutputStats::csKey_C10 = "kGLMM_C10";
const std::string GNLMOutputStats::csKey_C11 = "kGLMM_C11";
const std::string GNLMOutputStats::csKey_C12 = "kGLMM_C12";
const std::string GNLMOutputStats::csKey_C13 = "kGLMM_C13";
const std::string GNLMOutputStats::csKey_C14 = "kGLMM_C14";
const std::string GNLMOutputStats::csKey_C15 = "kGLMM_C15";
const std::string GNLMOutputStats::csKey_C16 = "kGLMM_C16";
const std::string GNLMOutputStats::csKey_C17 = "kGLMM_C17";
const std::string GNLMOutputStats::csKey_C18 = "kGLMM_C18";
const std::string GNLMOutputStats::csKey_C19 = "kGLMM_C19_1";
const std::string GNLMOutputStats::csKey_C20 = "kGLMM_C20";
const std::string GNLMOutputStats::csKey_C21 = "kGLMM_C21";
const std::string GNLMOutputStats::csKey_C22 = "kGLMM_C22";
const std::string GNLMOutputStats::csKey_C23 = "kGLMM_C23";
const std::string GNLMOutputStats::csKey_C24 = "kGLMM_C24";
const std::string GNLMOutputStats::csKey_C25 = "kGLMM_C25";
const std::string GNLMOutputStats::csKey_C26 = "kGLMM_C26";
const std::string GNLMOutputStats::csKey_C27 = "kGLMM_C27";
const std::string GNLMOutputStats::csKey_C28 = "kGLMM_C28";
const std::string GNLMOutputStats::csKey_C29 = "kGLMM_C29";
const std::string GNLMOutputStats::csKey_C30 = "kGLMM_C30";
const std::string GNLMOutputStats::csKey_GNotPD = "kGLMM_GNotPD";
const std::string GNLMOutputStats::csKey_RNotPD = "kGLMM_RNotPD";

GNLMOutputStats::PrintableValueData::PrintableValueData(const PrintableValueData& other)
    : fStorage(other.fStorage),
      fValue(other.fValue),
      fIsNull(other.fIsNull),
      fLabel(other.fLabel),
      fpFormat(other.fpFormat != nullptr ? other.fpFormat->Clone() : nullptr) {}

GNLMOutputStats::PrintableValueData& GNLMOutputStats::PrintableValueData::operator=(
    const PrintableValueData& other) {
  if (this == &other) return *this;
  CFFormat* pFormat = other.fpFormat != nullptr ? other.fpFormat->Clone() : nullptr;
  delete fpFormat;
  fpFormat = pFormat;
  fStorage = other.fStorage;
  fValue = other.fValue;
  fIsNull = other.fIsNull;
  fLabel = other.fLabel;
  return *this;
}

GNLMOutputStats::PrintableValueData::~PrintableValueData() { delete fpFormat; }

GNLMOutputStats::GNLMOutputStats()
    : fpParserMessage(new ParserMessage),
      fpDictMetadata(nullptr),
      fpMCVarList(nullptr),
      fpBuildSettings(nullptr),
      fpModelDiagnostics(nullptr),
      fpStructuredData(nullptr),
      fpClassifMatrix(nullptr),
      fpEffectTest(nullptr),
      fpParamCollect(nullptr),
      fpEMMEANSSignifCollect(nullptr),
      fpEMMEANSCustomCollect(nullptr),
      fpStringMapCollect(nullptr) {
  fpParserMessage->SetCommandName("GLMIXFIT");
  fpParserMessage->SetProcedureTitle("Generalized Linear Mixed Models");
}

GNLMOutputStats::~GNLMOutputStats() {
  delete fpParserMessage;
  DestroyMCVarList();
  DestroyBuildSettings();
  DestroyModelDiagnostics();
  DestroyStructuredData();
  DestroyClassifMatrix();
  DestroyEffectTest();
  DestroyParamCollect();
  DestroyEMMEANSSignifCollect();
  DestroyEMMEANSCustomCollect();
  DestroyStringMapCollect();
}

GNLMOutputStats::BuildSettingsData* GNLMOutputStats::CreateBuildSettings() { return Renew(fpBuildSettings); }
void GNLMOutputStats::DestroyBuildSettings() { Release(fpBuildSettings); }

GNLMOutputStats::ModelDiagnosticsData* GNLMOutputStats::CreateModelDiagnostics() {
  return Renew(fpModelDiagnostics);
}
void GNLMOutputStats::DestroyModelDiagnostics() { Release(fpModelDiagnostics); }

GNLMOutputStats::StructuredData* GNLMOutputStats::CreateStructuredData() { return Renew(fpStructuredData); }
void GNLMOutputStats::DestroyStructuredData() { Release(fpStructuredData); }

GNLMOutputStats::ClassifMatrixData* GNLMOutputStats::CreateClassifMatrix() { return Renew(fpClassifMatrix); }
void GNLMOutputStats::DestroyClassifMatrix() { Release(fpClassifMatrix); }

GNLMOutputStats::EffectTestData* GNLMOutputStats::CreateEffectTest() { return Renew(fpEffectTest); }
void GNLMOutputStats::DestroyEffectTest() { Release(fpEffectTest); }

GNLMOutputStats::ParamCollectData* GNLMOutputStats::CreateParamCollect() { return Renew(fpParamCollect); }
void GNLMOutputStats::DestroyParamCollect() { Release(fpParamCollect); }

std::vector<GNLMOutputStats::EMMEANSEstimatesData>* GNLMOutputStats::CreateEMMEANSSignifCollect() {
  return Renew(fpEMMEANSSignifCollect);
}
void GNLMOutputStats::DestroyEMMEANSSignifCollect() { Release(fpEMMEANSSignifCollect); }

std::vector<GNLMOutputStats::EMMEANSCustomData>* GNLMOutputStats::CreateEMMEANSCustomCollect() {
  return Renew(fpEMMEANSCustomCollect);
}
void GNLMOutputStats::DestroyEMMEANSCustomCollect() { Release(fpEMMEANSCustomCollect); }

std::vector<GNLMOutputStats::StringMapData>* GNLMOutputStats::CreateStringMapCollect() {
  return Renew(fpStringMapCollect);
}
void GNLMOutputStats::DestroyStringMapCollect() { Release(fpStringMapCollect); }

MCXML_850::MCVarList* GNLMOutputStats::CreateMCVarList() { return Renew(fpMCVarList); }
void GNLMOutputStats::DestroyMCVarList() { Release(fpMCVarList); }

void GNLMOutputStats::ClearVariableMapInfo() {
  fVariableMapInfo.fvFieldToVar.clear();
  fVariableMapInfo.fvVarToField.clear();
  fVariableMapInfo.fvIsCategorical.clear();
  fVariableMapInfo.fvNumCategories.clear();
}

void GNLMOutputStats::UpdateVariableMapInfo() {
  ClearVariableMapInfo();
  const int n = fpMCVarList != nullptr ? fpMCVarList->Size() : 0;
  const int f = fpDictMetadata != nullptr ? fpDictMetadata->FieldCount() : 0;
  fVariableMapInfo.fvFieldToVar.assign(U(f), -1);
  fVariableMapInfo.fvVarToField.assign(U(n), -1);
  fVariableMapInfo.fvIsCategorical.assign(U(n), false);
  fVariableMapInfo.fvNumCategories.assign(U(n), 0);
  for (int i = 0; i < n; ++i) {
    const MCXML_850::IMCVariable& variable = *fpMCVarList->GetVarAt(i);
    const int k = fpDictMetadata != nullptr ? fpDictMetadata->GetFieldIndex(variable.GetName()) : -1;
    if (k >= 0) {
      fVariableMapInfo.fvFieldToVar[U(k)] = i;
      fVariableMapInfo.fvVarToField[U(i)] = k;
    }
    if (variable.IsCategorical()) {
      fVariableMapInfo.fvIsCategorical[U(i)] = true;
      fVariableMapInfo.fvNumCategories[U(i)] = variable.GetNCategories();
    }
  }
}

bool GNLMOutputStats::HasWarning(const std::string& key) const {
  for (const WarningMsgData& warning : fvAllWarnings) {
    if (warning.fPattern == key) return true;
  }
  return false;
}

const CFFormat* GNLMOutputStats::GetCFFormat(int fieldIndex) const {
  if (fpDictMetadata == nullptr || fieldIndex < 0 || fieldIndex >= fpDictMetadata->FieldCount()) return nullptr;
  const CFField* pField = fpDictMetadata->GetField(fieldIndex);
  return pField != nullptr ? &pField->GetFormat() : nullptr;
}

std::string GNLMOutputStats::GetTranslatedText(const char* key, const char* a1, const char* a2, const char* a3,
                                               const char* a4, const char* a5) const {
  return fpParserMessage->GetTranslatedText(key, a1, a2, a3, a4, a5);
}
