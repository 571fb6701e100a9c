#pragma once

#include <cstddef>
#include <string>

#include "host/data/ZORV_Format.h"
#include "host/viz/ChartString.h"

class ZORV_Variable;

// Texts and numbers as the charts write them, and the edits the charts make
// to a template's text.
namespace GNLMChartText {

// Escapes a text of the host's code page for chart text: line feeds, form
// feeds and carriage returns (with a line feed behind one) become "<BR/>",
// the line-drawing codes 14 to 24 their characters' references, and
// " & < > their references. Characters of more than one byte stay as they
// are.
void escapeChartText(std::string& text);
// The variable's label, or its name without one, escaped.
ChartString variableCaption(const ZORV_Variable& variable);
// The one number a text holds, blanks before it allowed; `ok` is false when
// the text is not a number followed by nothing. The value is what the read
// gave: 0 for a text that is no number.
double parseNumber(const std::string& text, bool& ok);
// A number with six significant digits and no trailing zeros (2, 5.33333,
// 1e+06).
std::string formatNumber(double value);
// A number in a display format, without the format's padding.
std::string formatValue(double value, const ZORV_Format& format);

// Replaces the first `from` at or behind `start`; the position of the
// match, or npos when there is none.
std::size_t replaceFirst(std::string& text, const std::string& from, const std::string& to, std::size_t start = 0);
// Replaces every `from`.
void replaceAll(std::string& text, const std::string& from, const std::string& to);
// Erases from the first `open` at or behind `start` through the end of the
// first `close` behind it; false, and nothing erased, when either is
// missing.
bool eraseThrough(std::string& text, const std::string& open, const std::string& close, std::size_t start = 0);
// When the text holds a backslash before a colon, removes every backslash.
void removeEscapes(std::string& text);

}  // namespace GNLMChartText
