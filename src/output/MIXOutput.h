#pragma once

class BpProcedure;
class MIXComOutputData;
class MIXSplitResults;
class MIXValidSpecs;
class ProcedureDataSource;
namespace MCGLMM_850 {
class GLMMOutputStats;
}

// The tables of the run side: per split the information criteria, the
// fixed effects tables and the predictions, and the notes rows at the start
// and the end of the run. It is made before the factory, so that it can
// write notes whatever happens to the run.
class MIXOutput {
 public:
  MIXOutput(MIXValidSpecs* pValidSpecs, ProcedureDataSource& dataSource, BpProcedure* pProcedure,
            MIXSplitResults* pFactory);
  ~MIXOutput();
  MIXOutput(const MIXOutput&) = delete;
  MIXOutput& operator=(const MIXOutput&) = delete;

  // The run controller, as the current split's results.
  MIXSplitResults* GetFactory() const { return fpFactory; }
  void SetFactory(MIXSplitResults* pFactory) { fpFactory = pFactory; }
  // Null until the first DisplayOutput; then the last split's.
  MIXComOutputData* GetComOutputData() const { return fpComOutputData; }

  // Kept in the sequence of a split's tables; they write nothing.
  void DisplayModelDimension();
  void DisplayIterationHistory();

  void DisplayInfoCriteria();
  // The same table from the given statistics.
  void DisplayInfoCriteria(const MCGLMM_850::GLMMOutputStats& stats);
  // Rows of the notes table written before the first pass.
  void AddToNotesTable();
  // Rows of the notes table written at the end of the run.
  void CompleteNotesTable();
  // The predictions table, from the component's StatJSON.
  void DisplayEBLUPs();
  // All of the current split's tables.
  void DisplayOutput();

 private:
  MIXValidSpecs* fpValidSpecs;
  ProcedureDataSource* fpDataSource;
  BpProcedure* fpProcedure;
  MIXSplitResults* fpFactory;
  MIXComOutputData* fpComOutputData;
};
