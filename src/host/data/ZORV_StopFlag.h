#pragma once

// The host's stop request. The user's interface raises it from its own
// thread; the procedure thread polls it between records. The host clears it
// when a command begins.
class ZORV_StopFlag {
 public:
  static void Raise();
  static void Clear();
  static bool IsRaised();
};
