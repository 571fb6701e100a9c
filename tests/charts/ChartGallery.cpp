#include "ChartGallery.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "ChartsTestSupport.h"
#include "charts/GNLMChartOutput.h"
#include "charts/GNLMChartText.h"
#include "host/cf/CFMetaData.h"
#include "host/data/ZORV_Dataset.h"
#include "host/output/BpProcedure.h"
#include "results/GNLMOutputStats.h"

namespace ChartGallery {

const char* const kKinds[7] = {
    "GLMMPredictedByObserved", "GLMMFixedCoefficients", "GLMMFixedCoefficients", "GLMMEmMeans",
    "GLMMCustomEffects",       "GLMMSimpleContrasts",   "GLMMPairwiseContrasts"};

namespace {

using Stats = GNLMOutputStats;
using charts_test::Array;
using charts_test::Define;
using charts_test::Effect;

enum Column { REACTION = 0, DAYS, TREATMENT, SLEEP, SEX, DAY, AGE };

// A fixed sequence of numbers in [0, 1), the same on every run.
class Sequence {
 public:
  double Next() {
    fState = fState * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(fState >> 11) / 9007199254740992.0;
  }
  // Roughly normal, from twelve uniforms.
  double Normal() {
    double sum = 0.0;
    for (int i = 0; i < 12; ++i) sum += Next();
    return sum - 6.0;
  }

 private:
  unsigned long long fState = 20240611ULL;
};

std::string Text(double value) { return GNLMChartText::formatNumber(value); }

// The dictionary of a sleep study: reaction times by days of deprivation,
// treatment, sleep condition and sex.
void MakeData(ZORV_Dataset& data) {
  const ZORV_Format f80(ZORV_Format::F, 8, 0);
  Define(data, "Reaction", 0, "Reaction time (ms)", ZORV_Variable::SCALE, ZORV_Format(ZORV_Format::F, 8, 1));
  Define(data, "Days", 0, "", ZORV_Variable::SCALE, f80);
  ZORV_Variable& treatment = Define(data, "Treatment", 0, "", ZORV_Variable::NOMINAL, f80);
  treatment.ValueLabels().Add(1.0, "Placebo");
  treatment.ValueLabels().Add(2.0, "Low dose of the active compound given twice daily");
  treatment.ValueLabels().Add(3.0, "High dose of the active compound given once at bedtime");
  Define(data, "Sleep", 14, "Sleep condition", ZORV_Variable::NOMINAL, ZORV_Format(ZORV_Format::A, 14, 0));
  Define(data, "Sex", 6, "", ZORV_Variable::NOMINAL, ZORV_Format(ZORV_Format::A, 6, 0));
  Define(data, "Day", 0, "Day of study", ZORV_Variable::ORDINAL, f80).ValueLabels().Add(3.0, "Day 3 (midpoint of the study)");
  Define(data, "Age", 0, "", ZORV_Variable::SCALE, ZORV_Format(ZORV_Format::F, 8, 2));
}

void MakeSettings(Stats& stats, ZORV_Dataset& data) {
  Stats::BuildSettingsData& settings = charts_test::NormalModel(stats, data, REACTION);
  settings.fPAdjustment = 1;
  settings.fvFixedEffectList = {Effect(data, {DAYS}), Effect(data, {TREATMENT}), Effect(data, {DAYS, TREATMENT})};
}

// The target's histogram and each record's prediction against its value.
void MakeDiagnostics(Stats& stats) {
  Stats::ModelDiagnosticsData& diagnostics = *stats.CreateModelDiagnostics();
  Stats::TargetDistData& target = diagnostics.fTargetDist;
  target.fDescription = "TargetDistribution";
  const double frequencies[] = {2, 5, 11, 19, 27, 31, 24, 16, 9, 4, 2};
  for (int i = 0; i < 11; ++i) {
    target.fvObserved.push_back(160.0 + 18.0 * i);
    target.fvFrequency.push_back(frequencies[i]);
    target.fTotalFreq += static_cast<int>(frequencies[i]);
  }
  target.fMean = 250.0;
  target.fStdDeviation = 45.0;
  Stats::PredByObservData& points = diagnostics.fPredByObserv;
  points.fDescription = "observedByPredicted";
  points.fMinValue = 1e300;
  points.fMaxValue = -1e300;
  Sequence random;
  for (int i = 0; i < 160; ++i) {
    const double observed = 250.0 + 45.0 * random.Normal();
    const double predicted = 250.0 + 0.8 * (observed - 250.0) + 14.0 * random.Normal();
    points.fvObserved.push_back(observed);
    points.fvPredicted.push_back(predicted);
    points.fvFrequency.push_back(1.0 + std::floor(random.Next() * 4.0));
    points.fTotalFreq += static_cast<int>(points.fvFrequency.back());
    points.fMinValue = std::min({points.fMinValue, observed, predicted});
    points.fMaxValue = std::max({points.fMaxValue, observed, predicted});
  }
}

Stats::ParamStatsData Coefficient(const std::string& label, double estimate, double sig, int effect) {
  Stats::ParamStatsData param;
  param.fParamLabel = label;
  param.fEstimate = estimate;
  param.fSig = sig;
  param.fRegrParam.fIsIntercept = effect < 0;
  param.fStatisticValue = effect;
  if (effect >= 0) param.fStatistic = {"fixedEffectIndex", std::to_string(effect)};
  return param;
}

void AddTreatment(Stats::ParamStatsData& param, ZORV_Dataset& data, const std::string& value) {
  Stats::FactorData factor;
  factor.fField = "Treatment";
  factor.fFieldIndex = TREATMENT;
  factor.fValue.SetCompleteValue(value, *data.GetVariable(TREATMENT));
  param.fRegrParam.fvFactors.push_back(factor);
}

void MakeEstimates(Stats& stats, ZORV_Dataset& data) {
  Stats::EffectTestData& tests = *stats.CreateEffectTest();
  tests.fvFixedEffects = {{0, 3, 45.2, 1, 17, 0.00002}, {1, 3, 4.1, 2, 17, 0.03}, {2, 3, 1.3, 2, 160, 0.31}};
  Stats::ParamCollectData& params = *stats.CreateParamCollect();
  params.fvFixedParamEstim.resize(1);
  std::vector<Stats::ParamStatsData>& list = params.fvFixedParamEstim[0].fvParamStats;
  list.push_back(Coefficient("Intercept", 251.4, 0.00001, -1));
  list.push_back(Coefficient("Days", 10.5, 0.00003, 0));
  list.back().fRegrParam.fvCovariates.push_back({"Days", DAYS, 1});
  list.push_back(Coefficient("[Treatment=1]", -12.3, 0.008, 1));
  AddTreatment(list.back(), data, "1");
  list.push_back(Coefficient("[Treatment=2]", 4.1, 0.12, 1));
  AddTreatment(list.back(), data, "2");
  list.push_back(Coefficient("Days*[Treatment=1]", -1.9, 0.4, 2));
  list.back().fRegrParam.fvCovariates.push_back({"Days", DAYS, 1});
  AddTreatment(list.back(), data, "1");
}

// Means with intervals of half-width `margin` into a record.
void SetMeans(Stats::EMMEANSEstimatesData& estimates, const std::vector<double>& means, double margin) {
  std::vector<std::string> mean, lower, upper;
  for (double m : means) {
    mean.push_back(Text(m));
    lower.push_back(Text(m - margin));
    upper.push_back(Text(m + margin));
  }
  estimates.fMean = Array("", mean);
  estimates.fConfIntervalLower = Array("", lower);
  estimates.fConfIntervalUpper = Array("", upper);
}

// The means of the most significant effect: treatment by sleep condition.
void MakeMostSignificant(Stats& stats) {
  Stats::EMMEANSEstimatesData estimates;
  std::vector<std::string> treatments, conditions;
  std::vector<double> means;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 2; ++b) {
      treatments.push_back(std::to_string(a + 1));
      conditions.push_back(b == 0 ? "Rested" : "Sleep deprived");
      means.push_back(255.0 + 18.0 * a + 31.0 * b - 6.0 * a * b);
    }
  }
  estimates.fvGroup = {Array("Treatment", treatments), Array("Sleep", conditions)};
  SetMeans(estimates, means, 11.5);
  stats.CreateEMMEANSSignifCollect()->push_back(estimates);
}

// Means by day, sleep condition and sex, at a given age.
Stats::EMMEANSCustomData CustomMeans(ZORV_Dataset& data) {
  Stats::EMMEANSCustomData custom;
  custom.fEMMEANSIndex = 0;
  std::vector<std::string> days, conditions, sexes;
  std::vector<double> means;
  for (int c = 0; c < 2; ++c) {
    for (int b = 0; b < 2; ++b) {
      for (int a = 0; a < 4; ++a) {
        days.push_back(std::to_string(a + 1));
        conditions.push_back(b == 0 ? "Rested" : "Sleep deprived");
        sexes.push_back(c == 0 ? "Female" : "Male");
        means.push_back(240.0 + 9.0 * a + 20.0 * b + 12.0 * c);
      }
    }
  }
  custom.fEstimates.fvGroup = {Array("Day", days), Array("Sleep", conditions), Array("Sex", sexes)};
  SetMeans(custom.fEstimates, means, 8.0);
  custom.fvFieldValues.push_back({"Age", CFStatVariableValue()});
  custom.fvFieldValues.back().fValue.SetCompleteValue("34.5", *data.GetVariable(AGE));
  return custom;
}

// Each day against day 4 within each sex.
Stats::EMMEANSCustomData SimpleContrasts() {
  Stats::EMMEANSCustomData custom;
  custom.fEMMEANSIndex = 1;
  const char* sexes[] = {"Female", "Male"};
  const double means[2][4] = {{262.0, 249.5, 271.0, 258.0}, {270.0, 266.0, 290.5, 268.5}};
  std::vector<std::string> sexOfMean, dayOfMean, sexOfContrast, levels, references, estimates, sigs, lower, upper;
  std::vector<double> meanValues;
  for (int f = 0; f < 2; ++f) {
    for (int level = 0; level < 4; ++level) {
      sexOfMean.push_back(sexes[f]);
      dayOfMean.push_back(std::to_string(level + 1));
      meanValues.push_back(means[f][level]);
      if (level == 3) continue;
      const double difference = means[f][level] - means[f][3];
      sexOfContrast.push_back(sexes[f]);
      levels.push_back(std::to_string(level + 1));
      references.push_back("4");
      estimates.push_back(Text(difference));
      sigs.push_back(std::fabs(difference) > 10.0 ? "0.004" : "0.43");
      lower.push_back(Text(difference - 7.5));
      upper.push_back(Text(difference + 7.5));
    }
  }
  custom.fEstimates.fvGroup = {Array("Sex", sexOfMean), Array("Day", dayOfMean)};
  SetMeans(custom.fEstimates, meanValues, 6.0);
  Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
  contrasts.fContrastKind = 2;
  contrasts.fAdjustedSigLevel = 0.05;
  contrasts.fvGroup = {Array("Sex", sexOfContrast), Array("Day", levels), Array("Day", references)};
  contrasts.fContrastEstimate = Array("", estimates);
  contrasts.fAdjustedSig = Array("", sigs);
  contrasts.fConfIntervalLower = Array("", lower);
  contrasts.fConfIntervalUpper = Array("", upper);
  custom.fvOverallTests.resize(2);
  return custom;
}

// Every pair of five days.
Stats::EMMEANSCustomData PairwiseContrasts() {
  Stats::EMMEANSCustomData custom;
  custom.fEMMEANSIndex = 2;
  custom.fEstimates.fvGroup = {Array("Day", {"1", "2", "3", "4", "5"})};
  SetMeans(custom.fEstimates, {250, 262, 279, 291, 305}, 9.0);
  Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
  contrasts.fContrastKind = 0;
  contrasts.fAdjustedSigLevel = 0.05;
  std::vector<std::string> levels, references, estimates, sigs;
  Sequence random;
  for (int i = 1; i <= 5; ++i) {
    for (int j = i + 1; j <= 5; ++j) {
      levels.push_back(std::to_string(i));
      references.push_back(std::to_string(j));
      estimates.push_back(Text(-12.0 * (j - i)));
      sigs.push_back(Text(std::pow(random.Next(), 2.5)));
    }
  }
  contrasts.fvGroup = {Array("Day", levels), Array("Day", references)};
  contrasts.fContrastEstimate = Array("", estimates);
  contrasts.fAdjustedSig = Array("", sigs);
  custom.fvOverallTests.resize(1);
  return custom;
}

}  // namespace

void Build(OmDocument& document) {
  OmHeading& heading = document.fRoot.AddHeading("Generalized Linear Mixed Models");
  BpProcedure procedure(heading, "Generalized Linear Mixed Models", "Generalized Linear Mixed Models");
  ZORV_Dataset data;
  MakeData(data);
  const CFMetaData metadata(data);
  GNLMOutputStats stats;
  stats.SetDictMetadata(&metadata);
  MakeSettings(stats, data);
  MakeDiagnostics(stats);
  MakeEstimates(stats, data);
  MakeMostSignificant(stats);

  GNLMChartOutput charts(&procedure, &data, stats);
  charts.createPredictedByObservedChart();
  charts.createFixedEffectsChart();
  charts.createFixedCoefficientsChart();
  charts.createEMMeansChart();
  GNLMChartOutput(&procedure, &data, stats).createCustomEffectsChart(CustomMeans(data));
  GNLMChartOutput(&procedure, &data, stats).createContrastsChart(SimpleContrasts());
  GNLMChartOutput(&procedure, &data, stats).createContrastsChart(PairwiseContrasts());
}

}  // namespace ChartGallery
