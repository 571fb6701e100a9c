#pragma once

#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/detail/MCEngineFamily.h"
#include "numeric/engine/detail/MCEngineLink.h"

namespace MCEngine_850 {

class MCEngineFitterImpl;
class MCEngineResult;

// Fits a generalized linear mixed model by subject-specific
// pseudo-likelihood: the target is linearised about the current linear
// predictor eta (with the random effects' predictions) into the working
// response z = eta - offset + (y - mu) / (d mu / d eta) with working weights
// w (d mu / d eta)^2 / V(mu), and the working linear mixed model, with the
// covariance structures of the input and its residual variance fixed at 1
// where the distribution fixes the scale, is fitted by REML (residual
// pseudo-likelihood) or ML (maximum pseudo-likelihood). This repeats until
// the fixed and covariance parameters settle. The negative binomial's shape
// k is estimated between the working fits, by maximum likelihood at the
// current conditional means, and settles with them. The fitter keeps the final
// working model, so every statistic of a linear fit is available for it.
class MCEnginePseudoLikelihood {
 public:
  // The input is read during Fit and FillResult only; the working input is
  // a copy of it that the object keeps.
  MCEnginePseudoLikelihood(const MCEngineInput& input, const MCEngineSettings& settings);

  // Whether the engine can fit the settings' target by pseudo-likelihood.
  static bool CanFit(const MCEngineInput& input, const MCEngineSettings& settings);

  MCEngineStatus Fit(MCEngineFitterImpl& fitter);
  // The working model's input of the last iteration.
  const MCEngineInput& GetWorkingInput() const { return fWorking; }
  // A binary or binomial target whose fit failed as the fixed effects
  // separate it: the working model fitted exactly, or means reaching 0 or 1.
  bool IsSeparated() const { return fbSeparated; }
  // Adds what the generalized fit found to the fitter's result.
  void FillResult(MCEngineResult& result) const;

  // After Fit: the records it used, their target (proportions of a
  // binomial), prior weights and offsets, and the family and link.
  const std::vector<bool>& GetUsed() const { return fvUsed; }
  const std::vector<double>& GetTarget() const { return fvY; }
  const std::vector<double>& GetPrior() const { return fvPrior; }
  const std::vector<double>& GetOffsets() const { return fvOffset; }
  const MCEngineFamily& GetFamily() const { return fFamily; }
  const MCEngineLink& GetLink() const { return fLink; }
  // Holds the negative binomial's shape where another fit estimated it.
  void SetShape(double shape) { fFamily.SetShape(shape); }
  // Linearises about the given linear predictor (offset included) of every
  // used record and fits that working model as the final one.
  MCEngineStatus FitWorkingAt(MCEngineFitterImpl& fitter, const std::vector<double>& eta);

 private:
  // The records' proportions (binomial) or values, prior weights and
  // offsets; records outside the support counted.
  MCEngineStatus ReadTarget();
  void Linearise();
  // The negative binomial's shape that maximises the likelihood of the
  // records at the current means.
  void EstimateShape();
  // The conditional linear predictor of every record from the last fit;
  // false when the predictions cannot be set up.
  bool UpdateLinearPredictor(const MCEngineFitterImpl& fitter);
  // Largest change of the fixed and covariance parameters, relative to
  // their size where that exceeds 1.
  static double Change(const std::vector<double>& a, const std::vector<double>& b);
  std::vector<double> Parameters(const MCEngineFitterImpl& fitter) const;
  void Warnings(std::vector<MCEngineStatus>& warnings) const;
  bool HasSeparatedMeans() const;
  bool IsUsed(int r) const { return fvUsed[static_cast<std::size_t>(r)]; }

  const MCEngineInput& fInput;
  MCEngineSettings fSettings;
  MCEngineSettings fWorkingSettings;
  MCEngineFamily fFamily;
  MCEngineLink fLink;
  MCEngineInput fWorking;
  std::vector<bool> fvUsed;
  std::vector<double> fvY;       // proportions of a binomial, else the target
  std::vector<double> fvPrior;   // trials times the scale weight
  std::vector<double> fvOffset;
  std::vector<double> fvEta;
  std::vector<double> fvMu;
  int fIterations = 0;
  bool fbConverged = false;
  bool fbSeparated = false;
};

}  // namespace MCEngine_850
