#pragma once

#include <string>

class BpDimension;
class BpFormatSpec;
class MIXComOutputData;
class MIXValidSpecs;
namespace MCGLMM_850 {
class GLMMOutputStats;
}
namespace MCMath_850 {
class BetaParamStat;
class MCSymMatrix;
}

// The fixed effects tables of one split: tests of the effects, parameter
// estimates, and the covariance and correlation matrices of the estimates.
// Each goes under a heading "Fixed Effects" of its own.
//
// The operations without arguments take the statistics of the current
// split's fit from the factory; the others write the same table from the
// statistics given, and write nothing (or, for the estimates, no rows) when
// they are null.
class MIXParamEstimateOutput {
 public:
  explicit MIXParamEstimateOutput(const MIXComOutputData* pComOutputData);
  ~MIXParamEstimateOutput();
  MIXParamEstimateOutput(const MIXParamEstimateOutput&) = delete;
  MIXParamEstimateOutput& operator=(const MIXParamEstimateOutput&) = delete;

  const MIXComOutputData* GetComOutputData() const { return fpComOutputData; }

  void DisplayFixedEffectsTable();
  void DisplayParamEstimates();
  void DisplayCorrParamEst();
  void DisplayCovarParamEst();

  void DisplayFixedEffectsTable(const MCGLMM_850::GLMMOutputStats* pStats);
  void DisplayParamEstimates(const MCGLMM_850::GLMMOutputStats* pStats);
  void DisplayCorrParamEst(const MCGLMM_850::GLMMOutputStats* pStats);
  void DisplayCovarParamEst(const MCGLMM_850::GLMMOutputStats* pStats);

  // The correlation of element (c, d) of blocks (a, b), from the variances
  // on the diagonal. Missing when a variance is not positive or the
  // covariance is exactly 0.
  static double FindCorrelation(int a, int b, int c, int d, const MCMath_850::MCSymMatrix* pMatrix);
  // Whether the estimates show Exp(B) and its interval: under a log or
  // logit link.
  static bool ShowsExponentiated(const MIXValidSpecs& specs);

 private:
  // What every row of the estimates shows.
  struct EstimateRowFormat {
    bool fbSolution;
    bool fbHessianFlag;
    double fLevel;
    bool fbExponentiated;
    const BpFormatSpec* fpFormat;
  };
  // The statistics of one parameter, a threshold or a fixed coefficient.
  static void DisplayEstimateRow(BpDimension& statistics, const MCMath_850::BetaParamStat& stat,
                                 const EstimateRowFormat& row);
  // "Threshold [target=value]" for the threshold below a category.
  std::string ThresholdLabel(double category) const;
  // The statistics of the current split's fit; null without one.
  const MCGLMM_850::GLMMOutputStats* CurrentStats() const;
  // The two matrices share their form.
  void DisplayMatrix(const MCGLMM_850::GLMMOutputStats* pStats, bool correlation);
  static void DisplayExponentiated(BpDimension& statistics, const MCMath_850::BetaParamStat& stat, double level,
                                   const BpFormatSpec& format);

  const MIXComOutputData* fpComOutputData;
};
