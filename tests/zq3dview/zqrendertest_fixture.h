// A render test class whose cases the GoogleTests choose, and a data root of its own in the
// scratch directory, so that references made by one test never meet those of another.

#pragma once

#include "zq3dview/zqrenderunittest.h"
#include "zqbase/zqtestenvironment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

class ZqConfigurableRenderTest : public ZqRenderUnitTest
{
public:
    // A record of its own names the test's data folder; made on first use, so that the header
    // needs no .cpp.
    const CbRTTI& GetRTTI() const override
    {
        static const CbRTTI record(L"ZqConfigurableRenderTest", ZqRenderUnitTest::RTTI, nullptr, nullptr);
        return record;
    }

    using Registration = std::function<void(ZqConfigurableRenderTest&)>;

    ZqConfigurableRenderTest() = default;
    explicit ZqConfigurableRenderTest(Registration registration) : m_registration(std::move(registration)) {}

    int initCalls = 0;

    // The protected members, for the tests.
    using ZqRenderUnitTest::addBenchmark;
    using ZqRenderUnitTest::addTestCase;
    using ZqRenderUnitTest::compareWithReference;
    using ZqRenderUnitTest::runTestCase;

protected:
    void initSubtests() override
    {
        ++initCalls;
        if (m_registration)
            m_registration(*this);
    }

private:
    Registration m_registration;
};

// Points the data root at a fresh directory for each test and restores it afterwards.
class ZqRenderTestData : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_previousRoot = ZqTestEnvironment::GetDataRoot();
        m_root = std::filesystem::path(ZqTestEnvironment::GetScratchDirectory()) /
                 ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::remove_all(m_root);
        std::filesystem::create_directories(m_root);
        ZqTestEnvironment::SetDataRoot(m_root.string());
    }
    void TearDown() override
    {
        ZqTestEnvironment::SetDataRoot(m_previousRoot);
        ZqTestEnvironment::SetDebugOutputEnabled(false);
        std::filesystem::remove_all(m_root);
    }

    // "<root>/ZqConfigurableRenderTest/Snapshots/"
    std::filesystem::path snapshots() const { return m_root / "ZqConfigurableRenderTest" / "Snapshots"; }

    // The messages the test wrote since the last call, "error: " or "info: " before each.
    static std::vector<std::string> messages(const ZqUnitTest& test)
    {
        std::vector<std::string> out;
        for (const auto& message : test.GetMessageStream().Take())
            out.push_back((message.type == ZqUnitTest::eError ? "error: " : "info: ") +
                          CbWideToUtf8(message.text.Std()));
        return out;
    }

    // True when some message starts with prefix.
    static bool contains(const std::vector<std::string>& lines, const std::string& prefix)
    {
        for (const std::string& line : lines)
            if (line.rfind(prefix, 0) == 0)
                return true;
        return false;
    }

    std::filesystem::path m_root;

private:
    std::string m_previousRoot;
};
