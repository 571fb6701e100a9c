#include "numeric/gzl/GZLComponentDisplay.h"

#include "numeric/display/MCDisplay.h"

namespace GZLComponentDisplay_850 {

void DisplayC(std::ostream& os, const std::string& label, GZLConst_850::EffectAnalysisStat value) {
  MCDisplay_850::DisplayEnum(os, label, GZLConst_850::GetName(value), static_cast<long>(value));
}

void DisplayC(std::ostream& os, const std::string& label, GZLConst_850::CIType value) {
  MCDisplay_850::DisplayEnum(os, label, GZLConst_850::GetName(value), static_cast<long>(value));
}

void DisplayC(const std::string& label, GZLConst_850::EffectAnalysisStat value) {
  DisplayC(*MCDisplay_850::GetOutStream(), label, value);
}

void DisplayC(const std::string& label, GZLConst_850::CIType value) {
  DisplayC(*MCDisplay_850::GetOutStream(), label, value);
}

}  // namespace GZLComponentDisplay_850
