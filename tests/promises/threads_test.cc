// Two threads in the library at once see what one sees alone. Under ThreadSanitizer this is the test of "keeps no state".
#include <thread>

#include <gtest/gtest.h>

#include "workload.h"

namespace promises {
namespace {

TEST(Promises, two_threads_at_once) {
    static Buffers rooms[2];
    static std::uint64_t digests[2];
    const Silence silence;
    const std::uint64_t alone = everything(rooms[0]);
    std::thread other([] { digests[0] = everything(rooms[0]); });
    digests[1] = everything(rooms[1]);
    other.join();
    for (const std::uint64_t digest : digests)
        EXPECT_EQ(digest, alone);
}

} // namespace
} // namespace promises
