#include "numeric/math/MCTestStats.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

MCTestStats::MCTestStats()
    : fWald(MCMV::Missing()), fDF(MCMV::Missing()), fDF2(MCMV::Missing()), fSig(MCMV::Missing()) {}

MCTestStats::MCTestStats(double wald, double df, double df2, double sig)
    : fWald(wald), fDF(df), fDF2(df2), fSig(sig) {}

void MCTestStats::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCTestStats::Display(std::ostream& os) const {
  MCDisplay_850::DisplayD(os, "Statistic:", fWald);
  MCDisplay_850::DisplayD(os, "Numerator df:", fDF);
  MCDisplay_850::DisplayD(os, "Denominator df:", fDF2);
  MCDisplay_850::DisplayD(os, "Significance:", fSig);
}

}  // namespace MCMath_850
