#pragma once

#include <string>

#include "host/output/BP_Character.h"

// The most characters one call may send.
const long kBP_ToFrontMaxLength = 4096;

// Sends text to the front end: into the current procedure's output (the
// host document when there is none), as a front-end text item. `newLine` 1
// starts a line with the text; 0 continues the last line of the item that
// ends the output, or starts one when that item is not front-end text.
// More than 4096 characters in one call is a broken invariant.
void BP_ToFront(const long& newLine, const BP_Character& text);

// Sends a text of any length as one new line, in pieces of at most 4096
// characters, never cutting inside a UTF-8 character.
void BP_ToFrontText(const std::string& text);
