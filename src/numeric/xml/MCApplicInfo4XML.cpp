#include "numeric/xml/MCApplicInfo4XML.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCXML_850 {

MCApplicInfo4XML::MCApplicInfo4XML() : fbIncludeTimestamp(false) {}

MCApplicInfo4XML::MCApplicInfo4XML(const std::string& name, const std::string& version,
                                   const std::string& copyright)
    : fbIncludeTimestamp(false), fApplicationName(name), fApplicationVersion(version), fCopyright(copyright) {}

void MCApplicInfo4XML::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCApplicInfo4XML::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayS(os, "Application:", fApplicationName);
  DisplayS(os, "Version:", fApplicationVersion);
  DisplayS(os, "Copyright:", fCopyright);
  DisplayB(os, "Timestamp:", fbIncludeTimestamp);
}

}  // namespace MCXML_850
