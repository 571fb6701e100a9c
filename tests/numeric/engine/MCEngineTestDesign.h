#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineTestCsv.h"

// Test-only builder of the engine's input from a CSV file: the
// overparameterized fixed design (a column per factor level, levels sorted
// ascending, the first variable of a crossing varying slowest), random
// blocks and the residual block. Terms are written "A", "x", "A*B", "x*A";
// "Intercept" is the intercept. Column names follow "Intercept", "x",
// "A=level", and "A=level*x" for crossings.
class MCEngineTestDesign {
 public:
  MCEngineTestDesign(const MCEngineTestCsv& csv, const std::set<std::string>& factors);

  void SetResponse(const std::string& name) { fResponse = name; }
  void AddFixedTerm(const std::string& term) { fvFixedTerms.push_back(term); }
  // A random block over the given effects; `subject` is empty or a crossing of factors.
  void AddRandomBlock(const std::vector<std::string>& effects, const std::string& subject,
                      MCEngine_850::MCEngineCovType type);
  // The residual block: subject and repeated factor may be empty.
  void SetResidual(const std::string& subject, const std::string& repeated, MCEngine_850::MCEngineCovType type);

  MCEngine_850::MCEngineInput Build();

  const std::vector<std::string>& GetColumnNames() const { return fvColumnNames; }
  // The fixed terms as written, in order.
  const std::vector<std::string>& GetTermNames() const { return fvFixedTerms; }
  int FindColumnName(const std::string& name) const;
  // Sorted levels of a factor.
  const std::vector<std::string>& GetLevels(const std::string& factor);

 private:
  struct Block {
    std::vector<std::string> fvEffects;
    std::string fSubject;
    MCEngine_850::MCEngineCovType fType;
  };
  // Columns of one term for every record (row-major, nRecords x nColumns) and their names.
  int TermColumns(const std::string& term, std::vector<double>& values, std::vector<std::string>& names);
  std::vector<int> Codes(const std::string& crossing);
  int VariableId(const std::string& name);

  const MCEngineTestCsv& fCsv;
  std::set<std::string> fFactors;
  std::map<std::string, std::vector<std::string>> fLevels;
  std::map<std::string, int> fIds;
  std::string fResponse;
  std::vector<std::string> fvFixedTerms;
  std::vector<Block> fvBlocks;
  std::string fResSubject;
  std::string fResRepeated;
  MCEngine_850::MCEngineCovType fResType = MCEngine_850::MCEngineCovType::ID;
  std::vector<std::string> fvColumnNames;
};
