// The mixed-model equations held sparse against the same equations held
// densely, and against the group-by-group path, on the reference models with
// crossed or nested random effects: the same fit to 1e-8. The sparse fits
// are also held to the R fixtures directly.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCopies.h"
#include "numeric/engine/MCEngineTestFixture.h"

using namespace MCEngine_850;

namespace {

using Model = MCEngineTestFixture::Model;

std::unique_ptr<Model> Pastes() {
  auto m = MCEngineTestFixture::Load("pastes.csv", {"batch", "cask"});
  m->fpDesign->SetResponse("strength");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddRandomBlock({"batch", "batch*cask"}, "", MCEngineCovType::VC);
  return m;
}

std::unique_ptr<Model> PastesAsSubjects() {
  auto m = MCEngineTestFixture::Load("pastes.csv", {"batch", "sample"});
  m->fpDesign->SetResponse("strength");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddRandomBlock({"Intercept"}, "batch", MCEngineCovType::VC);
  m->fpDesign->AddRandomBlock({"Intercept"}, "sample", MCEngineCovType::VC);
  return m;
}

std::unique_ptr<Model> Dyestuff() {
  auto m = MCEngineTestFixture::Load("dyestuff.csv", {"Batch"});
  m->fpDesign->SetResponse("Yield");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddRandomBlock({"Batch"}, "", MCEngineCovType::VC);
  return m;
}

std::unique_ptr<Model> OrthodontIntercept() {
  auto m = MCEngineTestFixture::Orthodont();
  m->fpDesign->AddRandomBlock({"Intercept"}, "Subject", MCEngineCovType::VC);
  return m;
}

struct Case {
  const char* fName;
  const char* fFixture;
  bool fbReml;
  std::function<std::unique_ptr<Model>()> fMake;
};

const Case kCases[] = {
    {"penicillin", "penicillin", true, [] { return MCEngineTestFixture::Penicillin(); }},
    {"pastes", "pastes", true, Pastes},
    {"pastes_as_subjects", "pastes", true, PastesAsSubjects},
    {"dyestuff", "dyestuff", true, Dyestuff},
    {"oats", "oats", true, [] { return MCEngineTestFixture::Oats(); }},
    {"machines", "machines", true, [] { return MCEngineTestFixture::Machines(); }},
    {"sleepstudy_vc", "sleepstudy_vc", true, [] { return MCEngineTestFixture::Sleepstudy(MCEngineCovType::VC); }},
    {"sleepstudy_un", "sleepstudy_un", true, [] { return MCEngineTestFixture::Sleepstudy(MCEngineCovType::UN); }},
    {"sleepstudy_un_ml", "sleepstudy_un_ml", false,
     [] { return MCEngineTestFixture::Sleepstudy(MCEngineCovType::UN); }},
    {"orthodont_ri", "orthodont_ri", true, OrthodontIntercept},
};

class MCEngineSparsePath : public ::testing::TestWithParam<Case> {};

TEST_P(MCEngineSparsePath, EqualsTheDenseEquations) {
  const Case& c = GetParam();
  auto m = c.fMake();
  m->fInput = m->fpDesign->Build();
  MCEngineFitter dense, sparse;
  ASSERT_FALSE(dense.Fit(m->fInput, MCEngineTestFixture::Tight(c.fbReml, MCEngineSettings::kMixedModelEquations)).IsError());
  ASSERT_FALSE(sparse.Fit(m->fInput, MCEngineTestFixture::Tight(c.fbReml, MCEngineSettings::kSparseEquations)).IsError());
  EXPECT_EQ(sparse.GetResult().GetSolverPath(), MCEngineSettings::kSparseEquations);
  MCEngineTestCopies::ExpectSameFit(sparse.GetResult(), dense.GetResult(), 1e-8);
}

TEST_P(MCEngineSparsePath, MatchesTheReference) {
  const Case& c = GetParam();
  auto m = c.fMake();
  m->fInput = m->fpDesign->Build();
  MCEngineSettings s;
  s.SetREML(c.fbReml);
  s.SetSolverPath(MCEngineSettings::kSparseEquations);
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, s);
  MCEngineTestFixture::Compare(c.fFixture, fitter, *m->fpDesign);
}

INSTANTIATE_TEST_SUITE_P(ReferenceModels, MCEngineSparsePath, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) { return std::string(info.param.fName); });

}  // namespace
