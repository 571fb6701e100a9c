#include "host/io/Utf8Text.h"

#include <cstring>

#include "numeric/common/MCUtf8.h"

bool Utf8Text::Validate(const char* data, std::size_t size, std::size_t& badOffset) {
  if (size == 0) return true;
  const void* nul = std::memchr(data, '\0', size);
  const std::size_t checked = nul != nullptr ? static_cast<std::size_t>(static_cast<const char*>(nul) - data) : size;
  if (!MCCommon_850::MCUtf8::Validate(data, checked, badOffset)) return false;
  if (nul == nullptr) return true;
  badOffset = checked;
  return false;
}

std::size_t Utf8Text::CharCount(const char* data, std::size_t size) {
  std::size_t n = 0;
  for (std::size_t i = 0; i < size; ++i) {
    if (!MCCommon_850::MCUtf8::IsContinuation(data[i])) ++n;
  }
  return n;
}

std::string Utf8Text::Excerpt(const char* data, std::size_t size, std::size_t limit) {
  std::size_t chars = 0;
  std::size_t i = 0;
  while (i < size) {
    if (!MCCommon_850::MCUtf8::IsContinuation(data[i])) {
      if (chars == limit) return std::string(data, i) + "...";
      ++chars;
    }
    ++i;
  }
  return std::string(data, size);
}
