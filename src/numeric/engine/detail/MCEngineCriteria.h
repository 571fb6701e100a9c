#pragma once

namespace MCEngine_850 {

class MCEngineResult;

// Sets every information criterion of the result, and its n, from -2 log
// likelihood, the number d of parameters, the n of the small-sample
// correction (nStar) and the n of the others (nIC).
void SetInformationCriteria(MCEngineResult& result, double minus2LogLik, double d, double nStar, double nIC);

}  // namespace MCEngine_850
