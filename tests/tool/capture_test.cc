// Messages in captures. Each capture of tests/data/captures has a file beside it with the messages that it holds.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "capture_file.h"
#include "capture_messages.h"

namespace {

std::string file_content(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string capture(const std::string &name) { return file_content(SIPCODE_TEST_DATA "/captures/" + name + ".pcap"); }

// A line for each message: packet, transport, addresses, size, first word. Then what went wrong.
std::string read(const std::string &file, const std::string &filter = "") {
    std::string found;
    std::FILE *const stream = std::tmpfile();
    std::fwrite(file.data(), 1, file.size(), stream);
    std::rewind(stream);
    try {
        CaptureFile packets(stream, filter);
        CaptureMessages messages(packets.link_type(), [&found](const CapturedMessage &message) {
            found += fmt::format("{} {} {} > {} {}{} {}\n", message.mark.number, transport_name(message.transport),
                                 endpoint_text(message.source), endpoint_text(message.destination),
                                 message.is_whole ? "" : "only ", message.text.size(),
                                 message.text.substr(0, message.text.find(' ')));
        });
        for (Packet packet; packets.next(packet);)
            messages.add(packet);
        messages.finish();
        for (const auto &[what, count] : messages.not_read())
            if (count != 0)
                found += fmt::format("{}: {}\n", what, count);
    } catch (const CaptureError &error) {
        found += fmt::format("{}\n", error.what());
    }
    return found;
}

TEST(Capture, holds_messages) {
    int captures = 0;
    for (const auto &entry : std::filesystem::directory_iterator(SIPCODE_TEST_DATA "/captures")) {
        std::filesystem::path expected = entry.path();
        if (entry.path().extension() != ".pcap")
            continue;
        EXPECT_EQ(read(file_content(entry.path())), file_content(expected.replace_extension("messages"))) << entry;
        ++captures;
    }
    EXPECT_GT(captures, 20);
}

TEST(Capture, is_filtered) {
    const std::string file = capture("udp-and-tcp");
    EXPECT_EQ(read(file, "tcp port 40000"), "2 TCP 192.0.2.1:40000 > 192.0.2.2:5060 56 ACK\n");
    EXPECT_EQ(read(file, "udp and less 80"), "3 UDP 192.0.2.1:5060 > 192.0.2.2:5060 27 SIP/2.0\n");
    EXPECT_EQ(read(file, "no such").substr(0, 8), "filter: ");
}

TEST(Capture, may_have_any_time) {
    EXPECT_EQ(time_text({1, 1'000'000'000, 250}), "2001-09-09T01:46:40.000250Z");
    EXPECT_EQ(time_text({1, 4'102'444'799, 999'999}), "2099-12-31T23:59:59.999999Z");
    EXPECT_EQ(time_text({1, INT64_MAX, 0}), "9223372036854775807.000000 s");
    std::FILE *const stream = std::fopen(SIPCODE_TEST_DATA "/captures/end-lost.pcap", "rb");
    CaptureFile packets(stream, "");
    CaptureMessages messages(packets.link_type(), [](const CapturedMessage &) {});
    Packet packet;
    ASSERT_TRUE(packets.next(packet));
    for (const std::int64_t seconds : {INT64_MIN, INT64_MAX, INT64_MIN}) {
        packet.mark.seconds = seconds;
        messages.add(packet);
    }
}

// Damage changes no message that ends before it.
TEST(Capture, may_be_damaged_anywhere) {
    std::mt19937 random(1);
    const std::string file = capture("fragments-and-segments");
    std::size_t found = 0;
    for (int round = 0; round < 1000; ++round) {
        std::string damaged = file;
        const std::size_t at = 24 + random() % (file.size() - 24);
        for (std::size_t i = at; i < std::min(at + random() % 5 + 1, file.size()); ++i)
            damaged[i] = static_cast<char>(random());
        std::string before = read(file.substr(0, at));
        for (const char *const of_missing_rest : {" only ", "truncated", "packets"})
            before.resize(std::min(before.find(of_missing_rest), before.size()));
        before.resize(before.rfind('\n') + 1);
        ASSERT_EQ(read(damaged).substr(0, before.size()), before) << "byte " << at;
        found += before.size();
    }
    EXPECT_GT(found, 10000U);
}

TEST(Capture, is_recognised) {
    EXPECT_TRUE(is_capture(capture("ethernet").substr(0, 4)));
    EXPECT_TRUE(is_capture("\x0a\x0d\x0d\x0a")); // pcapng
    EXPECT_TRUE(is_capture("\xa1\xb2\x3c\x4d"));
    EXPECT_FALSE(is_capture("MESS"));
    EXPECT_FALSE(is_capture("\n\r\r"));
}

} // namespace
