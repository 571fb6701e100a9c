#include "numeric/display/MCDisplay.h"

#include <iomanip>
#include <iostream>
#include <sstream>

#include "numeric/common/MCMV.h"

namespace MCDisplay_850 {

namespace {

std::ostream* gpOutStream = &std::cout;

}  // namespace

std::ostream* GetOutStream() { return gpOutStream; }

void SetOutStream(std::ostream& os) { gpOutStream = &os; }

std::string FormatDouble(double value) {
  if (MCCommon_850::MCMV::IsMissing(value)) return "missing";
  std::ostringstream text;
  text << std::setprecision(15) << value;
  return text.str();
}

std::string FormatDoubleFixed(double value, int decimals) {
  if (MCCommon_850::MCMV::IsMissing(value)) return "missing";
  if (decimals < 0) decimals = 0;
  if (decimals > 17) decimals = 17;
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

void DisplayI(std::ostream& os, const std::string& label, long value) {
  os << label << ' ' << value << '\n';
}

void DisplayD(std::ostream& os, const std::string& label, double value) {
  os << label << ' ' << FormatDouble(value) << '\n';
}

void DisplayDF(std::ostream& os, const std::string& label, double value, int decimals) {
  os << label << ' ' << FormatDoubleFixed(value, decimals) << '\n';
}

void DisplayB(std::ostream& os, const std::string& label, bool value) {
  os << label << ' ' << (value ? "true" : "false") << '\n';
}

void DisplayS(std::ostream& os, const std::string& label, const std::string& value) {
  os << label << ' ' << value << '\n';
}

void DisplayIV(std::ostream& os, const std::string& label, const std::vector<int>& values) {
  os << label;
  if (values.empty()) os << " (none)";
  for (int value : values) os << ' ' << value;
  os << '\n';
}

void DisplayDV(std::ostream& os, const std::string& label, const std::vector<double>& values) {
  os << label;
  if (values.empty()) os << " (none)";
  for (double value : values) os << ' ' << FormatDouble(value);
  os << '\n';
}

void DisplayText(std::ostream& os, const std::string& text) { os << text << '\n'; }

void DisplayEnum(std::ostream& os, const std::string& label, const char* name, long value) {
  os << label << ' ' << (name != nullptr ? name : "unknown") << " (" << value << ")\n";
}

void DisplayI(const std::string& label, long value) { DisplayI(*gpOutStream, label, value); }
void DisplayD(const std::string& label, double value) { DisplayD(*gpOutStream, label, value); }
void DisplayDF(const std::string& label, double value, int decimals) {
  DisplayDF(*gpOutStream, label, value, decimals);
}
void DisplayB(const std::string& label, bool value) { DisplayB(*gpOutStream, label, value); }
void DisplayS(const std::string& label, const std::string& value) { DisplayS(*gpOutStream, label, value); }
void DisplayIV(const std::string& label, const std::vector<int>& values) {
  DisplayIV(*gpOutStream, label, values);
}
void DisplayDV(const std::string& label, const std::vector<double>& values) {
  DisplayDV(*gpOutStream, label, values);
}
void DisplayText(const std::string& text) { DisplayText(*gpOutStream, text); }

void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCCategOrder value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCCategOrder value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCConvType value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCConvType value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCOffsetType value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCOffsetType value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCHessianCompMethod value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCHessianCompMethod value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCEffectAnalysisType value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCEffectAnalysisType value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCCovbType value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCCovbType value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCPAdjustMethod value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCPAdjustMethod value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCContrastType value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCContrastType value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCReferenceType value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCReferenceType value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCEmmScaleType value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCEmmScaleType value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCVarRole value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCVarRole value) {
  DisplayC(*gpOutStream, label, value);
}
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCMeasureLevel value) {
  DisplayEnum(os, label, MCMath_850::MCConst::GetName(value), static_cast<long>(value));
}
void DisplayC(const std::string& label, MCMath_850::MCConst::MCMeasureLevel value) {
  DisplayC(*gpOutStream, label, value);
}

}  // namespace MCDisplay_850
