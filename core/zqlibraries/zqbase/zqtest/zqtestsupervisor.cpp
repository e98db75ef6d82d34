#include "zqbase/zqtest/zqtestsupervisor.h"

#include "zqbase/zqtest/zqtestchildprocess.h"
#include "zqbase/zqtest/zqtestclassrun.h"
#include "zqbase/zqtest/zqtestinterrupt.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <memory>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
using Clock = ZqTestChildProcess::Clock;

std::string describeStatus(int status)
{
    if (WIFSIGNALED(status))
    {
        const int signal = WTERMSIG(status);
        const char* name = sigabbrev_np(signal);
        return "crashed: signal " + std::to_string(signal) + " (" + (name ? std::string("SIG") + name : "?") +
               ", " + strsignal(signal) + ")";
    }
    if (WIFEXITED(status))
        return "crashed: the process exited with code " + std::to_string(WEXITSTATUS(status));
    return "crashed: the process ended";
}

std::string joinIndices(const std::vector<unsigned>& indices)
{
    std::string text;
    for (unsigned index : indices)
        text.append(text.empty() ? "" : ",").append(std::to_string(index));
    return text;
}

// Without process descriptors a child's exit is noticed by asking this often.
constexpr int kExitPollMs = 50;

// One ZqTestSupervisor::Run: the classes waiting for a child, and the children running.
class CSupervision
{
public:
    using EEnd = ZqTestSupervisor::EEnd;

    CSupervision(const ZqTestSupervisor::SSettings& settings, const std::vector<ZqTestClassRun*>& classes)
        : m_settings(settings), m_classes(classes)
    {
        for (ZqTestClassRun* run : classes)
            m_jobs.push_back({run, run->GetPendingIndices()});
    }

    EEnd Run()
    {
        while (!m_jobs.empty() || !m_running.empty())
        {
            if (m_end == EEnd::eCompleted && m_settings.interrupt && m_settings.interrupt->GetSignal())
            {
                m_end = EEnd::eInterrupted;
                stopRunning("interrupted: the runner received " + m_settings.interrupt->GetSignalName());
            }
            if (m_end != EEnd::eCompleted)
            {
                skipWaiting();
                continue;
            }
            startChildren();
            waitForEvents();
            for (std::size_t slot = m_running.size(); slot-- > 0;)
                service(slot);
            if (m_settings.failFast && anyFailure())
            {
                m_end = EEnd::eFailedFast;
                stopRunning("");
            }
        }
        return m_end;
    }

private:
    struct SJob
    {
        ZqTestClassRun* run;
        std::vector<unsigned> indices;
    };

    std::vector<std::string> childArguments(const SJob& job) const
    {
        const std::string& name = job.run->GetRecord().name;
        std::vector<std::string> args = {m_settings.program, "--child-class=" + name,
                                         std::string("--child-indices=").append(joinIndices(job.indices)),
                                         "--child-scratch=" + m_settings.scratch + "/" + name,
                                         "--child-parent=" + std::to_string(getpid())};
        args.insert(args.end(), m_settings.arguments.begin(), m_settings.arguments.end());
        return args;
    }

    void startChildren()
    {
        while (m_running.size() < std::max(1u, m_settings.jobs) && !m_jobs.empty())
        {
            const SJob& job = m_jobs.front();
            m_running.push_back(std::make_unique<ZqTestChildProcess>(*job.run, childArguments(job),
                                                                     m_settings.timeoutSeconds));
            m_jobs.pop_front();
        }
    }

    // Until some child has something to say or ends, a signal arrives, or the nearest deadline passes.
    void waitForEvents()
    {
        std::vector<pollfd> polled;
        int waitMs = -1;
        const Clock::time_point now = Clock::now();
        for (auto& child : m_running)
        {
            polled.push_back({child->GetEventDescriptor(), POLLIN, 0});
            polled.push_back({child->GetExitDescriptor(), POLLIN, 0});
            if (child->GetExitDescriptor() < 0)
                waitMs = waitMs < 0 ? kExitPollMs : std::min(waitMs, kExitPollMs);
            if (const auto deadline = child->GetDeadline())
            {
                const auto left =
                    std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - now).count() + 1;
                const int ms = static_cast<int>(std::clamp<long long>(left, 0, 1 << 30));
                waitMs = waitMs < 0 ? ms : std::min(waitMs, ms);
            }
        }
        if (m_settings.interrupt)
            polled.push_back({m_settings.interrupt->GetDescriptor(), POLLIN, 0});
        if (poll(polled.data(), polled.size(), waitMs) < 0 && errno != EINTR)
            throw std::runtime_error(std::string("poll: ") + std::strerror(errno));
    }

    // Hands on what the child in slot sent; reaps it when it has exited or is past its deadline.
    void service(std::size_t slot)
    {
        ZqTestChildProcess& child = *m_running[slot];
        child.ReadEvents();
        const auto deadline = child.GetDeadline();
        if (!child.HasExited() && deadline && Clock::now() >= *deadline)
        {
            char text[64];
            std::snprintf(text, sizeof text, "timeout: still running after %g s", m_settings.timeoutSeconds);
            child.End(EZqTestStatus::eTimeout, text);
        }
        if (!child.GetEndReason().empty() || child.HasExited())
            reap(slot);
    }

    // The child has ended or was ended: collect it and decide whether its class goes on in a new one.
    void reap(std::size_t slot)
    {
        ZqTestChildProcess& child = *m_running[slot];
        const int status = child.Reap();
        ZqTestClassRun& run = child.GetRun();
        const bool clean = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        bool goOn = false;
        if (!child.GetEndReason().empty())
            goOn = run.Lost(child.GetEndStatus(), child.GetEndReason());
        else if (!run.HasEnded() || !clean)
            goOn = run.Lost(EZqTestStatus::eCrashed, describeStatus(status));
        if (!child.GetLeftovers().empty())
            run.AppendOutput(child.GetLeftovers());
        if (goOn)
            m_jobs.push_front({&run, run.GetPendingIndices()});
        else
            run.Finish();
        m_running.erase(m_running.begin() + static_cast<std::ptrdiff_t>(slot));
    }

    bool anyFailure() const
    {
        return std::any_of(m_classes.begin(), m_classes.end(),
                           [](ZqTestClassRun* run) { return run->HasFailure(); });
    }

    // Ends every running child. With a reason (a signal) the subtest each was running is marked
    // interrupted; without (fail-fast) it stays pending. Either way the rest is skipped.
    void stopRunning(const std::string& interrupted)
    {
        for (auto& child : m_running)
        {
            child->End(EZqTestStatus::eInterrupted, interrupted);
            child->Reap();
            if (!interrupted.empty())
                child->GetRun().Interrupted(interrupted);
            if (!child->GetLeftovers().empty())
                child->GetRun().AppendOutput(child->GetLeftovers());
            child->GetRun().Finish();
        }
        m_running.clear();
    }

    void skipWaiting()
    {
        for (SJob& job : m_jobs)
            job.run->Finish();
        m_jobs.clear();
    }

    const ZqTestSupervisor::SSettings& m_settings;
    const std::vector<ZqTestClassRun*>& m_classes;
    std::deque<SJob> m_jobs;
    std::vector<std::unique_ptr<ZqTestChildProcess>> m_running;
    EEnd m_end = EEnd::eCompleted;
};
} // namespace

ZqTestSupervisor::EEnd ZqTestSupervisor::Run(const std::vector<ZqTestClassRun*>& classes)
{
    return CSupervision(m_settings, classes).Run();
}
