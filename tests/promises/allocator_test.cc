// No function of the library calls an allocator: each call of the process is counted.
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <memory>

#include <gtest/gtest.h>

#include "workload.h"

// What the C library has beneath the functions that are replaced here.
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *memory, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *memory);
}

namespace {

bool counting = false;
unsigned long calls = 0;

void note() { calls += counting ? 1U : 0U; }

} // namespace

extern "C" {

void *malloc(std::size_t size) {
    note();
    return __libc_malloc(size);
}

void *calloc(std::size_t count, std::size_t size) {
    note();
    return __libc_calloc(count, size);
}

void *realloc(void *memory, std::size_t size) {
    note();
    return __libc_realloc(memory, size);
}

void *memalign(std::size_t alignment, std::size_t size) {
    note();
    return __libc_memalign(alignment, size);
}

void *aligned_alloc(std::size_t alignment, std::size_t size) {
    note();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void **memory, std::size_t alignment, std::size_t size) {
    note();
    *memory = __libc_memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}

void free(void *memory) {
    note();
    __libc_free(memory);
}
}

namespace promises {
namespace {

template <typename Work>
unsigned long calls_during(Work work) {
    calls = 0;
    counting = true;
    work();
    counting = false;
    return calls;
}

TEST(Promises, no_allocator_is_called) {
    // The counter sees each way to the heap, operator new and the C library's own included.
    void *volatile memory = nullptr;
    EXPECT_EQ(calls_during([&] {
                  memory = std::malloc(1);
                  memory = std::realloc(memory, 100);
                  std::free(memory);
                  memory = std::calloc(1, 1);
                  std::free(memory);
                  memory = std::aligned_alloc(64, 64);
                  std::free(memory);
              }),
              7);
    EXPECT_EQ(calls_during([&] { memory = new char; }), 1);
    delete static_cast<char *>(memory);
    EXPECT_EQ(calls_during([&] { memory = strdup("a"); }), 1);
    std::free(memory);

    // Once in a process, and the C library's own: the time zone's file, the buffer of standard output.
    const Silence silence;
    tzset();
    std::puts("");

    static Buffers room;
    EXPECT_FALSE(messages().empty());
    for (const std::string &message : messages()) {
        EXPECT_EQ(calls_during([&] { decode(message, room); }), 0) << message;
        EXPECT_EQ(calls_during([&] { encode(room); }), 0) << message;
        EXPECT_EQ(calls_during([&] { scan_and_build(message, room); }), 0) << message;
    }
    everything(room); // the records of careless hosts stand ready
    EXPECT_EQ(calls_during([&] { everything(room); }), 0);
    EXPECT_EQ(calls_during([&] { build_identifiers(room); }), 0);
}

} // namespace
} // namespace promises
