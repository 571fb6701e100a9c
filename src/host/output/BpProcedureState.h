#pragma once

#include <string>

#include "host/output/BpHeadingState.h"
#include "host/output/BpNotesTable.h"
#include "host/strings/FacSTDictionary.h"

class ZORV_DataSource;

// The body of a procedure handle. Procedures whose bodies are alive form a
// stack: the most recently made one is the current procedure, to which
// messages, notes and front-end text go.
class BpProcedureState : public BpHeadingState {
 public:
  BpProcedureState(OmHeading* pHeading, const std::string& title, const std::string& stringTable,
                   const std::string& directory);
  ~BpProcedureState() override;

  const std::string& GetTitle() const { return fTitle; }
  const std::string& GetStringTable() const { return fStringTable; }
  const FacSTDictionary& GetDictionary() const { return fDictionary; }
  BpNotesTable& GetNotes() { return fNotes; }
  ZORV_DataSource* GetDataSource() const { return fpDataSource; }
  void SetDataSource(ZORV_DataSource* pDataSource) { fpDataSource = pDataSource; }

  // Null when no procedure is alive.
  static BpProcedureState* Current();

 private:
  std::string fTitle;
  std::string fStringTable;
  FacSTDictionary fDictionary;
  BpNotesTable fNotes;
  ZORV_DataSource* fpDataSource = nullptr;
};
