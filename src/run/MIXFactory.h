#pragma once

#include <string>
#include <vector>

#include "host/adapter/ACAInpAdaptMsg.h"
#include "host/strings/ParserMessage.h"
#include "numeric/common/MCStatus.h"
#include "output/MIXSplitResults.h"

class ACAInputAdapter;
class ACAProcDataSourceIter;
class ACAVarValidSpecs;
class BpProcedure;
class MIXParameterAggregator;
class MIXValidSpecs;
class ProcedureDataSource;
class ZORV_PMMLPooling;
namespace MCGLMM_850 {
class GLMMAlgorithm;
class GLMMOutputStats;
class GLMMSettings;
}  // namespace MCGLMM_850
namespace MCXML_850 {
class MCVarList;
}

// The run controller of one GLMIXFIT command, held by MixDriver for the
// length of the run.
//
// It owns the input adapter and the record iterator on the data source, and
// per split of the file one settings object, one variable list and one
// algorithm; an entry is null where a split failed, so that every per-split
// vector stays indexed by the split. It also owns the parameter aggregators
// (one for the fixed part, one per random block), the pool of saved model
// files, and the status of the current split.
//
// Each pass of MixDriver over the splits is a method here: StartNewSplit
// moves to the next split, ProcedureDataPass walks its records,
// CompleteMetaData builds its settings, RunGLMMComponent fits it, and
// PrepareComponentRun goes back to before the first split for the next pass.
// Passes answer with a boolean; a statistical failure travels in the status
// and becomes a message through DisplayMessage. The tables read the current
// split through its MIXSplitResults face.
class MIXFactory final : public MIXSplitResults {
 public:
  // Opens the adapter and its record iterator on the data source and looks
  // for valid cases; with none, says so and, on an unsplit file, leaves the
  // status at "no valid cases". `procedure` may be null: the file is then
  // treated as unsplit.
  MIXFactory(MIXValidSpecs* specs, ProcedureDataSource& dataSource, BpProcedure* procedure);
  ~MIXFactory();

  MIXFactory(const MIXFactory&) = delete;
  MIXFactory& operator=(const MIXFactory&) = delete;

  // ---- owned objects ----
  MIXParameterAggregator* GetFixParamAggr() const override { return fpFixParamAggr; }
  const std::vector<MIXParameterAggregator*>* GetRandomParamAggrs() const { return &fvpRandParamAggrs; }
  ACAInputAdapter* GetInputAdapter() const override { return fpInpAdapt; }
  ACAProcDataSourceIter* GetRecordIterator() const { return fpRecIter; }
  ZORV_PMMLPooling* GetPMMLPooling() const { return fpPMMLPooling; }
  MIXValidSpecs* GetSpecs() const { return fpSpecs; }
  ProcedureDataSource* GetDataSource() const { return fpDataSource; }
  BpProcedure* GetProcedure() const { return fpProcedure; }

  // ---- the current split ----
  // The current split's entries; null for a failed split, and where the
  // current split has no entry yet.
  MCGLMM_850::GLMMAlgorithm* GetGLMMAlgorithm() const override;
  MCGLMM_850::GLMMSettings* GetGLMMSettings() const override;
  int GetSplitIndex() const { return fSplitIndex; }
  MCCommon_850::MCStatus GetStatus() const override { return fStatus; }
  void SetStatus(const MCCommon_850::MCStatus& status) { fStatus = status; }
  // The statistics of the current split's fit. A broken invariant when the
  // status is an error or the split has no algorithm.
  const MCGLMM_850::GLMMOutputStats* GetOutputStats() const override;
  // Set by DisplayMessage for the codes that let the component go on;
  // cleared by StartNewSplit.
  bool GetProcContinues() const { return fProcContinues; }

  // ---- per split, as the data pass met them ----
  // The number of splits met is the size of these vectors.
  const std::vector<MCGLMM_850::GLMMSettings*>& GetCompSettingsList() const { return fvpCompSettings; }
  const std::vector<MCXML_850::MCVarList*>& GetVarLists() const { return fvpVarLists; }
  const std::vector<MCGLMM_850::GLMMAlgorithm*>& GetAlgorithms() const { return fvpAlgorithms; }
  const std::vector<int>& GetNRecordsList() const { return fvNRecords; }
  // The record variables all splits are sorted by; empty until the first
  // split that has any.
  const std::vector<int>& GetSortVars() const { return fSortVars; }
  void SetSortVars(const std::vector<int>& sortVars) { fSortVars = sortVars; }
  // Columns of the variables made by PrepareScoringPass.
  const std::vector<unsigned int>& GetNewVarIndices() const { return fvNewVarIndices; }

  // ---- named hooks, deliberately empty ----
  void ClearSplitHistory();
  void DisplayAdapterWarnings() const;
  void CheckForWarningToAdd(std::vector<MCCommon_850::MCStatus>& warnings) const;

  // ---- passes ----
  // Moves to the next split: through the record iterator when `newSplit`,
  // else through the adapter within the splits met already. False when the
  // file is exhausted. A split file starts each split with an OK status.
  bool StartNewSplit(bool newSplit);
  // Back to before the first split, for another pass: through the record
  // iterator when `rewind`, else through the adapter. False when the status
  // is an error.
  bool PrepareComponentRun(bool rewind);
  // Walks all records of the current split, polling the stop query once per
  // record. `firstPass` also says when the split has no valid case. False
  // when no valid record came.
  bool ProcedureDataPass(bool firstPass);
  // Makes the aggregators and, when a model or parameter file is asked for,
  // the pool of model files. Always true.
  bool CreateParamAggregators();
  // Builds the common parameter list over all splits.
  bool AggregateParameters();
  // Closes the pool of model files. Always true.
  bool CompleteExtFileIO();
  // Builds the current split's settings and variable list and appends one
  // entry to each per-split vector.
  bool CompleteMetaData();
  // Fits the current split: builds its algorithm, sorts its records into a
  // data file, runs the component, says what it reported, saves the
  // documents and hands the estimates to the aggregators. The record
  // iterator is left at the end of the split on every path.
  bool RunGLMMComponent();

  // ---- messages ----
  // The user's text for a status: nothing for OK and for the silent codes;
  // an error on an unsplit file goes out at level 3 and turns the host
  // fatal, everything else at level 2. A split file gets the split form of
  // the text, with the split's variables and values.
  void DisplayMessage(const MCCommon_850::MCStatus& status);
  // The current algorithm's warnings, in order, then the line saying that
  // the procedure continues when one of them asked for it.
  void DisplayAllMessages();
  // Debug lines about the status.
  void DisplayStatus() const;

  // ---- documents and debug output ----
  // Writes the current split's model file, StatXML and StatJSON documents as
  // the specification asks and registers each with the host's repository.
  // A document the component fails to write is left short, with no message.
  void SavePMMLFile();
  // Debug dump of the current split's output statistics. Always true.
  bool DisplayOutput();

  // ---- scoring ----
  // Makes the saved variables and starts a writing pass. False when the
  // status is an error.
  bool PrepareScoringPass();
  // Scores the records of the current split into the saved variables.
  // False when no valid record came.
  bool ScoringDataPass();

  // Sends text to the front end: a new line, then the text up to its first
  // NUL in pieces of 4096 bytes, cut with no regard for lines or characters.
  static void SendTextToFront(const std::string& text);

  // The name of the debug file of sorted and encoded records, in the host's
  // writable folder.
  static const char* GetSortedRecordsFileName() { return "mixed_sorted_encoded_records.txt"; }

 private:
  // Skips what is left of a failed split and answers false.
  bool ComponentFailureTail();

  MIXValidSpecs* fpSpecs;
  ACAVarValidSpecs* fpVarSpecs;
  ProcedureDataSource* fpDataSource;
  BpProcedure* fpProcedure;
  ACAInputAdapter* fpInpAdapt;
  ACAInpAdaptMsg fInpAdaptMsg;
  std::vector<int> fSortVars;
  ParserMessage fParserMessage;
  ACAProcDataSourceIter* fpRecIter;
  int fSplitIndex;
  std::vector<MCGLMM_850::GLMMSettings*> fvpCompSettings;
  std::vector<MCXML_850::MCVarList*> fvpVarLists;
  std::vector<MCGLMM_850::GLMMAlgorithm*> fvpAlgorithms;
  std::vector<int> fvNRecords;
  bool fProcContinues;
  MIXParameterAggregator* fpFixParamAggr;
  std::vector<MIXParameterAggregator*> fvpRandParamAggrs;
  std::vector<unsigned int> fvNewVarIndices;
  ZORV_PMMLPooling* fpPMMLPooling;
  MCCommon_850::MCStatus fStatus;
};
