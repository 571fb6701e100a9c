#pragma once

#include <string>
#include <vector>

#include "host/cf/CFStatXMLInfoBlock.h"

class BpProcedure;
class CFMetaData;
class CommandDescriptor;
class CommandSpec;
class ProcedureDataSource;

// The base of a procedure's plug-in object. After a procedure has run, the
// host creates the plug-in through the module's factory, gives it the
// output procedure, the data source and the metadata dictionary, hands it
// the result documents through the operations below, and destroys it
// through the virtual destructor. The base owns none of the three objects.
class CFProcCustom {
 public:
  CFProcCustom() = default;
  CFProcCustom(BpProcedure* procedure, ProcedureDataSource* dataSource);
  virtual ~CFProcCustom();
  CFProcCustom(const CFProcCustom&) = delete;
  CFProcCustom& operator=(const CFProcCustom&) = delete;

  // The operations the host calls, in this order of declaration.
  virtual bool ProcessSyntax(const CommandSpec* spec, const CommandDescriptor* descriptor) = 0;
  // One model: its PMML text and its StatXML block.
  virtual bool ProcessOutputXML(const std::string& pmml, const CFStatXMLInfoBlock& block) = 0;
  // All models of the run, and the text of a summary document.
  virtual bool ProcessOutputXML(const std::vector<std::string>& vPMMLStr,
                                const std::vector<CFStatXMLInfoBlock>& vStatXMLBlocks,
                                const std::string& summaryXMLStr) = 0;
  virtual void SetStatJSON(const std::vector<std::string>& vStatJSON) = 0;
  virtual bool ProcessOutputJSON() = 0;

  BpProcedure* GetProcedure() const { return fpProcedure; }
  void SetProcedure(BpProcedure* procedure) { fpProcedure = procedure; }
  ProcedureDataSource* GetDataSource() const { return fpDataSource; }
  void SetDataSource(ProcedureDataSource* dataSource) { fpDataSource = dataSource; }
  CFMetaData* GetMetaData() const { return fpMetaData; }
  void SetMetaData(CFMetaData* metaData) { fpMetaData = metaData; }

 protected:
  BpProcedure* fpProcedure = nullptr;
  ProcedureDataSource* fpDataSource = nullptr;
  CFMetaData* fpMetaData = nullptr;
};
