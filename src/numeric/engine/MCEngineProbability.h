#pragma once

namespace MCEngine_850 {

// Distribution functions for the engine's tests and intervals. Degrees of
// freedom may be fractional; an infinite df gives the normal or chi-square limit.
class MCEngineProbability {
 public:
  static double NormalCdf(double x);
  static double NormalUpper(double x);
  static double NormalQuantile(double p);

  // Regularized incomplete beta I_x(a, b) and lower incomplete gamma P(a, x).
  static double IncompleteBeta(double a, double b, double x);
  static double IncompleteGammaP(double a, double x);
  static double IncompleteGammaQ(double a, double x);

  static double TCdf(double t, double df);
  // P(|T| > |t|).
  static double TTwoSided(double t, double df);
  static double TQuantile(double p, double df);

  // P(F > f) for F(df1, df2).
  static double FUpper(double f, double df1, double df2);

  static double ChiSquareCdf(double x, double df);
  static double ChiSquareQuantile(double p, double df);
};

}  // namespace MCEngine_850
