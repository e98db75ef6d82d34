#pragma once

#include "zqbase/zqbase_export.h"

#include <string>
#include <vector>

class CbRTTI;

// A test class found in a loaded module.
struct ZqTestClassInfo
{
    const CbRTTI* record = nullptr;
    std::string name;
    std::vector<std::string> parents;
    std::string module;
    std::vector<std::string> subtests;
    // Why the subtests could not be read (the test threw while it was created or set up).
    std::string error;
};

// A class and the indices of its subtests that a filter (and a shard) selected.
struct ZqTestSelection
{
    const ZqTestClassInfo* info = nullptr;
    std::vector<unsigned> indices;
};

// The test classes of the loaded modules. A module's classes are the records that appear in the
// type registry while it loads, that are a kind of ZqUnitTest and that can be created.
class ZQBASE_API ZqTestCatalog
{
public:
    // Loads a module with dlopen and records its test classes. Throws ZqTestUsageError for a missing
    // file, a file that does not load, and a module that registers no test class. Loading the same
    // file twice adds nothing. A module whose test classes all have the names of classes loaded
    // before (the same module under another path, a copy) is unloaded again with a warning; a class
    // that only some of its classes share runs from the module loaded last, as the type registry
    // finds it, with a warning.
    void LoadModule(const std::string& path);

    // Creates each test once to learn its subtests: InitSubtests, GetSubtestCount, GetSubtestName.
    void ReadSubtests();

    const std::vector<ZqTestClassInfo>& GetClasses() const { return m_classes; }
    // The modules that stayed loaded, in the order given.
    const std::vector<std::string>& GetModules() const { return m_modules; }
    // What LoadModule had to say about duplicates, one line each.
    const std::vector<std::string>& GetWarnings() const { return m_warnings; }

    // The module a runner finds without arguments: libZqUnitTests.so beside the running program.
    static std::string GetDefaultModule();

private:
    // The test classes whose records appeared since before.
    std::vector<ZqTestClassInfo> newClasses(const std::vector<const CbRTTI*>& before,
                                            const std::string& path) const;
    // Adds found, or nothing when all of it is known already; false then.
    bool addClasses(std::vector<ZqTestClassInfo>& found, const std::string& path);

    std::vector<ZqTestClassInfo> m_classes;
    std::vector<void*> m_handles;
    std::vector<std::string> m_modules;
    std::vector<std::string> m_warnings;
};
