#pragma once

#include <string>

// One StatXML document as the host hands it to a plug-in, with the name the
// host registered it under. The document text stays the last member.
struct CFStatXMLInfoBlock {
  CFStatXMLInfoBlock() = default;
  CFStatXMLInfoBlock(const std::string& name, const std::string& statXML);

  std::string fName;
  std::string fStatXML;
};
