#include "zqbase/zqtestsupervisor.h"

#include "zqbase/zqtestclassrun.h"
#include "zqbase/zqtestprotocol.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <memory>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdexcept>
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

// A pipe's read end above the standard descriptors and 3, so that dup2 in the child always copies.
struct SPipe
{
    int read = -1;
    int write = -1;
};

SPipe makePipe()
{
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0)
        throw std::runtime_error(std::string("pipe: ") + std::strerror(errno));
    SPipe result;
    result.read = fcntl(fds[0], F_DUPFD_CLOEXEC, 10);
    result.write = fcntl(fds[1], F_DUPFD_CLOEXEC, 10);
    close(fds[0]);
    close(fds[1]);
    if (result.read < 0 || result.write < 0)
        throw std::runtime_error(std::string("fcntl: ") + std::strerror(errno));
    return result;
}

// Number of bytes at the end of text that start an incomplete UTF-8 sequence.
std::size_t incompleteTail(const std::string& text)
{
    const std::size_t n = text.size();
    for (std::size_t back = 1; back <= 3 && back <= n; ++back)
    {
        const auto c = static_cast<unsigned char>(text[n - back]);
        if ((c & 0xC0) == 0x80)
            continue;
        const std::size_t need = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
        return need > back ? back : 0;
    }
    return 0;
}

// One running child and the class it works on. Events reset the deadline: the timeout is per
// subtest.
class CChild : public IZqTestEvents
{
public:
    CChild(ZqTestClassRun& run, double timeoutSeconds)
        : m_run(run), m_reader(*this), m_timeout(timeoutSeconds)
    {
        touch();
    }
    ~CChild() override
    {
        for (int fd : {events, output})
            if (fd >= 0)
                close(fd);
    }

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

    void FeedEvents(const char* data, std::size_t size) { m_reader.Feed(data, size); }
    void FeedOutput(const char* data, std::size_t size)
    {
        m_outputTail.append(data, size);
        const std::size_t keep = incompleteTail(m_outputTail);
        if (m_outputTail.size() > keep)
        {
            m_run.AppendOutput(m_outputTail.substr(0, m_outputTail.size() - keep));
            m_outputTail.erase(0, m_outputTail.size() - keep);
        }
    }
    void FlushOutput()
    {
        if (!m_outputTail.empty())
            m_run.AppendOutput(m_outputTail);
        m_outputTail.clear();
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

    ZqTestClassRun& m_run;
    ZqTestEventReader m_reader;
    std::string m_outputTail;
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

// Reads what is there without blocking; false at the end of the stream.
bool drain(int fd, const std::function<void(const char*, std::size_t)>& sink)
{
    char buffer[65536];
    for (;;)
    {
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n > 0)
        {
            sink(buffer, static_cast<std::size_t>(n));
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        return n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    }
}
} // namespace

bool ZqTestSupervisor::Run(const std::vector<ZqTestClassRun*>& classes)
{
    struct SJob
    {
        ZqTestClassRun* run;
        std::vector<unsigned> indices;
    };
    std::deque<SJob> jobs;
    for (ZqTestClassRun* run : classes)
        jobs.push_back({run, run->GetPendingIndices()});
    std::vector<std::unique_ptr<CChild>> running;
    bool stopping = false;

    auto spawn = [&](const SJob& job)
    {
        const std::string scratch = m_settings.scratch + "/" + job.run->GetRecord().name;
        std::vector<std::string> args = {m_settings.program};
        args.push_back("--child-class=" + job.run->GetRecord().name);
        args.push_back(std::string("--child-indices=").append(joinIndices(job.indices)));
        args.push_back("--child-scratch=" + scratch);
        args.insert(args.end(), m_settings.arguments.begin(), m_settings.arguments.end());
        std::vector<char*> argv;
        for (std::string& arg : args)
            argv.push_back(arg.data());
        argv.push_back(nullptr);

        auto child = std::make_unique<CChild>(*job.run, m_settings.timeoutSeconds);
        const SPipe events = makePipe();
        const SPipe output = makePipe();
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, output.write, 1);
        posix_spawn_file_actions_adddup2(&actions, output.write, 2);
        posix_spawn_file_actions_adddup2(&actions, events.write, kEventDescriptor);
        const int error =
            posix_spawn(&child->pid, m_settings.program.c_str(), &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(events.write);
        close(output.write);
        child->events = events.read;
        child->output = output.read;
        if (error != 0)
            throw std::runtime_error("cannot start " + m_settings.program + ": " + std::strerror(error));
        fcntl(child->events, F_SETFL, O_NONBLOCK);
        fcntl(child->output, F_SETFL, O_NONBLOCK);
        running.push_back(std::move(child));
    };

    // The child has ended (or was killed): collect it, take what is left in its pipes and decide.
    auto reap = [&](std::size_t slot, const std::string& killedBecause)
    {
        CChild& child = *running[slot];
        int status = 0;
        while (waitpid(child.pid, &status, 0) < 0 && errno == EINTR)
        {
        }
        if (child.events >= 0)
            drain(child.events, [&](const char* d, std::size_t n) { child.FeedEvents(d, n); });
        if (child.output >= 0)
            drain(child.output, [&](const char* d, std::size_t n) { child.FeedOutput(d, n); });
        child.FlushOutput();
        ZqTestClassRun& run = child.Run();
        const bool clean = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        if (!killedBecause.empty())
        {
            if (run.Lost(EZqTestStatus::eTimeout, killedBecause))
                jobs.push_front({&run, run.GetPendingIndices()});
            else
                run.Finish();
        }
        else if (!run.HasEnded() || !clean)
        {
            if (run.Lost(EZqTestStatus::eCrashed, describeStatus(status)))
                jobs.push_front({&run, run.GetPendingIndices()});
            else
                run.Finish();
        }
        else
            run.Finish();
        running.erase(running.begin() + static_cast<std::ptrdiff_t>(slot));
    };

    while (!jobs.empty() || !running.empty())
    {
        while (!stopping && running.size() < std::max(1u, m_settings.jobs) && !jobs.empty())
        {
            spawn(jobs.front());
            jobs.pop_front();
        }
        if (stopping)
        {
            for (SJob& job : jobs)
                job.run->Finish();
            jobs.clear();
        }
        if (running.empty())
            continue;

        std::vector<pollfd> fds;
        for (auto& child : running)
        {
            fds.push_back({child->events, child->events >= 0 ? short(POLLIN) : short(0), 0});
            fds.push_back({child->output, child->output >= 0 ? short(POLLIN) : short(0), 0});
        }
        int waitMs = -1;
        const Clock::time_point now = Clock::now();
        for (auto& child : running)
            if (child->HasDeadline())
            {
                const auto left =
                    std::chrono::duration_cast<std::chrono::milliseconds>(child->Deadline() - now).count();
                const int ms =
                    static_cast<int>(std::max<long long>(0, std::min<long long>(left + 1, 1 << 30)));
                waitMs = waitMs < 0 ? ms : std::min(waitMs, ms);
            }
        if (poll(fds.data(), fds.size(), waitMs) < 0 && errno != EINTR)
            throw std::runtime_error(std::string("poll: ") + std::strerror(errno));

        for (std::size_t slot = running.size(); slot-- > 0;)
        {
            CChild& child = *running[slot];
            // Output first: it belongs to the subtest whose end may be among the events.
            if (child.output >= 0 && (fds[2 * slot + 1].revents & (POLLIN | POLLHUP | POLLERR)) &&
                !drain(child.output, [&](const char* d, std::size_t n) { child.FeedOutput(d, n); }))
            {
                close(child.output);
                child.output = -1;
            }
            if (child.events >= 0 && (fds[2 * slot].revents & (POLLIN | POLLHUP | POLLERR)))
            {
                bool open = true;
                try
                {
                    open = drain(child.events, [&](const char* d, std::size_t n) { child.FeedEvents(d, n); });
                }
                catch (const std::exception& e)
                {
                    // A child that garbles its own event stream is as good as crashed.
                    kill(child.pid, SIGKILL);
                    child.Run().AppendOutput(std::string("zqtest: ") + e.what() + "\n");
                    open = false;
                }
                if (!open)
                {
                    close(child.events);
                    child.events = -1;
                }
            }
            if (child.events < 0)
                reap(slot, "");
            else if (child.HasDeadline() && Clock::now() >= child.Deadline())
            {
                kill(child.pid, SIGKILL);
                char text[64];
                std::snprintf(text, sizeof text, "timeout: still running after %g s",
                              m_settings.timeoutSeconds);
                reap(slot, text);
            }
        }

        if (m_settings.failFast && !stopping)
        {
            bool failed = false;
            for (ZqTestClassRun* run : classes)
                failed = failed || run->HasFailure();
            if (failed)
            {
                stopping = true;
                for (auto& child : running)
                    kill(child->pid, SIGKILL);
                while (!running.empty())
                {
                    CChild& child = *running.back();
                    int status = 0;
                    while (waitpid(child.pid, &status, 0) < 0 && errno == EINTR)
                    {
                    }
                    child.Run().Finish();
                    running.pop_back();
                }
            }
        }
    }
    return !stopping;
}
