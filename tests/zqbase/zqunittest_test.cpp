// ZqFail and the running test: helpers without a test object report under the test whose subtest
// runs on this thread.

#include "zqbase/zqunittest.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{
// Runs body as its only subtest.
class Probe : public ZqUnitTest
{
public:
    explicit Probe(std::function<EResult()> body) : m_body(std::move(body)) {}
    const CbRTTI& GetRTTI() const override { return ZqUnitTest::RTTI; }

protected:
    EResult runUnitTest(unsigned int) override { return m_body(); }

private:
    std::function<EResult()> m_body;
};

std::vector<std::wstring> texts(const ZqUnitTest& test)
{
    std::vector<std::wstring> out;
    for (const auto& message : test.GetMessageStream().Take())
        out.push_back(message.text.Std());
    return out;
}
} // namespace

TEST(ZqFailReporting, WritesUnderTheRunningTestAndRestoresTheOuterOne)
{
    Probe inner([] { return ZqFail(L"innen %d: %S\n", 2, "Maß"); });
    Probe outer(
        [&]
        {
            EXPECT_EQ(ZqUnitTest::GetRunning(), &outer);
            EXPECT_EQ(inner.RunUnitTest(0), ZqUnitTest::eFailed);
            EXPECT_EQ(ZqUnitTest::GetRunning(), &outer);
            return ZqFail(L"außen\n");
        });
    EXPECT_EQ(outer.RunUnitTest(0), ZqUnitTest::eFailed);
    EXPECT_EQ(ZqUnitTest::GetRunning(), nullptr);
    EXPECT_EQ(texts(inner), std::vector<std::wstring>{L"innen 2: Maß\n"});
    EXPECT_EQ(texts(outer), std::vector<std::wstring>{L"außen\n"});
}

TEST(ZqFailReporting, WithoutRunningTestOnlyReturnsFailed)
{
    EXPECT_EQ(ZqFail(L"niemand hört zu\n"), ZqUnitTest::eFailed);
    // Another thread does not see this thread's running test.
    Probe probe(
        []
        {
            ZqUnitTest::EResult result = ZqUnitTest::ePassed;
            std::thread([&]
                        { result = ZqUnitTest::GetRunning() ? ZqUnitTest::eFailed : ZqUnitTest::ePassed; })
                .join();
            return result;
        });
    EXPECT_EQ(probe.RunUnitTest(0), ZqUnitTest::ePassed);
}
