// Fixture base for the tests that load the test module into this process and drive its test classes
// through the registry, as the runner does. Derive a suite from it: `class XModuleTest : public ZqModuleTest
// {};`.

#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbfactory.h"
#include "zqbase/zqunittest.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// The texts of the error messages test wrote since the last call; its other messages are dropped.
inline std::vector<std::string> ZqErrorTexts(const ZqUnitTest& test)
{
    std::vector<std::string> errors;
    for (const auto& message : test.GetMessageStream().Take())
        if (message.type == ZqUnitTest::eError)
            errors.push_back(CbWideToUtf8(message.text.Std()));
    return errors;
}

class ZqModuleTest : public ::testing::Test
{
protected:
    // One handle for every suite deriving from this class: each suite loads the module before its first
    // test and unloads it after its last, so suites that do not use it never see its classes registered.
    static void SetUpTestSuite()
    {
        if (!s_module)
            s_module = dlopen(ZQ_BINARY_DIR "/libZqUnitTests.so", RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(s_module, nullptr) << dlerror();
    }
    static void TearDownTestSuite()
    {
        if (s_module)
            dlclose(s_module);
        s_module = nullptr;
    }

    /// Creates the test class of that name and prepares its subtests; null when it is not registered.
    static std::unique_ptr<ZqUnitTest> create(const wchar_t* name)
    {
        std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(name);
        if (test)
        {
            test->PreallocateStaticData();
            test->InitSubtests();
        }
        return test;
    }

    /// The name of subtest i as UTF-8.
    static std::string subtestName(ZqUnitTest& test, unsigned int i)
    {
        return CbWideToUtf8(test.GetSubtestName(i).Std());
    }

    /// The names of all counted subtests as UTF-8.
    static std::vector<std::string> names(ZqUnitTest& test)
    {
        std::vector<std::string> result;
        for (unsigned int i = 0; i < test.GetSubtestCount(); ++i)
            result.push_back(subtestName(test, i));
        return result;
    }

    /// Runs subtest i and takes its messages: an error message fails the calling test unless errors are
    /// expected; the texts of the other messages go to *infos when given.
    static ZqUnitTest::EResult run(ZqUnitTest& test, unsigned int i, bool errorsExpected = false,
                                   std::vector<std::string>* infos = nullptr)
    {
        const ZqUnitTest::EResult result = test.RunUnitTest(i);
        for (const auto& message : test.GetMessageStream().Take())
        {
            if (message.type == ZqUnitTest::eError)
            {
                if (!errorsExpected)
                    ADD_FAILURE() << CbWideToUtf8(message.text.Std());
            }
            else if (infos)
                infos->push_back(CbWideToUtf8(message.text.Std()));
        }
        return result;
    }

    /// Runs subtest i, which must pass without an error message; returns the texts of its other messages.
    static std::vector<std::string> runPassing(ZqUnitTest& test, unsigned int i)
    {
        std::vector<std::string> infos;
        EXPECT_EQ(run(test, i, false, &infos), ZqUnitTest::ePassed) << subtestName(test, i);
        return infos;
    }

    /// The function named by the CbException that call throws, or "nothing thrown".
    static std::string thrownFunction(const std::function<void()>& call)
    {
        try
        {
            call();
        }
        catch (const CbException& e)
        {
            return e.GetFunction();
        }
        return "nothing thrown";
    }

private:
    inline static void* s_module = nullptr;
};
