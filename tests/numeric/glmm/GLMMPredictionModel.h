#pragma once

#include <map>
#include <string>
#include <vector>

#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"
#include "numeric/math/MCModelEffect.h"

// Test-only: the models of the prediction tests, set up as
// tests/numeric/reference/make_eblup_reference.R fits them, with every
// random block asking for its predictions unless told otherwise.
class GLMMPredictionModel {
 public:
  // Before loading: whether block i asks for its predictions (missing: yes).
  void SetAskEBLUPs(const std::vector<bool>& ask) { fvbAskEBLUPs = ask; }

  // Reaction 0, Days 1, Subject 2; random intercept and Days by Subject, UN.
  bool LoadSleepstudy();
  // distance 0, age 1, Subject 2, Sex 3; age*Sex with a random intercept by Subject.
  bool LoadOrthodont();
  // The same with AR1 residuals by Subject over age.
  bool LoadOrthodontAR1();
  // yield 0, Block 1, Variety 2, nitro 3; Variety*nitro with an intercept by
  // Block and an intercept by Block*Variety.
  bool LoadOats();
  // diameter 0, plate 1, sample 2; blocks "plate" and "sample" without subjects.
  bool LoadPenicillin();

  GLMMTestRecords& GetRecords() { return fRecords; }
  const MCGLMM_850::GLMMSettings& GetSettings() const { return fSettings; }
  MCGLMM_850::GLMMSettings& GetSettings() { return fSettings; }
  // The reference's name of the grouping of each random block.
  const std::map<std::string, int>& GetGroupBlocks() const { return fmGroupBlocks; }

  static std::string FixturePath(const std::string& model);

 private:
  void AddFactors(const std::vector<int>& factors);
  MCGLMM_850::GLMMRandomSpec Block(const std::vector<MCMath_850::MCModelEffect>& effects,
                                   const std::vector<int>& subjects, GLMMConst_850::CovarType type, int index) const;

  GLMMTestRecords fRecords;
  MCGLMM_850::GLMMSettings fSettings;
  std::map<std::string, int> fmGroupBlocks;
  std::vector<bool> fvbAskEBLUPs;
};
