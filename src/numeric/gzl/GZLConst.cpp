#include "numeric/gzl/GZLConst.h"

namespace GZLConst_850 {

const char* GetName(EffectAnalysisStat value) {
  switch (value) {
    case EFFECT_STAT_WALD: return "Wald";
    case EFFECT_STAT_LIKELIHOOD_RATIO: return "likelihood ratio";
  }
  return "unknown";
}

const char* GetName(CIType value) {
  switch (value) {
    case CI_WALD: return "Wald";
    case CI_PROFILE_LIKELIHOOD: return "profile likelihood";
  }
  return "unknown";
}

}  // namespace GZLConst_850
