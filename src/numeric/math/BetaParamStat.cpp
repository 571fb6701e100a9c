#include "numeric/math/BetaParamStat.h"

#include <cstddef>
#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

BetaParamStat::BetaParamStat()
    : fIndex(0),
      fEstimate(MCMV::Missing()),
      fbRedundant(false),
      fStdError(MCMV::Missing()),
      fLowerBound(MCMV::Missing()),
      fUpperBound(MCMV::Missing()),
      fWald(MCMV::Missing()),
      fDF(MCMV::Missing()),
      fSig(MCMV::Missing()),
      fExpEstimate(MCMV::Missing()),
      fExpLowerBound(MCMV::Missing()),
      fTStat(MCMV::Missing()),
      fExpUpperBound(MCMV::Missing()),
      fReserved{0.0, 0.0, 0.0, 0.0, 0.0, 0.0} {
  static_assert(sizeof(BetaParamStat) == 152, "the record is 152 bytes");
  static_assert(offsetof(BetaParamStat, fEstimate) == 8, "estimate at byte 8");
  static_assert(offsetof(BetaParamStat, fbRedundant) == 16, "redundancy at byte 16");
  static_assert(offsetof(BetaParamStat, fStdError) == 24, "standard error at byte 24");
  static_assert(offsetof(BetaParamStat, fLowerBound) == 32, "lower bound at byte 32");
  static_assert(offsetof(BetaParamStat, fUpperBound) == 40, "upper bound at byte 40");
  static_assert(offsetof(BetaParamStat, fDF) == 56, "degrees of freedom at byte 56");
  static_assert(offsetof(BetaParamStat, fSig) == 64, "significance at byte 64");
  static_assert(offsetof(BetaParamStat, fTStat) == 88, "t statistic at byte 88");
}

void BetaParamStat::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void BetaParamStat::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayI(os, "Parameter:", static_cast<long>(fIndex));
  DisplayD(os, "Estimate:", fEstimate);
  DisplayB(os, "Redundant:", fbRedundant);
  DisplayD(os, "Standard error:", fStdError);
  DisplayD(os, "Lower bound:", fLowerBound);
  DisplayD(os, "Upper bound:", fUpperBound);
  DisplayD(os, "Wald chi-square:", fWald);
  DisplayD(os, "Degrees of freedom:", fDF);
  DisplayD(os, "Significance:", fSig);
  DisplayD(os, "t statistic:", fTStat);
  DisplayD(os, "Exponentiated estimate:", fExpEstimate);
  DisplayD(os, "Exponentiated lower bound:", fExpLowerBound);
  DisplayD(os, "Exponentiated upper bound:", fExpUpperBound);
}

}  // namespace MCMath_850
