#pragma once

#include <vector>

// A continuous axis: a range of values mapped linearly onto pixels.
class XLinearScale {
 public:
  XLinearScale() = default;
  XLinearScale(double low, double high, double from, double to);

  double Map(double value) const;
  double GetLow() const { return fLow; }
  double GetHigh() const { return fHigh; }
  void SetDomain(double low, double high);
  void SetRange(double from, double to);
  double GetFrom() const { return fFrom; }
  double GetTo() const { return fTo; }

  // A step of 1, 2 or 5 times a power of ten that gives about `count` ticks
  // over the domain.
  double TickStep(int count) const;
  // The multiples of the step inside the domain.
  std::vector<double> Ticks(int count) const;
  // Ticks no closer than this (1 for whole numbers); 0 for any step.
  void SetMinimumStep(double step) { fMinimumStep = step; }
  // The decimals that tick labels of that step need.
  static int DecimalsOf(double step);

 private:
  double fLow = 0.0;
  double fHigh = 1.0;
  double fFrom = 0.0;
  double fTo = 1.0;
  double fMinimumStep = 0.0;
};
