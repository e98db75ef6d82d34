#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestexecutor.h"
#include "zqbase/zqtest/zqtestprotocol.h"

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

class ZqTestClassRun;

// One child process of the supervisor and the class it works on. The child is started as the leader
// of a process group of its own, with /dev/null as stdin, one in-memory file as stdout and stderr,
// and the write end of the event pipe as descriptor 3. Its events go on to the class run; the
// output marks among them give each subtest the part of the output file it printed. Each event
// restarts the deadline, so the timeout is per subtest.
class ZQBASE_API ZqTestChildProcess : private IZqTestEvents
{
public:
    using Clock = std::chrono::steady_clock;

    // Starts argv[0] with argv. Throws std::runtime_error when it cannot.
    ZqTestChildProcess(ZqTestClassRun& run, const std::vector<std::string>& argv, double timeoutSeconds);
    ~ZqTestChildProcess() override;
    ZqTestChildProcess(const ZqTestChildProcess&) = delete;
    ZqTestChildProcess& operator=(const ZqTestChildProcess&) = delete;

    // For poll: readable when events arrive (-1 once the pipe has ended) and when the child exits
    // (-1 where the system has no process descriptors; then poll briefly and ask HasExited).
    int GetEventDescriptor() const { return m_events; }
    int GetExitDescriptor() const { return m_exit; }

    // Hands on the events that have arrived. A child that garbles its event stream is ended.
    void ReadEvents();
    // Exited, not yet reaped.
    bool HasExited() const;
    std::optional<Clock::time_point> GetDeadline() const;

    // The runner ends the child, and every process of its group, for a reason of its own: status is
    // what the running subtest becomes (eTimeout, eCrashed, eInterrupted), why the runner's note.
    void End(EZqTestStatus status, const std::string& why);
    // Waits for the child's end, takes the rest of its events and output, and kills what is left of
    // its process group. Returns the wait status.
    int Reap();

    ZqTestClassRun& GetRun() { return m_run; }
    // Set when the runner ended the child: the subtest's status and the runner's note.
    EZqTestStatus GetEndStatus() const { return m_endStatus; }
    const std::string& GetEndReason() const { return m_endReason; }
    // The processes the test left running that were killed with the child ("" when none).
    const std::string& GetLeftovers() const { return m_leftovers; }

private:
    void OnPhase(EZqTestPhase phase) override;
    void OnSubtestStart(unsigned index, const std::string& name) override;
    void OnMessage(int type, const std::string& text) override;
    void OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                      const std::string& failure) override;
    void OnClassError(const std::string& text) override;
    void OnClassEnd() override;

    void spawn(const std::vector<std::string>& argv, int eventsWrite);
    // false once the pipe has ended; throws for a garbled stream.
    bool readAvailable();
    void closeEvents();
    void touch();
    void takeOutput(std::uint64_t mark);
    void takeRemainingOutput();

    ZqTestClassRun& m_run;
    ZqTestEventReader m_reader;
    double m_timeout;
    Clock::time_point m_deadline;
    pid_t m_pid = -1;
    int m_events = -1;
    int m_output = -1;
    int m_exit = -1;
    std::uint64_t m_outputRead = 0;
    bool m_groupKilled = false;
    bool m_reaped = false;
    EZqTestStatus m_endStatus = EZqTestStatus::eCrashed;
    std::string m_endReason;
    std::string m_leftovers;
};
