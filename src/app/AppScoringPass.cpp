#include "app/AppScoringPass.h"

#include "host/data/ZORV_Progress.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "run/MIXFactory.h"
#include "run/MixDriver.h"
#include "specs/MIXValidSpecs.h"

AppScoringPass::Installed::Installed() { MixSetHostPass(Run); }

AppScoringPass::Installed::~Installed() { MixSetHostPass(nullptr); }

void AppScoringPass::Run(MIXFactory& factory) {
  if (factory.GetSpecs()->GetNSaveVars() <= 0 || !factory.PrepareScoringPass()) return;
  ZORV_Progress::Begin("Saving scores");
  while (factory.StartNewSplit(true)) {
    // A split whose fit failed has said so; a failure of the scores alone is
    // told here.
    const MCGLMM_850::GLMMAlgorithm* algorithm = factory.GetGLMMAlgorithm();
    const bool fitted = algorithm != nullptr && !algorithm->GetStatus().IsError();
    factory.ScoringDataPass();
    if (fitted && factory.GetStatus().IsError()) factory.DisplayMessage(factory.GetStatus());
  }
}
