#pragma once

#include <string>

// Conversions between numbers and their text as documents and the command
// carry them. Every reader accepts blanks around the number and nothing
// else; on a text it cannot read it returns 0 and, when asked, clears *pOk.

// A decimal integer with an optional sign, within the range of int.
int String2Integer(const char* text, bool* pOk = nullptr);
int String2Integer(const std::string& text, bool* pOk = nullptr);

// A decimal floating-point number ("1", "-2.5", ".5", "1e-8", "inf", "nan"),
// read the same way whatever the process locale says.
double String2Double(const char* text, bool* pOk = nullptr);
double String2Double(const std::string& text, bool* pOk = nullptr);

// A Roman numeral from 1 to 3999 in its usual form ("I", "III", "IV", "XLII"),
// in either case.
int Roman2Integer(const char* text, bool* pOk = nullptr);
int Roman2Integer(const std::string& text, bool* pOk = nullptr);

// The decimal text of a number: "-12".
std::string Integer2String(int value);
std::string Integer2String(long value);
