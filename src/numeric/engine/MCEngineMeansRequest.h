#pragma once

#include <vector>

namespace MCEngine_850 {

// A table of estimated marginal means: one mean for every combination of the
// levels of its factors (the first factor varying slowest), and optionally
// contrasts among the levels of one of them, the compare factor, within each
// combination of the others.
class MCEngineMeansRequest {
 public:
  // The rows of a contrast among the k levels of the compare factor:
  //   kPairwise   level i - level j for every i < j;
  //   kSimple     every other level - the reference level;
  //   kDeviation  every level - the unweighted mean of all k levels;
  //   kDifference level i - the mean of the levels before it (i >= 1);
  //   kHelmert    level i - the mean of the levels after it (i < k - 1);
  //   kRepeated   level i - level i + 1;
  //   kPolynomial the orthonormal polynomials of degree 1 to k - 1 over the
  //               metric values (0, 1, ... when none are given).
  enum Contrast { kNone, kPairwise, kSimple, kDeviation, kDifference, kHelmert, kRepeated, kPolynomial };
  // Adjustment of the p values within each family of contrasts; the
  // intervals of the sequential methods are those of the single-step ones.
  enum Adjustment { kNoAdjustment, kSequentialBonferroni, kBonferroni, kSequentialSidak, kSidak };

  MCEngineMeansRequest() = default;

  const std::vector<int>& GetFactors() const { return fvFactors; }
  void SetFactors(const std::vector<int>& factors) { fvFactors = factors; }
  // One of the factors, or -1 for none.
  int GetCompareFactor() const { return fCompareFactor; }
  void SetCompareFactor(int factor) { fCompareFactor = factor; }
  Contrast GetContrast() const { return fContrast; }
  void SetContrast(Contrast contrast) { fContrast = contrast; }
  // Level of the compare factor that simple contrasts compare with; -1, or
  // a level that the factor does not have, means the last.
  int GetReferenceLevel() const { return fReferenceLevel; }
  void SetReferenceLevel(int level) { fReferenceLevel = level; }
  Adjustment GetAdjustment() const { return fAdjustment; }
  void SetAdjustment(Adjustment adjustment) { fAdjustment = adjustment; }
  const std::vector<double>& GetMetricValues() const { return fvMetricValues; }
  void SetMetricValues(const std::vector<double>& values) { fvMetricValues = values; }

  // Covariates held at a value of their own; the others stay at their mean.
  void SetCovariateValue(int covariate, double value) {
    fvCovariates.push_back(covariate);
    fvCovariateValues.push_back(value);
  }
  const std::vector<int>& GetCovariates() const { return fvCovariates; }
  const std::vector<double>& GetCovariateValues() const { return fvCovariateValues; }

 private:
  std::vector<int> fvFactors;
  int fCompareFactor = -1;
  Contrast fContrast = kNone;
  int fReferenceLevel = -1;
  Adjustment fAdjustment = kNoAdjustment;
  std::vector<double> fvMetricValues;
  std::vector<int> fvCovariates;
  std::vector<double> fvCovariateValues;
};

}  // namespace MCEngine_850
