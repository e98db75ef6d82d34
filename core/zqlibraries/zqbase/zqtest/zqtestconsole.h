#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestrecord.h"

#include <cstdio>
#include <optional>
#include <string>

// The console report in GoogleTest's shape: "[ RUN      ]", "[       OK ]", "[  FAILED  ]", the
// messages of a subtest under it, and a summary whose very last line is "N passed, N failed"
// (", N skipped" when any). Error messages are always shown, information messages with verbose.
//
// Live, the lines are printed as the events arrive (one class at a time); otherwise a class is
// printed as one block when it has finished, so classes running side by side do not interleave.
class ZQBASE_API ZqTestConsole
{
public:
    struct SSettings
    {
        bool color = false;
        bool brief = false;
        bool verbose = false;
        bool live = false;
        // The runner's command for replaying a seed, e.g. "zqtest lib.so"; the filter and the seed
        // are appended.
        std::string replayCommand = "zqtest";
    };

    ZqTestConsole(std::FILE* out, SSettings settings);

    void RunStart(unsigned subtests, unsigned classes, std::optional<std::uint32_t> shuffleSeed,
                  int iteration, int iterations);
    void ClassStart(const ZqClassRecord& record);
    void SubtestStart(const ZqClassRecord& record, const ZqSubtestRecord& subtest);
    void Message(const ZqTestMessage& message);
    void Output(const std::string& text);
    void SubtestEnd(const ZqClassRecord& record, const ZqSubtestRecord& subtest);
    void ClassEnd(const ZqClassRecord& record);
    void RunEnd(const ZqRunRecord& run);

    // The shell command that replays subtest index of className with seed.
    std::string ReplayLine(const std::string& className, unsigned index, std::uint32_t seed) const;

private:
    enum class EColor
    {
        eGreen,
        eRed,
        eYellow,
    };
    void tag(EColor color, const char* text);
    void printMessage(const ZqTestMessage& message);
    void printOutput(const std::string& text);
    void printResult(const ZqClassRecord& record, const ZqSubtestRecord& subtest);
    void printBlock(const ZqClassRecord& record, const ZqSubtestRecord& subtest);
    bool showsMessage(const ZqTestMessage& message) const;
    void endOpenLine();
    void flush();

    std::FILE* m_out;
    SSettings m_settings;
    // Live output of a test that did not end its line yet.
    bool m_lineOpen = false;
};

// Quotes text for a POSIX shell when it needs it.
ZQBASE_API std::string ZqShellQuote(const std::string& text);
