#include "host/adapter/ACACommonDisplay.h"

#include <cfloat>
#include <cstdio>
#include <iostream>

namespace {

std::ostream* gpOutStream = &std::cout;

std::ostream& Line(const std::string& label) {
  std::ostream& os = *gpOutStream;
  os << label << ' ';
  return os;
}

}  // namespace

std::ostream* ACACommonDisplay::GetOutStream() { return gpOutStream; }

void ACACommonDisplay::SetOutStream(std::ostream& stream) { gpOutStream = &stream; }

std::string ACACommonDisplay::NumberText(double value) {
  if (value == -DBL_MAX) return "missing";
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.15g", value);
  return buffer;
}

void ACACommonDisplay::DisplayB(const std::string& label, bool value) { Line(label) << (value ? "true" : "false") << '\n'; }

void ACACommonDisplay::DisplayBV(const std::string& label, const std::vector<bool>& values) {
  std::ostream& os = Line(label);
  if (values.empty()) os << "(none)";
  for (std::size_t i = 0; i < values.size(); ++i) os << (i ? " " : "") << (values[i] ? "true" : "false");
  os << '\n';
}

void ACACommonDisplay::DisplayD(const std::string& label, double value) { Line(label) << NumberText(value) << '\n'; }

void ACACommonDisplay::DisplayI(const std::string& label, long value) { Line(label) << value << '\n'; }

void ACACommonDisplay::DisplayIV(const std::string& label, const std::vector<int>& values) {
  std::ostream& os = Line(label);
  if (values.empty()) os << "(none)";
  for (std::size_t i = 0; i < values.size(); ++i) os << (i ? " " : "") << values[i];
  os << '\n';
}

void ACACommonDisplay::DisplayObs(const std::string& label, const OBS* value, int type) {
  std::ostream& os = Line(label);
  if (value == nullptr) {
    os << "(null)\n";
  } else if (type <= 0) {
    os << NumberText(value->fNum) << '\n';
  } else {
    std::string text(reinterpret_cast<const char*>(value), static_cast<std::size_t>(type));
    std::size_t end = text.find_last_not_of(' ');
    text.erase(end == std::string::npos ? 0 : end + 1);
    os << '"' << text << "\"\n";
  }
}

void ACACommonDisplay::DisplayS(const std::string& label, const std::string& value) { Line(label) << value << '\n'; }

void ACACommonDisplay::DisplaySV(const std::string& label, const std::vector<std::string>& values) {
  std::ostream& os = Line(label);
  if (values.empty()) os << "(none)";
  for (std::size_t i = 0; i < values.size(); ++i) os << (i ? ", " : "") << '"' << values[i] << '"';
  os << '\n';
}

void ACACommonDisplay::DisplayText(const std::string& text) { *gpOutStream << text << '\n'; }
