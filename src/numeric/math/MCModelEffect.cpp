#include "numeric/math/MCModelEffect.h"

#include <algorithm>
#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

MCModelEffect::MCModelEffect() : fNFactorsInSet(0), fNCovariatesInSet(0), fbFactorsInParens(false) {}

void MCModelEffect::Reset() { *this = MCModelEffect(); }

void MCModelEffect::Setup(int nFactors, int nCovariates, const std::vector<int>* varIndices) {
  Reset();
  fNFactorsInSet = std::max(nFactors, 0);
  fNCovariatesInSet = std::max(nCovariates, 0);
  if (varIndices != nullptr) fvVarIndices = *varIndices;
}

void MCModelEffect::SetVarIndices(const std::vector<int>* varIndices) {
  if (varIndices != nullptr) {
    fvVarIndices = *varIndices;
  } else {
    fvVarIndices.clear();
  }
}

// The position of the variable among count entries of the set from first
// on; with the bounds outside the set, the whole set is searched. Without a
// set the index is its own position.
int MCModelEffect::FindInSet(int index, int first, int count) const {
  if (index < 0) return -1;
  if (fvVarIndices.empty()) return index;
  const int size = static_cast<int>(fvVarIndices.size());
  if (first < 0 || count <= 0 || first + count > size) {
    first = 0;
    count = size;
  }
  for (int pos = first; pos < first + count; ++pos) {
    if (fvVarIndices[pos] == index) return pos;
  }
  return -1;
}

int MCModelEffect::VarAt(int position) const {
  if (fvVarIndices.empty()) return position;
  if (position < 0 || position >= static_cast<int>(fvVarIndices.size())) return -1;
  return fvVarIndices[position];
}

int MCModelEffect::AddNewFactor(int index, bool newLevel) {
  const int pos = FindInSet(index, 0, fNFactorsInSet);
  if (pos < 0) return -1;
  if (std::find(fvFactorPositions.begin(), fvFactorPositions.end(), pos) != fvFactorPositions.end()) {
    return -1;
  }
  int level = 0;
  if (!fvFactorLevels.empty()) level = fvFactorLevels.back() + (newLevel ? 1 : 0);
  fvFactorPositions.push_back(pos);
  fvFactorLevels.push_back(level);
  return static_cast<int>(fvFactorPositions.size()) - 1;
}

int MCModelEffect::AddCovariate(int index) {
  const int pos = FindInSet(index, fNFactorsInSet, fNCovariatesInSet);
  if (pos < 0) return -1;
  for (std::size_t i = 0; i < fvCovariatePositions.size(); ++i) {
    if (fvCovariatePositions[i] == pos) return ++fvCovariateMult[i];
  }
  fvCovariatePositions.push_back(pos);
  fvCovariateMult.push_back(1);
  return 1;
}

std::vector<int> MCModelEffect::GetFactors() const {
  std::vector<int> factors;
  factors.reserve(fvFactorPositions.size());
  for (int pos : fvFactorPositions) factors.push_back(VarAt(pos));
  return factors;
}

std::vector<int> MCModelEffect::GetCovariates() const {
  std::vector<int> covariates;
  covariates.reserve(fvCovariatePositions.size());
  for (int pos : fvCovariatePositions) covariates.push_back(VarAt(pos));
  return covariates;
}

int MCModelEffect::GetCovariateMult(int covariate) const {
  for (std::size_t i = 0; i < fvCovariatePositions.size(); ++i) {
    if (VarAt(fvCovariatePositions[i]) == covariate) return fvCovariateMult[i];
  }
  return 0;
}

void MCModelEffect::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCModelEffect::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin MCModelEffect display.");
  if (IsIntercept()) DisplayText(os, "Intercept.");
  DisplayIV(os, "Factors:", GetFactors());
  DisplayIV(os, "Factor nesting levels:", fvFactorLevels);
  DisplayIV(os, "Covariates:", GetCovariates());
  DisplayIV(os, "Covariate multiplicities:", fvCovariateMult);
  DisplayB(os, "Factors in parentheses:", fbFactorsInParens);
  DisplayIV(os, "Predictor set:", fvVarIndices);
  DisplayIV(os, "Variables of the effect:", fvEffectVars);
  DisplayText(os, "End MCModelEffect display.");
}

}  // namespace MCMath_850
