#pragma once

#include <string>

class BpProcedure;
class JNIJSONObject;
class ProcedureDataSource;

// The viewer side's part of a StatJSON document: the tables of predicted
// random effects (EBLUPs), which StatXML does not carry. The document
// describes each table fully; the host's table builder lays it out.
class GNLMJsonOutput {
 public:
  // Parses the document; one that does not parse gives no output.
  GNLMJsonOutput(BpProcedure* pProcedure, ProcedureDataSource* pDataSource, const std::string& json);
  ~GNLMJsonOutput();
  GNLMJsonOutput(const GNLMJsonOutput&) = delete;
  GNLMJsonOutput& operator=(const GNLMJsonOutput&) = delete;

  void DisplayOutput();
  // Writes, under the heading "Random Effects Parameters", each table of the
  // document; a document without a place for tables writes nothing and
  // says nothing.
  void DisplayEBLUPTable();
  // Tells the user that the tables stand apart from the model viewer.
  void MessageModelViewer();

  bool IsGood() const;

 private:
  BpProcedure* fpProcedure;
  ProcedureDataSource* fpDataSource;
  JNIJSONObject* fpJsonObject;
};
