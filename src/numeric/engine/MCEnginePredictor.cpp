#include "numeric/engine/MCEnginePredictor.h"

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/detail/MCEngineFitterImpl.h"
#include "numeric/engine/detail/MCEnginePredictorImpl.h"

namespace MCEngine_850 {

MCEnginePredictor::MCEnginePredictor() : fpImpl(std::make_unique<MCEnginePredictorImpl>()) {}

MCEnginePredictor::~MCEnginePredictor() = default;

bool MCEnginePredictor::Setup(const MCEngineFitter& fitter, const MCEngineInput& input) {
  // A generalized fit is predicted from its last working model.
  const MCEngineInput* pWorking = fitter.GetWorkingInput();
  return fpImpl->Setup(*fitter.fpImpl, pWorking != nullptr ? *pWorking : input);
}

bool MCEnginePredictor::IsReady() const { return fpImpl->IsReady(); }

void MCEnginePredictor::SetResidualDF(bool residual) { fpImpl->SetResidualDF(residual); }

bool MCEnginePredictor::GetResidualDF() const { return fpImpl->GetResidualDF(); }

void MCEnginePredictor::SetMaxGroupRecords(int records) { fpImpl->SetMaxGroupRecords(records); }

void MCEnginePredictor::SetSetupSpace(SetupSpace space) { fpImpl->SetSetupSpace(space); }

double MCEnginePredictor::GetSetupWork() const { return fpImpl->GetSetupWork(); }

double MCEnginePredictor::GetLargestSetupMatrix() const { return fpImpl->GetLargestSetupMatrix(); }

bool MCEnginePredictor::HasSubject(int block, int subject) const { return fpImpl->HasSubject(block, subject); }

MCEnginePrediction MCEnginePredictor::Predict(const std::vector<double>& x,
                                              const std::vector<MCEngineRandomEntry>& z) const {
  return fpImpl->Predict(x, z);
}

}  // namespace MCEngine_850
