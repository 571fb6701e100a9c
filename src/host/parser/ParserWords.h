#pragma once

#include <cstdint>

// The parser hands a command over as an array of 8-byte words, read through
// two views of the same memory: as signed integers and as doubles. A
// position is the 1-based index of a word.
typedef std::int64_t INTEGER;
typedef double LR;

// The position in the word array of the index-th record (1-based, passed as
// a double and truncated) of the list whose head is `head`.
//
// A list is a directory in the word array: the word at the head holds the
// number of records n, and the n words after it hold the records' positions
// in order. A head below 1 is the empty list. An index outside 1..n gives 0,
// which is no position.
INTEGER tmcget_(INTEGER* words, LR* reals, const INTEGER& head, const LR& index);
