#pragma once

#include "zqbase/zqbase_export.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// Bad command line or environment; the runner prints it as one line and exits with 2.
class ZQBASE_API ZqTestUsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The runner's settings from its command line and the GTEST_* / TEST_* variables. Options given on
// the command line win over variables. See docs/runner.md for every option.
struct ZQBASE_API ZqTestOptions
{
    enum class EColor
    {
        eAuto,
        eYes,
        eNo,
    };

    std::vector<std::string> modules;

    bool help = false;
    bool list = false;
    // --gtest_list_tests: "Class." and "  Subtest" lines.
    bool listGoogleTest = false;

    std::string filter = "*";
    bool filterGiven = false;

    // Report files; "-" for the JSON listing means stdout.
    std::optional<std::string> json;
    std::optional<std::string> junit;
    std::optional<std::string> googleTestJson;

    int repeat = 1;
    bool shuffle = false;
    // 0: derive one from the clock.
    std::uint32_t seed = 0;

    unsigned shardIndex = 0;
    unsigned shardCount = 1;
    std::string shardStatusFile;
    std::string prematureExitFile;

    bool failFast = false;
    EColor color = EColor::eAuto;
    bool brief = false;
    bool verbose = false;

    // 0: one per core.
    unsigned jobs = 0;
    bool inProcess = false;
    // Per subtest; 0 disables the limit.
    double timeoutSeconds = 300;

    bool recreate = false;
    std::optional<std::string> dataDirectory;
    std::optional<std::uint32_t> randomSeed;
    bool debugImages = false;

    // Set in the child processes of an isolated run.
    std::string childClass;
    std::vector<unsigned> childIndices;
    std::string childScratch;
    // The runner that started the child; 0 when none was named.
    int childParent = 0;

    bool IsChild() const { return !childClass.empty(); }

    // Reads the variables through getEnv (null when unset), then the arguments (without the program
    // name). Throws ZqTestUsageError.
    static ZqTestOptions Parse(const std::vector<std::string>& arguments,
                               const std::function<const char*(const char*)>& getEnv);
    // The options text of --help.
    static const char* GetUsage();
};
