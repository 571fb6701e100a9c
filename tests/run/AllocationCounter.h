#pragma once

namespace run_test {

// How many times operator new has been called in this test program so far.
long AllocationCount();

}  // namespace run_test
