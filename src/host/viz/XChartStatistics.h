#pragma once

#include <string>
#include <vector>

// The statistics a chart computes from its rows: bins of a histogram and
// the fitted density of a distribution laid over it.
class XChartStatistics {
 public:
  struct Bin {
    double fLow = 0.0;
    double fHigh = 0.0;
    double fTotal = 0.0;  // the weights of the values in the bin
  };

  // `count` bins of equal width centred on an even grid from the smallest
  // to the largest value, so that values which are already bin midpoints
  // (as a saved histogram's) fall one into each bin. A count below 1 takes
  // ceil(log2 n) + 1, at most 50. Values with a weight that is not positive
  // are left out. Empty without values.
  static std::vector<Bin> Binned(const std::vector<double>& values, const std::vector<double>& weights, int count);

  // The distribution's density (or probability, for the discrete ones) at
  // x; the parameters are the markup's parameter and secondaryParameter:
  //   normal            mean, standard deviation
  //   poisson           mean
  //   gamma             shape, rate
  //   binomialnegative  r, p (probability of a success)
  //   gaussianinverse   mean, shape
  // Not a number where the parameters are outside the distribution's domain.
  static double Density(const std::string& distribution, double parameter, double secondary, double x);
  static bool IsDiscrete(const std::string& distribution);
  // Weighted mean and standard deviation (n - 1 denominator) of values.
  static void Moments(const std::vector<double>& values, const std::vector<double>& weights, double& mean,
                      double& deviation);
};
