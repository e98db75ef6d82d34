#include "zqbase/zqtest/zqtestrunner.h"

#include "zqbase/cbtimer.h"
#include "zqbase/zqtest/zqtestcatalog.h"
#include "zqbase/zqtest/zqtestclassrun.h"
#include "zqbase/zqtest/zqtestconsole.h"
#include "zqbase/zqtest/zqtestfilter.h"
#include "zqbase/zqtest/zqtestoptions.h"
#include "zqbase/zqtest/zqtestprotocol.h"
#include "zqbase/zqtest/zqtestreports.h"
#include "zqbase/zqtest/zqtestsupervisor.h"
#include "zqbase/zqtestenvironment.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>
#include <unistd.h>

namespace
{
void printError(const std::string& text)
{
    std::fprintf(stderr, "zqtest: error: %s\n", text.c_str());
}

std::int64_t nowMilliseconds()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

// Exists while the runner runs, so that a harness can tell a premature exit from a finished run.
class CPrematureExitFile
{
public:
    explicit CPrematureExitFile(std::string path) : m_path(std::move(path))
    {
        if (!m_path.empty())
            std::ofstream(m_path).put('0');
    }
    ~CPrematureExitFile()
    {
        if (!m_path.empty())
            std::remove(m_path.c_str());
    }

private:
    std::string m_path;
};

// The run's scratch directory, removed at the end.
class CScratch
{
public:
    CScratch()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zqtest-run-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("cannot create a scratch directory " + pattern);
        m_path = pattern;
    }
    ~CScratch()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

struct SPlan
{
    const ZqTestClassInfo* info;
    std::vector<unsigned> indices;
};

// GoogleTest's listing is read back by tools that pass the names to --gtest_filter. Characters
// that would not survive that trip (':' and '-' split filters, " #" starts a comment for CMake's
// test discovery, surrounding blanks are trimmed) are written '?', which the filter matches.
std::string googleTestName(const std::string& name)
{
    std::string safe = name;
    for (char& c : safe)
        if (c == ':' || c == '-' || c == '#' || (static_cast<unsigned char>(c) < 0x20))
            c = '?';
    if (!safe.empty() && safe.front() == ' ')
        safe.front() = '?';
    if (!safe.empty() && safe.back() == ' ')
        safe.back() = '?';
    return safe.empty() ? "?" : safe;
}

class CRunner
{
public:
    CRunner(ZqTestOptions options, std::string program)
        : m_options(std::move(options)), m_program(std::move(program))
    {
    }

    int Run();

private:
    std::vector<SPlan> select(bool shard) const;
    int list(const std::vector<SPlan>& plans) const;
    int run(const std::vector<SPlan>& plans);
    bool runIteration(std::vector<SPlan> plans, int iteration, std::uint32_t seed, ZqTestConsole& console,
                      const std::string& scratch, std::vector<ZqClassRecord>& records);
    std::vector<std::string> childArguments() const;
    std::string replayCommand() const;
    void writeReports(const ZqRunRecord& run) const;

    ZqTestOptions m_options;
    std::string m_program;
    bool m_defaultModule = false;
    ZqTestCatalog m_catalog;
};

int CRunner::Run()
{
    CPrematureExitFile premature(m_options.prematureExitFile);
    try
    {
        if (m_options.modules.empty())
        {
            m_options.modules.push_back(ZqTestCatalog::GetDefaultModule());
            m_defaultModule = true;
        }
        for (const std::string& module : m_options.modules)
            m_catalog.LoadModule(module);
        m_catalog.ReadSubtests();
        if (m_options.dataDirectory && !std::filesystem::is_directory(*m_options.dataDirectory))
            throw ZqTestUsageError("data directory '" + *m_options.dataDirectory + "' does not exist");
        if (!m_options.shardStatusFile.empty())
            std::ofstream(m_options.shardStatusFile).flush();
        if (m_options.list)
            return list(select(false));
        return run(select(true));
    }
    catch (const std::exception& e)
    {
        printError(e.what());
        return 2;
    }
}

std::vector<SPlan> CRunner::select(bool shard) const
{
    const ZqTestFilter filter(m_options.filter);
    std::vector<SPlan> plans;
    unsigned counter = 0;
    bool matched = false;
    for (const ZqTestClassInfo& info : m_catalog.GetClasses())
    {
        SPlan plan{&info, {}};
        // A class whose subtests could not be read runs as a failure of its own when it is selected.
        bool broken = !info.error.empty() && filter.Matches(info.name, 0, "");
        if (broken)
        {
            matched = true;
            broken = !shard || counter++ % m_options.shardCount == m_options.shardIndex;
        }
        for (unsigned i = 0; i < info.subtests.size(); ++i)
        {
            if (!filter.Matches(info.name, i, info.subtests[i]))
                continue;
            matched = true;
            if (!shard || counter++ % m_options.shardCount == m_options.shardIndex)
                plan.indices.push_back(i);
        }
        if (!plan.indices.empty() || broken)
            plans.push_back(std::move(plan));
    }
    if (!matched)
        throw ZqTestUsageError(m_options.filterGiven ? "filter '" + m_options.filter + "' matches no subtest"
                                                     : std::string("the modules have no subtests"));
    return plans;
}

int CRunner::list(const std::vector<SPlan>& plans) const
{
    if (m_options.json)
    {
        std::string out = "{\"tests\": [";
        for (std::size_t p = 0; p < plans.size(); ++p)
        {
            const ZqTestClassInfo& info = *plans[p].info;
            out += std::string(p ? ",\n  " : "\n  ") + "{\"class\": " + ZqTestReports::JsonString(info.name) +
                   ", \"parents\": [";
            for (std::size_t i = 0; i < info.parents.size(); ++i)
                out += std::string(i ? ", " : "") + ZqTestReports::JsonString(info.parents[i]);
            out += "],\n   \"subtests\": [";
            for (std::size_t i = 0; i < plans[p].indices.size(); ++i)
            {
                const unsigned index = plans[p].indices[i];
                out += std::string(i ? ", " : "") + "{\"index\": " + std::to_string(index) +
                       ", \"name\": " + ZqTestReports::JsonString(info.subtests[index]) + "}";
            }
            out += "]";
            if (!info.error.empty())
                out += ", \"error\": " + ZqTestReports::JsonString(info.error);
            out += "}";
        }
        out += "]}\n";
        if (*m_options.json == "-")
            std::fputs(out.c_str(), stdout);
        else
            ZqTestReports::WriteFileAtomically(*m_options.json, out);
        return 0;
    }
    for (const SPlan& plan : plans)
    {
        if (!plan.info->error.empty())
            std::fprintf(stderr, "zqtest: warning: %s: %s\n", plan.info->name.c_str(),
                         plan.info->error.c_str());
        if (m_options.listGoogleTest)
        {
            std::printf("%s.\n", plan.info->name.c_str());
            for (unsigned index : plan.indices)
                std::printf("  %s\n", googleTestName(plan.info->subtests[index]).c_str());
            continue;
        }
        std::printf("%s (%zu %s)\n", plan.info->name.c_str(), plan.indices.size(),
                    plan.indices.size() == 1 ? "subtest" : "subtests");
        for (unsigned index : plan.indices)
            std::printf("  #%-3u %s\n", index, plan.info->subtests[index].c_str());
    }
    return 0;
}

std::vector<std::string> CRunner::childArguments() const
{
    std::vector<std::string> args;
    if (m_options.dataDirectory)
        args.push_back("--data-dir=" + *m_options.dataDirectory);
    if (m_options.randomSeed)
        args.push_back("--random-seed=" + std::to_string(*m_options.randomSeed));
    if (m_options.debugImages)
        args.push_back("--debug-images");
    if (m_options.recreate)
        args.push_back("--recreate");
    if (m_options.failFast)
        args.push_back("--fail-fast");
    args.push_back("--");
    args.insert(args.end(), m_options.modules.begin(), m_options.modules.end());
    return args;
}

std::string CRunner::replayCommand() const
{
    std::string command = ZqShellQuote(m_program);
    if (!m_defaultModule)
        for (const std::string& module : m_options.modules)
            command.append(" ").append(ZqShellQuote(module));
    if (m_options.dataDirectory)
        command += " --data-dir " + ZqShellQuote(*m_options.dataDirectory);
    return command;
}

int CRunner::run(const std::vector<SPlan>& plans)
{
    if (m_options.jobs == 0)
        m_options.jobs = std::max(1u, std::thread::hardware_concurrency());
    if (m_options.dataDirectory)
        ZqTestEnvironment::SetDataRoot(*m_options.dataDirectory);
    if (m_options.randomSeed)
        ZqTestEnvironment::SetReplaySeed(m_options.randomSeed);
    ZqTestEnvironment::SetDebugOutputEnabled(m_options.debugImages);
    const CScratch scratch;

    ZqRunRecord run;
    run.startMilliseconds = nowMilliseconds();
    // GoogleTest's range for seeds taken from the clock.
    run.seed =
        m_options.seed ? m_options.seed : static_cast<std::uint32_t>(run.startMilliseconds % 99999 + 1);
    run.iterations = m_options.repeat;

    ZqTestConsole::SSettings settings;
    const char* term = std::getenv("TERM");
    settings.color = m_options.color == ZqTestOptions::EColor::eYes ||
                     (m_options.color == ZqTestOptions::EColor::eAuto && isatty(STDOUT_FILENO) && term &&
                      std::string(term) != "dumb");
    settings.brief = m_options.brief;
    settings.verbose = m_options.verbose || m_options.recreate;
    settings.live = !m_options.brief && (m_options.inProcess || m_options.jobs == 1);
    settings.replayCommand = replayCommand();
    ZqTestConsole console(stdout, settings);

    const CbTimer timer;
    for (int iteration = 1; iteration <= m_options.repeat; ++iteration)
    {
        std::vector<ZqClassRecord> records;
        const bool finished =
            runIteration(plans, iteration, run.seed + static_cast<std::uint32_t>(iteration - 1), console,
                         scratch.Path(), records);
        for (ZqClassRecord& record : records)
            run.classes.push_back(std::move(record));
        if (!finished)
            break;
    }
    run.seconds = timer.GetElapsedSeconds();
    console.RunEnd(run);
    writeReports(run);
    return run.Count().failed ? 1 : 0;
}

bool CRunner::runIteration(std::vector<SPlan> plans, int iteration, std::uint32_t seed,
                           ZqTestConsole& console, const std::string& scratch,
                           std::vector<ZqClassRecord>& records)
{
    if (m_options.shuffle)
    {
        std::mt19937 generator(seed);
        std::shuffle(plans.begin(), plans.end(), generator);
        for (SPlan& plan : plans)
            std::shuffle(plan.indices.begin(), plan.indices.end(), generator);
    }
    unsigned subtests = 0;
    records.resize(plans.size());
    for (std::size_t i = 0; i < plans.size(); ++i)
    {
        const ZqTestClassInfo& info = *plans[i].info;
        ZqClassRecord& record = records[i];
        record.name = info.name;
        record.parents = info.parents;
        record.iteration = iteration;
        for (unsigned index : plans[i].indices)
        {
            ZqSubtestRecord subtest;
            subtest.index = index;
            subtest.name = info.subtests[index];
            record.subtests.push_back(std::move(subtest));
        }
        subtests += static_cast<unsigned>(plans[i].indices.size());
    }
    console.RunStart(subtests, static_cast<unsigned>(plans.size()),
                     m_options.shuffle ? std::optional<std::uint32_t>(seed) : std::nullopt, iteration,
                     m_options.repeat);

    std::vector<std::unique_ptr<ZqTestClassRun>> runs;
    std::vector<ZqTestClassRun*> isolated;
    for (std::size_t i = 0; i < plans.size(); ++i)
    {
        runs.push_back(std::make_unique<ZqTestClassRun>(records[i], console));
        if (!plans[i].info->error.empty())
        {
            runs.back()->OnPhase(EZqTestPhase::eInit);
            records[i].error = plans[i].info->error;
            runs.back()->Finish();
        }
        else
            isolated.push_back(runs.back().get());
    }

    if (!m_options.inProcess)
    {
        ZqTestSupervisor::SSettings settings;
        std::error_code error;
        settings.program = std::filesystem::read_symlink("/proc/self/exe", error).string();
        settings.arguments = childArguments();
        settings.scratch = scratch;
        settings.jobs = m_options.jobs;
        settings.timeoutSeconds = m_options.timeoutSeconds;
        settings.failFast = m_options.failFast;
        return ZqTestSupervisor(settings).Run(isolated);
    }

    bool stopped = false;
    for (ZqTestClassRun* classRun : isolated)
    {
        const std::string& name = classRun->GetRecord().name;
        if (!stopped)
        {
            const std::string directory = scratch + "/" + name;
            std::filesystem::create_directories(directory);
            ZqTestEnvironment::SetScratchDirectory(directory);
            ZqTestExecutor::Run(name, classRun->GetPendingIndices(), {m_options.recreate, m_options.failFast},
                                *classRun);
        }
        classRun->Finish();
        stopped = stopped || (m_options.failFast && classRun->HasFailure());
    }
    return !stopped;
}

void CRunner::writeReports(const ZqRunRecord& run) const
{
    if (m_options.json)
        ZqTestReports::WriteFileAtomically(*m_options.json, ZqTestReports::ToJson(run));
    if (m_options.googleTestJson)
        ZqTestReports::WriteFileAtomically(*m_options.googleTestJson, ZqTestReports::ToGoogleTestJson(run));
    if (m_options.junit)
        ZqTestReports::WriteFileAtomically(*m_options.junit, ZqTestReports::ToJUnitXml(run));
}

// The child side of an isolated run: one class, the given subtests, events on descriptor 3.
int runChild(const ZqTestOptions& options)
{
    ZqTestCatalog catalog;
    for (const std::string& module : options.modules)
        catalog.LoadModule(module);
    if (options.dataDirectory)
        ZqTestEnvironment::SetDataRoot(*options.dataDirectory);
    if (options.randomSeed)
        ZqTestEnvironment::SetReplaySeed(options.randomSeed);
    ZqTestEnvironment::SetDebugOutputEnabled(options.debugImages);
    if (!options.childScratch.empty())
    {
        std::filesystem::create_directories(options.childScratch);
        ZqTestEnvironment::SetScratchDirectory(options.childScratch);
    }
    ZqTestEventWriter writer(3);
    ZqTestExecutor::Run(options.childClass, options.childIndices, {options.recreate, options.failFast},
                        writer);
    return 0;
}
} // namespace

int ZqTestRunner::Main(int argc, char** argv)
{
    ZqTestOptions options;
    try
    {
        options = ZqTestOptions::Parse(std::vector<std::string>(argv + 1, argv + argc),
                                       [](const char* name) { return std::getenv(name); });
        if (options.help)
        {
            std::fputs(ZqTestOptions::GetUsage(), stdout);
            return 0;
        }
        if (options.IsChild())
            return runChild(options);
    }
    catch (const std::exception& e)
    {
        printError(e.what());
        return 2;
    }
    return CRunner(std::move(options), argc > 0 ? argv[0] : "zqtest").Run();
}
