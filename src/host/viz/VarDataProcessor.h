#pragma once

#include <string>

#include "host/output/OmChartData.h"

// The data of a chart: named data sources, each a table of variables by
// rows. Cells hold a number or a UTF-8 text; rows may be written in any
// order, and a cell never written stays empty.
class VarDataProcessor {
 public:
  // Where a variable lives; filled by AddVariable and given back to the
  // value setters.
  struct VarInfo {
    int fSource = -1;
    int fVariable = -1;
  };

  VarDataProcessor() = default;

  // Declares a source with at least that many rows, and returns its index.
  // Declaring a name again gives the existing source, grown if need be.
  // Negative row counts count as 0.
  int AddDataSource(const std::string& name, long rowCount);
  // Declares a variable in a declared source and describes it in *info. A
  // name already there gives the existing variable. False, and nothing
  // declared, for an unknown source or an empty name.
  bool AddVariable(const std::string& source, const std::string& name, VarInfo* info);

  // False for an unknown variable or a negative row. Writing a row grows
  // the source's row count to hold it; writing a cell again replaces it.
  bool SetVariableValue(const VarInfo& info, long row, double value);
  bool SetStringVariableValue(const VarInfo& info, long row, const std::string& value);

  // What was written, for the chart library and for checks.
  int GetDataSourceCount() const { return static_cast<int>(fData.fvSources.size()); }
  int FindDataSource(const std::string& name) const;
  // Empty, or 0, for an index out of range.
  std::string GetDataSourceName(int source) const;
  long GetRowCount(int source) const;
  int GetVariableCount(int source) const;
  std::string GetVariableName(int source, int variable) const;
  // False when the source or the variable is unknown.
  bool FindVariable(const std::string& source, const std::string& name, VarInfo* info) const;
  bool IsValueSet(const VarInfo& info, long row) const;
  // False when the cell is empty or of the other kind.
  bool GetNumericValue(const VarInfo& info, long row, double& value) const;
  bool GetStringValue(const VarInfo& info, long row, std::string& value) const;

  // Everything written, as the output keeps it with a chart.
  const OmChartData& GetData() const { return fData; }

  // The data serialized for the chart editor: the <data> element of the
  // chart markup, with every value written inline (see docs/charts.md).
  // The caller owns the bytes (not terminated) and releases them with
  // delete[].
  char* GetDataStream(long& length) const;

 private:
  OmChartData::Variable* Find(const VarInfo& info);
  const OmChartData::Variable* Find(const VarInfo& info) const;
  const OmChartData::Cell* FindCell(const VarInfo& info, long row) const;
  bool Store(const VarInfo& info, long row, const OmChartData::Cell& cell);

  OmChartData fData;
};
