#include "host/parser/ParserText.h"

#include <cstring>

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

}  // namespace

char* ZORVMBstrtrim_A(char* text) {
  if (text == nullptr) return nullptr;
  char* first = text;
  while (IsBlank(*first)) ++first;
  char* last = first + std::strlen(first);
  while (last > first && IsBlank(last[-1])) --last;
  *last = '\0';
  return first;
}

std::string GetUpperString(const char* text) {
  if (text == nullptr) return std::string();
  return GetUpperString(std::string(text));
}

std::string GetUpperString(const std::string& text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}
