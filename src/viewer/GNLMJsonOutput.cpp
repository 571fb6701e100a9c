#include "viewer/GNLMJsonOutput.h"

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

GNLMJsonOutput::GNLMJsonOutput(BpProcedure* pProcedure, ProcedureDataSource* pDataSource, const std::string& json)
    : fpProcedure(pProcedure), fpDataSource(pDataSource), fpJsonObject(new JNIJSONObject(json.c_str())) {}

GNLMJsonOutput::~GNLMJsonOutput() { delete fpJsonObject; }

void GNLMJsonOutput::DisplayOutput() { DisplayEBLUPTable(); }

void GNLMJsonOutput::DisplayEBLUPTable() {
  if (fpJsonObject == nullptr || fpProcedure == nullptr) return;
  const jsonTableList tables(*fpJsonObject);
  if (!tables.isFound()) return;

  BpHeading heading = fpProcedure->Heading(BpString("Random Effects Parameters", true));
  const std::string subType = "Empirical Best Linear Unbiased Predictions";
  FacSTDictionary dictionary(PathFactory::getPathInstance(PathFactory::PRESENTATION)->GetStringTablePath());
  dictionary.SetProcedure("Generalized Linear Mixed Models");
  const std::string title = dictionary.LookUp(subType);

  const dataDictionary dataDict;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    jsonPivot pivot(*fpJsonObject, tables.getTable(i), fpDataSource, dataDict);
    pivot.translateTableStrings(true);
    pivot.createPivotTable(&heading, tables.getTitle(title, i), false, subType);
  }
}

void GNLMJsonOutput::MessageModelViewer() {
  BpError(BpString("EBLUP table separately from the Model Viewer", true), BpErrorShowOutput, BpErrorLevelWarning);
}

bool GNLMJsonOutput::IsGood() const { return fpJsonObject != nullptr && fpJsonObject->isGood(); }
