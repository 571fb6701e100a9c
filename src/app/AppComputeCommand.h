#pragma once

class AppCommandReader;
class ZORV_Dataset;
struct AppToken;

// COMPUTE variable = expression: a new variable, or new values of one,
// from an expression computed for every case. A new variable takes the
// expression's type; an existing one must have it.
class AppComputeCommand {
 public:
  static void Run(AppCommandReader& reader, ZORV_Dataset* data);

  // The longest name of a variable the commands make, in bytes.
  enum { kMaxName = 64 };
  // Fails unless the token is a name a new variable can take.
  static void CheckNewName(const AppCommandReader& reader, const AppToken& name);
};
