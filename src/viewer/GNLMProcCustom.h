#pragma once

#include <string>
#include <vector>

#include "host/cf/CFProcCustom.h"

class GNLMJsonOutput;
class GNLMOutputStats;

// The plug-in through which the host hands a fitted model's documents back
// to the procedure and asks for the model viewer's output. It holds the one
// result model of the viewer side and drives, per model, the reader and
// then the tables; it decides nothing statistical.
class GNLMProcCustom : public CFProcCustom {
 public:
  GNLMProcCustom();
  GNLMProcCustom(BpProcedure* pProcedure, ProcedureDataSource* pDataSource);
  ~GNLMProcCustom() override;

  // Takes no interest in the command: true.
  bool ProcessSyntax(const CommandSpec* spec, const CommandDescriptor* descriptor) override;
  // Reads one model's documents into the result model and, when the read
  // succeeds, writes its output. False, with no output but the reader's
  // message, when a document cannot be read.
  bool ProcessOutputXML(const std::string& pmml, const CFStatXMLInfoBlock& block) override;
  // Exactly one model file, one StatXML block and no summary: anything
  // else is a broken invariant of the host.
  bool ProcessOutputXML(const std::vector<std::string>& vPMMLStr, const std::vector<CFStatXMLInfoBlock>& vStatXMLBlocks,
                        const std::string& summaryXMLStr) override;
  // Keeps the first document, when it is not empty, for the tables of
  // predicted random effects; a later document replaces an earlier one.
  void SetStatJSON(const std::vector<std::string>& vStatJSON) override;
  // Writes those tables, if a document was given. Always true.
  bool ProcessOutputJSON() override;

  const GNLMOutputStats* GetOutputStats() const { return fpGNLMOutputStats; }
  const GNLMJsonOutput* GetJsonOutput() const { return fpGNLMJsonOutput; }

 private:
  GNLMOutputStats* fpGNLMOutputStats;
  GNLMJsonOutput* fpGNLMJsonOutput;
};
