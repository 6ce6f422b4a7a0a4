#include "zanserver/blockqueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace ZANServer;

TEST(BlockQueue, OnlyTheFirstItemOfAnEmptyQueueWakesTheReader) {
    BlockQueue<int> queue(4);
    EXPECT_TRUE(queue.Push(1, 1));
    EXPECT_FALSE(queue.Push(2, 1));
    EXPECT_EQ(queue.TakeAll(), (std::vector{1, 2}));
    EXPECT_TRUE(queue.TakeAll().empty());
    EXPECT_TRUE(queue.Push(3, 1));
}

TEST(BlockQueue, FullQueueHoldsTheWriterUpAndLosesNothing) {
    constexpr int COUNT = 10000;
    BlockQueue<int> queue(3);
    std::atomic<int> pushed = 0;
    std::thread writer([&] {
        for (int i = 0; i < COUNT; ++i) {
            queue.Push(i, 1);
            ++pushed;
        }
    });
    int expected = 0;
    while (expected < COUNT) {
        const std::vector<int> items = queue.TakeAll();
        EXPECT_LE(items.size(), 3U);
        for (const int item : items) {
            ASSERT_EQ(item, expected++);
        }
        EXPECT_LE(pushed, expected + 4);
    }
    writer.join();
}

TEST(BlockQueue, IsFullWhenItsItemsTakeItsBytesHoweverFewTheyAre) {
    BlockQueue<int> queue(100);
    EXPECT_TRUE(queue.Push(1, 60));
    EXPECT_FALSE(queue.Push(2, 40));
    std::atomic<bool> isPushed = false;
    std::thread writer([&] {
        queue.Push(3, 1);
        isPushed = true;
    });
    EXPECT_FALSE(isPushed);
    std::vector<int> items = queue.TakeAll();
    EXPECT_EQ(items, (std::vector{1, 2})) << "the third one had no room";
    writer.join();
    EXPECT_EQ(queue.TakeAll(), std::vector{3});
}

TEST(BlockQueue, ItemLargerThanTheQueueGoesAlone) {
    BlockQueue<int> queue(10);
    EXPECT_TRUE(queue.Push(1, 1000));
    std::thread writer([&] { queue.Push(2, 1000); });
    EXPECT_EQ(queue.TakeAll(), std::vector{1});
    writer.join();
    EXPECT_EQ(queue.TakeAll(), std::vector{2});
}

TEST(BlockQueue, WriterIsReleasedWhenBoundingStopsAndItsItemsAreKept) {
    BlockQueue<int> queue(1);
    std::thread writer([&] {
        for (int i = 0; i < 100; ++i) {
            queue.Push(i, 1);
        }
    });
    queue.StopBounding();
    writer.join();
    EXPECT_EQ(queue.TakeAll().size(), 100U);
}
