#include "host/data/ZORV_ValueLabelMap.h"

std::string ZORV_ValueLabelMap::Trimmed(const std::string& s) {
  std::size_t end = s.find_last_not_of(' ');
  return end == std::string::npos ? std::string() : s.substr(0, end + 1);
}

const char* ZORV_ValueLabelMap::GetLabel(double value) const {
  auto it = fNumeric.find(value);
  return it == fNumeric.end() ? nullptr : it->second.c_str();
}

const char* ZORV_ValueLabelMap::GetLabel(const char* value) const {
  if (value == nullptr) return nullptr;
  auto it = fString.find(Trimmed(value));
  return it == fString.end() ? nullptr : it->second.c_str();
}

const char* ZORV_ValueLabelMap::GetLabel(const OBS* value, int width) const {
  if (value == nullptr) return nullptr;
  if (width <= 0) return GetLabel(value->fNum);
  return GetLabel(std::string(value->fStr, static_cast<std::size_t>(width)));
}
