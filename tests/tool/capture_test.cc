// Messages in captures: link layers, fragments, streams, damage. libtins makes the packets.
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <tins/tins.h>

#include "capture_file.h"
#include "capture_messages.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// ---------------------------------------------------------------------------------------------------------------------
// Messages

std::string message(std::string_view name, std::string_view body = "") {
    return fmt::format("{} sip:a@b SIP/2.0\r\nCall-ID: {}\r\nContent-Length: {}\r\n\r\n{}", name, name, body.size(),
                       body);
}

const std::string invite = message("INVITE", std::string(3000, 'x') + "\r\n");
const std::string bye = message("BYE");
const std::string ack = message("ACK");
const std::string long_message = message("MESSAGE", std::string(5000, 'm'));
const std::string unmeasured = "OPTIONS sip:a@b SIP/2.0\r\nCall-ID: c\r\n\r\n";
const std::string ok = "SIP/2.0 200 OK\r\nl : 2\r\n\r\nhi";

// ---------------------------------------------------------------------------------------------------------------------
// Packets

constexpr const char *caller = "192.0.2.1";
constexpr const char *called = "192.0.2.2";

Tins::IP ip() { return Tins::IP(called, caller); }
Tins::IPv6 ip6() { return Tins::IPv6("2001:db8::2", "2001:db8::1"); }
Tins::UDP udp(std::uint16_t port = 5060) { return Tins::UDP(5060, port); }

Bytes bytes(Tins::PDU &&packet) { return packet.serialize(); }

Bytes datagram(const std::string &text) { return bytes(Tins::EthernetII() / ip() / udp() / Tins::RawPDU(text)); }

Bytes behind(Bytes header, const Bytes &packet) {
    header.insert(header.end(), packet.begin(), packet.end());
    return header;
}

// A UDP datagram cut into pieces of 1000 bytes. packet_of(piece, place, has_more) makes the packet of a piece.
template <typename Make>
std::vector<Bytes> fragments(const std::string &text, const Make &packet_of) {
    constexpr std::size_t size = 1000;
    const Bytes whole = bytes(udp() / Tins::RawPDU(text));
    std::vector<Bytes> packets;
    for (std::size_t at = 0; at < whole.size(); at += size) {
        const std::size_t end = std::min(at + size, whole.size());
        packets.push_back(
            packet_of(Bytes(whole.begin() + long(at), whole.begin() + long(end)), at, end < whole.size()));
    }
    return packets;
}

std::vector<Bytes> fragments4(const std::string &text) {
    return fragments(text, [](const Bytes &piece, std::size_t at, bool has_more) {
        Tins::IP head = ip();
        head.id(7);
        head.protocol(17);
        head.fragment_offset(static_cast<std::uint16_t>(at / 8));
        if (has_more)
            head.flags(Tins::IP::MORE_FRAGMENTS);
        return bytes(Tins::EthernetII() / head / Tins::RawPDU(piece.begin(), piece.end()));
    });
}

std::vector<Bytes> fragments6(const std::string &text) {
    return fragments(text, [](const Bytes &piece, std::size_t at, bool has_more) {
        const Bytes header = {17, 0, std::uint8_t(at >> 8), std::uint8_t(at | std::size_t{has_more}), 0, 0, 0, 9};
        Bytes packet = bytes(Tins::EthernetII() / ip6() / Tins::RawPDU(behind(header, piece)));
        packet[14 + 6] = 44; // the next header is a fragment header, which libtins does not write
        return packet;
    });
}

Bytes segment(std::uint32_t sequence, const std::string &text, unsigned flags = Tins::TCP::ACK) {
    Tins::TCP tcp(5060, 40000);
    tcp.seq(sequence);
    tcp.flags(static_cast<std::uint16_t>(flags));
    if (text.empty())
        return bytes(Tins::EthernetII() / ip() / tcp);
    return bytes(Tins::EthernetII() / ip() / tcp / Tins::RawPDU(text));
}

Bytes syn(std::uint32_t sequence) { return segment(sequence - 1, "", Tins::TCP::SYN); }

// ---------------------------------------------------------------------------------------------------------------------
// Files

void put(std::string &file, std::uint32_t number) { file.append(reinterpret_cast<const char *>(&number), 4); }

std::string pcap(int link_type, const std::vector<Bytes> &packets, std::size_t snapped = 65535) {
    std::string file;
    put(file, 0xa1b2c3d4);
    put(file, 0x00040002);
    put(file, 0);
    put(file, 0);
    put(file, 65535);
    put(file, static_cast<std::uint32_t>(link_type));
    std::uint32_t second = 1'000'000'000;
    for (const Bytes &packet : packets) {
        const std::size_t kept = std::min(packet.size(), snapped);
        put(file, second++);
        put(file, 250);
        put(file, static_cast<std::uint32_t>(kept));
        put(file, static_cast<std::uint32_t>(packet.size()));
        file.append(packet.begin(), packet.begin() + static_cast<std::ptrdiff_t>(kept));
    }
    return file;
}

struct Read {
    std::string messages; // one line each: packet, transport, addresses, size, start line
    std::string error;
    std::size_t malformed = 0;
    std::size_t incomplete = 0;
};

Read read(const std::string &file, const std::string &filter = "") {
    Read got;
    std::FILE *stream = std::tmpfile();
    std::fwrite(file.data(), 1, file.size(), stream);
    std::rewind(stream);
    try {
        CaptureFile capture(stream, filter);
        CaptureMessages messages(capture.link_type(), [&got](const CapturedMessage &found) {
            got.messages += fmt::format("{} {} {} > {} {}{} {}\n", found.mark.number, transport_name(found.transport),
                                        endpoint_text(found.source), endpoint_text(found.destination),
                                        found.is_whole ? "" : "only ", found.text.size(),
                                        found.text.substr(0, found.text.find(' ')));
        });
        for (Packet packet; capture.next(packet);)
            messages.add(packet);
        messages.finish();
        got.malformed = messages.malformed();
        got.incomplete = messages.incomplete();
    } catch (const CaptureError &error) {
        got.error = error.what();
    }
    return got;
}

// ---------------------------------------------------------------------------------------------------------------------
// Cases

struct Case {
    const char *title;
    std::string file;
    std::string messages;
    std::size_t malformed = 0;
    std::size_t incomplete = 0;
};

std::vector<Bytes> reversed(std::vector<Bytes> packets) { return {packets.rbegin(), packets.rend()}; }

std::vector<Bytes> joined(std::vector<Bytes> packets, const std::vector<Bytes> &more) {
    packets.insert(packets.end(), more.begin(), more.end());
    return packets;
}

// Segments of a byte stream that begins at the sequence number, cut behind so many bytes each.
std::vector<Bytes> stream(std::uint32_t sequence, const std::string &text, std::size_t size) {
    std::vector<Bytes> packets;
    for (std::size_t at = 0; at < text.size(); at += size)
        packets.push_back(segment(sequence + static_cast<std::uint32_t>(at), text.substr(at, size)));
    return packets;
}

std::string line(std::size_t packet, std::string_view transport, const std::string &text, std::string_view only = "") {
    return fmt::format("{} {} 192.0.2.1:{} > 192.0.2.2:5060 {}{} {}\n", packet, transport,
                       transport == "UDP" ? 5060 : 40000, only, text.size(), text.substr(0, text.find(' ')));
}

std::string line6(std::size_t packet, const std::string &text) {
    return fmt::format("{} UDP [2001:db8::1]:5060 > [2001:db8::2]:5060 {} {}\n", packet, text.size(),
                       text.substr(0, text.find(' ')));
}

const Bytes bare = bytes(ip() / udp() / Tins::RawPDU(bye));
const Bytes bare6 = bytes(ip6() / udp() / Tins::RawPDU(bye));
constexpr int ethernet = DLT_EN10MB;
constexpr std::uint32_t near_wrap = 0xfffffff0;

std::vector<Bytes> rest_of_lost_segment() {
    std::vector<Bytes> packets = stream(100, invite + bye, 500);
    packets.erase(packets.begin() + 2);
    return packets;
}

const Case cases[] = {
    // link layers
    {"Ethernet", pcap(ethernet, {datagram(bye), datagram(ok)}), line(1, "UDP", bye) + line(2, "UDP", ok)},
    {"Linux cooked", pcap(DLT_LINUX_SLL, {behind({0, 0, 0, 1, 0, 6, 1, 2, 3, 4, 5, 6, 0, 0, 8, 0}, bare)}),
     line(1, "UDP", bye)},
    {"Linux cooked, second version",
     pcap(276, {behind({8, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 6, 1, 2, 3, 4, 5, 6, 0, 0}, bare)}), line(1, "UDP", bye)},
    {"loopback", pcap(DLT_NULL, {behind({2, 0, 0, 0}, bare), behind({30, 0, 0, 0}, bare6)}),
     line(1, "UDP", bye) + line6(2, bye)},
    {"no link layer", pcap(101, {bare, bare6}), line(1, "UDP", bye) + line6(2, bye)},
    {"tunnel", pcap(101, {bytes(Tins::IP("198.51.100.1", "198.51.100.2") / ip() / udp() / Tins::RawPDU(bye))}),
     line(1, "UDP", bye)},

    // what is no message
    {"keep-alives, media and other protocols",
     pcap(ethernet, {datagram("\r\n\r\n"), datagram(std::string(4, '\0')), datagram("\x80\x08 SIP"), datagram(""),
                     bytes(Tins::EthernetII() / ip() / Tins::UDP(9, 9) / Tins::RawPDU("GET / HTTP/1.1\r\n")),
                     bytes(Tins::EthernetII() / Tins::ARP()), segment(1, "GET / HTTP/1.1\r\n\r\n")}),
     ""},
    {"malformed packet", pcap(101, {{0x45, 0, 0}, bare}), line(2, "UDP", bye), 1},

    // fragments
    {"fragments the other way round", pcap(ethernet, reversed(fragments4(invite))), line(4, "UDP", invite)},
    {"fragment lost", pcap(ethernet, {fragments4(invite)[0], fragments4(invite)[2], fragments4(invite)[3]}), "", 0, 1},
    {"fragments, IPv6", pcap(ethernet, reversed(fragments6(invite))), line6(4, invite)},

    // streams
    {"message over segments", pcap(ethernet, joined({syn(100)}, stream(100, invite, 1000))), line(5, "TCP", invite)},
    {"segments out of order", pcap(ethernet, joined({syn(100)}, reversed(stream(100, bye + invite, 700)))),
     line(6, "TCP", bye) + line(6, "TCP", invite)},
    {"sequence numbers wrap", pcap(ethernet, joined({syn(near_wrap)}, stream(near_wrap, invite + bye, 900))),
     line(5, "TCP", invite) + line(5, "TCP", bye)},
    {"message longer than the codec decodes", pcap(ethernet, stream(100, long_message + bye, 1400)),
     line(4, "TCP", long_message) + line(4, "TCP", bye)},
    {"no length told",
     pcap(ethernet,
          {segment(100, unmeasured), segment(100 + std::uint32_t(unmeasured.size()), unmeasured + "body\r\n" + bye)}),
     line(1, "TCP", unmeasured) + line(2, "TCP", unmeasured + "body\r\n") + line(2, "TCP", bye)},
    {"no beginning captured",
     pcap(ethernet, {segment(100, "z9hG4bK\r\nVia: SIP/2.0/TCP\r\n\r\nbody" + ("\r\n" + bye))}), line(1, "TCP", bye)},
    {"segment lost", pcap(ethernet, rest_of_lost_segment()),
     line(6, "TCP", invite.substr(0, 1000), "only ") + line(6, "TCP", bye)},
    {"end lost", pcap(ethernet, {segment(100, bye + invite.substr(0, 80))}),
     line(1, "TCP", bye) + line(1, "TCP", invite.substr(0, 80), "only ")},

    // packets cut off by the capture
    {"cut off", pcap(ethernet, {datagram(invite)}, 142), line(1, "UDP", invite.substr(0, 100), "only ")},
};

TEST(Capture, Messages) {
    for (const Case &row : cases) {
        SCOPED_TRACE(row.title);
        const Read got = read(row.file);
        EXPECT_EQ(got.messages, row.messages);
        EXPECT_EQ(got.error, "");
        EXPECT_EQ(got.malformed, row.malformed);
        EXPECT_EQ(got.incomplete, row.incomplete);
    }
}

TEST(Capture, GapIsGivenUp) {
    std::vector<Bytes> packets = {segment(100, bye), segment(5000, invite.substr(0, 200))};
    std::uint32_t sequence = 100'000;
    for (int i = 0; i < 40; ++i, sequence += static_cast<std::uint32_t>(ack.size()))
        packets.push_back(segment(sequence, ack));
    const std::string got = read(pcap(ethernet, packets)).messages;
    EXPECT_EQ(got.substr(0, got.find("ACK")),
              line(1, "TCP", bye) + line(35, "TCP", invite.substr(0, 200), "only ") +
                  fmt::format("35 TCP 192.0.2.1:40000 > 192.0.2.2:5060 {} ", ack.size()));
    EXPECT_EQ(std::count(got.begin(), got.end(), '\n'), 42);
}

// A connection without a segment for more than ten minutes is over. The times of a capture are untrusted.
TEST(Capture, ConnectionIsIdle) {
    std::string got;
    CaptureMessages messages(ethernet,
                             [&got](const CapturedMessage &found) { got += fmt::format("{} ", found.text.size()); });
    const Bytes beginning = segment(100, invite.substr(0, 80));
    const Bytes empty = segment(180, "");
    const auto add = [&messages](std::int64_t seconds, const Bytes &packet) {
        messages.add({{1, seconds, 0}, packet, false});
    };
    add(0, beginning);
    add(600, empty);
    EXPECT_EQ(got, "");
    add(661, empty);
    EXPECT_EQ(got, "80 ");
    for (const std::int64_t seconds : {INT64_MIN, INT64_MAX, INT64_MIN})
        add(seconds, beginning);
    EXPECT_EQ(got, "80 ");
}

TEST(Capture, FilterAndLinkLayer) {
    const std::string file = pcap(ethernet, {datagram(bye), segment(1, ack), datagram(ok)});
    EXPECT_EQ(read(file, "tcp port 40000").messages, line(2, "TCP", ack));
    EXPECT_EQ(read(file, "udp and less 80").messages, line(3, "UDP", ok));
    EXPECT_EQ(read(file, "no such").error.substr(0, 8), "filter: ");
    EXPECT_EQ(read(pcap(DLT_PPP, {})).error, "unknown link layer PPP");
}

TEST(Capture, Time) {
    EXPECT_EQ(time_text({1, 1'000'000'000, 250}), "2001-09-09T01:46:40.000250Z");
    EXPECT_EQ(time_text({1, 4'102'444'799, 999'999}), "2099-12-31T23:59:59.999999Z");
    EXPECT_EQ(time_text({1, INT64_MAX, 0}), "9223372036854775807.000000 s");
}

// Damage changes no message that ends in front of it.
TEST(Capture, DamagedAnywhere) {
    std::mt19937 random(1);
    const std::string file =
        pcap(ethernet, joined(fragments4(invite), joined(fragments6(invite), stream(100, bye + invite, 700))));
    std::size_t found = 0;
    for (int round = 0; round < 1000; ++round) {
        std::string damaged = file;
        const std::size_t at = 24 + random() % (file.size() - 24);
        for (std::size_t i = at; i < std::min(at + random() % 5 + 1, file.size()); ++i)
            damaged[i] = static_cast<char>(random());
        std::string before = read(file.substr(0, at)).messages;
        before.resize(std::min(before.find(" only "), before.size())); // what the missing rest made incomplete
        before.resize(before.rfind('\n') + 1);
        ASSERT_EQ(read(damaged).messages.substr(0, before.size()), before) << "byte " << at;
        found += before.size();
    }
    EXPECT_GT(found, 10000U);
}

TEST(Capture, IsRecognised) {
    EXPECT_TRUE(is_capture(pcap(ethernet, {}).substr(0, 4)));
    EXPECT_TRUE(is_capture("\x0a\x0d\x0d\x0a")); // pcapng
    EXPECT_TRUE(is_capture("\xa1\xb2\x3c\x4d"));
    EXPECT_FALSE(is_capture("MESS"));
    EXPECT_FALSE(is_capture("\n\r\r"));
}

} // namespace
