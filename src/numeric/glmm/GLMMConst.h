#pragma once

// Enumerations of the mixed model component.
namespace GLMMConst_850 {

// Covariance structure of a random or residual block. Value 6 is reserved
// and never produced. The six spatial structures are for the residual block
// only.
enum CovarType {
  ARH1 = 0,
  AD1 = 1,
  CS = 2,
  DIAG = 3,
  ID = 4,
  TP = 5,
  COVAR_RESERVED = 6,
  UN = 7,
  VC = 8,
  AR1 = 9,
  ARMA11 = 10,
  CSH = 11,
  CSR = 12,
  FA1 = 13,
  HF = 14,
  TPH = 15,
  UNR = 16,
  FAH1 = 17,
  SP_POW = 18,
  SP_EXP = 19,
  SP_GAU = 20,
  SP_LIN = 21,
  SP_LINL = 22,
  SP_SPH = 23
};

// Estimation of the covariance parameters.
enum ThetaEstType { ML = 0, REML = 1 };

// Degrees of freedom of tests and intervals.
enum DegreesFreedomType { DF_RESIDUAL = 0, DF_SATTERTHWAITE = 1 };

// Scores the component computes per record: predictions from the fixed
// effects alone and from fixed and random effects, the residual, and the
// standard error and degrees of freedom of each prediction.
enum ScoreType {
  SCORE_INVALID = -1,
  SCORE_PREDICTED = 0,
  SCORE_PREDICTED_SE = 1,
  SCORE_RESIDUAL = 6,
  SCORE_PREDICTED_DF = 9,
  SCORE_FIXED_PREDICTED = 10,
  SCORE_FIXED_PREDICTED_SE = 11,
  SCORE_FIXED_PREDICTED_DF = 19,
  // Of generalized targets (our extension): the linear predictor with the
  // random effects and the offset, the Pearson residual and the most
  // probable category.
  SCORE_LINEAR_PREDICTOR = 20,
  SCORE_PEARSON_RESIDUAL = 21,
  SCORE_PREDICTED_CATEGORY = 22
};

// Form of a row of the L matrix of a custom test.
enum LMatrixRowType {
  LROW_FIXED_WITH_INTERCEPT = 0,  // fixed part by effects, first value the intercept's
  LROW_FIXED = 1,                 // fixed part by effects, no intercept value
  LROW_ALL_VALUES = 2,            // every coefficient in one list
  LROW_RANDOM = 3                 // random part by effects
};

// Distribution of the target of a generalized model (an extension: the
// mixed procedure's own commands fit normal targets only). MULTINOMIAL is
// ordinal (cumulative links) or nominal (one coefficient set per category
// but the reference) by GLMMTargetSpec::GetOrdered.
enum TargetDistType {
  DIST_NORMAL = 0,
  DIST_BINOMIAL = 1,
  DIST_POISSON = 2,
  DIST_NEGBIN = 3,
  DIST_GAMMA = 4,
  DIST_IGAUSS = 5,
  DIST_MULTINOMIAL = 6
};

// Link function of a generalized model. LINK_DEFAULT stands for the
// distribution's canonical or customary link (see DefaultLink).
enum LinkType {
  LINK_DEFAULT = -1,
  LINK_IDENTITY = 0,
  LINK_LOG = 1,
  LINK_LOGIT = 2,
  LINK_PROBIT = 3,
  LINK_CLOGLOG = 4,
  LINK_NLOGLOG = 5,
  LINK_LOGC = 6,
  LINK_POWER = 7,
  LINK_CAUCHIT = 8
};

// How a generalized model is fitted: residual (REML-like) or maximum
// subject-specific pseudo-likelihood by ThetaEstType, the Laplace
// approximation of the marginal likelihood, or adaptive Gauss-Hermite
// quadrature.
enum GeneralizedFitMethod { FIT_PSEUDO_LIKELIHOOD = 0, FIT_LAPLACE = 1, FIT_QUADRATURE = 2 };

// Where the trials of an events/trials binomial target come from.
enum TrialsType { TRIALS_NONE = 0, TRIALS_VARIABLE = 1, TRIALS_VALUE = 2 };

// Which category of a categorical target is the reference.
enum ReferenceCategoryType { REFERENCE_LAST = 0, REFERENCE_FIRST = 1, REFERENCE_VALUE = 2 };

// The link a distribution takes when none is given: identity for normal,
// logit for binomial and multinomial, log for Poisson, negative binomial
// and gamma, power(-2) for inverse Gaussian (see DefaultLinkPower).
LinkType DefaultLink(TargetDistType dist);
double DefaultLinkPower(TargetDistType dist);
// Whether a link may go with a distribution: one that maps the
// distribution's range of means onto the whole line, or a power or log link
// for the continuous and count distributions. Categories without an order
// take only the logit link.
bool IsLinkAllowed(TargetDistType dist, LinkType link, bool orderedCategories);

// The covariance structure of a keyword code of the command, read as an
// unsigned 32-bit number: 1 AD1, 2 AR1, 3 ARH1, 4 ARMA11, 5 CS, 6 CSH, 7 CSR,
// 8 DIAG, 9 FA1, 10 FAH1, 11 HF, 12 ID, 13 TP, 14 TPH, 15 UN, 16 UNR, 17 VC,
// and 20 to 25 the spatial structures in enumeration order. Codes valid only
// in the other kind of block, and any other code, give the block's default:
// DIAG for the residual block (code 19 excepted, which gives VC), VC for a
// random block.
CovarType CovarTypeFromKeyword(long code, bool repeated);
// The default structure of a block.
CovarType DefaultCovarType(bool repeated);
bool IsSpatial(CovarType type);

const char* GetName(CovarType value);
const char* GetName(ThetaEstType value);
const char* GetName(DegreesFreedomType value);
const char* GetName(ScoreType value);
const char* GetName(LMatrixRowType value);
const char* GetName(TargetDistType value);
const char* GetName(LinkType value);
const char* GetName(GeneralizedFitMethod value);
const char* GetName(TrialsType value);
const char* GetName(ReferenceCategoryType value);

}  // namespace GLMMConst_850
