#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/glmm/GLMMConst.h"
#include "numeric/math/MCModelEffect.h"

namespace MCGLMM_850 {

// A block of random effects, or the residual (repeated) block: its effects,
// the subject variables, the covariance structure, the block's number (-1
// for the residual block) and whether EBLUPs are computed.
class GLMMRandomSpec {
 public:
  GLMMRandomSpec();

  // An empty block with the default structure of its kind (DIAG for the
  // residual block, VC for a random block), index -1, no EBLUPs.
  void Reset(bool repeated = false);

  void AddEffect(const MCMath_850::MCModelEffect& effect) { fvEffects.push_back(effect); }
  const std::vector<MCMath_850::MCModelEffect>& GetEffects() const { return fvEffects; }
  int GetNEffects() const { return static_cast<int>(fvEffects.size()); }

  void AddSubjectVar(int index) { fvSubjectVars.push_back(index); }
  const std::vector<int>& GetSubjectVars() const { return fvSubjectVars; }

  GLMMConst_850::CovarType GetCovarianceType() const { return fCovarianceType; }
  void SetCovarianceType(GLMMConst_850::CovarType type) { fCovarianceType = type; }
  int GetIndex() const { return fIndex; }
  void SetIndex(int index) { fIndex = index; }
  bool GetComputeEBLUPs() const { return fbComputeEBLUPs; }
  void SetComputeEBLUPs(bool compute) { fbComputeEBLUPs = compute; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<MCMath_850::MCModelEffect> fvEffects;
  std::vector<int> fvSubjectVars;
  GLMMConst_850::CovarType fCovarianceType;
  int fIndex;
  bool fbComputeEBLUPs;
};

}  // namespace MCGLMM_850
