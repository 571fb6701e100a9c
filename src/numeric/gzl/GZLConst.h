#pragma once

// Enumerations of the generalized linear settings.
namespace GZLConst_850 {

// Statistic of the chi-square tests of effects.
enum EffectAnalysisStat { EFFECT_STAT_WALD = 0, EFFECT_STAT_LIKELIHOOD_RATIO = 1 };

// Kind of confidence interval of the parameters.
enum CIType { CI_WALD = 0, CI_PROFILE_LIKELIHOOD = 1 };

const char* GetName(EffectAnalysisStat value);
const char* GetName(CIType value);

}  // namespace GZLConst_850
