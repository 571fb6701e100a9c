#include "output/MIXCustomTestOutput.h"

#include <memory>
#include <vector>

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
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMCustomTestStat.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "output/MIXComOutputData.h"
#include "output/MIXSplitResults.h"
#include "params/MIXParameterAggregator.h"
#include "params/MIXParameterMap.h"
#include "specs/MIXValidSpecs.h"

using MCGLMM_850::GLMMCustomTestStat;

namespace {

BpAnnotation Footnote(const char* key) { return BpAnnotation(BpString(key, true).Replicate()); }

// A row of L is named "L1", "L2", ... as the coefficients' columns are.
std::string RowName(std::size_t i) { return "L" + std::to_string(i + 1); }

}  // namespace

MIXCustomTestOutput::MIXCustomTestOutput(const MIXComOutputData* pComOutputData) : fpComOutputData(pComOutputData) {}

const char* MIXCustomTestOutput::StateNote(int state) {
  switch (state) {
    case GLMMCustomTestStat::kNotEstimable:
      return "Custom test not estimable ...";
    case GLMMCustomTestStat::kWrongLength:
      return "Custom test wrong length ...";
    case GLMMCustomTestStat::kRandomPartInvalid:
      return "Custom test random part invalid ...";
    case GLMMCustomTestStat::kJointWithRandomPart:
      return "Custom test joint random part ...";
    default:
      return "Custom test no variance ...";
  }
}

void MIXCustomTestOutput::DisplayCustomTests() {
  if (fpComOutputData == nullptr || fpComOutputData->GetFactory() == nullptr) return;
  const MCGLMM_850::GLMMAlgorithm* pAlgorithm = fpComOutputData->GetFactory()->GetGLMMAlgorithm();
  if (pAlgorithm == nullptr || fpComOutputData->GetFactory()->GetStatus().IsError()) return;
  DisplayCustomTests(pAlgorithm->GetOutputStats());
}

void MIXCustomTestOutput::DisplayCustomTests(const MCGLMM_850::GLMMOutputStats* pStats) {
  if (fpComOutputData == nullptr || pStats == nullptr || pStats->GetCustomTestStats().empty()) return;
  const MIXValidSpecs* pSpecs = fpComOutputData->GetValidSpecs();
  BpProcedure* pProcedure = fpComOutputData->GetProcedure();
  if (pSpecs == nullptr || pProcedure == nullptr) return;

  BpHeading tests = pProcedure->Heading(BpString("Custom Hypothesis Tests", true));
  const std::vector<GLMMCustomTestStat>& stats = pStats->GetCustomTestStats();
  for (std::size_t k = 0; k < stats.size(); ++k) {
    const GLMMCustomTestStat& test = stats[k];
    std::string name = test.GetLabel();
    if (name.empty()) name = "Custom Hypothesis Test " + std::to_string(k + 1);
    BpHeading heading = tests.Heading(BpString(name, false, false));
    DisplayEstimates(heading, test);
    DisplayJointTest(heading, test, name);
    if (pSpecs->GetPrintOptionLMATRIX()) DisplayCoefficients(heading, test);
  }
}

void MIXCustomTestOutput::DisplayEstimates(BpHeading& heading, const GLMMCustomTestStat& test) {
  BpPivotTable table = heading.PivotTable(BpString("Contrast Estimates", true), BpString("Contrast Estimates", true), true);
  fpComOutputData->AddTableCaption(table, false);
  BpDimension rows = table.Dimension(BpString("Contrast", true), 2);
  rows.Position(0, 1, false, false);
  BpDimension statistics = table.Dimension(BpString("Statistics", true), 2);
  statistics.Position(1, 1, true, false);

  const BpFormatSpec estimateFormat(MIXComOutputData::GetTableFormat(MIXCommandLayout::ESTIMATES_FORMAT));
  const double level = fpComOutputData->GetValidSpecs()->GetCILevelPct();
  const std::vector<GLMMCustomTestStat::RowData>& data = test.GetRows();
  for (std::size_t i = 0; i < data.size(); ++i) {
    const GLMMCustomTestStat::RowData& row = data[i];
    BpCategory label = rows.Category(BpString(RowName(i), false, false));
    if (row.fState != GLMMCustomTestStat::kComputed) label.Note(Footnote(StateNote(row.fState)));
    statistics.Category(BpString("B0", true)).Cell(BpNumber(row.fEstimate, estimateFormat));
    statistics.Category(BpString("Test Value", true)).Cell(BpNumber(row.fK, estimateFormat));
    statistics.Category(BpString("Standard Error", true)).Cell(BpNumber(row.fStdError, estimateFormat));
    statistics.Category(BpString("Degrees of Freedom", true)).Cell(BpNumber(row.fDF, MIXComOutputData::DFFormat(row.fDF)));
    statistics.Category(BpString("t Statistic", true)).Cell(BpNumber(row.fT, BpProcedure::GeneralStat()));
    statistics.Category(BpString("Significance", true)).Cell(BpNumber(row.fSig, BpProcedure::Significance()));
    BpComposite interval("^1 Confidence Interval", true);
    interval.Add(BpNumber(level, BpProcedure::SigDigit(level)));
    interval.Finish();
    BpGroup bounds = statistics.Group(interval, true, 2);
    bounds.Category(BpString("Lower Bound", true)).Cell(BpNumber(row.fLowerBound, estimateFormat));
    bounds.Category(BpString("Upper Bound", true)).Cell(BpNumber(row.fUpperBound, estimateFormat));
  }
}

void MIXCustomTestOutput::DisplayJointTest(BpHeading& heading, const GLMMCustomTestStat& test,
                                           const std::string& name) {
  BpPivotTable table = heading.PivotTable(BpString("Custom Test Results", true), BpString("Test Results", true), true);
  fpComOutputData->AddTableCaption(table, false);
  BpDimension sources = table.Dimension(BpString("Source", true), 2);
  sources.Position(0, 1, false, false);
  BpDimension statistics = table.Dimension(BpString("Statistics", true), 2);
  statistics.Position(1, 1, true, false);

  BpCategory source = sources.Category(BpString(name, false, false));
  const GLMMCustomTestStat::State state = test.GetJointState();
  if (state == GLMMCustomTestStat::kJointWithRandomPart || state == GLMMCustomTestStat::kNoVariance) {
    source.Note(Footnote(StateNote(state)));
  } else if (state != GLMMCustomTestStat::kComputed) {
    source.Note(Footnote("Custom test joint row ..."));
  }
  const MCMath_850::MCTestStats& joint = test.GetJoint();
  statistics.Category(BpString("Numerator DF", true)).Cell(BpNumber(joint.GetDF(), MIXComOutputData::DFFormat(joint.GetDF())));
  statistics.Category(BpString("Denominator DF", true)).Cell(BpNumber(joint.GetDF2(), MIXComOutputData::DFFormat(joint.GetDF2())));
  statistics.Category(BpString("F Value", true)).Cell(BpNumber(joint.GetWald(), BpProcedure::GeneralStat()));
  statistics.Category(BpString("Significance", true)).Cell(BpNumber(joint.GetSig(), BpProcedure::Significance()));
}

void MIXCustomTestOutput::DisplayCoefficients(BpHeading& heading, const GLMMCustomTestStat& test) {
  const std::vector<std::string>& labels = fpComOutputData->GetFixParamMap()->GetParameterMap(false);
  BpPivotTable table = heading.PivotTable(BpString("Custom Test Coefficients", true), BpString("L Matrix", true), true);
  fpComOutputData->AddTableCaption(table, false);
  BpDimension parameters = table.Dimension(BpString("Parameter", true), 2);
  parameters.Position(0, 1, false, false);
  const MIXSplitResults* pFactory = fpComOutputData->GetFactory();
  const MIXParameterAggregator* pAggregator = pFactory ? pFactory->GetFixParamAggr() : nullptr;
  if (pAggregator != nullptr) pAggregator->SetParamBagpipeCats(&parameters, -1, false);
  BpDimension rows = table.Dimension(BpString("Contrast", true), 2);
  rows.Position(1, 1, true, false);

  const std::vector<GLMMCustomTestStat::RowData>& data = test.GetRows();
  for (std::size_t p = 0; p < labels.size(); ++p) {
    {
      std::unique_ptr<BpCellText> label(MIXParameterAggregator::LongStrToComposite(labels[p]));
      parameters.Category(*label);
    }
    for (std::size_t i = 0; i < data.size(); ++i) {
      const std::vector<double>& coefficients = data[i].fvFixedCoefficients;
      const double value = p < coefficients.size() ? coefficients[p] : MCCommon_850::MCMV::Missing();
      rows.Category(BpString(RowName(i), false, false)).Cell(BpNumber(value, BpProcedure::GeneralStat()));
    }
  }
}
