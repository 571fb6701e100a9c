// The display strings and labels of the result model.
#include <gtest/gtest.h>

#include <memory>

#include "host/output/BpComposite.h"
#include "host/output/BpString.h"
#include "results/GNLMOutputStats.h"

using Stats = GNLMOutputStats;

namespace {

Stats::FactorData Factor(const std::string& field, const std::string& value, bool nest = false) {
  Stats::FactorData factor;
  factor.fField = field;
  factor.fValue.SetStringValue(value);
  factor.fNest = nest;
  return factor;
}

Stats::CovariateData Covariate(const std::string& field, int power = 1) {
  Stats::CovariateData covariate;
  covariate.fField = field;
  covariate.fPower = power;
  return covariate;
}

std::string Label(const Stats::RegrParamData& param) {
  const Stats stats;
  std::string out = "unchanged";
  EXPECT_TRUE(stats.formatEffectLabel(param, out));
  return out;
}

Stats::ModelEffectData Effect(const std::vector<std::string>& fields, const std::vector<int>& levels) {
  Stats::ModelEffectData effect;
  effect.fvFieldNames = fields;
  for (std::size_t i = 0; i < fields.size(); ++i) effect.fvFieldIndices.push_back(static_cast<int>(i));
  effect.fvNestingLevels = levels;
  return effect;
}

Stats::PrintableListData List(const std::string& pattern, int mapId = -1,
                              const std::vector<std::string>& subLists = {}) {
  Stats::PrintableListData list;
  list.fPattern = pattern;
  list.fMapId = mapId;
  for (const std::string& sub : subLists) list.fvSubLists.push_back(List(sub));
  return list;
}

}  // namespace

TEST(GNLMOutputStatsLabels, DistributionNames) {
  const Stats stats;
  EXPECT_EQ(stats.DistToDisplayString(Stats::BINOMIAL, false), "Binomial");
  EXPECT_EQ(stats.DistToDisplayString(Stats::IGAUSS, false), "Inverse Gaussian");
  EXPECT_EQ(stats.DistToDisplayString(Stats::NOMINAL, false), "Multinomial");
  EXPECT_EQ(stats.DistToDisplayString(Stats::ORDINAL, false), "Multinomial");
  EXPECT_EQ(stats.DistToDisplayString(Stats::NEGBIN, false), "Negative binomial");
  EXPECT_EQ(stats.DistToDisplayString(Stats::DIST_UNKNOWN, false), "Unknown");
  EXPECT_EQ(stats.DistToDisplayString(Stats::NEGBIN, true), "Negative binomial");
}

// Cauchit exists only for ordinal targets; a nominal target knows only the
// generalized logit.
TEST(GNLMOutputStatsLabels, LinkNamesDependOnTheDistribution) {
  const Stats stats;
  EXPECT_EQ(stats.LinkToDisplayString(Stats::CAUCHIT, Stats::NORMAL, false), "Unknown");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::CAUCHIT, Stats::ORDINAL, false), "Cumulative Cauchit");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::LOGIT, Stats::NOMINAL, false), "Generalized logit");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::PROBIT, Stats::NOMINAL, false), "Unknown");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::LOGIT, Stats::ORDINAL, false), "Cumulative logit");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::IDENTITY, Stats::ORDINAL, false), "Unknown");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::CLOGLOG, Stats::ORDINAL, false), "Cumulative complementary log-log");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::CLOGLOG, Stats::BINOMIAL, false), "Complementary log-log");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::LOGC, Stats::BINOMIAL, false), "Log complement");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::NLOGLOG, Stats::ORDINAL, false), "Cumulative negative log-log");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::POWER, Stats::GAMMA, false), "Power");
  EXPECT_EQ(stats.LinkToDisplayString(Stats::LINK_UNKNOWN, Stats::GAMMA, false), "Unknown");
}

TEST(GNLMOutputStatsLabels, OnlyAPowerLinkHasAParameterPattern) {
  EXPECT_EQ(Stats::LinkWithParamKey(Stats::POWER, Stats::GAMMA), "Power(^1)");
  EXPECT_EQ(Stats::LinkWithParamKey(Stats::POWER, Stats::ORDINAL), "");
  EXPECT_EQ(Stats::LinkWithParamKey(Stats::POWER, Stats::NOMINAL), "");
  EXPECT_EQ(Stats::LinkWithParamKey(Stats::LOG, Stats::GAMMA), "");
  const Stats stats;
  EXPECT_EQ(stats.GetTranslatedText("Power(^1)", "-1"), "Power (-1)");
}

TEST(GNLMOutputStatsLabels, CovarianceStructureNames) {
  const Stats stats;
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::VC, false), "Variance components");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::ID, false), "Scaled Identity");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::ID, true), "Scaled identity");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::SPLINLOG, false), "Spatial Linear-Log");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::COV_UNKNOWN, false), "Unknown");
  // The structures of our own have names of their own.
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::ARH1, true), "Heterogeneous first-order autoregressive");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::AD1, true), "First-order ante-dependence");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::CSH, true), "Heterogeneous compound symmetry");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::CSR, true), "Compound symmetry: correlation metric");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::FA1, true), "First-order factor analytic");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::FAH1, true), "Heterogeneous first-order factor analytic");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::HF, true), "Huynh-Feldt");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::TPH, true), "Heterogeneous Toeplitz");
  EXPECT_EQ(stats.CovarianceToDisplayString(Stats::UNR, true), "Unstructured: correlation metric");
}

TEST(GNLMOutputStatsLabels, ParameterLabels) {
  Stats::RegrParamData intercept;
  intercept.fIsIntercept = true;
  EXPECT_EQ(Label(intercept), "Intercept");

  Stats::RegrParamData squared;
  squared.fvCovariates = {Covariate("x", 2)};
  EXPECT_EQ(Label(squared), "x*x");

  Stats::RegrParamData lone;
  lone.fvFactors = {Factor("f", "1")};
  EXPECT_EQ(Label(lone), "f=1");
  lone.fvFactors = {Factor("f", "")};
  EXPECT_EQ(Label(lone), "f");

  Stats::RegrParamData mixed;
  mixed.fvCovariates = {Covariate("x")};
  mixed.fvFactors = {Factor("f", "1")};
  EXPECT_EQ(Label(mixed), "x*[f=1]");

  Stats::RegrParamData crossed;
  crossed.fvFactors = {Factor("a", "1"), Factor("b", "2")};
  EXPECT_EQ(Label(crossed), "[a=1]*[b=2]");

  Stats::RegrParamData nested;
  nested.fvFactors = {Factor("a", "1"), Factor("b", "2", true)};
  EXPECT_EQ(Label(nested), "[a=1]([b=2])");

  Stats::RegrParamData deep;
  deep.fvCovariates = {Covariate("x"), Covariate("z", 3)};
  deep.fvFactors = {Factor("a", "1", true), Factor("b", ""), Factor("c", "3", true)};
  EXPECT_EQ(Label(deep), "x*z*z*z([a=1]*[b=]([c=3]))");

  Stats::RegrParamData none;
  EXPECT_EQ(Label(none), "");
}

TEST(GNLMOutputStatsLabels, AListLabelIsItsPatternOrTheMappedParameter) {
  Stats stats;
  std::string out = "unchanged";
  EXPECT_TRUE(stats.formatEffectLabel(List("plain text"), out));
  EXPECT_EQ(out, "plain text");
  out = "unchanged";
  EXPECT_FALSE(stats.formatEffectLabel(List("G0.1", 1), out));
  EXPECT_EQ(out, "unchanged");

  std::vector<Stats::StringMapData>* maps = stats.CreateStringMapCollect();
  Stats::StringMapData map;
  map.fMapId = 1;
  Stats::MapEntryData entry;
  entry.fName = "G0.1";
  entry.fRegrParam.fvCovariates = {Covariate("Days")};
  entry.fRegrParam.fName = "G0.1";
  map.fvEntries.push_back(entry);
  maps->push_back(map);
  EXPECT_TRUE(stats.formatEffectLabel(List("G0.1", 1), out));
  EXPECT_EQ(out, "Days");
}

TEST(GNLMOutputStatsLabels, FindingAKeyInTheLabelMaps) {
  Stats stats;
  Stats::RegrParamData out;
  EXPECT_EQ(stats.FindValueFromStringMap(0, "B0", out), 1);
  stats.CreateStringMapCollect();
  EXPECT_EQ(stats.FindValueFromStringMap(0, "B0", out), 1);
  Stats::StringMapData empty;
  empty.fMapId = 0;
  Stats::StringMapData unnamed;  // a map whose id was empty
  unnamed.fMapId = -1;
  Stats::MapEntryData entry;
  entry.fName = "K";
  entry.fRegrParam.fIsIntercept = true;
  entry.fRegrParam.fName = "K";
  unnamed.fvEntries.push_back(entry);
  Stats::StringMapData second;  // a second map of id 0 is never searched
  second.fMapId = 0;
  second.fvEntries.push_back(entry);
  stats.GetStringMapCollect()->push_back(empty);
  stats.GetStringMapCollect()->push_back(unnamed);
  stats.GetStringMapCollect()->push_back(second);
  EXPECT_EQ(stats.FindValueFromStringMap(5, "K", out), 2);
  EXPECT_EQ(stats.FindValueFromStringMap(0, "K", out), 3);
  EXPECT_EQ(stats.FindValueFromStringMap(-1, "X", out), 3);
  EXPECT_EQ(stats.FindValueFromStringMap(-1, "K", out), 0);
  EXPECT_TRUE(out.fIsIntercept);
  EXPECT_EQ(out.fName, "K");
}

TEST(GNLMOutputStatsLabels, RandomEffectLabels) {
  const Stats stats;
  Stats::RandomSpecsData withIntercept;
  withIntercept.fIntercept = true;
  withIntercept.fvEffectList = {Effect({"Days"}, {0}), Effect({"a", "b", "c"}, {0, 1, 2})};
  std::string out;
  EXPECT_TRUE(stats.formatRandomEffectLabel(withIntercept, 0, out));
  EXPECT_EQ(out, "Intercept");
  EXPECT_TRUE(stats.formatRandomEffectLabel(withIntercept, 1, out));
  EXPECT_EQ(out, "Days");
  EXPECT_TRUE(stats.formatRandomEffectLabel(withIntercept, 2, out));
  EXPECT_EQ(out, "a(b(c))");

  // Without an intercept, number 0 is the first effect.
  Stats::RandomSpecsData plain;
  plain.fvEffectList = {Effect({"a", "b"}, {0, 0}), Effect({"a", "b", "c"}, {0, 0, 1})};
  EXPECT_TRUE(stats.formatRandomEffectLabel(plain, 0, out));
  EXPECT_EQ(out, "a * b");
  EXPECT_TRUE(stats.formatRandomEffectLabel(plain, 1, out));
  EXPECT_EQ(out, "a * b(c)");
}

TEST(GNLMOutputStatsLabels, CovarianceParameterLabels) {
  Stats stats;
  Stats::BuildSettingsData* settings = stats.CreateBuildSettings();
  Stats::RandomSpecsData block;
  block.fIntercept = true;
  block.fvEffectList = {Effect({"Days"}, {0})};
  settings->fvRandomSpecs.push_back(block);

  std::string key, text;
  std::vector<std::string> args;
  EXPECT_TRUE(stats.formatRandomEffectLabel(List("VarOfEffect", -1, {"1"}), 0, key, args, text));
  EXPECT_EQ(key, "VarOfEffect");
  EXPECT_EQ(args, std::vector<std::string>{"Days"});
  EXPECT_EQ(text, "Var(Days)");

  args.clear();
  EXPECT_TRUE(stats.formatRandomEffectLabel(List("UN(^1,^2)", -1, {"2", "1"}), 0, key, args, text));
  EXPECT_EQ(text, "UN (2,1)");
  args.clear();
  EXPECT_TRUE(stats.formatRandomEffectLabel(List("Variance "), static_cast<unsigned long>(-1), key, args, text));
  EXPECT_EQ(key, "Variance ");
  EXPECT_EQ(text, "Variance");
  args.clear();
  EXPECT_TRUE(stats.formatRandomEffectLabel(List("AR1 rho"), 0, key, args, text));
  EXPECT_EQ(text, "AR1 rho");

  // A negative or empty effect number cannot be labelled.
  args.clear();
  EXPECT_FALSE(stats.formatRandomEffectLabel(List("VarOfEffect", -1, {"-1"}), 0, key, args, text));
  EXPECT_TRUE(args.empty());
  EXPECT_FALSE(stats.formatRandomEffectLabel(List("VarOfEffect", -1, {""}), 0, key, args, text));
  // Nor a block the settings do not have.
  EXPECT_FALSE(stats.formatRandomEffectLabel(List("VarOfEffect", -1, {"0"}), 3, key, args, text));

  // A mapped list is no pattern: nothing is made.
  key = "kept";
  text = "kept";
  args.clear();
  EXPECT_TRUE(stats.formatRandomEffectLabel(List("G0.0", 1), 0, key, args, text));
  EXPECT_EQ(key, "kept");
  EXPECT_EQ(text, "kept");

  // With three arguments no text is made.
  text.clear();
  EXPECT_TRUE(stats.formatRandomEffectLabel(List("UN(^1,^2)", -1, {"1", "2", "3"}), 0, key, args, text));
  EXPECT_EQ(args.size(), 3u);
  EXPECT_TRUE(text.empty());
}

// 255 bytes stay one string; 256 become a composite of 255 and 1.
TEST(GNLMOutputStatsLabels, LongTextsBecomeCompositesOfPieces) {
  std::unique_ptr<BpCellText> shortText(Stats::LongStrToComposite(std::string(255, 'a')));
  ASSERT_NE(dynamic_cast<BpString*>(shortText.get()), nullptr);
  EXPECT_EQ(shortText->GetText(), std::string(255, 'a'));

  const std::string text = std::string(255, 'a') + "b";
  std::unique_ptr<BpCellText> longText(Stats::LongStrToComposite(text));
  BpComposite* composite = dynamic_cast<BpComposite*>(longText.get());
  ASSERT_NE(composite, nullptr);
  EXPECT_EQ(composite->GetPattern(), "[:^1:]1");
  EXPECT_TRUE(composite->IsFinished());
  EXPECT_EQ(longText->GetText(), text);

  // The cut is by bytes, even inside a character.
  const std::string accents = std::string(254, 'a') + "\xC3\xA9" + "z";
  std::unique_ptr<BpCellText> cut(Stats::LongStrToComposite(accents));
  EXPECT_EQ(cut->GetText(), accents);
}
