#include "numeric/engine/detail/MCEngineRecordFree.h"

#include <atomic>

namespace MCEngine_850 {

namespace {

std::atomic<long> gRecordPasses{0};

}  // namespace

long MCEngineRecordFree::GetRecordPasses() { return gRecordPasses.load(); }

void MCEngineRecordFree::CountRecordPass() { gRecordPasses.fetch_add(1, std::memory_order_relaxed); }

}  // namespace MCEngine_850
