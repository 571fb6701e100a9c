#include "host/viz/XLinearScale.h"

#include <algorithm>
#include <cmath>

XLinearScale::XLinearScale(double low, double high, double from, double to) {
  SetDomain(low, high);
  SetRange(from, to);
}

void XLinearScale::SetDomain(double low, double high) {
  if (!std::isfinite(low) || !std::isfinite(high)) {
    low = 0.0;
    high = 1.0;
  }
  if (high < low) std::swap(low, high);
  if (high == low) {
    // One value: a unit around it, or a tenth of its size.
    const double half = low == 0.0 ? 1.0 : std::fabs(low) * 0.1;
    low -= half;
    high += half;
  }
  fLow = low;
  fHigh = high;
}

void XLinearScale::SetRange(double from, double to) {
  fFrom = from;
  fTo = to;
}

double XLinearScale::Map(double value) const { return fFrom + (value - fLow) / (fHigh - fLow) * (fTo - fFrom); }

double XLinearScale::TickStep(int count) const {
  const double span = fHigh - fLow;
  if (!(span > 0.0) || count < 1) return 1.0;
  const double raw = span / count;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  const double fraction = raw / power;
  const double nice = fraction < 1.5 ? 1.0 : fraction < 3.5 ? 2.0 : fraction < 7.5 ? 5.0 : 10.0;
  return std::max(nice * power, fMinimumStep);
}

std::vector<double> XLinearScale::Ticks(int count) const {
  std::vector<double> ticks;
  const double step = TickStep(count);
  const double first = std::ceil(fLow / step - 1e-9);
  const double last = std::floor(fHigh / step + 1e-9);
  for (double k = first; k <= last && ticks.size() < 100; k += 1.0) {
    double value = k * step;
    if (std::fabs(value) < step * 1e-9) value = 0.0;
    ticks.push_back(value);
  }
  return ticks;
}

int XLinearScale::DecimalsOf(double step) {
  if (!(step > 0.0) || !std::isfinite(step)) return 0;
  const int decimals = static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
  return std::clamp(decimals, 0, 15);
}
