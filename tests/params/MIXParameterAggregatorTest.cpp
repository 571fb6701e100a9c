// The common list of parameters over the splits of a run.
#include <gtest/gtest.h>

#include <algorithm>

#include "ParamsTestSupport.h"
#include "base/MixExports.h"
#include "host/output/BpComposite.h"
#include "host/output/BpHeading.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpString.h"
#include "params/MIXParameterAggregator.h"

using namespace params_test;
namespace MCConst = MCMath_850::MCConst;

namespace {

enum { Y = 0, A = 1, SPLIT = 2, X = 3, G = 4, SUBJ = 5 };

// Two splits. The first has a in {1, 2}, the second a in {2, 3}; the string
// factor g (12 bytes wide, two words) has "beta"/"alpha" in the first and
// "gamma"/"beta" in the second.
void MakeSplitFile(ZORV_Dataset& data) {
  const char* names[] = {"y", "a", "split", "x", "g", "subj"};
  for (int i = 0; i < 6; ++i) data.AddVariable(names[i], i == G ? 12 : 0);
  data.GetVariable(A)->SetFormat(ZORV_Format(ZORV_Format::F, 2, 0));
  data.GetVariable(G)->SetFormat(ZORV_Format(ZORV_Format::A, 12, 0));
  data.AppendCases(8);
  const double splits[] = {1, 1, 1, 1, 2, 2, 2, 2};
  const double as[] = {1, 2, 1, 2, 3, 2, 3, 2};
  const char* gs[] = {"beta", "alpha", "alpha", "beta", "gamma", "beta", "beta", "gamma"};
  for (long r = 0; r < 8; ++r) {
    data.SetNum(r, Y, static_cast<double>(r % 3) + 0.25 * static_cast<double>(r));
    data.SetNum(r, A, as[r]);
    data.SetNum(r, SPLIT, splits[r]);
    data.SetNum(r, X, static_cast<double>(r) * 0.5);
    data.SetString(r, G, gs[r]);
    data.SetNum(r, SUBJ, static_cast<double>(r / 2));
  }
}

class AggregatorTest : public ParamsTest {
 protected:
  AggregatorTest() { MakeSplitFile(fData); }
  ~AggregatorTest() override {
    fvpAggregators.clear();
    fpRun.reset();
  }

  // A model of y by a and g with x, subject variable subj; without an
  // intercept unless a test asks for one.
  ModelRun& NewRun(bool split) {
    if (split) fData.SetSplitVars({SPLIT});
    fpRun = std::make_unique<ModelRun>(fData);
    fpRun->SetTarget(Y);
    fpRun->SetPredictors({A, G, SUBJ}, {X});
    fpRun->SetIntercept(false);
    return *fpRun;
  }
  MIXParameterAggregator& NewAggregator(int randomIndex) {
    fvpAggregators.push_back(fpRun->MakeAggregator(randomIndex));
    return *fvpAggregators.back();
  }
  std::vector<MIXParameterAggregator*> Aggregators() const {
    std::vector<MIXParameterAggregator*> list;
    for (const auto& pAggregator : fvpAggregators) list.push_back(pAggregator.get());
    return list;
  }

  // The fixed effect a on a completed run, and an aggregator of the fixed
  // parameters.
  MIXParameterAggregator& FixedOverA(ModelRun& run) {
    run.AddFixed(run.Effect({{A, false}}, {}));
    run.Complete();
    return NewAggregator(-1);
  }

  // Runs the splits through every aggregator and builds the maps of one.
  void RunAndAggregate(MIXParameterAggregator& aggregator) {
    fpRun->Run(false, Aggregators());
    ASSERT_TRUE(aggregator.CreateAggregationMaps());
  }

  // A run over a, split or not, whose fixed aggregator neither groups the
  // splits' categories nor declares labels.
  void ExpectNoLabelsDeclared(bool split) {
    ModelRun& run = NewRun(split);
    MIXParameterAggregator& aggregator = FixedOverA(run);
    ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
    EXPECT_FALSE(aggregator.GetGroupCats());
    EXPECT_TRUE(DeclaredLabels(aggregator, -1, false).empty());
  }

  // The category labels the aggregator declares on the parameter dimension of
  // a new table.
  std::vector<std::string> DeclaredLabels(MIXParameterAggregator& aggregator, int effect, bool byEffect);

  void ExpectLocalLabelsMatch(const MIXParameterAggregator& aggregator) {
    params_test::ExpectLocalLabelsMatch(*fpRun, aggregator);
  }

  ZORV_Dataset fData;
  std::unique_ptr<ModelRun> fpRun;
  std::vector<std::unique_ptr<MIXParameterAggregator>> fvpAggregators;
};

using AggregatorDeathTest = AggregatorTest;

// A component that lists the fixed parameters last to first.
bool ReverseFixed(int, std::vector<MCRegrParameter>& beta, std::vector<std::vector<MCRegrParameter>>&) {
  std::reverse(beta.begin(), beta.end());
  return true;
}

// The category labels of a table's first dimension.
std::vector<std::string> CategoryLabels(const BpPivotTable& table) {
  std::vector<std::string> labels;
  const OmTable* pTable = table.GetOmTable();
  if (pTable == nullptr || pTable->fvDimensions.empty()) return labels;
  for (const OmDimensionNode& node : pTable->fvDimensions[0].fRoot.fvChildren) labels.push_back(node.fLabel.fText);
  return labels;
}

std::vector<std::string> AggregatorTest::DeclaredLabels(MIXParameterAggregator& aggregator, int effect,
                                                        bool byEffect) {
  BpPivotTable table = fpRun->fProcedure.PivotTable(BpString("Table", false), BpString("Table", false), true);
  BpDimension dimension = table.Dimension(BpString("Parameter", false), 2);
  aggregator.SetParamBagpipeCats(&dimension, effect, byEffect);
  return CategoryLabels(table);
}

}  // namespace

TEST_F(AggregatorTest, CategoriesOfTwoSplitsAscending) {
  ModelRun& run = NewRun(true);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  EXPECT_EQ(aggregator.GetNSplits(), 2);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  EXPECT_TRUE(aggregator.GetParamAggregated());

  EXPECT_EQ(aggregator.GetAllParamLabels(false), (std::vector<std::string>{"[a=1]", "[a=2]", "[a=3]"}));
  ASSERT_EQ(aggregator.GetAllParameters().size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    const MIXRegrParameter& param = aggregator.GetAllParameters()[i];
    EXPECT_EQ(param.GetEffectIndex(), 0);
    ASSERT_EQ(param.GetNFactors(), 1);
    EXPECT_EQ(param.GetCategories()[0]->fNum, static_cast<double>(i + 1));
  }
  // The first split lacks the third, the second the first.
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 2), -1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(1, 0), -1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 0), 0);
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 1), 1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(1, 1), 0);
  EXPECT_EQ(aggregator.GetLocalParamIndex(1, 2), 1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(0, 0), 0);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(0, 1), 1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(1, 0), 1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(1, 1), 2);
  ExpectLocalLabelsMatch(aggregator);
  EXPECT_EQ(aggregator.GetAllEffectLabels(false), std::vector<std::string>{"a"});
  EXPECT_EQ(aggregator.GetAllParamLabelsEff(false)[0], aggregator.GetAllParamLabels(false));
}

TEST_F(AggregatorTest, CategoriesOfTwoSplitsDescending) {
  ModelRun& run = NewRun(true);
  run.SetSortOrder(MCConst::CATEG_DESCENDING);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  EXPECT_EQ(aggregator.GetAllParamLabels(false), (std::vector<std::string>{"[a=3]", "[a=2]", "[a=1]"}));
  // The first split numbers 2 before 1.
  EXPECT_EQ(run.fvSplits[0].fvParamLabels, (std::vector<std::string>{"[a=2]", "[a=1]"}));
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 0), -1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(1, 2), -1);
  ExpectLocalLabelsMatch(aggregator);
}

TEST_F(AggregatorTest, TheInterceptIsGlobalZeroEverywhere) {
  ModelRun& run = NewRun(true);
  run.SetIntercept(true);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  EXPECT_EQ(aggregator.GetAllParamLabels(false),
            (std::vector<std::string>{"Intercept", "[a=1]", "[a=2]", "[a=3]"}));
  EXPECT_TRUE(aggregator.GetAllParameters()[0].IsIntercept());
  for (int s = 0; s < 2; ++s) {
    EXPECT_EQ(aggregator.GetGlobalParamIndex(s, 0), 0);
    EXPECT_EQ(aggregator.GetLocalParamIndex(s, 0), 0);
  }
  EXPECT_EQ(aggregator.GetLocalParamIndex(1, 1), -1);
  ExpectLocalLabelsMatch(aggregator);
  // The fixed intercept has no effect of its own.
  EXPECT_EQ(aggregator.GetAllParamLabelsEff(false), (std::vector<std::vector<std::string>>{
                                                        {"[a=1]", "[a=2]", "[a=3]"}}));
}

TEST_F(AggregatorDeathTest, DataOrderNeedsOneSplit) {
  ModelRun& run = NewRun(true);
  run.SetSortOrder(MCConst::CATEG_DATA_ORDER);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  run.Run(false, Aggregators());
  EXPECT_DEATH(aggregator.CreateAggregationMaps(), AssertText("fNSplits == 1"));
}

TEST_F(AggregatorTest, DataOrderFollowsTheLocalIndex) {
  ModelRun& run = NewRun(false);
  run.SetSortOrder(MCConst::CATEG_DATA_ORDER);
  MIXParameterAggregator& data = FixedOverA(run);
  // The component lists the categories last to first.
  run.Run(false, Aggregators(), ReverseFixed);
  ASSERT_TRUE(data.CreateAggregationMaps());
  EXPECT_EQ(data.GetAllParamLabels(false), (std::vector<std::string>{"[a=3]", "[a=2]", "[a=1]"}));
  ExpectLocalLabelsMatch(data);
}

TEST_F(AggregatorTest, AscendingIgnoresTheLocalOrder) {
  ModelRun& run = NewRun(false);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  run.Run(false, Aggregators(), ReverseFixed);
  ASSERT_TRUE(aggregator.CreateAggregationMaps());
  EXPECT_EQ(aggregator.GetAllParamLabels(false), (std::vector<std::string>{"[a=1]", "[a=2]", "[a=3]"}));
  EXPECT_EQ(aggregator.GetGlobalParamIndex(0, 0), 2);
  ExpectLocalLabelsMatch(aggregator);
}

TEST_F(AggregatorTest, ACovariateEffectIsOneParameterInAllSplits) {
  ModelRun& run = NewRun(true);
  run.SetIntercept(true);
  run.AddFixed(run.Effect({}, {X}));
  run.AddFixed(run.Effect({}, {X, X}));
  run.Complete();
  MIXParameterAggregator& aggregator = NewAggregator(-1);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  EXPECT_EQ(aggregator.GetAllParamLabels(false), (std::vector<std::string>{"Intercept", "x", "x * x"}));
  for (int s = 0; s < 2; ++s) {
    EXPECT_EQ(aggregator.GetGlobalParamIndex(s, 1), 1);
    EXPECT_EQ(aggregator.GetGlobalParamIndex(s, 2), 2);
    EXPECT_EQ(aggregator.GetLocalParamIndex(s, 1), 1);
  }
  EXPECT_EQ(aggregator.GetAllParameters()[1].GetCovariateMult(
                run.fSpecs.GetVarValidSpecsPtr()->GetRecVarIndex(X)),
            1);
  EXPECT_EQ(aggregator.GetAllParameters()[2].GetNCovariateMult(), 2);
}

TEST_F(AggregatorTest, IndicesOutOfRangeGiveMinusOne) {
  ModelRun& run = NewRun(true);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  // Nothing is known before the splits run.
  EXPECT_EQ(aggregator.GetGlobalParamIndex(0, 0), -1);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  EXPECT_EQ(aggregator.GetGlobalParamIndex(5, 0), -1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(-1, 0), -1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(0, 2), -1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(0, -1), -1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, -1), -1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 3), -1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(2, 0), -1);
}

TEST_F(AggregatorTest, WideStringCategoriesAndInteractions) {
  ModelRun& run = NewRun(true);
  run.AddFixed(run.Effect({{G, false}}, {}));
  run.AddFixed(run.Effect({{A, false}, {G, false}}, {X}));
  run.Complete();
  MIXParameterAggregator& aggregator = NewAggregator(-1);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  const std::vector<std::string>& labels = aggregator.GetAllParamLabels(false);
  ASSERT_EQ(labels.size(), 3u + 7u);
  EXPECT_EQ(std::vector<std::string>(labels.begin(), labels.begin() + 3),
            (std::vector<std::string>{"[g=alpha]", "[g=beta]", "[g=gamma]"}));
  // Every combination a split has, a varying slowest; the keys of the two
  // splits are merged in value order.
  EXPECT_EQ(std::vector<std::string>(labels.begin() + 3, labels.end()),
            (std::vector<std::string>{"[a=1] * [g=alpha] * x", "[a=1] * [g=beta] * x", "[a=2] * [g=alpha] * x",
                                      "[a=2] * [g=beta] * x", "[a=2] * [g=gamma] * x", "[a=3] * [g=beta] * x",
                                      "[a=3] * [g=gamma] * x"}));
  ExpectLocalLabelsMatch(aggregator);
  // Equal values of two splits share one cell.
  const MIXRegrParameter& beta = aggregator.GetAllParameters()[1];
  EXPECT_EQ(std::string(beta.GetCategories()[0]->fStr, 12), "beta        ");
  EXPECT_EQ(aggregator.GetAllEffectLabels(false), (std::vector<std::string>{"g", "a * g * x"}));
}

TEST_F(AggregatorTest, ASplitThatDidNotRunHasNoLocalParameters) {
  ModelRun& run = NewRun(true);
  run.SetIntercept(true);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  run.Run(false, Aggregators(),
          [](int split, std::vector<MCRegrParameter>&, std::vector<std::vector<MCRegrParameter>>&) {
            return split != 0;
          });
  ASSERT_TRUE(aggregator.CreateAggregationMaps());
  EXPECT_EQ(aggregator.GetAllParamLabels(false), (std::vector<std::string>{"Intercept", "[a=2]", "[a=3]"}));
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 0), 0);
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 1), -1);
  EXPECT_EQ(aggregator.GetLocalParamIndex(0, 2), -1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(0, 0), -1);
  EXPECT_EQ(aggregator.GetGlobalParamIndex(1, 2), 2);
}

TEST_F(AggregatorTest, AFitWithoutOutputGivesNothing) {
  ModelRun& run = NewRun(false);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  GLMMSettings settings;
  MCXML_850::MCVarList varList;
  StubAlgorithm noOutput(settings, varList);
  EXPECT_FALSE(aggregator.AddSplitParams(&noOutput));
  EXPECT_FALSE(aggregator.AddSplitParams(nullptr));
}

TEST_F(AggregatorTest, RandomBlockLabelsCarryTheSubjects) {
  ModelRun& run = NewRun(true);
  run.SetIntercept(true);
  run.AddFixed(run.Effect({}, {X}));
  run.AddRandom({run.Intercept(), run.Effect({{A, false}}, {})}, {SUBJ});
  run.Complete();
  MIXParameterAggregator& fixed = NewAggregator(-1);
  MIXParameterAggregator& random = NewAggregator(0);
  EXPECT_EQ(random.GetRandomIndex(), 0);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(fixed));
  ASSERT_TRUE(random.CreateAggregationMaps());
  EXPECT_EQ(fixed.GetAllParamLabels(true), (std::vector<std::string>{"Intercept", "x"}));
  // The global list of every aggregator starts with the model's intercept.
  EXPECT_EQ(random.GetAllParamLabels(false), (std::vector<std::string>{"Intercept", "[a=1]", "[a=2]", "[a=3]"}));
  EXPECT_EQ(random.GetAllParamLabels(true), (std::vector<std::string>{"Intercept | subj", "[a=1] | subj",
                                                                     "[a=2] | subj", "[a=3] | subj"}));
  EXPECT_EQ(random.GetAllEffectLabels(false), (std::vector<std::string>{"Intercept", "a"}));
  EXPECT_EQ(random.GetAllEffectLabels(true),
            (std::vector<std::string>{"Intercept[subject = subj", "a[subject = subj"}));
  EXPECT_EQ(random.GetAllParamLabelsEff(true),
            (std::vector<std::vector<std::string>>{{}, {"[a=1] | subj", "[a=2] | subj", "[a=3] | subj"}}));
  EXPECT_EQ(run.fvSplits[1].fvRandomParamLabels[0],
            (std::vector<std::string>{"Intercept | subj", "[a=2] | subj", "[a=3] | subj"}));
  // Local 1 of the second split is a=2: after the intercept of the block.
  EXPECT_EQ(random.GetGlobalParamIndex(1, 1), 2);
}

TEST_F(AggregatorTest, ARandomInterceptWithAnEffectIndexEndsTheMaps) {
  ModelRun& run = NewRun(false);
  run.AddRandom({run.Intercept()}, {SUBJ});
  run.Complete();
  MIXParameterAggregator& random = NewAggregator(0);
  run.Run(false, Aggregators(),
          [](int, std::vector<MCRegrParameter>&, std::vector<std::vector<MCRegrParameter>>& gamma) {
            gamma[0][0].SetEffectIndex(0);
            return true;
          });
  EXPECT_FALSE(random.CreateAggregationMaps());
}

TEST_F(AggregatorTest, ShortLabelsStayPlainStrings) {
  const std::string text(255, 'p');
  std::unique_ptr<BpCellText> cell(MIXParameterAggregator::LongStrToComposite(text));
  const BpString* pString = dynamic_cast<const BpString*>(cell.get());
  ASSERT_NE(pString, nullptr);
  EXPECT_EQ(pString->GetString(), text);
  EXPECT_FALSE(pString->GetTranslate());
}

TEST_F(AggregatorTest, LongLabelsGoInPieces) {
  const std::string text = std::string(255, 'p') + "q";
  std::unique_ptr<BpCellText> cell(MIXParameterAggregator::LongStrToComposite(text));
  const BpComposite* pComposite = dynamic_cast<const BpComposite*>(cell.get());
  ASSERT_NE(pComposite, nullptr);
  EXPECT_EQ(pComposite->GetPattern(), "[:^1:]1");
  EXPECT_TRUE(pComposite->GetTranslate());
  EXPECT_TRUE(pComposite->IsFinished());
  EXPECT_EQ(pComposite->GetText(), text);
  // The pieces show when each is put in brackets.
  BpComposite pieces(*pComposite);
  pieces.SetPattern("[:<^1>:]1");
  EXPECT_EQ(pieces.GetText(), "<" + std::string(255, 'p') + "><q>");

  const std::string longer(600, 'r');
  std::unique_ptr<BpCellText> three(MIXParameterAggregator::LongStrToComposite(longer));
  BpComposite threePieces(*dynamic_cast<const BpComposite*>(three.get()));
  threePieces.SetPattern("[:<^1>:]1");
  EXPECT_EQ(threePieces.GetText(),
            "<" + std::string(255, 'r') + "><" + std::string(255, 'r') + "><" + std::string(90, 'r') + ">");
}

TEST_F(AggregatorTest, LabelsAreNotDeclaredOnAnUnsplitFile) {
  ExpectNoLabelsDeclared(false);
}

TEST_F(AggregatorTest, LabelsAreDeclaredWhenSplitsShareATable) {
  fData.SetSplitsInOneTable(true);
  ModelRun& run = NewRun(true);
  run.SetIntercept(true);
  run.AddFixed(run.Effect({{A, false}}, {}));
  run.AddFixed(run.Effect({}, {X}));
  run.Complete();
  MIXParameterAggregator& aggregator = NewAggregator(-1);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  EXPECT_TRUE(aggregator.GetGroupCats());
  EXPECT_EQ(DeclaredLabels(aggregator, -1, false),
            (std::vector<std::string>{"Intercept", "[a=1]", "[a=2]", "[a=3]", "x"}));
  EXPECT_EQ(DeclaredLabels(aggregator, 1, true), std::vector<std::string>{"x"});
}

TEST_F(AggregatorTest, LabelsAreNotDeclaredWhenSplitsHaveTablesOfTheirOwn) {
  fData.SetSplitsInOneTable(false);
  ExpectNoLabelsDeclared(true);
}

TEST_F(AggregatorDeathTest, MapsAreBuiltOnce) {
  ModelRun& run = NewRun(false);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  ASSERT_NO_FATAL_FAILURE(RunAndAggregate(aggregator));
  EXPECT_DEATH(aggregator.CreateAggregationMaps(), AssertText("!fbParamAggregated"));
}

TEST_F(AggregatorDeathTest, AnAdapterIsRequired) {
  ModelRun& run = NewRun(false);
  run.Complete();
  EXPECT_DEATH(MIXParameterAggregator(run.fSpecs, nullptr, fData, -1, 1), AssertText("pInpAdapt != 0"));
}

TEST_F(AggregatorDeathTest, OnlyTheInterceptIsWithoutAnEffect) {
  ModelRun& run = NewRun(false);
  MIXParameterAggregator& aggregator = FixedOverA(run);
  GLMMSettings settings;
  MCXML_850::MCVarList varList;
  StubAlgorithm algorithm(settings, varList);
  MCRegrParameter orphan;
  ASSERT_TRUE(orphan.SetupFromEffect(run.fSpecs.GetCompModelEffectList()[0], 0));
  orphan.SetEffectIndex(-1);
  algorithm.SetParameters({orphan}, {});
  EXPECT_DEATH(aggregator.AddSplitParams(&algorithm), AssertText("paramList[iParam].IsIntercept()"));
}

TEST_F(AggregatorTest, ARandomAggregatorNeedsItsBlockInTheFit) {
  ModelRun& run = NewRun(false);
  run.AddRandom({run.Intercept()}, {SUBJ});
  run.Complete();
  MIXParameterAggregator& random = NewAggregator(0);
  GLMMSettings settings;
  MCXML_850::MCVarList varList;
  StubAlgorithm algorithm(settings, varList);
  algorithm.SetParameters({}, {});
  EXPECT_FALSE(random.AddSplitParams(&algorithm));
}
