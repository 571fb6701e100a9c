#pragma once

#include <string>

#include "host/data/OBS.h"
#include "host/data/ZORV_Format.h"

// Writes a value in a display format into `out`: exactly format.fWidth
// characters, with no terminator (the caller puts one where it needs it).
// Numbers are right-aligned; the system-missing value (-DBL_MAX) is a
// single "." at the right. A number too wide for F, COMMA, DOLLAR, DOT or
// PCT loses its leading zero, then its thousands separators, then goes to
// E notation; what does not fit even so is written as asterisks, and so are
// infinities and NaN. A negative number that rounds to zero has no sign.
// String formats copy the value's characters: A as they stand, AHEX as two
// hexadecimal digits per character.
//
// Returns 0 on success; 1 for a null argument, 2 for a width of 0, 3 for a
// numeric width above 40, 4 for an unknown format type. On failure nothing
// is written.
int ToString(const OBS* value, const ZORV_Format& format, char* out);

// The same text as a string, without its padding blanks (for a string
// format, the blanks at the end only); the empty string when the value
// cannot be written in the format.
std::string ToString(const OBS* value, const ZORV_Format& format);
