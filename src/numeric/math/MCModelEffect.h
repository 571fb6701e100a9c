#pragma once

#include <iosfwd>
#include <vector>

namespace MCMath_850 {

// One term of a model: factors on nesting levels, and covariates with their
// multiplicities, drawn from a set of predictors (the variable indices of
// Setup or SetVarIndices). The effect keeps its terms as positions within
// that set, so replacing the set (say, by the same predictors in another
// index space) carries the effect over; the getters return the variables of
// the current set. With no set, indices stand for themselves.
//
// Nesting levels start at 0: the first factor is on level 0, and each later
// factor added with newLevel opens the next level. A factor nested in others
// thus has a higher level than they.
class MCModelEffect {
 public:
  MCModelEffect();

  // An effect with no terms and no set of predictors.
  void Reset();
  // An effect with no terms over that set of predictors: the first nFactors
  // entries are the factors, the next nCovariates the covariates. A null
  // pointer means no set.
  void Setup(int nFactors, int nCovariates, const std::vector<int>* varIndices);

  // Adds a factor; returns its place among the effect's factors, or -1 (and
  // changes nothing) for a variable that is not a factor of the set or that
  // the effect has already.
  int AddNewFactor(int index, bool newLevel);
  // Adds one occurrence of a covariate; returns its multiplicity after the
  // call, or -1 (and changes nothing) for a variable that is not a covariate
  // of the set.
  int AddCovariate(int index);

  // Replaces the set of predictors; the terms keep their positions. A null
  // pointer means no set.
  void SetVarIndices(const std::vector<int>* varIndices);
  const std::vector<int>& GetVarIndices() const { return fvVarIndices; }
  int GetNFactorsInSet() const { return fNFactorsInSet; }
  int GetNCovariatesInSet() const { return fNCovariatesInSet; }

  std::vector<int> GetFactors() const;
  const std::vector<int>& GetFactorLevels() const { return fvFactorLevels; }
  // The distinct covariates in the order of their first occurrence.
  std::vector<int> GetCovariates() const;
  // Parallel to GetCovariates.
  const std::vector<int>& GetCovMultiplicities() const { return fvCovariateMult; }
  // Multiplicity of that covariate variable; 0 when the effect lacks it.
  int GetCovariateMult(int covariate) const;
  int GetNFactors() const { return static_cast<int>(fvFactorPositions.size()); }
  int GetNCovariates() const { return static_cast<int>(fvCovariatePositions.size()); }
  // The positions of the terms within the set of predictors.
  const std::vector<int>& GetFactorPositions() const { return fvFactorPositions; }
  const std::vector<int>& GetCovariatePositions() const { return fvCovariatePositions; }

  // The covariates are written before the factors in the effect's name, as
  // in covariate(factor).
  bool GetFactorsInParens() const { return fbFactorsInParens; }
  void SetFactorsInParens(bool inParens) { fbFactorsInParens = inParens; }

  // The effect's own ordered list of variables, as its caller lays it out.
  const std::vector<int>& GetVarsIndicesForTheEffectInSetting() const { return fvEffectVars; }
  void SetVarsIndicesForTheEffectInSetting(const std::vector<int>& vars) { fvEffectVars = vars; }

  bool IsIntercept() const { return fvFactorPositions.empty() && fvCovariatePositions.empty(); }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  int FindInSet(int index, int first, int count) const;
  int VarAt(int position) const;

  int fNFactorsInSet;
  int fNCovariatesInSet;
  std::vector<int> fvVarIndices;
  std::vector<int> fvFactorPositions;
  std::vector<int> fvFactorLevels;
  std::vector<int> fvCovariatePositions;
  std::vector<int> fvCovariateMult;
  std::vector<int> fvEffectVars;
  bool fbFactorsInParens;
};

}  // namespace MCMath_850
