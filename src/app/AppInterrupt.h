#pragma once

// Ctrl-C while commands run: the first interrupt raises the host's stop
// flag, which the running procedure polls and which ends the session after
// the command; a second interrupt ends the program at once.
class AppInterrupt {
 public:
  static void Install();
};
