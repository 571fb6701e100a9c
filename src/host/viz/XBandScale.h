#pragma once

#include <string>
#include <vector>

// A categorical axis: categories, each a band of equal width, in order.
class XBandScale {
 public:
  XBandScale() = default;
  // The categories by their keys, in order.
  void SetCategories(const std::vector<std::string>& keys) { fvKeys = keys; }
  void SetRange(double from, double to);

  int GetCount() const { return static_cast<int>(fvKeys.size()); }
  // The band's width in pixels (negative for a range that runs downwards).
  double GetBandwidth() const;
  // The position of a category; -1 for a key that is not one.
  int IndexOf(const std::string& key) const;
  // The pixel at the centre of the category's band.
  double Center(int index) const;

 private:
  std::vector<std::string> fvKeys;
  double fFrom = 0.0;
  double fTo = 1.0;
};
