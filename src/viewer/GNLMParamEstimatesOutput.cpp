#include "viewer/GNLMParamEstimatesOutput.h"

#include <cfloat>
#include <memory>

#include "base/MIXAssert.h"
#include "host/data/ZORV_DataSource.h"
#include "host/files/PathFactory.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpComposite.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpDimension.h"
#include "host/output/BpError.h"
#include "host/output/BpHeading.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/strings/FacSTDictionary.h"
#include "viewer/GNLMTableText.h"

using Stats = GNLMOutputStats;

namespace {

BpAnnotation Footnote(const BpCellText& text) { return BpAnnotation(text.Replicate(), -1, false); }

BpAnnotation KeyFootnote(const std::string& key) { return Footnote(BpString(key, true)); }

bool IsOneOf(Stats::EnumDistTypes dist, std::initializer_list<Stats::EnumDistTypes> dists) {
  for (Stats::EnumDistTypes d : dists) {
    if (dist == d) return true;
  }
  return false;
}

}  // namespace

GNLMParamEstimatesOutput::GNLMParamEstimatesOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource,
                                                   const GNLMOutputStats* pOutputStats)
    : fSysmis(-DBL_MAX),
      fpProcedure(pProcedure),
      fpDataSource(pDataSource),
      fpOutputStats(pOutputStats),
      fpBuildSettings(pOutputStats != nullptr ? pOutputStats->GetBuildSettings() : nullptr) {}

// --- Fixed effects ---------------------------------------------------------

void GNLMParamEstimatesOutput::DisplayFixedEffectsTable() {
  if (fpBuildSettings == nullptr) return;
  const Stats::EffectTestData* pEffectStatData = fpOutputStats->GetEffectTest();
  MIX_ASSERT(pEffectStatData != 0, "pEffectStatData != 0");
  const std::size_t nEffects = pEffectStatData->fvFixedEffects.size();
  MIX_ASSERT(nEffects == fpBuildSettings->fvFixedEffectList.size(),
             "nEffects == fpBuildSettings->fvFixedEffectList.size()");
  if (nEffects == 0 && !fpBuildSettings->fIntercept) return;

  BpPivotTable table = fpProcedure->PivotTable(BpString("Fixed Effects", true), BpString("FixedEffects", false), true);
  GNLMTableText::AddTargetNote(table, *fpBuildSettings, fpDataSource);
  AddDistributionCaption(table);
  BpDimension sources = GNLMTableText::Dimension(table, BpString("Source", true), 0, 1, false, false);
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", true), 1, 1, true, false);
  CreateEffectMap(fpBuildSettings->fvFixedEffectList, fvEffectLabels);

  auto addTest = [&statistics](const Stats::EffectStatData& test) {
    statistics.Category(BpString("F", true)).Cell(BpNumber(test.fFStatistic, BpProcedure::GeneralStat()));
    statistics.Category(BpString("df1", true)).Cell(BpNumber(test.fDf1, BpProcedure::Count()));
    statistics.Category(BpString("df2", true)).Cell(BpNumber(test.fDf2, BpProcedure::Count()));
    statistics.Category(BpString("Sig.", true)).Cell(BpNumber(test.fSig, BpProcedure::Significance()));
  };
  BpCategory corrected = sources.Category(BpString("Corrected Model", true));
  if (nEffects == 0) corrected.Note(KeyFootnote("Fixed effects intercept only ..."));
  addTest(pEffectStatData->fCorrectedModel);
  // The tests stand in the model's order, as the labels do.
  for (std::size_t i = 0; i < nEffects; ++i) {
    sources.Category(BpString(fvEffectLabels[i], false));
    addTest(pEffectStatData->fvFixedEffects[i]);
  }
}

void GNLMParamEstimatesOutput::CreateEffectMap(const std::vector<Stats::ModelEffectData>& effects,
                                               std::vector<std::string>& labels) const {
  if (!labels.empty()) return;
  for (const Stats::ModelEffectData& effect : effects) {
    if (effect.fvFieldNames.empty()) {
      FacSTDictionary dictionary(PathFactory::getPathInstance(PathFactory::PRESENTATION)->GetStringTablePath());
      dictionary.SetProcedure("Generalized Linear Mixed Models");
      labels.push_back(dictionary.LookUp("Intercept"));
      continue;
    }
    std::vector<std::string> names;
    for (std::size_t k = 0; k < effect.fvFieldNames.size(); ++k) {
      const ZORV_Variable* pVariable =
          GNLMTableText::Variable(fpDataSource, k < effect.fvFieldIndices.size() ? effect.fvFieldIndices[k] : -1);
      names.push_back(pVariable != nullptr ? pVariable->GetName() : effect.fvFieldNames[k]);
    }
    labels.push_back(Stats::JoinEffectFields(effect, names));
  }
}

void GNLMParamEstimatesOutput::AddDistributionCaption(BpPivotTable& table) const {
  const Stats::BuildSettingsData& settings = *fpBuildSettings;
  const bool withParam = settings.fLinkParam != fSysmis;
  BpComposite caption(withParam ? "Probability Distribution ^1, Link Function ^2 with ^3 ..."
                                : "Probability Distribution ^1, Link Function ^2 ...",
                      true);
  caption.Add(BpString(fpOutputStats->DistToDisplayString(settings.fDistribution, true), false));
  caption.Add(
      BpString(fpOutputStats->LinkToDisplayString(settings.fLinkFunction, settings.fDistribution, true), false));
  if (withParam) caption.Add(BpNumber(settings.fLinkParam, BpProcedure::SigDigit(settings.fLinkParam)));
  caption.Finish();
  table.Caption(caption);
}

// --- Fixed coefficients ----------------------------------------------------

void GNLMParamEstimatesOutput::DisplayParamEstimTable() {
  if (fpBuildSettings == nullptr) return;
  const Stats::ParamCollectData* pParamCollect = fpOutputStats->GetParamCollect();
  if (pParamCollect == nullptr || pParamCollect->fvFixedParamEstim.empty()) return;
  if (fpBuildSettings->fDistribution == Stats::NOMINAL) {
    displayFixedParamEstimTable(fpProcedure, pParamCollect->fvFixedParamEstim);
    return;
  }
  MIX_ASSERT(pParamCollect->fvFixedParamEstim.size() == 1, "pParamCollect->fvFixedParamEstim.size() == 1");
  displayFixedParamEstimTable(fpProcedure, pParamCollect->fvFixedParamEstim.front());
}

void GNLMParamEstimatesOutput::displayFixedParamEstimTable(BpHeading* pHeading, const Stats::ParamEstimData& set) {
  BpPivotTable table = FixedCoefficientsTable(pHeading);
  BpDimension terms = GNLMTableText::Dimension(table, BpString("Model Term", true), 0, 1, false, false);
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", true), 1, 1, true, false);
  for (const Stats::ParamStatsData& param : set.fvParamStats) {
    AddModelTerm(terms, param, fpBuildSettings->fDistribution == Stats::ORDINAL);
    AddCoefficientCells(statistics, param);
  }
}

void GNLMParamEstimatesOutput::displayFixedParamEstimTable(BpHeading* pHeading,
                                                           const std::vector<Stats::ParamEstimData>& sets) {
  const Stats::BuildSettingsData& settings = *fpBuildSettings;
  BpPivotTable table = FixedCoefficientsTable(pHeading);
  BpDimension terms = GNLMTableText::Dimension(table, BpString("Model Term", true), 0, 1, false, false);
  BpDimension categories = GNLMTableText::Dimension(
      table,
      *GNLMTableText::VariableText(fpDataSource, settings.fTargetIndex, settings.fTargetField, BpVariable::AS_SET), 0,
      2, false, false);
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", true), 1, 1, true, false);
  for (const Stats::ParamEstimData& set : sets) {
    for (const Stats::ParamStatsData& param : set.fvParamStats) {
      categories.Category(
          *GNLMTableText::ValueText(fpDataSource, settings.fTargetIndex, set.fTargetValue, BpDataValue::AS_SET));
      AddModelTerm(terms, param, false);
      AddCoefficientCells(statistics, param);
    }
  }
}

BpPivotTable GNLMParamEstimatesOutput::FixedCoefficientsTable(BpHeading* pHeading) const {
  BpPivotTable table =
      pHeading->PivotTable(BpString("Fixed Coefficients", true), BpString("FixedCoefficients", false), true);
  GNLMTableText::AddTargetNote(table, *fpBuildSettings, fpDataSource);
  AddDistributionCaption(table);
  return table;
}

// A parameter's row: a threshold of an ordinal target (a parameter that
// belongs to no effect) under "Threshold for target=", else the intercept
// or the parameter's label.
void GNLMParamEstimatesOutput::AddModelTerm(BpDimension& terms, const Stats::ParamStatsData& param,
                                            bool thresholds) const {
  const Stats::BuildSettingsData& settings = *fpBuildSettings;
  if (thresholds && param.fStatisticValue < 0) {
    BpComposite title("Threshold for ^1=", true);
    title.Add(
        *GNLMTableText::VariableText(fpDataSource, settings.fTargetIndex, settings.fTargetField, BpVariable::LABEL));
    title.Finish();
    BpGroup group = terms.Group(title, true, 2);
    const std::vector<Stats::FactorData>& factors = param.fRegrParam.fvFactors;
    const CFStatVariableValue value = factors.empty() ? CFStatVariableValue() : factors.front().fValue;
    group.Category(*GNLMTableText::ValueText(fpDataSource, settings.fTargetIndex, value, BpDataValue::VALUE));
    return;
  }
  if (param.fRegrParam.fIsIntercept) {
    terms.Category(BpString("Intercept", true));
    return;
  }
  const std::unique_ptr<BpCellText> label(Stats::LongStrToComposite(param.fParamLabel));
  terms.Category(*label);
}

void GNLMParamEstimatesOutput::AddCoefficientCells(BpDimension& statistics, const Stats::ParamStatsData& param) const {
  const bool redundant = param.fIsRedundant;
  const auto shown = [&](double value) { return redundant ? fSysmis : value; };
  BpCategory coefficient = statistics.Category(BpString("Coefficient", true));
  if (redundant) {
    coefficient.Cell(BpNumber(0.0, BpProcedure::Count()));
    coefficient.CellNote(KeyFootnote("Redundant coefficient, zero ..."));
  } else {
    coefficient.Cell(BpNumber(param.fEstimate, BpProcedure::Coefficient()));
  }
  statistics.Category(BpString("Std. Error", true))
      .Cell(BpNumber(shown(param.fStdError), BpProcedure::CoefficientSE()));
  statistics.Category(BpString("t", true)).Cell(BpNumber(shown(param.fTTest), BpProcedure::GeneralStat()));
  statistics.Category(BpString("Sig.", true)).Cell(BpNumber(shown(param.fSig), BpProcedure::Significance()));
  GNLMTableText::AddInterval(statistics, fpBuildSettings->fCIn, shown(param.fConfIntervalLower),
                             shown(param.fConfIntervalUpper));
  if (param.fExpEstimate == fSysmis) return;
  statistics.Category(BpString("Exp(Coefficient)", true))
      .Cell(BpNumber(shown(param.fExpEstimate), BpProcedure::Coefficient()));
  GNLMTableText::AddInterval(statistics, fpBuildSettings->fCIn, shown(param.fExpCILower), shown(param.fExpCIUpper),
                             "^1% Confidence Interval for Exp(Coefficient)");
}

// --- Random effect covariances ---------------------------------------------

void GNLMParamEstimatesOutput::DisplayRandomEffectCovarTables() {
  if (fpBuildSettings == nullptr) return;
  const Stats::StructuredData* pStructured = fpOutputStats->GetStructuredData();
  if (pStructured == nullptr || pStructured->fvRandEffCovarMats.empty()) return;
  BpHeading heading = fpProcedure->Heading(BpString("Random Effect Covariances", true));
  for (std::size_t block = 0; block < pStructured->fvRandEffCovarMats.size(); ++block) {
    DisplayRandomEffectCovarTable(&heading, pStructured->fvRandEffCovarMats[block], static_cast<int>(block));
  }
}

void GNLMParamEstimatesOutput::DisplayRandomEffectCovarTable(BpHeading* pHeading,
                                                             const Stats::RandEffCovarMatData& randEffCovars,
                                                             int block) {
  const Stats::BuildSettingsData& settings = *fpBuildSettings;
  const Stats::RandomSpecsData& spec = RandomBlock(block);
  BpComposite title("Random Effect Block ^1", true);
  title.Add(BpNumber(block + 1, BpProcedure::Count()));
  title.Finish();
  MIX_ASSERT(randEffCovars.fSimpleSubjects.size() == randEffCovars.fMatrixValues.size(),
             "randEffCovars.fSimpleSubjects.size() == randEffCovars.fMatrixValues.size()");
  const std::size_t nCat = randEffCovars.fMatrixValues.size();

  BpPivotTable table = pHeading->PivotTable(title, BpString("RandomEffects", false), true);
  table.Caption(CovarianceCaption(spec.fCovarianceType, spec.fSubjectSpec, false));
  const std::vector<std::string>& labels = randEffCovars.fEffectLabels;
  BpDimension rows = GNLMTableText::Dimension(table, BpString("Random Effect Block", true), 0, 1, false, false);

  const bool segmented = settings.fDistribution == Stats::NOMINAL || !spec.fvGroupSpec.empty();
  BpDimension segments;
  if (segmented) {
    segments = GNLMTableText::Dimension(table, *SegmentsName(spec), 0, 2, false, false);
  } else {
    MIX_ASSERT(nCat == 1, "nCat == 1");
  }
  BpDimension cols = GNLMTableText::Dimension(table, BpString("Random Effect Block Column", true), 1, 1, true, false);

  for (std::size_t s = 0; s < nCat; ++s) {
    if (segmented) {
      const Stats::SimpleSubjectData& subjectData = randEffCovars.fSimpleSubjects[s];
      if (spec.fvGroupSpec.empty()) {
        MIX_ASSERT(subjectData.fSubjectValues.size() == 1, "subjectData.fSubjectValues.size() == 1");
        segments.Category(*GNLMTableText::ValueText(fpDataSource, settings.fTargetIndex,
                                                    subjectData.fSubjectValues.front(), BpDataValue::AS_SET));
      } else {
        segments.Category(GroupLabel(subjectData));
      }
    }
    const Stats::ClassifMatrixData& matrix = randEffCovars.fMatrixValues[s];
    for (std::size_t r = 0; r < labels.size() && r < matrix.fRows.size(); ++r) {
      rows.Category(BpString(labels[r], false));
      const std::vector<double>& values = matrix.fRows[r].fValues;
      for (std::size_t c = 0; c < labels.size() && c < values.size(); ++c) {
        cols.Category(BpString(labels[c], false)).Cell(BpNumber(values[c], BpProcedure::GeneralStat()));
      }
    }
  }
}

// --- Covariance parameters -------------------------------------------------

void GNLMParamEstimatesOutput::DisplayCovarParamTable() {
  if (fpBuildSettings == nullptr) return;
  const Stats::ModelDiagnosticsData* pModelDiagnotics = fpOutputStats->GetModelDiagnostics();
  MIX_ASSERT(pModelDiagnotics, "pModelDiagnotics");
  const bool constrained = fpOutputStats->HasWarning(Stats::csKey_C8) || fpOutputStats->HasWarning(Stats::csKey_C9);

  BpHeading heading = fpProcedure->Heading(BpString("Covariance Parameters", true));
  BpPivotTable table = heading.PivotTable(BpString("Covariance Parameters Summary", true),
                                          BpString("CovarianceParametersSummary", false), true);
  if (!constrained) table.Caption(BpString("Common Subjects are based on ...", true));
  BpDimension content = GNLMTableText::Dimension(table, BpString("Content", true), 0, 1, true, false);
  auto count = [](int value) { return BpNumber(value, BpProcedure::Count()); };
  BpGroup parameters = content.Group(BpString("Covariance Parameters", true), true, 2);
  parameters.Category(BpString("Residual Effect", true)).Cell(count(pModelDiagnotics->fNumOfCovParamOfRepeated));
  parameters.Category(BpString("Random Effects", true)).Cell(count(pModelDiagnotics->fNumOfCovParamOfRandom));
  BpGroup columns = content.Group(BpString("Design Matrix Columns", true), true, 2);
  columns.Category(BpString("Fixed Effects", true)).Cell(count(pModelDiagnotics->fNumOfColsOfFixed));
  BpCategory randomColumns = columns.Category(BpString("Random Effects", true));
  randomColumns.Cell(count(pModelDiagnotics->fNumOfColsOfRandom));
  if (!constrained) {
    randomColumns.CellNote(KeyFootnote("Number of common subject ..."));
    content.Category(BpString("Common Subjects", true)).Cell(count(pModelDiagnotics->fNumOfCommonSubjects));
  }

  const Stats::ParamCollectData* pParamCollect = fpOutputStats->GetParamCollect();
  if (pParamCollect != nullptr) {
    DisplayResidualParamEstimTable(&heading, pParamCollect->fvRepeatedParamEstim);
    const int nBlocks = static_cast<int>(pParamCollect->fvRandomParamEstim.size());
    for (const Stats::ParamEstimBlockCollection& collection : pParamCollect->fvRandomParamEstim) {
      DisplayRandomParamEstimTable(&heading, collection.fvParamEstim, static_cast<int>(collection.fBlockIndex),
                                   nBlocks);
    }
  }
  ShowIndefiniteMatrices();
}

// "Covariance Parameters: the message", as a warning of the fit.
void GNLMParamEstimatesOutput::ShowIndefiniteMatrices() const {
  for (const Stats::WarningMsgData& warning : fpOutputStats->GetAllWarnings()) {
    if (warning.fPattern != Stats::csKey_GNotPD && warning.fPattern != Stats::csKey_RNotPD) continue;
    BpComposite message(warning.fPattern, true);
    for (const std::string& parameter : warning.fWarningParameters) message.Add(BpString(parameter, false));
    message.Finish();
    BpComposite text("^1: ^2", false);
    text.Add(BpString("Covariance Parameters", true));
    text.Add(message);
    text.Finish();
    BpError(text, BpErrorShowOutput, BpErrorLevelWarning);
  }
}

void GNLMParamEstimatesOutput::DisplayResidualParamEstimTable(
    BpHeading* pHeading, const std::vector<Stats::ParamEstimData>& paramEstimVect) {
  // A model without residual parameters (a multinomial target's document
  // may have none) has no table of them.
  if (paramEstimVect.empty()) return;
  const Stats::BuildSettingsData& settings = *fpBuildSettings;
  BpPivotTable table = pHeading->PivotTable(BpString("Residual Effect", true), BpString("ResidualEffect", false), true);
  if (fpOutputStats->HasWarning(Stats::csKey_C8) || fpOutputStats->HasWarning(Stats::csKey_C9)) {
    BpComposite caption("Covariance Structure ^1 ...", true);
    caption.Add(BpString(fpOutputStats->CovarianceToDisplayString(settings.fResidualCovarianceType, true), false));
    AddCovarianceNotes(caption);
    caption.Finish();
    table.Caption(caption);
  } else {
    table.Caption(CovarianceCaption(settings.fResidualCovarianceType, settings.fResidualSubjectSpec, true));
  }
  BpDimension rows = GNLMTableText::Dimension(table, BpString("Residual Effect", true), 0, 1, false, false);
  if (settings.fvResidualGroupSpec.empty()) {
    MIX_ASSERT(paramEstimVect.size() == 1, "paramEstimVect.size() == 1");
    BpDimension cols =
        GNLMTableText::Dimension(table, BpString("Residual Effect Covariance Column", true), 1, 1, true, false);
    DisplayRandomParamEstimCommon(rows, cols, paramEstimVect.front(), -1);
    return;
  }
  MIX_ASSERT(paramEstimVect.size() >= 1, "paramEstimVect.size() >= 1");
  BpDimension groups = GNLMTableText::Dimension(table, BpString("Grouping", true), 0, 2, false, false);
  BpDimension cols =
      GNLMTableText::Dimension(table, BpString("Residual Effect Covariance Column", true), 1, 1, true, false);
  for (const Stats::ParamEstimData& set : paramEstimVect) {
    groups.Category(GroupLabel(set.fFiledData));
    DisplayRandomParamEstimCommon(rows, cols, set, -1);
  }
}

void GNLMParamEstimatesOutput::DisplayRandomParamEstimTable(BpHeading* pHeading,
                                                            const std::vector<Stats::ParamEstimData>& sets, int block,
                                                            int nBlocks) {
  const Stats::BuildSettingsData& settings = *fpBuildSettings;
  const Stats::RandomSpecsData& spec = RandomBlock(block);
  std::unique_ptr<BpCellText> title;
  if (nBlocks < 2) {
    title.reset(new BpString("Random Effect", true));
  } else {
    BpComposite numbered("Random Effect Block ^1", true);
    numbered.Add(BpNumber(block + 1, BpProcedure::Count()));
    numbered.Finish();
    title.reset(numbered.Replicate());
  }
  BpPivotTable table = pHeading->PivotTable(*title, BpString("CovarianceParameters", false), true);
  table.Caption(CovarianceCaption(spec.fCovarianceType, spec.fSubjectSpec, true));

  if (!spec.fvGroupSpec.empty() || settings.fDistribution == Stats::NOMINAL) {
    BpDimension rows = GNLMTableText::Dimension(
        table, BpString(nBlocks == 1 ? "Random Effect Covariance" : "Random Effect Block", true), 0, 1, false, false);
    BpDimension segments = GNLMTableText::Dimension(table, *SegmentsName(spec), 0, 2, false, false);
    BpDimension cols =
        GNLMTableText::Dimension(table, BpString("Random Effect Covariance Column", true), 1, 1, true, false);
    for (const Stats::ParamEstimData& paramEstimData : sets) {
      if (!spec.fvGroupSpec.empty()) {
        segments.Category(GroupLabel(paramEstimData.fFiledData));
      } else {
        MIX_ASSERT(paramEstimData.fFiledData.fSubjectValues.size() == 1,
                   "paramEstimData.fFiledData.fSubjectValues.size() == 1");
        segments.Category(*GNLMTableText::ValueText(fpDataSource, settings.fTargetIndex,
                                                    paramEstimData.fFiledData.fSubjectValues.front(),
                                                    BpDataValue::AS_SET));
      }
      DisplayRandomParamEstimCommon(rows, cols, paramEstimData, block);
    }
    return;
  }
  const std::size_t nCat = sets.size();
  MIX_ASSERT(nCat == 1, "nCat == 1");
  BpDimension rows = GNLMTableText::Dimension(table, BpString("Random Effect Covariance", true), 0, 1, false, false);
  BpDimension cols =
      GNLMTableText::Dimension(table, BpString("Random Effect Covariance Column", true), 1, 1, true, false);
  DisplayRandomParamEstimCommon(rows, cols, sets.front(), block);
}

void GNLMParamEstimatesOutput::DisplayRandomParamEstimCommon(BpDimension& rows, BpDimension& cols,
                                                             const Stats::ParamEstimData& set, int block) {
  const ConstantCase constant = ConstantCaseOf(block);
  for (const Stats::ParamStatsData& param : set.fvParamStats) {
    std::string key, text;
    std::vector<std::string> args;
    fpOutputStats->formatRandomEffectLabel(param.fParamList, static_cast<unsigned long>(block), key, args, text);
    BpCategory row = rows.Category(BpString(text, false));
    // The scale parameter's label is the key with its trailing blank.
    if (block == -1 && key == "Variance ") row.Note(KeyFootnote("This is the scale parameter."));
    AddCovarianceCells(cols, param, constant);
  }
}

// The residual of a distribution whose scale is fixed at 1, and random
// effects that were not estimated, are shown as constants.
GNLMParamEstimatesOutput::ConstantCase GNLMParamEstimatesOutput::ConstantCaseOf(int block) const {
  const Stats::EnumDistTypes dist = fpBuildSettings->fDistribution;
  if (fpOutputStats->HasWarning(Stats::csKey_C9)) {
    if (IsOneOf(dist, {Stats::BINOMIAL, Stats::NOMINAL, Stats::NEGBIN, Stats::POISSON})) {
      return block == -1 ? FIXED_SCALE : FIXED_AT_ZERO;
    }
    return ESTIMATED;
  }
  if (fpOutputStats->HasWarning(Stats::csKey_C8) && IsOneOf(dist, {Stats::GAMMA, Stats::IGAUSS, Stats::NORMAL}) &&
      block >= 0) {
    return FIXED_AT_ZERO;
  }
  return ESTIMATED;
}

void GNLMParamEstimatesOutput::AddCovarianceCells(BpDimension& cols, const Stats::ParamStatsData& param,
                                                  ConstantCase constant) const {
  const bool redundant = param.fIsRedundant;
  const auto shown = [&](double value) {
    if (constant == FIXED_AT_ZERO) return 0.0;
    return redundant ? fSysmis : value;
  };
  const double estimate = constant == FIXED_SCALE ? 1.0 : constant == FIXED_AT_ZERO ? 0.0 : param.fEstimate;
  BpCategory estimateColumn = cols.Category(BpString("Estimate", true));
  estimateColumn.Cell(BpNumber(estimate, BpProcedure::Coefficient()));
  if (redundant) estimateColumn.CellNote(KeyFootnote("Parameter redundant"));
  if (constant == FIXED_SCALE) {
    estimateColumn.CellNote(KeyFootnote(Stats::csKey_C9));
    return;
  }
  if (fpOutputStats->HasWarning(Stats::csKey_C10)) estimateColumn.CellNote(KeyFootnote(Stats::csKey_C10));
  cols.Category(BpString("Std. Error", true)).Cell(BpNumber(shown(param.fStdError), BpProcedure::Coefficient()));
  if (constant == ESTIMATED) {
    cols.Category(BpString("Z", false)).Cell(BpNumber(shown(param.fZTest), BpProcedure::Coefficient()));
    cols.Category(BpString("Sig.", true)).Cell(BpNumber(shown(param.fSig), BpProcedure::Significance()));
  }
  GNLMTableText::AddInterval(cols, fpBuildSettings->fCIn, shown(param.fConfIntervalLower),
                             shown(param.fConfIntervalUpper));
}

// --- Captions and labels ---------------------------------------------------

// The dimension of a block's segments: its groups, or the target's
// categories of a nominal target.
std::unique_ptr<BpCellText> GNLMParamEstimatesOutput::SegmentsName(const Stats::RandomSpecsData& spec) const {
  if (!spec.fvGroupSpec.empty()) return std::unique_ptr<BpCellText>(new BpString("Grouping", true));
  return GNLMTableText::VariableText(fpDataSource, fpBuildSettings->fTargetIndex, fpBuildSettings->fTargetField,
                                     BpVariable::AS_SET);
}

const Stats::RandomSpecsData& GNLMParamEstimatesOutput::RandomBlock(int block) const {
  static const Stats::RandomSpecsData kNone;
  const std::vector<Stats::RandomSpecsData>& specs = fpBuildSettings->fvRandomSpecs;
  return block >= 0 && static_cast<std::size_t>(block) < specs.size() ? specs[static_cast<std::size_t>(block)] : kNone;
}

// "Covariance structure: ... Subject specification: ...", with the notes on
// the estimates that the model's messages give when asked.
BpComposite GNLMParamEstimatesOutput::CovarianceCaption(Stats::EnumCovarianceType type,
                                                        const Stats::ModelEffectData& subjects, bool notes) const {
  std::string subjectText = "(None)";
  if (!subjects.fvFieldNames.empty()) {
    std::vector<std::string> labels;
    CreateEffectMap(std::vector<Stats::ModelEffectData>{subjects}, labels);
    if (labels.size() == 1) subjectText = labels.front();
  }
  BpComposite caption("Covariance Structure ^1 Subject Specification ^2 ...", true);
  caption.Add(BpString(fpOutputStats->CovarianceToDisplayString(type, true), false));
  caption.Add(BpString(subjectText, false));
  if (notes) AddCovarianceNotes(caption);
  caption.Finish();
  return caption;
}

void GNLMParamEstimatesOutput::AddCovarianceNotes(BpComposite& caption) const {
  std::vector<std::string> keys;
  if (fpOutputStats->HasWarning(Stats::csKey_C18)) keys.push_back(Stats::csKey_C18);
  if (fpBuildSettings->fDistribution != Stats::ORDINAL && fpOutputStats->HasWarning(Stats::csKey_C23)) {
    keys.push_back(Stats::csKey_C23);
  }
  if (fpOutputStats->HasWarning(Stats::csKey_C28)) keys.push_back(Stats::csKey_C28);
  if (keys.empty()) return;
  caption.Sublist();
  for (const std::string& key : keys) caption.Add(BpString(key, true));
  caption.EndSublist();
}

// "Field = value, ..." of a segment's group fields.
BpComposite GNLMParamEstimatesOutput::GroupLabel(const Stats::SimpleSubjectData& group) const {
  BpComposite label(group.fFieldNames.size() == 1 ? "EffectVar1" : "EffectVar2", true);
  label.Sublist();
  for (std::size_t k = 0; k < group.fFieldNames.size(); ++k) {
    label.Add(
        *GNLMTableText::VariableText(fpDataSource, group.fFieldIndices[k], group.fFieldNames[k], BpVariable::AS_SET));
    label.Add(
        *GNLMTableText::ValueText(fpDataSource, group.fFieldIndices[k], group.fSubjectValues[k], BpDataValue::AS_SET));
  }
  label.EndSublist();
  label.Finish();
  return label;
}

void GNLMParamEstimatesOutput::DisplayEffectEstimTable() {}
