#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "base/MIXCommandLayout.h"
#include "host/data/ZORV_Dataset.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/parser/ParserMemory.h"
#include "output/MIXOutput.h"
#include "run/MIXFactory.h"
#include "specs/MIXValidSpecs.h"

namespace output_test {

namespace L = MIXCommandLayout;

// A random block of the command: its terms (rows over the factors, then
// the covariates; all zero for the intercept) and its subjects.
struct RandomBlock {
  std::vector<std::vector<INTEGER>> fvTerms;
  std::vector<std::string> fvSubjects;
  bool fbPredict = false;
};

// A dataset from the examples, a GLMIXFIT command on it written into the
// parser's memory, and the run's objects. Run() goes through the passes of
// a whole run as the driver does and stops before the output pass, so that
// a test can write the tables itself with the fit's objects alive.
class OutputFixture : public ::testing::Test {
 protected:
  OutputFixture();
  ~OutputFixture() override;

  // Loads examples/data/<name>.csv with its dictionary.
  void Load(const std::string& name);
  int Column(const std::string& name) const;

  // The command. Factors and covariates are named; a term row has one word
  // per factor (its nesting level, 1 when not nested) then per covariate
  // (its multiplicity).
  void Command(const std::string& target, const std::vector<std::string>& factors,
               const std::vector<std::string>& covariates, const std::vector<std::vector<INTEGER>>& fixedTerms,
               const std::vector<RandomBlock>& blocks, bool intercept = true);
  template <L::Kind K>
  void SetOption(L::Slot<K> slot, INTEGER value) { fMemory.SetNumericInteger(slot, value); }

  // The whole run through the driver.
  void RunDriver();
  // The command read and completed, the factory, the data pass, the
  // component pass and the aggregation, then
  // the factory placed on the first split of the output pass. False when a
  // step failed.
  bool Run();
  // To the next split of the output pass; false at the end.
  bool NextSplit();

  // The document.
  std::vector<const OmTable*> Tables() const;
  std::vector<const OmTable*> TablesOf(const std::string& subType) const;
  std::vector<std::string> Headings() const;
  std::vector<std::string> Messages() const;
  static std::vector<std::string> LeafLabels(const OmTable& table, int dimension);
  static int Leaf(const OmTable& table, int dimension, const std::string& label);
  // The cell of a two-dimensional table by its row and column labels.
  static const OmCell* Cell(const OmTable& table, const std::string& row, const std::string& column);
  // The footnotes of that cell, as texts.
  static std::vector<std::string> CellNotes(const OmTable& table, const std::string& row, const std::string& column);
  const OmTable* NotesTable() const;

  ZORV_Dataset fData;
  ParserMemory fMemory;
  OmDocument fDocument;
  BpProcedure fProcedure;
  std::optional<MIXValidSpecs> fSpecs;
  std::optional<MIXOutput> fOutput;
  std::optional<MIXFactory> fFactory;
};

}  // namespace output_test
