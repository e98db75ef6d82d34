// ZqUnitTestCollection runs a borrowed table: its copies and moves keep pointing at the same rows,
// and each row is called with the collection that runs it.

#include "zqbase/zqunittestcollection.h"

#include <gtest/gtest.h>
#include <utility>

namespace
{
// What the last row function saw.
const ZqUnitTestCollection* g_lastCaller = nullptr;
int g_lastRow = -1;

ZqUnitTest::EResult rowPasses(ZqUnitTestCollection& test)
{
    g_lastCaller = &test;
    g_lastRow = 0;
    return ZqUnitTest::ePassed;
}

ZqUnitTest::EResult rowFails(ZqUnitTestCollection& test)
{
    g_lastCaller = &test;
    g_lastRow = 1;
    test.WriteMessage(ZqUnitTest::eError, L"Summe ist nicht korrekt\n");
    return ZqUnitTest::eFailed;
}

ZqUnitTest::EResult rowAborts(ZqUnitTestCollection& test)
{
    g_lastCaller = &test;
    g_lastRow = 2;
    return ZqUnitTest::eAborted;
}

class ZqUnitTestCollectionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        g_lastCaller = nullptr;
        g_lastRow = -1;
    }

    // Runs subtest index of test and checks that its row was called with test itself.
    static ZqUnitTest::EResult run(ZqUnitTestCollection& test, unsigned int index)
    {
        const ZqUnitTest::EResult result = test.RunUnitTest(index);
        EXPECT_EQ(g_lastCaller, &test);
        return result;
    }

    ZqUnitTestCollection::STestData m_rows[3] = {
        {L"Erste Zeile", rowPasses},
        {L"Zweite Zeile mit Ümlaut", rowFails},
        {L"Dritte Zeile", rowAborts},
    };
};
} // namespace

TEST_F(ZqUnitTestCollectionTest, CountNamesAndResultsComeFromTheTable)
{
    ZqUnitTestCollection test(m_rows, 3);
    ASSERT_EQ(test.GetSubtestCount(), 3u);
    EXPECT_EQ(test.GetSubtestName(1).Std(), L"Zweite Zeile mit Ümlaut");
    EXPECT_EQ(run(test, 0), ZqUnitTest::ePassed);
    EXPECT_EQ(run(test, 1), ZqUnitTest::eFailed);
    EXPECT_EQ(g_lastRow, 1);
    EXPECT_EQ(run(test, 2), ZqUnitTest::eAborted);
    const auto messages = test.GetMessageStream().Take();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].type, ZqUnitTest::eError);
    EXPECT_EQ(messages[0].text.Std(), L"Summe ist nicht korrekt\n");

    EXPECT_EQ(ZqUnitTestCollection(m_rows, 0).GetSubtestCount(), 0u);
    EXPECT_EQ(ZqUnitTestCollection(nullptr, 0).GetSubtestCount(), 0u);
}

TEST_F(ZqUnitTestCollectionTest, TwoCollectionsOverOneTableShareItsRows)
{
    ZqUnitTestCollection first(m_rows, 3);
    ZqUnitTestCollection second(m_rows, 2);
    EXPECT_EQ(second.GetSubtestCount(), 2u);
    // Changing the table after construction is seen by both: the rows are borrowed, not copied.
    m_rows[0].name = L"Geänderter Name";
    m_rows[0].function = rowAborts;
    EXPECT_EQ(first.GetSubtestName(0).Std(), L"Geänderter Name");
    EXPECT_EQ(second.GetSubtestName(0).Std(), L"Geänderter Name");
    EXPECT_EQ(run(first, 0), ZqUnitTest::eAborted);
    EXPECT_EQ(run(second, 0), ZqUnitTest::eAborted);
    EXPECT_EQ(g_lastRow, 2);
}

TEST_F(ZqUnitTestCollectionTest, CopiesAndMovesKeepTheTable)
{
    ZqUnitTestCollection original(m_rows, 3);
    ZqUnitTestCollection copy(original);
    ZqUnitTestCollection moved(std::move(original));
    ZqUnitTestCollection assigned(nullptr, 0);
    assigned = copy;
    ZqUnitTestCollection moveAssigned(nullptr, 0);
    moveAssigned = std::move(copy);

    m_rows[1].name = L"Nach dem Kopieren";
    for (ZqUnitTestCollection* test : {&moved, &assigned, &moveAssigned})
    {
        ASSERT_EQ(test->GetSubtestCount(), 3u);
        EXPECT_EQ(test->GetSubtestName(1).Std(), L"Nach dem Kopieren");
        EXPECT_EQ(run(*test, 1), ZqUnitTest::eFailed);
        EXPECT_EQ(run(*test, 2), ZqUnitTest::eAborted);
    }
}

TEST_F(ZqUnitTestCollectionTest, IsRegisteredWithoutCreationFunction)
{
    ZqUnitTestCollection test(m_rows, 3);
    EXPECT_STREQ(test.GetClassName(), L"ZqUnitTestCollection");
    EXPECT_TRUE(test.GetRTTI() == ZqUnitTestCollection::RTTI);
    EXPECT_TRUE(test.IsKindOf(ZqUnitTest::RTTI));
    EXPECT_FALSE(ZqUnitTestCollection::RTTI.CanCreate());
    EXPECT_EQ(CbRTTI::Find(L"ZqUnitTestCollection"), &ZqUnitTestCollection::RTTI);
}
