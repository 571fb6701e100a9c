#include "host/adapter/ACAProcDataSourceIter.h"

#include "host/adapter/ACADatasetCaseIter.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAVarValidSpecs.h"

ACAProcDataSourceIter::ACAProcDataSourceIter(ACAInputAdapter& adapter, bool splitByIter)
    : fpAdapter(&adapter), fbSplitByIter(splitByIter), fState(ACA_ITER_READY),
      fpCursor(std::make_unique<ACADatasetCaseIter>(adapter.GetDataset())) {
  // One iterator reads through an adapter at a time; an older one fails.
  if (adapter.fpIterator != nullptr) {
    adapter.fpIterator->Fail();
    adapter.fpIterator->fpAdapter = nullptr;
  }
  adapter.fpIterator = this;
  adapter.LeaveSplits();
  if (!adapter.PrepareReading() || adapter.DataChanged()) {
    fState = ACA_ITER_FAILED;
    return;
  }
  fvRecord.assign(static_cast<std::size_t>(adapter.GetVarValidSpecs()->GetNRecordVars()), 0.0);
  if (!adapter.HasValidCase()) fState = ACA_ITER_NO_VALID_CASE;
}

ACAProcDataSourceIter::~ACAProcDataSourceIter() {
  if (fpAdapter != nullptr && fpAdapter->fpIterator == this) fpAdapter->fpIterator = nullptr;
}

bool ACAProcDataSourceIter::HasRecord() const { return fbOpen && fState != ACA_ITER_FAILED && fPosition < fEnd; }

const double* ACAProcDataSourceIter::Current() const { return HasRecord() ? fvRecord.data() : nullptr; }

void ACAProcDataSourceIter::Fail() {
  fbOpen = false;
  fpCursor->SetCase(-1);
  fState = ACA_ITER_FAILED;
}

void ACAProcDataSourceIter::LetGo() {
  fbOpen = false;
  fpCursor->SetCase(-1);
  if (fState != ACA_ITER_FAILED) fState = ACA_ITER_END;
}

void ACAProcDataSourceIter::EndPass() {
  LetGo();
  fbPassDone = true;
  if (fbLastPass) fpCursor->SetWriting(false, std::vector<bool>());
}

void ACAProcDataSourceIter::SeekValid() {
  const ACAInputAdapter::SplitData* split = fpAdapter->CurrentSplit();
  double weight = 0.0;
  for (; fPosition < fEnd; ++fPosition) {
    long row = fpAdapter->CaseAt(fPosition);
    if (fpAdapter->ReadCase(row, split, fvRecord.data(), weight)) {
      fpCursor->SetCase(row);
      fState = ACA_ITER_READY;
      return;
    }
  }
  fpCursor->SetCase(-1);
  fState = ACA_ITER_END;
}

void ACAProcDataSourceIter::OpenCurrentSplit() {
  if (!fpAdapter->GetCurrentSplitRange(fPosition, fEnd)) {
    LetGo();
    return;
  }
  fbOpen = true;
  SeekValid();
}

void ACAProcDataSourceIter::Next() {
  if (!HasRecord()) return;
  if (fpAdapter->DataChanged()) {
    Fail();
    return;
  }
  ++fPosition;
  SeekValid();
}

bool ACAProcDataSourceIter::NewSplit() {
  if (fpAdapter == nullptr || fState == ACA_ITER_FAILED || fbPassDone) return false;
  if (fpAdapter->DataChanged()) {
    Fail();
    return false;
  }
  if (!fpAdapter->OpenSplit(fpAdapter->GetSplitIndex() + 1)) {
    EndPass();
    return false;
  }
  OpenCurrentSplit();
  return true;
}

void ACAProcDataSourceIter::Rewind() {
  if (fpAdapter == nullptr || fState == ACA_ITER_FAILED) return;
  if (fbLastPass && fbPassDone) return;
  if (fpAdapter->DataChanged()) {
    Fail();
    return;
  }
  if (fbSplitByIter) {
    fpAdapter->LeaveSplits();
    LetGo();
    fbPassDone = false;
    fState = ACA_ITER_READY;
  } else {
    OpenCurrentSplit();
  }
}

void ACAProcDataSourceIter::NewPass(bool writing) {
  if (fpAdapter == nullptr || fState == ACA_ITER_FAILED) return;
  if (fpAdapter->DataChanged()) {
    Fail();
    return;
  }
  fbWriting = writing;
  fbLastPass = false;
  fbPassDone = false;
  fpAdapter->LeaveSplits();
  LetGo();
  fState = ACA_ITER_READY;
  fpCursor->SetWriting(writing, fpAdapter->GetReadColumns());
}

ZORV_InputCaseIterator* ACAProcDataSourceIter::GetProcDS() const { return fpCursor.get(); }
