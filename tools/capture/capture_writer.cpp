// Writes messages to a capture file, see capture_writer.h.
#include "capture_writer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fmt/core.h>
#include <tins/ethernetII.h>
#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>
#include <tins/udp.h>

namespace {

constexpr int longest_packet = 262144;

bool is_ipv6(const Endpoint &endpoint) { return endpoint.address.find(':') != std::string::npos; }

Tins::EthernetII packet_of(const Endpoint &source, const Endpoint &destination) {
    if (is_ipv6(source))
        return Tins::EthernetII() / Tins::IPv6(destination.address, source.address);
    return Tins::EthernetII() / Tins::IP(destination.address, source.address);
}

timeval time_of(const PacketMark &mark) { return {.tv_sec = mark.seconds, .tv_usec = mark.microseconds}; }

} // namespace

CaptureWriter::CaptureWriter(const std::string &file)
    : name_(file), format_(pcap_open_dead(DLT_EN10MB, longest_packet)) {
    std::FILE *const stream = std::fopen(file.c_str(), "wb");
    if (stream != nullptr)
        file_.reset(pcap_dump_fopen(format_.get(), stream));
    if (file_ == nullptr)
        fail();
}

void CaptureWriter::fail() const { throw CaptureError(fmt::format("{}: {}", name_, std::strerror(errno))); }

void CaptureWriter::finish() {
    if (pcap_dump_flush(file_.get()) != 0)
        fail();
}

void CaptureWriter::add(const CapturedMessage &message) {
    const Endpoint &source = message.source;
    const Endpoint &destination = message.destination;
    const Tins::RawPDU payload(reinterpret_cast<const std::uint8_t *>(message.text.data()),
                               static_cast<std::uint32_t>(message.text.size()));
    Tins::EthernetII packet = packet_of(source, destination);
    if (message.transport == Transport::tcp) {
        std::uint32_t &sequence = sequences_[{source, destination}];
        Tins::TCP segment(destination.port, source.port);
        segment.seq(sequence);
        segment.flags(Tins::TCP::PSH | Tins::TCP::ACK);
        sequence += static_cast<std::uint32_t>(message.text.size());
        packet /= segment / payload;
    } else {
        packet /= Tins::UDP(destination.port, source.port) / payload;
    }
    const std::vector<std::uint8_t> bytes = packet.serialize();
    const auto size = static_cast<bpf_u_int32>(bytes.size());
    const pcap_pkthdr header{.ts = time_of(message.mark), .caplen = size, .len = size};
    pcap_dump(reinterpret_cast<u_char *>(file_.get()), &header, bytes.data());
}
