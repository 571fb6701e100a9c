#pragma once

namespace MCCommon_850 {

// Polled by long-running computations so a caller can stop them early.
class MCQueryCancel {
public:
    virtual ~MCQueryCancel() = default;
    virtual bool IsCancelled() const = 0;
};

} // namespace MCCommon_850
