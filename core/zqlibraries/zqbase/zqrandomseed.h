#pragma once

#include "zqbase/zqbase_export.h"

#include <cstdint>

// Start seeds of randomized tests.
class ZQBASE_API ZqRandomSeed
{
public:
    // A fresh 32-bit seed from the calendar time and the processor clock: both are hashed as base-257
    // polynomials of their bytes (lowest byte weighted highest, modulo 2^32), and
    // seed = (counter + time hash) XOR clock hash, where counter is a process-wide count of the calls.
    //
    // A replay seed set for the run (ZqTestEnvironment::GetReplaySeed) is not applied here: tests
    // check it themselves, because what it replays (a start seed, or one case's seed) is theirs.
    static std::uint32_t FromClock();

    // The two hashes on their own, for tests of the recipe.
    static std::uint32_t HashTime(std::uint64_t seconds);
    static std::uint32_t HashClock(std::uint32_t ticks);
};
