#include "zqbase/zqtest/zqtestconsole.h"

#include <cinttypes>

namespace
{
std::string fullName(const ZqClassRecord& record, const ZqSubtestRecord& subtest)
{
    return record.name + "." + subtest.name;
}

long long milliseconds(double seconds)
{
    return static_cast<long long>(seconds * 1000.0 + 0.5);
}

const char* plural(unsigned count, const char* one, const char* many)
{
    return count == 1 ? one : many;
}
} // namespace

std::string ZqShellQuote(const std::string& text)
{
    if (!text.empty() &&
        text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./=:,+@%") ==
            std::string::npos)
        return text;
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

ZqTestConsole::ZqTestConsole(std::FILE* out, SSettings settings) : m_out(out), m_settings(std::move(settings))
{
}

void ZqTestConsole::tag(EColor color, const char* text)
{
    if (!m_settings.color)
    {
        std::fputs(text, m_out);
        return;
    }
    const char* code = color == EColor::eGreen ? "32" : color == EColor::eRed ? "31" : "33";
    std::fprintf(m_out, "\033[0;%sm%s\033[m", code, text);
}

void ZqTestConsole::flush()
{
    std::fflush(m_out);
}

bool ZqTestConsole::showsMessage(const ZqTestMessage& message) const
{
    return message.type != 0 || m_settings.verbose;
}

void ZqTestConsole::printMessage(const ZqTestMessage& message)
{
    if (!showsMessage(message))
        return;
    // Messages end with "\n" where the test means a line; each line is indented under its subtest.
    std::size_t start = 0;
    const std::string& text = message.text;
    while (start < text.size())
    {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        std::fprintf(m_out, "    %s%.*s\n", message.type != 0 ? "error: " : "", static_cast<int>(end - start),
                     text.c_str() + start);
        start = end + 1;
    }
}

void ZqTestConsole::printOutput(const std::string& text)
{
    std::fputs(text.c_str(), m_out);
    if (text.empty() || text.back() == '\n')
        return;
    // Live, more may follow on the same line; the next line of our own ends it first.
    if (m_settings.live)
        m_lineOpen = true;
    else
        std::fputc('\n', m_out);
}

void ZqTestConsole::endOpenLine()
{
    if (m_lineOpen)
        std::fputc('\n', m_out);
    m_lineOpen = false;
}

void ZqTestConsole::RunStart(unsigned subtests, unsigned classes, std::optional<std::uint32_t> shuffleSeed,
                             int iteration, int iterations)
{
    if (iterations > 1)
        std::fprintf(m_out, "\nRepeating all tests (iteration %d) . . .\n\n", iteration);
    if (shuffleSeed)
        std::fprintf(m_out, "Note: Randomizing tests' orders with a seed of %" PRIu32 " .\n", *shuffleSeed);
    if (!m_settings.brief)
    {
        tag(EColor::eGreen, "[==========]");
        std::fprintf(m_out, " Running %u %s from %u %s.\n", subtests, plural(subtests, "subtest", "subtests"),
                     classes, plural(classes, "class", "classes"));
    }
    flush();
}

void ZqTestConsole::ClassStart(const ZqClassRecord& record)
{
    if (!m_settings.live)
        return;
    endOpenLine();
    tag(EColor::eGreen, "[----------]");
    const unsigned count = static_cast<unsigned>(record.subtests.size());
    std::fprintf(m_out, " %u %s from %s\n", count, plural(count, "subtest", "subtests"), record.name.c_str());
    flush();
}

void ZqTestConsole::SubtestStart(const ZqClassRecord& record, const ZqSubtestRecord& subtest)
{
    if (!m_settings.live)
        return;
    endOpenLine();
    tag(EColor::eGreen, "[ RUN      ]");
    std::fprintf(m_out, " %s\n", fullName(record, subtest).c_str());
    flush();
}

void ZqTestConsole::Message(const ZqTestMessage& message)
{
    if (!m_settings.live)
        return;
    endOpenLine();
    printMessage(message);
    flush();
}

void ZqTestConsole::Output(const std::string& text)
{
    if (!m_settings.live)
        return;
    printOutput(text);
    flush();
}

std::string ZqTestConsole::ReplayLine(const std::string& className, unsigned index, std::uint32_t seed) const
{
    return m_settings.replayCommand + " --filter " + ZqShellQuote(className + ".#" + std::to_string(index)) +
           " --random-seed " + std::to_string(seed);
}

void ZqTestConsole::printResult(const ZqClassRecord& record, const ZqSubtestRecord& subtest)
{
    if (!subtest.failure.empty() && subtest.status != EZqTestStatus::eSkipped)
        std::fprintf(m_out, "    %s\n", subtest.failure.c_str());
    if (subtest.IsFailure())
        if (std::optional<std::uint32_t> seed = subtest.GetReportedSeed())
            std::fprintf(m_out, "    replay: %s\n", ReplayLine(record.name, subtest.index, *seed).c_str());
    switch (subtest.status)
    {
    case EZqTestStatus::ePassed:
        tag(EColor::eGreen, "[       OK ]");
        break;
    case EZqTestStatus::eSkipped:
    case EZqTestStatus::ePending:
        tag(EColor::eYellow, "[  SKIPPED ]");
        break;
    default:
        tag(EColor::eRed, "[  FAILED  ]");
    }
    std::fprintf(m_out, " %s (%lld ms)\n", fullName(record, subtest).c_str(), milliseconds(subtest.seconds));
}

void ZqTestConsole::SubtestEnd(const ZqClassRecord& record, const ZqSubtestRecord& subtest)
{
    if (!m_settings.live)
        return;
    endOpenLine();
    printResult(record, subtest);
    flush();
}

void ZqTestConsole::printBlock(const ZqClassRecord& record, const ZqSubtestRecord& subtest)
{
    tag(EColor::eGreen, "[ RUN      ]");
    std::fprintf(m_out, " %s\n", fullName(record, subtest).c_str());
    for (const ZqTestMessage& message : subtest.messages)
        printMessage(message);
    printOutput(subtest.output);
    printResult(record, subtest);
}

void ZqTestConsole::ClassEnd(const ZqClassRecord& record)
{
    endOpenLine();
    const unsigned count = static_cast<unsigned>(record.subtests.size());
    if (!m_settings.live)
    {
        bool failed = !record.error.empty();
        for (const ZqSubtestRecord& subtest : record.subtests)
            failed = failed || subtest.IsFailure();
        if (m_settings.brief && !failed)
            return;
        if (!m_settings.brief)
        {
            tag(EColor::eGreen, "[----------]");
            std::fprintf(m_out, " %u %s from %s\n", count, plural(count, "subtest", "subtests"),
                         record.name.c_str());
        }
        for (const ZqTestMessage& message : record.messages)
            printMessage(message);
        for (const ZqSubtestRecord& subtest : record.subtests)
            if (!m_settings.brief || subtest.IsFailure())
                printBlock(record, subtest);
        printOutput(record.output);
    }
    if (!record.error.empty())
    {
        tag(EColor::eRed, "[  FAILED  ]");
        std::fprintf(m_out, " %s: %s\n", record.name.c_str(), record.error.c_str());
    }
    if (!m_settings.brief)
    {
        tag(EColor::eGreen, "[----------]");
        std::fprintf(m_out, " %u %s from %s (%lld ms total)\n\n", count, plural(count, "subtest", "subtests"),
                     record.name.c_str(), milliseconds(record.seconds));
    }
    flush();
}

void ZqTestConsole::RunEnd(const ZqRunRecord& run)
{
    endOpenLine();
    const ZqRunRecord::SCounts counts = run.Count();
    unsigned subtests = 0;
    for (const ZqClassRecord& record : run.classes)
        subtests += static_cast<unsigned>(record.subtests.size());
    const unsigned classes = static_cast<unsigned>(run.classes.size());
    tag(EColor::eGreen, "[==========]");
    std::fprintf(m_out, " %u %s from %u %s ran. (%lld ms total)\n", subtests,
                 plural(subtests, "subtest", "subtests"), classes, plural(classes, "class", "classes"),
                 milliseconds(run.seconds));
    tag(EColor::eGreen, "[  PASSED  ]");
    std::fprintf(m_out, " %u %s.\n", counts.passed, plural(counts.passed, "subtest", "subtests"));

    auto list = [&](bool failures, EColor color, const char* label)
    {
        for (const ZqClassRecord& record : run.classes)
        {
            for (const ZqSubtestRecord& subtest : record.subtests)
            {
                const bool skipped = subtest.status == EZqTestStatus::eSkipped;
                if (failures ? !subtest.IsFailure() : !skipped)
                    continue;
                tag(color, label);
                std::fprintf(m_out, " %s", fullName(record, subtest).c_str());
                if (failures && subtest.status != EZqTestStatus::eFailed)
                    std::fprintf(m_out, " (%s)", subtest.GetResultName().c_str());
                std::fputc('\n', m_out);
            }
            if (failures && !record.error.empty())
            {
                tag(color, label);
                std::fprintf(m_out, " %s (%s)\n", record.name.c_str(), record.error.c_str());
            }
        }
    };
    if (counts.skipped)
    {
        tag(EColor::eYellow, "[  SKIPPED ]");
        std::fprintf(m_out, " %u %s, listed below:\n", counts.skipped,
                     plural(counts.skipped, "subtest", "subtests"));
        list(false, EColor::eYellow, "[  SKIPPED ]");
    }
    if (counts.failed)
    {
        tag(EColor::eRed, "[  FAILED  ]");
        std::fprintf(m_out, " %u %s, listed below:\n", counts.failed,
                     plural(counts.failed, "failure", "failures"));
        list(true, EColor::eRed, "[  FAILED  ]");
    }
    std::fprintf(m_out, "%u passed, %u failed", counts.passed, counts.failed);
    if (counts.skipped)
        std::fprintf(m_out, ", %u skipped", counts.skipped);
    std::fputc('\n', m_out);
    flush();
}
