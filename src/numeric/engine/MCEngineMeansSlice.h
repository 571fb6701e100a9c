#pragma once

#include <vector>

#include "numeric/engine/MCEngineMissing.h"

namespace MCEngine_850 {

// The joint F test that the compare factor's means are equal within one
// combination of the other factors of the table (their levels, in the
// table's order without the compare factor). Invalid, with missing
// statistics, when fewer than two of the means there are estimable.
class MCEngineMeansSlice {
 public:
  MCEngineMeansSlice() = default;

  const std::vector<int>& GetByLevels() const { return fvByLevels; }
  void SetByLevels(const std::vector<int>& levels) { fvByLevels = levels; }
  bool IsValid() const { return fbValid; }
  void SetValid(bool valid) { fbValid = valid; }
  double GetF() const { return fF; }
  void SetF(double v) { fF = v; }
  double GetNumDF() const { return fNumDF; }
  void SetNumDF(double v) { fNumDF = v; }
  double GetDenDF() const { return fDenDF; }
  void SetDenDF(double v) { fDenDF = v; }
  double GetSig() const { return fSig; }
  void SetSig(double v) { fSig = v; }

 private:
  std::vector<int> fvByLevels;
  bool fbValid = false;
  double fF = MCEngineMissing::Value();
  double fNumDF = MCEngineMissing::Value();
  double fDenDF = MCEngineMissing::Value();
  double fSig = MCEngineMissing::Value();
};

}  // namespace MCEngine_850
