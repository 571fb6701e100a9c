#pragma once

class AppCommandReader;
class ZORV_Dataset;

// Which cases the analyses see.
class AppCaseCommands {
 public:
  // SELECT IF condition: keeps the cases for which the condition is true
  // and removes the others for good (a missing condition removes the case).
  static void Select(AppCommandReader& reader, ZORV_Dataset* data);
  // FILTER BY variable, FILTER OFF: the analyses read only the cases whose
  // value of the variable is neither missing nor 0, until the filter is
  // switched off; the other cases stay in the data.
  static void Filter(AppCommandReader& reader, ZORV_Dataset* data);
};
