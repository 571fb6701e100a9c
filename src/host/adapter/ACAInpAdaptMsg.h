#pragma once

class ProcedureDataSource;

// The data adapter's standard messages about missing data, in the host's
// own words.
class ACAInpAdaptMsg {
 public:
  explicit ACAInpAdaptMsg(ProcedureDataSource& dataSource);

  // No case of the file is valid for the analysis: an error, which ends the
  // command.
  void NoValidCases() const;
  // No case of the current split is valid: a warning; the other splits go on.
  void NoValidCasesSplit() const;
  // The selection of the active dataset is empty: a warning.
  void NoValidCasesForSelect() const;

  ProcedureDataSource& GetDataSource() const { return *fpDataSource; }

 private:
  ProcedureDataSource* fpDataSource;
};
