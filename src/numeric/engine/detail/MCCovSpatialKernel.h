#pragma once

#include "numeric/engine/MCEngineCovParam.h"
#include "numeric/engine/MCEngineCovType.h"

namespace MCEngine_850 {

// The distance function f(d; phi) of one spatial structure, with what the
// structure needs to know of it; f(0) = 1. One record per spatial type.
struct MCCovSpatialKernel {
  using Function = double (*)(double d, double phi);
  using OfDistance = double (*)(double d);

  MCEngineCovType fType;
  // The label of phi, its kind (a correlation or a range) and its interval.
  const char* fLabel;
  MCEngineCovParam::Kind fKind;
  double fLower;
  double fUpper;
  // f and its first and second derivatives in phi at a distance d > 0.
  Function fValue;
  Function fDerivative;
  Function fSecondDerivative;
  // A phi for which f vanishes (to the last bit) at every distance of at
  // least dMin > 0.
  OfDistance fNullParam;
  // The phi of a function that falls to about exp(-1), or to 0, at the
  // distance r > 0.
  OfDistance fParamForRange;

  // The kernel of a spatial type; null for any other type.
  static const MCCovSpatialKernel* Find(MCEngineCovType type);
};

}  // namespace MCEngine_850
