#include "output/MIXTargetOutput.h"

#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpCategory.h"
#include "host/output/BpComposite.h"
#include "host/output/BpDimension.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "numeric/glmm/GLMMConst.h"
#include "output/MIXComOutputData.h"
#include "specs/MIXValidSpecs.h"

namespace G = GLMMConst_850;

namespace {

const char* DistributionKey(const MCGLMM_850::GLMMTargetSpec& spec) {
  switch (spec.GetDistribution()) {
    case G::DIST_NORMAL: return "Normal";
    case G::DIST_BINOMIAL: return "Binomial";
    case G::DIST_POISSON: return "Poisson";
    case G::DIST_NEGBIN: return "Negative binomial";
    case G::DIST_GAMMA: return "Gamma";
    case G::DIST_IGAUSS: return "Inverse Gaussian";
    case G::DIST_MULTINOMIAL: return "Multinomial";
  }
  return "Unknown";
}

bool IsOrdinal(const MCGLMM_850::GLMMTargetSpec& spec) {
  return spec.GetDistribution() == G::DIST_MULTINOMIAL && spec.GetOrdered();
}

// The link's name; a multinomial target's is cumulative when its categories
// are ordered and the generalized logit when they are not.
const char* LinkKey(const MCGLMM_850::GLMMTargetSpec& spec) {
  const bool cumulative = IsOrdinal(spec);
  if (spec.GetDistribution() == G::DIST_MULTINOMIAL && !spec.GetOrdered()) return "Generalized logit";
  switch (spec.GetLink()) {
    case G::LINK_DEFAULT:
    case G::LINK_IDENTITY: return "Identity";
    case G::LINK_LOG: return "Log";
    case G::LINK_LOGIT: return cumulative ? "Cumulative logit" : "Logit";
    case G::LINK_PROBIT: return cumulative ? "Cumulative probit" : "Probit";
    case G::LINK_CLOGLOG: return cumulative ? "Cumulative complementary log-log" : "Complementary log-log";
    case G::LINK_NLOGLOG: return cumulative ? "Cumulative negative log-log" : "Negative log-log";
    case G::LINK_LOGC: return "Log complement";
    case G::LINK_POWER: return "Power(^1)";
    case G::LINK_CAUCHIT: return cumulative ? "Cumulative Cauchit" : "Cauchit";
  }
  return "Unknown";
}

// The distributions whose variance the mean fixes: their scale is 1.
bool FixesScale(G::TargetDistType dist) {
  return dist == G::DIST_BINOMIAL || dist == G::DIST_POISSON || dist == G::DIST_NEGBIN || dist == G::DIST_MULTINOMIAL;
}

}  // namespace

MIXTargetOutput::MIXTargetOutput(const MIXValidSpecs& specs, const ProcedureDataSource& data, BpProcedure& procedure,
                                 const MIXComOutputData* pComOutputData)
    : fSpecs(specs), fData(data), fProcedure(procedure), fpComOutputData(pComOutputData) {}

void MIXTargetOutput::DisplayTargetModel() const {
  const MCGLMM_850::GLMMTargetSpec& spec = fSpecs.GetTargetSpec();
  if (spec.IsLinear()) return;
  BpPivotTable table = fProcedure.PivotTable(BpString("Target Model", true), BpString("Target Model", true), true);
  if (fpComOutputData != nullptr) fpComOutputData->AddTableCaption(table, false);
  BpDimension rows = table.Dimension(BpString("Setting", true), 2);
  rows.Position(0, 1, false, false);

  const ZORV_Variable* target = fData.GetVariable(fSpecs.GetDependVar());
  if (target != nullptr) rows.Category(BpString("Target", true)).Cell(BpVariable(*target, BpVariable::AS_SET));
  if (spec.GetTrialsType() == G::TRIALS_VARIABLE) {
    const ZORV_Variable* trials = fData.GetVariable(spec.GetTrialsVariable());
    if (trials != nullptr) rows.Category(BpString("Trials", true)).Cell(BpVariable(*trials, BpVariable::AS_SET));
  }
  if (spec.GetTrialsType() == G::TRIALS_VALUE) {
    rows.Category(BpString("Trials", true)).Cell(BpNumber(spec.GetTrialsValue(), BpProcedure::Count()));
  }
  rows.Category(BpString("Probability Distribution", true)).Cell(BpString(DistributionKey(spec), true));
  if (spec.GetLink() == G::LINK_POWER) {
    BpComposite power(LinkKey(spec), true);
    power.Add(BpNumber(spec.GetLinkPower(), BpProcedure::SigDigit(spec.GetLinkPower())));
    power.Finish();
    rows.Category(BpString("Link Function", true)).Cell(power);
  } else {
    rows.Category(BpString("Link Function", true)).Cell(BpString(LinkKey(spec), true));
  }
  if (IsOrdinal(spec)) {
    rows.Category(BpString("Category Order", true)).Cell(BpString("Ascending values", true));
  }
  if (fSpecs.GetTargetOffsetIndex() >= 0) {
    const ZORV_Variable* offset = fData.GetVariable(fSpecs.GetTargetOffsetIndex());
    if (offset != nullptr) rows.Category(BpString("Offset", true)).Cell(BpVariable(*offset, BpVariable::AS_SET));
  }
  if (spec.GetFitMethod() == G::FIT_QUADRATURE) {
    BpComposite method("Adaptive quadrature with ^1 points", true);
    method.Add(BpNumber(spec.GetQuadraturePoints(), BpProcedure::Count()));
    method.Finish();
    rows.Category(BpString("Fitting Method", true)).Cell(method);
  } else {
    // An ordinal target has no pseudo-likelihood: it is fitted by Laplace.
    const bool laplace = spec.GetFitMethod() == G::FIT_LAPLACE || IsOrdinal(spec);
    const bool restricted = fSpecs.GetThetaEstType() == G::REML;
    rows.Category(BpString("Fitting Method", true))
        .Cell(BpString(laplace ? "Laplace approximation" : restricted ? "Residual pseudo-likelihood"
                                                                      : "Maximum pseudo-likelihood",
                       true));
  }
  if (FixesScale(spec.GetDistribution())) table.Note(BpAnnotation(BpString("The scale is fixed at 1 ...", true).Replicate()));
}
