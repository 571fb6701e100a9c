#pragma once

#include <vector>

#include "numeric/engine/MCEngineBetaStat.h"
#include "numeric/engine/MCEngineCovParam.h"
#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/MCEngineTest.h"

namespace MCEngine_850 {

// What one fit produced. Matrices are row-major. Values that could not be
// computed hold MCEngineMissing::Value().
class MCEngineResult {
 public:
  MCEngineResult() = default;

  const MCEngineStatus& GetStatus() const { return fStatus; }
  void SetStatus(const MCEngineStatus& status) { fStatus = status; }
  const std::vector<MCEngineStatus>& GetWarnings() const { return fvWarnings; }
  void AddWarning(const MCEngineStatus& warning) { fvWarnings.push_back(warning); }

  bool IsConverged() const { return fbConverged; }
  void SetConverged(bool b) { fbConverged = b; }
  int GetIterations() const { return fIterations; }
  void SetIterations(int n) { fIterations = n; }
  bool IsREML() const { return fbREML; }
  void SetREML(bool b) { fbREML = b; }
  // The residual variance was concentrated out of the likelihood while iterating.
  bool IsScaleProfiled() const { return fbScaleProfiled; }
  void SetScaleProfiled(bool b) { fbScaleProfiled = b; }
  MCEngineSettings::SolverPath GetSolverPath() const { return fSolverPath; }
  void SetSolverPath(MCEngineSettings::SolverPath path) { fSolverPath = path; }
  // On the group-by-group path, the entries of the products over the fixed
  // columns that one evaluation computes: the sum over the independent
  // groups of records times (fixed columns not zero on them + 1)^2. A
  // measure of the work a fixed factor of many levels costs; 0 on the other
  // paths.
  double GetGroupProductEntries() const { return fGroupProductEntries; }
  void SetGroupProductEntries(double n) { fGroupProductEntries = n; }
  // On the group-by-group path, the pairs of covariance parameters whose
  // products over the fixed columns the final evaluation held: only pairs
  // that some group holds both of. 0 on the other paths.
  double GetGroupPairProducts() const { return fGroupPairProducts; }
  void SetGroupPairProducts(double n) { fGroupPairProducts = n; }

  // -2 (restricted) log likelihood at the estimates, all constants included.
  double GetMinus2LogLik() const { return fMinus2LogLik; }
  void SetMinus2LogLik(double v) { fMinus2LogLik = v; }
  // The same for the model with independent residuals of one variance only.
  double GetNullMinus2LogLik() const { return fNullMinus2LogLik; }
  void SetNullMinus2LogLik(double v) { fNullMinus2LogLik = v; }
  double GetAIC() const { return fAIC; }
  void SetAIC(double v) { fAIC = v; }
  double GetAICC() const { return fAICC; }
  void SetAICC(double v) { fAICC = v; }
  double GetHQIC() const { return fHQIC; }
  void SetHQIC(double v) { fHQIC = v; }
  double GetBIC() const { return fBIC; }
  void SetBIC(double v) { fBIC = v; }
  double GetCAIC() const { return fCAIC; }
  void SetCAIC(double v) { fCAIC = v; }

  // Records used, and their number with all their copies (the total
  // frequency weight).
  int GetNRecordsUsed() const { return fNRecordsUsed; }
  void SetNRecordsUsed(int n) { fNRecordsUsed = n; }
  double GetTotalFreqWeight() const { return fTotalFreqWeight; }
  void SetTotalFreqWeight(double v) { fTotalFreqWeight = v; }
  // Whether a frequency weight copies the whole independent group of its
  // record, subjects included (under a residual structure that couples
  // records), rather than the record within its subjects.
  bool GetWeightsCopyGroups() const { return fbWeightsCopyGroups; }
  void SetWeightsCopyGroups(bool b) { fbWeightsCopyGroups = b; }
  int GetRankX() const { return fRankX; }
  void SetRankX(int r) { fRankX = r; }
  // Independent groups of records with their copies, as counted for the
  // information criteria.
  double GetNSubjects() const { return fNSubjects; }
  void SetNSubjects(double v) { fNSubjects = v; }
  // Covariance parameters estimated, and those not on a bound.
  int GetNCovParams() const { return static_cast<int>(fvCovParams.size()); }
  int GetNCovParamsFree() const { return fNCovParamsFree; }
  void SetNCovParamsFree(int n) { fNCovParamsFree = n; }

  const std::vector<MCEngineBetaStat>& GetBeta() const { return fvBeta; }
  void SetBeta(const std::vector<MCEngineBetaStat>& beta) { fvBeta = beta; }
  // P x P covariance of the estimates; rows and columns of redundant
  // parameters are 0. It is the robust covariance when IsCovBetaRobust.
  const std::vector<double>& GetCovBeta() const { return fvCovBeta; }
  void SetCovBeta(const std::vector<double>& v) { fvCovBeta = v; }
  // The model-based covariance (X'V^-1 X)^-, whichever one GetCovBeta holds.
  const std::vector<double>& GetModelCovBeta() const { return fvModelCovBeta; }
  void SetModelCovBeta(const std::vector<double>& v) { fvModelCovBeta = v; }
  // The robust covariance was asked for and could be computed: it needs at
  // least two independent groups of records.
  bool IsCovBetaRobust() const { return fbCovBetaRobust; }
  void SetCovBetaRobust(bool b) { fbCovBetaRobust = b; }
  // Independent groups of records with their copies.
  double GetNGroups() const { return fNGroups; }
  void SetNGroups(double v) { fNGroups = v; }
  // The denominator degrees of freedom of every test and interval of the
  // fixed effects: n - rank(X) with residual df, G - 1 for G groups with the
  // robust covariance and Satterthwaite's method; missing when each has its
  // own Satterthwaite df.
  double GetFixedDF() const { return fFixedDF; }
  void SetFixedDF(double v) { fFixedDF = v; }

  const std::vector<MCEngineCovParam>& GetCovParams() const { return fvCovParams; }
  void SetCovParams(const std::vector<MCEngineCovParam>& v) { fvCovParams = v; }
  // Asymptotic covariance of the covariance parameters (2 times the inverse
  // observed Hessian of -2 log likelihood); parameters on a bound have missing rows.
  const std::vector<double>& GetCovParamsCov() const { return fvCovParamsCov; }
  void SetCovParamsCov(const std::vector<double>& v) { fvCovParamsCov = v; }

  const std::vector<MCEngineTest>& GetTypeITests() const { return fvTypeI; }
  void SetTypeITests(const std::vector<MCEngineTest>& v) { fvTypeI = v; }
  const std::vector<MCEngineTest>& GetTypeIIITests() const { return fvTypeIII; }
  void SetTypeIIITests(const std::vector<MCEngineTest>& v) { fvTypeIII = v; }

  // Of a generalized model, fitted through a sequence of working linear
  // models whose statistics the rest of the result holds (on the linear
  // predictor's scale; -2 log likelihood and criteria are those of the
  // final working model's pseudo-likelihood). A linear fit leaves these
  // unset.
  bool IsGeneralized() const { return fbGeneralized; }
  void SetGeneralized(bool b) { fbGeneralized = b; }
  // Working models fitted, and whether their parameters settled.
  int GetPseudoIterations() const { return fPseudoIterations; }
  void SetPseudoIterations(int n) { fPseudoIterations = n; }
  bool IsPseudoConverged() const { return fbPseudoConverged; }
  void SetPseudoConverged(bool b) { fbPseudoConverged = b; }
  // The scale phi of Var(y) = phi V(mu) / w: 1 and fixed for the binomial,
  // Poisson and negative binomial, else the working residual variance.
  bool IsScaleFixed() const { return fbScaleFixed; }
  void SetScaleFixed(bool b) { fbScaleFixed = b; }
  double GetScale() const { return fScale; }
  void SetScale(double v) { fScale = v; }
  // The negative binomial's shape k, Var(y) = mu + mu^2 / k; missing for
  // the other distributions.
  double GetShape() const { return fShape; }
  void SetShape(double v) { fShape = v; }
  // The shape's standard error where a likelihood fit estimated it with the
  // other parameters; missing otherwise.
  double GetShapeStdError() const { return fShapeStdError; }
  void SetShapeStdError(double v) { fShapeStdError = v; }
  // Sum over the records of the deviance, and of (y - mu)^2 w / V(mu), at
  // the conditional means.
  double GetDeviance() const { return fDeviance; }
  void SetDeviance(double v) { fDeviance = v; }
  double GetPearsonChiSquare() const { return fPearson; }
  void SetPearsonChiSquare(double v) { fPearson = v; }
  // Per record of the input: the linear predictor with the random effects
  // and the offset, and the mean on the data's scale (a proportion of the
  // trials for a binomial target); missing for records not used.
  const std::vector<double>& GetLinearPredictor() const { return fvLinearPredictor; }
  void SetLinearPredictor(const std::vector<double>& v) { fvLinearPredictor = v; }
  const std::vector<double>& GetFittedMean() const { return fvFittedMean; }
  void SetFittedMean(const std::vector<double>& v) { fvFittedMean = v; }

  // Of an ordinal target, P(Y <= j) = F(theta_j - x'beta - u): the values of
  // its categories in their order, the K - 1 thresholds theta_j with their
  // statistics, and each subject's conditional mode of u (in the order of
  // the subject codes) on the linear predictor's scale. Empty otherwise.
  const std::vector<double>& GetTargetCategories() const { return fvTargetCategories; }
  void SetTargetCategories(const std::vector<double>& v) { fvTargetCategories = v; }
  const std::vector<MCEngineBetaStat>& GetThresholds() const { return fvThresholds; }
  void SetThresholds(const std::vector<MCEngineBetaStat>& v) { fvThresholds = v; }
  const std::vector<double>& GetConditionalModes() const { return fvConditionalModes; }
  void SetConditionalModes(const std::vector<double>& v) { fvConditionalModes = v; }

 private:
  MCEngineStatus fStatus;
  std::vector<MCEngineStatus> fvWarnings;
  bool fbConverged = false;
  int fIterations = 0;
  bool fbREML = true;
  bool fbScaleProfiled = false;
  MCEngineSettings::SolverPath fSolverPath = MCEngineSettings::kAutomatic;
  double fGroupProductEntries = 0.0;
  double fGroupPairProducts = 0.0;
  double fMinus2LogLik = MCEngineMissing::Value();
  double fNullMinus2LogLik = MCEngineMissing::Value();
  double fAIC = MCEngineMissing::Value();
  double fAICC = MCEngineMissing::Value();
  double fHQIC = MCEngineMissing::Value();
  double fBIC = MCEngineMissing::Value();
  double fCAIC = MCEngineMissing::Value();
  int fNRecordsUsed = 0;
  double fTotalFreqWeight = 0.0;
  bool fbWeightsCopyGroups = false;
  int fRankX = 0;
  double fNSubjects = 0.0;
  int fNCovParamsFree = 0;
  std::vector<MCEngineBetaStat> fvBeta;
  std::vector<double> fvCovBeta;
  std::vector<double> fvModelCovBeta;
  bool fbCovBetaRobust = false;
  double fNGroups = 0.0;
  double fFixedDF = MCEngineMissing::Value();
  std::vector<MCEngineCovParam> fvCovParams;
  std::vector<double> fvCovParamsCov;
  std::vector<MCEngineTest> fvTypeI;
  std::vector<MCEngineTest> fvTypeIII;
  bool fbGeneralized = false;
  int fPseudoIterations = 0;
  bool fbPseudoConverged = false;
  bool fbScaleFixed = false;
  double fScale = MCEngineMissing::Value();
  double fShape = MCEngineMissing::Value();
  double fShapeStdError = MCEngineMissing::Value();
  double fDeviance = MCEngineMissing::Value();
  double fPearson = MCEngineMissing::Value();
  std::vector<double> fvLinearPredictor;
  std::vector<double> fvFittedMean;
  std::vector<double> fvTargetCategories;
  std::vector<MCEngineBetaStat> fvThresholds;
  std::vector<double> fvConditionalModes;
};

}  // namespace MCEngine_850
