#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/gzl/GZLConst.h"
#include "numeric/math/MCConst.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/math/MCLogRegSettings.h"

namespace GZLM_NAMESPACE_850 {

// Settings of a generalized linear model: the target, the offset, the tests
// and intervals, marginal means, and the convergence controls of the main
// fit, of the constrained (SQP) fit, of the profile-likelihood intervals
// (PLCI) and of the Type I and III tests. Each default is the value a
// command with no optional keyword produces.
class GZLSettings : public MCMath_850::MCLogRegSettings {
 public:
  using MCConvType = MCMath_850::MCConst::MCConvType;

  GZLSettings();
  ~GZLSettings() override;

  // The one target variable.
  void SetSingleDependent(int index) { SetDependent(index); }
  int GetSingleDependent() const { return GetDependent(); }

  // Offset: a variable (SetOffset, -1 for none) or a fixed value
  // (SetOffsetValue); the later call decides which one is used.
  void SetOffset(int index);
  int GetOffset() const { return fOffset; }
  void SetOffsetValue(double value);
  double GetOffsetValue() const { return fOffsetValue; }
  MCMath_850::MCConst::MCOffsetType GetOffsetType() const { return fOffsetType; }

  MCMath_850::MCConst::MCEffectAnalysisType GetEffectAnalysisType() const { return fEffectAnalysisType; }
  void SetEffectAnalysisType(MCMath_850::MCConst::MCEffectAnalysisType type) { fEffectAnalysisType = type; }
  GZLConst_850::EffectAnalysisStat GetEffectAnalysisStat() const { return fEffectAnalysisStat; }
  void SetEffectAnalysisStat(GZLConst_850::EffectAnalysisStat stat) { fEffectAnalysisStat = stat; }
  // Iteration from which separation is checked; 20 by default.
  int GetCSIteration() const { return fCSIteration; }
  void SetCSIteration(int iteration) { fCSIteration = iteration; }
  GZLConst_850::CIType GetCIType() const { return fCIType; }
  void SetCIType(GZLConst_850::CIType type) { fCIType = type; }
  // Convergence criterion of the profile-likelihood interval; 1e-4.
  double GetCIConvProfile() const { return fCIConvProfile; }
  void SetCIConvProfile(double criterion) { fCIConvProfile = criterion; }
  bool GetGEFTest() const { return fbGEFTest; }
  void SetGEFTest(bool test) { fbGEFTest = test; }
  bool GetModelFittingTest() const { return fbModelFittingTest; }
  void SetModelFittingTest(bool test) { fbModelFittingTest = test; }
  MCMath_850::MCConst::MCHessianCompMethod GetHessianCompMethod() const { return fHessianCompMethod; }
  void SetHessianCompMethod(MCMath_850::MCConst::MCHessianCompMethod method) { fHessianCompMethod = method; }

  void SetEmmeans(const std::vector<MCMath_850::MCEmmeansSpec>& emmeans) { fvEmmeans = emmeans; }
  const std::vector<MCMath_850::MCEmmeansSpec>& GetEmmeans() const { return fvEmmeans; }

  // Main fit. The Hessian criterion is 0 (not used) by default.
  MCConvType GetHConvergeType() const { return fHConvergeType; }
  void SetHConvergeType(MCConvType type) { fHConvergeType = type; }
  MCConvType GetLConvergeType() const { return fLConvergeType; }
  void SetLConvergeType(MCConvType type) { fLConvergeType = type; }
  MCConvType GetPConvergeType() const { return fPConvergeType; }
  void SetPConvergeType(MCConvType type) { fPConvergeType = type; }
  double GetToleranceHessian() const { return fToleranceHessian; }
  void SetToleranceHessian(double tolerance) { fToleranceHessian = tolerance; }

  // Constrained fit: 100 iterations, Hessian and log-likelihood criteria 0,
  // parameter criterion 1e-6 by default.
  int GetMaxIterationsSQP() const { return fMaxIterationsSQP; }
  void SetMaxIterationsSQP(int n) { fMaxIterationsSQP = n; }
  MCConvType GetHConvergeTypeSQP() const { return fHConvergeTypeSQP; }
  void SetHConvergeTypeSQP(MCConvType type) { fHConvergeTypeSQP = type; }
  MCConvType GetLConvergeTypeSQP() const { return fLConvergeTypeSQP; }
  void SetLConvergeTypeSQP(MCConvType type) { fLConvergeTypeSQP = type; }
  MCConvType GetPConvergeTypeSQP() const { return fPConvergeTypeSQP; }
  void SetPConvergeTypeSQP(MCConvType type) { fPConvergeTypeSQP = type; }
  double GetToleranceHessianSQP() const { return fToleranceHessianSQP; }
  void SetToleranceHessianSQP(double tolerance) { fToleranceHessianSQP = tolerance; }
  double GetToleranceLogLikeSQP() const { return fToleranceLogLikeSQP; }
  void SetToleranceLogLikeSQP(double tolerance) { fToleranceLogLikeSQP = tolerance; }
  double GetToleranceParamSQP() const { return fToleranceParamSQP; }
  void SetToleranceParamSQP(double tolerance) { fToleranceParamSQP = tolerance; }

  // Profile-likelihood intervals: 100 iterations, criteria 1e-4 by default.
  int GetMaxIterationsPLCI() const { return fMaxIterationsPLCI; }
  void SetMaxIterationsPLCI(int n) { fMaxIterationsPLCI = n; }
  double GetToleranceHessianPLCI() const { return fToleranceHessianPLCI; }
  void SetToleranceHessianPLCI(double tolerance) { fToleranceHessianPLCI = tolerance; }
  double GetToleranceLogLikePLCI() const { return fToleranceLogLikePLCI; }
  void SetToleranceLogLikePLCI(double tolerance) { fToleranceLogLikePLCI = tolerance; }

  // Type I and III tests: relative log-likelihood criterion 1e-4 by default.
  MCConvType GetLConvergeTypeTypeIandIII() const { return fLConvergeTypeTypeIandIII; }
  void SetLConvergeTypeTypeIandIII(MCConvType type) { fLConvergeTypeTypeIandIII = type; }
  double GetTolLogLikeTypeIandIII() const { return fTolLogLikeTypeIandIII; }
  void SetTolLogLikeTypeIandIII(double tolerance) { fTolLogLikeTypeIandIII = tolerance; }

  using MCMath_850::MCLogRegSettings::Display;
  void Display(std::ostream& os) const override;

 private:
  int fOffset;
  double fOffsetValue;
  MCMath_850::MCConst::MCOffsetType fOffsetType;
  MCMath_850::MCConst::MCEffectAnalysisType fEffectAnalysisType;
  GZLConst_850::EffectAnalysisStat fEffectAnalysisStat;
  int fCSIteration;
  GZLConst_850::CIType fCIType;
  double fCIConvProfile;
  bool fbGEFTest;
  bool fbModelFittingTest;
  MCMath_850::MCConst::MCHessianCompMethod fHessianCompMethod;
  std::vector<MCMath_850::MCEmmeansSpec> fvEmmeans;
  MCConvType fHConvergeType;
  MCConvType fLConvergeType;
  MCConvType fPConvergeType;
  double fToleranceHessian;
  int fMaxIterationsSQP;
  MCConvType fHConvergeTypeSQP;
  MCConvType fLConvergeTypeSQP;
  MCConvType fPConvergeTypeSQP;
  double fToleranceHessianSQP;
  double fToleranceLogLikeSQP;
  double fToleranceParamSQP;
  int fMaxIterationsPLCI;
  double fToleranceHessianPLCI;
  double fToleranceLogLikePLCI;
  MCConvType fLConvergeTypeTypeIandIII;
  double fTolLogLikeTypeIandIII;
};

}  // namespace GZLM_NAMESPACE_850
