#include "host/viz/XBandScale.h"

void XBandScale::SetRange(double from, double to) {
  fFrom = from;
  fTo = to;
}

double XBandScale::GetBandwidth() const { return fvKeys.empty() ? fTo - fFrom : (fTo - fFrom) / GetCount(); }

int XBandScale::IndexOf(const std::string& key) const {
  for (std::size_t i = 0; i < fvKeys.size(); ++i) {
    if (fvKeys[i] == key) return static_cast<int>(i);
  }
  return -1;
}

double XBandScale::Center(int index) const { return fFrom + (index + 0.5) * GetBandwidth(); }
