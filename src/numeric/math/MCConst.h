#pragma once

// Enumerations shared by the regression settings and the value classes.
namespace MCMath_850 {
namespace MCConst {

// Order of the categories of a factor.
enum MCCategOrder { CATEG_ASCENDING = 0, CATEG_DESCENDING = 1, CATEG_DATA_ORDER = 2 };

// How a convergence criterion compares successive iterations.
enum MCConvType { CONV_RELATIVE = 1, CONV_ABSOLUTE = 2 };

// Where an offset comes from.
enum MCOffsetType { OFFSET_NONE = 0, OFFSET_VARIABLE = 1, OFFSET_VALUE = 2 };

// How the Hessian is computed: Newton-Raphson throughout, or Fisher scoring
// for the first iterations and Newton-Raphson after.
enum MCHessianCompMethod { HESSIAN_NEWTON_RAPHSON = 2, HESSIAN_FISHER_THEN_NEWTON = 3 };

// Sums of squares behind the tests of effects.
enum MCEffectAnalysisType { EFFECT_TYPE_I = 0, EFFECT_TYPE_III = 1 };

// Estimator of the covariance matrix of the parameter estimates.
enum MCCovbType { COVB_MODEL_BASED = 0, COVB_ROBUST = 1 };

// Adjustment of significance for multiple comparisons.
enum MCPAdjustMethod {
  PADJUST_LSD = 0,
  PADJUST_SEQ_BONFERRONI = 1,
  PADJUST_BONFERRONI = 2,
  PADJUST_SEQ_SIDAK = 3,
  PADJUST_SIDAK = 4
};

// Contrast between the levels of the compare factor of a marginal means
// request. A polynomial contrast uses the request's metric values.
enum MCContrastType {
  CONTRAST_SIMPLE = 0,
  CONTRAST_DEVIATION = 1,
  CONTRAST_DIFFERENCE = 2,
  CONTRAST_HELMERT = 3,
  CONTRAST_REPEATED = 4,
  CONTRAST_POLYNOMIAL = 5,
  CONTRAST_PAIRWISE = 6,
  CONTRAST_NONE = 7
};

// How the reference category of a contrast is chosen: always the last
// category, or the category the request names (the last when it names none).
enum MCReferenceType { REFERENCE_LAST = 0, REFERENCE_CATEGORY = 1 };

// Scale of estimated marginal means: the target's own scale, or the scale of
// the linear predictor.
enum MCEmmScaleType { EMM_SCALE_ORIGINAL = 0, EMM_SCALE_TRANSFORMED = 1 };

// Role of a variable in the engine's variable list.
enum MCVarRole {
  ROLE_NONE = 0,
  ROLE_TARGET = 1,
  ROLE_REGRESSION_WEIGHT = 2,
  ROLE_FREQUENCY_WEIGHT = 3,
  ROLE_PREDICTOR = 4
};

// Measurement level of a variable in the engine's variable list. Nominal and
// ordinal variables are categorical.
enum MCMeasureLevel {
  MEASURE_UNKNOWN = 0,
  MEASURE_CONTINUOUS = 1,
  MEASURE_NOMINAL = 2,
  MEASURE_ORDINAL = 3
};

// Names of the enumerators for debug text; "unknown" for a value with no name.
const char* GetName(MCCategOrder value);
const char* GetName(MCConvType value);
const char* GetName(MCOffsetType value);
const char* GetName(MCHessianCompMethod value);
const char* GetName(MCEffectAnalysisType value);
const char* GetName(MCCovbType value);
const char* GetName(MCPAdjustMethod value);
const char* GetName(MCContrastType value);
const char* GetName(MCReferenceType value);
const char* GetName(MCEmmScaleType value);
const char* GetName(MCVarRole value);
const char* GetName(MCMeasureLevel value);

}  // namespace MCConst
}  // namespace MCMath_850
