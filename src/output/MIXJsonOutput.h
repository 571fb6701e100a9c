#pragma once

#include <string>

class ACAInputAdapter;
class BpProcedure;
class JNIJSONObject;
class MIXComOutputData;
class ProcedureDataSource;

// The tables the run side takes from the component's StatJSON document
// instead of its own result objects: the empirical best linear unbiased
// predictions of the random effects. The document describes each table
// fully; the host's table builder lays it out.
class MIXJsonOutput {
 public:
  // Parses the text at once. The procedure, the data source and the common
  // output data are borrowed; the input adapter is the factory's, reached
  // through the common output data.
  MIXJsonOutput(BpProcedure* pProcedure, ProcedureDataSource* pProcDS, MIXComOutputData* pComOutputData,
                const std::string& text);
  ~MIXJsonOutput();
  MIXJsonOutput(const MIXJsonOutput&) = delete;
  MIXJsonOutput& operator=(const MIXJsonOutput&) = delete;

  BpProcedure* GetProcedure() const { return fpProcedure; }
  ProcedureDataSource* GetProcDS() const { return fpProcDS; }
  MIXComOutputData* GetComOutputData() const { return fpComOutputData; }
  // The adapter whose current split names the tables of a split file shown
  // split by split; null leaves the split's values out of the name.
  ACAInputAdapter* GetInpAdapt() const { return fpInpAdapt; }
  void SetInpAdapt(ACAInputAdapter* pInpAdapt) { fpInpAdapt = pInpAdapt; }
  const JNIJSONObject* GetJSON() const { return fpJSON; }

  void DisplayOutput();
  // Writes, under a heading of their own, the tables of the document's
  // "glmm.RandomEffectsParameters.tables", else of its "tables", else the
  // document itself as one table. A document that did not parse writes
  // nothing and says nothing.
  void DisplayEBLUPTable();
  // Tells the user that the predictions stand apart from the model viewer.
  void MessageModelViewer();

 private:
  BpProcedure* fpProcedure;
  ProcedureDataSource* fpProcDS;
  MIXComOutputData* fpComOutputData;
  ACAInputAdapter* fpInpAdapt;
  JNIJSONObject* fpJSON;
};
