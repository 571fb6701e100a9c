#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/glmm/GLMMConst.h"

namespace MCGLMM_850 {

// One row of the L matrix of a custom test, or the fixed or random part of
// one. A row by effects holds, for some of its effects, the coefficients of
// that effect's parameters (a pair of effect number and values), plus the
// intercept's coefficient when its type has one. A row of all values holds
// every coefficient in one list.
class LMatrixRow {
 public:
  LMatrixRow();

  // An empty row of that type over count effects (for a row of all values:
  // the number of effects the values cover).
  void Setup(GLMMConst_850::LMatrixRowType type, int count);

  GLMMConst_850::LMatrixRowType GetType() const { return fType; }
  int GetCount() const { return fCount; }

  // The coefficients of one effect. False (and no change) for a row of all
  // values, an effect outside 0 to count - 1, or an effect already given.
  bool AddNewPair(int effect, const std::vector<double>& values);
  int GetNPairs() const { return static_cast<int>(fvPairEffects.size()); }
  const std::vector<int>& GetPairEffects() const { return fvPairEffects; }
  const std::vector<std::vector<double>>& GetPairValues() const { return fvvPairValues; }
  // The values given for an effect; empty when none were.
  std::vector<double> GetEffectValues(int effect) const;

  // Only for a row of all values; false otherwise.
  bool SetAllValues(const std::vector<double>& values);
  const std::vector<double>& GetAllValues() const { return fvAllValues; }

  // Only for a row with an intercept value; false otherwise.
  bool SetFirstValue(double value);
  double GetFirstValue() const { return fFirstValue; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  GLMMConst_850::LMatrixRowType fType;
  int fCount;
  double fFirstValue;
  std::vector<int> fvPairEffects;
  std::vector<std::vector<double>> fvvPairValues;
  std::vector<double> fvAllValues;
};

}  // namespace MCGLMM_850
