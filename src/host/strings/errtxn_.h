#pragma once

// The text of a host message by its number, from the string table
// "Host Messages" (keys are the numbers in decimal). The text is copied into
// `buffer`, cut to `length` - 1 bytes, blank padded to that many bytes and
// closed with a zero byte at buffer[length - 1]. A number without a text
// gives the number itself. The three trailing arguments are unused and are
// passed as zeros.
void errtxn_(const long& number, char* buffer, const long& length, const long& unused1, const long& unused2,
             const long& unused3);
