// Two threads in the library at once see what one sees alone. Under ThreadSanitizer this is the test of "keeps no state".
#include <thread>

#include <gtest/gtest.h>

#include "workload.h"

namespace promises {
namespace {

TEST(Promises, two_threads_at_once) {
    static Buffers rooms[2];
    static std::uint64_t digests[2][2];
    const Silence silence;
    const std::uint64_t alone = everything(rooms[0]);
    const auto work = [](Buffers &room, std::uint64_t(&seen)[2]) {
        for (std::uint64_t &digest : seen)
            digest = everything(room);
    };
    std::thread other(work, std::ref(rooms[0]), std::ref(digests[0]));
    work(rooms[1], digests[1]);
    other.join();
    for (const auto &seen : digests)
        for (const std::uint64_t digest : seen)
            EXPECT_EQ(digest, alone);
}

} // namespace
} // namespace promises
