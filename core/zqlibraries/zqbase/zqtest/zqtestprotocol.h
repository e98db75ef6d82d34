#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestexecutor.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

// The events of one test class sent from a child process to the supervising runner: one line per
// event, fields separated by tabs, text fields with '\\', '\t', '\n' and '\r' escaped. Each event
// is written with one write() as it happens, so the runner holds everything up to a crash.
//
// When stdout is a file (the runner gives its children one for stdout and stderr together), each
// event is preceded by an output mark, "O\t<file position>", whenever the test has printed something
// since the last one; stdout and stderr are flushed first. The reader hands marks to its own
// callback, so that output is given to the subtest that printed it.
class ZQBASE_API ZqTestEventWriter : public IZqTestEvents
{
public:
    explicit ZqTestEventWriter(int fd) : m_fd(fd) {}

    void OnPhase(EZqTestPhase phase) override;
    void OnSubtestStart(unsigned index, const std::string& name) override;
    void OnMessage(int type, const std::string& text) override;
    void OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                      const std::string& failure) override;
    void OnClassError(const std::string& text) override;
    void OnClassEnd() override;

private:
    void send(const std::string& line);

    int m_fd;
    std::mutex m_mutex;
    long long m_outputMark = 0;
};

// Turns the bytes of a child's event stream back into calls on an IZqTestEvents. Bytes may arrive
// in any pieces; an incomplete last line waits for the rest.
class ZQBASE_API ZqTestEventReader
{
public:
    using OutputMark = std::function<void(std::uint64_t)>;

    explicit ZqTestEventReader(IZqTestEvents& target, OutputMark onOutputMark = nullptr)
        : m_target(target), m_onOutputMark(std::move(onOutputMark))
    {
    }

    // Throws std::runtime_error for a line that is not an event.
    void Feed(const char* data, std::size_t size);

private:
    void dispatch(const std::string& line);

    IZqTestEvents& m_target;
    OutputMark m_onOutputMark;
    std::string m_pending;
};
