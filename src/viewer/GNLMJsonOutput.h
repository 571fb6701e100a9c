#pragma once

#include <string>

class BpProcedure;
class JNIJSONObject;
class ProcedureDataSource;

// The viewer side's part of a StatJSON document: the tables of predicted
// random effects, which StatXML does not carry.
class GNLMJsonOutput {
 public:
  // Parses the document; one that does not parse gives no output.
  GNLMJsonOutput(BpProcedure* pProcedure, ProcedureDataSource* pDataSource, const std::string& json);
  ~GNLMJsonOutput();
  GNLMJsonOutput(const GNLMJsonOutput&) = delete;
  GNLMJsonOutput& operator=(const GNLMJsonOutput&) = delete;

  void DisplayOutput();
  // The tables of predicted random effects. They are shown by the run side
  // in this version, so that a table never appears twice; this writes
  // nothing yet.
  void DisplayEBLUPTable();
  // Tells the user that the tables stand apart from the model viewer.
  void MessageModelViewer();

  bool IsGood() const;

 private:
  BpProcedure* fpProcedure;
  ProcedureDataSource* fpDataSource;
  JNIJSONObject* fpJsonObject;
};
