#pragma once

#include <string>

// Trims blanks (spaces and tabs) at both ends of a zero-terminated text, in
// place: a terminator is written after the last non-blank character, and the
// result points at the first one. Multi-byte characters are safe, since no
// byte of one is a blank. A null text gives null.
char* ZORVMBstrtrim_A(char* text);

// An upper-case copy of a text. Only the ASCII letters change, so the bytes
// of multi-byte characters pass unchanged. A null text gives an empty copy.
std::string GetUpperString(const char* text);
std::string GetUpperString(const std::string& text);
