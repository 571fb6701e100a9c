#pragma once

namespace MCEngine_850 {

// Covariance structure of a random block or of the residual block. The
// numbers are the component's type codes; 6 is not used.
enum class MCEngineCovType : int {
  ARH1 = 0,
  AD1 = 1,
  CS = 2,
  DIAG = 3,
  ID = 4,
  TP = 5,
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

}  // namespace MCEngine_850
