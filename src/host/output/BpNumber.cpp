#include "host/output/BpNumber.h"

#include "host/output/OmDocument.h"

std::string BpNumber::GetText(const BpTextContext& /*context*/) const { return fFormat.Format(fValue); }

void BpNumber::FillCell(OmCell& cell, const BpTextContext& context) const {
  cell.fContent.fText = GetText(context);
  cell.fbNumeric = true;
  cell.fbMissing = BpFormatSpec::IsMissing(fValue);
  cell.fValue = fValue;
  cell.fFormat = fFormat.ToText();
}
