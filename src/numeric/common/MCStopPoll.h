#pragma once

#include "numeric/common/MCQueryCancel.h"

namespace MCCommon_850 {

// Asks the cancel query from inside long loops: once the steps' work
// (counted in elementary operations, a cell read or a multiply-add) reaches
// `stride` since the last question, so that loops of millions of cheap steps
// do not spend their time asking and a few costly steps still ask often.
// Once the query has said stop, the poll stays stopped and asks no more.
class MCStopPoll {
 public:
  explicit MCStopPoll(const MCQueryCancel* pCancel, double stride = kDefaultStride)
      : fpCancel(pCancel), fStride(stride < 1.0 ? 1.0 : stride) {}

  // One step of a loop doing `work` operations; true when the loop must stop.
  bool Step(double work = 1.0) {
    if (fbStopped) return true;
    fWork += work;
    if (fWork < fStride) return false;
    fWork = 0.0;
    return Ask();
  }
  // Asks now, whatever the step count; true when the work must stop.
  bool Ask() {
    if (!fbStopped && fpCancel != nullptr) fbStopped = fpCancel->IsCancelled();
    return fbStopped;
  }
  bool Stopped() const { return fbStopped; }

  // About a millisecond of work between two questions.
  static constexpr double kDefaultStride = 1 << 20;

 private:
  const MCQueryCancel* fpCancel;
  double fStride;
  double fWork = 0.0;
  bool fbStopped = false;
};

}  // namespace MCCommon_850
