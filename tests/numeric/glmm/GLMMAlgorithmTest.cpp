#include "numeric/glmm/GLMMAlgorithm.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "numeric/common/RecordIterator.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/xml/MCApplicInfo4XML.h"
#include "numeric/xml/MCVarList.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMSettings;
using MCXML_850::IMCVariable;
using MCXML_850::MCVarList;
using namespace MCMath_850::MCConst;

namespace {

// Target y, factor a, covariate x, subject s.
MCVarList FourVariables() {
  MCVarList list;
  list.AddVariable(IMCVariable("y", ROLE_TARGET, MEASURE_CONTINUOUS));
  list.AddVariable(IMCVariable("a", ROLE_PREDICTOR, MEASURE_NOMINAL));
  list.AddVariable(IMCVariable("x", ROLE_PREDICTOR, MEASURE_CONTINUOUS));
  list.AddVariable(IMCVariable("s", ROLE_PREDICTOR, MEASURE_NOMINAL));
  return list;
}

GLMMSettings ValidSettings() {
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(1, 2);
  settings.AddCovariate(2);
  MCMath_850::MCModelEffect effect;
  effect.AddNewFactor(1, true);
  effect.SetVarsIndicesForTheEffectInSetting({1});
  settings.AddModelEffect(effect);
  MCGLMM_850::GLMMRandomSpec block;
  block.AddEffect(MCMath_850::MCModelEffect());
  block.AddSubjectVar(3);
  settings.AddRandomSpec(block);
  return settings;
}

class EmptyIterator : public MCCommon_850::RecordIterator {
 public:
  bool HasRecord() const override { return false; }
  void Next() override {}
  int GetState() const override { return 3; }
  void Rewind() override {}
  const double* Current() const override { return nullptr; }
};

// Stands in for a fit: fills the statistics through the protected hooks.
class FilledAlgorithm : public GLMMAlgorithm {
 public:
  FilledAlgorithm(const GLMMSettings& settings, const MCVarList& varList, bool* pDeleted)
      : GLMMAlgorithm(settings, varList), fpDeleted(pDeleted) {}
  ~FilledAlgorithm() override { *fpDeleted = true; }
  MCCommon_850::MCStatus Execute(MCCommon_850::RecordIterator*, int) override {
    MutableOutputStats().SetLogLikehood(42.0);
    SetOutputAvailable(true);
    AddWarning(MCCommon_850::MCStatus(130070, false));
    SetStatus(MCCommon_850::MCStatus(130070, false));
    return GetStatus();
  }

 private:
  bool* fpDeleted;
};

}  // namespace

TEST(GLMMAlgorithm, ValidSettingsGiveOK) {
  const GLMMSettings settings = ValidSettings();
  const MCVarList varList = FourVariables();
  GLMMAlgorithm algorithm(settings, varList);
  EXPECT_TRUE(algorithm.GetStatus().IsOK());
  EXPECT_TRUE(algorithm.GetWarnings().empty());
  EXPECT_EQ(algorithm.GetOutputStats(), nullptr);
  EXPECT_EQ(&algorithm.GetSettings(), &settings);
  EXPECT_EQ(&algorithm.GetVarList(), &varList);
}

TEST(GLMMAlgorithm, NoRecordsMeansNoValidCases) {
  const GLMMSettings settings = ValidSettings();
  const MCVarList varList = FourVariables();
  GLMMAlgorithm algorithm(settings, varList);
  EmptyIterator records;
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 230024);
  EXPECT_EQ(algorithm.GetStatus().GetErrorCode(), 230024);
  EXPECT_EQ(algorithm.GetOutputStats(), nullptr);
}

TEST(GLMMAlgorithm, ModelDocumentsBeforeAFitAreAnErrorAndWriteNothing) {
  const GLMMSettings settings = ValidSettings();
  const MCVarList varList = FourVariables();
  GLMMAlgorithm algorithm(settings, varList);
  std::ostringstream os;
  MCXML_850::MCApplicInfo4XML info;
  EXPECT_EQ(algorithm.ExportPMML(os, &info).GetErrorCode(), 130093);
  EXPECT_TRUE(algorithm.ExportPMML(os, &info).IsError());
  EXPECT_EQ(algorithm.ExportStatXML(os).GetErrorCode(), 130093);
  EXPECT_TRUE(os.str().empty());
}

TEST(GLMMAlgorithm, NoTargetMeansInvalidSettings) {
  GLMMSettings settings = ValidSettings();
  settings.SetSingleDependent(-1);
  const MCVarList varList = FourVariables();
  GLMMAlgorithm algorithm(settings, varList);
  EXPECT_TRUE(algorithm.GetStatus().IsError());
  EXPECT_EQ(algorithm.GetStatus().GetErrorCode(), 130009);
  EmptyIterator records;
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_EQ(status.GetErrorCode(), 130009);
  EXPECT_EQ(algorithm.GetOutputStats(), nullptr);
}

TEST(GLMMAlgorithm, VariablesOutsideTheListMeanInvalidSettings) {
  const MCVarList varList = FourVariables();
  GLMMSettings badFactor = ValidSettings();
  badFactor.AddFactor(4, 2);
  EXPECT_TRUE(GLMMAlgorithm(badFactor, varList).GetStatus().IsError());

  GLMMSettings badSubject = ValidSettings();
  MCGLMM_850::GLMMRandomSpec repeated;
  repeated.AddSubjectVar(9);
  badSubject.SetRepeated(repeated);
  EXPECT_TRUE(GLMMAlgorithm(badSubject, varList).GetStatus().IsError());

  GLMMSettings badWeight = ValidSettings();
  badWeight.SetRegrWeightVar(4);
  EXPECT_TRUE(GLMMAlgorithm(badWeight, varList).GetStatus().IsError());

  GLMMSettings badEffect = ValidSettings();
  MCMath_850::MCModelEffect effect;
  effect.SetVarsIndicesForTheEffectInSetting({7});
  badEffect.AddModelEffect(effect);
  EXPECT_TRUE(GLMMAlgorithm(badEffect, varList).GetStatus().IsError());

  const MCVarList empty;
  EXPECT_TRUE(GLMMAlgorithm(ValidSettings(), empty).GetStatus().IsError());
}

TEST(GLMMAlgorithm, ScoreTypes) {
  const GLMMSettings settings = ValidSettings();
  const MCVarList varList = FourVariables();
  GLMMAlgorithm algorithm(settings, varList);
  EXPECT_TRUE(algorithm.GetCompScoreTypes().empty());
  algorithm.SetCompScoreTypes({GLMMConst_850::SCORE_FIXED_PREDICTED, GLMMConst_850::SCORE_PREDICTED_DF});
  EXPECT_EQ(algorithm.GetCompScoreTypes(),
            (std::vector<GLMMConst_850::ScoreType>{GLMMConst_850::SCORE_FIXED_PREDICTED,
                                                   GLMMConst_850::SCORE_PREDICTED_DF}));
}

TEST(GLMMAlgorithm, FittingCodeFillsThroughTheHooks) {
  const GLMMSettings settings = ValidSettings();
  const MCVarList varList = FourVariables();
  bool deleted = false;
  std::unique_ptr<GLMMAlgorithm> algorithm(new FilledAlgorithm(settings, varList, &deleted));
  EmptyIterator records;
  const MCCommon_850::MCStatus status = algorithm->Execute(&records, 0);
  EXPECT_TRUE(status.IsWarning());
  ASSERT_NE(algorithm->GetOutputStats(), nullptr);
  EXPECT_EQ(algorithm->GetOutputStats()->GetLogLikehood(), 42.0);
  ASSERT_EQ(algorithm->GetWarnings().size(), 1u);
  EXPECT_EQ(algorithm->GetWarnings()[0].GetErrorCode(), 130070);
  algorithm.reset();
  EXPECT_TRUE(deleted);
}

TEST(GLMMAlgorithm, Display) {
  const GLMMSettings settings = ValidSettings();
  const MCVarList varList = FourVariables();
  GLMMAlgorithm algorithm(settings, varList);
  std::ostringstream os;
  algorithm.Display(os);
  const std::string text = os.str();
  EXPECT_EQ(text.rfind("Begin GLMMAlgorithm display.\nStatus code: 0\nStatus kind: OK\nWarnings: 0\n", 0), 0u);
  EXPECT_NE(text.find("\nDependent variable: 0\n"), std::string::npos);
  EXPECT_NE(text.find("\nBegin MCVarList display.\n"), std::string::npos);
  EXPECT_NE(text.find("\nNo output statistics are available.\nEnd GLMMAlgorithm display.\n"), std::string::npos);
}
