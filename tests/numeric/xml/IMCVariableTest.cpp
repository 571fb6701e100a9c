#include "numeric/xml/IMCVariable.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/common/MCMV.h"

using MCXML_850::IMCVariable;
using namespace MCMath_850::MCConst;

TEST(IMCVariable, Defaults) {
  IMCVariable variable;
  EXPECT_TRUE(variable.GetName().empty());
  EXPECT_TRUE(variable.GetLabel().empty());
  EXPECT_EQ(variable.GetRecordIndex(), -1);
  EXPECT_EQ(variable.GetRole(), ROLE_NONE);
  EXPECT_EQ(variable.GetMeasurementLevel(), MEASURE_UNKNOWN);
  EXPECT_FALSE(variable.IsCategorical());
  EXPECT_EQ(variable.GetStringWidth(), 0);
  EXPECT_EQ(variable.GetWeightRounding(), 0);
  EXPECT_EQ(variable.GetNCategories(), 0);
}

TEST(IMCVariable, RoundTrip) {
  IMCVariable variable("group", ROLE_PREDICTOR, MEASURE_NOMINAL);
  variable.SetLabel("Treatment group");
  variable.SetRecordIndex(2);
  variable.SetStringWidth(8);
  variable.SetWeightRounding(1);
  EXPECT_EQ(variable.GetName(), "group");
  EXPECT_EQ(variable.GetLabel(), "Treatment group");
  EXPECT_EQ(variable.GetRecordIndex(), 2);
  EXPECT_EQ(variable.GetRole(), ROLE_PREDICTOR);
  EXPECT_TRUE(variable.IsCategorical());
  EXPECT_EQ(variable.GetStringWidth(), 8);
  EXPECT_EQ(variable.GetWeightRounding(), 1);
  variable.SetName("g");
  variable.SetRole(ROLE_TARGET);
  variable.SetMeasurementLevel(MEASURE_ORDINAL);
  EXPECT_EQ(variable.GetName(), "g");
  EXPECT_EQ(variable.GetRole(), ROLE_TARGET);
  EXPECT_TRUE(variable.IsCategorical());
  variable.SetMeasurementLevel(MEASURE_CONTINUOUS);
  EXPECT_FALSE(variable.IsCategorical());
}

TEST(IMCVariable, CategoriesInCodeOrder) {
  IMCVariable variable("dose", ROLE_PREDICTOR, MEASURE_ORDINAL);
  EXPECT_EQ(variable.AddCategory(1.0, "low"), 0);
  EXPECT_EQ(variable.AddCategory(5.0, "high"), 1);
  EXPECT_EQ(variable.GetNCategories(), 2);
  EXPECT_EQ(variable.GetCategoryValues(), (std::vector<double>{1.0, 5.0}));
  EXPECT_EQ(variable.GetCategoryTexts(), (std::vector<std::string>{"low", "high"}));
  EXPECT_EQ(variable.FindCategory(5.0), 1);
  EXPECT_EQ(variable.FindCategory("low"), 0);
  EXPECT_EQ(variable.FindCategory(2.0), -1);
  EXPECT_EQ(variable.FindCategory("none"), -1);
  variable.ClearCategories();
  EXPECT_EQ(variable.GetNCategories(), 0);
}

TEST(IMCVariable, Display) {
  IMCVariable variable("dose", ROLE_PREDICTOR, MEASURE_ORDINAL);
  variable.SetRecordIndex(1);
  variable.AddCategory(1.0, "low");
  std::ostringstream os;
  variable.Display(os);
  EXPECT_EQ(os.str(),
            "Variable: dose\n"
            "Record index: 1\n"
            "Role: predictor (4)\n"
            "Measurement level: ordinal (3)\n"
            "Categories: 1\n"
            "Category 0: low\n");
}
