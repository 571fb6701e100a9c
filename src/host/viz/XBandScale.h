#pragma once

#include <string>
#include <vector>

// A categorical axis: categories, each a band of equal width, in order.
class XBandScale {
 public:
  XBandScale() = default;
  // Categories by key, with the text each shows.
  void SetCategories(const std::vector<std::string>& keys, const std::vector<std::string>& labels);
  void SetRange(double from, double to);

  int GetCount() const { return static_cast<int>(fvKeys.size()); }
  const std::vector<std::string>& GetKeys() const { return fvKeys; }
  const std::vector<std::string>& GetLabels() const { return fvLabels; }
  // The band's width in pixels (negative for a range that runs downwards).
  double GetBandwidth() const;
  // The centre of the category's band; -1 for a key that is not one.
  int IndexOf(const std::string& key) const;
  double Center(int index) const;
  double GetFrom() const { return fFrom; }
  double GetTo() const { return fTo; }

 private:
  std::vector<std::string> fvKeys;
  std::vector<std::string> fvLabels;
  double fFrom = 0.0;
  double fTo = 1.0;
};
