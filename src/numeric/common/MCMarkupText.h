#pragma once

#include <string>

namespace MCCommon_850 {

// The one escaping of text for markup: the engine's XML documents and the
// host's HTML report. The result is always well formed: each malformed UTF-8
// byte becomes U+FFFD, and a control character the markup cannot hold
// becomes a blank.
class MCMarkupText {
 public:
  enum Context {
    XML_CONTENT,    // character content of an XML element
    XML_ATTRIBUTE,  // an XML attribute value in double quotes
    HTML            // text, or an attribute value in quotes, of an HTML page
  };

  // XML keeps tabs and line ends (as character references in attributes,
  // where a reader would otherwise fold them into blanks) and replaces the
  // two non-characters U+FFFE and U+FFFF. HTML escapes both quotes, keeps
  // tabs and line feeds as they are, drops carriage returns and blanks DEL.
  static std::string Escape(const std::string& text, Context context);
};

}  // namespace MCCommon_850
