#include "output/MIXParamEstimateOutput.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "base/MIXAssert.h"
#include "base/MIXCommandLayout.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpCategory.h"
#include "host/output/BpComposite.h"
#include "host/output/BpDimension.h"
#include "host/output/BpFormatSpec.h"
#include "host/output/BpGroup.h"
#include "host/output/BpHeading.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/math/BetaParamStat.h"
#include "numeric/math/MCConst.h"
#include "numeric/math/MCModelTestStats.h"
#include "numeric/math/MCRegrParameter.h"
#include "numeric/math/MCSymMatrix.h"
#include "output/MIXComOutputData.h"
#include "output/MIXSplitResults.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "params/MIXLabelGrammar.h"
#include "params/MIXParameterAggregator.h"
#include "params/MIXParameterMap.h"
#include "specs/MIXValidSpecs.h"

namespace {

// The component's mark of a standard error it could not compute.
const double kUnsetValue = -1.7976931348623157e308;

// Build warnings after which an unset standard error is explained.
bool ExplainsUnsetErrors(const MCCommon_850::MCStatus& status) {
  if (!status.IsError() && !status.IsWarning()) return false;
  return status.GetErrorCode() == MCCommon_850::MC_PARAM_HESSIAN_SINGULAR ||
         status.GetErrorCode() == MCCommon_850::MC_HESSIAN_NOT_PD;
}

typedef std::unique_ptr<BpCellText> CellTextPtr;

CellTextPtr Label(const std::vector<std::string>& labels, std::size_t i) {
  return CellTextPtr(MIXParameterAggregator::LongStrToComposite(labels.empty() ? std::string() : labels[i]));
}

BpAnnotation Footnote(const char* key) { return BpAnnotation(BpString(key, true).Replicate()); }

}  // namespace

MIXParamEstimateOutput::MIXParamEstimateOutput(const MIXComOutputData* pComOutputData)
    : fpComOutputData(pComOutputData) {}

MIXParamEstimateOutput::~MIXParamEstimateOutput() = default;

const MCGLMM_850::GLMMOutputStats* MIXParamEstimateOutput::CurrentStats() const {
  if (fpComOutputData == nullptr || fpComOutputData->GetFactory() == nullptr) return nullptr;
  const MCGLMM_850::GLMMAlgorithm* pAlgorithm = fpComOutputData->GetFactory()->GetGLMMAlgorithm();
  return pAlgorithm ? pAlgorithm->GetOutputStats() : nullptr;
}

void MIXParamEstimateOutput::DisplayFixedEffectsTable() { DisplayFixedEffectsTable(CurrentStats()); }

void MIXParamEstimateOutput::DisplayParamEstimates() { DisplayParamEstimates(CurrentStats()); }

void MIXParamEstimateOutput::DisplayCorrParamEst() { DisplayCorrParamEst(CurrentStats()); }

void MIXParamEstimateOutput::DisplayCovarParamEst() { DisplayCovarParamEst(CurrentStats()); }

void MIXParamEstimateOutput::DisplayFixedEffectsTable(const MCGLMM_850::GLMMOutputStats* pStats) {
  if (fpComOutputData == nullptr) return;
  const MIXValidSpecs* pSpecs = fpComOutputData->GetValidSpecs();
  BpProcedure* pProcedure = fpComOutputData->GetProcedure();
  if (pSpecs == nullptr || pProcedure == nullptr) return;

  const bool typeI = pSpecs->GetEffectAnalysisType() == MCMath_850::MCConst::EFFECT_TYPE_I;
  const bool intercept = pSpecs->GetInterceptInModel();
  if (pSpecs->GetNModelEffect() <= 0 && !intercept) return;
  // A split without a fit has no tests to show.
  if (pStats == nullptr) return;
  const MCMath_850::MCModelTestStats* pModelTestStats =
      typeI ? pStats->GetTypeITestStats() : pStats->GetTypeIIITestStats();

  BpHeading heading = pProcedure->Heading(BpString("Fixed Effects", true));
  BpPivotTable table =
      typeI ? heading.PivotTable(BpString("Type I Tests of Fixed Effects", true),
                                 BpString("Tests of Fixed Effects", true), true)
            : heading.PivotTable(BpString("Type III Tests of Fixed Effects", true),
                                 BpString("Tests of Fixed Effects", true), true);
  fpComOutputData->AddTableCaption(table, false);
  BpDimension sources = table.Dimension(BpString("Source", true), 2);
  sources.Position(0, 1, false, false);
  BpDimension statistics = table.Dimension(BpString("Statistics", true), 2);
  statistics.Position(1, 1, true, false);

  MIX_ASSERT(pModelTestStats != 0, "pModelTestStats != 0");
  const MCMath_850::MCModelTestStats& tests = *pModelTestStats;
  const std::vector<std::string>* pEffectMap = &fpComOutputData->GetFixParamMap()->GetEffectMap(false);
  MIX_ASSERT(pEffectMap != 0, "pEffectMap != 0");

  for (int i = 0; i < tests.GetNTests(); ++i) {
    const MCMath_850::MCTestStats& stats = tests.GetTestStats(i);
    // An ordinal target's thresholds take the intercept's place; it has no test.
    if (intercept && i == 0 && !pStats->GetThresholdStats().empty()) continue;

    if (intercept && i == 0) {
      sources.Category(BpString("(Intercept)", true));
    } else {
      const std::size_t effect = static_cast<std::size_t>(intercept ? i - 1 : i);
      MIX_ASSERT(effect < pEffectMap->size(), "effect < pEffectMap->size()");
      sources.Category(BpString((*pEffectMap)[effect], false));
    }
    statistics.Category(BpString("Numerator DF", true)).Cell(BpNumber(stats.GetDF(), BpProcedure::Count()));
    statistics.Category(BpString("Denominator DF", true))
        .Cell(BpNumber(stats.GetDF2(), MIXComOutputData::DFFormat(stats.GetDF2())));
    statistics.Category(BpString("F Value", true)).Cell(BpNumber(stats.GetWald(), BpProcedure::GeneralStat()));
    statistics.Category(BpString("Significance", true)).Cell(BpNumber(stats.GetSig(), BpProcedure::Significance()));
  }
}

void MIXParamEstimateOutput::DisplayParamEstimates(const MCGLMM_850::GLMMOutputStats* pStats) {
  if (fpComOutputData == nullptr) return;
  const MIXValidSpecs* pSpecs = fpComOutputData->GetValidSpecs();
  BpProcedure* pProcedure = fpComOutputData->GetProcedure();
  const MIXSplitResults* pFactory = fpComOutputData->GetFactory();
  if (pSpecs == nullptr || pProcedure == nullptr) return;
  if (pSpecs->GetPrintOptionNONE()) return;

  BpHeading heading = pProcedure->Heading(BpString("Fixed Effects", true));
  BpPivotTable table =
      heading.PivotTable(BpString("Fixed Parameter Estimates", true), BpString("Parameter Estimates", true), true);
  fpComOutputData->AddTableCaption(table, false);
  BpDimension parameters = table.Dimension(BpString("Parameter", true), 2);
  parameters.Position(0, 1, false, false);
  const MIXParameterAggregator* pAggregator = pFactory ? pFactory->GetFixParamAggr() : nullptr;
  if (pAggregator != nullptr) pAggregator->SetParamBagpipeCats(&parameters, -1, false);
  BpDimension statistics = table.Dimension(BpString("Statistics", true), 2);
  statistics.Position(1, 1, true, false);

  const std::vector<std::string>& labels = fpComOutputData->GetFixParamMap()->GetParameterMap(false);
  if (pStats == nullptr) return;

  const std::vector<MCMath_850::MCRegrParameter>& params = pStats->GetBetaParameters();
  const std::vector<MCMath_850::BetaParamStat>& paramStats = pStats->GetBetaParamStats();
  const BpFormatSpec estimateFormat(MIXComOutputData::GetTableFormat(MIXCommandLayout::ESTIMATES_FORMAT));

  bool hessianFlag = false;
  for (const MCCommon_850::MCStatus& status : pStats->GetBuildModelWarnings()) {
    if (ExplainsUnsetErrors(status)) {
      hessianFlag = true;
      break;
    }
  }

  EstimateRowFormat row{pSpecs->GetPrintOptionSOLUTION(), hessianFlag, pSpecs->GetCILevelPct(),
                        ShowsExponentiated(*pSpecs), &estimateFormat};
  // An ordinal target's thresholds stand in the intercept's place, first.
  const std::vector<MCMath_850::BetaParamStat>& thresholds = pStats->GetThresholdStats();
  for (std::size_t j = 0; j < thresholds.size() && j < pStats->GetTargetCategories().size(); ++j) {
    parameters.Category(BpString(ThresholdLabel(pStats->GetTargetCategories()[j]), false));
    DisplayEstimateRow(statistics, thresholds[j], row);
  }
  const std::size_t nParams = params.size() < paramStats.size() ? params.size() : paramStats.size();
  for (std::size_t i = 0; i < nParams; ++i) {
    if (!thresholds.empty() && params[i].IsIntercept()) continue;
    {
      CellTextPtr label = Label(labels, labels.empty() ? 0 : i % labels.size());
      parameters.Category(*label);
    }
    DisplayEstimateRow(statistics, paramStats[i], row);
  }
}

std::string MIXParamEstimateOutput::ThresholdLabel(double category) const {
  const MIXValidSpecs* pSpecs = fpComOutputData->GetValidSpecs();
  const ProcedureDataSource* pData = fpComOutputData->GetProcDS();
  const ZORV_Variable* target = pData != nullptr ? pData->GetVariable(pSpecs->GetDependVar()) : nullptr;
  char value[32];
  std::snprintf(value, sizeof value, "%.15g", category);
  return MIXLabelGrammar::ThresholdText() + " " +
         MIXLabelGrammar::FactorValueText(target != nullptr ? target->GetName() : "", value);
}

void MIXParamEstimateOutput::DisplayEstimateRow(BpDimension& statistics, const MCMath_850::BetaParamStat& stat,
                                                const EstimateRowFormat& row) {
  const double missing = MCCommon_850::MCMV::Missing();
  const bool redundant = stat.GetRedundant();
  const double stdError = stat.GetStdError();
  if (row.fbSolution) {
    BpCategory estimate = statistics.Category(BpString("B0", true));
    if (redundant) {
      estimate.Cell(BpNumber(0.0, BpProcedure::Count()));
      estimate.CellNote(Footnote("Redundant parameter ..."));
    } else {
      estimate.Cell(BpNumber(stat.GetEstimate(), *row.fpFormat));
      if (row.fbHessianFlag && stdError == kUnsetValue) {
        estimate.CellNote(Footnote("Parameter caused Hessian singularity ..."));
      }
    }
  }

  if (redundant) {
    statistics.Category(BpString("Standard Error", true)).Cell(BpNumber(0.0, BpProcedure::Count()));
  } else {
    statistics.Category(BpString("Standard Error", true)).Cell(BpNumber(stdError, *row.fpFormat));
  }

  if (redundant || stdError == 0.0) {
    statistics.Category(BpString("Degrees of Freedom", true)).Cell(BpNumber(missing, BpProcedure::GeneralStat()));
    statistics.Category(BpString("t Statistic", true)).Cell(BpNumber(missing, BpProcedure::GeneralStat()));
    statistics.Category(BpString("Significance", true)).Cell(BpNumber(missing, BpProcedure::Significance()));
  } else {
    const double df = stat.GetDF() > 0.0 ? stat.GetDF() : kUnsetValue;
    statistics.Category(BpString("Degrees of Freedom", true)).Cell(BpNumber(df, MIXComOutputData::DFFormat(df)));
    statistics.Category(BpString("t Statistic", true)).Cell(BpNumber(stat.GetTStat(), BpProcedure::GeneralStat()));
    statistics.Category(BpString("Significance", true)).Cell(BpNumber(stat.GetSig(), BpProcedure::Significance()));
  }

  BpComposite interval("^1 Confidence Interval", true);
  interval.Add(BpNumber(row.fLevel, BpProcedure::SigDigit(row.fLevel)));
  interval.Finish();
  BpGroup bounds = statistics.Group(interval, true, 2);
  bounds.Category(BpString("Lower Bound", true))
      .Cell(BpNumber(redundant ? missing : stat.GetLowerBound(), *row.fpFormat));
  bounds.Category(BpString("Upper Bound", true))
      .Cell(BpNumber(redundant ? missing : stat.GetUpperBound(), *row.fpFormat));
  if (row.fbExponentiated) DisplayExponentiated(statistics, stat, row.fLevel, *row.fpFormat);
}

bool MIXParamEstimateOutput::ShowsExponentiated(const MIXValidSpecs& specs) {
  const GLMMConst_850::LinkType link = specs.GetTargetSpec().GetLink();
  return link == GLMMConst_850::LINK_LOG || link == GLMMConst_850::LINK_LOGIT;
}

// Under a log or logit link an estimate exponentiated is a ratio of means or
// of odds, and so are its bounds.
void MIXParamEstimateOutput::DisplayExponentiated(BpDimension& statistics, const MCMath_850::BetaParamStat& stat,
                                                  double level, const BpFormatSpec& format) {
  const double missing = MCCommon_850::MCMV::Missing();
  auto exponent = [&stat, missing](double value) {
    return stat.GetRedundant() || value == missing || value == kUnsetValue ? missing : std::exp(value);
  };
  statistics.Category(BpString("Exp(B)", true)).Cell(BpNumber(exponent(stat.GetEstimate()), format));
  BpComposite interval("^1 Confidence Interval for Exp(B)", true);
  interval.Add(BpNumber(level, BpProcedure::SigDigit(level)));
  interval.Finish();
  BpGroup bounds = statistics.Group(interval, true, 2);
  bounds.Category(BpString("Lower Bound", true)).Cell(BpNumber(exponent(stat.GetLowerBound()), format));
  bounds.Category(BpString("Upper Bound", true)).Cell(BpNumber(exponent(stat.GetUpperBound()), format));
}

void MIXParamEstimateOutput::DisplayCorrParamEst(const MCGLMM_850::GLMMOutputStats* pStats) {
  DisplayMatrix(pStats, true);
}

void MIXParamEstimateOutput::DisplayCovarParamEst(const MCGLMM_850::GLMMOutputStats* pStats) {
  DisplayMatrix(pStats, false);
}

void MIXParamEstimateOutput::DisplayMatrix(const MCGLMM_850::GLMMOutputStats* pStats, bool correlation) {
  if (fpComOutputData == nullptr || pStats == nullptr) return;
  BpProcedure* pProcedure = fpComOutputData->GetProcedure();
  const MIXSplitResults* pFactory = fpComOutputData->GetFactory();
  if (pProcedure == nullptr) return;

  const MCMath_850::MCSymMatrix* pMatrix = pStats->GetCovarianceMatrixBeta();
  const std::vector<std::string>& labels = fpComOutputData->GetFixParamMap()->GetParameterMap(false);
  const int p = static_cast<int>(labels.size());
  if (pMatrix == nullptr || p <= 0) return;

  BpHeading heading = pProcedure->Heading(BpString("Fixed Effects", true));
  BpPivotTable table =
      correlation
          ? heading.PivotTable(BpString("Fixed Correlation Matrix", true), BpString("Correlation Matrix", true), true)
          : heading.PivotTable(BpString("Fixed Covariance Matrix", true), BpString("Covariance Matrix", true), true);
  fpComOutputData->AddTableCaption(table, false);

  const MIXParameterAggregator* pAggregator = pFactory ? pFactory->GetFixParamAggr() : nullptr;
  BpDimension rows = table.Dimension(BpString("Parameter", true), 2);
  rows.Position(0, 1, true, false);
  if (pAggregator != nullptr) pAggregator->SetParamBagpipeCats(&rows, -1, false);
  BpDimension columns = table.Dimension(BpString("Parameter2", true), 2);
  columns.Position(1, 1, true, false);
  if (pAggregator != nullptr) pAggregator->SetParamBagpipeCats(&columns, -1, false);

  const std::vector<MCMath_850::BetaParamStat>& paramStats = pStats->GetBetaParamStats();
  const double missing = MCCommon_850::MCMV::Missing();
  const BpFormatSpec estimateFormat(MIXComOutputData::GetTableFormat(MIXCommandLayout::ESTIMATES_FORMAT));
  auto isRedundant = [&paramStats](int k) {
    return static_cast<std::size_t>(k) < paramStats.size() && paramStats[static_cast<std::size_t>(k)].GetRedundant();
  };

  for (int i = 0; i < p; ++i) {
    {
      CellTextPtr rowLabel = Label(labels, static_cast<std::size_t>(i));
      rows.Category(*rowLabel);
    }
    for (int j = 0; j < p; ++j) {
      CellTextPtr columnLabel = Label(labels, static_cast<std::size_t>(j));
      BpCategory cell = columns.Category(*columnLabel);
      const bool redundant = isRedundant(i) || isRedundant(j);
      if (correlation) {
        if (redundant) {
          cell.Cell(BpNumber(missing, BpProcedure::Correlation()));
          cell.CellNote(Footnote("Redundant correlation ..."));
        } else {
          const double r = FindCorrelation(0, 0, i, j, pMatrix);
          if (r != missing && i == j) {
            cell.Cell(BpNumber(1.0, BpProcedure::Count()));
          } else {
            cell.Cell(BpNumber(r, BpProcedure::Correlation()));
          }
        }
      } else {
        if (redundant) {
          cell.Cell(BpNumber(0.0, BpProcedure::Count()));
          cell.CellNote(Footnote("Redundant covariance ..."));
        } else {
          cell.Cell(BpNumber(pMatrix->GetElem(0, 0, i, j), estimateFormat));
        }
      }
    }
  }
}

double MIXParamEstimateOutput::FindCorrelation(int a, int b, int c, int d, const MCMath_850::MCSymMatrix* pMatrix) {
  const double missing = MCCommon_850::MCMV::Missing();
  if (pMatrix == nullptr) return missing;
  const double va = pMatrix->GetElem(a, a, c, c);
  if (!(va > 0.0)) return missing;
  if (a == b && c == d) return 1.0;
  const double vb = pMatrix->GetElem(b, b, d, d);
  if (!(vb > 0.0)) return missing;
  const double vab = pMatrix->GetElem(a, b, c, d);
  // A covariance of exactly 0 reads as a missing correlation, not as 0.
  if (vab == 0.0) return missing;
  const double r2 = (vab / va) * (vab / vb);
  const double r = std::sqrt(r2);
  return vab < 0.0 ? -r : r;
}
