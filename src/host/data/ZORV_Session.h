#pragma once

#include <string>
#include <vector>

#include "host/data/OBS.h"
#include "host/data/ZORV_Variable.h"

// Process-wide state of the host for the command being run: the fatal flag,
// the display settings for names and labels, the current split, and where
// resources live. The host is single-threaded; this is its one global.
class ZORV_Session {
 public:
  // How variables and values are shown: names (or values) alone, labels
  // alone, or both.
  enum Display { NAMES = 1, LABELS = 2, BOTH = 3 };

  struct SplitValue {
    const ZORV_Variable* fpVariable = nullptr;
    std::vector<OBS> fvValue;  // one cell for a number, (width + 7) / 8 for a string
  };

  static ZORV_Session& Current();

  // A new command: the fatal state is cleared, the split forgotten.
  void BeginCommand();

  bool IsFatal() const { return fbFatal; }
  void SetFatal() { fbFatal = true; }

  // Display of variables and of values, in tables (first) and in captions
  // and split titles (second).
  void SetVariableDisplay(Display first, Display second) { fVarFirst = first; fVarSecond = second; }
  void SetValueDisplay(Display first, Display second) { fValFirst = first; fValSecond = second; }
  Display GetVariableDisplay() const { return fVarFirst; }
  Display GetValueDisplay() const { return fValFirst; }
  void GetDisplayOptions(long* varSecond, long* valSecond, long* varFirst, long* valFirst) const;

  void SetCurrentSplit(const std::vector<SplitValue>& split) { fvSplit = split; }
  void ClearCurrentSplit() { fvSplit.clear(); }
  const std::vector<SplitValue>& GetCurrentSplit() const { return fvSplit; }

  void SetResourceDir(const std::string& dir) { fResourceDir = dir; }
  const std::string& GetResourceDir() const { return fResourceDir; }
  void SetWritableDir(const std::string& dir) { fWritableDir = dir; }
  const std::string& GetWritableDir() const { return fWritableDir; }
  // The folder of the command file being run: relative file names in
  // commands are taken from there. Empty: the working directory.
  void SetCommandDir(const std::string& dir) { fCommandDir = dir; }
  const std::string& GetCommandDir() const { return fCommandDir; }

 private:
  ZORV_Session();

  bool fbFatal = false;
  Display fVarFirst = LABELS;
  Display fVarSecond = LABELS;
  Display fValFirst = LABELS;
  Display fValSecond = LABELS;
  std::vector<SplitValue> fvSplit;
  std::string fResourceDir;
  std::string fWritableDir;
  std::string fCommandDir;
};

// The host's four display settings, each 1 (names or values), 2 (labels)
// or 3 (both): variables and values in captions, then variables and values
// in tables.
void getdisplayoptions_(long* varSecond, long* valSecond, long* varFirst, long* valFirst);
