#include "host/parser/ParserWords.h"

#include <cmath>

INTEGER tmcget_(INTEGER* words, LR* /*reals*/, const INTEGER& head, const LR& index) {
  if (words == nullptr || head < 1 || !std::isfinite(index)) return 0;
  INTEGER count = words[head - 1];
  if (index < 1.0 || index >= static_cast<LR>(count) + 1.0) return 0;
  INTEGER ordinal = static_cast<INTEGER>(index);
  return words[head - 1 + ordinal];
}
