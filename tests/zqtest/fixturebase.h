#pragma once

// The shared part of the fixture module's test classes.

#include "basepool/cbexception.h"
#include "zqbase/zqunittest.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

// Subtests named by a table; runUnitTest(i) decides how subtest i ends.
class CFixture : public ZqUnitTest
{
protected:
    CFixture(std::initializer_list<const wchar_t*> names) : m_names(names) {}
    unsigned int getSubtestCount() const override { return static_cast<unsigned>(m_names.size()); }
    CString getSubtestName(unsigned int index) override
    {
        if (index >= m_names.size())
            CB_THROW(CbException, "CFixture::getSubtestName");
        return m_names[index];
    }

private:
    std::vector<const wchar_t*> m_names;
};

// Tells the runner's tests which process plays a role: writes pid to $ZQ_FIXTURE_PIDS/<role>
// (under a temporary name first, so a reader never sees half of it). Nothing without the variable.
inline void NotePid(const char* role, pid_t pid)
{
    const char* directory = std::getenv("ZQ_FIXTURE_PIDS");
    if (!directory)
        return;
    const std::string path = std::string(directory) + "/" + role;
    const std::string temporary = path + ".tmp";
    if (std::FILE* file = std::fopen(temporary.c_str(), "w"))
    {
        std::fprintf(file, "%d\n", static_cast<int>(pid));
        std::fclose(file);
        std::rename(temporary.c_str(), path.c_str());
    }
}
