#include "results/GNLMOutputStats.h"

#include <gtest/gtest.h>

#include <sstream>

#include "host/cf/CFField.h"
#include "host/cf/CFFormat.h"
#include "host/cf/CFMetaData.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

using Stats = GNLMOutputStats;
using namespace MCMath_850::MCConst;

namespace {

MCXML_850::IMCVariable Variable(const std::string& name, MCMeasureLevel level, int categories) {
  MCXML_850::IMCVariable variable(name, ROLE_PREDICTOR, level);
  for (int c = 0; c < categories; ++c) variable.AddCategory(c + 1, std::to_string(c + 1));
  return variable;
}

CFMetaData Dictionary(const std::vector<std::string>& names) {
  CFMetaData metaData;
  for (std::size_t i = 0; i < names.size(); ++i) {
    CFField field(names[i], CFField::REAL_STORAGE);
    field.SetFormat(CFFormat(5, 8, static_cast<int>(i)));
    metaData.AddField(field);
  }
  return metaData;
}

}  // namespace

TEST(GNLMOutputStats, StartsWithEveryBlockAbsent) {
  const Stats stats;
  EXPECT_EQ(stats.GetBuildSettings(), nullptr);
  EXPECT_EQ(stats.GetModelDiagnostics(), nullptr);
  EXPECT_EQ(stats.GetStructuredData(), nullptr);
  EXPECT_EQ(stats.GetClassifMatrix(), nullptr);
  EXPECT_EQ(stats.GetEffectTest(), nullptr);
  EXPECT_EQ(stats.GetParamCollect(), nullptr);
  EXPECT_EQ(stats.GetEMMEANSSignifCollect(), nullptr);
  EXPECT_EQ(stats.GetEMMEANSCustomCollect(), nullptr);
  EXPECT_EQ(stats.GetStringMapCollect(), nullptr);
  EXPECT_EQ(stats.GetMCVarList(), nullptr);
  EXPECT_EQ(stats.GetDictMetadata(), nullptr);
  EXPECT_TRUE(stats.GetAllWarnings().empty());
}

TEST(GNLMOutputStats, MessageKeysAreTheFamilysKeys) {
  EXPECT_EQ(Stats::csKey_C8, "kGLMM_C8");
  EXPECT_EQ(Stats::csKey_C18, "kGLMM_C18");
  EXPECT_EQ(Stats::csKey_C19, "kGLMM_C19_1");
  EXPECT_EQ(Stats::csKey_C20, "kGLMM_C20");
  EXPECT_EQ(Stats::csKey_C30, "kGLMM_C30");
}

// Two creations in a row leave one object, empty.
TEST(GNLMOutputStats, ACreateReplacesTheBlockWithAnEmptyOne) {
  Stats stats;
  Stats::ParamCollectData* first = stats.CreateParamCollect();
  ASSERT_NE(first, nullptr);
  first->fvFixedParamEstim.resize(2);
  Stats::ParamCollectData* second = stats.CreateParamCollect();
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(stats.GetParamCollect(), second);
  EXPECT_TRUE(second->fvFixedParamEstim.empty());
  stats.DestroyParamCollect();
  EXPECT_EQ(stats.GetParamCollect(), nullptr);
  stats.DestroyParamCollect();
  EXPECT_EQ(stats.GetParamCollect(), nullptr);
}

TEST(GNLMOutputStats, CreatedBlocksHoldZerosAndEmptyContainers) {
  Stats stats;
  const Stats::BuildSettingsData* settings = stats.CreateBuildSettings();
  EXPECT_EQ(settings->fTargetIndex, 0);
  EXPECT_EQ(settings->fCIn, 0.0);
  EXPECT_TRUE(settings->fvRandomSpecs.empty());
  const Stats::ModelDiagnosticsData* diag = stats.CreateModelDiagnostics();
  EXPECT_EQ(diag->fAICC, 0.0);
  EXPECT_EQ(diag->fNumOfCommonSubjects, 0);
  EXPECT_TRUE(diag->fTargetDist.fvObserved.empty());
  EXPECT_TRUE(stats.CreateEMMEANSCustomCollect()->empty());
  EXPECT_TRUE(stats.CreateEMMEANSSignifCollect()->empty());
  EXPECT_TRUE(stats.CreateStringMapCollect()->empty());
  EXPECT_EQ(stats.CreateMCVarList()->Size(), 0);
  EXPECT_EQ(stats.CreateClassifMatrix()->fNumRows, 0);
  EXPECT_TRUE(stats.CreateStructuredData()->fvRandEffCovarMats.empty());
  EXPECT_TRUE(stats.CreateEffectTest()->fvFixedEffects.empty());
}

TEST(GNLMOutputStats, HasWarningComparesKeysExactly) {
  Stats stats;
  EXPECT_FALSE(stats.HasWarning(Stats::csKey_C18));
  Stats::WarningMsgData warning;
  warning.fPattern = "kGLMM_C18";
  stats.GetAllWarnings().push_back(warning);
  EXPECT_TRUE(stats.HasWarning(Stats::csKey_C18));
  EXPECT_FALSE(stats.HasWarning("KGLMM_C18"));
  EXPECT_FALSE(stats.HasWarning("kglmm_c18"));
  EXPECT_FALSE(stats.HasWarning("kGLMM_C1"));
}

TEST(GNLMOutputStats, TheFormatOfAFieldComesFromTheDictionary) {
  Stats stats;
  EXPECT_EQ(stats.GetCFFormat(0), nullptr);
  const CFMetaData metaData = Dictionary({"a", "b"});
  stats.SetDictMetadata(&metaData);
  EXPECT_EQ(stats.GetDictMetadata(), &metaData);
  EXPECT_EQ(stats.GetCFFormat(-1), nullptr);
  EXPECT_EQ(stats.GetCFFormat(2), nullptr);
  ASSERT_NE(stats.GetCFFormat(1), nullptr);
  EXPECT_EQ(stats.GetCFFormat(1)->GetDecimals(), 1);
}

TEST(GNLMOutputStats, TheVariableMapJoinsTheListAndTheDictionary) {
  Stats stats;
  const CFMetaData metaData = Dictionary({"y", "x", "g", "s", "unused"});
  stats.SetDictMetadata(&metaData);
  MCXML_850::MCVarList* list = stats.CreateMCVarList();
  list->AddVariable(Variable("g", MEASURE_NOMINAL, 3));
  list->AddVariable(Variable("y", MEASURE_CONTINUOUS, 0));
  list->AddVariable(Variable("s", MEASURE_ORDINAL, 2));
  list->AddVariable(Variable("X", MEASURE_CONTINUOUS, 4));
  stats.UpdateVariableMapInfo();
  const Stats::VariableMapInfo* info = stats.GetVariableMapInfo();
  EXPECT_EQ(info->fvFieldToVar, (std::vector<int>{1, 3, 0, 2, -1}));
  EXPECT_EQ(info->fvVarToField, (std::vector<int>{2, 0, 3, 1}));
  EXPECT_EQ(info->fvIsCategorical, (std::vector<bool>{true, false, true, false}));
  // A continuous variable counts no categories, whatever its list holds.
  EXPECT_EQ(info->fvNumCategories, (std::vector<int>{3, 0, 2, 0}));
  stats.ClearVariableMapInfo();
  EXPECT_TRUE(info->fvFieldToVar.empty());
  EXPECT_TRUE(info->fvNumCategories.empty());
}

TEST(GNLMOutputStats, AVariableTheDictionaryDoesNotHoldMapsNoField) {
  Stats stats;
  const CFMetaData metaData = Dictionary({"y"});
  stats.SetDictMetadata(&metaData);
  stats.CreateMCVarList()->AddVariable(Variable("missing", MEASURE_NOMINAL, 2));
  stats.UpdateVariableMapInfo();
  EXPECT_EQ(stats.GetVariableMapInfo()->fvFieldToVar, std::vector<int>{-1});
  EXPECT_EQ(stats.GetVariableMapInfo()->fvVarToField, std::vector<int>{-1});
  EXPECT_EQ(stats.GetVariableMapInfo()->fvNumCategories, std::vector<int>{2});
}

TEST(GNLMOutputStats, CopyingAPrintableValueClonesItsFormat) {
  Stats::PrintableValueData plain;
  plain.fValue = "1";
  const Stats::PrintableValueData plainCopy(plain);
  EXPECT_EQ(plainCopy.fpFormat, nullptr);
  EXPECT_EQ(plainCopy.fValue, "1");

  Stats::PrintableValueData formatted;
  formatted.fStorage = 2;
  formatted.fpFormat = new CFFormat(5, 10, 3);
  Stats::PrintableValueData copy(formatted);
  ASSERT_NE(copy.fpFormat, nullptr);
  EXPECT_NE(copy.fpFormat, formatted.fpFormat);
  EXPECT_EQ(*copy.fpFormat, *formatted.fpFormat);
  Stats::PrintableValueData assigned;
  assigned = formatted;
  ASSERT_NE(assigned.fpFormat, nullptr);
  EXPECT_NE(assigned.fpFormat, formatted.fpFormat);
  assigned = plain;
  EXPECT_EQ(assigned.fpFormat, nullptr);
  assigned = assigned;
  EXPECT_EQ(assigned.fValue, "1");
  // Records holding them copy them whole.
  Stats::PrintableListData list;
  list.fvValues.push_back(formatted);
  const Stats::PrintableListData listCopy = list;
  ASSERT_NE(listCopy.fvValues[0].fpFormat, nullptr);
  EXPECT_NE(listCopy.fvValues[0].fpFormat, formatted.fpFormat);
}

TEST(GNLMOutputStats, TheTranslatedTextTakesItsArguments) {
  const Stats stats;
  EXPECT_EQ(stats.GetTranslatedText("VarOfEffect", "Days"), "Var(Days)");
  EXPECT_EQ(stats.GetTranslatedText("Intercept"), "Intercept");
  EXPECT_EQ(stats.GetTranslatedText(nullptr), "");
}

TEST(GNLMOutputStats, TheDumpShowsEveryBlockThatIsThere) {
  Stats stats;
  std::ostringstream empty;
  stats.Display(empty);
  EXPECT_EQ(empty.str().find("Build settings"), std::string::npos);
  stats.CreateBuildSettings()->fTargetField = "cost";
  stats.CreateModelDiagnostics()->fAICC = -DBL_MAX;
  Stats::WarningMsgData warning;
  warning.fPattern = "kGLMM_C26";
  stats.GetAllWarnings().push_back(warning);
  std::ostringstream text;
  stats.Display(text);
  EXPECT_NE(text.str().find("Target: cost"), std::string::npos);
  EXPECT_NE(text.str().find("AICC, BIC, -2LL: . 0 0"), std::string::npos) << text.str();
  EXPECT_NE(text.str().find("Message: kGLMM_C26"), std::string::npos);
}
