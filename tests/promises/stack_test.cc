// The stack that a call takes, on a painted stack of its own: the library and the C library beneath it. docs/limits.md states it.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <regex>
#include <string>
#include <ucontext.h>

#include <gtest/gtest.h>

#include "workload.h"

namespace promises {
namespace {

constexpr unsigned char paint = 0xA5;
alignas(64) unsigned char stack[256 * 1024];
ucontext_t caller;
ucontext_t callee;
const std::function<void()> *work;

// Bytes between the top of the stack and the deepest one that changed.
std::size_t depth_of(const std::function<void()> &call) {
    std::memset(stack, paint, sizeof stack);
    work = &call;
    getcontext(&callee);
    callee.uc_stack.ss_sp = stack;
    callee.uc_stack.ss_size = sizeof stack;
    callee.uc_link = &caller;
    makecontext(
        &callee, [] { (*work)(); }, 0);
    swapcontext(&caller, &callee);
    const unsigned char *const deepest =
        std::find_if(std::begin(stack), std::end(stack), [](unsigned char byte) { return byte != paint; });
    return static_cast<std::size_t>(std::end(stack) - deepest);
}

// The figure of a row of docs/limits.md: "| stack of a decode | 12288 bytes |".
std::size_t stated(const std::string &row) {
    std::ifstream file(SIPCODE_SOURCE "/docs/limits.md");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::smatch found;
    if (!std::regex_search(text, found, std::regex("\\n\\| " + row + " \\| ([0-9]+) bytes \\|")))
        return 0;
    return std::stoul(found[1]);
}

TEST(Promises, stack_is_as_stated) {
    static Buffers room;
    const Silence silence;
    everything(room); // binds all names
    const std::size_t none = depth_of([] {});
    std::size_t decoding = 0;
    std::size_t encoding = 0;
    std::size_t others = 0;
    for (const std::string &message : messages()) {
        decoding = std::max(decoding, depth_of([&] { decode(message, room); }));
        encoding = std::max(encoding, depth_of([] { encode(room); }));
        others = std::max(others, depth_of([&] { scan_and_build(message, room); }));
        others = std::max(others, depth_of([] { build_identifiers(room); }));
    }
    for (const SIP_CODE_MSG &record : records()) {
        room.record = record;
        encoding = std::max(encoding, depth_of([] { encode(room); }));
    }

    struct Row {
        const char *what;
        std::size_t measured;
    };
    for (const Row &row : {Row{"stack of a decode", decoding - none}, Row{"stack of an encode", encoding - none},
                           Row{"stack of any other function", others - none}}) {
        std::fprintf(stderr, "%s: %zu bytes measured\n", row.what, row.measured);
        EXPECT_LE(row.measured, stated(row.what)) << row.what;
        EXPECT_GE(row.measured, stated(row.what) / 2) << row.what << ": the stated figure says little";
    }
}

} // namespace
} // namespace promises
