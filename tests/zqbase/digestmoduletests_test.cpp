// The module's tests of ZqMD5 and ZqSHA1, driven as the runner drives them: the MD5 benchmark's report
// and the scratch file of the SHA-1 test, which must not outlive the subtest nor pass unwritten.

#include "zqbase/zqbenchmark.h"
#include "zqbase/zqfilesystem.h"
#include "zqbase/zqtestenvironment.h"
#include "zqmoduletest.h"

#include <filesystem>

namespace
{
class DigestModuleTest : public ZqModuleTest
{
};
} // namespace

TEST_F(DigestModuleTest, MD5BenchmarkReportsEveryCaseUnderItsName)
{
    std::unique_ptr<ZqUnitTest> test = create(L"ZqMD5_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(test->RunUnitTest(1), ZqUnitTest::ePassed);
    // One heading and one line per case, each case under its own name, in order.
    const auto messages = test->GetMessageStream().Take();
    ASSERT_EQ(messages.size(), 9u);
    auto* benchmark = dynamic_cast<ZqBenchmark*>(test.get());
    ASSERT_TRUE(benchmark);
    ASSERT_EQ(benchmark->GetBenchmarkCount(), 8u);
    for (unsigned int i = 0; i < 8; ++i)
    {
        EXPECT_EQ(messages[i + 1].type, ZqUnitTest::eInfo);
        const std::wstring line = messages[i + 1].text.Std();
        EXPECT_NE(line.find(benchmark->GetBenchmarkName(i).Std() + L": min"), std::wstring::npos)
            << CbWideToUtf8(line);
    }
    EXPECT_STREQ(benchmark->GetBenchmarkName(4).GetString(), L"A -> A [ZqMD5::eF_MSCryptography]");
    EXPECT_STREQ(benchmark->GetBenchmarkName(3).GetString(), L"W -> W [ZqMD5::eF_OriginalAlgorithm]");
}

TEST_F(DigestModuleTest, SHA1TestLeavesNoFileBehind)
{
    std::unique_ptr<ZqUnitTest> test = create(L"ZqSHA1_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(run(*test, 0), ZqUnitTest::ePassed);
    const std::filesystem::path scratch = CbWideToUtf8(ZqFileSystem::GetDirectory(0).Std());
    EXPECT_TRUE(std::filesystem::is_directory(scratch));
    EXPECT_FALSE(std::filesystem::exists(scratch / "ZqSHA1_UnitTest.dat"));
}

TEST_F(DigestModuleTest, SHA1TestAbortsWhenTheFileCannotBeWritten)
{
    const std::string scratch = ZqTestEnvironment::GetScratchDirectory();
    ZqTestEnvironment::SetScratchDirectory(scratch + "/does/not/exist");
    std::unique_ptr<ZqUnitTest> test = create(L"ZqSHA1_UnitTest");
    ASSERT_TRUE(test);
    const ZqUnitTest::EResult result = run(*test, 0, true);
    ZqTestEnvironment::SetScratchDirectory(scratch);
    EXPECT_EQ(result, ZqUnitTest::eAborted);
}
