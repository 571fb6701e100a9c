#include "numeric/engine/MCEngineProbability.h"

#include <cmath>
#include <functional>
#include <limits>

namespace MCEngine_850 {

namespace {

constexpr double kEps = 1e-16;
constexpr double kTiny = 1e-300;

// Continued fraction of the incomplete beta function (modified Lentz).
double BetaFraction(double a, double b, double x) {
  double c = 1.0;
  double d = 1.0 - (a + b) * x / (a + 1.0);
  if (std::fabs(d) < kTiny) d = kTiny;
  d = 1.0 / d;
  double h = d;
  for (int m = 1; m <= 10000; ++m) {
    const double m2 = 2.0 * m;
    double num = m * (b - m) * x / ((a + m2 - 1.0) * (a + m2));
    d = 1.0 + num * d;
    if (std::fabs(d) < kTiny) d = kTiny;
    c = 1.0 + num / c;
    if (std::fabs(c) < kTiny) c = kTiny;
    d = 1.0 / d;
    h *= d * c;
    num = -(a + m) * (a + b + m) * x / ((a + m2) * (a + m2 + 1.0));
    d = 1.0 + num * d;
    if (std::fabs(d) < kTiny) d = kTiny;
    c = 1.0 + num / c;
    if (std::fabs(c) < kTiny) c = kTiny;
    d = 1.0 / d;
    const double delta = d * c;
    h *= delta;
    if (std::fabs(delta - 1.0) < kEps) break;
  }
  return h;
}

// Finds x in [lo, hi] with f(x) = 0 where f changes sign (Brent's method).
double SolveMonotone(const std::function<double(double)>& f, double lo, double hi) {
  double a = lo, b = hi, fa = f(a), fb = f(b);
  if (fa == 0.0) return a;
  if (fb == 0.0) return b;
  double c = a, fc = fa, d = b - a, e = d;
  for (int it = 0; it < 300; ++it) {
    if ((fb > 0.0) == (fc > 0.0)) {
      c = a;
      fc = fa;
      d = e = b - a;
    }
    if (std::fabs(fc) < std::fabs(fb)) {
      a = b;
      b = c;
      c = a;
      fa = fb;
      fb = fc;
      fc = fa;
    }
    const double tol = 2.0 * 1e-16 * std::fabs(b) + 1e-300;
    const double m = 0.5 * (c - b);
    if (std::fabs(m) <= tol || fb == 0.0) return b;
    if (std::fabs(e) >= tol && std::fabs(fa) > std::fabs(fb)) {
      double p, q, r;
      const double s = fb / fa;
      if (a == c) {
        p = 2.0 * m * s;
        q = 1.0 - s;
      } else {
        q = fa / fc;
        r = fb / fc;
        p = s * (2.0 * m * q * (q - r) - (b - a) * (r - 1.0));
        q = (q - 1.0) * (r - 1.0) * (s - 1.0);
      }
      if (p > 0.0) q = -q;
      p = std::fabs(p);
      if (2.0 * p < std::fmin(3.0 * m * q - std::fabs(tol * q), std::fabs(e * q))) {
        e = d;
        d = p / q;
      } else {
        d = m;
        e = m;
      }
    } else {
      d = m;
      e = m;
    }
    a = b;
    fa = fb;
    b += (std::fabs(d) > tol) ? d : (m > 0.0 ? tol : -tol);
    fb = f(b);
  }
  return b;
}

}  // namespace

double MCEngineProbability::NormalCdf(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }

double MCEngineProbability::NormalUpper(double x) { return 0.5 * std::erfc(x / std::sqrt(2.0)); }

double MCEngineProbability::NormalQuantile(double p) {
  if (!(p > 0.0)) return -std::numeric_limits<double>::infinity();
  if (!(p < 1.0)) return std::numeric_limits<double>::infinity();
  // Rational approximation, refined by Newton steps on the exact CDF.
  static const double a[] = {-3.969683028665376e+01, 2.209460984245205e+02, -2.759285104469687e+02,
                             1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
  static const double b[] = {-5.447609879822406e+01, 1.615858368580409e+02, -1.556989798598866e+02,
                             6.680131188771972e+01,  -1.328068155288572e+01};
  static const double c[] = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                             -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
  static const double d[] = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                             3.754408661907416e+00};
  double x;
  if (p < 0.02425) {
    const double q = std::sqrt(-2.0 * std::log(p));
    x = (((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
        ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1.0);
  } else if (p > 1.0 - 0.02425) {
    const double q = std::sqrt(-2.0 * std::log(1.0 - p));
    x = -(((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
        ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1.0);
  } else {
    const double q = p - 0.5;
    const double r = q * q;
    x = (((((a[0] * r + a[1]) * r + a[2]) * r + a[3]) * r + a[4]) * r + a[5]) * q /
        (((((b[0] * r + b[1]) * r + b[2]) * r + b[3]) * r + b[4]) * r + 1.0);
  }
  for (int i = 0; i < 3; ++i) {
    const double err = (p < 0.5) ? NormalCdf(x) - p : p - (1.0 - NormalUpper(x));
    const double dens = std::exp(-0.5 * x * x) / 2.5066282746310002;
    if (dens <= 0.0) break;
    const double step = (p < 0.5) ? err / dens : -err / dens;
    x -= step / (1.0 + 0.5 * x * step);
  }
  return x;
}

double MCEngineProbability::IncompleteBeta(double a, double b, double x) {
  if (!(x > 0.0)) return 0.0;
  if (!(x < 1.0)) return 1.0;
  const double lbeta = std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b);
  const double front = std::exp(lbeta + a * std::log(x) + b * std::log1p(-x));
  if (x < (a + 1.0) / (a + b + 2.0)) return front * BetaFraction(a, b, x) / a;
  return 1.0 - front * BetaFraction(b, a, 1.0 - x) / b;
}

double MCEngineProbability::IncompleteGammaP(double a, double x) {
  if (!(x > 0.0)) return 0.0;
  if (std::isinf(x)) return 1.0;
  if (x < a + 1.0) {
    double ap = a, sum = 1.0 / a, del = sum;
    for (int n = 0; n < 100000; ++n) {
      ap += 1.0;
      del *= x / ap;
      sum += del;
      if (std::fabs(del) < std::fabs(sum) * kEps) break;
    }
    return sum * std::exp(-x + a * std::log(x) - std::lgamma(a));
  }
  return 1.0 - IncompleteGammaQ(a, x);
}

double MCEngineProbability::IncompleteGammaQ(double a, double x) {
  if (!(x > 0.0)) return 1.0;
  if (std::isinf(x)) return 0.0;
  if (x < a + 1.0) return 1.0 - IncompleteGammaP(a, x);
  double b = x + 1.0 - a, c = 1.0 / kTiny, d = 1.0 / b, h = d;
  for (int i = 1; i < 100000; ++i) {
    const double an = -i * (i - a);
    b += 2.0;
    d = an * d + b;
    if (std::fabs(d) < kTiny) d = kTiny;
    c = b + an / c;
    if (std::fabs(c) < kTiny) c = kTiny;
    d = 1.0 / d;
    const double del = d * c;
    h *= del;
    if (std::fabs(del - 1.0) < kEps) break;
  }
  return std::exp(-x + a * std::log(x) - std::lgamma(a)) * h;
}

double MCEngineProbability::TCdf(double t, double df) {
  if (std::isnan(t) || !(df > 0.0)) return std::numeric_limits<double>::quiet_NaN();
  if (std::isinf(df) || df > 1e10) return NormalCdf(t);
  const double tail = 0.5 * IncompleteBeta(0.5 * df, 0.5, df / (df + t * t));
  return t > 0.0 ? 1.0 - tail : tail;
}

double MCEngineProbability::TTwoSided(double t, double df) {
  if (std::isnan(t) || !(df > 0.0)) return std::numeric_limits<double>::quiet_NaN();
  if (std::isinf(df) || df > 1e10) return 2.0 * NormalUpper(std::fabs(t));
  return IncompleteBeta(0.5 * df, 0.5, df / (df + t * t));
}

double MCEngineProbability::TQuantile(double p, double df) {
  if (!(df > 0.0) || std::isnan(p)) return std::numeric_limits<double>::quiet_NaN();
  if (!(p > 0.0)) return -std::numeric_limits<double>::infinity();
  if (!(p < 1.0)) return std::numeric_limits<double>::infinity();
  if (std::isinf(df) || df > 1e10) return NormalQuantile(p);
  if (p == 0.5) return 0.0;
  // Solve in the upper half for accuracy and mirror.
  const double q = p > 0.5 ? 1.0 - p : p;  // lower-tail probability of -|t|
  auto f = [&](double t) { return 0.5 * IncompleteBeta(0.5 * df, 0.5, df / (df + t * t)) - q; };
  double hi = 1.0;
  while (f(hi) > 0.0 && hi < 1e300) hi *= 2.0;
  const double t = SolveMonotone(f, 0.0, hi);
  return p > 0.5 ? t : -t;
}

double MCEngineProbability::FUpper(double f, double df1, double df2) {
  if (std::isnan(f) || !(df1 > 0.0) || !(df2 > 0.0)) return std::numeric_limits<double>::quiet_NaN();
  if (!(f > 0.0)) return 1.0;
  if (std::isinf(df2) || df2 > 1e10) return IncompleteGammaQ(0.5 * df1, 0.5 * df1 * f);
  return IncompleteBeta(0.5 * df2, 0.5 * df1, df2 / (df2 + df1 * f));
}

double MCEngineProbability::ChiSquareCdf(double x, double df) {
  if (std::isnan(x) || !(df > 0.0)) return std::numeric_limits<double>::quiet_NaN();
  return IncompleteGammaP(0.5 * df, 0.5 * x);
}

double MCEngineProbability::ChiSquareQuantile(double p, double df) {
  if (!(df > 0.0) || std::isnan(p)) return std::numeric_limits<double>::quiet_NaN();
  if (!(p > 0.0)) return 0.0;
  if (!(p < 1.0)) return std::numeric_limits<double>::infinity();
  const bool upper = p > 0.5;
  auto f = [&](double x) {
    return upper ? (1.0 - p) - IncompleteGammaQ(0.5 * df, 0.5 * x) : IncompleteGammaP(0.5 * df, 0.5 * x) - p;
  };
  double hi = df > 1.0 ? df : 1.0;
  while (f(hi) < 0.0 && hi < 1e300) hi *= 2.0;
  return SolveMonotone(f, 0.0, hi);
}

}  // namespace MCEngine_850
