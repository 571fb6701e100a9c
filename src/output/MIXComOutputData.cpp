#include "output/MIXComOutputData.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/MIXAssert.h"
#include "base/MixExports.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/files/PathFactory.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpComposite.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/output/OmComposite.h"
#include "host/output/OmStringCell.h"
#include "host/output/ToString.h"
#include "host/parser/ParserText.h"
#include "host/strings/FacSTDictionary.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "output/MIXSplitResults.h"
#include "params/MIXParameterMap.h"
#include "specs/MIXValidSpecs.h"

namespace {

const double kSystemMissing = -1.7976931348623157e308;
const int kMaxFormatWidth = 40;

// Formats whose width is checked rather than widened: dates, times and
// other types that keep their own layout.
bool KeepsItsWidth(int type) {
  return (type >= 20 && type <= 30) || type == 38 || type == 39 || type == 85 || type == 86;
}

}  // namespace

MIXComOutputData::MIXComOutputData(MIXValidSpecs* pValidSpecs, MIXSplitResults* pFactory,
                                   ProcedureDataSource& dataSource, BpProcedure* pProcedure)
    : fpProcedure(pProcedure),
      fpFactory(pFactory),
      fpValidSpecs(pValidSpecs),
      fpVarSpecs(pValidSpecs ? pValidSpecs->GetVarValidSpecsPtr() : nullptr),
      fpCompSettings(pFactory ? pFactory->GetGLMMSettings() : nullptr),
      fpProcDS(&dataSource),
      fpFixParamMap(nullptr) {
  const ACAInputAdapter* pInpAdapt = fpFactory ? fpFactory->GetInputAdapter() : nullptr;
  fpFixParamMap = new MIXParameterMap(fpValidSpecs, dataSource, pInpAdapt);
  const int nRandomSpecs = fpCompSettings ? fpCompSettings->GetNRandomSpecs() : 0;
  fvpRandParamMaps.resize(static_cast<std::size_t>(nRandomSpecs), nullptr);
  for (MIXParameterMap*& pMap : fvpRandParamMaps) pMap = new MIXParameterMap(fpValidSpecs, dataSource, pInpAdapt);
}

MIXComOutputData::~MIXComOutputData() {
  delete fpFixParamMap;
  fpFixParamMap = nullptr;
  for (MIXParameterMap*& pMap : fvpRandParamMaps) {
    delete pMap;
    pMap = nullptr;
  }
}

std::intptr_t MIXComOutputData::GetCmnMixMap() { return CmnMix; }

std::intptr_t MIXComOutputData::GetCmaMixMap() { return CmaMix; }

ZORV_Format MIXComOutputData::GetTableFormat(MIXCommandLayout::Slot<MIXCommandLayout::FORMAT> slot) {
  std::int64_t word = 0;
  if (CmnMix != 0) std::memcpy(&word, reinterpret_cast<const char*>(CmnMix) + slot.fOffset, sizeof word);
  const ZORV_Format packed =
      ZORV_Format::FromPacked(static_cast<std::uint32_t>(static_cast<std::uint64_t>(word) & 0xffffffffu));
  int decimals = packed.fDecimals;
  int width = packed.fWidth;
  const int type = packed.fType;
  if (width > kMaxFormatWidth && type != ZORV_Format::A && type != ZORV_Format::AHEX) width = kMaxFormatWidth;
  if (type == ZORV_Format::A) {
    width = (decimals << 8) + width;
    decimals = 0;
  }
  return ZORV_Format(static_cast<std::uint8_t>(type), static_cast<std::uint16_t>(width),
                     static_cast<std::uint8_t>(decimals));
}

void MIXComOutputData::GenerateMaps() {
  // A split whose settings or fit failed still comes here when it has
  // records; it then gets no labels.
  if (fpFactory == nullptr || fpCompSettings == nullptr) return;
  const std::vector<MCMath_850::MCModelEffect>& effects = fpCompSettings->GetModelEffects();
  const MCGLMM_850::GLMMAlgorithm* pAlgorithm = fpFactory->GetGLMMAlgorithm();
  const MCGLMM_850::GLMMOutputStats* pStats = pAlgorithm ? pAlgorithm->GetOutputStats() : nullptr;
  if (pStats != nullptr && !pStats->GetBetaParameters().empty()) {
    fpFixParamMap->CreateParameterMap(pStats->GetBetaParameters(), effects);
  }
  fpFixParamMap->CreateEffectMap(effects);
}

int MIXComOutputData::GlobalDisplayOption(bool forValues, bool second) {
  long varSecond = 0;
  long valSecond = 0;
  long varFirst = 0;
  long valFirst = 0;
  getdisplayoptions_(&varSecond, &valSecond, &varFirst, &valFirst);
  long value = 0;
  if (forValues) {
    value = second ? valSecond : valFirst;
  } else {
    value = second ? varSecond : varFirst;
  }
  return static_cast<int>(value - 1);
}

bool MIXComOutputData::HasEffects() const {
  return (fpValidSpecs != nullptr && fpValidSpecs->GetInterceptInModel()) || fpFixParamMap->GetEffectMapSize() > 0;
}

void MIXComOutputData::AddTableCaptionFromPattern(BpPivotTable& table, const std::string& pattern,
                                                  bool listEffects) const {
  const bool hasEffects = HasEffects();
  if (fpCompSettings == nullptr || fpValidSpecs == nullptr) return;

  BpComposite caption(pattern, true);
  const ZORV_Variable* pDependent = fpProcDS->GetVariable(fpValidSpecs->GetDependVar());
  if (pDependent != nullptr) caption.Add(BpVariable(*pDependent, 2));
  if (listEffects && hasEffects) {
    caption.Sublist();
    if (fpValidSpecs->GetInterceptInModel()) {
      FacSTDictionary dictionary(PathFactory::getPathInstance()->GetStringTablePath());
      dictionary.SetProcedure("Mixed");
      caption.Add(BpString(dictionary.LookUp("(Intercept)"), false));
    }
    for (const std::string& name : fpFixParamMap->GetEffectMap(false)) caption.Add(BpString(name, false));
    caption.EndSublist();
  }
  caption.Finish();
  table.Note(BpAnnotation(caption.Replicate()));
}

void MIXComOutputData::AddTableCaption(BpPivotTable& table, bool listEffects) const {
  std::string pattern = "Dep variable is ^1";
  if (listEffects) {
    const bool intercept = fpValidSpecs != nullptr && fpValidSpecs->GetInterceptInModel();
    pattern = (intercept || fpFixParamMap->GetEffectMapSize() >= 1) ? "Dependent ^1 Model [%1:, ^1:]2"
                                                                    : "Dependent ^1 Model";
  }
  AddTableCaptionFromPattern(table, pattern, listEffects);

  if (fpValidSpecs == nullptr || fpValidSpecs->GetRegrWeightIndex() < 0) return;
  const ZORV_Variable* pWeight = fpProcDS->GetVariable(fpValidSpecs->GetRegrWeightIndex());
  if (pWeight == nullptr) return;
  BpComposite weight("Reg weight is ^1", true);
  weight.Add(BpVariable(*pWeight, 2));
  weight.Finish();
  table.Note(BpAnnotation(weight.Replicate()));
}

BpFormatSpec MIXComOutputData::DFFormat(double df) {
  if (df != kSystemMissing && df >= 1.0 && df == std::floor(df)) return BpProcedure::Count();
  return BpProcedure::GeneralStat();
}

std::string MIXComOutputData::EncodeDouble(double value, const ZORV_Format* pFormat) {
  if (value == kSystemMissing) return ".";

  if (pFormat == nullptr) {
    char buffer[64];
    const int encLen = std::snprintf(buffer, sizeof buffer, "%.17g", value);
    MIX_ASSERT(encLen > 0, "encLen > 0");
    std::string text(buffer, static_cast<std::size_t>(encLen));
    for (char& c : text) {
      if (c == ',') c = '.';
    }
    return text;
  }

  ZORV_Format format = *pFormat;
  const int type = format.fType;
  MIX_ASSERT(type != ZORV_Format::A && type != ZORV_Format::AHEX,
             "type != ZORV_Format::A && type != ZORV_Format::AHEX");
  if (KeepsItsWidth(type)) {
    MIX_ASSERT(format.fWidth <= (unsigned short)ZORV_Variable::MAXNUMFMTWID,
               "width <= (unsigned short)ZORV_Variable::MAXNUMFMTWID");
  } else {
    format.fWidth = kMaxFormatWidth;
  }

  char buffer[kMaxFormatWidth + 1];
  OBS obs;
  obs.fNum = value;
  const int errCode = ToString(&obs, format, buffer);
  MIX_ASSERT(errCode == 0, "errCode == 0");
  buffer[format.fWidth] = '\0';
  return std::string(ZORVMBstrtrim_A(buffer));
}

std::string MIXComOutputData::GetSplitName(const std::vector<OBS*>& values, bool second) const {
  const int nSplitVars = fpProcDS->GetNSplitVars();
  if (nSplitVars == 0) return std::string();

  const int nameOption = GlobalDisplayOption(false, second);
  const int valueOption = GlobalDisplayOption(true, second);

  OmComposite composite("[%1 = %2:, ^1 = ^2:]1");
  composite.BeginRepeatList();
  for (int i = 0; i < nSplitVars; ++i) {
    const ZORV_Variable* pVariable = fpProcDS->GetVariable(fpProcDS->GetSplitVar(i));
    if (pVariable == nullptr) continue;

    std::string name = pVariable->GetName();
    const char* varLabel = pVariable->GetLabel();
    if (nameOption > 0 && varLabel != nullptr) {
      if (nameOption == 1) {
        name = varLabel;
      } else {
        name += " ";
        name += varLabel;
      }
    }

    const OBS* pValue = static_cast<std::size_t>(i) < values.size() ? values[static_cast<std::size_t>(i)] : nullptr;
    std::string text;
    const char* valueLabel = nullptr;
    if (pValue != nullptr) {
      if (pVariable->GetType() == 0) {
        text = EncodeDouble(pValue->fNum, &pVariable->GetFormat());
        valueLabel = pVariable->GetValueLabels().GetLabel(pValue->fNum);
      } else {
        int type = 0;
        int width = 0;
        int decimals = 0;
        pVariable->GetFormatEx(type, width, decimals);
        text.assign(reinterpret_cast<const char*>(pValue), static_cast<std::size_t>(width > 0 ? width : 0));
        valueLabel = pVariable->GetValueLabels().GetLabel(text);
      }
    }
    if (valueOption > 0 && valueLabel != nullptr) {
      if (valueOption == 1) {
        text = valueLabel;
      } else {
        text += " ";
        text += valueLabel;
      }
    }
    composite.Add(OmStringCell(name));
    composite.Add(OmStringCell(text));
  }
  composite.EndRepeatList();
  composite.End();
  composite.Substitute(nullptr, true);
  return composite.AsString();
}
