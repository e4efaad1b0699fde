// The queue file's logic: merging repeats, the cap, and reading a file back.
#include "diagnostics/CrashQueue.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

// A report whose signature is set by its signal, so `n` tells faults apart.
CrashReport fault(int n, std::int64_t atMs = 1000, std::int64_t count = 1) {
    CrashInput in;
    in.kind = "crash";
    in.version = "1.0";
    in.signal = n;
    in.reason = "fault " + std::to_string(n);
    in.at = TimePoint(std::chrono::milliseconds(atMs));
    CrashReport r = CrashReport::make("companion", in);
    r.count = count;
    return r;
}

std::vector<std::int64_t> codes(const CrashQueue::Queue& queue) {
    std::vector<std::int64_t> out;
    for (const auto& r : queue) out.push_back(r.exception->signal.value_or(-1));
    return out;
}

TEST(CrashQueueTest, NeverHoldsMoreThanTheLimitAndRepeatsOnlyCount) {
    CrashQueue::Queue queue;
    for (int n = 1; n <= 33; ++n) queue = CrashQueue::add(fault(n), std::move(queue));
    ASSERT_EQ(queue.size(), CrashQueue::limit);
    EXPECT_EQ(codes(queue).front(), 2); // the 33rd pushed out the oldest
    // A repeat of the oldest when full raises its count in place and pushes nothing out.
    queue = CrashQueue::add(fault(2, 5000), std::move(queue));
    ASSERT_EQ(queue.size(), CrashQueue::limit);
    EXPECT_EQ(codes(queue).front(), 2);
    EXPECT_EQ(queue.front().count, 2);
    EXPECT_EQ(queue.front().at, 5000);
    EXPECT_EQ(codes(queue).back(), 33);
}

TEST(CrashQueueTest, MergedCountIsCappedAndTheLaterTimeWins) {
    const struct { std::int64_t oldCount, newCount, oldAt, newAt, count, at; } cases[] = {
        {999'999, 5, 10, 20, 1'000'000, 20},
        {1, 1, 50, 20, 2, 50}, // a report that arrived late keeps the newer time
        {1'000'000, 1'000'000, 7, 7, 1'000'000, 7},
    };
    for (const auto& c : cases) {
        CrashReport later = fault(7, c.newAt, c.newCount);
        later.reason = "the newer details";
        auto queue = CrashQueue::add(later, {fault(7, c.oldAt, c.oldCount)});
        ASSERT_EQ(queue.size(), 1u);
        EXPECT_EQ(queue[0].count, c.count) << c.oldCount << "+" << c.newCount;
        EXPECT_EQ(queue[0].at, c.at);
        EXPECT_EQ(queue[0].reason, later.reason);
    }
}

TEST(CrashQueueTest, DecodeKeepsTheLast32InOrderAndGivesUpOnAnythingElse) {
    CrashQueue::Queue forty;
    for (int n = 1; n <= 40; ++n) forty.push_back(fault(n));
    auto read = CrashQueue::decode(CrashQueue::encode(forty));
    ASSERT_EQ(read.size(), 32u);
    EXPECT_EQ(codes(read).front(), 9);
    EXPECT_EQ(codes(read).back(), 40);
    EXPECT_EQ(read.back(), forty.back());

    std::string oneBad = CrashQueue::encode({fault(1), fault(2)});
    oneBad.replace(oneBad.find("\"count\":1"), 9, "\"count\":\"1\"");
    for (const std::optional<std::string>& bytes :
         {std::optional<std::string>{}, std::optional<std::string>(""), std::optional<std::string>("{}"),
          std::optional<std::string>("[{]"), std::optional<std::string>("\xff\xfe garbage"), std::optional(oneBad),
          std::optional<std::string>("[1,2]")})
        EXPECT_TRUE(CrashQueue::decode(bytes).empty()) << bytes.value_or("(none)");
}

} // namespace
} // namespace orvan
