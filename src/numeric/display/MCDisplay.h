#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "numeric/math/MCConst.h"

// Debug text of the engine: each operation writes one line, a label followed
// by a blank and the value. Every operation exists twice: on the current
// stream (standard output until SetOutStream redirects it) and on an explicit
// stream. Doubles print with 15 significant digits and the system-missing
// value prints as "missing".
namespace MCDisplay_850 {

std::ostream* GetOutStream();
void SetOutStream(std::ostream& os);

// The text of a value as the Display operations write it.
std::string FormatDouble(double value);
std::string FormatDoubleFixed(double value, int decimals);

void DisplayI(std::ostream& os, const std::string& label, long value);
void DisplayD(std::ostream& os, const std::string& label, double value);
// A double with a fixed number of decimals (0 to 17).
void DisplayDF(std::ostream& os, const std::string& label, double value, int decimals);
void DisplayB(std::ostream& os, const std::string& label, bool value);
void DisplayS(std::ostream& os, const std::string& label, const std::string& value);
// The values follow the label one blank apart; an empty list shows "(none)".
void DisplayIV(std::ostream& os, const std::string& label, const std::vector<int>& values);
void DisplayDV(std::ostream& os, const std::string& label, const std::vector<double>& values);
// A line of text with no value.
void DisplayText(std::ostream& os, const std::string& text);
// An enumerator: its name, then its number in parentheses, as "VC (8)".
void DisplayEnum(std::ostream& os, const std::string& label, const char* name, long value);

void DisplayI(const std::string& label, long value);
void DisplayD(const std::string& label, double value);
void DisplayDF(const std::string& label, double value, int decimals);
void DisplayB(const std::string& label, bool value);
void DisplayS(const std::string& label, const std::string& value);
void DisplayIV(const std::string& label, const std::vector<int>& values);
void DisplayDV(const std::string& label, const std::vector<double>& values);
void DisplayText(const std::string& text);

// One overload per enumeration of MCConst, on an explicit and on the current
// stream.
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCCategOrder value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCConvType value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCOffsetType value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCHessianCompMethod value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCEffectAnalysisType value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCCovbType value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCPAdjustMethod value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCContrastType value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCReferenceType value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCEmmScaleType value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCVarRole value);
void DisplayC(std::ostream& os, const std::string& label, MCMath_850::MCConst::MCMeasureLevel value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCCategOrder value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCConvType value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCOffsetType value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCHessianCompMethod value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCEffectAnalysisType value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCCovbType value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCPAdjustMethod value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCContrastType value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCReferenceType value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCEmmScaleType value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCVarRole value);
void DisplayC(const std::string& label, MCMath_850::MCConst::MCMeasureLevel value);

}  // namespace MCDisplay_850
