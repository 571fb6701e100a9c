#pragma once

class MIXFactory;

// The scores a fit saves (/SAVE): after the output pass of a GLMIXFIT
// command that saves variables, the host runs the procedure's scoring pass
// (PrepareScoringPass, then ScoringDataPass for every split), which makes
// the variables and writes the scores of every case the fit used. The
// variables stay in the active data for the commands that follow.
class AppScoringPass {
 public:
  // While one lives, the pass is part of every run of the procedure.
  class Installed {
   public:
    Installed();
    ~Installed();
    Installed(const Installed&) = delete;
    Installed& operator=(const Installed&) = delete;
  };

  static void Run(MIXFactory& factory);
};
