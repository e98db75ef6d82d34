// The queue: order across block boundaries, iteration, and the errors of an empty queue.

#include "basepool/cbqueue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(CbQueue, KeepsTheOrderAcrossBlocks)
{
    CbQueue<std::string> queue(3);
    for (int i = 0; i < 20; ++i)
        queue.Push(std::to_string(i));
    EXPECT_EQ(std::vector<std::string>(queue.begin(), queue.end()).front(), "0");
    for (int i = 0; i < 20; ++i)
    {
        EXPECT_EQ(queue.Back(), "19");
        EXPECT_EQ(queue.Pop(), std::to_string(i));
    }
    EXPECT_TRUE(queue.IsEmpty());
    queue.Emplace(3, 'x');
    EXPECT_EQ(queue.Front(), "xxx");
    EXPECT_EQ(queue.Back(), "xxx");
}

TEST(CbQueue, EmptyQueueThrows)
{
    CbQueue<int> queue;
    EXPECT_THROW(queue.Pop(), CbExceptionContainer);
    EXPECT_THROW(queue.Front(), CbExceptionContainer);
    EXPECT_THROW(queue.Back(), CbExceptionContainer);
    EXPECT_THROW(CbQueue<int>(0), CbExceptionContainer);
    queue.Push(1);
    queue.Pop();
    EXPECT_THROW(queue.Back(), CbExceptionContainer);
}
