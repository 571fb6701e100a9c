#include "numeric/math/MCBitSet.h"

#include <algorithm>
#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

MCBitSet::MCBitSet(int size) : fvbBits(static_cast<std::size_t>(std::max(size, 0)), false) {}

void MCBitSet::Resize(int size) { fvbBits.resize(static_cast<std::size_t>(std::max(size, 0)), false); }

bool MCBitSet::Set(int i, bool member) {
  if (i < 0 || i >= Size()) return false;
  fvbBits[static_cast<std::size_t>(i)] = member;
  return true;
}

bool MCBitSet::IsMember(int i) const {
  return i >= 0 && i < Size() && fvbBits[static_cast<std::size_t>(i)];
}

int MCBitSet::Count() const { return static_cast<int>(std::count(fvbBits.begin(), fvbBits.end(), true)); }

std::vector<int> MCBitSet::InSet() const {
  std::vector<int> members;
  for (int i = 0; i < Size(); ++i) {
    if (fvbBits[static_cast<std::size_t>(i)]) members.push_back(i);
  }
  return members;
}

void MCBitSet::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCBitSet::Display(std::ostream& os) const {
  MCDisplay_850::DisplayI(os, "Set size:", Size());
  MCDisplay_850::DisplayIV(os, "Members:", InSet());
}

}  // namespace MCMath_850
