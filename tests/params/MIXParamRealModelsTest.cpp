// Labels and aggregation of models fitted to the example datasets.
#include <gtest/gtest.h>

#include "ParamsTestSupport.h"

using namespace params_test;

namespace {

class RealModelTest : public ParamsTest {
 protected:
  ~RealModelTest() override {
    fvpAggregators.clear();
    fpRun.reset();
  }

  ModelRun& Open(const std::string& file) {
    LoadExample(file, fData);
    fpRun = std::make_unique<ModelRun>(fData);
    return *fpRun;
  }
  int Col(const std::string& name) const { return fpRun->Column(name); }
  MIXParameterAggregator& NewAggregator(int randomIndex) {
    fvpAggregators.push_back(fpRun->MakeAggregator(randomIndex));
    return *fvpAggregators.back();
  }
  std::vector<MIXParameterAggregator*> Aggregators() const {
    std::vector<MIXParameterAggregator*> list;
    for (const auto& pAggregator : fvpAggregators) list.push_back(pAggregator.get());
    return list;
  }
  // Every split was fitted without error.
  void ExpectFitted() const {
    for (const SplitRun& split : fpRun->fvSplits) {
      EXPECT_FALSE(split.fStatus.IsError()) << split.fStatus.GetErrorCode();
      EXPECT_NE(split.fpAlgorithm->GetOutputStats(), nullptr);
    }
  }

  ZORV_Dataset fData;
  std::unique_ptr<ModelRun> fpRun;
  std::vector<std::unique_ptr<MIXParameterAggregator>> fvpAggregators;
};

}  // namespace

// Reaction WITH Days /FIXED Days /RANDOM INTERCEPT Days SUBJECTS=Subject.
TEST_F(RealModelTest, SleepStudyGrowthLine) {
  ModelRun& run = Open("sleepstudy.csv");
  const int days = Col("Days");
  const int subject = Col("Subject");
  run.SetTarget(Col("Reaction"));
  run.SetPredictors({subject}, {days});
  run.SetIntercept(true);
  run.AddFixed(run.Effect({}, {days}));
  run.AddRandom({run.Intercept(), run.Effect({}, {days})}, {subject}, GLMMConst_850::UN);
  run.Complete();
  MIXParameterAggregator& fixed = NewAggregator(-1);
  MIXParameterAggregator& random = NewAggregator(0);
  run.Run(true, Aggregators());
  ASSERT_EQ(run.fvSplits.size(), 1u);
  ExpectFitted();

  const SplitRun& split = run.fvSplits[0];
  EXPECT_EQ(split.fvParamLabels, (std::vector<std::string>{"Intercept", "Days"}));
  EXPECT_EQ(split.fvEffectLabels, std::vector<std::string>{"Days"});
  ASSERT_EQ(split.fvRandomParamLabels.size(), 1u);
  EXPECT_EQ(split.fvRandomParamLabels[0], (std::vector<std::string>{"Intercept | Subject", "Days | Subject"}));
  EXPECT_EQ(split.fvRandomEffectLabels[0],
            (std::vector<std::string>{"Intercept[subject = Subject", "Days[subject = Subject"}));

  ASSERT_TRUE(fixed.CreateAggregationMaps());
  EXPECT_EQ(fixed.GetAllParamLabels(false), (std::vector<std::string>{"Intercept", "Days"}));
  EXPECT_EQ(fixed.GetAllEffectLabels(false), std::vector<std::string>{"Days"});
  ExpectLocalLabelsMatch(run, fixed);
  // The block's intercept is one of its effects, and an intercept has no
  // cells to gather: a block with a random intercept cannot be aggregated.
  EXPECT_FALSE(random.CreateAggregationMaps());
}

// distance BY Sex WITH age /FIXED Sex age Sex*age
// /RANDOM INTERCEPT age SUBJECTS=Subject.
TEST_F(RealModelTest, OrthodontGrowthLinesBySex) {
  ModelRun& run = Open("orthodont.csv");
  const int sex = Col("Sex");
  const int age = Col("age");
  const int subject = Col("Subject");
  run.SetTarget(Col("distance"));
  run.SetPredictors({sex, subject}, {age});
  run.SetIntercept(true);
  run.AddFixed(run.Effect({{sex, false}}, {}));
  run.AddFixed(run.Effect({}, {age}));
  run.AddFixed(run.Effect({{sex, false}}, {age}));
  run.AddRandom({run.Intercept(), run.Effect({}, {age})}, {subject}, GLMMConst_850::UN);
  run.Complete();
  MIXParameterAggregator& fixed = NewAggregator(-1);
  run.Run(true, Aggregators());
  ExpectFitted();

  const std::vector<std::string> labels = {"Intercept",        "[Sex=Female]",       "[Sex=Male]", "age",
                                           "[Sex=Female] * age", "[Sex=Male] * age"};
  EXPECT_EQ(run.fvSplits[0].fvParamLabels, labels);
  EXPECT_EQ(run.fvSplits[0].fvEffectLabels, (std::vector<std::string>{"Sex", "age", "Sex * age"}));
  ASSERT_TRUE(fixed.CreateAggregationMaps());
  EXPECT_EQ(fixed.GetAllParamLabels(false), labels);
  EXPECT_EQ(fixed.GetAllParamLabels(true), labels);
  EXPECT_EQ(fixed.GetAllEffectLabels(false), (std::vector<std::string>{"Sex", "age", "Sex * age"}));
  EXPECT_EQ(fixed.GetAllParamLabelsEff(false)[2],
            (std::vector<std::string>{"[Sex=Female] * age", "[Sex=Male] * age"}));
  ExpectLocalLabelsMatch(run, fixed);
}

// yield BY Variety WITH nitro /FIXED Variety nitro Variety*nitro
// /RANDOM INTERCEPT SUBJECTS=Block /RANDOM INTERCEPT SUBJECTS=Block*Variety.
TEST_F(RealModelTest, OatsVarietiesAndNitrogen) {
  ModelRun& run = Open("oats.csv");
  const int variety = Col("Variety");
  const int nitro = Col("nitro");
  const int block = Col("Block");
  run.SetTarget(Col("yield"));
  run.SetPredictors({variety, block}, {nitro});
  run.SetIntercept(true);
  run.AddFixed(run.Effect({{variety, false}}, {}));
  run.AddFixed(run.Effect({}, {nitro}));
  run.AddFixed(run.Effect({{variety, false}}, {nitro}));
  run.AddRandom({run.Intercept()}, {block});
  run.AddRandom({run.Intercept()}, {block, variety});
  run.Complete();
  MIXParameterAggregator& fixed = NewAggregator(-1);
  run.Run(true, Aggregators());
  ExpectFitted();

  const std::vector<std::string> labels = {"Intercept",
                                           "[Variety=Golden Rain]",
                                           "[Variety=Marvellous]",
                                           "[Variety=Victory]",
                                           "nitro",
                                           "[Variety=Golden Rain] * nitro",
                                           "[Variety=Marvellous] * nitro",
                                           "[Variety=Victory] * nitro"};
  EXPECT_EQ(run.fvSplits[0].fvParamLabels, labels);
  EXPECT_EQ(run.fvSplits[0].fvEffectLabels, (std::vector<std::string>{"Variety", "nitro", "Variety * nitro"}));
  ASSERT_EQ(run.fvSplits[0].fvRandomEffectLabels.size(), 2u);
  EXPECT_EQ(run.fvSplits[0].fvRandomEffectLabels[0], std::vector<std::string>{"Intercept[subject = Block"});
  EXPECT_EQ(run.fvSplits[0].fvRandomEffectLabels[1],
            std::vector<std::string>{"Intercept[subject = Block * Variety"});
  EXPECT_EQ(run.fvSplits[0].fvRandomParamLabels[1], std::vector<std::string>{"Intercept | Block * Variety"});

  ASSERT_TRUE(fixed.CreateAggregationMaps());
  EXPECT_EQ(fixed.GetAllParamLabels(false), labels);
  ExpectLocalLabelsMatch(run, fixed);
  // The variety names are wider than one word.
  const MIXRegrParameter& marvellous = fixed.GetAllParameters()[2];
  ASSERT_EQ(marvellous.GetNFactors(), 1);
  EXPECT_EQ(std::string(marvellous.GetCategories()[0]->fStr, 10), "Marvellous");
}

// The orthodontic data split by sex, with a fixed effect per child: the
// children of the two splits are different parameters.
TEST_F(RealModelTest, OrthodontSplitBySexHasChildrenOfEachSplit) {
  ModelRun& run = Open("orthodont.csv");
  const int sex = Col("Sex");
  const int age = Col("age");
  const int subject = Col("Subject");
  fData.SetSplitVars({sex});
  fData.SetSplitsInOneTable(true);
  run.SetTarget(Col("distance"));
  run.SetPredictors({subject}, {age});
  run.SetIntercept(true);
  run.AddFixed(run.Effect({}, {age}));
  run.AddFixed(run.Effect({{subject, false}}, {}));
  run.Complete();
  MIXParameterAggregator& fixed = NewAggregator(-1);
  ASSERT_EQ(fixed.GetNSplits(), 2);
  run.Run(true, Aggregators());
  ASSERT_EQ(run.fvSplits.size(), 2u);
  ExpectFitted();
  // Females come first: 11 girls, then 16 boys.
  EXPECT_EQ(run.fvSplits[0].fvParamLabels.size(), 2u + 11u);
  EXPECT_EQ(run.fvSplits[1].fvParamLabels.size(), 2u + 16u);

  ASSERT_TRUE(fixed.CreateAggregationMaps());
  const std::vector<std::string>& labels = fixed.GetAllParamLabels(false);
  ASSERT_EQ(labels.size(), 2u + 27u);
  EXPECT_EQ(labels[0], "Intercept");
  EXPECT_EQ(labels[1], "age");
  EXPECT_EQ(labels[2], "[Subject=F01]");
  EXPECT_EQ(labels[12], "[Subject=F11]");
  EXPECT_EQ(labels[13], "[Subject=M01]");
  EXPECT_EQ(labels[28], "[Subject=M16]");
  ExpectLocalLabelsMatch(run, fixed);
  // No girl is a parameter of the boys' split, and no boy of the girls'.
  EXPECT_EQ(fixed.GetLocalParamIndex(1, 2), -1);
  EXPECT_EQ(fixed.GetLocalParamIndex(0, 13), -1);
  EXPECT_EQ(fixed.GetLocalParamIndex(1, 13), 2);
  EXPECT_EQ(fixed.GetLocalParamIndex(0, 1), 1);
  EXPECT_EQ(fixed.GetLocalParamIndex(1, 1), 1);
  EXPECT_TRUE(fixed.GetGroupCats());
}
