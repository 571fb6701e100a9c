#include "host/output/BpProcedure.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/data/ZORV_DataSource.h"
#include "host/output/BpProcedureState.h"
#include "host/output/BpString.h"
#include "host/output/OmDocument.h"

namespace {

const std::uint16_t kWidth = 40;
const int kMaxDecimals = 16;

ZORV_Format Fixed(int decimals) { return ZORV_Format(ZORV_Format::F, kWidth, static_cast<std::uint8_t>(decimals)); }

BpProcedureState* ProcedureOf(const BpHandle& handle) {
  return static_cast<BpProcedureState*>(handle.GetBody());
}

}  // namespace

BpProcedure::BpProcedure(OmHeading& heading, const std::string& title, const std::string& stringTable)
    : BpHeading(new BpProcedureState(&heading, title, stringTable, FacSTDictionary::SessionDirectory())) {
  if (heading.fText.empty()) heading.fText = BpString(title, true).GetText(State()->GetContext(false));
}

BpProcedure::BpProcedure(BpHeadingState* pState) : BpHeading(pState) {}

const std::string& BpProcedure::GetTitle() const {
  static const std::string kNone;
  return IsBound() ? ProcedureOf(*this)->GetTitle() : kNone;
}

const std::string& BpProcedure::GetStringTable() const {
  static const std::string kNone;
  return IsBound() ? ProcedureOf(*this)->GetStringTable() : kNone;
}

ZORV_DataSource* BpProcedure::GetDataSource() const {
  return IsBound() ? ProcedureOf(*this)->GetDataSource() : nullptr;
}

void BpProcedure::SetDataSource(ZORV_DataSource* pDataSource) {
  if (IsBound()) ProcedureOf(*this)->SetDataSource(pDataSource);
}

BpFormatSpec BpProcedure::Count() { return BpFormatSpec(Fixed(0)); }

BpFormatSpec BpProcedure::GeneralStat() { return BpFormatSpec(Fixed(3)); }

BpFormatSpec BpProcedure::Significance() { return BpFormatSpec(Fixed(3)); }

BpFormatSpec BpProcedure::Correlation() { return BpFormatSpec(Fixed(3)); }

BpFormatSpec BpProcedure::Coefficient() { return BpFormatSpec(Fixed(3), true); }

BpFormatSpec BpProcedure::CoefficientSE() { return BpFormatSpec(Fixed(3), true); }

BpFormatSpec BpProcedure::Mean(int variableIndex) const {
  const ZORV_DataSource* source = GetDataSource();
  if (source != nullptr && variableIndex >= 0 && variableIndex < source->ColumnCount()) {
    const ZORV_Variable* variable = source->GetVariable(variableIndex);
    if (variable != nullptr && !variable->IsString() && !variable->GetFormat().IsString()) {
      int decimals = variable->GetFormat().fDecimals + 2;
      return BpFormatSpec(Fixed(decimals > kMaxDecimals ? kMaxDecimals : decimals));
    }
  }
  return BpFormatSpec(Fixed(3));
}

BpFormatSpec BpProcedure::Percent() { return BpFormatSpec(ZORV_Format(ZORV_Format::PCT, kWidth, 1)); }

BpFormatSpec BpProcedure::SigDigit(double value) {
  if (!std::isfinite(value) || BpFormatSpec::IsMissing(value)) return BpFormatSpec(Fixed(0));
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.10g", value);
  std::string text = buffer;
  int decimals = 0;
  std::size_t exponent = text.find_first_of("eE");
  std::size_t point = text.find('.');
  if (point != std::string::npos) {
    std::size_t end = exponent == std::string::npos ? text.size() : exponent;
    decimals = static_cast<int>(end - point - 1);
  }
  if (exponent != std::string::npos) decimals -= std::atoi(text.c_str() + exponent + 1);
  if (decimals < 0) decimals = 0;
  if (decimals > kMaxDecimals) decimals = kMaxDecimals;
  return BpFormatSpec(Fixed(decimals));
}

BpProcedure BpProcedure::Current() { return BpProcedure(BpProcedureState::Current()); }

OmDocument& BpProcedure::HostDocument() {
  static OmDocument document;
  return document;
}
