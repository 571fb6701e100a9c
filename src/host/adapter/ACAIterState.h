#pragma once

// What a record iterator of the adapter reports through GetState.
enum ACAIterState {
  ACA_ITER_READY = 0,          // records can be read
  ACA_ITER_NO_VALID_CASE = 1,  // right after construction: no valid case was found
  ACA_ITER_END = 2,            // the records of this split or pass are used up
  ACA_ITER_FAILED = 3          // no valid record can come, now or later
};
