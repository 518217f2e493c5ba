// Writes a capture file, see capture.h.
#include "capture.h"

#include <tins/data_link_type.h>
#include <tins/ethernetII.h>
#include <tins/ip.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>
#include <tins/udp.h>

namespace {

constexpr std::size_t max_streams = 10000; // whose sequence numbers are kept

Tins::IPv4Address ip_of(const Capture::Address &address) { return Tins::IPv4Address(address.address().to_string()); }

Tins::RawPDU payload(std::string_view message) {
    return {reinterpret_cast<const std::uint8_t *>(message.data()), static_cast<std::uint32_t>(message.size())};
}

} // namespace

Capture::Capture(const std::string &file) : writer_(file, Tins::DataLinkType<Tins::EthernetII>()) {}

void Capture::add(TRANS_TYPE_E transport, const Address &from, const Address &to, std::string_view message) {
    Tins::EthernetII packet = Tins::EthernetII() / Tins::IP(ip_of(to), ip_of(from));
    if (transport == E_TCP) {
        if (sequences_.size() > max_streams)
            sequences_.clear();
        std::uint32_t &sequence = sequences_[{from, to}];
        Tins::TCP segment(to.port(), from.port());
        segment.seq(sequence);
        segment.ack_seq(sequences_[{to, from}]);
        segment.flags(Tins::TCP::PSH | Tins::TCP::ACK);
        sequence += static_cast<std::uint32_t>(message.size());
        packet /= segment / payload(message);
    } else {
        packet /= Tins::UDP(to.port(), from.port()) / payload(message);
    }
    writer_.write(packet);
}
