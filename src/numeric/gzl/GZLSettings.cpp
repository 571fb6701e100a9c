#include "numeric/gzl/GZLSettings.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"
#include "numeric/gzl/GZLComponentDisplay.h"

namespace GZLM_NAMESPACE_850 {

using namespace MCMath_850::MCConst;

GZLSettings::GZLSettings()
    : fOffset(-1),
      fOffsetValue(0.0),
      fOffsetType(OFFSET_NONE),
      fEffectAnalysisType(EFFECT_TYPE_III),
      fEffectAnalysisStat(GZLConst_850::EFFECT_STAT_WALD),
      fCSIteration(20),
      fCIType(GZLConst_850::CI_WALD),
      fCIConvProfile(1e-4),
      fbGEFTest(false),
      fbModelFittingTest(false),
      fHessianCompMethod(HESSIAN_FISHER_THEN_NEWTON),
      fHConvergeType(CONV_RELATIVE),
      fLConvergeType(CONV_RELATIVE),
      fPConvergeType(CONV_RELATIVE),
      fToleranceHessian(0.0),
      fMaxIterationsSQP(100),
      fHConvergeTypeSQP(CONV_RELATIVE),
      fLConvergeTypeSQP(CONV_RELATIVE),
      fPConvergeTypeSQP(CONV_RELATIVE),
      fToleranceHessianSQP(0.0),
      fToleranceLogLikeSQP(0.0),
      fToleranceParamSQP(1e-6),
      fMaxIterationsPLCI(100),
      fToleranceHessianPLCI(1e-4),
      fToleranceLogLikePLCI(1e-4),
      fLConvergeTypeTypeIandIII(CONV_RELATIVE),
      fTolLogLikeTypeIandIII(1e-4) {}

GZLSettings::~GZLSettings() = default;

void GZLSettings::SetOffset(int index) {
  fOffset = index;
  fOffsetType = index >= 0 ? OFFSET_VARIABLE : OFFSET_NONE;
}

void GZLSettings::SetOffsetValue(double value) {
  fOffsetValue = value;
  fOffsetType = OFFSET_VALUE;
}

void GZLSettings::Display(std::ostream& os) const {
  MCMath_850::MCLogRegSettings::Display(os);
  using namespace MCDisplay_850;
  DisplayC(os, "Offset type:", fOffsetType);
  DisplayI(os, "Offset variable:", fOffset);
  DisplayD(os, "Offset value:", fOffsetValue);
  DisplayC(os, "Effect analysis type:", fEffectAnalysisType);
  GZLComponentDisplay_850::DisplayC(os, "Effect analysis statistic:", fEffectAnalysisStat);
  DisplayI(os, "Separation check from iteration:", fCSIteration);
  GZLComponentDisplay_850::DisplayC(os, "Confidence interval type:", fCIType);
  DisplayD(os, "Profile interval convergence:", fCIConvProfile);
  DisplayB(os, "Goodness of fit test:", fbGEFTest);
  DisplayB(os, "Model fitting test:", fbModelFittingTest);
  DisplayC(os, "Hessian computation:", fHessianCompMethod);
  DisplayI(os, "Marginal means requests:", static_cast<long>(fvEmmeans.size()));
  for (const MCMath_850::MCEmmeansSpec& spec : fvEmmeans) spec.Display(os);
  DisplayC(os, "Hessian convergence type:", fHConvergeType);
  DisplayC(os, "Log-likelihood convergence type:", fLConvergeType);
  DisplayC(os, "Parameter convergence type:", fPConvergeType);
  DisplayD(os, "Hessian convergence:", fToleranceHessian);
  DisplayI(os, "Constrained fit maximum iterations:", fMaxIterationsSQP);
  DisplayC(os, "Constrained fit Hessian convergence type:", fHConvergeTypeSQP);
  DisplayC(os, "Constrained fit log-likelihood convergence type:", fLConvergeTypeSQP);
  DisplayC(os, "Constrained fit parameter convergence type:", fPConvergeTypeSQP);
  DisplayD(os, "Constrained fit Hessian convergence:", fToleranceHessianSQP);
  DisplayD(os, "Constrained fit log-likelihood convergence:", fToleranceLogLikeSQP);
  DisplayD(os, "Constrained fit parameter convergence:", fToleranceParamSQP);
  DisplayI(os, "Profile interval maximum iterations:", fMaxIterationsPLCI);
  DisplayD(os, "Profile interval Hessian convergence:", fToleranceHessianPLCI);
  DisplayD(os, "Profile interval log-likelihood convergence:", fToleranceLogLikePLCI);
  DisplayC(os, "Type I and III log-likelihood convergence type:", fLConvergeTypeTypeIandIII);
  DisplayD(os, "Type I and III log-likelihood convergence:", fTolLogLikeTypeIandIII);
}

}  // namespace GZLM_NAMESPACE_850
