#pragma once

#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"

#include <cstdint>
#include <optional>
#include <string>

// Settings of the current test run that tests read and the runner sets: where test data lives, the
// run's scratch directory, a random seed to replay, and whether failing comparisons write debug
// files. Without a runner (a test linked into another program) the defaults apply.
class ZQBASE_API ZqTestEnvironment
{
public:
    // The root of the test data: the runner's --data-dir, else $ZQ_TEST_DATA, else the data folder of
    // the source tree the module was built from.
    static std::string GetDataRoot();
    static void SetDataRoot(const std::string& root);
    // <data root>/<className>: holds the class's Data/ and Snapshots/.
    static std::string GetDataDirectory(const wchar_t* className);

    // A writable directory of this run, removed at its end. Made on first use when the runner has not
    // set one; a directory made so is removed at exit by the process that made it, even when another
    // was set afterwards. A directory set with SetScratchDirectory belongs to whoever set it.
    static std::string GetScratchDirectory();
    static void SetScratchDirectory(const std::string& directory);

    // The seed a randomized test must use instead of a fresh one (runner option --random-seed or
    // $ZQ_RANDOM_SEED, from -2^31 to 2^32-1: a negative value is the seed a message printed with
    // %d). A test that derives one seed per case runs only the case of this seed.
    static std::optional<std::uint32_t> GetReplaySeed();
    static void SetReplaySeed(std::optional<std::uint32_t> seed);

    // Failing comparisons write their evidence (renders, difference images) beside the reference.
    static bool IsDebugOutputEnabled();
    static void SetDebugOutputEnabled(bool enabled);
};
