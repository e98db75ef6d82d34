#pragma once

// Runs the built zqtest as a child process on the fixture module and reads back what it wrote.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace zqtest
{
inline const std::string kRunner = ZQ_BINARY_DIR "/zqtest";
inline const std::string kFixture = ZQ_BINARY_DIR "/libZqTestFixture.so";
inline const std::string kEmptyModule = ZQ_BINARY_DIR "/libZqTestEmptyModule.so";

extern "C" char** environ;

struct SResult
{
    int exitCode = -1;
    std::string output;

    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        std::istringstream in(output);
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }
    std::string LastLine() const
    {
        const std::vector<std::string> lines = Lines();
        return lines.empty() ? "" : lines.back();
    }
    bool Contains(const std::string& text) const { return output.find(text) != std::string::npos; }
};

inline std::string Quote(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Runs a shell command line with stdout and stderr together.
inline SResult RunShell(const std::string& command)
{
    SResult result;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        result.output.append(buffer, n);
    const int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

// Runs program args... with stdout and stderr together, after the variable settings in environment.
inline SResult RunProgram(const std::string& program, const std::vector<std::string>& args,
                          const std::string& environment = "")
{
    std::string command = environment;
    command.append(" ").append(Quote(program));
    for (const std::string& arg : args)
        command.append(" ").append(Quote(arg));
    return RunShell(command);
}

inline SResult RunZqTest(const std::vector<std::string>& args, const std::string& environment = "")
{
    return RunProgram(kRunner, args, environment);
}

inline std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

// A directory of its own for one test's report files.
class CTemporaryDirectory
{
public:
    CTemporaryDirectory()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zqtest-test-XXXXXX").string();
        m_path = mkdtemp(pattern.data()) ? pattern : "";
    }
    ~CTemporaryDirectory() { std::filesystem::remove_all(m_path); }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

// Polls condition until it holds or seconds have passed; returns whether it held.
inline bool WaitFor(const std::function<bool()>& condition, double seconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

// A process that exists and is not a zombie.
inline bool IsAlive(pid_t pid)
{
    std::string stat;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), stat);
    const std::size_t close = stat.rfind(')');
    return close != std::string::npos && close + 2 < stat.size() && stat[close + 2] != 'Z' &&
           stat[close + 2] != 'X';
}

// The pid a fixture subtest noted under role in directory (NotePid), once it is there.
inline pid_t AwaitPid(const std::string& directory, const std::string& role, double seconds = 10)
{
    const std::string path = directory + "/" + role;
    if (!WaitFor([&] { return std::filesystem::exists(path); }, seconds))
        return -1;
    return static_cast<pid_t>(std::stol(ReadFile(path)));
}

// The runner started in the background, stdout and stderr into a file, in a process group of its
// own (so that whatever it does to its group stays there). Killed if still running at the end.
class CBackgroundRun
{
public:
    CBackgroundRun(std::vector<std::string> args, const std::map<std::string, std::string>& environment,
                   const std::string& outputFile)
    {
        args.insert(args.begin(), kRunner);
        std::vector<char*> argv;
        for (std::string& arg : args)
            argv.push_back(arg.data());
        argv.push_back(nullptr);
        std::vector<std::string> variables;
        for (char** variable = environ; *variable; ++variable)
            variables.emplace_back(*variable);
        for (const auto& [name, value] : environment)
            variables.push_back(name + "=" + value);
        std::vector<char*> envp;
        for (std::string& variable : variables)
            envp.push_back(variable.data());
        envp.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&attributes, 0);
        if (posix_spawn(&m_pid, kRunner.c_str(), &actions, &attributes, argv.data(), envp.data()) != 0)
            m_pid = -1;
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    ~CBackgroundRun()
    {
        if (m_pid > 0 && !m_waited)
        {
            kill(m_pid, SIGKILL);
            Wait();
        }
    }
    CBackgroundRun(const CBackgroundRun&) = delete;
    CBackgroundRun& operator=(const CBackgroundRun&) = delete;

    pid_t Pid() const { return m_pid; }
    void Signal(int signal) const { kill(m_pid, signal); }
    // The wait status; kills the runner first when it has not ended within seconds.
    int Wait(double seconds = 30)
    {
        int status = 0;
        if (!WaitFor([&] { return waitpid(m_pid, &status, WNOHANG) == m_pid; }, seconds))
        {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, &status, 0);
        }
        m_waited = true;
        return status;
    }

private:
    pid_t m_pid = -1;
    bool m_waited = false;
};

// Subtest results of our own JSON report by "Class.#index".
inline std::map<std::string, nlohmann::json> SubtestsByName(const nlohmann::json& report)
{
    std::map<std::string, nlohmann::json> byName;
    for (const auto& test : report.at("tests"))
        for (const auto& subtest : test.at("subtests"))
            byName[test.at("class").get<std::string>() + ".#" +
                   std::to_string(subtest.at("index").get<int>())] = subtest;
    return byName;
}
} // namespace zqtest
