#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqunittest.h"

#include <cstdint>
#include <functional>

// Start seeds of randomized tests, and the seed message that lets a person repeat a run.
//
// A randomized subtest draws from MT19937 and says which seed reproduces it with the information
// "Startwert des Zufallsgenerators: %d\n" (the 32-bit seed printed as a signed number). Given back to the
// runner (--random-seed, $ZQ_RANDOM_SEED; ZqTestEnvironment::GetReplaySeed), that number replaces the
// clock. Two forms:
//
//     // One generator for the whole subtest; the message is written at once.
//     std::mt19937 generator(ZqRandomSeed::Start(*this));
//
//     // One seed per case; only a failing case's seed is written, and a replay runs that case alone.
//     return ZqRandomSeed::RunCases(*this, 5000, [](std::uint32_t seed) { return runCase(seed); });
class ZQBASE_API ZqRandomSeed
{
public:
    // A fresh 32-bit seed from the calendar time and the processor clock: both are hashed as base-257
    // polynomials of their bytes (lowest byte weighted highest, modulo 2^32), and
    // seed = (counter + time hash) XOR clock hash, where counter is a process-wide count of the calls.
    // The run's replay seed is not applied here; Start and RunCases apply it.
    static std::uint32_t FromClock();

    // The two hashes on their own, for tests of the recipe.
    static std::uint32_t HashTime(std::uint64_t seconds);
    static std::uint32_t HashClock(std::uint32_t ticks);

    // The start seed of a subtest: the run's replay seed when it has one, else FromClock(). Writes the
    // seed message under test.
    static std::uint32_t Start(const ZqUnitTest& test);

    // Runs runCase(seed) for cases seeds drawn from an MT19937 seeded with FromClock(), or once with the
    // run's replay seed when it has one. The first case that does not pass, or throws, gets its seed
    // message written under test; its result is returned (its exception passes on). ePassed when every
    // case passed.
    static ZqUnitTest::EResult
    RunCases(const ZqUnitTest& test, unsigned int cases,
             const std::function<ZqUnitTest::EResult(std::uint32_t seed)>& runCase);

    // Writes the seed message for seed under test.
    static void Write(const ZqUnitTest& test, std::uint32_t seed);
};
