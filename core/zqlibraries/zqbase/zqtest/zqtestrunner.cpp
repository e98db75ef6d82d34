#include "zqbase/zqtest/zqtestrunner.h"

#include "zqbase/cbtimer.h"
#include "zqbase/zqtest/zqtestcatalog.h"
#include "zqbase/zqtest/zqtestchild.h"
#include "zqbase/zqtest/zqtestclassrun.h"
#include "zqbase/zqtest/zqtestconsole.h"
#include "zqbase/zqtest/zqtestdebugimages.h"
#include "zqbase/zqtest/zqtestfilter.h"
#include "zqbase/zqtest/zqtestinterrupt.h"
#include "zqbase/zqtest/zqtestlisting.h"
#include "zqbase/zqtest/zqtestoptions.h"
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

// A class's record with its selected subtests in run order, all pending.
ZqClassRecord pendingRecord(const ZqTestSelection& entry, int iteration)
{
    ZqClassRecord record;
    record.name = entry.info->name;
    record.parents = entry.info->parents;
    record.iteration = iteration;
    for (unsigned index : entry.indices)
    {
        ZqSubtestRecord subtest;
        subtest.index = index;
        subtest.name = entry.info->subtests[index];
        record.subtests.push_back(std::move(subtest));
    }
    return record;
}

class CRunner
{
public:
    CRunner(ZqTestOptions options, std::string program)
        : m_options(std::move(options)), m_program(std::move(program))
    {
    }

    int Run();
    // The signal that stopped the run, 0 when none did.
    int GetInterruptSignal() const { return m_interruptSignal; }

private:
    void checkDataDirectory() const;
    std::vector<ZqTestSelection> select(bool forListing) const;
    int list(const std::vector<ZqTestSelection>& selection) const;
    using EEnd = ZqTestSupervisor::EEnd;
    // What every class of one iteration runs with.
    struct SIterationContext
    {
        ZqTestConsole& console;
        const std::string& scratch;
        const ZqTestInterrupt& interrupt;
    };

    int run(const std::vector<ZqTestSelection>& selection);
    void prepareEnvironment();
    ZqTestConsole::SSettings consoleSettings() const;
    EEnd runIteration(std::vector<ZqTestSelection> selection, int iteration, std::uint32_t seed,
                      const SIterationContext& context, std::vector<ZqClassRecord>& records);
    EEnd runIsolated(const std::vector<ZqTestClassRun*>& runs, const SIterationContext& context) const;
    EEnd runInProcess(const std::vector<ZqTestClassRun*>& runs, const SIterationContext& context) const;
    std::vector<std::string> childArguments() const;
    std::string replayCommand() const;
    void writeReports(const ZqRunRecord& run) const;
    void writeDebugImagePage(const ZqRunRecord& run) const;

    ZqTestOptions m_options;
    std::string m_program;
    bool m_defaultModule = false;
    ZqTestCatalog m_catalog;
    int m_interruptSignal = 0;
};

void CRunner::checkDataDirectory() const
{
    if (!m_options.dataDirectory)
        return;
    const std::string& path = *m_options.dataDirectory;
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        throw ZqTestUsageError("data directory '" + path + "' does not exist");
    if (!std::filesystem::is_directory(path, error))
        throw ZqTestUsageError("data directory '" + path + "' is not a directory");
}

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
        for (const std::string& warning : m_catalog.GetWarnings())
            std::fprintf(stderr, "zqtest: warning: %s\n", warning.c_str());
        m_catalog.ReadSubtests();
        checkDataDirectory();
        if (!m_options.shardStatusFile.empty())
            std::ofstream(m_options.shardStatusFile).flush();
        if (m_options.list)
            return list(select(true));
        return run(select(false));
    }
    catch (const std::exception& e)
    {
        printError(e.what());
        return 2;
    }
}

std::vector<ZqTestSelection> CRunner::select(bool forListing) const
{
    const ZqTestFilter filter(m_options.filter);
    std::vector<ZqTestSelection> selection;
    unsigned counter = 0;
    bool matched = false;
    auto inShard = [&] { return forListing || counter++ % m_options.shardCount == m_options.shardIndex; };
    for (const ZqTestClassInfo& info : m_catalog.GetClasses())
    {
        ZqTestSelection entry{&info, {}};
        // A class whose subtests could not be read runs as a failure of its own when it is selected.
        bool broken = !info.error.empty() && filter.Matches(info.name, 0, "");
        if (broken)
        {
            matched = true;
            broken = inShard();
        }
        for (unsigned i = 0; i < info.subtests.size(); ++i)
        {
            if (!filter.Matches(info.name, i, info.subtests[i]))
                continue;
            matched = true;
            if (inShard())
                entry.indices.push_back(i);
        }
        // A test without subtests is listed all the same; there is nothing of it to run.
        const bool empty =
            forListing && info.error.empty() && info.subtests.empty() && filter.MatchesClass(info.name);
        if (!entry.indices.empty() || broken || empty)
            selection.push_back(std::move(entry));
        matched = matched || empty;
    }
    if (!matched)
        throw ZqTestUsageError(m_options.filterGiven ? "filter '" + m_options.filter + "' matches no subtest"
                                                     : std::string("the modules have no subtests"));
    return selection;
}

int CRunner::list(const std::vector<ZqTestSelection>& selection) const
{
    if (m_options.json)
    {
        const std::string out = ZqTestListing::ToJson(selection);
        if (*m_options.json == "-")
            std::fputs(out.c_str(), stdout);
        else
            ZqTestReports::WriteFileAtomically(*m_options.json, out);
        return 0;
    }
    for (const ZqTestSelection& entry : selection)
        if (!entry.info->error.empty())
            std::fprintf(stderr, "zqtest: warning: %s: %s\n", entry.info->name.c_str(),
                         entry.info->error.c_str());
    const std::string out =
        m_options.listGoogleTest ? ZqTestListing::ToGoogleTest(selection) : ZqTestListing::ToText(selection);
    std::fputs(out.c_str(), stdout);
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
    args.insert(args.end(), m_catalog.GetModules().begin(), m_catalog.GetModules().end());
    return args;
}

std::string CRunner::replayCommand() const
{
    std::string command = ZqShellQuote(m_program);
    if (!m_defaultModule)
        for (const std::string& module : m_catalog.GetModules())
            command.append(" ").append(ZqShellQuote(module));
    if (m_options.dataDirectory)
        command += " --data-dir " + ZqShellQuote(*m_options.dataDirectory);
    return command;
}

void CRunner::prepareEnvironment()
{
    if (m_options.jobs == 0)
        m_options.jobs = std::max(1u, std::thread::hardware_concurrency());
    if (m_options.dataDirectory)
        ZqTestEnvironment::SetDataRoot(*m_options.dataDirectory);
    if (m_options.randomSeed)
        ZqTestEnvironment::SetReplaySeed(m_options.randomSeed);
    ZqTestEnvironment::SetDebugOutputEnabled(m_options.debugImages);
}

ZqTestConsole::SSettings CRunner::consoleSettings() const
{
    ZqTestConsole::SSettings settings;
    const char* term = std::getenv("TERM");
    settings.color = m_options.color == ZqTestOptions::EColor::eYes ||
                     (m_options.color == ZqTestOptions::EColor::eAuto && isatty(STDOUT_FILENO) && term &&
                      std::string(term) != "dumb");
    settings.brief = m_options.brief;
    settings.verbose = m_options.verbose || m_options.recreate;
    settings.live = !m_options.brief && (m_options.inProcess || m_options.jobs == 1);
    settings.replayCommand = replayCommand();
    return settings;
}

int CRunner::run(const std::vector<ZqTestSelection>& selection)
{
    prepareEnvironment();
    const ZqTestInterrupt interrupt;
    const CScratch scratch;

    ZqRunRecord run;
    run.startMilliseconds = nowMilliseconds();
    // GoogleTest's range for seeds taken from the clock.
    run.seed =
        m_options.seed ? m_options.seed : static_cast<std::uint32_t>(run.startMilliseconds % 99999 + 1);
    run.iterations = m_options.repeat;
    ZqTestConsole console(stdout, consoleSettings());

    const CbTimer timer;
    for (int iteration = 1; iteration <= m_options.repeat; ++iteration)
    {
        std::vector<ZqClassRecord> records;
        const EEnd end =
            runIteration(selection, iteration, run.seed + static_cast<std::uint32_t>(iteration - 1),
                         {console, scratch.Path(), interrupt}, records);
        for (ZqClassRecord& record : records)
            run.classes.push_back(std::move(record));
        if (end != EEnd::eCompleted)
            break;
    }
    run.seconds = timer.GetElapsedSeconds();
    m_interruptSignal = interrupt.GetSignal();
    if (m_interruptSignal)
        std::fprintf(stderr,
                     "zqtest: interrupted by %s: the children were stopped, the rest is reported skipped\n",
                     interrupt.GetSignalName().c_str());
    if (m_options.debugImages)
        writeDebugImagePage(run);
    console.RunEnd(run);
    writeReports(run);
    return run.Count().failed || m_interruptSignal ? 1 : 0;
}

CRunner::EEnd CRunner::runIteration(std::vector<ZqTestSelection> selection, int iteration, std::uint32_t seed,
                                    const SIterationContext& context, std::vector<ZqClassRecord>& records)
{
    if (m_options.shuffle)
    {
        std::mt19937 generator(seed);
        std::shuffle(selection.begin(), selection.end(), generator);
        for (ZqTestSelection& entry : selection)
            std::shuffle(entry.indices.begin(), entry.indices.end(), generator);
    }
    unsigned subtests = 0;
    for (const ZqTestSelection& entry : selection)
    {
        records.push_back(pendingRecord(entry, iteration));
        subtests += static_cast<unsigned>(entry.indices.size());
    }
    context.console.RunStart(subtests, static_cast<unsigned>(selection.size()),
                             m_options.shuffle ? std::optional<std::uint32_t>(seed) : std::nullopt, iteration,
                             m_options.repeat);

    std::vector<std::unique_ptr<ZqTestClassRun>> runs;
    std::vector<ZqTestClassRun*> runnable;
    for (std::size_t i = 0; i < selection.size(); ++i)
    {
        runs.push_back(std::make_unique<ZqTestClassRun>(records[i], context.console));
        if (selection[i].info->error.empty())
        {
            runnable.push_back(runs.back().get());
            continue;
        }
        runs.back()->OnPhase(EZqTestPhase::eInit);
        records[i].error = selection[i].info->error;
        runs.back()->Finish();
    }
    // A class whose subtests could not even be read has failed before anything ran.
    if (m_options.failFast && runnable.size() < selection.size())
    {
        for (ZqTestClassRun* run : runnable)
            run->Finish();
        return EEnd::eFailedFast;
    }
    return m_options.inProcess ? runInProcess(runnable, context) : runIsolated(runnable, context);
}

CRunner::EEnd CRunner::runIsolated(const std::vector<ZqTestClassRun*>& runs,
                                   const SIterationContext& context) const
{
    ZqTestSupervisor::SSettings settings;
    std::error_code error;
    settings.program = std::filesystem::read_symlink("/proc/self/exe", error).string();
    settings.arguments = childArguments();
    settings.scratch = context.scratch;
    settings.jobs = m_options.jobs;
    settings.timeoutSeconds = m_options.timeoutSeconds;
    settings.failFast = m_options.failFast;
    settings.interrupt = &context.interrupt;
    return ZqTestSupervisor(settings).Run(runs);
}

// No protection here: a crash, a hang or an exit of a test ends or blocks the runner itself. A
// signal stops the run after the subtest that is running.
CRunner::EEnd CRunner::runInProcess(const std::vector<ZqTestClassRun*>& runs,
                                    const SIterationContext& context) const
{
    EEnd end = EEnd::eCompleted;
    ZqTestExecutor::SSettings settings;
    settings.recreate = m_options.recreate;
    settings.failFast = m_options.failFast;
    settings.stop = [&context] { return context.interrupt.GetSignal() != 0; };
    for (ZqTestClassRun* classRun : runs)
    {
        const std::string& name = classRun->GetRecord().name;
        if (end == EEnd::eCompleted && !settings.stop())
        {
            const std::string directory = context.scratch + "/" + name;
            std::filesystem::create_directories(directory);
            ZqTestEnvironment::SetScratchDirectory(directory);
            ZqTestExecutor::Run(name, classRun->GetPendingIndices(), settings, *classRun);
        }
        classRun->Finish();
        if (m_options.failFast && classRun->HasFailure())
            end = EEnd::eFailedFast;
    }
    return settings.stop() ? EEnd::eInterrupted : end;
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

// The page of the failing views' debug images, in the working directory, linked from the console.
void CRunner::writeDebugImagePage(const ZqRunRecord& run) const
{
    const std::vector<ZqTestDebugImages::SView> views = ZqTestDebugImages::Collect(run);
    if (views.empty())
        return;
    try
    {
        ZqTestReports::WriteFileAtomically(ZqTestDebugImages::kFileName, ZqTestDebugImages::ToHtml(views));
        std::printf("Debug-Bilder: %zu %s, %s\n", views.size(), views.size() == 1 ? "View" : "Views",
                    ZqTestDebugImages::FileUri(ZqTestDebugImages::kFileName).c_str());
    }
    catch (const std::exception& e)
    {
        printError(e.what());
    }
}

} // namespace

int ZqTestRunner::Main(int argc, char** argv, const char* defaultModule)
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
            return ZqTestChild::Main(options);
    }
    catch (const std::exception& e)
    {
        printError(e.what());
        return 2;
    }
    if (options.modules.empty() && defaultModule)
        options.modules.push_back(defaultModule);
    int status = 0;
    int signal = 0;
    {
        CRunner runner(std::move(options), argc > 0 ? argv[0] : "zqtest");
        status = runner.Run();
        signal = runner.GetInterruptSignal();
    }
    // Everything is written and removed: end the way the signal would have ended us, so that a
    // shell or a test driver sees it.
    if (signal)
    {
        std::fflush(nullptr);
        ZqTestInterrupt::Resend(signal);
    }
    return status;
}
