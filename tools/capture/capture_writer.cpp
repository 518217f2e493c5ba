// Writes messages to a capture file, see capture_writer.h.
#include "capture_writer.h"

#include <tins/data_link_type.h>
#include <tins/ethernetII.h>
#include <tins/exceptions.h>
#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/packet.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>
#include <tins/timestamp.h>
#include <tins/udp.h>

namespace {

Tins::PacketWriter open(const std::string &file) {
    try {
        return {file, Tins::DataLinkType<Tins::EthernetII>()};
    } catch (const Tins::exception_base &error) {
        throw CaptureError(error.what());
    }
}

bool is_ipv6(const Endpoint &endpoint) { return endpoint.address.find(':') != std::string::npos; }

Tins::EthernetII packet_of(const Endpoint &source, const Endpoint &destination) {
    if (is_ipv6(source))
        return Tins::EthernetII() / Tins::IPv6(destination.address, source.address);
    return Tins::EthernetII() / Tins::IP(destination.address, source.address);
}

timeval time_of(const PacketMark &mark) { return {.tv_sec = mark.seconds, .tv_usec = mark.microseconds}; }

} // namespace

CaptureWriter::CaptureWriter(const std::string &file) : writer_(open(file)) {}

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
    Tins::Packet stamped(packet, Tins::Timestamp(time_of(message.mark)));
    writer_.write(stamped);
}
