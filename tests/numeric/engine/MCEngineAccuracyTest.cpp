// Fits of the reference models compared with the values written by
// tests/numeric/reference/make_reference.R.
#include <gtest/gtest.h>

#include <memory>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/engine/MCEngineTestDesign.h"
#include "numeric/engine/MCEngineTestFixture.h"

using namespace MCEngine_850;

namespace {

using Model = MCEngineTestFixture::Model;

std::unique_ptr<Model> Load(const std::string& file, const std::set<std::string>& factors) {
  return MCEngineTestFixture::Load(file, factors);
}
MCEngineSettings Settings(bool reml, MCEngineSettings::SolverPath path = MCEngineSettings::kAutomatic) {
  MCEngineSettings s;
  s.SetREML(reml);
  s.SetSolverPath(path);
  return s;
}

void FitAndCompare(Model& m, const std::string& fixture, bool reml = true,
                   MCEngineSettings::SolverPath path = MCEngineSettings::kAutomatic) {
  m.fInput = m.fpDesign->Build();
  MCEngineFitter fitter;
  fitter.Fit(m.fInput, Settings(reml, path));
  MCEngineTestFixture::Compare(fixture, fitter, *m.fpDesign);
}

std::unique_ptr<Model> Sleepstudy(MCEngineCovType type) { return MCEngineTestFixture::Sleepstudy(type); }
std::unique_ptr<Model> Orthodont() { return MCEngineTestFixture::Orthodont(); }
std::unique_ptr<Model> Oats() { return MCEngineTestFixture::Oats(); }
std::unique_ptr<Model> Machines() { return MCEngineTestFixture::Machines(); }

std::unique_ptr<Model> Pastes() {
  auto m = Load("pastes.csv", {"batch", "cask"});
  m->fpDesign->SetResponse("strength");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddRandomBlock({"batch", "batch*cask"}, "", MCEngineCovType::VC);
  return m;
}

std::unique_ptr<Model> Penicillin() { return MCEngineTestFixture::Penicillin(); }

}  // namespace

TEST(MCEngineAccuracy, SleepstudyUnstructured) {
  auto m = Sleepstudy(MCEngineCovType::UN);
  FitAndCompare(*m, "sleepstudy_un");
}

TEST(MCEngineAccuracy, SleepstudyUnstructuredByMixedModelEquations) {
  auto m = Sleepstudy(MCEngineCovType::UN);
  FitAndCompare(*m, "sleepstudy_un", true, MCEngineSettings::kMixedModelEquations);
}

TEST(MCEngineAccuracy, SleepstudyUnstructuredML) {
  auto m = Sleepstudy(MCEngineCovType::UN);
  FitAndCompare(*m, "sleepstudy_un_ml", false);
}

TEST(MCEngineAccuracy, SleepstudyUnstructuredMLByMixedModelEquations) {
  auto m = Sleepstudy(MCEngineCovType::UN);
  FitAndCompare(*m, "sleepstudy_un_ml", false, MCEngineSettings::kMixedModelEquations);
}

TEST(MCEngineAccuracy, SleepstudyVarianceComponents) {
  auto m = Sleepstudy(MCEngineCovType::VC);
  FitAndCompare(*m, "sleepstudy_vc");
}

TEST(MCEngineAccuracy, OrthodontRandomIntercept) {
  auto m = Orthodont();
  m->fpDesign->AddRandomBlock({"Intercept"}, "Subject", MCEngineCovType::VC);
  FitAndCompare(*m, "orthodont_ri");
}

TEST(MCEngineAccuracy, OrthodontRandomInterceptAndSlope) {
  auto m = Orthodont();
  m->fpDesign->AddRandomBlock({"Intercept", "age"}, "Subject", MCEngineCovType::UN);
  FitAndCompare(*m, "orthodont_un_g");
}

TEST(MCEngineAccuracy, OrthodontResidualCompoundSymmetry) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::CS);
  FitAndCompare(*m, "orthodont_cs");
}

TEST(MCEngineAccuracy, OrthodontResidualCompoundSymmetryML) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::CS);
  FitAndCompare(*m, "orthodont_cs_ml", false);
}

TEST(MCEngineAccuracy, OrthodontResidualUnstructured) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::UN);
  FitAndCompare(*m, "orthodont_un");
}

TEST(MCEngineAccuracy, OrthodontResidualAutoregressive) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::AR1);
  FitAndCompare(*m, "orthodont_ar1");
}

TEST(MCEngineAccuracy, OrthodontScaleWeights) {
  auto m = Orthodont();
  m->fpDesign->AddRandomBlock({"Intercept"}, "Subject", MCEngineCovType::VC);
  m->fInput = m->fpDesign->Build();
  std::vector<double> w;
  const int col = m->fCsv.FindColumn("age");
  for (int r = 0; r < m->fCsv.GetNRows(); ++r) w.push_back(m->fCsv.GetNumber(r, col) / 10.0);
  m->fInput.SetScaleWeights(w);
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, Settings(true));
  MCEngineTestFixture::Compare("orthodont_ri_weighted", fitter, *m->fpDesign);
}

TEST(MCEngineAccuracy, OrthodontResidualDiagonal) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::DIAG);
  FitAndCompare(*m, "orthodont_diag");
}

TEST(MCEngineAccuracy, OatsSplitPlot) {
  auto m = Oats();
  FitAndCompare(*m, "oats");
}

TEST(MCEngineAccuracy, OatsSplitPlotByMixedModelEquations) {
  auto m = Oats();
  FitAndCompare(*m, "oats", true, MCEngineSettings::kMixedModelEquations);
}

TEST(MCEngineAccuracy, MachinesWorkerInteraction) {
  auto m = Machines();
  FitAndCompare(*m, "machines");
}

TEST(MCEngineAccuracy, MachinesWorkerInteractionByMixedModelEquations) {
  auto m = Machines();
  FitAndCompare(*m, "machines", true, MCEngineSettings::kMixedModelEquations);
}

TEST(MCEngineAccuracy, PastesNested) {
  auto m = Pastes();
  FitAndCompare(*m, "pastes");
}

TEST(MCEngineAccuracy, PastesNestedAsSubjects) {
  // The same model written with subjects: an intercept by batch and by sample.
  auto m = Load("pastes.csv", {"batch", "sample"});
  m->fpDesign->SetResponse("strength");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddRandomBlock({"Intercept"}, "batch", MCEngineCovType::VC);
  m->fpDesign->AddRandomBlock({"Intercept"}, "sample", MCEngineCovType::VC);
  FitAndCompare(*m, "pastes");
}

TEST(MCEngineAccuracy, Dyestuff) {
  auto m = Load("dyestuff.csv", {"Batch"});
  m->fpDesign->SetResponse("Yield");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddRandomBlock({"Batch"}, "", MCEngineCovType::VC);
  FitAndCompare(*m, "dyestuff");
}

TEST(MCEngineAccuracy, PenicillinCrossed) {
  auto m = Penicillin();
  FitAndCompare(*m, "penicillin");
}

TEST(MCEngineAccuracy, PenicillinCrossedBySubject) {
  // Crossed factors make the whole data one group: the same fit with one dense V.
  auto m = Penicillin();
  FitAndCompare(*m, "penicillin", true, MCEngineSettings::kBySubject);
}

TEST(MCEngineAccuracy, BodyWeightResidualAutoregressive) {
  // Time is a covariate of the fixed part and the repeated-measures index of the residual.
  auto m = Load("bodyweight.csv", {"Diet", "Rat"});
  m->fpDesign->SetResponse("weight");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddFixedTerm("Diet");
  m->fpDesign->AddFixedTerm("Time");
  m->fpDesign->AddFixedTerm("Diet*Time");
  m->fpDesign->SetResidual("Rat", "Time", MCEngineCovType::AR1);
  FitAndCompare(*m, "bodyweight_ar1");
}
