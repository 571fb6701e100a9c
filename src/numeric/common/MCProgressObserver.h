#pragma once

namespace MCCommon_850 {

// Told how an iterative fit goes, once per iteration, so that a caller can
// show it. The computation never depends on what the observer does.
class MCProgressObserver {
public:
    virtual ~MCProgressObserver() = default;
    // The iteration about to start (from 0) and the criterion at its start
    // point (-2 log likelihood for the mixed-model fits).
    virtual void Iteration(int iteration, double criterion) const = 0;
};

} // namespace MCCommon_850
