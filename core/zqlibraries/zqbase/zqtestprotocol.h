#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtestexecutor.h"

#include <mutex>
#include <string>

// The events of one test class sent from a child process to the supervising runner: one line per
// event, fields separated by tabs, text fields with '\\', '\t', '\n' and '\r' escaped. Each event
// is written with one write() as it happens, so the runner holds everything up to a crash.
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
};

// Turns the bytes of a child's event stream back into calls on an IZqTestEvents. Bytes may arrive
// in any pieces; an incomplete last line waits for the rest.
class ZQBASE_API ZqTestEventReader
{
public:
    explicit ZqTestEventReader(IZqTestEvents& target) : m_target(target) {}

    // Throws std::runtime_error for a line that is not an event.
    void Feed(const char* data, std::size_t size);

private:
    void dispatch(const std::string& line);

    IZqTestEvents& m_target;
    std::string m_pending;
};
