#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/data/ZORV_Format.h"

// What a dictionary file says about one variable. Every part is optional;
// the flags tell which were given.
struct DictionaryEntry {
  // A value as the dictionary wrote it: a JSON number, or a text.
  struct Value {
    bool fbNumber = false;
    double fNumber = 0.0;
    std::string fText;
  };

  enum { TYPE_NOT_GIVEN = -2, TYPE_STRING_FROM_DATA = -1, TYPE_NUMERIC = 0 };

  std::string fName;  // as written in the dictionary
  std::string fPath;  // where in the file, as a JSON pointer
  int fType = TYPE_NOT_GIVEN;  // or a string width
  bool fbHasLabel = false;
  std::string fLabel;
  int fLevel = 0;  // 0 when not given
  bool fbHasFormat = false;
  ZORV_Format fFormat;
  bool fbHasWriteFormat = false;
  ZORV_Format fWriteFormat;
  std::vector<std::pair<std::string, std::string>> fvValueLabels;  // value as text, label
  std::vector<Value> fvMissingValues;
  bool fbHasMissingRange = false;
  double fMissingLow = 0.0;
  double fMissingHigh = 0.0;
};
