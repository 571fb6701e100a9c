#pragma once

#include <string>

#include "host/output/BpCellText.h"
#include "host/output/BpFormatSpec.h"

// A number in a format. The system-missing value is an empty cell.
class BpNumber : public BpCellText {
 public:
  BpNumber(double value) : fValue(value) {}
  BpNumber(double value, const BpFormatSpec& format) : fValue(value), fFormat(format) {}

  double GetValue() const { return fValue; }
  void SetValue(double value) { fValue = value; }
  const BpFormatSpec& GetFormat() const { return fFormat; }
  void SetFormat(const BpFormatSpec& format) { fFormat = format; }

  BpCellText* Replicate() const override { return new BpNumber(*this); }
  using BpCellText::GetText;
  std::string GetText(const BpTextContext& context) const override;
  void FillCell(OmCell& cell, const BpTextContext& context) const override;

 private:
  double fValue;
  BpFormatSpec fFormat;
};
