// Runs the module's table-driven string test through the registry, as the runner does.

#include "zqmoduletest.h"

namespace
{
class CbStrModule : public ZqModuleTest
{
};
} // namespace

TEST_F(CbStrModule, TableOfTwentyTwoRowsNamesAndPassesEveryOperation)
{
    const CbRTTI* record = CbRTTI::Find(L"CbStr_UnitTest");
    ASSERT_NE(record, nullptr);
    ASSERT_NE(record->GetBaseClassRTTI(), nullptr);
    ASSERT_EQ(record->GetBaseClassRTTI()->count, 1u);
    EXPECT_TRUE(*record->GetBaseClassRTTI()->parents[0] == ZqUnitTest::RTTI);

    std::unique_ptr<ZqUnitTest> test = create(L"CbStr_UnitTest");
    ASSERT_TRUE(test);
    ASSERT_EQ(test->GetSubtestCount(), 22u);
    EXPECT_EQ(test->GetSubtestName(0).Std(), L"Compare / operator ==");
    EXPECT_EQ(test->GetSubtestName(4).Std(), L"Find / ReverseFind / FindOneOf");
    EXPECT_EQ(test->GetSubtestName(15).Std(), L"const CharType * operator");
    EXPECT_EQ(test->GetSubtestName(20).Std(), L"Trim / TrimLeft / TrimRight");
    EXPECT_EQ(test->GetSubtestName(21).Std(), L"Convert");
    for (unsigned int i = 0; i < test->GetSubtestCount(); ++i)
    {
        EXPECT_EQ(test->RunUnitTest(i), ZqUnitTest::ePassed) << subtestName(*test, i);
        for (const auto& message : test->GetMessageStream().Take())
            ADD_FAILURE() << subtestName(*test, i) << ": " << CbWideToUtf8(message.text.Std());
    }
}
