#pragma once

#include <iosfwd>
#include <vector>

namespace MCMath_850 {

// A set of the integers 0 to Size() - 1.
class MCBitSet {
 public:
  MCBitSet() = default;
  // A set over 0 to size - 1 with no members (a negative size counts as 0).
  explicit MCBitSet(int size);

  int Size() const { return static_cast<int>(fvbBits.size()); }
  // New size; members beyond it are dropped, new places are not members.
  void Resize(int size);
  // Adds or removes i; false when i lies outside 0 to Size() - 1.
  bool Set(int i, bool member = true);
  bool IsMember(int i) const;
  int Count() const;
  // The members in ascending order.
  std::vector<int> InSet() const;

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<bool> fvbBits;
};

}  // namespace MCMath_850
