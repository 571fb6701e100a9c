#include "numeric/xml/MCPMMLParser.h"

#include <stdexcept>

#include "numeric/xml/MCVarList.h"

namespace MCXML_850 {

MCPMMLParser::MCPMMLParser() : fbParsed(false) {}

MCPMMLParser::~MCPMMLParser() = default;

MCCommon_850::MCStatus MCPMMLParser::ParseToDOM(std::istream&) {
  throw std::logic_error("MCPMMLParser::ParseToDOM: not implemented yet");
}

MCCommon_850::MCStatus MCPMMLParser::FillVarList(MCVarList&, const std::vector<std::string>&, bool) const {
  throw std::logic_error("MCPMMLParser::FillVarList: not implemented yet");
}

}  // namespace MCXML_850
