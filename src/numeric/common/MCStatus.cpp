#include "numeric/common/MCStatus.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCCommon_850 {

namespace {

struct CodeKind {
  long fCode;
  MCStatusKind fKind;
};

// Every code the engine issues, with its default kind.
const CodeKind kCodeKinds[] = {
    {MC_SETTINGS_INVALID, STATUS_ERROR},
    {MC_BUILD_MODEL, STATUS_ERROR},
    {MC_INITIAL_VALUE_FAILED, STATUS_ERROR},
    {MC_CANCELLED, STATUS_ERROR},
    {MC_SAME_SUBJECT_WITHIN, STATUS_ERROR},
    {MC_SCALE_ZERO, STATUS_ERROR},
    {MC_WEIGHTS_DIFFER_IN_SUBJECT, STATUS_ERROR},
    {MC_INVALID_RECORDS_OVERFLOW, STATUS_ERROR},
    {MC_FILE_OPEN_FAILED, STATUS_ERROR},
    {MC_OUTPUT_FILE_ERROR, STATUS_ERROR},
    {MC_MODEL_FILE_ERROR, STATUS_ERROR},
    {MC_NO_VALID_CASES, STATUS_ERROR},
    {MC_DUPLICATE_REPEATED, STATUS_ERROR},
    {MC_POST_ESTIMATION_FAILED, STATUS_ERROR},
    {MC_PERFECT_FIT, STATUS_ERROR},
    {MC_MAX_STEP_HALVING, STATUS_WARNING},
    {MC_EMMEANS_ONE_LEVEL, STATUS_WARNING},
    {MC_LOGLIK_NEAR_ZERO, STATUS_WARNING},
    {MC_QUASI_SEPARATION, STATUS_WARNING},
    {MC_TESTS_INCOMPLETE, STATUS_WARNING},
    {MC_HESSIAN_SINGULAR, STATUS_WARNING},
    {MC_HESSIAN_NOT_PD, STATUS_WARNING},
    {MC_G_NOT_PD, STATUS_WARNING},
    {MC_R_NOT_PD, STATUS_WARNING},
    {MC_GENERALIZED_UNAVAILABLE, STATUS_ERROR},
    {MC_PL_NOT_CONVERGED, STATUS_WARNING},
    {MC_TARGET_OUT_OF_SUPPORT, STATUS_ERROR},
    {MC_ZERO_COUNT_SUBJECTS, STATUS_WARNING},
    {MC_RANDOM_EFFECTS_TOO_LARGE, STATUS_ERROR},
    {MC_FIXED_EFFECTS_TOO_LARGE, STATUS_ERROR},
    {MC_COVPARAM_REDUNDANT, STATUS_WARNING},
    {MC_NO_HESSIAN_CONVERGENCE, STATUS_WARNING},
    {MC_ITERATION_LIMIT, STATUS_WARNING},
    {MC_CONVERGED_SINGULAR_HESSIAN, STATUS_WARNING},
    {MC_PARAM_HESSIAN_SINGULAR, STATUS_WARNING},
    {MC_PARAM_AT_LOWER_BOUND, STATUS_WARNING},
    {MC_STEP_HALVING_LIMIT, STATUS_WARNING},
    {MC_PARAM_AT_UPPER_BOUND, STATUS_WARNING},
};

}  // namespace

MCStatus::MCStatus() : fCode(MC_OK), fKind(STATUS_OK) {}

MCStatus::MCStatus(long code, bool bWarningOnly) : fCode(code), fKind(KindOfCode(code)) {
  if (bWarningOnly && fKind == STATUS_ERROR) fKind = STATUS_WARNING;
}

MCStatus::MCStatus(long code, MCStatusKind kind) : fCode(code), fKind(kind) {}

long MCStatus::GetDiscreteDatum(unsigned int i) const {
  return i < fvDiscreteData.size() ? fvDiscreteData[i] : 0;
}

void MCStatus::SetDiscreteDatum(unsigned int i, long value) {
  if (i >= fvDiscreteData.size()) fvDiscreteData.resize(static_cast<std::size_t>(i) + 1, 0);
  fvDiscreteData[i] = value;
}

MCStatusKind MCStatus::KindOfCode(long code) {
  if (code == MC_OK) return STATUS_OK;
  for (const CodeKind& entry : kCodeKinds) {
    if (entry.fCode == code) return entry.fKind;
  }
  return STATUS_ERROR;
}

const char* MCStatus::KindName(MCStatusKind kind) {
  switch (kind) {
    case STATUS_OK: return "OK";
    case STATUS_WARNING: return "warning";
    case STATUS_ERROR: return "error";
    case STATUS_NOTE: return "note";
  }
  return "unknown";
}

void MCStatus::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCStatus::Display(std::ostream& os) const {
  MCDisplay_850::DisplayI(os, "Status code:", fCode);
  MCDisplay_850::DisplayS(os, "Status kind:", KindName(fKind));
  if (!fvDiscreteData.empty()) {
    os << "Status data:";
    for (long datum : fvDiscreteData) os << ' ' << datum;
    os << '\n';
  }
}

}  // namespace MCCommon_850
