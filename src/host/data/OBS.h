#pragma once

// One cell of case data: a number, or eight characters of a string. A string
// value of width w occupies (w + 7) / 8 consecutive cells; its characters run
// on from one cell into the next, blank padded, with no terminator.
union OBS {
  double fNum;
  char fStr[8];
};

static_assert(sizeof(OBS) == 8, "a data cell is one 8-byte word");

inline int ObsWordsForWidth(int width) { return (width + 7) / 8; }
