#include "zqbase/zqtest/zqtestoptions.h"

#include <cerrno>
#include <cstdlib>

namespace
{
[[noreturn]] void fail(const std::string& text)
{
    throw ZqTestUsageError(text);
}

std::uint64_t parseUnsigned(const std::string& text, const std::string& what, std::uint64_t max)
{
    if (text.empty() || text[0] == '-' || text[0] == '+')
        fail(what + " expects a number, not '" + text + "'");
    char* end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(text.c_str(), &end, 10);
    if (errno != 0 || *end != 0 || value > max)
        fail(what + " expects a number up to " + std::to_string(max) + ", not '" + text + "'");
    return value;
}

bool parseBool(const std::string& text, const std::string& what)
{
    if (text.empty() || text == "1" || text == "yes" || text == "true")
        return true;
    if (text == "0" || text == "no" || text == "false")
        return false;
    fail(what + " expects 0 or 1, not '" + text + "'");
}

ZqTestOptions::EColor parseColor(const std::string& text, const std::string& what)
{
    if (text.empty() || text == "yes" || text == "true" || text == "always" || text == "1")
        return ZqTestOptions::EColor::eYes;
    if (text == "no" || text == "false" || text == "never" || text == "0")
        return ZqTestOptions::EColor::eNo;
    if (text == "auto")
        return ZqTestOptions::EColor::eAuto;
    fail(what + " expects yes, no or auto, not '" + text + "'");
}

// GoogleTest's output flag: json[:FILE] or xml[:FILE]; a FILE ending in '/' is a directory.
void parseGoogleTestOutput(ZqTestOptions& options, const std::string& text)
{
    const std::size_t colon = text.find(':');
    const std::string kind = text.substr(0, colon);
    std::string path = colon == std::string::npos ? "" : text.substr(colon + 1);
    if (kind != "json" && kind != "xml")
        fail("unsupported output format '" + kind + "' (json or xml)");
    if (path.empty())
        path = "test_detail." + kind;
    else if (path.back() == '/')
        path += "zqtest." + kind;
    (kind == "json" ? options.googleTestJson : options.junit) = path;
}

void parseShard(ZqTestOptions& options, const std::string& text)
{
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos)
        fail("--shard expects I/N, not '" + text + "'");
    options.shardIndex = static_cast<unsigned>(parseUnsigned(text.substr(0, slash), "--shard", 1u << 30));
    options.shardCount = static_cast<unsigned>(parseUnsigned(text.substr(slash + 1), "--shard", 1u << 30));
}

void checkShard(const ZqTestOptions& options)
{
    if (options.shardCount == 0 || options.shardIndex >= options.shardCount)
        fail("shard index " + std::to_string(options.shardIndex) + " is not below the shard count " +
             std::to_string(options.shardCount));
}

std::vector<unsigned> parseIndices(const std::string& text)
{
    std::vector<unsigned> indices;
    std::size_t start = 0;
    while (start < text.size())
    {
        std::size_t end = text.find(',', start);
        if (end == std::string::npos)
            end = text.size();
        indices.push_back(
            static_cast<unsigned>(parseUnsigned(text.substr(start, end - start), "indices", ~0u)));
        start = end + 1;
    }
    return indices;
}

void applyEnvironment(ZqTestOptions& options, const std::function<const char*(const char*)>& getEnv)
{
    auto get = [&](const char* name) -> std::optional<std::string>
    {
        const char* value = getEnv(name);
        if (!value || !*value)
            return std::nullopt;
        return std::string(value);
    };
    if (auto v = get("GTEST_FILTER"))
    {
        options.filter = *v;
        options.filterGiven = true;
    }
    if (auto v = get("GTEST_OUTPUT"))
        parseGoogleTestOutput(options, *v);
    if (auto v = get("GTEST_REPEAT"))
        options.repeat = static_cast<int>(parseUnsigned(*v, "GTEST_REPEAT", 1000000));
    if (auto v = get("GTEST_SHUFFLE"))
        options.shuffle = parseBool(*v, "GTEST_SHUFFLE");
    if (auto v = get("GTEST_RANDOM_SEED"))
        options.seed = static_cast<std::uint32_t>(parseUnsigned(*v, "GTEST_RANDOM_SEED", UINT32_MAX));
    if (auto v = get("GTEST_FAIL_FAST"))
        options.failFast = parseBool(*v, "GTEST_FAIL_FAST");
    if (auto v = get("GTEST_COLOR"))
        options.color = parseColor(*v, "GTEST_COLOR");
    if (auto v = get("GTEST_BRIEF"))
        options.brief = parseBool(*v, "GTEST_BRIEF");
    // GoogleTest's variables first, Bazel's TEST_* forms where those are missing.
    for (const char* prefix : {"GTEST_", "TEST_"})
    {
        auto total = get((std::string(prefix) + "TOTAL_SHARDS").c_str());
        auto index = get((std::string(prefix) + "SHARD_INDEX").c_str());
        if (total && index && options.shardCount == 1)
        {
            options.shardCount =
                static_cast<unsigned>(parseUnsigned(*total, std::string(prefix) + "TOTAL_SHARDS", 1u << 30));
            options.shardIndex =
                static_cast<unsigned>(parseUnsigned(*index, std::string(prefix) + "SHARD_INDEX", 1u << 30));
        }
        else if (total.has_value() != index.has_value())
            fail(std::string(prefix) + "TOTAL_SHARDS and " + prefix + "SHARD_INDEX must be set together");
        if (auto status = get((std::string(prefix) + "SHARD_STATUS_FILE").c_str());
            status && options.shardStatusFile.empty())
            options.shardStatusFile = *status;
    }
    if (auto v = get("TEST_PREMATURE_EXIT_FILE"))
        options.prematureExitFile = *v;
}

// One command-line option: its name, and a value from "--name=value" or from the next argument.
class CArguments
{
public:
    explicit CArguments(const std::vector<std::string>& arguments) : m_arguments(arguments) {}

    bool Next()
    {
        if (m_next >= m_arguments.size())
            return false;
        const std::string& argument = m_arguments[m_next++];
        const std::size_t equals = argument.find('=');
        const bool isOption = argument.size() > 1 && argument[0] == '-';
        m_name = isOption ? argument.substr(0, equals) : argument;
        m_inlineValue = isOption && equals != std::string::npos ? std::optional(argument.substr(equals + 1))
                                                                : std::nullopt;
        m_isOption = isOption;
        return true;
    }
    const std::string& Name() const { return m_name; }
    bool IsOption() const { return m_isOption; }
    bool HasInlineValue() const { return m_inlineValue.has_value(); }
    // The value of an option that takes one.
    std::string Value()
    {
        if (m_inlineValue)
            return *m_inlineValue;
        if (m_next >= m_arguments.size())
            fail("option " + m_name + " expects a value");
        return m_arguments[m_next++];
    }
    // The value of a flag that may carry one ("--gtest_shuffle=0"); empty when none is given.
    std::string FlagValue() const { return m_inlineValue.value_or(""); }
    void NoValue() const
    {
        if (m_inlineValue)
            fail("option " + m_name + " takes no value");
    }

private:
    const std::vector<std::string>& m_arguments;
    std::size_t m_next = 0;
    std::string m_name;
    std::optional<std::string> m_inlineValue;
    bool m_isOption = false;
};

bool applyGoogleTestOption(ZqTestOptions& options, CArguments& args)
{
    const std::string& name = args.Name();
    if (name == "--gtest_list_tests")
        options.list = options.listGoogleTest = parseBool(args.FlagValue(), name);
    else if (name == "--gtest_filter")
    {
        options.filter = args.Value();
        options.filterGiven = true;
    }
    else if (name == "--gtest_output")
        parseGoogleTestOutput(options, args.Value());
    else if (name == "--gtest_repeat")
        options.repeat = static_cast<int>(parseUnsigned(args.Value(), name, 1000000));
    else if (name == "--gtest_shuffle")
        options.shuffle = parseBool(args.FlagValue(), name);
    else if (name == "--gtest_random_seed")
        options.seed = static_cast<std::uint32_t>(parseUnsigned(args.Value(), name, UINT32_MAX));
    else if (name == "--gtest_fail_fast")
        options.failFast = parseBool(args.FlagValue(), name);
    else if (name == "--gtest_color")
        options.color = parseColor(args.FlagValue(), name);
    else if (name == "--gtest_brief")
        options.brief = parseBool(args.FlagValue(), name);
    else if (name == "--gtest_also_run_disabled_tests" || name == "--gtest_print_time")
        parseBool(args.FlagValue(), name); // no disabled tests here; times are always printed
    else
        return false;
    return true;
}

bool applyChildOption(ZqTestOptions& options, CArguments& args)
{
    const std::string& name = args.Name();
    if (name == "--child-class")
        options.childClass = args.Value();
    else if (name == "--child-indices")
        options.childIndices = parseIndices(args.Value());
    else if (name == "--child-scratch")
        options.childScratch = args.Value();
    else if (name == "--child-parent")
        options.childParent = static_cast<int>(parseUnsigned(args.Value(), name, INT32_MAX));
    else
        return false;
    return true;
}

template <bool ZqTestOptions::*member> void setFlag(ZqTestOptions& options, CArguments& args)
{
    args.NoValue();
    options.*member = true;
}

template <std::optional<std::string> ZqTestOptions::*member>
void setPath(ZqTestOptions& options, CArguments& args)
{
    options.*member = args.Value();
}

double parseSeconds(const std::string& text, const std::string& what)
{
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != 0 || !(seconds >= 0) || seconds > 1e6)
        fail(what + " expects seconds, not '" + text + "'");
    return seconds;
}

// Seeds are reported with %d, so a negative one is accepted as its 32-bit pattern.
std::uint32_t parseReplaySeed(const std::string& text, const std::string& what)
{
    const bool negative = !text.empty() && text[0] == '-';
    const std::uint64_t value =
        parseUnsigned(negative ? text.substr(1) : text, what, negative ? 0x80000000ull : UINT32_MAX);
    return static_cast<std::uint32_t>(negative ? 0x100000000ull - value : value);
}

struct SOwnOption
{
    const char* name;
    const char* shortName;
    void (*apply)(ZqTestOptions&, CArguments&);
};

const SOwnOption kOwnOptions[] = {
    {"--help", "-h", setFlag<&ZqTestOptions::help>},
    {"--list", nullptr, setFlag<&ZqTestOptions::list>},
    {"--filter", nullptr,
     [](ZqTestOptions& o, CArguments& a)
     {
         o.filter = a.Value();
         o.filterGiven = true;
     }},
    {"--json", nullptr, setPath<&ZqTestOptions::json>},
    {"--junit", nullptr, setPath<&ZqTestOptions::junit>},
    {"--repeat", nullptr,
     [](ZqTestOptions& o, CArguments& a)
     { o.repeat = static_cast<int>(parseUnsigned(a.Value(), a.Name(), 1000000)); }},
    {"--shuffle", nullptr, setFlag<&ZqTestOptions::shuffle>},
    {"--seed", nullptr,
     [](ZqTestOptions& o, CArguments& a)
     { o.seed = static_cast<std::uint32_t>(parseUnsigned(a.Value(), a.Name(), UINT32_MAX)); }},
    {"--shard", nullptr, [](ZqTestOptions& o, CArguments& a) { parseShard(o, a.Value()); }},
    {"--fail-fast", nullptr, setFlag<&ZqTestOptions::failFast>},
    {"--color", nullptr,
     [](ZqTestOptions& o, CArguments& a)
     { o.color = a.HasInlineValue() ? parseColor(a.FlagValue(), a.Name()) : ZqTestOptions::EColor::eYes; }},
    {"--brief", nullptr, setFlag<&ZqTestOptions::brief>},
    {"--verbose", "-v", setFlag<&ZqTestOptions::verbose>},
    {"--jobs", "-j",
     [](ZqTestOptions& o, CArguments& a)
     { o.jobs = static_cast<unsigned>(parseUnsigned(a.Value(), a.Name(), 4096)); }},
    {"--in-process", nullptr, setFlag<&ZqTestOptions::inProcess>},
    {"--timeout", nullptr,
     [](ZqTestOptions& o, CArguments& a) { o.timeoutSeconds = parseSeconds(a.Value(), a.Name()); }},
    {"--recreate", nullptr, setFlag<&ZqTestOptions::recreate>},
    {"--data-dir", nullptr, setPath<&ZqTestOptions::dataDirectory>},
    {"--random-seed", nullptr,
     [](ZqTestOptions& o, CArguments& a) { o.randomSeed = parseReplaySeed(a.Value(), a.Name()); }},
    {"--debug-images", nullptr, setFlag<&ZqTestOptions::debugImages>},
};

bool applyOwnOption(ZqTestOptions& options, CArguments& args)
{
    for (const SOwnOption& option : kOwnOptions)
        if (args.Name() == option.name || (option.shortName && args.Name() == option.shortName))
        {
            option.apply(options, args);
            return true;
        }
    return false;
}
} // namespace

ZqTestOptions ZqTestOptions::Parse(const std::vector<std::string>& arguments,
                                   const std::function<const char*(const char*)>& getEnv)
{
    ZqTestOptions options;
    applyEnvironment(options, getEnv);
    CArguments args(arguments);
    bool optionsEnded = false;
    while (args.Next())
    {
        if (!args.IsOption() || optionsEnded)
        {
            options.modules.push_back(args.Name());
            continue;
        }
        if (args.Name() == "--")
        {
            optionsEnded = true;
            continue;
        }
        if (!applyOwnOption(options, args) && !applyGoogleTestOption(options, args) &&
            !applyChildOption(options, args))
            fail("unknown option " + args.Name() + " (see --help)");
    }
    checkShard(options);
    if (options.repeat < 1)
        fail("--repeat expects a count of at least 1");
    if (options.json && *options.json == "-" && !options.list)
        fail("--json - (stdout) is only for the listing; give a file name to write results");
    return options;
}

const char* ZqTestOptions::GetUsage()
{
    return R"(usage: zqtest [options] [MODULE.so ...]
Runs the test classes registered by the modules (default: libZqUnitTests.so beside zqtest).

Selecting and listing
  --list                       list classes and subtests, run nothing (with --json FILE|-: as JSON)
  --gtest_list_tests           list as "Class." and "  Subtest" lines
  --filter P, --gtest_filter=P POS[:POS...][-NEG[:NEG...]], globs over Class, "Class.Subtest" or
                               "Class.#N"; a '-' inside a name is written '?'
  --shard I/N                  run shard I (0-based) of N; also GTEST_SHARD_INDEX/GTEST_TOTAL_SHARDS
  --repeat N, --gtest_repeat=N run the selection N times
  --shuffle, --gtest_shuffle   shuffle classes and subtests; --seed N / --gtest_random_seed=N
Running
  --jobs N, -j N               classes in N supervised child processes at once (default and 0: one
                               per core)
  --timeout SECONDS            a subtest running longer is killed and reported (default 300, 0: none)
  --in-process                 run everything in this process, one class after the other; no
                               protection from crashes, hangs or exits: not for CI
  --fail-fast                  stop at the first failure; the rest is reported skipped
  --recreate                   recreate the references of the selected subtests instead of running
  --data-dir DIR               root of the test data (else $ZQ_TEST_DATA)
  --random-seed N              seed for randomized subtests to replay (else $ZQ_RANDOM_SEED)
  --debug-images               failing image comparisons write their render and difference images
Reporting
  --verbose, -v                show information messages too (errors are always shown)
  --brief                      print only failures and the summary
  --color[=yes|no|auto]        colored console output (default auto)
  --json FILE                  results as JSON
  --junit FILE                 results as JUnit XML
  --gtest_output=json:FILE|xml:FILE   results in GoogleTest's JSON or XML shape
Exit status: 0 all passed, 1 a subtest failed, crashed or timed out, 2 bad usage or module.
SIGINT, SIGTERM and SIGHUP stop the children, write the reports and end zqtest by that signal.
)";
}
