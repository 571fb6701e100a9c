#pragma once

#include <map>
#include <string>
#include <vector>

// The data of a chart: named sources, each a table of variables by rows.
// A cell holds a number or a UTF-8 text, or nothing when it was never
// written. The chart library fills it (VarDataProcessor) and the output keeps
// a copy of it with each chart.
struct OmChartData {
  struct Cell {
    bool fbText = false;
    double fNumber = 0.0;
    std::string fText;
  };
  struct Variable {
    std::string fName;
    std::map<long, Cell> fCells;  // by row; rows without a cell are empty
  };
  struct Source {
    std::string fName;
    long fRowCount = 0;
    std::vector<Variable> fvVariables;

    // Null when the source has no variable of that name.
    const Variable* FindVariable(const std::string& name) const;
  };

  std::vector<Source> fvSources;

  // Null when there is no source of that name.
  const Source* FindSource(const std::string& name) const;
  bool Empty() const { return fvSources.empty(); }
};
