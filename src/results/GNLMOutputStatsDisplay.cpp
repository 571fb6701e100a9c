// The debug dump of GNLMOutputStats: every block the reader filled, one
// labelled line per value, so that a developer can see what the model
// viewer was given.
#include <cfloat>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"
#include "results/GNLMOutputStats.h"

namespace {

using Stats = GNLMOutputStats;

// The shortest text that reads back as the number; "." for the missing value.
std::string Num(double value) {
  if (value == -DBL_MAX) return ".";
  char buffer[40];
  for (int digits = 6; digits <= 17; ++digits) {
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, value);
    if (std::strtod(buffer, nullptr) == value) break;
  }
  return buffer;
}

template <typename Item, typename Show>
std::string Join(const std::vector<Item>& items, Show show) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) text += (i > 0 ? " " : "") + show(items[i]);
  return text;
}

std::string Values(const std::vector<CFStatVariableValue>& values) {
  return Join(values, [](const CFStatVariableValue& v) { return "'" + v.GetStringValue() + "'"; });
}

std::string Numbers(const std::vector<double>& values) { return Join(values, Num); }

std::string Texts(const std::vector<std::string>& values) {
  return Join(values, [](const std::string& v) { return "'" + v + "'"; });
}

std::string Ints(const std::vector<int>& values) {
  return Join(values, [](int v) { return std::to_string(v); });
}

class Dump {
 public:
  explicit Dump(std::ostream& os) : fOs(os) {}

  void Line(const std::string& label, const std::string& value) { fOs << fIndent << label << ": " << value << "\n"; }
  void Line(const std::string& label, double value) { Line(label, Num(value)); }
  void Line(const std::string& label, int value) { Line(label, std::to_string(value)); }
  void Line(const std::string& label, bool value) { Line(label, std::string(value ? "true" : "false")); }
  void Begin(const std::string& title) {
    fOs << fIndent << title << "\n";
    fIndent += "  ";
  }
  void End() { fIndent.resize(fIndent.size() - 2); }

  void Effect(const std::string& label, const Stats::ModelEffectData& e) {
    Line(label, Texts(e.fvFieldNames) + " [" + Ints(e.fvFieldIndices) + "] levels " + Ints(e.fvNestingLevels));
  }
  void Subject(const std::string& label, const Stats::SimpleSubjectData& s) {
    Line(label, Texts(s.fFieldNames) + " [" + Ints(s.fFieldIndices) + "] = " + Values(s.fSubjectValues) +
                    " categories " + Ints(s.fNumCategories));
  }
  void Coordinates(const std::string& label, const Stats::CoordinatesData& c) {
    Line(label, "feature " + std::to_string(c.fFeature) + " field '" + c.fField + "' statistic '" + c.fStatistic +
                    "': " + Texts(c.fValues));
  }
  void Regr(const std::string& label, const Stats::RegrParamData& r) {
    std::string text = r.fIsIntercept ? "intercept" : "'" + r.fName + "'";
    for (const Stats::CovariateData& c : r.fvCovariates) {
      text += " covariate " + c.fField + "[" + std::to_string(c.fFieldIndex) + "]^" + std::to_string(c.fPower);
    }
    for (const Stats::FactorData& f : r.fvFactors) {
      text += std::string(" factor ") + (f.fNest ? "(nested) " : "") + f.fField + "[" +
              std::to_string(f.fFieldIndex) + "]='" + f.fValue.GetStringValue() + "'";
    }
    Line(label, text);
  }
  void List(const std::string& label, const Stats::PrintableListData& l) {
    Begin(label + ": '" + l.fPattern + "' key " + (l.fIsKey ? "true" : "false") + " map " +
          std::to_string(l.fMapId));
    for (const Stats::PrintableListData& sub : l.fvSubLists) List("list", sub);
    for (const Stats::PrintableValueData& v : l.fvValues) {
      Line("value", "storage " + std::to_string(v.fStorage) + " '" + v.fValue + "'" + (v.fIsNull ? " null" : "") +
                        (v.fLabel.empty() ? "" : " label '" + v.fLabel + "'"));
    }
    End();
  }
  void Warnings(const std::vector<Stats::WarningMsgData>& warnings) {
    for (const Stats::WarningMsgData& w : warnings) Line("Message", w.fPattern + " " + Texts(w.fWarningParameters));
  }
  void Matrix(const std::string& label, const Stats::ClassifMatrixData& m) {
    Begin(label + ": " + std::to_string(m.fNumRows) + " rows, labels " + Values(m.fLabels));
    for (const Stats::ClassifRowData& row : m.fRows) Line("row", Numbers(row.fValues) + " | sum " + Num(row.fRowSum));
    End();
  }
  void Test(const std::string& label, const Stats::EffectStatData& t) {
    Line(label, "id " + std::to_string(t.fTestID) + " type " + std::to_string(t.fTestType) + " F " +
                    Num(t.fFStatistic) + " df " + Num(t.fDf1) + ", " + Num(t.fDf2) + " sig " + Num(t.fSig));
  }
  void Estimates(const Stats::EMMEANSEstimatesData& e) {
    for (const Stats::CoordinatesData& c : e.fvGroup) Coordinates("Group", c);
    Coordinates("Mean", e.fMean);
    Coordinates("Std. error", e.fStdErr);
    Coordinates("Lower", e.fConfIntervalLower);
    Coordinates("Upper", e.fConfIntervalUpper);
  }
  void ParamSet(const std::string& label, const Stats::ParamEstimData& set);

 private:
  std::ostream& fOs;
  std::string fIndent;
};

void Dump::ParamSet(const std::string& label, const Stats::ParamEstimData& set) {
  Begin(label);
  Line("Target value", set.fTargetValue.GetStringValue());
  Subject("Subject", set.fFiledData);
  for (const Stats::ParamStatsData& p : set.fvParamStats) {
    Begin("Parameter '" + p.fParamName + "' label '" + p.fParamLabel + "'");
    Line("Statistic", p.fStatistic.fName + "=" + p.fStatistic.fValue + " (" + std::to_string(p.fStatisticValue) + ")");
    Regr("Term", p.fRegrParam);
    List("Printable", p.fParamList);
    Line("Estimate, SE, df", Num(p.fEstimate) + " " + Num(p.fStdError) + " " + Num(p.fDf));
    Line("Interval", Num(p.fConfIntervalLower) + " " + Num(p.fConfIntervalUpper));
    Line("t, Z, sig, chi-square", Num(p.fTTest) + " " + Num(p.fZTest) + " " + Num(p.fSig) + " " + Num(p.fChiSquare));
    Line("Exp", Num(p.fExpEstimate) + " " + Num(p.fExpCILower) + " " + Num(p.fExpCIUpper));
    Line("Redundant", p.fIsRedundant);
    End();
  }
  End();
}

void ShowSettings(Dump& d, const Stats::BuildSettingsData& b) {
  d.Begin("Build settings");
  d.Line("Target", b.fTargetField + " [" + std::to_string(b.fTargetIndex) + "]");
  d.Line("Trials", std::string(b.fUseTrials ? "used" : "not used") + ", field '" + b.fTrialsField + "' [" +
                       std::to_string(b.fTrialsIndex) + "], value " + std::to_string(b.fTrialsValue));
  d.Line("Distribution", b.fDistributionText + " (" + std::to_string(b.fDistribution) + ")");
  d.Line("Link", b.fLinkFunctionText + " (" + std::to_string(b.fLinkFunction) + "), parameter " + Num(b.fLinkParam));
  d.Line("Algorithm", b.fAlgorithmName);
  d.Line("Confidence", b.fCIn);
  d.Line("Intercept", b.fIntercept);
  d.Line("Residual covariance", std::to_string(b.fResidualCovarianceType) + " band " +
                                    std::to_string(b.fResidualCovarianceTBand));
  d.Effect("Residual subjects", b.fResidualSubjectSpec);
  d.Line("Residual groups", Texts(b.fvResidualGroupSpec));
  for (const Stats::ModelEffectData& e : b.fvFixedEffectList) d.Effect("Fixed effect", e);
  for (const Stats::RandomSpecsData& r : b.fvRandomSpecs) {
    d.Begin("Random block");
    for (const Stats::ModelEffectData& e : r.fvEffectList) d.Effect("Effect", e);
    d.Line("Intercept", r.fIntercept);
    d.Effect("Subjects", r.fSubjectSpec);
    d.Line("Groups", Texts(r.fvGroupSpec));
    d.Line("Covariance", std::to_string(r.fCovarianceType) + " band " + std::to_string(r.fCovarianceTBand));
    d.End();
  }
  for (const Stats::EMMEANSData& m : b.fvEMMEANS) {
    d.Begin("Means request");
    d.Effect("Factors", m.fFactors);
    d.Line("Compare", "'" + m.fCompareFactor + "' contrast " + std::to_string(m.fContrastType) + " reference " +
                          std::to_string(m.fReferenceType) + " '" + m.fReferenceValue + "'");
    d.Line("Adjustment", m.fPAdjustment);
    d.End();
  }
  d.Line("Adjustment", b.fPAdjustment);
  d.End();
}

void ShowDiagnostics(Dump& d, const Stats::ModelDiagnosticsData& m) {
  d.Begin("Model diagnostics");
  d.Line("AICC, BIC, -2LL", Num(m.fAICC) + " " + Num(m.fBIC) + " " + Num(m.fMinus2LogLikelihood));
  d.Line("Classification accuracy", m.fClassificationAccuracy);
  d.Line("Covariance parameters", std::to_string(m.fNumOfCovParamOfRepeated) + " residual, " +
                                      std::to_string(m.fNumOfCovParamOfRandom) + " random");
  d.Line("Design columns", std::to_string(m.fNumOfColsOfFixed) + " fixed, " + std::to_string(m.fNumOfColsOfRandom) +
                               " random");
  d.Line("Common subjects", m.fNumOfCommonSubjects);
  d.Line("Grand mean", Num(m.fGrandMean) + " SE " + Num(m.fGrandMeanStdErr) + " [" + Num(m.fGrandMeanCILower) +
                           ", " + Num(m.fGrandMeanCIUpper) + "]");
  const Stats::TargetDistData& t = m.fTargetDist;
  d.Begin("Target distribution '" + t.fDescription + "'");
  d.Line("Total", t.fTotalFreq);
  d.Line("Mean, SD, shape, rate, r, p", Num(t.fMean) + " " + Num(t.fStdDeviation) + " " + Num(t.fShape) + " " +
                                            Num(t.fRate) + " " + Num(t.fR) + " " + Num(t.fP));
  d.Line("Observed", Numbers(t.fvObserved));
  d.Line("Frequency", Numbers(t.fvFrequency));
  d.End();
  const Stats::PredByObservData& p = m.fPredByObserv;
  d.Begin("Predicted by observed '" + p.fDescription + "'");
  d.Line("Total", p.fTotalFreq);
  d.Line("Observed", Numbers(p.fvObserved));
  d.Line("Predicted", Numbers(p.fvPredicted));
  d.Line("Frequency", Numbers(p.fvFrequency));
  d.Line("Range", Num(p.fMinValue) + " " + Num(p.fMaxValue));
  d.End();
  d.End();
}

void ShowStructured(Dump& d, const Stats::StructuredData& s) {
  d.Begin("First subject");
  d.Line("Records", s.fTotalFreq);
  d.Subject("Subject", s.fSubjectData);
  for (const Stats::RepMeasVarData& r : s.fvRepMeasVars) {
    d.Line("Repeated " + r.fField, "[" + std::to_string(r.fRepMeasInd) + "] " + Values(r.fValues) + " categories " +
                                       std::to_string(r.fNumCategories));
  }
  d.Line("Target values", Values(s.fvTargetValues));
  d.Line("Trials values", Values(s.fvTrialsValues));
  d.End();
  for (const Stats::RandEffCovarMatData& m : s.fvRandEffCovarMats) {
    d.Begin("Random effect covariances " + m.fStatName + "=" + Num(m.fStatValue));
    d.Line("Labels", Texts(m.fEffectLabels));
    for (const Stats::SimpleSubjectData& subject : m.fSimpleSubjects) d.Subject("Segment", subject);
    for (const Stats::ClassifMatrixData& matrix : m.fMatrixValues) d.Matrix("Matrix", matrix);
    d.End();
  }
}

void ShowCustomMeans(Dump& d, const Stats::EMMEANSCustomData& c) {
  d.Begin("Custom means, request " + std::to_string(c.fEMMEANSIndex));
  for (const Stats::SimpleFiledValueData& v : c.fvFieldValues) {
    d.Line("At " + v.fFieldName, v.fValue.GetStringValue());
  }
  d.Estimates(c.fEstimates);
  const Stats::EMMEANSContrastsData& k = c.fContrasts;
  d.Begin("Contrasts, kind " + std::to_string(k.fContrastKind) + ", level " + Num(k.fAdjustedSigLevel));
  for (const Stats::CoordinatesData& g : k.fvGroup) d.Coordinates("Group", g);
  d.Coordinates("Estimate", k.fContrastEstimate);
  d.Coordinates("Std. error", k.fStdErr);
  d.Coordinates("t", k.fTTest);
  d.Coordinates("df", k.fDf);
  d.Coordinates("Adj. sig.", k.fAdjustedSig);
  d.Coordinates("Lower", k.fConfIntervalLower);
  d.Coordinates("Upper", k.fConfIntervalUpper);
  d.End();
  for (const Stats::EMMEANSOverallTestData& t : c.fvOverallTests) {
    d.Subject("Test " + std::to_string(t.fTestID), t);
    d.Line("F, df, sig", Num(t.fFStatistic) + " " + Num(t.fDf1) + " " + Num(t.fDf2) + " " + Num(t.fSig));
  }
  d.Warnings(c.fvWarningList);
  d.End();
}

}  // namespace

void GNLMOutputStats::Display(std::ostream& os) const {
  Dump d(os);
  d.Begin("Result model");
  if (fpMCVarList != nullptr) {
    d.Begin("Variables");
    for (int i = 0; i < fpMCVarList->Size(); ++i) {
      const MCXML_850::IMCVariable& v = *fpMCVarList->GetVarAt(i);
      d.Line(v.GetName(), "measure " + std::to_string(v.GetMeasurementLevel()) + ", role " +
                              std::to_string(v.GetRole()) + ", categories " + Texts(v.GetCategoryTexts()));
    }
    d.End();
  }
  d.Line("Field to variable", Ints(fVariableMapInfo.fvFieldToVar));
  d.Line("Variable to field", Ints(fVariableMapInfo.fvVarToField));
  d.Line("Categories", Ints(fVariableMapInfo.fvNumCategories));
  if (fpBuildSettings != nullptr) ShowSettings(d, *fpBuildSettings);
  if (fpStringMapCollect != nullptr) {
    for (const StringMapData& map : *fpStringMapCollect) {
      d.Begin("Label map " + std::to_string(map.fMapId));
      for (const MapEntryData& entry : map.fvEntries) d.Regr(entry.fName, entry.fRegrParam);
      d.End();
    }
  }
  if (fpModelDiagnostics != nullptr) ShowDiagnostics(d, *fpModelDiagnostics);
  if (fpEffectTest != nullptr) {
    d.Begin("Tests");
    d.Test("Corrected model", fpEffectTest->fCorrectedModel);
    for (const EffectStatData& t : fpEffectTest->fvFixedEffects) d.Test("Fixed effect", t);
    d.End();
  }
  if (fpStructuredData != nullptr) ShowStructured(d, *fpStructuredData);
  if (fpClassifMatrix != nullptr) d.Matrix("Classification", *fpClassifMatrix);
  if (fpEMMEANSSignifCollect != nullptr) {
    for (const EMMEANSEstimatesData& e : *fpEMMEANSSignifCollect) {
      d.Begin("Means of a fixed effect");
      d.Estimates(e);
      d.End();
    }
  }
  if (fpEMMEANSCustomCollect != nullptr) {
    for (const EMMEANSCustomData& c : *fpEMMEANSCustomCollect) ShowCustomMeans(d, c);
  }
  if (fpParamCollect != nullptr) {
    for (const ParamEstimData& set : fpParamCollect->fvFixedParamEstim) d.ParamSet("Fixed parameters", set);
    for (const ParamEstimData& set : fpParamCollect->fvRepeatedParamEstim) d.ParamSet("Residual parameters", set);
    for (const ParamEstimBlockCollection& block : fpParamCollect->fvRandomParamEstim) {
      for (const ParamEstimData& set : block.fvParamEstim) {
        d.ParamSet("Random parameters of block " + std::to_string(block.fBlockIndex), set);
      }
    }
  }
  d.Warnings(fvAllWarnings);
  d.End();
}
