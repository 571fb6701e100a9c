#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "numeric/common/MCStatus.h"

class SDOMXMLWrapper;

namespace MCXML_850 {

class MCVarList;

// Reads a model file written by the engine and gives back its variables:
// one per field of the data dictionary, in the dictionary's order, with the
// field's name, label, measurement level, string width, record position,
// categories (value and display text, in code order) and, from the mining
// schema, its role.
class MCPMMLParser {
 public:
  MCPMMLParser();
  virtual ~MCPMMLParser();
  MCPMMLParser(const MCPMMLParser&) = delete;
  MCPMMLParser& operator=(const MCPMMLParser&) = delete;

  // Parses the document on the stream and holds it. MC_MODEL_FILE_ERROR
  // when the text is not a well-formed document whose root is PMML with a
  // data dictionary; the parser then holds nothing.
  MCCommon_850::MCStatus ParseToDOM(std::istream& is);
  // Fills the list with the variables of the held document: those named, or
  // all when the names are empty; with targetsOnly, only targets. The list
  // is cleared first. MC_MODEL_FILE_ERROR when nothing is held or a field
  // cannot be read (no name, a number that is not one).
  MCCommon_850::MCStatus FillVarList(MCVarList& varList, const std::vector<std::string>& names,
                                     bool targetsOnly) const;

  bool IsParsed() const { return fbParsed; }

 private:
  std::unique_ptr<SDOMXMLWrapper> fpDocument;
  bool fbParsed;
};

}  // namespace MCXML_850
