#pragma once

// Ctrl-C while commands run: the first interrupt raises the host's stop
// flag, which the running command polls in its long loops; the session then
// shows that command as interrupted and starts no other. A second interrupt
// ends the program at once.
class AppInterrupt {
 public:
  static void Install();
};
