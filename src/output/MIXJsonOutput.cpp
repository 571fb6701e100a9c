#include "output/MIXJsonOutput.h"

#include <vector>

#include "host/adapter/ACAInputAdapter.h"
#include "host/data/OBS.h"
#include "host/data/ProcedureDataSource.h"
#include "host/files/PathFactory.h"
#include "host/json/JNIJSONObject.h"
#include "host/json/dataDictionary.h"
#include "host/json/jsonPivot.h"
#include "host/json/jsonTableList.h"
#include "host/output/BpError.h"
#include "host/output/BpHeading.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/strings/FacSTDictionary.h"
#include "output/MIXComOutputData.h"
#include "output/MIXSplitResults.h"

MIXJsonOutput::MIXJsonOutput(BpProcedure* pProcedure, ProcedureDataSource* pProcDS, MIXComOutputData* pComOutputData,
                             const std::string& text)
    : fpProcedure(pProcedure),
      fpProcDS(pProcDS),
      fpComOutputData(pComOutputData),
      fpInpAdapt(pComOutputData != nullptr && pComOutputData->GetFactory() != nullptr
                     ? pComOutputData->GetFactory()->GetInputAdapter()
                     : nullptr),
      fpJSON(new JNIJSONObject(text.c_str())) {}

MIXJsonOutput::~MIXJsonOutput() {
  delete fpJSON;
  fpJSON = nullptr;
}

void MIXJsonOutput::DisplayOutput() { DisplayEBLUPTable(); }

void MIXJsonOutput::DisplayEBLUPTable() {
  // Shown split by split, each split's tables go under a heading of their
  // own and take the split's name as their title; otherwise the table
  // builder shows the split itself.
  bool bSplitHeading = false;
  std::string splitName;
  if (fpProcDS != nullptr && fpProcDS->GetNSplitVars() != 0 && !fpProcDS->SplitsInOneTable()) {
    bSplitHeading = true;
    if (fpComOutputData != nullptr) {
      static const std::vector<OBS*> kNoValues;
      splitName = fpComOutputData->GetSplitName(fpInpAdapt != nullptr ? fpInpAdapt->GetSplitValues() : kNoValues,
                                                true);
    }
  }

  if (fpJSON == nullptr || fpProcedure == nullptr) return;
  const jsonTableList tables(*fpJSON);
  if (!tables.isFound()) return;

  BpHeading heading = fpProcedure->Heading(BpString("Random Effects Parameters", true));

  const std::string subType = "Empirical Best Linear Unbiased Predictions";
  FacSTDictionary dictionary(PathFactory::getPathInstance(PathFactory::PRESENTATION)->GetStringTablePath());
  dictionary.SetProcedure("Mixed");
  const std::string title = dictionary.LookUp(subType);

  const dataDictionary dataDict;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    jsonPivot pivot(*fpJSON, tables.getTable(i), fpProcDS, dataDict);
    pivot.translateTableStrings(true);
    pivot.supportSplits(!bSplitHeading);
    if (!bSplitHeading) {
      pivot.createPivotTable(&heading, tables.getTitle(title, i), false, subType);
    } else {
      BpHeading child = heading.Heading(BpString(tables.getTitle(title, i), false));
      pivot.createPivotTable(&child, splitName, false, subType);
    }
  }
}

void MIXJsonOutput::MessageModelViewer() {
  BpError(BpString("EBLUP table separately from the Model Viewer", true), 2, 2);
}
