#pragma once

#include "host/output/BpHandle.h"
#include "host/output/BpPivotTable.h"

class BpCellText;
class BpHeadingState;
struct OmHeading;

// A node of the output outline, under which headings and tables go.
class BpHeading : public BpHandle {
 public:
  BpHeading() = default;
  explicit BpHeading(BpHeadingState* pState);

  BpHeading Heading(const BpCellText& text);
  // A table under this node. `title` is what the reader sees; `subType` is
  // the stable name by which the table is found, never translated.
  // `procedureTable` is true for the procedure's own tables: made while a
  // split of the file is current, they carry the split in a caption, or,
  // when the splits are shown together, remember it for the merge of the
  // splits' tables.
  BpPivotTable PivotTable(const BpCellText& title, const BpCellText& subType, bool procedureTable);

  // The outline node in the output document; null unbound.
  OmHeading* GetOmHeading() const;

 protected:
  BpHeadingState* State() const;
};
