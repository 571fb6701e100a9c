#pragma once

#include "host/output/BpDimension.h"
#include "host/output/BpHandle.h"

class BpAnnotation;
class BpCellText;
class BpTableState;
struct OmTable;

// A table of the output. Its dimensions are made before its cells.
class BpPivotTable : public BpHandle {
 public:
  // How the top-level categories of a dimension are ordered.
  enum Sort {
    ASCENDING = 0,
    DESCENDING = 1,
    AS_CREATED = 2,
  };

  BpPivotTable() = default;
  explicit BpPivotTable(BpTableState* pState);

  BpDimension Dimension(const BpCellText& name, Sort sort);
  BpDimension Dimension(const BpCellText& name, int sort) { return Dimension(name, static_cast<Sort>(sort)); }
  void Caption(const BpCellText& text);
  void Note(const BpAnnotation& annotation);
  void MinDataColumnWidth(int width);

  // The table in the output document; null unbound.
  OmTable* GetOmTable() const;
  // True for the procedure's own tables (the last argument of PivotTable).
  bool IsProcedureTable() const;

 private:
  BpTableState* State() const;
};
