#include "viewer/GNLMJsonOutput.h"

#include "host/json/JNIJSONObject.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"

GNLMJsonOutput::GNLMJsonOutput(BpProcedure* pProcedure, ProcedureDataSource* pDataSource, const std::string& json)
    : fpProcedure(pProcedure), fpDataSource(pDataSource), fpJsonObject(new JNIJSONObject(json.c_str())) {}

GNLMJsonOutput::~GNLMJsonOutput() { delete fpJsonObject; }

void GNLMJsonOutput::DisplayOutput() { DisplayEBLUPTable(); }

void GNLMJsonOutput::DisplayEBLUPTable() {}

void GNLMJsonOutput::MessageModelViewer() {
  BpError(BpString("EBLUP table separately from the Model Viewer", true), BpErrorShowOutput, BpErrorLevelWarning);
}

bool GNLMJsonOutput::IsGood() const { return fpJsonObject != nullptr && fpJsonObject->isGood(); }
