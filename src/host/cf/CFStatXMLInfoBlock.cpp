#include "host/cf/CFStatXMLInfoBlock.h"

CFStatXMLInfoBlock::CFStatXMLInfoBlock(const std::string& name, const std::string& statXML)
    : fName(name), fStatXML(statXML) {}
