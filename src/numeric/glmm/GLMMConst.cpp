#include "numeric/glmm/GLMMConst.h"

#include <cstdint>

namespace GLMMConst_850 {

namespace {

struct KeywordCovar {
  CovarType fRepeated;
  CovarType fRandom;
};

// Indexed by keyword code.
const KeywordCovar kKeywordCovars[] = {
    {DIAG, VC},      // 0: not given
    {AD1, AD1},      // 1
    {AR1, AR1},      // 2
    {ARH1, ARH1},    // 3
    {ARMA11, ARMA11},  // 4
    {CS, CS},        // 5
    {CSH, CSH},      // 6
    {CSR, CSR},      // 7
    {DIAG, DIAG},    // 8
    {FA1, FA1},      // 9
    {FAH1, FAH1},    // 10
    {HF, HF},        // 11
    {ID, ID},        // 12
    {TP, TP},        // 13
    {TPH, TPH},      // 14
    {UN, UN},        // 15
    {UNR, UNR},      // 16
    {VC, VC},        // 17
    {DIAG, VC},      // 18: unused
    {VC, VC},        // 19: unused
    {SP_POW, VC},    // 20
    {SP_EXP, VC},    // 21
    {SP_GAU, VC},    // 22
    {SP_LIN, VC},    // 23
    {SP_LINL, VC},   // 24
    {SP_SPH, VC},    // 25
};

}  // namespace

CovarType DefaultCovarType(bool repeated) { return repeated ? DIAG : VC; }

CovarType CovarTypeFromKeyword(long code, bool repeated) {
  const std::uint32_t key = static_cast<std::uint32_t>(code);
  if (key >= sizeof(kKeywordCovars) / sizeof(kKeywordCovars[0])) return DefaultCovarType(repeated);
  return repeated ? kKeywordCovars[key].fRepeated : kKeywordCovars[key].fRandom;
}

bool IsSpatial(CovarType type) { return type >= SP_POW && type <= SP_SPH; }

const char* GetName(CovarType value) {
  switch (value) {
    case ARH1: return "ARH1";
    case AD1: return "AD1";
    case CS: return "CS";
    case DIAG: return "DIAG";
    case ID: return "ID";
    case TP: return "TP";
    case COVAR_RESERVED: return "reserved";
    case UN: return "UN";
    case VC: return "VC";
    case AR1: return "AR1";
    case ARMA11: return "ARMA11";
    case CSH: return "CSH";
    case CSR: return "CSR";
    case FA1: return "FA1";
    case HF: return "HF";
    case TPH: return "TPH";
    case UNR: return "UNR";
    case FAH1: return "FAH1";
    case SP_POW: return "SP_POW";
    case SP_EXP: return "SP_EXP";
    case SP_GAU: return "SP_GAU";
    case SP_LIN: return "SP_LIN";
    case SP_LINL: return "SP_LINL";
    case SP_SPH: return "SP_SPH";
  }
  return "unknown";
}

const char* GetName(ThetaEstType value) {
  switch (value) {
    case ML: return "ML";
    case REML: return "REML";
  }
  return "unknown";
}

const char* GetName(DegreesFreedomType value) {
  switch (value) {
    case DF_RESIDUAL: return "residual";
    case DF_SATTERTHWAITE: return "Satterthwaite";
  }
  return "unknown";
}

const char* GetName(ScoreType value) {
  switch (value) {
    case SCORE_INVALID: return "invalid";
    case SCORE_PREDICTED: return "predicted value";
    case SCORE_PREDICTED_SE: return "standard error of the predicted value";
    case SCORE_RESIDUAL: return "residual";
    case SCORE_PREDICTED_DF: return "degrees of freedom of the predicted value";
    case SCORE_FIXED_PREDICTED: return "fixed predicted value";
    case SCORE_FIXED_PREDICTED_SE: return "standard error of the fixed predicted value";
    case SCORE_FIXED_PREDICTED_DF: return "degrees of freedom of the fixed predicted value";
    case SCORE_LINEAR_PREDICTOR: return "linear predictor";
    case SCORE_PEARSON_RESIDUAL: return "Pearson residual";
    case SCORE_PREDICTED_CATEGORY: return "predicted category";
  }
  return "unknown";
}

const char* GetName(LMatrixRowType value) {
  switch (value) {
    case LROW_FIXED_WITH_INTERCEPT: return "fixed with intercept";
    case LROW_FIXED: return "fixed";
    case LROW_ALL_VALUES: return "all values";
    case LROW_RANDOM: return "random";
  }
  return "unknown";
}

LinkType DefaultLink(TargetDistType dist) {
  switch (dist) {
    case DIST_NORMAL: return LINK_IDENTITY;
    case DIST_BINOMIAL:
    case DIST_MULTINOMIAL: return LINK_LOGIT;
    case DIST_POISSON:
    case DIST_NEGBIN:
    case DIST_GAMMA: return LINK_LOG;
    case DIST_IGAUSS: return LINK_POWER;
  }
  return LINK_IDENTITY;
}

double DefaultLinkPower(TargetDistType dist) { return dist == DIST_IGAUSS ? -2.0 : 1.0; }

bool IsLinkAllowed(TargetDistType dist, LinkType link, bool orderedCategories) {
  if (link == LINK_DEFAULT) return true;
  const bool probabilityLink = link == LINK_LOGIT || link == LINK_PROBIT || link == LINK_CLOGLOG ||
                               link == LINK_NLOGLOG || link == LINK_CAUCHIT;
  switch (dist) {
    case DIST_BINOMIAL: return probabilityLink || link == LINK_LOG || link == LINK_LOGC;
    case DIST_MULTINOMIAL: return orderedCategories ? probabilityLink : link == LINK_LOGIT;
    case DIST_NORMAL:
    case DIST_POISSON:
    case DIST_NEGBIN:
    case DIST_GAMMA:
    case DIST_IGAUSS: return link == LINK_IDENTITY || link == LINK_LOG || link == LINK_POWER;
  }
  return false;
}

const char* GetName(TargetDistType value) {
  switch (value) {
    case DIST_NORMAL: return "NORMAL";
    case DIST_BINOMIAL: return "BINOMIAL";
    case DIST_POISSON: return "POISSON";
    case DIST_NEGBIN: return "NEGBIN";
    case DIST_GAMMA: return "GAMMA";
    case DIST_IGAUSS: return "IGAUSS";
    case DIST_MULTINOMIAL: return "MULTINOMIAL";
  }
  return "unknown";
}

const char* GetName(LinkType value) {
  switch (value) {
    case LINK_DEFAULT: return "default";
    case LINK_IDENTITY: return "IDENTITY";
    case LINK_LOG: return "LOG";
    case LINK_LOGIT: return "LOGIT";
    case LINK_PROBIT: return "PROBIT";
    case LINK_CLOGLOG: return "CLOGLOG";
    case LINK_NLOGLOG: return "NLOGLOG";
    case LINK_LOGC: return "LOGC";
    case LINK_POWER: return "POWER";
    case LINK_CAUCHIT: return "CAUCHIT";
  }
  return "unknown";
}

const char* GetName(GeneralizedFitMethod value) {
  switch (value) {
    case FIT_PSEUDO_LIKELIHOOD: return "pseudo-likelihood";
    case FIT_LAPLACE: return "Laplace";
    case FIT_QUADRATURE: return "adaptive quadrature";
  }
  return "unknown";
}

const char* GetName(TrialsType value) {
  switch (value) {
    case TRIALS_NONE: return "none";
    case TRIALS_VARIABLE: return "variable";
    case TRIALS_VALUE: return "value";
  }
  return "unknown";
}

const char* GetName(ReferenceCategoryType value) {
  switch (value) {
    case REFERENCE_LAST: return "last";
    case REFERENCE_FIRST: return "first";
    case REFERENCE_VALUE: return "value";
  }
  return "unknown";
}

}  // namespace GLMMConst_850
