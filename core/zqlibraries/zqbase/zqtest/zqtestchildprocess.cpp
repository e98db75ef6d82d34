#include "zqbase/zqtest/zqtestchildprocess.h"

#include "zqbase/zqtest/zqtestclassrun.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <signal.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace
{
// The descriptor on which a child writes its events.
constexpr int kEventDescriptor = 3;

void check(bool ok, const char* what)
{
    if (!ok)
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

// Moves a descriptor above the standard ones and 3, so that dup2 in the child always copies (and
// so clears close-on-exec).
int moveHigh(int fd)
{
    check(fd >= 0, "descriptor");
    const int high = fcntl(fd, F_DUPFD_CLOEXEC, 10);
    close(fd);
    check(high >= 0, "fcntl");
    return high;
}

// The live processes of a process group other than its leader, as "pid (name)".
std::vector<std::string> groupMembers(pid_t group)
{
    std::vector<std::string> members;
    DIR* proc = opendir("/proc");
    if (!proc)
        return members;
    while (const dirent* entry = readdir(proc))
    {
        char* end = nullptr;
        const long pid = std::strtol(entry->d_name, &end, 10);
        if (*end != 0 || pid <= 0 || pid == group)
            continue;
        std::string stat;
        std::getline(std::ifstream("/proc/" + std::string(entry->d_name) + "/stat"), stat);
        // "pid (name) state ppid pgrp ...": the name may hold blanks and parentheses.
        const std::size_t open = stat.find('('), close = stat.rfind(')');
        char state = 0;
        long parent = 0, pgrp = 0;
        if (open == std::string::npos || close == std::string::npos ||
            std::sscanf(stat.c_str() + close + 1, " %c %ld %ld", &state, &parent, &pgrp) != 3)
            continue;
        if (pgrp == group && state != 'Z' && state != 'X')
            members.push_back(std::to_string(pid) + " (" + stat.substr(open + 1, close - open - 1) + ")");
    }
    closedir(proc);
    return members;
}

std::string leftoverNote(const std::vector<std::string>& members)
{
    if (members.empty())
        return "";
    std::string note = "zqtest: killed what the test left running in its process group:";
    for (const std::string& member : members)
        note += " " + member;
    return note + "\n";
}

void waitForExit(pid_t pid, int& status)
{
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR)
    {
    }
}
} // namespace

ZqTestChildProcess::ZqTestChildProcess(ZqTestClassRun& run, const std::vector<std::string>& argv,
                                       double timeoutSeconds)
    : m_run(run), m_reader(*this, [this](std::uint64_t mark) { takeOutput(mark); }), m_timeout(timeoutSeconds)
{
    touch();
    int fds[2];
    check(pipe2(fds, O_CLOEXEC) == 0, "pipe");
    m_events = moveHigh(fds[0]);
    const int eventsWrite = moveHigh(fds[1]);
    try
    {
        m_output = moveHigh(memfd_create("zqtest-output", MFD_CLOEXEC));
        spawn(argv, eventsWrite);
    }
    catch (...)
    {
        for (int fd : {eventsWrite, m_events, m_output})
            if (fd >= 0)
                close(fd);
        throw;
    }
    close(eventsWrite);
    fcntl(m_events, F_SETFL, O_NONBLOCK);
    // Linux 5.3 and later; without it the supervisor polls briefly and asks HasExited.
    m_exit = static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0));
}

ZqTestChildProcess::~ZqTestChildProcess()
{
    if (!m_reaped && m_pid > 0)
    {
        killpg(m_pid, SIGKILL);
        int status = 0;
        waitForExit(m_pid, status);
    }
    for (int fd : {m_events, m_output, m_exit})
        if (fd >= 0)
            close(fd);
}

void ZqTestChildProcess::spawn(const std::vector<std::string>& argv, int eventsWrite)
{
    std::vector<char*> pointers;
    for (const std::string& arg : argv)
        pointers.push_back(const_cast<char*>(arg.c_str()));
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, m_output, 1);
    posix_spawn_file_actions_adddup2(&actions, m_output, 2);
    posix_spawn_file_actions_adddup2(&actions, eventsWrite, kEventDescriptor);
    // A group of its own: the runner can end the child with everything it started, and a Ctrl-C at
    // the terminal reaches the runner alone, which then stops the children itself.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    const int error = posix_spawn(&m_pid, argv[0].c_str(), &actions, &attributes, pointers.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::runtime_error("cannot start " + argv[0] + ": " + std::strerror(error));
}

void ZqTestChildProcess::OnPhase(EZqTestPhase phase)
{
    touch();
    m_run.OnPhase(phase);
}

void ZqTestChildProcess::OnSubtestStart(unsigned index, const std::string& name)
{
    touch();
    m_run.OnSubtestStart(index, name);
}

void ZqTestChildProcess::OnMessage(int type, const std::string& text)
{
    m_run.OnMessage(type, text);
}

void ZqTestChildProcess::OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                                      const std::string& failure)
{
    touch();
    m_run.OnSubtestEnd(index, status, outcome, seconds, failure);
}

void ZqTestChildProcess::OnClassError(const std::string& text)
{
    m_run.OnClassError(text);
}

void ZqTestChildProcess::OnClassEnd()
{
    m_run.OnClassEnd();
}

void ZqTestChildProcess::touch()
{
    if (m_timeout > 0)
        m_deadline = Clock::now() +
                     std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(m_timeout));
}

std::optional<ZqTestChildProcess::Clock::time_point> ZqTestChildProcess::GetDeadline() const
{
    return m_timeout > 0 ? std::optional(m_deadline) : std::nullopt;
}

bool ZqTestChildProcess::readAvailable()
{
    char buffer[65536];
    for (;;)
    {
        const ssize_t n = read(m_events, buffer, sizeof buffer);
        if (n > 0)
            m_reader.Feed(buffer, static_cast<std::size_t>(n));
        else if (n < 0 && errno == EINTR)
            continue;
        else
            return n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    }
}

void ZqTestChildProcess::closeEvents()
{
    if (m_events >= 0)
        close(m_events);
    m_events = -1;
}

void ZqTestChildProcess::ReadEvents()
{
    if (m_events < 0)
        return;
    try
    {
        if (!readAvailable())
            closeEvents();
    }
    catch (const std::exception& e)
    {
        closeEvents();
        End(EZqTestStatus::eCrashed,
            std::string("crashed: ended by the runner, its event stream was garbled (") + e.what() + ")");
    }
}

bool ZqTestChildProcess::HasExited() const
{
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == m_pid;
}

void ZqTestChildProcess::End(EZqTestStatus status, const std::string& why)
{
    if (m_groupKilled)
        return;
    m_leftovers = leftoverNote(groupMembers(m_pid));
    killpg(m_pid, SIGKILL);
    m_groupKilled = true;
    m_endStatus = status;
    m_endReason = why;
}

int ZqTestChildProcess::Reap()
{
    int status = 0;
    waitForExit(m_pid, status);
    m_reaped = true;
    // Everything the child sent is in the pipe now; a helper holding the pipe open cannot make this
    // wait, since the read does not block.
    ReadEvents();
    takeRemainingOutput();
    // A group outlives its leader while members are left; its id stays taken until then.
    if (!m_groupKilled && killpg(m_pid, 0) == 0)
    {
        m_leftovers = leftoverNote(groupMembers(m_pid));
        killpg(m_pid, SIGKILL);
    }
    return status;
}

void ZqTestChildProcess::takeOutput(std::uint64_t mark)
{
    std::string text;
    char buffer[65536];
    while (m_outputRead < mark)
    {
        const std::size_t want =
            static_cast<std::size_t>(std::min<std::uint64_t>(sizeof buffer, mark - m_outputRead));
        const ssize_t n = pread(m_output, buffer, want, static_cast<off_t>(m_outputRead));
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

void ZqTestChildProcess::takeRemainingOutput()
{
    struct stat info
    {
    };
    if (m_output >= 0 && fstat(m_output, &info) == 0)
        takeOutput(static_cast<std::uint64_t>(info.st_size));
}
