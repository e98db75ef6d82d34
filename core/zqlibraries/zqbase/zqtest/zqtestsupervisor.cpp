#include "zqbase/zqtest/zqtestsupervisor.h"

#include "zqbase/zqtest/zqtestclassrun.h"
#include "zqbase/zqtest/zqtestprotocol.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace
{
using Clock = std::chrono::steady_clock;

// The descriptor on which a child writes its events.
constexpr int kEventDescriptor = 3;

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

void check(bool ok, const char* what)
{
    if (!ok)
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

// Moves a descriptor above the standard ones and 3, so that dup2 in the child always copies (and
// so clears close-on-exec).
int moveHigh(int fd)
{
    const int high = fcntl(fd, F_DUPFD_CLOEXEC, 10);
    close(fd);
    check(high >= 0, "fcntl");
    return high;
}

// One running child and the class it works on.
//
// The child's stdout and stderr go to an in-memory file; before each event it writes the file
// position it has reached (ZqTestEventWriter), so the output up to that mark is given to the subtest
// running then, whatever order the two streams are read in. Events reset the deadline: the timeout
// is per subtest.
class CChild : public IZqTestEvents
{
public:
    CChild(ZqTestClassRun& run, double timeoutSeconds)
        : m_run(run), m_reader(*this, [this](std::uint64_t mark) { takeOutput(mark); }),
          m_timeout(timeoutSeconds)
    {
        touch();
    }
    ~CChild() override
    {
        for (int fd : {events, output})
            if (fd >= 0)
                close(fd);
    }
    CChild(const CChild&) = delete;
    CChild& operator=(const CChild&) = delete;

    void OnPhase(EZqTestPhase phase) override
    {
        touch();
        m_run.OnPhase(phase);
    }
    void OnSubtestStart(unsigned index, const std::string& name) override
    {
        touch();
        m_run.OnSubtestStart(index, name);
    }
    void OnMessage(int type, const std::string& text) override { m_run.OnMessage(type, text); }
    void OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                      const std::string& failure) override
    {
        touch();
        m_run.OnSubtestEnd(index, status, outcome, seconds, failure);
    }
    void OnClassError(const std::string& text) override { m_run.OnClassError(text); }
    void OnClassEnd() override { m_run.OnClassEnd(); }

    // Reads the events that are there; false once the child has closed its end.
    bool ReadEvents()
    {
        char buffer[65536];
        for (;;)
        {
            const ssize_t n = read(events, buffer, sizeof buffer);
            if (n > 0)
                m_reader.Feed(buffer, static_cast<std::size_t>(n));
            else if (n < 0 && errno == EINTR)
                continue;
            else
                return n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        }
    }
    // Everything the child printed after the last mark (after it has ended).
    void TakeRemainingOutput()
    {
        struct stat info
        {
        };
        if (output >= 0 && fstat(output, &info) == 0)
            takeOutput(static_cast<std::uint64_t>(info.st_size));
    }
    bool HasDeadline() const { return m_timeout > 0; }
    Clock::time_point Deadline() const { return m_deadline; }
    ZqTestClassRun& Run() { return m_run; }

    pid_t pid = -1;
    int events = -1;
    int output = -1;

private:
    void touch()
    {
        if (m_timeout > 0)
            m_deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                            std::chrono::duration<double>(m_timeout));
    }
    void takeOutput(std::uint64_t mark)
    {
        std::string text;
        char buffer[65536];
        while (m_outputRead < mark)
        {
            const std::size_t want =
                static_cast<std::size_t>(std::min<std::uint64_t>(sizeof buffer, mark - m_outputRead));
            const ssize_t n = pread(output, buffer, want, static_cast<off_t>(m_outputRead));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            text.append(buffer, static_cast<std::size_t>(n));
            m_outputRead += static_cast<std::uint64_t>(n);
        }
        if (!text.empty())
            m_run.AppendOutput(text);
    }

    ZqTestClassRun& m_run;
    ZqTestEventReader m_reader;
    std::uint64_t m_outputRead = 0;
    double m_timeout;
    Clock::time_point m_deadline;
};

std::string joinIndices(const std::vector<unsigned>& indices)
{
    std::string text;
    for (unsigned index : indices)
        text.append(text.empty() ? "" : ",").append(std::to_string(index));
    return text;
}

void waitForExit(pid_t pid, int& status)
{
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR)
    {
    }
}

// One Supervisor::Run: the classes waiting for a child, and the children running.
class CSupervision
{
public:
    CSupervision(const ZqTestSupervisor::SSettings& settings, const std::vector<ZqTestClassRun*>& classes)
        : m_settings(settings), m_classes(classes)
    {
        for (ZqTestClassRun* run : classes)
            m_jobs.push_back({run, run->GetPendingIndices()});
    }

    bool Run()
    {
        while (!m_jobs.empty() || !m_running.empty())
        {
            if (m_stopping)
                skipWaiting();
            startChildren();
            if (m_running.empty())
                continue;
            waitForEvents();
            for (std::size_t slot = m_running.size(); slot-- > 0;)
                service(slot);
            if (m_settings.failFast && !m_stopping && anyFailure())
                stopRunning();
        }
        return !m_stopping;
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
                                         "--child-scratch=" + m_settings.scratch + "/" + name};
        args.insert(args.end(), m_settings.arguments.begin(), m_settings.arguments.end());
        return args;
    }

    // The child gets /dev/null as stdin, the output file as stdout and stderr, and the event pipe as
    // descriptor 3.
    void spawn(const SJob& job)
    {
        std::vector<std::string> args = childArguments(job);
        std::vector<char*> argv;
        for (std::string& arg : args)
            argv.push_back(arg.data());
        argv.push_back(nullptr);

        auto child = std::make_unique<CChild>(*job.run, m_settings.timeoutSeconds);
        int fds[2];
        check(pipe2(fds, O_CLOEXEC) == 0, "pipe");
        child->events = moveHigh(fds[0]);
        const int eventsWrite = moveHigh(fds[1]);
        const int output = memfd_create("zqtest-output", MFD_CLOEXEC);
        check(output >= 0, "memfd_create");
        child->output = moveHigh(output);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, child->output, 1);
        posix_spawn_file_actions_adddup2(&actions, child->output, 2);
        posix_spawn_file_actions_adddup2(&actions, eventsWrite, kEventDescriptor);
        const int error =
            posix_spawn(&child->pid, m_settings.program.c_str(), &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(eventsWrite);
        if (error != 0)
            throw std::runtime_error("cannot start " + m_settings.program + ": " + std::strerror(error));
        fcntl(child->events, F_SETFL, O_NONBLOCK);
        m_running.push_back(std::move(child));
    }

    void startChildren()
    {
        while (m_running.size() < std::max(1u, m_settings.jobs) && !m_jobs.empty())
        {
            spawn(m_jobs.front());
            m_jobs.pop_front();
        }
    }

    // Until some child has something to say or the nearest deadline passes.
    void waitForEvents()
    {
        m_polled.clear();
        int waitMs = -1;
        const Clock::time_point now = Clock::now();
        for (auto& child : m_running)
        {
            m_polled.push_back({child->events, POLLIN, 0});
            if (!child->HasDeadline())
                continue;
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(child->Deadline() - now).count() + 1;
            const int ms = static_cast<int>(std::clamp<long long>(left, 0, 1 << 30));
            waitMs = waitMs < 0 ? ms : std::min(waitMs, ms);
        }
        if (poll(m_polled.data(), m_polled.size(), waitMs) < 0 && errno != EINTR)
            throw std::runtime_error(std::string("poll: ") + std::strerror(errno));
    }

    // Reads what the child in slot sent; reaps it when it is done or past its deadline.
    void service(std::size_t slot)
    {
        CChild& child = *m_running[slot];
        bool open = true;
        if (m_polled[slot].revents & (POLLIN | POLLHUP | POLLERR))
        {
            try
            {
                open = child.ReadEvents();
            }
            catch (const std::exception& e)
            {
                // A child that garbles its own event stream is as good as crashed.
                kill(child.pid, SIGKILL);
                child.Run().AppendOutput(std::string("zqtest: ") + e.what() + "\n");
                open = false;
            }
        }
        if (!open)
        {
            close(child.events);
            child.events = -1;
            reap(slot, "");
        }
        else if (child.HasDeadline() && Clock::now() >= child.Deadline())
        {
            kill(child.pid, SIGKILL);
            char text[64];
            std::snprintf(text, sizeof text, "timeout: still running after %g s", m_settings.timeoutSeconds);
            reap(slot, text);
        }
    }

    // The child has ended or was killed: collect it, take what is left of its events and output, and
    // decide whether its class goes on in a new child.
    void reap(std::size_t slot, const std::string& killedBecause)
    {
        CChild& child = *m_running[slot];
        int status = 0;
        waitForExit(child.pid, status);
        if (child.events >= 0)
            child.ReadEvents();
        child.TakeRemainingOutput();
        ZqTestClassRun& run = child.Run();
        const bool clean = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        bool goOn = false;
        if (!killedBecause.empty())
            goOn = run.Lost(EZqTestStatus::eTimeout, killedBecause);
        else if (!run.HasEnded() || !clean)
            goOn = run.Lost(EZqTestStatus::eCrashed, describeStatus(status));
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

    // Fail-fast: the children still running are stopped; what they had not done is skipped.
    void stopRunning()
    {
        m_stopping = true;
        for (auto& child : m_running)
        {
            kill(child->pid, SIGKILL);
            int status = 0;
            waitForExit(child->pid, status);
            child->Run().Finish();
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
    std::vector<std::unique_ptr<CChild>> m_running;
    std::vector<pollfd> m_polled;
    bool m_stopping = false;
};
} // namespace

bool ZqTestSupervisor::Run(const std::vector<ZqTestClassRun*>& classes)
{
    return CSupervision(m_settings, classes).Run();
}
