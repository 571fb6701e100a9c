#include "host/adapter/ACADatasetCaseIter.h"

#include "host/data/ZORV_Dataset.h"

ACADatasetCaseIter::ACADatasetCaseIter(ZORV_Dataset* dataset) : fpDataset(dataset) {}

void ACADatasetCaseIter::SetWriting(bool writing, const std::vector<bool>& readColumns) {
  fbWriting = writing;
  fvbReadColumns = writing ? readColumns : std::vector<bool>();
}

void ACADatasetCaseIter::SetColumnValue(int column, double value) {
  if (!fbWriting || fpDataset == nullptr || fCase < 0 || fCase >= fpDataset->GetCaseCount()) return;
  if (column < 0 || column >= fpDataset->ColumnCount()) return;
  if (column < static_cast<int>(fvbReadColumns.size()) && fvbReadColumns[static_cast<std::size_t>(column)]) return;
  if (fpDataset->GetVariable(column)->IsString()) return;
  fpDataset->SetNum(fCase, column, value);
}
