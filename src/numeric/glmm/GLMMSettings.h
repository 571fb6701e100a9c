#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/glmm/CustomTest.h"
#include "numeric/glmm/GLMMConst.h"
#include "numeric/glmm/GLMMRandomSpec.h"
#include "numeric/glmm/GLMMTargetSpec.h"
#include "numeric/gzl/GZLSettings.h"

namespace MCGLMM_850 {

// Settings of a mixed model: the generalized linear settings plus the random
// blocks, the residual (repeated) block, spatial coordinates, the estimation
// of the covariance parameters and the scores to save.
class GLMMSettings : public GZLM_NAMESPACE_850::GZLSettings {
 public:
  GLMMSettings();
  ~GLMMSettings() override;

  void AddRandomSpec(const GLMMRandomSpec& spec) { fvRandomSpecs.push_back(spec); }
  int GetNRandomSpecs() const { return static_cast<int>(fvRandomSpecs.size()); }
  const std::vector<GLMMRandomSpec>& GetRandomSpecs() const { return fvRandomSpecs; }

  // The residual block; by default it has no effects, no subjects and DIAG.
  void SetRepeated(const GLMMRandomSpec& spec) { fRepeated = spec; }
  const GLMMRandomSpec& GetRepeated() const { return fRepeated; }

  // Custom hypothesis tests, their random rows naming effects by their place
  // in the flat list of the blocks' effects. An extension of the settings:
  // the fit computes each test after the estimates.
  void SetCustomTests(const std::vector<CustomTest>& tests) { fvCustomTests = tests; }
  const std::vector<CustomTest>& GetCustomTests() const { return fvCustomTests; }

  // The target's distribution and link and the fitting of a generalized
  // model; a normal target with the identity link by default.
  void SetTargetSpec(const GLMMTargetSpec& spec) { fTargetSpec = spec; }
  const GLMMTargetSpec& GetTargetSpec() const { return fTargetSpec; }

  void AddSpatialVar(int index) { fvSpatialVars.push_back(index); }
  const std::vector<int>& GetSpatialVars() const { return fvSpatialVars; }

  // REML by default.
  GLMMConst_850::ThetaEstType GetThetaEstType() const { return fThetaEstType; }
  void SetThetaEstType(GLMMConst_850::ThetaEstType type) { fThetaEstType = type; }
  // Satterthwaite by default.
  GLMMConst_850::DegreesFreedomType GetDegreesFreedomType() const { return fDegreesFreedomType; }
  void SetDegreesFreedomType(GLMMConst_850::DegreesFreedomType type) { fDegreesFreedomType = type; }
  // Iterations that use Fisher scoring before Newton-Raphson; 2 by default.
  int GetMaxFisherIterNum() const { return fMaxFisherIterNum; }
  void SetMaxFisherIterNum(int n) { fMaxFisherIterNum = n; }
  const std::vector<GLMMConst_850::ScoreType>& GetScoringTypes() const { return fvScoringTypes; }
  void SetScoringTypes(const std::vector<GLMMConst_850::ScoreType>& types) { fvScoringTypes = types; }
  // The settings come from the mixed procedure; off by default.
  bool GetUse4Mixed() const { return fbUse4Mixed; }
  void SetUse4Mixed(bool use) { fbUse4Mixed = use; }

  // The variables by which records must be sorted before a fit: the subject
  // variables of the residual block, then those of each random block in
  // order, each variable once. Fills the vector and returns the count.
  int GetSortDataVariables(std::vector<int>& sortVars) const;

  using GZLM_NAMESPACE_850::GZLSettings::Display;
  void Display(std::ostream& os) const override;

 private:
  std::vector<GLMMRandomSpec> fvRandomSpecs;
  GLMMRandomSpec fRepeated;
  std::vector<int> fvSpatialVars;
  std::vector<CustomTest> fvCustomTests;
  GLMMTargetSpec fTargetSpec;
  GLMMConst_850::ThetaEstType fThetaEstType;
  GLMMConst_850::DegreesFreedomType fDegreesFreedomType;
  int fMaxFisherIterNum;
  std::vector<GLMMConst_850::ScoreType> fvScoringTypes;
  bool fbUse4Mixed;
};

}  // namespace MCGLMM_850
