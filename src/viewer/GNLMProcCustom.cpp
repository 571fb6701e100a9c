#include "viewer/GNLMProcCustom.h"

#include "base/MIXAssert.h"
#include "host/data/ProcedureDataSource.h"
#include "results/GNLMOutputStats.h"
#include "results/GNLMParseOutXML.h"
#include "viewer/GNLMJsonOutput.h"
#include "viewer/GNLMOutput.h"

GNLMProcCustom::GNLMProcCustom() : fpGNLMOutputStats(new GNLMOutputStats), fpGNLMJsonOutput(nullptr) {}

GNLMProcCustom::GNLMProcCustom(BpProcedure* pProcedure, ProcedureDataSource* pDataSource)
    : CFProcCustom(pProcedure, pDataSource), fpGNLMOutputStats(new GNLMOutputStats), fpGNLMJsonOutput(nullptr) {}

GNLMProcCustom::~GNLMProcCustom() {
  delete fpGNLMOutputStats;
  delete fpGNLMJsonOutput;
}

bool GNLMProcCustom::ProcessSyntax(const CommandSpec*, const CommandDescriptor*) { return true; }

bool GNLMProcCustom::ProcessOutputXML(const std::vector<std::string>& vPMMLStr,
                                      const std::vector<CFStatXMLInfoBlock>& vStatXMLBlocks,
                                      const std::string& summaryXMLStr) {
  MIX_ASSERT(vPMMLStr.size() == 1, "vPMMLStr.size() == 1");
  MIX_ASSERT(vStatXMLBlocks.size() == 1, "vStatXMLBlocks.size() == 1");
  MIX_ASSERT(summaryXMLStr.empty(), "summaryXMLStr.empty()");
  return ProcessOutputXML(vPMMLStr[0], vStatXMLBlocks[0]);
}

bool GNLMProcCustom::ProcessOutputXML(const std::string& pmml, const CFStatXMLInfoBlock& block) {
  MIX_ASSERT(fpGNLMOutputStats != 0, "fpGNLMOutputStats != 0");
  fpGNLMOutputStats->SetDictMetadata(fpMetaData);
  GNLMParseOutXML reader(fpProcedure, fpDataSource, fpGNLMOutputStats, pmml, block.fStatXML);
  const bool read = reader.ParseXML();
  if (read) {
    GNLMOutput output(fpProcedure, fpDataSource, fpGNLMOutputStats);
    output.AddJsonOutput(fpGNLMJsonOutput);
    output.DisplayOutput();
  }
  return read;
}

void GNLMProcCustom::SetStatJSON(const std::vector<std::string>& vStatJSON) {
  if (vStatJSON.empty() || vStatJSON[0].empty()) return;
  delete fpGNLMJsonOutput;
  fpGNLMJsonOutput = new GNLMJsonOutput(fpProcedure, fpDataSource, vStatJSON[0]);
}

bool GNLMProcCustom::ProcessOutputJSON() {
  if (fpGNLMJsonOutput == nullptr) return true;
  fpGNLMJsonOutput->DisplayOutput();
  fpGNLMJsonOutput->MessageModelViewer();
  return true;
}
