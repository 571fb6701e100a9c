#pragma once

#include <iosfwd>
#include <string>

#include "numeric/gzl/GZLConst.h"

// Debug lines for the enumerations of the generalized linear settings, in
// the form of MCDisplay_850::DisplayC.
namespace GZLComponentDisplay_850 {

void DisplayC(std::ostream& os, const std::string& label, GZLConst_850::EffectAnalysisStat value);
void DisplayC(std::ostream& os, const std::string& label, GZLConst_850::CIType value);
void DisplayC(const std::string& label, GZLConst_850::EffectAnalysisStat value);
void DisplayC(const std::string& label, GZLConst_850::CIType value);

}  // namespace GZLComponentDisplay_850
