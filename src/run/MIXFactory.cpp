#include "run/MIXFactory.h"

#include <cstring>
#include <exception>
#include <fstream>
#include <memory>
#include <sstream>

#include "base/MIXAssert.h"
#include "base/MixExports.h"
#include "host/adapter/ACADataFileIter.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_InputCaseIterator.h"
#include "host/data/ZORV_PMMLPooling.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/data/ZORV_Variable.h"
#include "host/files/AppParams.h"
#include "host/files/BEPesRepos.h"
#include "host/files/AtomicFileWriter.h"
#include "host/files/ExtNameStr.h"
#include "host/files/PathFactory.h"
#include "host/output/BP_ToFront.h"
#include "host/output/BpComposite.h"
#include "host/output/BpError.h"
#include "host/output/BpNumber.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "numeric/common/MCQueryCancel.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMStatJSONWriter.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCApplicInfo4XML.h"
#include "numeric/xml/MCVarList.h"
#include "params/MIXParameterAggregator.h"
#include "specs/MIXValidSpecs.h"

using MCCommon_850::MCStatus;
using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMSettings;
using MCXML_850::MCVarList;

namespace {

// The statuses the component reports and the user's text for each: plain,
// and for a split of the file, with the split's variables and values.
struct MessageData {
  long fCode;
  const char* fpPlain;  // null: the code is silent
  const char* fpSplit;
  bool fbProcContinues;  // the component went on despite the warning
};

const MessageData kMessages[] = {
    {MCCommon_850::MC_SETTINGS_INVALID, "Component Settings are invalid...",
     "Component Settings are invalid for split [%1 = %2:,^1 = ^2:]1...", false},
    {MCCommon_850::MC_MAX_STEP_HALVING, "Max number of step-halving reached ...",
     "Max number of step-halving reached for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_INITIAL_VALUE_FAILED, "Initial Value Failed...",
     "Initial Value Failed for split [%1 = %2:,^1 = ^2:]1...", false},
    {MCCommon_850::MC_CANCELLED, nullptr, nullptr, false},
    {MCCommon_850::MC_EMMEANS_ONE_LEVEL,
     "The compared factor has at most one level on estimated marginal means request number ^1...",
     "The compared factor has at most one level on estimated marginal means request number ^1 for split file "
     "[%1 = %2:,^1 = ^2:]2.",
     false},
    {MCCommon_850::MC_LOGLIK_NEAR_ZERO, "The log likelihood value is approaching zero.",
     "The log likelihood value is approaching zero for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_QUASI_SEPARATION, "A quasi-complete separation may exist in the data.",
     "A quasi-complete separation may exist in the data for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_TESTS_INCOMPLETE, nullptr, nullptr, false},
    {MCCommon_850::MC_SAME_SUBJECT_WITHIN, "Same subject and within-subject values...",
     "Same subject and within-subject values for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_HESSIAN_SINGULAR, "An unexpected singularity in the Hessian matrix was encountered.",
     "An unexpected singularity in the Hessian matrix was encountered for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_HESSIAN_NOT_PD,
     "All convergence criteria are satisfied. but the final Hessian matrix is not positive definite.",
     "All convergence criteria are satisfied, but the final Hessian matrix for split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_SCALE_ZERO, "Scale parameter is zero...",
     "Scale parameter is zero for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_COVPARAM_REDUNDANT, nullptr, nullptr, false},
    {MCCommon_850::MC_WEIGHTS_DIFFER_IN_SUBJECT, "Different weights in subject...",
     "Different weights in subject for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_INVALID_RECORDS_OVERFLOW, "Invalid records overflow...",
     "Invalid records overflow for split file [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_NO_HESSIAN_CONVERGENCE, "Convergence was achieved, but no Hessian convergence ...",
     "Convergence achieved, no Hessian in split [%1 = %2:,^1 = ^2:]1 ...", true},
    {MCCommon_850::MC_FILE_OPEN_FAILED, "Failed to open file for new pass...",
     "Failed to open file for new pass for split [%1 = %2:,^1 = ^2:]1...", false},
    {MCCommon_850::MC_POST_ESTIMATION_FAILED, "Post estimation failed ...",
     "Post estimation failed for split [%1 = %2:,^1 = ^2:]1 ...", false},
    {MCCommon_850::MC_OUTPUT_FILE_ERROR, "Output file error...", "Output file error for split [%1 = %2:,^1 = ^2:]1...",
     false},
    {MCCommon_850::MC_NO_VALID_CASES, "No valid cases ...", "No valid cases in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_DUPLICATE_REPEATED, "Duplicate repeated measure ...",
     "Duplicate rep. meas. split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_ITERATION_LIMIT, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_CONVERGED_SINGULAR_HESSIAN, "Converged singular Hessian ...",
     "Converged singular Hessian in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PARAM_HESSIAN_SINGULAR, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PARAM_AT_LOWER_BOUND, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PERFECT_FIT, "Perfect fit ...", "Perfect fit [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_STEP_HALVING_LIMIT, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_PARAM_AT_UPPER_BOUND, "Model validity is uncertain ...",
     "Model validity is uncertain in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_G_NOT_PD, "G matrix of random block ^1 not positive definite ...",
     "G matrix of random block ^1 not positive definite in split [%1=%2:,^1=^2:]2 ...", false},
    {MCCommon_850::MC_R_NOT_PD, "R matrix not positive definite ...",
     "R matrix not positive definite in split [%1=%2:,^1=^2:]1 ...", false},
    {MCCommon_850::MC_GENERALIZED_UNAVAILABLE,
     "The target's distribution, link and fitting method cannot be fitted together, or not with the options "
     "asked (with a likelihood fit: a residual structure, a robust covariance "
     "of an ordinal target or over random blocks that tie all records together, or too many joint random "
     "effects). No model is fitted.",
     "The target's distribution, link and fitting method cannot be fitted together, or not with the options "
     "asked (with a likelihood fit: a residual structure, a robust covariance "
     "of an ordinal target or over random blocks that tie all records together, or too many joint random "
     "effects), for split [%1=%2:,^1=^2:]1. No model is fitted.",
     false},
    {MCCommon_850::MC_PL_NOT_CONVERGED,
     "The pseudo-likelihood iterations reached their limit before the estimates settled. Model validity is "
     "uncertain.",
     "The pseudo-likelihood iterations reached their limit before the estimates settled for split "
     "[%1=%2:,^1=^2:]1. Model validity is uncertain.",
     true},
    {MCCommon_850::MC_TARGET_OUT_OF_SUPPORT,
     "The target ^1 has ^2 records outside the support of its distribution (for a binomial target, events "
     "outside 0 to the trials). No model is fitted.",
     "The target ^1 has ^2 records outside the support of its distribution for split [%1=%2:,^1=^2:]3. No "
     "model is fitted.",
     false},
    {MCCommon_850::MC_ZERO_COUNT_SUBJECTS,
     "Some subjects of a random effect have only zero counts; their predicted random effects are poorly "
     "determined.",
     "Some subjects of a random effect have only zero counts for split [%1=%2:,^1=^2:]1; their predicted random "
     "effects are poorly determined.",
     true},
    {MCCommon_850::MC_RANDOM_EFFECTS_TOO_LARGE,
     "A group of records that the random effects join (crossed random effects make all records one group) "
     "needs ^1 million multiplications at each evaluation of the likelihood, its records times their random "
     "effects; the limit is 1000 million. No model is fitted.",
     "A group of records that the random effects join needs ^1 million multiplications at each evaluation of "
     "the likelihood for split [%1=%2:,^1=^2:]2; the limit is 1000 million. No model is fitted.",
     false},
    {MCCommon_850::MC_FIXED_EFFECTS_TOO_LARGE,
     "The fixed effect ^1 has ^2 parameters, and the fixed effects ^3 together; the fit would hold matrices over "
     "every pair of them, some ^4 MB. The limit is 3000 fixed parameters. No model is fitted.",
     "The fixed effect ^1 has ^2 parameters, and the fixed effects ^3 together, for split [%1=%2:,^1=^2:]5; the "
     "fit would hold matrices over every pair of them, some ^4 MB. The limit is 3000 fixed parameters. No model "
     "is fitted.",
     false},
};

// The field name of a variable of a split's list; empty when there is no
// such variable.
std::string VariableName(const MCVarList* pList, int index) {
  const MCXML_850::IMCVariable* pVar = pList != nullptr ? pList->GetVarAt(index) : nullptr;
  return pVar != nullptr ? pVar->GetFieldName() : std::string();
}

// The name of the model's fixed effect e as the tables write it; empty when
// there is no such effect.
std::string FixedEffectName(const MCGLMM_850::GLMMSettings* pSettings, const MCVarList* pList, int e) {
  if (pSettings == nullptr || pList == nullptr || e < 0) return std::string();
  const std::vector<MCMath_850::MCModelEffect>& effects = pSettings->GetModelEffects();
  if (e >= static_cast<int>(effects.size())) return std::string();
  return MCGLMM_850::GLMMStatJSONWriter::EffectName(effects[static_cast<std::size_t>(e)], *pList);
}

const MessageData* FindMessage(long code) {
  for (const MessageData& message : kMessages) {
    if (message.fCode == code) return &message;
  }
  return nullptr;
}

// The entry of a per-split vector at a split index; null (or the fallback)
// where the vector has no such entry.
template <class T>
T EntryAt(const std::vector<T>& entries, int index, T fallback) {
  if (index < 0 || static_cast<std::size_t>(index) >= entries.size()) return fallback;
  return entries[static_cast<std::size_t>(index)];
}

// Points the component's debug display at a string stream for the length of
// a scope, and back at the stream it had, also when an exception passes.
class DisplayCapture {
 public:
  explicit DisplayCapture(std::ostream* pSaved) : fpSaved(pSaved) { MCDisplay_850::SetOutStream(fText); }
  ~DisplayCapture() { MCDisplay_850::SetOutStream(*fpSaved); }
  DisplayCapture(const DisplayCapture&) = delete;
  DisplayCapture& operator=(const DisplayCapture&) = delete;
  std::string GetText() const { return fText.str(); }

 private:
  std::ostream* fpSaved;
  std::ostringstream fText;
};

// Runs one document export. A document the component cannot write counts
// as a failed export: the file is left as far as it got, and nothing is said.
template <class Export>
void RunExport(Export exportDocument) {
  try {
    exportDocument();
  } catch (const std::exception&) {
  }
}

// Writes one document under a temporary name and renames it into place, so
// that a failed or killed export leaves the previous file; a document that
// was written is handed to the repository, one that was not is reported by
// the repository's check at the end of the command. An interrupted command
// writes none: the temporary file is dropped and the previous file stays.
template <typename Export>
void WriteDocument(const std::string& name, int kind, Export exportDocument) {
  if (ZORV_StopFlag::IsRaised()) return;
  AtomicFileWriter writer(ExtNameStr(name).GetPath());
  if (writer.IsOpen()) {
    RunExport([&]() { exportDocument(writer.Stream()); });
    if (ZORV_StopFlag::IsRaised()) return;
    if (writer.Commit()) {
      TestAndStoreToPes(name.c_str(), kind, 1);
      return;
    }
  }
  BEPesRepos::NoteFailedWrite(name, writer.GetReason());
}

}  // namespace

// ---------------------------------------------------------------------------
// Construction

MIXFactory::MIXFactory(MIXValidSpecs* specs, ProcedureDataSource& dataSource, BpProcedure* procedure)
    : fpSpecs(specs),
      fpVarSpecs(specs != nullptr ? specs->GetVarValidSpecsPtr() : nullptr),
      fpDataSource(&dataSource),
      fpProcedure(procedure),
      fpInpAdapt(nullptr),
      fInpAdaptMsg(dataSource),
      fParserMessage(),
      fpRecIter(nullptr),
      fSplitIndex(-1),
      fProcContinues(false),
      fpFixParamAggr(nullptr),
      fpPMMLPooling(nullptr) {
  MIX_ASSERT(fpSpecs != 0, "fpSpecs != 0");
  try {
    fpInpAdapt = new ACAInputAdapter(fpVarSpecs, dataSource);
    if (fpProcedure != nullptr) fpInpAdapt->SetSplitFile(*fpProcedure, true, true, true);
    fpRecIter = new ACAProcDataSourceIter(*fpInpAdapt, true);
  } catch (...) {
    delete fpRecIter;
    delete fpInpAdapt;
    throw;
  }

  const int state = fpRecIter->GetState();
  if (state == ACA_ITER_NO_VALID_CASE) {
    if (fpInpAdapt->GetSplitFile()) {
      fInpAdaptMsg.NoValidCasesSplit();
    } else {
      fStatus = MCStatus(MCCommon_850::MC_NO_VALID_CASES, false);
      fInpAdaptMsg.NoValidCases();
    }
  } else if (state == ACA_ITER_FAILED) {
    fStatus = MCStatus(MCCommon_850::MC_NO_VALID_CASES, false);
    fInpAdaptMsg.NoValidCases();
  }
}

MIXFactory::~MIXFactory() {
  delete fpFixParamAggr;
  fpFixParamAggr = nullptr;
  for (MIXParameterAggregator*& pAggregator : fvpRandParamAggrs) {
    delete pAggregator;
    pAggregator = nullptr;
  }
  delete fpPMMLPooling;
  fpPMMLPooling = nullptr;
  for (GLMMAlgorithm* pAlgorithm : fvpAlgorithms) delete pAlgorithm;
  for (GLMMSettings* pSettings : fvpCompSettings) delete pSettings;
  for (MCVarList* pVarList : fvpVarLists) delete pVarList;
  delete fpRecIter;
  fpRecIter = nullptr;
  delete fpInpAdapt;
  fpInpAdapt = nullptr;
}

// ---------------------------------------------------------------------------
// The current split

GLMMAlgorithm* MIXFactory::GetGLMMAlgorithm() const {
  return EntryAt<GLMMAlgorithm*>(fvpAlgorithms, fSplitIndex, nullptr);
}

GLMMSettings* MIXFactory::GetGLMMSettings() const {
  return EntryAt<GLMMSettings*>(fvpCompSettings, fSplitIndex, nullptr);
}

const GLMMOutputStats* MIXFactory::GetOutputStats() const {
  const GLMMAlgorithm* pAlgorithm = GetGLMMAlgorithm();
  MIX_ASSERT(!fStatus.IsError() && (pAlgorithm != 0), "!fStatus.IsError() && (pAlgorithm != 0)");
  return pAlgorithm->GetOutputStats();
}

void MIXFactory::ClearSplitHistory() {}

void MIXFactory::DisplayAdapterWarnings() const {}

void MIXFactory::CheckForWarningToAdd(std::vector<MCStatus>&) const {}

// ---------------------------------------------------------------------------
// Passes

bool MIXFactory::StartNewSplit(bool newSplit) {
  if (fpInpAdapt != nullptr && fpInpAdapt->GetSplitFile()) fStatus = MCStatus();
  if (fpRecIter == nullptr) return false;
  if (newSplit) {
    if (!fpRecIter->NewSplit()) return false;
  } else {
    if (static_cast<std::size_t>(fSplitIndex + 1) >= fvpCompSettings.size()) return false;
    fpInpAdapt->ChangeSplitNoIter();
  }
  ++fSplitIndex;
  fProcContinues = false;
  return true;
}

bool MIXFactory::PrepareComponentRun(bool rewind) {
  if (fStatus.IsError()) return false;
  MIX_ASSERT(fpInpAdapt != 0 && fpRecIter != 0, "fpInpAdapt != 0 && fpRecIter != 0");
  if (rewind) {
    fpRecIter->Rewind();
  } else {
    fpInpAdapt->ClearDSIterator();
    fpInpAdapt->ResetSplitNoIter();
  }
  fSplitIndex = -1;
  return true;
}

bool MIXFactory::ProcedureDataPass(bool firstPass) {
  bool result = true;
  MCStatus localStatus;
  const GLMMSettings* pRunSettings = fpSpecs->GetCompSettingsPtr();
  const MCCommon_850::MCQueryCancel* pCancel = pRunSettings != nullptr ? pRunSettings->GetCancelPointer() : nullptr;

  MCCommon_850::RecordIterator& records = *fpRecIter;
  if (!records.HasRecord()) {
    result = false;
    localStatus = MCStatus(MCCommon_850::MC_NO_VALID_CASES, false);
    if (firstPass) {
      if (fpInpAdapt->GetSplitFile()) {
        fInpAdaptMsg.NoValidCasesSplit();
      } else {
        fInpAdaptMsg.NoValidCases();
      }
    }
  }
  // Per record: HasRecord, IsCancelled, Next and GetState, and nothing else.
  while (!localStatus.IsError() && records.HasRecord() && (pCancel == nullptr || !pCancel->IsCancelled())) {
    records.Next();
    if (records.GetState() == ACA_ITER_FAILED) {
      localStatus = MCStatus(MCCommon_850::MC_NO_VALID_CASES, false);
      result = false;
      break;
    }
  }
  if (fStatus.IsError()) return result;
  fStatus = localStatus;
  return result;
}

bool MIXFactory::CreateParamAggregators() {
  if (fpFixParamAggr == nullptr) {
    MIX_ASSERT(fvpRandParamAggrs.empty(), "fvpRandParamAggrs.empty()");
    const int nRandom = fpSpecs->GetNRandSpecs();
    const int nSplits = fpInpAdapt->GetSplitFile() ? fpInpAdapt->GetSplitCount() : 1;
    fpFixParamAggr = new MIXParameterAggregator(*fpSpecs, fpInpAdapt, *fpDataSource, -1, nSplits);
    fvpRandParamAggrs.assign(static_cast<std::size_t>(nRandom), nullptr);
    for (int i = 0; i < nRandom; ++i) {
      fvpRandParamAggrs[static_cast<std::size_t>(i)] =
          new MIXParameterAggregator(*fpSpecs, fpInpAdapt, *fpDataSource, i, nSplits);
    }
  }

  std::string name;
  if (fpSpecs->GetOutFOptionMODEL()) {
    name = fpSpecs->GetOutFModelFileName();
  } else if (fpSpecs->GetOutFOptionPARAMETER()) {
    name = fpSpecs->GetOutFParameterFileName();
  }
  if (!name.empty()) {
    delete fpPMMLPooling;
    fpPMMLPooling = nullptr;
    fpPMMLPooling = new ZORV_PMMLPooling(*fpDataSource, name);
  }
  return true;
}

bool MIXFactory::AggregateParameters() {
  fpSpecs->CompleteSplits(fpInpAdapt->GetSplitCount());
  MIX_ASSERT(fpFixParamAggr != 0, "fpFixParamAggr != 0");
  bool result = fpFixParamAggr->CreateAggregationMaps();
  if (aggreg_random && result && !fvpRandParamAggrs.empty()) {
    for (MIXParameterAggregator* pAggregator : fvpRandParamAggrs) {
      result = pAggregator->CreateAggregationMaps();
      if (!result) break;
    }
  }
  return result;
}

bool MIXFactory::CompleteExtFileIO() {
  if (fpPMMLPooling != nullptr) fpPMMLPooling->CompletePMML();
  return true;
}

bool MIXFactory::CompleteMetaData() {
  std::unique_ptr<GLMMSettings> pCompSettings;
  std::unique_ptr<MCVarList> pVarList;
  int nRecords = 0;
  bool ok = false;

  if (!fStatus.IsError()) {
    pCompSettings.reset(new GLMMSettings());
    MIX_ASSERT(pCompSettings != 0, "pCompSettings != 0");
    fpSpecs->CompleteSettings(pCompSettings.get(), fpInpAdapt, fSplitIndex);

    std::vector<int> sortVars;
    const int nSortVars = pCompSettings->GetSortDataVariables(sortVars);
    if (fSortVars.empty() && nSortVars >= 1) {
      fSortVars = sortVars;
    } else {
      MIX_ASSERT(fSortVars == sortVars, "fSortVars == sortVars");
    }

    pVarList.reset(new MCVarList());
    ok = fpSpecs->CompleteVarList(pVarList.get(), fpInpAdapt);

    if (display_metadata) {
      std::ostream* pSaveCompStream = MCDisplay_850::GetOutStream();
      MIX_ASSERT(pSaveCompStream != 0, "pSaveCompStream != 0");
      std::string text;
      {
        DisplayCapture capture(pSaveCompStream);
        pVarList->Display();
        text = capture.GetText();
      }
      SendTextToFront(text);
    }
    if (ok) nRecords = fpInpAdapt->GetNRecords();
  }

  if (!ok && fpInpAdapt->GetSplitFile()) {
    pCompSettings.reset();
    pVarList.reset();
  }

  fvpCompSettings.reserve(fvpCompSettings.size() + 1);
  fvpVarLists.reserve(fvpVarLists.size() + 1);
  fvNRecords.reserve(fvNRecords.size() + 1);
  fvpCompSettings.push_back(pCompSettings.release());
  fvpVarLists.push_back(pVarList.release());
  fvNRecords.push_back(nRecords);
  return ok;
}

// ---------------------------------------------------------------------------
// The component run

bool MIXFactory::RunGLMMComponent() {
  std::unique_ptr<GLMMAlgorithm> pNewAlgorithm;
  bool ok = false;
  const bool splitFile = fpInpAdapt->GetSplitFile();

  // Build the algorithm.
  if (!fStatus.IsError()) {
    MIX_ASSERT(fpInpAdapt != 0 && fpRecIter != 0, "fpInpAdapt != 0 && fpRecIter != 0");
    GLMMSettings* pCompSettings = EntryAt<GLMMSettings*>(fvpCompSettings, fSplitIndex, nullptr);
    MCVarList* pMCVarList = EntryAt<MCVarList*>(fvpVarLists, fSplitIndex, nullptr);
    if (pCompSettings == nullptr || pMCVarList == nullptr) {
      // In a split file a null entry marks a split that failed in the data
      // pass, which said so there.
      if (!splitFile) {
        MIX_ASSERT(pCompSettings != 0, "pCompSettings!=0");
        MIX_ASSERT(pMCVarList != 0, "pMCVarList != 0");
      }
    } else {
      pNewAlgorithm.reset(new GLMMAlgorithm(*pCompSettings, *pMCVarList));
      pNewAlgorithm->SetCompScoreTypes(fpSpecs->GetSaveScoreTypes());
      fStatus = pNewAlgorithm->GetStatus();
      ok = !fStatus.IsError();
      // Warnings of the construction reach the user before records are read.
      if (!fStatus.IsOK()) DisplayMessage(fStatus);
    }
  }

  // Record it, null or not, so that the vector stays indexed by split.
  fvpAlgorithms.push_back(pNewAlgorithm.get());
  GLMMAlgorithm* pAlgorithm = pNewAlgorithm.release();
  if (!ok) return ComponentFailureTail();

  const int nRecords = EntryAt<int>(fvNRecords, fSplitIndex, 0);
  if (!fSortVars.empty() && nRecords < 1) return ComponentFailureTail();

  // Reorder and read the records.
  std::unique_ptr<ACADataFileIter> pDataFileIter(new ACADataFileIter(*fpInpAdapt, fSortVars, nRecords));
  MIX_ASSERT(pDataFileIter != 0, "pDataFileIter != 0");
  if (pDataFileIter->GetState() == ACA_ITER_FAILED) {
    if (splitFile) {
      fInpAdaptMsg.NoValidCasesSplit();
    } else {
      fInpAdaptMsg.NoValidCases();
    }
    pDataFileIter.reset();
    return ComponentFailureTail();
  }
  if (!pDataFileIter->FillDataFile(*fpRecIter)) {
    pDataFileIter.reset();
    return ComponentFailureTail();
  }
  if (write_text_data) {
    const std::string path = PathFactory::getPathInstance()->GetWritablePath() + GetSortedRecordsFileName();
    if (!pDataFileIter->GetTextFile(path)) {
      pDataFileIter.reset();
      return ComponentFailureTail();
    }
  }
  pDataFileIter->Rewind();

  // Fit.
  fStatus = pAlgorithm->Execute(pDataFileIter.get(), 0);
  ok = !fStatus.IsError();
  if (fvpCompSettings.size() > 1) pDataFileIter->CloseDataFile();
  DisplayAllMessages();
  if (!ok) {
    DisplayMessage(fStatus);
  } else {
    // Show and save, only after a fit without error.
    if (display_component) {
      std::ostringstream text;
      pAlgorithm->Display(text);
      SendTextToFront(text.str());
    }
    if (display_output) DisplayOutput();
    SavePMMLFile();
  }

  // Hand over the parameters.
  if (!fStatus.IsError()) fStatus = pAlgorithm->GetStatus();
  if (ok && fpFixParamAggr != nullptr) ok = fpFixParamAggr->AddSplitParams(pAlgorithm);
  if (aggreg_random && ok && !fvpRandParamAggrs.empty()) {
    for (MIXParameterAggregator* pAggregator : fvpRandParamAggrs) {
      ok = pAggregator->AddSplitParams(pAlgorithm);
      if (!ok) break;
    }
  }
  pDataFileIter.reset();
  if (display_component) DisplayStatus();
  return ok;
}

bool MIXFactory::ComponentFailureTail() {
  // Nothing else takes a failed split's records from the host's iterator.
  if (fpInpAdapt->GetSplitFile()) ProcedureDataPass(false);
  if (display_component) DisplayStatus();
  return false;
}

// ---------------------------------------------------------------------------
// Messages

void MIXFactory::DisplayMessage(const MCStatus& status) {
  if (!status.IsError() && !status.IsWarning()) return;

  std::string plain;
  std::string split;
  std::string selected;
  std::string extra;  // a text argument, before the number
  int number = -1;
  std::vector<long> more;  // numbers after the number
  const bool splitFile = fpInpAdapt != nullptr && fpInpAdapt->GetSplitFile();
  const bool fatalForRun = status.IsError() && !splitFile;
  const long code = status.GetErrorCode();

  if (code == MCCommon_850::MC_BUILD_MODEL) {
    if (status.IsError()) {
      plain = "Error building model...";
      split = "Error building model for split [%1 = %2:,^1 = ^2:]1...";
    } else {
      plain = "Warning building model...";
      split = "Warning building model for split [%1 = %2:,^1 = ^2:]1...";
    }
  } else if (const MessageData* pMessage = FindMessage(code)) {
    if (pMessage->fpPlain != nullptr) plain = pMessage->fpPlain;
    if (pMessage->fpSplit != nullptr) split = pMessage->fpSplit;
    if (pMessage->fbProcContinues) fProcContinues = true;
    if (code == MCCommon_850::MC_EMMEANS_ONE_LEVEL || code == MCCommon_850::MC_G_NOT_PD) {
      number = static_cast<int>(status.GetDiscreteDatum(0));
    } else if (code == MCCommon_850::MC_RANDOM_EFFECTS_TOO_LARGE) {
      number = static_cast<int>(status.GetDiscreteDatum(1));
    } else if (code == MCCommon_850::MC_FIXED_EFFECTS_TOO_LARGE) {
      extra = FixedEffectName(GetGLMMSettings(), EntryAt<MCVarList*>(fvpVarLists, fSplitIndex, nullptr),
                              static_cast<int>(status.GetDiscreteDatum(0)));
      number = static_cast<int>(status.GetDiscreteDatum(1));
      more = {status.GetDiscreteDatum(2), status.GetDiscreteDatum(3)};
    } else if (code == MCCommon_850::MC_TARGET_OUT_OF_SUPPORT) {
      extra = VariableName(EntryAt<MCVarList*>(fvpVarLists, fSplitIndex, nullptr),
                           static_cast<int>(status.GetDiscreteDatum(0)));
      number = static_cast<int>(status.GetDiscreteDatum(1));
    }
  } else if (fatalForRun) {
    plain = "Internal error ...";
    split = "Internal error for split [%1 = %2:,^1 = ^2:]1 ...";
  } else {
    plain = "Internal warning ...";
    split = "Internal warning for split [%1 = %2:,^1 = ^2:]1 ...";
  }

  selected = splitFile ? split : plain;
  if (selected.empty()) return;

  const int level = fatalForRun ? BpErrorLevelError : BpErrorLevelWarning;
  if (extra.empty() && !splitFile && number < 0) {
    BpError(BpString(selected, true), BpErrorShowOutput, level);
    return;
  }
  BpComposite composite(selected, true);
  if (!extra.empty()) composite.Add(BpString(extra, false));
  if (number >= 0) composite.Add(BpNumber(static_cast<double>(number), BpProcedure::Count()));
  for (long value : more) composite.Add(BpNumber(static_cast<double>(value), BpProcedure::Count()));
  if (splitFile) {
    composite.Sublist();
    composite.SplitList();
    composite.EndSublist();
  }
  composite.Finish();
  BpError(composite, BpErrorShowOutput, level);
}

void MIXFactory::DisplayAllMessages() {
  const GLMMAlgorithm* pAlgorithm = GetGLMMAlgorithm();
  DisplayAdapterWarnings();
  if (pAlgorithm == nullptr) return;
  std::vector<MCStatus> warnings = pAlgorithm->GetWarnings();
  CheckForWarningToAdd(warnings);
  for (const MCStatus& warning : warnings) DisplayMessage(warning);
  if (fProcContinues) {
    // Deliberately left unfinished; the flag stays until the next split.
    BpComposite composite("^1 procedure continues ...", true);
    composite.Add(BpString("MIXED", false));
    BpError(composite, BpErrorShowOutput, BpErrorLevelWarning);
  }
}

void MIXFactory::DisplayStatus() const {
  BP_ToFront(1, " ");
  MCDisplay_850::DisplayI("GLMM algorithm returned code:", fStatus.GetErrorCode());
  if (fStatus.IsOK()) {
    BP_ToFront(1, "GLMM algorithm status: OK");
  } else if (fStatus.IsError()) {
    BP_ToFront(1, "GLMM algorithm status: Error");
  } else if (fStatus.IsWarning()) {
    BP_ToFront(1, "GLMM algorithm status: Warning");
  }
}

void MIXFactory::SendTextToFront(const std::string& text) {
  // The text ends at its first NUL, as a C string would.
  BP_ToFrontText(text.substr(0, text.find('\0')));
}

// ---------------------------------------------------------------------------
// Documents

void MIXFactory::SavePMMLFile() {
  GLMMAlgorithm* pAlgorithm = GetGLMMAlgorithm();
  if (pAlgorithm == nullptr) return;

  std::string name;
  if (fpPMMLPooling != nullptr) fpPMMLPooling->GetCurrentPMMLName(name, fpInpAdapt->GetSplitValues());
  // Whether a model file is written follows from the name alone, which is
  // not empty only when CreateParamAggregators made the pool.

  if (!name.empty()) {
    const AppParams* pParams = GetAppParams();
    MCXML_850::MCApplicInfo4XML info(pParams->fpApplicationName != nullptr ? pParams->fpApplicationName : "",
                                     pParams->fpApplicationVersion != nullptr ? pParams->fpApplicationVersion : "",
                                     pParams->fpCopyright != nullptr ? pParams->fpCopyright : "");
    info.SetIncludeTimestamp(false);
    WriteDocument(name, BEPesRepos::KIND_XML, [&](std::ostream& stream) { pAlgorithm->ExportPMML(stream, &info); });
  }

  if (fpSpecs->GetOutFOptionStatXML()) {
    WriteDocument(fpSpecs->GetOutFStatXMLFileName(), BEPesRepos::KIND_XML,
                  [&](std::ostream& stream) { pAlgorithm->ExportStatXML(stream); });
  }

  if (fpSpecs->GetOutFOptionStatJSON()) {
    const std::string jsonName = fpSpecs->GetOutFStatJSONFileName();
    ExtNameStr file;
    file.SetGeneric(jsonName);
    if (fpSpecs->GetUseStatJSON()) {
      WriteDocument(jsonName, BEPesRepos::KIND_JSON,
                    [&](std::ostream& stream) { pAlgorithm->ExportStatJSON(stream); });
    } else if (file.Access(ExtNameStr::MODE_EXISTS) != ExtNameStr::ACCESS_ABSENT) {
      // No stale document of an earlier run may stay behind.
      file.remove();
    }
  }
}

bool MIXFactory::DisplayOutput() {
  if (GetGLMMAlgorithm() == nullptr) {
    BP_ToFront(1, " ");
    BP_ToFront(1, "GLMM output is not available");
    return true;
  }
  const GLMMOutputStats* pStats = GetOutputStats();
  if (pStats == nullptr) return true;
  std::ostream* pSaveCompStream = MCDisplay_850::GetOutStream();
  MIX_ASSERT(pSaveCompStream != 0, "pSaveCompStream != 0");
  std::string text;
  {
    DisplayCapture capture(pSaveCompStream);
    pStats->Display();
    text = capture.GetText();
  }
  SendTextToFront(text);
  return true;
}

// ---------------------------------------------------------------------------
// Scoring

bool MIXFactory::PrepareScoringPass() {
  if (fStatus.IsError()) return false;
  fvNewVarIndices.clear();
  const int nSave = fpSpecs->GetNSaveVars();
  const std::vector<std::string>& names = fpSpecs->GetSaveVarNames();
  const std::vector<std::string>& labels = fpSpecs->GetSaveVarLabels();
  const std::vector<ZORV_Format>& formats = fpSpecs->GetSaveVarFormats();
  for (int i = 0; i < nSave; ++i) {
    const std::size_t k = static_cast<std::size_t>(i);
    // A column that could not be made takes an index outside the dataset,
    // which the case cursor ignores.
    unsigned int index = static_cast<unsigned int>(-1);
    if (!fpDataSource->MakeVariable(0, &index)) index = static_cast<unsigned int>(-1);
    fvNewVarIndices.push_back(index);
    ZORV_Variable* pVariable = index == static_cast<unsigned int>(-1)
                                   ? nullptr
                                   : fpDataSource->GetVariable(static_cast<int>(index));
    if (pVariable == nullptr) continue;
    if (k < names.size()) pVariable->SetName(names[k]);
    if (k < labels.size()) pVariable->SetLabel(labels[k]);
    if (k < formats.size()) {
      pVariable->SetFormat(formats[k]);
      pVariable->SetWriteFormat(formats[k]);
    }
    pVariable->SetMeasurementLevel(3);

    if (fpProcedure != nullptr) {
      BpPivotTable table = fpProcedure->PivotTable(BpString("Notes", true), BpString("Notes", true), false);
      BpDimension contents = table.Dimension(BpString("Contents", true), BpPivotTable::AS_CREATED);
      BpGroup group = contents.Group(BpString("Variables Created", true), true, BpGroup::AS_CREATED);
      BpCategory category = group.Category(BpVariable(*pVariable, BpVariable::NAME));
      category.Cell(BpVariable(*pVariable, BpVariable::LABEL));
    }
  }
  fpRecIter->NewPass(true);
  fpRecIter->SetLastPass();
  fSplitIndex = -1;
  return true;
}

bool MIXFactory::ScoringDataPass() {
  bool ok = !fStatus.IsError();
  GLMMAlgorithm* pAlgorithm = GetGLMMAlgorithm();
  ZORV_InputCaseIterator* pCases = fpRecIter->GetProcDS();
  MCStatus localStatus;
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  const GLMMSettings* pRunSettings = fpSpecs->GetCompSettingsPtr();
  const MCCommon_850::MCQueryCancel* pCancel = pRunSettings != nullptr ? pRunSettings->GetCancelPointer() : nullptr;

  if (ok && !fpRecIter->HasRecord()) {
    localStatus = MCStatus(MCCommon_850::MC_NO_VALID_CASES, false);
    ok = false;
  }
  const int nSave = fpSpecs->GetNSaveVars();
  while (!localStatus.IsError() && fpRecIter->HasRecord() && (pCancel == nullptr || !pCancel->IsCancelled())) {
    const double* recordPtr = fpRecIter->Current();
    MIX_ASSERT(recordPtr != 0, "recordPtr != 0");
    if (pAlgorithm != nullptr) {
      localStatus = pAlgorithm->GetStatus();
      if (!localStatus.IsError()) localStatus = pAlgorithm->ScoreRecord(recordPtr, scores, details);
      if (!localStatus.IsError()) {
        for (int i = 0; i < nSave; ++i) {
          const std::size_t k = static_cast<std::size_t>(i);
          if (k < fvNewVarIndices.size() && k < scores.size()) {
            pCases->SetColumnValue(static_cast<int>(fvNewVarIndices[k]), scores[k]);
          }
        }
      }
    }
    fpRecIter->Next();
    if (fpRecIter->GetState() == ACA_ITER_FAILED) {
      localStatus = MCStatus(MCCommon_850::MC_NO_VALID_CASES, false);
      ok = false;
      break;
    }
  }
  if (!fStatus.IsError()) fStatus = localStatus;
  return ok;
}
