#include "zqbase/zqtest/zqtestcatalog.h"

#include "basepool/cbfactory.h"
#include "zqbase/zqtest/zqtestoptions.h"
#include "zqbase/zqunittest.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <set>
#include <system_error>

namespace
{
std::vector<std::string> parentNames(const CbRTTI& record)
{
    std::vector<std::string> names;
    if (const CbRTTI::SBaseClassList* bases = record.GetBaseClassRTTI())
        for (std::size_t i = 0; i < bases->count; ++i)
            names.push_back(CbWideToUtf8(bases->parents[i]->GetName()));
    return names;
}
} // namespace

void ZqTestCatalog::LoadModule(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        throw ZqTestUsageError("module '" + path + "' " +
                               (std::filesystem::exists(path, error) ? "is not a file" : "does not exist"));
    // dlopen searches the library path for a name without '/'; a module is always a file given by path.
    const std::string loadPath = path.find('/') == std::string::npos ? "./" + path : path;

    const std::vector<const CbRTTI*> before = CbRTTI::GetRegistered();
    dlerror();
    void* handle = dlopen(loadPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
    {
        const char* reason = dlerror();
        throw ZqTestUsageError("cannot load module '" + path + "': " + (reason ? reason : "unknown reason"));
    }
    if (std::find(m_handles.begin(), m_handles.end(), handle) != m_handles.end())
    {
        dlclose(handle);
        return;
    }
    std::vector<ZqTestClassInfo> found = newClasses(before, path);
    if (found.empty())
    {
        dlclose(handle);
        throw ZqTestUsageError("module '" + path + "' registers no test class");
    }
    if (!addClasses(found, path))
    {
        dlclose(handle);
        return;
    }
    m_handles.push_back(handle);
    m_modules.push_back(path);
}

std::vector<ZqTestClassInfo> ZqTestCatalog::newClasses(const std::vector<const CbRTTI*>& before,
                                                       const std::string& path) const
{
    const std::set<const CbRTTI*> known(before.begin(), before.end());
    std::vector<ZqTestClassInfo> found;
    for (const CbRTTI* record : CbRTTI::GetRegistered())
    {
        if (known.count(record) || !record->IsKindOf(ZqUnitTest::RTTI) || !record->CanCreate())
            continue;
        ZqTestClassInfo info;
        info.record = record;
        info.name = CbWideToUtf8(record->GetName());
        info.parents = parentNames(*record);
        info.module = path;
        found.push_back(std::move(info));
    }
    return found;
}

bool ZqTestCatalog::addClasses(std::vector<ZqTestClassInfo>& found, const std::string& path)
{
    auto earlier = [this](const std::string& name)
    {
        return std::find_if(m_classes.begin(), m_classes.end(),
                            [&name](const ZqTestClassInfo& info) { return info.name == name; });
    };
    const bool allKnown =
        std::all_of(found.begin(), found.end(),
                    [&](const ZqTestClassInfo& info) { return earlier(info.name) != m_classes.end(); });
    if (allKnown)
    {
        m_warnings.push_back("module '" + path + "' registers only test classes that '" +
                             earlier(found.front().name)->module +
                             "' registered already (the same module twice?); it is not loaded again");
        return false;
    }
    for (ZqTestClassInfo& info : found)
    {
        const auto it = earlier(info.name);
        if (it == m_classes.end())
        {
            m_classes.push_back(std::move(info));
            continue;
        }
        m_warnings.push_back("test class '" + info.name + "' of module '" + path + "' is registered by '" +
                             it->module + "' too; it runs from '" + path + "'");
        *it = std::move(info);
    }
    return true;
}

void ZqTestCatalog::ReadSubtests()
{
    for (ZqTestClassInfo& info : m_classes)
    {
        info.subtests.clear();
        try
        {
            std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(info.record->GetName());
            if (!test)
            {
                info.error = "the factory did not create a ZqUnitTest";
                continue;
            }
            test->InitSubtests();
            const unsigned count = test->GetSubtestCount();
            for (unsigned i = 0; i < count; ++i)
                info.subtests.push_back(CbWideToUtf8(test->GetSubtestName(i).Std()));
            test->GetMessageStream().Take();
        }
        catch (const std::exception& e)
        {
            info.subtests.clear();
            info.error = std::string("exception while reading the subtests: ") + e.what();
        }
        catch (...)
        {
            info.subtests.clear();
            info.error = "unknown exception while reading the subtests";
        }
    }
}

std::string ZqTestCatalog::GetDefaultModule()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return ((error ? std::filesystem::path(".") : self.parent_path()) / "libZqUnitTests.so").string();
}
