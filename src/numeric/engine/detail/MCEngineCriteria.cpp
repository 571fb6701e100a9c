#include "numeric/engine/detail/MCEngineCriteria.h"

#include <cmath>

#include "numeric/engine/MCEngineResult.h"

namespace MCEngine_850 {

void SetInformationCriteria(MCEngineResult& result, double minus2LogLik, double d, double nStar, double nIC) {
  result.SetNSubjects(nIC);
  result.SetAIC(minus2LogLik + 2.0 * d);
  result.SetAICC(minus2LogLik + 2.0 * d * nStar / (nStar - d - 1.0));
  if (nIC > 1.0) result.SetHQIC(minus2LogLik + 2.0 * d * std::log(std::log(nIC)));
  if (nIC > 0.0) {
    result.SetBIC(minus2LogLik + d * std::log(nIC));
    result.SetCAIC(minus2LogLik + d * (std::log(nIC) + 1.0));
  }
}

}  // namespace MCEngine_850
