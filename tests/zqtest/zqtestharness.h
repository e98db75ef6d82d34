#pragma once

// Runs the built zqtest as a child process on the fixture module and reads back what it wrote.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace zqtest
{
inline const std::string kRunner = ZQ_BINARY_DIR "/zqtest";
inline const std::string kFixture = ZQ_BINARY_DIR "/libZqTestFixture.so";
inline const std::string kEmptyModule = ZQ_BINARY_DIR "/libZqTestEmptyModule.so";

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

// Runs "env... zqtest args..." with stdout and stderr together.
inline SResult RunZqTest(const std::vector<std::string>& args, const std::string& environment = "")
{
    std::string command = environment;
    command.append(" ").append(Quote(kRunner));
    for (const std::string& arg : args)
        command.append(" ").append(Quote(arg));
    command += " 2>&1";
    SResult result;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        result.output.append(buffer, n);
    const int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
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
