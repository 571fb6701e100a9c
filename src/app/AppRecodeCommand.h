#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/AppColumnValues.h"

class AppCommandReader;
class ZORV_Dataset;

// RECODE variable... (value... = value)... [INTO variable...] [/ ...]:
// values of variables replaced by rules, in place or into other variables.
//
// A rule's values are single values, ranges (low THRU high, with LOWEST and
// HIGHEST for open ends; numbers only), MISSING (the missing values) or
// ELSE (every other value that is not missing; only as the last rule). Its
// result is a value, MISSING, or COPY (the value as it is). The first rule
// that matches a case's value decides; a missing value is matched only by
// MISSING or by a single value that names it. A value no rule matches is
// left as it is; into a new variable it is missing. Every result is
// computed from the data as they were before the command.
class AppRecodeCommand {
 public:
  static void Run(AppCommandReader& reader, ZORV_Dataset* data);

 private:
  struct Source {
    enum Kind { VALUE, RANGE, MISSING, ELSE };
    Kind fKind = VALUE;
    double fLow = 0.0;  // VALUE (numbers) and RANGE
    double fHigh = 0.0;
    std::string fText;  // VALUE (texts)
  };
  struct Rule {
    enum Result { VALUE, MISSING, COPY };
    std::vector<Source> fvSources;
    Result fResult = VALUE;
    bool fbTextResult = false;
    double fNumber = 0.0;
    std::string fText;
  };
  // One group: variables, their rules, and where the results go.
  struct Recoding {
    std::vector<int> fvColumns;
    bool fbTextSource = false;
    std::vector<Rule> fvRules;
    std::vector<std::string> fvInto;  // empty: in place
    std::vector<int> fvIntoColumns;   // -1 for a new variable
    bool fbTextResult = false;
  };

  static Recoding ParseRecoding(AppCommandReader& reader, const ZORV_Dataset& data);
  static Rule ParseRule(AppCommandReader& reader, const Recoding& recoding);
  static Source ParseSource(AppCommandReader& reader, bool textSource);
  static double ParseRangeEnd(AppCommandReader& reader, const char* open);
  static void ParseInto(AppCommandReader& reader, const ZORV_Dataset& data, Recoding& recoding);
  // The new values of one recoded variable, not stored yet.
  struct Outcome {
    explicit Outcome(AppColumnValues values) : fValues(std::move(values)) {}
    AppColumnValues fValues;
    int fSource = -1;
    int fTarget = -1;  // -1 for a new variable
    bool fbInto = false;
    std::string fNewName;
    long fRecoded = 0;  // values a rule matched
  };

  static Outcome Compute(AppCommandReader& reader, const ZORV_Dataset& data, const Recoding& recoding,
                         std::size_t index);
  static void Store(ZORV_Dataset& data, const Outcome& outcome);
  // The rule that decides a value; null when none does.
  static const Rule* Match(const Recoding& recoding, const ZORV_Dataset& data, long row, int column);
};
