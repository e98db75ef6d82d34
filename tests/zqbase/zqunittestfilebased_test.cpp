// File-based tests in a data root of their own: where cases live, how a missing or truncated input
// fails, and how Recreate writes references (atomically, reporting new, unchanged or changed).

#include "basepool/cbexception.h"
#include "zqbase/zqtestenvironment.h"
#include "zqbase/zqunittestfilebasedrecreate.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>

namespace
{
// Case input: a list of numbers; output: their sum.
class SumCases : public ZqUnitTestFileBasedRecreate
{
    CB_DECLARE_RTTI(SumCases)

public:
    SumCases() : ZqUnitTestFileBasedRecreate(L"Summe", 3) {}

    std::vector<std::int32_t> values;
    std::optional<std::int32_t> expected;
    int releasedInputs = 0;
    int releasedOutputs = 0;
    bool failWhileWritingOutput = false;
    bool throwWhileRunning = false;

    void StoreInput(unsigned int index) const { WriteUnitTestInput(index); }

protected:
    void serializeUnitTestInput(CbStreamWriteBinary& stream) const override
    {
        stream.WriteCount(static_cast<std::uint32_t>(values.size()));
        for (std::int32_t value : values)
            stream.Write(value);
    }
    void serializeUnitTestInput(CbStreamReadBinary& stream) override
    {
        values.resize(stream.ReadCount());
        for (std::int32_t& value : values)
            stream.Read(value);
    }
    void serializeUnitTestOutput(CbStreamWriteBinary& stream) const override
    {
        stream.Write(m_sum);
        if (failWhileWritingOutput)
            CB_THROW(CbExceptionFile, "SumCases::serializeUnitTestOutput", "Platte voll");
        stream.Write(std::int32_t(0));
    }
    void serializeUnitTestOutput(CbStreamReadBinary& stream) override
    {
        std::int32_t value = 0, end = 0;
        stream.Read(value);
        stream.Read(end);
        expected = value;
    }
    EResult runUnitTest() override
    {
        if (throwWhileRunning)
            CB_THROW(CbExceptionPreconditionViolation, "SumCases::runUnitTest");
        if (!expected)
        {
            WriteMessage(eError, L"Keine Referenz\n");
            return eFailed;
        }
        if (sum() != *expected)
        {
            WriteMessage(eError, L"Summe ist nicht korrekt\n");
            return eFailed;
        }
        return ePassed;
    }
    void releaseUnitTestInput() override
    {
        values.clear();
        ++releasedInputs;
    }
    void releaseUnitTestOutput() override
    {
        expected.reset();
        ++releasedOutputs;
    }
    bool recreate() override
    {
        m_sum = sum();
        return true;
    }

private:
    std::int32_t sum() const
    {
        std::int32_t total = 0;
        for (std::int32_t value : values)
            total += value;
        return total;
    }

    std::int32_t m_sum = 0;
};
CB_IMPLEMENT_RTTI(SumCases, ZqUnitTestFileBasedRecreate::RTTI);

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class FileBasedTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_previousRoot = ZqTestEnvironment::GetDataRoot();
        std::string pattern = (std::filesystem::temp_directory_path() / "zqfilebased-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_root = pattern;
        ZqTestEnvironment::SetDataRoot(m_root);
    }
    void TearDown() override
    {
        ZqTestEnvironment::SetDataRoot(m_previousRoot);
        std::filesystem::remove_all(m_root);
    }

    // The messages written since the last call, as "E:text" or "I:text".
    std::vector<std::string> messages()
    {
        std::vector<std::string> out;
        for (const auto& m : m_test.GetMessageStream().Take())
            out.push_back((m.type == ZqUnitTest::eError ? "E:" : "I:") + CbWideToUtf8(m.text.Std()));
        return out;
    }

    std::string casesDirectory() const { return m_root + "/SumCases/Cases"; }

    std::string m_previousRoot;
    std::string m_root;
    SumCases m_test;
};
} // namespace

TEST_F(FileBasedTest, CasesLiveUnderTheDataRootInTheClassFolder)
{
    m_test.InitSubtests();
    EXPECT_EQ(m_test.GetSubtestCount(), 3u);
    EXPECT_EQ(m_test.GetSubtestName(2).Std(), L"Summe #002");
    EXPECT_EQ(m_test.GetInputPath(2), casesDirectory() + "/Summe-002.in");
    EXPECT_EQ(m_test.GetOutputPath(0), casesDirectory() + "/Summe-000.out");

    m_test.values = {4, 5};
    m_test.StoreInput(1);
    m_test.values.clear();
    EXPECT_TRUE(std::filesystem::exists(casesDirectory() + "/Summe-001.in"));
    EXPECT_EQ(m_test.RunUnitTest(1), ZqUnitTest::eFailed);
    EXPECT_EQ(messages(), std::vector<std::string>{"E:Keine Referenz\n"});
}

TEST_F(FileBasedTest, MissingOrTruncatedInputFailsNamingTheFile)
{
    EXPECT_EQ(m_test.RunUnitTest(0), ZqUnitTest::eFailed);
    std::vector<std::string> written = messages();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].rfind("E:Testfall nicht lesbar: " + casesDirectory() + "/Summe-000.in", 0), 0u)
        << written[0];
    EXPECT_EQ(m_test.releasedInputs, 1);
    EXPECT_EQ(m_test.releasedOutputs, 1);

    // A count of 5 followed by only one value.
    std::filesystem::create_directories(casesDirectory());
    std::ofstream(casesDirectory() + "/Summe-002.in", std::ios::binary).write("\x05\0\0\0\x01\0\0\0", 8);
    EXPECT_EQ(m_test.RunUnitTest(2), ZqUnitTest::eFailed);
    written = messages();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_NE(written[0].find("Summe-002.in"), std::string::npos) << written[0];
    EXPECT_EQ(m_test.releasedInputs, 2);
}

TEST_F(FileBasedTest, WhateverHappensTheCaseIsReleased)
{
    m_test.values = {1};
    m_test.StoreInput(0);
    m_test.throwWhileRunning = true;
    EXPECT_THROW(m_test.RunUnitTest(0), CbExceptionPreconditionViolation);
    EXPECT_EQ(m_test.releasedInputs, 1);
    EXPECT_EQ(m_test.releasedOutputs, 1);
    EXPECT_TRUE(m_test.values.empty());
}

TEST_F(FileBasedTest, RecreateReportsNewUnchangedAndChangedReferences)
{
    const std::string output = casesDirectory() + "/Summe-000.out";
    m_test.values = {1, 2, 3};
    m_test.StoreInput(0);

    ASSERT_TRUE(m_test.CanRecreate(0));
    ASSERT_TRUE(m_test.Recreate(0));
    EXPECT_EQ(messages(), std::vector<std::string>{"I:Referenz geschrieben: " + output + " (neu)\n"});
    EXPECT_EQ(m_test.RunUnitTest(0), ZqUnitTest::ePassed);

    ASSERT_TRUE(m_test.Recreate(0));
    EXPECT_EQ(messages(), std::vector<std::string>{"I:Referenz geschrieben: " + output + " (unverändert)\n"});

    m_test.values = {10};
    m_test.StoreInput(0);
    EXPECT_EQ(m_test.RunUnitTest(0), ZqUnitTest::eFailed);
    EXPECT_EQ(messages(), std::vector<std::string>{"E:Summe ist nicht korrekt\n"});
    ASSERT_TRUE(m_test.Recreate(0));
    EXPECT_EQ(messages(), std::vector<std::string>{"I:Referenz geschrieben: " + output + " (geändert)\n"});
    EXPECT_EQ(m_test.RunUnitTest(0), ZqUnitTest::ePassed);
}

TEST_F(FileBasedTest, FailedRecreateLeavesTheOldReferenceAndNoTemporaryFile)
{
    const std::string output = casesDirectory() + "/Summe-000.out";
    m_test.values = {7};
    m_test.StoreInput(0);
    ASSERT_TRUE(m_test.Recreate(0));
    const std::string before = readFile(output);
    messages();

    m_test.values = {8};
    m_test.StoreInput(0);
    m_test.failWhileWritingOutput = true;
    EXPECT_FALSE(m_test.Recreate(0));
    const std::vector<std::string> written = messages();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].rfind("E:Referenz nicht geschrieben: " + output, 0), 0u) << written[0];
    EXPECT_EQ(readFile(output), before);

    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(casesDirectory()))
        files.push_back(entry.path().filename().string());
    std::sort(files.begin(), files.end());
    EXPECT_EQ(files, (std::vector<std::string>{"Summe-000.in", "Summe-000.out"}));
}

TEST_F(FileBasedTest, IndicesBeyondTheCountAreRejected)
{
    try
    {
        m_test.RunUnitTest(3);
        FAIL() << "index 3 of 3 cases must throw";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqUnitTestFileBased::runUnitTest");
    }
    EXPECT_THROW(m_test.GetSubtestName(3), CbException);
    EXPECT_FALSE(m_test.CanRecreate(3));
    EXPECT_FALSE(m_test.Recreate(3));
    EXPECT_FALSE(std::filesystem::exists(casesDirectory()));
}
