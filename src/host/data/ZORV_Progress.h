#pragma once

#include <string>

// How far the host's current step has come, for whoever shows it: the
// step's name, and as the step learns them the share done, the split, and
// for a fit the iteration and its criterion.
//
// Like the stop flag this is process-wide, and the host runs one step at a
// time on one thread. Without an observer (the default) every call does
// nothing but keep the state.
class ZORV_Progress {
 public:
  struct State {
    std::string fTask;
    double fFraction = -1.0;  // 0 to 1; below 0 while unknown
    int fSplit = 0;           // from 1; 0 for an unsplit file
    int fSplits = 0;
    int fIteration = -1;      // -1 before the first
    double fCriterion = 0.0;
  };

  class Observer {
   public:
    virtual ~Observer() = default;
    // The state changed. Called often: an observer decides itself when it
    // is worth showing.
    virtual void Update(const State& state) = 0;
    // The step is over.
    virtual void Finish() = 0;
  };

  // Not owned; null removes the observer.
  static void SetObserver(Observer* observer);

  // A new step: the state starts afresh.
  static void Begin(const std::string& task);
  static void Fraction(double fraction);
  static void Split(int split, int splits);
  static void Iteration(int iteration, double criterion);
  static void End();

  static const State& Current();
};
