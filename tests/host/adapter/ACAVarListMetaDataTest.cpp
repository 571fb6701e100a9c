#include "host/adapter/ACAVarListMetaData.h"

#include <gtest/gtest.h>


#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/adapter/AdapterTestDataset.h"
#include "host/data/HostDataTestSource.h"
#include "host/data/ZORV_Dataset.h"
#include "numeric/common/MCMV.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

using namespace MCMath_850::MCConst;

namespace {

class ACAVarListMetaDataTest : public ::testing::Test {
 protected:
  ACAVarListMetaDataTest() : fSpecs(true, true, true) {
    int y = fSource.Add("y", 0);
    fSource.GetVariable(y)->SetLabel("Response");
    int time = fSource.Add("time", 0);
    fSource.GetVariable(time)->SetMeasurementLevel(ZORV_Variable::ORDINAL);
    int group = fSource.Add("group", 6);
    int w = fSource.Add("w", 0);
    fSource.SetWeight(w);
    fY = fSpecs.AddVariable(y, false, false, true, true);
    fTime = fSpecs.AddVariable(time, true, false, true, true);
    fGroup = fSpecs.AddVariable(group, true, false, true, true);
    fWeight = fSpecs.SetWeightVar();
  }

  hostdata_test::HostDataTestSource fSource;
  ACAVarValidSpecs fSpecs;
  MCXML_850::MCVarList fList;
  int fY, fTime, fGroup, fWeight;
};

}  // namespace

TEST_F(ACAVarListMetaDataTest, EntersVariablesWithTheirRoles) {
  ACAInputAdapter adapter(&fSpecs, fSource);
  // Without categories no data are needed.
  ACAVarListMetaData metaData(fList, &fSpecs, fSource, &adapter, false);
  EXPECT_TRUE(metaData.AddRecWeightVar(fWeight, ROLE_FREQUENCY_WEIGHT, 1, ""));
  EXPECT_TRUE(metaData.AddRecVariable(fY, false, ROLE_TARGET, nullptr, ""));
  EXPECT_TRUE(metaData.AddRecVariable(fTime, true, ROLE_PREDICTOR, nullptr, "@#$ordinal@#$_time"));
  EXPECT_TRUE(metaData.AddRecVariable(fGroup, true, ROLE_PREDICTOR, "Treatment group", ""));
  ASSERT_EQ(fList.Size(), 4);

  const MCXML_850::IMCVariable* weight = fList.GetVarAt(0);
  EXPECT_EQ(weight->GetName(), "w");
  EXPECT_EQ(weight->GetRole(), ROLE_FREQUENCY_WEIGHT);
  EXPECT_EQ(weight->GetWeightRounding(), 1);
  EXPECT_EQ(weight->GetRecordIndex(), fWeight);

  const MCXML_850::IMCVariable* target = fList.GetVarAt(1);
  EXPECT_EQ(target->GetName(), "y");
  EXPECT_EQ(target->GetLabel(), "Response");
  EXPECT_EQ(target->GetMeasurementLevel(), MEASURE_CONTINUOUS);
  EXPECT_EQ(target->GetRecordIndex(), fY);

  const MCXML_850::IMCVariable* time = fList.GetVarAt(2);
  EXPECT_EQ(time->GetName(), "@#$ordinal@#$_time");
  EXPECT_EQ(time->GetMeasurementLevel(), MEASURE_ORDINAL);
  EXPECT_EQ(time->GetNCategories(), 0);

  const MCXML_850::IMCVariable* group = fList.GetVarAt(3);
  EXPECT_EQ(group->GetLabel(), "Treatment group");
  EXPECT_EQ(group->GetMeasurementLevel(), MEASURE_NOMINAL);
  EXPECT_EQ(group->GetStringWidth(), 6);
}

TEST_F(ACAVarListMetaDataTest, RefusesUnknownPositions) {
  ACAVarListMetaData metaData(fList, &fSpecs, fSource, nullptr, true);
  EXPECT_FALSE(metaData.AddRecVariable(42, false, ROLE_PREDICTOR, nullptr, ""));
  EXPECT_FALSE(metaData.AddRecVariable(-1, false, ROLE_PREDICTOR, nullptr, ""));
  EXPECT_FALSE(metaData.AddRecWeightVar(42, ROLE_FREQUENCY_WEIGHT, 1, ""));
  EXPECT_EQ(fList.Size(), 0);
  // Without an adapter there are no categories to enter.
  EXPECT_TRUE(metaData.AddRecVariable(fGroup, true, ROLE_PREDICTOR, nullptr, ""));
  EXPECT_EQ(fList.GetVarAt(0)->GetNCategories(), 0);
}

TEST_F(ACAVarListMetaDataTest, WeightWithoutAColumnIsRefused) {
  ACAVarValidSpecs unweighted(true, false, true);
  int weight = unweighted.SetWeightVar();
  ACAInputAdapter adapter(&unweighted, fSource);
  ACAVarListMetaData metaData(fList, &unweighted, fSource, &adapter, false);
  EXPECT_FALSE(metaData.AddRecWeightVar(weight, ROLE_FREQUENCY_WEIGHT, 1, ""));
}

TEST_F(ACAVarListMetaDataTest, WithoutCasesThereAreNoCategories) {
  ACAInputAdapter adapter(&fSpecs, fSource);
  ACAVarListMetaData metaData(fList, &fSpecs, fSource, &adapter, true);
  EXPECT_TRUE(metaData.GetWithCategories());
  EXPECT_EQ(metaData.GetInputAdapter(), &adapter);
  EXPECT_TRUE(metaData.AddRecVariable(fGroup, true, ROLE_PREDICTOR, nullptr, ""));
  EXPECT_EQ(fList.GetVarAt(0)->GetNCategories(), 0);
}

TEST(ACAVarListMetaData, CategoriesOfTheCurrentSplitInCodeOrder) {
  ZORV_Dataset data;
  adapter_test::MakeSmallFile(data);
  data.GetVariable(adapter_test::GROUP)->SetFormat(ZORV_Format(ZORV_Format::F, 5, 1));
  data.SetSplitVars({adapter_test::REGION});
  ACAVarValidSpecs specs(true, true, true);
  int y = specs.AddVariable(adapter_test::Y, false, false, true, true);
  int group = specs.AddVariable(adapter_test::GROUP, true, false, true, true);
  int sex = specs.AddVariable(adapter_test::SEX, true, false, true, true);
  ACAInputAdapter adapter(&specs, data);
  adapter.SetSplitFile(adapter_test::NoProcedure(), true, true, true);
  ACAProcDataSourceIter it(adapter, true);
  ASSERT_TRUE(it.NewSplit());
  ASSERT_TRUE(it.NewSplit());
  adapter.ReorderRecordCats(group, false);

  MCXML_850::MCVarList list;
  ACAVarListMetaData metaData(list, &specs, data, &adapter, true);
  ASSERT_TRUE(metaData.AddRecVariable(y, false, ROLE_TARGET, nullptr, ""));
  ASSERT_TRUE(metaData.AddRecVariable(group, true, ROLE_PREDICTOR, nullptr, ""));
  ASSERT_TRUE(metaData.AddRecVariable(sex, true, ROLE_PREDICTOR, nullptr, ""));
  EXPECT_EQ(list.GetVarAt(0)->GetNCategories(), 0);
  const MCXML_850::IMCVariable* groupVar = list.GetVarAt(1);
  EXPECT_EQ(groupVar->GetCategoryValues(), (std::vector<double>{3, 2}));
  EXPECT_EQ(groupVar->GetCategoryTexts(), (std::vector<std::string>{"3.0", "2.0"}));
  const MCXML_850::IMCVariable* sexVar = list.GetVarAt(2);
  EXPECT_EQ(sexVar->GetCategoryTexts(), (std::vector<std::string>{"f", "m"}));
  ASSERT_EQ(sexVar->GetNCategories(), 2);
  EXPECT_EQ(sexVar->GetCategoryValues()[0], MCCommon_850::MCMV::Missing());
}
