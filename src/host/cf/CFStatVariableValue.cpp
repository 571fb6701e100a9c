#include "host/cf/CFStatVariableValue.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "host/data/ZORV_Variable.h"

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool ParseNumber(const std::string& text, double& value) {
  std::size_t begin = 0;
  std::size_t end = text.size();
  while (begin < end && IsBlank(text[begin])) ++begin;
  while (end > begin && IsBlank(text[end - 1])) --end;
  if (begin < end && text[begin] == '+') {
    ++begin;
    if (begin < end && (text[begin] == '+' || text[begin] == '-')) return false;
  }
  if (begin == end) return false;
  const char* first = text.data() + begin;
  const char* last = text.data() + end;
  auto result = std::from_chars(first, last, value);
  return result.ec == std::errc() && result.ptr == last && std::isfinite(value);
}

}  // namespace

CFStatVariableValue::CFStatVariableValue(const std::string& text) : fStringValue(text) {}

void CFStatVariableValue::SetStringValue(const std::string& text) {
  fStringValue = text;
  fvObsValue.clear();
  fWidth = 0;
  fbLoaded = false;
}

bool CFStatVariableValue::LoadObsValue(const ZORV_Variable& variable, bool bTruncate) {
  fvObsValue.clear();
  fWidth = 0;
  fbLoaded = false;

  if (!variable.IsString()) {
    OBS cell;
    if (!ParseNumber(fStringValue, cell.fNum)) return false;
    fvObsValue.push_back(cell);
    fbLoaded = true;
    return true;
  }

  const int width = variable.GetType();
  std::size_t length = fStringValue.size();
  while (length > 0 && fStringValue[length - 1] == ' ') --length;
  if (length > static_cast<std::size_t>(width)) {
    if (!bTruncate) return false;
    length = static_cast<std::size_t>(width);
  }
  fvObsValue.resize(static_cast<std::size_t>(ObsWordsForWidth(width)));
  char* cells = reinterpret_cast<char*>(fvObsValue.data());
  std::memset(cells, ' ', fvObsValue.size() * sizeof(OBS));
  std::memcpy(cells, fStringValue.data(), length);
  fWidth = width;
  fbLoaded = true;
  return true;
}

bool CFStatVariableValue::SetCompleteValue(const std::string& text, const ZORV_Variable& variable,
                                           bool bTruncate) {
  SetStringValue(text);
  return LoadObsValue(variable, bTruncate);
}
