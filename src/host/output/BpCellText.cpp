#include "host/output/BpCellText.h"

#include "host/output/OmDocument.h"

void BpCellText::FillCell(OmCell& cell, const BpTextContext& context) const {
  cell.fContent.fText = GetText(context);
  cell.fbNumeric = false;
  cell.fbMissing = false;
  cell.fValue = 0.0;
  cell.fFormat.clear();
}
