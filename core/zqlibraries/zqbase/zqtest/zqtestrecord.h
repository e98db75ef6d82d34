#pragma once

#include "zqbase/zqbase_export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What became of one selected subtest in a run. eCrashed and eTimeout come from the supervised
// child processes, eInterrupted marks the subtest that was running when a signal stopped the runner;
// ePending only lives while the run is under way.
enum class EZqTestStatus
{
    ePending,
    ePassed,
    eFailed,
    eCrashed,
    eTimeout,
    eSkipped,
    eInterrupted,
};

// One message of a subtest: the EMessageType value and the text in UTF-8.
struct ZqTestMessage
{
    int type = 0;
    std::string text;
};

struct ZQBASE_API ZqSubtestRecord
{
    unsigned index = 0;
    std::string name;
    EZqTestStatus status = EZqTestStatus::ePending;
    // The value the subtest returned, for ePassed and eFailed (it may lie outside EResult); else 0.
    int outcome = 0;
    double seconds = 0;
    std::vector<ZqTestMessage> messages;
    // What the subtest printed to stdout and stderr (isolated runs only).
    std::string output;
    // The runner's own account of a failure: an escaped exception, a signal, a timeout.
    std::string failure;

    bool IsFailure() const;
    // "ePassed" .. "eAborted" for a returned outcome ("invalid(N)" for a value outside EResult), else
    // "crashed", "timeout", "interrupted" or "skipped".
    std::string GetResultName() const;
    // The seed of the last "Startwert des Zufallsgenerators: N" message, if any.
    std::optional<std::uint32_t> GetReportedSeed() const;
};

struct ZQBASE_API ZqClassRecord
{
    std::string name;
    std::vector<std::string> parents;
    std::vector<ZqSubtestRecord> subtests;
    // Messages and output written outside any subtest (creation, PreallocateStaticData, destruction).
    std::vector<ZqTestMessage> messages;
    std::string output;
    // A failure that belongs to no subtest, e.g. a crash while the test object was destroyed.
    std::string error;
    double seconds = 0;
    int iteration = 1;
};

struct ZQBASE_API ZqRunRecord
{
    std::vector<ZqClassRecord> classes;
    std::uint32_t seed = 0;
    int iterations = 1;
    double seconds = 0;
    // Start of the run, milliseconds since the epoch.
    std::int64_t startMilliseconds = 0;

    struct SCounts
    {
        unsigned passed = 0;
        unsigned failed = 0;
        unsigned skipped = 0;
    };
    // Subtests by outcome; a class error counts as one failure.
    SCounts Count() const;
};
