// The promises of docs/limits.md and of the headers: the stack a call takes, and two threads calling at once.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <ucontext.h>

#include <gtest/gtest.h>
#include <sipcode/decode.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>

#include "worst_cases.h"

namespace {

struct Buffers {
    SIP_CODE_MSG record;
    SIP_DECODE_REPORT report;
    char text[SIP_REQUEST_SIZE];
};

// The sample messages, and those that make each decoder work hardest.
const std::vector<std::string> &messages() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> read;
        for (const auto &entry : std::filesystem::directory_iterator(SIPCODE_SOURCE "/examples/messages")) {
            std::ifstream file(entry.path(), std::ios::binary);
            read.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        }
        for (const bench::WorstCase &row : bench::worst_cases())
            read.push_back(row.message(SIP_LONGEST_MESSAGE));
        return read;
    }();
    return all;
}

void decode(const std::string &message, Buffers &room) {
    std::memset(&room.record, 0, sizeof room.record);
    Sip_Decode(const_cast<char *>(message.c_str()), &room.record);
    SIP_Decode_Buffer(message.data(), message.size(), &room.record, &room.report);
}

// By all four encoders, with every method and status.
void encode(Buffers &room) {
    for (int method = SIP_REQUEST_MSG_RESPONSE; method < SIP_CODE_METHOD_COUNT; ++method) {
        room.record.method = method;
        SIP_Encode_Message_Reuqest(room.text, &room.record);
        SIP_Encode_Message_Response(room.text, &room.record);
        SIP_Encode_Request_Buffer(room.text, sizeof room.text, &room.record);
        SIP_Encode_Response_Buffer(room.text, sizeof room.text, &room.record);
    }
}

// The functions that keep a copy of a message or build a text.
void scan_and_build(const std::string &message, Buffers &room) {
    static char challenge[] = "WWW-Authenticate: Digest ";
    static char other_challenge[] = "Proxy-Authenticate: Digest ";
    static SIP_MSG split{};
    split.headers = 2;
    split.header[0] = challenge;
    split.header[1] = other_challenge;
    room.text[message.copy(room.text, sizeof room.text - 1)] = '\0';
    Parse_Authen_bak(&room.record.authen, &split, room.text);
    Parse_Authen_bak2(&room.record.authen, &split, room.text);
    Parse_Authen_bak3(&room.record.authen, &split, room.text);
    Parse_Message_Summary(&room.record.message_summary, room.text);
    SIP_Decode_Msg_Printf(room.text, &room.record);
    Build_Date(room.text);
    Build_Via_Branch(room.text);
}

constexpr unsigned char paint = 0xA5;
alignas(64) unsigned char stack[256 * 1024];
ucontext_t caller;
ucontext_t callee;
const std::function<void()> *work;

// Bytes from the top of a painted stack down to the lowest one that a call changed.
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
    const std::size_t at = text.find("\n| " + row + " | ");
    return at == std::string::npos ? 0 : std::stoul(text.substr(at + row.size() + 6));
}

// An unoptimised library takes more, as a sanitized one does.
TEST(Promises, stack_is_as_stated) {
    if (!SIPCODE_IS_OPTIMISED)
        GTEST_SKIP();
    static Buffers room;
    testing::internal::CaptureStdout();           // the library prints the video section of a session description
    for (const std::string &message : messages()) // binds all names
        decode(message, room), encode(room), scan_and_build(message, room);
    const std::size_t none = depth_of([] {});
    std::size_t decoding = 0;
    std::size_t encoding = 0;
    std::size_t others = 0;
    for (const std::string &message : messages()) {
        decoding = std::max(decoding, depth_of([&] { decode(message, room); }) - none);
        encoding = std::max(encoding, depth_of([] { encode(room); }) - none);
        others = std::max(others, depth_of([&] { scan_and_build(message, room); }) - none);
    }
    testing::internal::GetCapturedStdout();
    for (const auto &[what, measured] : {std::pair{"stack of a decode", decoding},
                                         {"stack of an encode", encoding},
                                         {"stack of any other function", others}}) {
        EXPECT_LE(measured, stated(what)) << what;
        EXPECT_GE(measured, stated(what) / 2) << what << ": the stated figure says little";
    }
}

// Under ThreadSanitizer.
TEST(Promises, two_threads_at_once) {
    static Buffers rooms[2];
    testing::internal::CaptureStdout();
    const auto decode_and_encode_all = [](Buffers &room) {
        for (const std::string &message : messages()) {
            decode(message, room);
            encode(room);
        }
    };
    messages();
    std::thread other([&] { decode_and_encode_all(rooms[0]); });
    decode_and_encode_all(rooms[1]);
    other.join();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::memcmp(&rooms[0].record, &rooms[1].record, sizeof(SIP_CODE_MSG)), 0);
}

} // namespace
