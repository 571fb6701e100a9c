#pragma once

class BpProcedure;
class MIXComOutputData;
class MIXValidSpecs;
class ProcedureDataSource;

// The table of a generalized model's target (our extension): the target,
// its distribution and link, its trials and how the model is fitted, with a
// note when the distribution fixes the scale. A linear model has no such
// table.
class MIXTargetOutput {
 public:
  MIXTargetOutput(const MIXValidSpecs& specs, const ProcedureDataSource& data, BpProcedure& procedure,
                  const MIXComOutputData* pComOutputData);

  void DisplayTargetModel() const;

 private:
  const MIXValidSpecs& fSpecs;
  const ProcedureDataSource& fData;
  BpProcedure& fProcedure;
  const MIXComOutputData* fpComOutputData;
};
