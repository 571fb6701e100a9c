#pragma once

#include <iosfwd>

namespace MCMath_850 {

// The result of one test: the statistic, its numerator and denominator
// degrees of freedom, and its significance. Every value starts as the
// system-missing value.
class MCTestStats {
 public:
  MCTestStats();
  MCTestStats(double wald, double df, double df2, double sig);

  double GetWald() const { return fWald; }
  void SetWald(double wald) { fWald = wald; }
  double GetDF() const { return fDF; }
  void SetDF(double df) { fDF = df; }
  double GetDF2() const { return fDF2; }
  void SetDF2(double df2) { fDF2 = df2; }
  double GetSig() const { return fSig; }
  void SetSig(double sig) { fSig = sig; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  double fWald;
  double fDF;
  double fDF2;
  double fSig;
};

}  // namespace MCMath_850
