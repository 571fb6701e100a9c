#pragma once

#include <map>
#include <string>
#include <vector>

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
  int GetDataSourceCount() const { return static_cast<int>(fvSources.size()); }
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

  // The data serialized for the chart editor. The caller owns the bytes and
  // releases them with delete[].
  char* GetDataStream(long& length) const;

 private:
  struct Cell {
    bool fbString = false;
    double fNumber = 0.0;
    std::string fText;
  };
  struct Variable {
    std::string fName;
    std::map<long, Cell> fCells;
  };
  struct Source {
    std::string fName;
    long fRowCount = 0;
    std::vector<Variable> fvVariables;
  };

  Variable* Find(const VarInfo& info);
  const Variable* Find(const VarInfo& info) const;
  const Cell* FindCell(const VarInfo& info, long row) const;
  bool Store(const VarInfo& info, long row, const Cell& cell);

  std::vector<Source> fvSources;
};
