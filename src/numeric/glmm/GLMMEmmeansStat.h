#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMEmmeansContrast.h"
#include "numeric/glmm/GLMMEmmeansMean.h"
#include "numeric/glmm/GLMMEmmeansTest.h"
#include "numeric/math/MCConst.h"

namespace MCGLMM_850 {

// One table of estimated marginal means: either the answer to a request of
// the settings (its request index set, effect index -1) or one of the
// component's own tables of a fixed effect made of factors (effect index
// set, request index -1). The means come one per combination of the
// categories of the factors, the first factor varying slowest; with a
// compare factor of at least two categories there follow the contrasts and
// the F tests, grouped by combination of the other factors in the same
// order. Covariates are listed with the value at which the means hold them.
// The warnings are this table's own (for example that the compare factor
// has at most one category).
class GLMMEmmeansStat {
 public:
  GLMMEmmeansStat();

  // Position of the request in the settings' list; -1 for a table of the
  // component's own choice.
  int GetRequestIndex() const { return fRequestIndex; }
  void SetRequestIndex(int index) { fRequestIndex = index; }
  // Position of the effect in the settings' list of model effects, for a
  // table of the component's own choice; -1 for a request.
  int GetEffectIndex() const { return fEffectIndex; }
  void SetEffectIndex(int index) { fEffectIndex = index; }
  // False when the request could not be answered: a variable that is not a
  // factor of the model, a compare factor that is not one of the table's,
  // or more cells than the component computes. Such a table has no means.
  bool GetValid() const { return fbValid; }
  void SetValid(bool valid) { fbValid = valid; }

  // Variable positions of the factors, in the table's order.
  const std::vector<int>& GetFactors() const { return fvFactors; }
  void SetFactors(const std::vector<int>& factors) { fvFactors = factors; }
  // The compare factor's variable position; -1 for none.
  int GetCompareFactor() const { return fCompareFactor; }
  void SetCompareFactor(int factor) { fCompareFactor = factor; }
  MCMath_850::MCConst::MCContrastType GetContrastType() const { return fContrastType; }
  void SetContrastType(MCMath_850::MCConst::MCContrastType type) { fContrastType = type; }
  MCMath_850::MCConst::MCPAdjustMethod GetPAdjust() const { return fPAdjust; }
  void SetPAdjust(MCMath_850::MCConst::MCPAdjustMethod method) { fPAdjust = method; }
  // The category that simple contrasts compare with; -1 for other contrasts.
  int GetRefCateg() const { return fRefCateg; }
  void SetRefCateg(int category) { fRefCateg = category; }
  // Of the means and the contrasts' bounds before adjustment, as a fraction.
  double GetConfidenceLevel() const { return fConfidenceLevel; }
  void SetConfidenceLevel(double level) { fConfidenceLevel = level; }

  const std::vector<int>& GetCovariates() const { return fvCovariates; }
  const std::vector<double>& GetCovariateValues() const { return fvCovariateValues; }
  void AddCovariate(int covariate, double value) {
    fvCovariates.push_back(covariate);
    fvCovariateValues.push_back(value);
  }

  const std::vector<GLMMEmmeansMean>& GetMeans() const { return fvMeans; }
  void AddMean(const GLMMEmmeansMean& mean) { fvMeans.push_back(mean); }
  const std::vector<GLMMEmmeansContrast>& GetContrasts() const { return fvContrasts; }
  void AddContrast(const GLMMEmmeansContrast& contrast) { fvContrasts.push_back(contrast); }
  const std::vector<GLMMEmmeansTest>& GetTests() const { return fvTests; }
  void AddTest(const GLMMEmmeansTest& test) { fvTests.push_back(test); }

  const std::vector<MCCommon_850::MCStatus>& GetWarnings() const { return fvWarnings; }
  void AddWarning(const MCCommon_850::MCStatus& status) { fvWarnings.push_back(status); }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  int fRequestIndex;
  int fEffectIndex;
  bool fbValid;
  std::vector<int> fvFactors;
  int fCompareFactor;
  MCMath_850::MCConst::MCContrastType fContrastType;
  MCMath_850::MCConst::MCPAdjustMethod fPAdjust;
  int fRefCateg;
  double fConfidenceLevel;
  std::vector<int> fvCovariates;
  std::vector<double> fvCovariateValues;
  std::vector<GLMMEmmeansMean> fvMeans;
  std::vector<GLMMEmmeansContrast> fvContrasts;
  std::vector<GLMMEmmeansTest> fvTests;
  std::vector<MCCommon_850::MCStatus> fvWarnings;
};

}  // namespace MCGLMM_850
