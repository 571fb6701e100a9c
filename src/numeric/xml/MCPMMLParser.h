#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "numeric/common/MCStatus.h"

namespace MCXML_850 {

class MCVarList;

// Reads a model file written by the engine and gives back its variables.
class MCPMMLParser {
 public:
  MCPMMLParser();
  virtual ~MCPMMLParser();

  // Parses the document on the stream and holds it.
  MCCommon_850::MCStatus ParseToDOM(std::istream& is);
  // Fills the list with the variables of the held document: those named, or
  // all when the names are empty; with targetsOnly, only targets.
  MCCommon_850::MCStatus FillVarList(MCVarList& varList, const std::vector<std::string>& names,
                                     bool targetsOnly) const;

  bool IsParsed() const { return fbParsed; }

 private:
  bool fbParsed;
};

}  // namespace MCXML_850
