#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/math/MCConst.h"

namespace MCMath_850 {

// A request for estimated marginal means: the factors of the table, the
// values at which covariates are held (the system-missing value: at their
// mean), and optionally a contrast between the levels of a compare factor.
class MCEmmeansSpec {
 public:
  MCEmmeansSpec();

  // The default request: no factors, covariates or compare factors, no
  // contrast, reference by category with category -1 (the last), LSD, the
  // original scale, no metric values.
  void Reset();

  // Each Add returns the new entry's place, or -1 (and changes nothing) for
  // a negative index or one already present.
  int AddFactor(int index, int nestLevel);
  int AddCovariate(int index, double value);
  int AddCompareFactor(int index);

  const std::vector<int>& GetFactors() const { return fvFactors; }
  const std::vector<int>& GetFactorsNestLevel() const { return fvFactorsNestLevel; }
  const std::vector<int>& GetCovariates() const { return fvCovariates; }
  const std::vector<double>& GetCovariateValues() const { return fvCovariateValues; }
  const std::vector<int>& GetCompareFactors() const { return fvCompareFactors; }

  MCConst::MCContrastType GetContrastType() const { return fContrastType; }
  void SetContrastType(MCConst::MCContrastType type) { fContrastType = type; }
  MCConst::MCReferenceType GetReferenceType() const { return fReferenceType; }
  void SetReferenceType(MCConst::MCReferenceType type) { fReferenceType = type; }
  // Code of the reference category of the compare factor; -1 is the last.
  int GetRefCateg() const { return fRefCateg; }
  void SetRefCateg(int category) { fRefCateg = category; }
  MCConst::MCPAdjustMethod GetPAdjust() const { return fPAdjust; }
  void SetPAdjust(MCConst::MCPAdjustMethod method) { fPAdjust = method; }
  MCConst::MCEmmScaleType GetEmmScaleType() const { return fEmmScaleType; }
  void SetEmmScaleType(MCConst::MCEmmScaleType type) { fEmmScaleType = type; }

  // Metric of the levels for a polynomial contrast. False, with the list
  // unchanged, when a value is missing or not finite, or two are equal.
  bool SetMetricValueList(const std::vector<double>& values);
  const std::vector<double>& GetMetricValueList() const { return fvMetricValues; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<int> fvFactors;
  std::vector<int> fvFactorsNestLevel;
  std::vector<int> fvCovariates;
  std::vector<double> fvCovariateValues;
  std::vector<int> fvCompareFactors;
  MCConst::MCContrastType fContrastType;
  MCConst::MCReferenceType fReferenceType;
  int fRefCateg;
  MCConst::MCPAdjustMethod fPAdjust;
  MCConst::MCEmmScaleType fEmmScaleType;
  std::vector<double> fvMetricValues;
};

}  // namespace MCMath_850
