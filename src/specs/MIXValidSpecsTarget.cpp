#include "specs/MIXValidSpecs.h"

#include <sstream>

#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "numeric/glmm/GLMMSettings.h"

using MCGLMM_850::GLMMTargetSpec;
namespace G = GLMMConst_850;
namespace MCConst = MCMath_850::MCConst;

namespace {

namespace L = MIXCommandLayout;

// A code of the block, or `fallback` when it is outside 0 to `last`.
int CodeOr(int code, int last, int fallback) { return code >= 0 && code <= last ? code : fallback; }

// A reference value as text: the shortest form that reads back as the
// number.
std::string NumberText(double value) {
  std::ostringstream text;
  text.precision(15);
  text << value;
  return text.str();
}

}  // namespace

// ---------------------------------------------------------------------------
// The target's distribution and link, the offset and the covariance of the
// fixed effects (our extension). All zero, the command's default, is the
// linear model with the model-based covariance and no offset.

void MIXValidSpecs::ReadTargetSpec() {
  GLMMTargetSpec spec;
  spec.SetDistribution(static_cast<G::TargetDistType>(CodeOr(CmnInt(L::DISTRIBUTION), G::DIST_MULTINOMIAL, 0)));
  const int link = CodeOr(CmnInt(L::LINK), G::LINK_CAUCHIT + 1, 0);
  if (link > 0) spec.SetLink(static_cast<G::LinkType>(link - 1));
  if (spec.GetLinkGiven() == G::LINK_POWER) spec.SetLinkPower(CmnReal(L::LINK_POWER));

  const INTEGER trials = CmnWord(L::TRIALS);
  if (trials > 0) spec.SetTrialsVariable(DataSource->VarIndex(static_cast<long>(trials - 1)));
  if (CmnReal(L::TRIALS_VALUE) > 0.0) spec.SetTrialsValue(CmnReal(L::TRIALS_VALUE));

  const auto reference =
      static_cast<G::ReferenceCategoryType>(CodeOr(CmnInt(L::REFERENCE_KIND), G::REFERENCE_VALUE, 0));
  spec.SetReference(reference, reference == G::REFERENCE_VALUE ? NumberText(CmnReal(L::REFERENCE_VALUE)) : "");
  const ZORV_Variable* target = DependVar >= 0 ? DataSource->GetVariable(DependVar) : nullptr;
  spec.SetOrdered(spec.GetDistribution() == G::DIST_MULTINOMIAL && target != nullptr &&
                  target->GetMeasurementLevel() == ZORV_Variable::ORDINAL);

  spec.SetFitMethod(static_cast<G::GeneralizedFitMethod>(CodeOr(CmnInt(L::FIT_METHOD), G::FIT_QUADRATURE, 0)));
  if (spec.GetFitMethod() == G::FIT_QUADRATURE) spec.SetQuadraturePoints(CmnInt(L::QUADRATURE_POINTS));
  TargetSpec = spec;

  const INTEGER offset = CmnWord(L::OFFSET);
  TargetOffsetIndex = offset > 0 ? DataSource->VarIndex(static_cast<long>(offset - 1)) : -1;
  TargetRobust = CmnInt(L::COVARIANCE_KIND) == 1;
}

void MIXValidSpecs::CompleteTargetSettings(MCGLMM_850::GLMMSettings& settings) const {
  settings.SetTargetSpec(CompTargetSpec());
  if (CompTargetOffsetIndex >= 0) settings.SetOffset(CompTargetOffsetIndex);
  if (TargetRobust) settings.SetCovbType(MCConst::COVB_ROBUST);
}

GLMMTargetSpec MIXValidSpecs::CompTargetSpec() const {
  GLMMTargetSpec spec = TargetSpec;
  if (spec.GetTrialsType() == G::TRIALS_VARIABLE) spec.SetTrialsVariable(CompTrialsIndex);
  return spec;
}
