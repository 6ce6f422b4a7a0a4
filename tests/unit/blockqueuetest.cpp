#include "zanstation/blockqueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(BlockQueue, OnlyTheFirstItemOfAnEmptyQueueWakesTheReader) {
    BlockQueue<int> queue(4);
    EXPECT_TRUE(queue.Push(1));
    EXPECT_FALSE(queue.Push(2));
    EXPECT_EQ(queue.TakeAll(), (std::vector{1, 2}));
    EXPECT_TRUE(queue.TakeAll().empty());
    EXPECT_TRUE(queue.Push(3));
}

TEST(BlockQueue, FullQueueHoldsTheWriterUpAndLosesNothing) {
    constexpr int COUNT = 10000;
    BlockQueue<int> queue(3);
    std::atomic<int> pushed = 0;
    std::thread writer([&] {
        for (int i = 0; i < COUNT; ++i) {
            queue.Push(i);
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

TEST(BlockQueue, WriterIsReleasedWhenBoundingStopsAndItsItemsAreKept) {
    BlockQueue<int> queue(1);
    std::thread writer([&] {
        for (int i = 0; i < 100; ++i) {
            queue.Push(i);
        }
    });
    queue.StopBounding();
    writer.join();
    EXPECT_EQ(queue.TakeAll().size(), 100U);
}
