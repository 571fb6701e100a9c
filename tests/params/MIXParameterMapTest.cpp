// Labels of the parameters and effects of one fitted model.
#include <gtest/gtest.h>

#include "ParamsTestSupport.h"
#include "params/MIXLabelGrammar.h"
#include "params/MIXParameterMap.h"

using namespace params_test;

namespace {

enum { Y = 0, A = 1, B = 2, C = 3, G = 4, S = 5, T = 6, X = 7 };

// Six cases of three factors, a string factor, two subject variables and a
// covariate.
void MakeLabelFile(ZORV_Dataset& data) {
  const char* names[] = {"y", "A", "B", "C", "g", "S", "T", "X"};
  for (int i = 0; i < 8; ++i) data.AddVariable(names[i], i == G ? 6 : 0);
  data.GetVariable(A)->SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
  data.GetVariable(B)->SetFormat(ZORV_Format(ZORV_Format::F, 5, 1));
  data.GetVariable(C)->SetFormat(ZORV_Format(ZORV_Format::F, 3, 0));
  data.GetVariable(G)->SetFormat(ZORV_Format(ZORV_Format::A, 6, 0));
  data.AppendCases(6);
  const char* gs[] = {"north", "south", "north", "south", "north", "south"};
  for (long r = 0; r < 6; ++r) {
    data.SetNum(r, Y, static_cast<double>(r * r));
    data.SetNum(r, A, static_cast<double>(r % 2 + 1));
    data.SetNum(r, B, static_cast<double>(r % 3) + 0.5);
    data.SetNum(r, C, static_cast<double>(r / 3 + 10));
    data.SetString(r, G, gs[r]);
    data.SetNum(r, S, static_cast<double>(r / 2));
    data.SetNum(r, T, static_cast<double>(r % 2));
    data.SetNum(r, X, 0.5 * static_cast<double>(r));
  }
}

class ParameterMapTest : public ParamsTest {
 protected:
  ParameterMapTest() {
    MakeLabelFile(fData);
    fpRun = std::make_unique<ModelRun>(fData);
    fpRun->SetTarget(Y);
    fpRun->SetPredictors({A, B, C, G, S, T}, {X});
  }
  ~ParameterMapTest() override { fpRun.reset(); }

  // Completes the model and stands on its only split.
  void Complete() {
    fpRun->Complete();
    fpRun->fpAdapter->ChangeSplitNoIter();
  }
  const GLMMSettings& Settings() const { return *fpRun->fSpecs.GetCompSettingsPtr(); }
  const std::vector<MCModelEffect>& Effects() const { return Settings().GetModelEffects(); }
  // The component index of a column.
  int Comp(int column) const { return fpRun->fSpecs.GetVarValidSpecsPtr()->GetRecVarIndex(column); }
  MIXParameterMap NewMap() { return MIXParameterMap(&fpRun->fSpecs, fData, fpRun->fpAdapter.get()); }

  // A component parameter of effect `e` with these category codes.
  MCRegrParameter Param(int e, const std::vector<int>& codes) const {
    MCRegrParameter param;
    EXPECT_TRUE(param.SetupFromEffect(Effects()[static_cast<std::size_t>(e)], e));
    EXPECT_EQ(param.GetCategories().size(), codes.size());
    for (std::size_t i = 0; i < codes.size() && i < param.GetCategories().size(); ++i) {
      param.GetCategories()[i] = codes[i];
    }
    return param;
  }

  ZORV_Dataset fData;
  std::unique_ptr<ModelRun> fpRun;
};

using ParameterMapDeathTest = ParameterMapTest;

}  // namespace

TEST(MIXLabelGrammar, ComposesLevelsFromTheHighestDown) {
  EXPECT_EQ(MIXLabelGrammar::Compose({"A", "B"}, {2, 1}, {}, false), "A(B)");
  EXPECT_EQ(MIXLabelGrammar::Compose({"A", "B"}, {0, 0}, {}, false), "A * B");
  EXPECT_EQ(MIXLabelGrammar::Compose({"A", "B", "C"}, {1, 2, 3}, {}, false), "C(B(A))");
  EXPECT_EQ(MIXLabelGrammar::Compose({"A", "B", "C"}, {0, 0, 1}, {}, false), "C(A * B)");
  EXPECT_EQ(MIXLabelGrammar::Compose({"A"}, {0}, {"X"}, false), "A * X");
  EXPECT_EQ(MIXLabelGrammar::Compose({"A"}, {1}, {"X", "X"}, true), "X * X(A)");
  EXPECT_EQ(MIXLabelGrammar::Compose({}, {}, {"X", "Z"}, true), "X * Z");
  EXPECT_EQ(MIXLabelGrammar::Compose({}, {}, {}, false), "");
}

TEST(MIXLabelGrammar, SuffixesAndFactorTexts) {
  EXPECT_EQ(MIXLabelGrammar::ParamSubjectSuffix(""), "");
  EXPECT_EQ(MIXLabelGrammar::EffectSubjectSuffix(""), "");
  EXPECT_EQ(MIXLabelGrammar::ParamSubjectSuffix("S * T"), " | S * T");
  EXPECT_EQ(MIXLabelGrammar::EffectSubjectSuffix("S * T"), "[subject = S * T");
  EXPECT_EQ(MIXLabelGrammar::FactorValueText("A", "1"), "[A=1]");
  EXPECT_EQ(MIXLabelGrammar::JoinNames({"S", "T", "U"}), "S * T * U");
  EXPECT_EQ(MIXLabelGrammar::InterceptText(), "Intercept");
}

TEST_F(ParameterMapTest, EffectLabelsFollowTheGrammar) {
  fpRun->AddFixed(fpRun->Effect({}, {X, X}));
  fpRun->AddFixed(fpRun->Effect({{A, false}}, {X}, true));
  fpRun->AddFixed(fpRun->Effect({{A, false}, {B, true}, {C, true}}, {}));
  fpRun->AddFixed(fpRun->Effect({{A, false}, {G, false}}, {X}));
  fpRun->AddFixed(fpRun->Effect({{B, false}, {A, true}}, {}));
  Complete();
  MIXParameterMap map = NewMap();
  map.CreateEffectMap(Effects());
  EXPECT_EQ(map.GetEffectMap(false),
            (std::vector<std::string>{"X * X", "X(A)", "C(B(A))", "A * g * X", "A(B)"}));
  EXPECT_EQ(map.GetEffectMapSize(), 5);
}

TEST_F(ParameterMapTest, ParameterLabelsCarryTheValues) {
  fpRun->SetIntercept(true);
  fpRun->AddFixed(fpRun->Effect({{A, false}, {G, false}}, {}));
  fpRun->AddFixed(fpRun->Effect({{B, false}, {A, true}}, {}));
  fpRun->AddFixed(fpRun->Effect({{C, false}}, {X, X}));
  fpRun->AddFixed(fpRun->Effect({{A, false}}, {X}, true));
  fpRun->AddFixed(fpRun->Effect({}, {X}));
  Complete();
  // A: 1 2; B: 0.5 1.5 2.5; C: 10 11; g: north south.
  std::vector<MCRegrParameter> params;
  params.emplace_back();
  params.push_back(Param(0, {1, 0}));
  params.push_back(Param(1, {2, 0}));
  params.push_back(Param(2, {1}));
  params.push_back(Param(3, {0}));
  params.push_back(Param(4, {}));
  MIXParameterMap map = NewMap();
  map.CreateParameterMap(params, Effects());
  EXPECT_EQ(map.GetParameterMap(false),
            (std::vector<std::string>{"Intercept", "[A=2] * [g=north]", "[A=1]([B=2.5])", "[C=11] * X * X",
                                      "X([A=1])", "X"}));
  EXPECT_EQ(map.GetParamMapSize(), 6);
  // The fixed intercept has no effect, so it stands in no effect's list.
  const std::vector<std::vector<std::string>>& byEffect = map.GetParamMapsEff(false);
  ASSERT_EQ(byEffect.size(), 5u);
  EXPECT_EQ(byEffect[0], std::vector<std::string>{"[A=2] * [g=north]"});
  EXPECT_EQ(byEffect[4], std::vector<std::string>{"X"});
  // Without subjects the suffixed lists are the same.
  EXPECT_EQ(map.GetParameterMap(true), map.GetParameterMap(false));
  EXPECT_EQ(map.GetParamMapsEff(true), map.GetParamMapsEff(false));
}

TEST_F(ParameterMapTest, WithoutSubjectsBothEffectListsAgree) {
  fpRun->AddFixed(fpRun->Effect({{A, false}}, {}));
  fpRun->AddFixed(fpRun->Effect({}, {X}));
  Complete();
  MIXParameterMap map = NewMap();
  map.CreateEffectMap(Effects(), {});
  EXPECT_EQ(map.GetEffectMap(true), map.GetEffectMap(false));
  EXPECT_EQ(map.GetEffectMap(true), (std::vector<std::string>{"A", "X"}));
}

TEST_F(ParameterMapTest, SubjectSuffixes) {
  fpRun->AddRandom({fpRun->Intercept(), fpRun->Effect({}, {X})}, {S, T});
  Complete();
  const GLMMRandomSpec& block = Settings().GetRandomSpecs()[0];
  MIXParameterMap map = NewMap();
  EXPECT_EQ(map.GetCombSubjString(block.GetSubjectVars()), "S * T");
  EXPECT_EQ(map.GetCombSubjString({}), "");
  map.CreateEffectMap(block.GetEffects(), block.GetSubjectVars());
  EXPECT_EQ(map.GetEffectMap(false), (std::vector<std::string>{"Intercept", "X"}));
  EXPECT_EQ(map.GetEffectMap(true), (std::vector<std::string>{"Intercept[subject = S * T", "X[subject = S * T"}));

  MCRegrParameter intercept;
  intercept.SetEffectIndex(0);
  MCRegrParameter slope;
  ASSERT_TRUE(slope.SetupFromEffect(block.GetEffects()[1], 1));
  map.CreateParameterMap({intercept, slope}, block.GetEffects(), block.GetSubjectVars());
  EXPECT_EQ(map.GetParameterMap(false), (std::vector<std::string>{"Intercept", "X"}));
  EXPECT_EQ(map.GetParameterMap(true), (std::vector<std::string>{"Intercept | S * T", "X | S * T"}));
  // A random intercept belongs to an effect, so its label is in that
  // effect's list too.
  EXPECT_EQ(map.GetParamMapsEff(false), (std::vector<std::vector<std::string>>{{"Intercept"}, {"X"}}));
  EXPECT_EQ(map.GetParamMapsEff(true),
            (std::vector<std::vector<std::string>>{{"Intercept | S * T"}, {"X | S * T"}}));
}

TEST_F(ParameterMapTest, ASecondCreateLeavesTheLists) {
  fpRun->AddFixed(fpRun->Effect({{A, false}}, {}));
  fpRun->AddFixed(fpRun->Effect({}, {X}));
  Complete();
  MIXParameterMap map = NewMap();
  map.CreateParameterMap({Param(0, {0}), Param(0, {1})}, Effects());
  map.CreateEffectMap(Effects());
  const std::vector<std::string> params = map.GetParameterMap(false);
  const std::vector<std::string> effects = map.GetEffectMap(false);
  EXPECT_EQ(params, (std::vector<std::string>{"[A=1]", "[A=2]"}));

  map.CreateParameterMap({Param(1, {})}, Effects(), {Comp(S)});
  map.CreateEffectMap({Effects()[1]}, {Comp(S)});
  EXPECT_EQ(map.GetParameterMap(false), params);
  EXPECT_EQ(map.GetParameterMap(true), params);
  EXPECT_EQ(map.GetEffectMap(false), effects);
  EXPECT_EQ(map.GetEffectMap(true), effects);
  EXPECT_EQ(map.GetParamMapsEff(false).size(), 2u);
}

TEST_F(ParameterMapTest, EmptyListsBeforeCreation) {
  Complete();
  MIXParameterMap map = NewMap();
  EXPECT_TRUE(map.GetParameterMap(false).empty());
  EXPECT_TRUE(map.GetEffectMap(true).empty());
  EXPECT_EQ(map.GetParamMapSize(), 0);
  EXPECT_EQ(map.GetEffectMapSize(), 0);
  EXPECT_EQ(map.GetValidSpecs(), &fpRun->fSpecs);
}

TEST_F(ParameterMapDeathTest, AParameterOutsideTheInterceptNeedsAnEffect) {
  fpRun->AddFixed(fpRun->Effect({{A, false}}, {}));
  Complete();
  MCRegrParameter param = Param(0, {0});
  param.SetEffectIndex(-1);
  MIXParameterMap map = NewMap();
  EXPECT_DEATH(map.CreateParameterMap({param}, Effects()), AssertText("effectIndex >= 0"));
}
