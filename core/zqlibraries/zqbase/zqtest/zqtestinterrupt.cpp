#include "zqbase/zqtest/zqtestinterrupt.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace
{
constexpr int kSignals[3] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_signal = 0;
int g_pipeWrite = -1;

void onSignal(int signal)
{
    const int savedErrno = errno;
    if (g_signal == 0)
        g_signal = signal;
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(g_pipeWrite, &byte, 1);
    errno = savedErrno;
}
} // namespace

ZqTestInterrupt::ZqTestInterrupt()
{
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::runtime_error(std::string("pipe: ") + std::strerror(errno));
    g_signal = 0;
    g_pipeWrite = m_pipe[1];
    struct sigaction action
    {
    };
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    // Interrupted system calls restart (console writes, waitpid); poll returns EINTR all the same.
    action.sa_flags = SA_RESTART | SA_RESETHAND;
    for (int i = 0; i < 3; ++i)
    {
        // A signal ignored from the start (nohup, a background job) stays ignored.
        sigaction(kSignals[i], nullptr, &m_previous[i]);
        if (m_previous[i].sa_handler != SIG_IGN)
            sigaction(kSignals[i], &action, nullptr);
    }
}

ZqTestInterrupt::~ZqTestInterrupt()
{
    for (int i = 0; i < 3; ++i)
        sigaction(kSignals[i], &m_previous[i], nullptr);
    g_pipeWrite = -1;
    close(m_pipe[0]);
    close(m_pipe[1]);
}

int ZqTestInterrupt::GetSignal() const
{
    return g_signal;
}

std::string ZqTestInterrupt::GetSignalName() const
{
    const char* name = sigabbrev_np(g_signal);
    return name ? std::string("SIG") + name : "signal " + std::to_string(g_signal);
}

void ZqTestInterrupt::Resend(int signal)
{
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}
