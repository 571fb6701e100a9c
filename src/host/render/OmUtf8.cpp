#include "host/render/OmUtf8.h"

#include "numeric/common/MCUtf8.h"

namespace {

// Bytes of the character at `pos`: a malformed byte stands alone.
std::size_t CharacterBytes(const std::string& text, std::size_t pos) {
  const int length = MCCommon_850::MCUtf8::SequenceLength(text, pos);
  return static_cast<std::size_t>(length > 0 ? length : 1);
}

}  // namespace

int OmUtf8::Width(const std::string& text) {
  int width = 0;
  for (std::size_t pos = 0; pos < text.size(); pos += CharacterBytes(text, pos)) ++width;
  return width;
}

std::vector<std::string> OmUtf8::Characters(const std::string& text) {
  std::vector<std::string> out;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const std::size_t step = CharacterBytes(text, pos);
    out.push_back(text.substr(pos, step));
    pos += step;
  }
  return out;
}
