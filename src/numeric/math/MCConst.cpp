#include "numeric/math/MCConst.h"

namespace MCMath_850 {
namespace MCConst {

const char* GetName(MCCategOrder value) {
  switch (value) {
    case CATEG_ASCENDING: return "ascending";
    case CATEG_DESCENDING: return "descending";
    case CATEG_DATA_ORDER: return "data order";
  }
  return "unknown";
}

const char* GetName(MCConvType value) {
  switch (value) {
    case CONV_RELATIVE: return "relative";
    case CONV_ABSOLUTE: return "absolute";
  }
  return "unknown";
}

const char* GetName(MCOffsetType value) {
  switch (value) {
    case OFFSET_NONE: return "none";
    case OFFSET_VARIABLE: return "variable";
    case OFFSET_VALUE: return "value";
  }
  return "unknown";
}

const char* GetName(MCHessianCompMethod value) {
  switch (value) {
    case HESSIAN_NEWTON_RAPHSON: return "Newton-Raphson";
    case HESSIAN_FISHER_THEN_NEWTON: return "Fisher scoring, then Newton-Raphson";
  }
  return "unknown";
}

const char* GetName(MCEffectAnalysisType value) {
  switch (value) {
    case EFFECT_TYPE_I: return "Type I";
    case EFFECT_TYPE_III: return "Type III";
  }
  return "unknown";
}

const char* GetName(MCCovbType value) {
  switch (value) {
    case COVB_MODEL_BASED: return "model-based";
    case COVB_ROBUST: return "robust";
  }
  return "unknown";
}

const char* GetName(MCPAdjustMethod value) {
  switch (value) {
    case PADJUST_LSD: return "LSD";
    case PADJUST_SEQ_BONFERRONI: return "sequential Bonferroni";
    case PADJUST_BONFERRONI: return "Bonferroni";
    case PADJUST_SEQ_SIDAK: return "sequential Sidak";
    case PADJUST_SIDAK: return "Sidak";
  }
  return "unknown";
}

const char* GetName(MCContrastType value) {
  switch (value) {
    case CONTRAST_SIMPLE: return "simple";
    case CONTRAST_DEVIATION: return "deviation";
    case CONTRAST_DIFFERENCE: return "difference";
    case CONTRAST_HELMERT: return "Helmert";
    case CONTRAST_REPEATED: return "repeated";
    case CONTRAST_POLYNOMIAL: return "polynomial";
    case CONTRAST_PAIRWISE: return "pairwise";
    case CONTRAST_NONE: return "none";
  }
  return "unknown";
}

const char* GetName(MCReferenceType value) {
  switch (value) {
    case REFERENCE_LAST: return "last";
    case REFERENCE_CATEGORY: return "category";
  }
  return "unknown";
}

const char* GetName(MCEmmScaleType value) {
  switch (value) {
    case EMM_SCALE_ORIGINAL: return "original";
    case EMM_SCALE_TRANSFORMED: return "transformed";
  }
  return "unknown";
}

const char* GetName(MCVarRole value) {
  switch (value) {
    case ROLE_NONE: return "none";
    case ROLE_TARGET: return "target";
    case ROLE_REGRESSION_WEIGHT: return "regression weight";
    case ROLE_FREQUENCY_WEIGHT: return "frequency weight";
    case ROLE_PREDICTOR: return "predictor";
  }
  return "unknown";
}

const char* GetName(MCMeasureLevel value) {
  switch (value) {
    case MEASURE_UNKNOWN: return "unknown";
    case MEASURE_CONTINUOUS: return "continuous";
    case MEASURE_NOMINAL: return "nominal";
    case MEASURE_ORDINAL: return "ordinal";
  }
  return "unknown";
}

}  // namespace MCConst
}  // namespace MCMath_850
