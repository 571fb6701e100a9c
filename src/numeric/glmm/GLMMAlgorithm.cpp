#include "numeric/glmm/GLMMAlgorithm.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>
#include <stdexcept>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCProgressObserver.h"
#include "numeric/common/MCQueryCancel.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/common/RecordIterator.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/glmm/GLMMComponentDisplay.h"
#include "numeric/glmm/GLMMCustomTestBuilder.h"
#include "numeric/glmm/GLMMClassification.h"
#include "numeric/glmm/GLMMDataSummary.h"
#include "numeric/glmm/GLMMDesignBuilder.h"
#include "numeric/glmm/GLMMEmmeansBuilder.h"
#include "numeric/glmm/GLMMPredictor.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMPMMLWriter.h"
#include "numeric/glmm/GLMMStatJSONWriter.h"
#include "numeric/glmm/GLMMStatXMLWriter.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCApplicInfo4XML.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;

GLMMAlgorithm::GLMMAlgorithm(const GLMMSettings& settings, const MCXML_850::MCVarList& varList)
    : fpSettings(&settings), fpVarList(&varList), fbOutputAvailable(false) {
  fStatus = CheckSettings();
}

GLMMAlgorithm::~GLMMAlgorithm() = default;

MCStatus GLMMAlgorithm::CheckSettings() const {
  const int nVars = fpVarList->Size();
  auto inList = [nVars](int index) { return index >= 0 && index < nVars; };
  auto allInList = [&inList](const std::vector<int>& indices) {
    for (int index : indices) {
      if (!inList(index)) return false;
    }
    return true;
  };
  auto optionalInList = [&inList](int index) { return index < 0 || inList(index); };
  auto blockInList = [&allInList](const GLMMRandomSpec& spec) {
    if (!allInList(spec.GetSubjectVars())) return false;
    for (const MCMath_850::MCModelEffect& effect : spec.GetEffects()) {
      if (!allInList(effect.GetVarsIndicesForTheEffectInSetting())) return false;
    }
    return true;
  };

  const GLMMSettings& s = *fpSettings;
  bool ok = inList(s.GetDependent()) && allInList(s.GetFactors()) && allInList(s.GetCovariates()) &&
            optionalInList(s.GetFrequencyWeightVar()) && optionalInList(s.GetRegrWeightVar()) &&
            optionalInList(s.GetOffset()) && allInList(s.GetSpatialVars()) && blockInList(s.GetRepeated());
  for (const MCMath_850::MCModelEffect& effect : s.GetModelEffects()) {
    ok = ok && allInList(effect.GetVarsIndicesForTheEffectInSetting());
  }
  for (const GLMMRandomSpec& spec : s.GetRandomSpecs()) ok = ok && blockInList(spec);
  if (s.GetTargetSpec().GetTrialsType() == GLMMConst_850::TRIALS_VARIABLE) {
    ok = ok && inList(s.GetTargetSpec().GetTrialsVariable());
  }
  return ok ? MCStatus() : MCStatus(MCCommon_850::MC_SETTINGS_INVALID, false);
}

namespace {

MCStatus ToStatus(const MCEngine_850::MCEngineStatus& status) {
  MCCommon_850::MCStatusKind kind = MCCommon_850::STATUS_OK;
  if (status.IsWarning()) kind = MCCommon_850::STATUS_WARNING;
  if (status.IsError()) kind = MCCommon_850::STATUS_ERROR;
  MCStatus out(status.GetCode(), kind);
  if (status.GetBlock() >= 0) out.SetDiscreteDatum(0, status.GetBlock() + 1);
  if (status.GetVariable() >= 0) out.SetDiscreteDatum(0, status.GetVariable());
  if (status.GetCount() >= 0) out.SetDiscreteDatum(1, status.GetCount());
  return out;
}

// The target's distribution, link and fitting method as the engine takes them.
MCEngine_850::MCEngineTarget EngineTarget(const GLMMSettings& s) {
  const GLMMTargetSpec& spec = s.GetTargetSpec();
  MCEngine_850::MCEngineTarget target;
  target.SetDistribution(spec.GetDistribution());
  target.SetLink(spec.GetLink());
  target.SetLinkPower(spec.GetLinkPower());
  target.SetFitMethod(spec.GetFitMethod());
  target.SetQuadraturePoints(spec.GetQuadraturePoints());
  target.SetOrdered(spec.GetOrdered());
  target.SetVariable(s.GetSingleDependent());
  return target;
}

MCEngine_850::MCEngineSettings EngineSettings(const GLMMSettings& s) {
  using MCMath_850::MCConst::CONV_RELATIVE;
  MCEngine_850::MCEngineSettings e;
  e.SetREML(s.GetThetaEstType() == GLMMConst_850::REML);
  e.SetMaxIterations(s.GetMaxIterations());
  e.SetMaxStepHalvings(s.GetMaxStepHalvingValue());
  // The Fisher iteration count names the iteration at which Newton-Raphson
  // takes over, so it is one more than the Fisher steps taken.
  const bool fisher = s.GetHessianCompMethod() == MCMath_850::MCConst::HESSIAN_FISHER_THEN_NEWTON;
  e.SetFisherSteps(fisher ? std::max(s.GetMaxFisherIterNum() - 1, 0) : 0);
  e.SetHessianTolerance(s.GetToleranceHessian());
  e.SetHessianRelative(s.GetHConvergeType() == CONV_RELATIVE);
  e.SetLogLikTolerance(s.GetLLConCriterion());
  e.SetLogLikRelative(s.GetLConvergeType() == CONV_RELATIVE);
  e.SetParamTolerance(s.GetParamEstConCriterion());
  e.SetParamRelative(s.GetPConvergeType() == CONV_RELATIVE);
  e.SetSingularTolerance(s.GetTolerance());
  e.SetConfidenceLevel(100.0 * s.GetConfidenceLevel());
  e.SetDFMethod(s.GetDegreesFreedomType() == GLMMConst_850::DF_RESIDUAL ? MCEngine_850::MCEngineSettings::kResidual
                                                                        : MCEngine_850::MCEngineSettings::kSatterthwaite);
  e.SetRobustCovariance(s.GetCovbType() == MCMath_850::MCConst::COVB_ROBUST);
  // Type I tests where they are shown, or where their rows make the joint
  // test of several effects; otherwise only the Type III tests are read (a
  // factor of a thousand levels spares a test of 999 df).
  e.SetTypeITests(s.GetEffectAnalysisType() == MCMath_850::MCConst::EFFECT_TYPE_I || s.GetModelEffects().size() > 1);
  e.SetTarget(EngineTarget(s));
  e.SetCancel(s.GetCancelPointer());
  // The stop query is the caller's one object in the settings; when it also
  // observes the progress, the engine tells it each iteration.
  e.SetProgress(dynamic_cast<const MCCommon_850::MCProgressObserver*>(s.GetCancelPointer()));
  return e;
}

std::vector<MCMath_850::BetaParamStat> ToParamStats(const std::vector<MCEngine_850::MCEngineBetaStat>& beta) {
  std::vector<MCMath_850::BetaParamStat> stats(beta.size());
  for (std::size_t i = 0; i < beta.size(); ++i) {
    const MCEngine_850::MCEngineBetaStat& b = beta[i];
    MCMath_850::BetaParamStat& st = stats[i];
    st.SetIndex(static_cast<int>(i));
    st.SetEstimate(b.GetEstimate());
    st.SetRedundant(b.IsRedundant());
    st.SetStdError(b.GetStdError());
    st.SetLowerBound(b.GetLower());
    st.SetUpperBound(b.GetUpper());
    st.SetDF(b.GetDF());
    st.SetTStat(b.GetT());
    st.SetSig(b.GetSig());
  }
  return stats;
}

MCMath_850::MCModelTestStats ToTestStats(const std::vector<MCEngine_850::MCEngineTest>& tests) {
  MCMath_850::MCModelTestStats stats;
  for (const MCEngine_850::MCEngineTest& test : tests) {
    std::vector<int> rows(test.GetL().size());
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<int>(i);
    stats.AddTest(MCMath_850::MCTestStats(test.GetF(), test.GetNumDF(), test.GetDenDF(), test.GetSig()), MCStatus(),
                  test.GetL(), rows);
  }
  return stats;
}

// The covariance parameters' statistics and their asymptotic covariance,
// when any parameter has one.
void SetThetaStatistics(const MCEngine_850::MCEngineResult& result, GLMMOutputStats& out) {
  const std::vector<MCEngine_850::MCEngineCovParam>& params = result.GetCovParams();
  std::vector<GLMMThetaParamStat> stats(params.size());
  for (std::size_t k = 0; k < params.size(); ++k) {
    const MCEngine_850::MCEngineCovParam& cp = params[k];
    GLMMThetaParamStat& st = stats[k];
    st.SetBlockIndex(cp.GetBlock() < 0 ? GLMMThetaParamStat::kResidualBlock : cp.GetBlock());
    st.SetEffectIndex(cp.GetEffect());
    st.SetLabel(cp.GetLabel());
    st.SetKind(static_cast<GLMMThetaParamStat::ParamKind>(cp.GetKind()));
    st.SetEstimate(cp.GetEstimate());
    st.SetRedundant(cp.IsOnBoundary());
    st.SetStdError(cp.GetStdError());
    st.SetWaldZ(cp.GetWaldZ());
    st.SetSig(cp.GetSig());
    st.SetLowerBound(cp.GetLower());
    st.SetUpperBound(cp.GetUpper());
  }
  out.SetThetaParamStats(stats);

  const int K = static_cast<int>(params.size());
  const std::vector<double>& asy = result.GetCovParamsCov();
  if (K == 0 || asy.size() != static_cast<std::size_t>(K) * static_cast<std::size_t>(K)) return;
  bool any = false;
  for (double v : asy) any = any || !MCCommon_850::MCMV::IsMissing(v);
  if (!any) return;
  MCMath_850::MCSymMatrix matrix({K});
  for (int i = 0; i < K; ++i) {
    for (int j = 0; j <= i; ++j) {
      // The engine's missing value is the component's.
      matrix.SetElem(0, 0, i, j, asy[static_cast<std::size_t>(i) * static_cast<std::size_t>(K) + static_cast<std::size_t>(j)]);
    }
  }
  out.SetCovarianceMatrixTheta(matrix);
}


// The joint test of all fixed terms but the intercept: the sequential
// hypotheses of the terms stacked span exactly that hypothesis.
void SetCorrectedModelTest(const MCEngine_850::MCEngineFitter& fitter, const MCEngine_850::MCEngineInput& input,
                           GLMMOutputStats& out) {
  const MCEngine_850::MCEngineResult& result = fitter.GetResult();
  const std::vector<MCEngine_850::MCEngineTest>& tests =
      result.GetTypeITests().empty() ? result.GetTypeIIITests() : result.GetTypeITests();
  std::vector<std::vector<double>> L;
  for (const MCEngine_850::MCEngineTest& test : tests) {
    const int term = test.GetTerm();
    if (term >= 0 && term < static_cast<int>(input.GetTerms().size()) &&
        input.GetTerms()[static_cast<std::size_t>(term)].IsIntercept()) {
      continue;
    }
    L.insert(L.end(), test.GetL().begin(), test.GetL().end());
  }
  if (L.empty()) return;
  const MCEngine_850::MCEngineTest joint = fitter.TestContrast(L);
  if (!joint.IsValid()) return;
  auto value = [](double v) { return MCEngine_850::MCEngineMissing::Is(v) ? MCCommon_850::MCMV::Missing() : v; };
  out.SetCorrectedModelTest(MCMath_850::MCTestStats(value(joint.GetF()), value(joint.GetNumDF()),
                                                    value(joint.GetDenDF()), value(joint.GetSig())));
}

// The custom tests, with the fit's predictor when it has one, else with one
// of their own when a row has a random part.
void SetCustomTests(const GLMMSettings& settings, const MCXML_850::MCVarList& varList,
                    const GLMMDesignBuilder& builder, const MCEngine_850::MCEngineFitter& fitter,
                    MCCommon_850::RecordIterator* pRecords, const GLMMPredictor* pPredictor, GLMMOutputStats& out) {
  if (settings.GetCustomTests().empty()) return;
  const GLMMCustomTestBuilder tests(settings, builder.GetBetaParameters(), builder.GetGammaParameters());
  std::unique_ptr<GLMMPredictor> pOwn;
  if (tests.NeedsPredictor() && (pPredictor == nullptr || !pPredictor->IsReady())) {
    pOwn = std::make_unique<GLMMPredictor>(settings, varList);
    pPredictor = pOwn->Setup(builder, fitter, pRecords) ? pOwn.get() : nullptr;
  }
  out.SetCustomTestStats(tests.Build(fitter, pPredictor));
}

}  // namespace

MCStatus GLMMAlgorithm::Execute(MCCommon_850::RecordIterator* pRecords, int) {
  if (fStatus.IsError()) return fStatus;
  fvWarnings.clear();
  fOutputStats = GLMMOutputStats();
  fbOutputAvailable = false;
  fpPredictor.reset();

  GLMMDesignBuilder builder(*fpSettings, *fpVarList);
  MCStatus built = builder.Build(pRecords);
  if (built.IsError()) {
    // A stop is not the model's fault: the caller asked for it and says so.
    if (built.GetErrorCode() != MCCommon_850::MC_CANCELLED) fOutputStats.AddBuildModelWarning(built);
    fStatus = built;
    return fStatus;
  }

  MCEngine_850::MCEngineFitter fitter;
  fitter.Fit(builder.GetInput(), EngineSettings(*fpSettings));
  const MCEngine_850::MCEngineResult& result = fitter.GetResult();
  for (const MCEngine_850::MCEngineStatus& warning : result.GetWarnings()) {
    fvWarnings.push_back(ToStatus(warning));
    fOutputStats.AddBuildModelWarning(ToStatus(warning));
  }
  fStatus = ToStatus(result.GetStatus());
  if (fStatus.IsWarning()) {
    bool listed = false;
    for (const MCStatus& w : fvWarnings) listed = listed || w.GetErrorCode() == fStatus.GetErrorCode();
    if (!listed) {
      fvWarnings.push_back(fStatus);
      fOutputStats.AddBuildModelWarning(fStatus);
    }
  }
  if (fStatus.IsError()) return fStatus;

  GLMMOutputStats& out = fOutputStats;
  out.SetLogLikehood(result.GetMinus2LogLik());
  out.SetAICC(result.GetAICC());
  out.SetBIC(result.GetBIC());
  out.SetTotalFreqWeight(result.GetTotalFreqWeight());
  out.SetBetaParameters(builder.GetBetaParameters());
  out.SetGammaBasicParameters(builder.GetGammaParameters());

  const std::vector<MCEngine_850::MCEngineBetaStat>& beta = result.GetBeta();
  const int P = static_cast<int>(beta.size());
  MCMath_850::MCBitSet nonRedundant(P);
  for (int i = 0; i < P; ++i) nonRedundant.Set(i, !beta[static_cast<std::size_t>(i)].IsRedundant());
  out.SetBetaParamStats(ToParamStats(beta));
  out.SetRedundancyIndicatorsBeta(nonRedundant);
  out.SetTargetCategories(result.GetTargetCategories());
  out.SetThresholdStats(ToParamStats(result.GetThresholds()));

  const std::vector<double>& covBeta = result.GetCovBeta();
  if (covBeta.size() == static_cast<std::size_t>(P) * static_cast<std::size_t>(P)) {
    MCMath_850::MCSymMatrix matrix({P});
    for (int i = 0; i < P; ++i) {
      for (int j = 0; j <= i; ++j) {
        matrix.SetElem(0, 0, i, j, covBeta[static_cast<std::size_t>(i) * static_cast<std::size_t>(P) + static_cast<std::size_t>(j)]);
      }
    }
    out.SetCovarianceMatrixBeta(matrix);
  }
  if (!result.GetTypeITests().empty()) out.SetTypeITestStats(ToTestStats(result.GetTypeITests()));
  out.SetTypeIIITestStats(ToTestStats(result.GetTypeIIITests()));

  std::vector<double> theta;
  for (const MCEngine_850::MCEngineCovParam& cp : result.GetCovParams()) theta.push_back(cp.GetEstimate());
  out.SetThetaParamEtimates(theta);
  SetThetaStatistics(result, out);
  if (fpSettings->GetModelEffects().size() > 1) SetCorrectedModelTest(fitter, builder.GetInput(), out);
  if (pRecords != nullptr) GLMMDataSummary::Fill(*fpSettings, *fpVarList, builder, fitter, pRecords, out);
  out.SetClassification(GLMMClassification::Compute(*fpSettings, builder.GetInput(), result, EngineTarget(*fpSettings)));
  GLMMEmmeansBuilder means(*fpSettings, *fpVarList);
  means.SetTarget(EngineTarget(*fpSettings));
  means.Build(fitter, builder.GetInput(), builder.GetBetaParameters(), pRecords, out, fvWarnings);
  bool wantEBLUPs = false;
  for (const GLMMRandomSpec& spec : fpSettings->GetRandomSpecs()) wantEBLUPs = wantEBLUPs || spec.GetComputeEBLUPs();
  if (wantEBLUPs || !fvScoreTypes.empty()) {
    fpPredictor = std::make_unique<GLMMPredictor>(*fpSettings, *fpVarList);
    fpPredictor->SetTarget(EngineTarget(*fpSettings));
    if (fpPredictor->Setup(builder, fitter, pRecords)) out.SetEBLUPStats(fpPredictor->ComputeEBLUPs());
  }
  SetCustomTests(*fpSettings, *fpVarList, builder, fitter, pRecords, fpPredictor.get(), out);
  fbOutputAvailable = true;
  return fStatus;
}

MCStatus GLMMAlgorithm::ScoreRecord(const double* record, std::vector<double>& scores,
                                    std::vector<std::vector<double>>& details) {
  details.clear();
  scores.assign(fvScoreTypes.size(), MCCommon_850::MCMV::Missing());
  if (fStatus.IsError()) return fStatus;
  if (!fbOutputAvailable || !fpPredictor || !fpPredictor->IsReady()) {
    return MCStatus(MCCommon_850::MC_SETTINGS_INVALID, false);
  }
  return fpPredictor->ScoreRecord(record, fvScoreTypes, scores);
}

MCStatus GLMMAlgorithm::ExportPMML(std::ostream& os, const MCXML_850::MCApplicInfo4XML* pInfo) {
  if (fStatus.IsError()) return fStatus;
  if (!fbOutputAvailable) return MCStatus(MCCommon_850::MC_OUTPUT_FILE_ERROR, false);
  return GLMMPMMLWriter(*fpSettings, *fpVarList, fOutputStats).Write(os, pInfo);
}

MCStatus GLMMAlgorithm::ExportStatXML(std::ostream& os) {
  if (fStatus.IsError()) return fStatus;
  if (!fbOutputAvailable) return MCStatus(MCCommon_850::MC_OUTPUT_FILE_ERROR, false);
  return GLMMStatXMLWriter(*fpSettings, *fpVarList, fOutputStats).Write(os);
}

MCStatus GLMMAlgorithm::ExportStatJSON(std::ostream& os) {
  if (fStatus.IsError()) return fStatus;
  if (!fbOutputAvailable) return MCStatus(MCCommon_850::MC_OUTPUT_FILE_ERROR, false);
  return GLMMStatJSONWriter(*fpSettings, *fpVarList, fOutputStats).Write(os);
}

MCStatus GLMMAlgorithm::GetStatus() const { return fStatus; }

const std::vector<MCStatus>& GLMMAlgorithm::GetWarnings() const { return fvWarnings; }

const GLMMOutputStats* GLMMAlgorithm::GetOutputStats() const {
  return fbOutputAvailable ? &fOutputStats : nullptr;
}

void GLMMAlgorithm::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin GLMMAlgorithm display.");
  fStatus.Display(os);
  DisplayI(os, "Warnings:", static_cast<long>(fvWarnings.size()));
  for (const MCStatus& warning : fvWarnings) warning.Display(os);
  DisplayI(os, "Score types:", static_cast<long>(fvScoreTypes.size()));
  for (GLMMConst_850::ScoreType type : fvScoreTypes) GLMMComponentDisplay_850::DisplayC(os, "Score:", type);
  fpSettings->Display(os);
  fpVarList->Display(os);
  if (fbOutputAvailable) {
    fOutputStats.Display(os);
  } else {
    DisplayText(os, "No output statistics are available.");
  }
  DisplayText(os, "End GLMMAlgorithm display.");
}

}  // namespace MCGLMM_850
