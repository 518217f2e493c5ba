// Reads UDP datagrams and TCP segments from packets, see transport.h.
#include "transport.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <utility>
#include <vector>

#include <fmt/compile.h>
#include <tins/ethernetII.h>
#include <tins/exceptions.h>
#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/pppoe.h>
#include <tins/radiotap.h>
#include <tins/rawpdu.h>
#include <tins/sll.h>
#include <tins/tcp.h>
#include <tins/udp.h>

namespace {

using Bytes = std::span<const std::uint8_t>;
using Pdu = std::unique_ptr<Tins::PDU>;

constexpr std::uint8_t tcp_protocol = 6;
constexpr std::uint8_t udp_protocol = 17;

template <typename Header>
Pdu parse(Bytes bytes) {
    return std::make_unique<Header>(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

// An IP packet after a header of fixed size. The version is in the packet itself.
template <std::size_t header_size>
Pdu parse_ip(Bytes bytes) {
    if (bytes.size() <= header_size)
        return nullptr;
    bytes = bytes.subspan(header_size);
    switch (bytes[0] >> 4) {
    case 4:
        return parse<Tins::IP>(bytes);
    case 6:
        return parse<Tins::IPv6>(bytes);
    default:
        return nullptr;
    }
}

struct LinkLayer {
    int type;
    Pdu (*parse)(Bytes);
};
constexpr LinkLayer link_layers[] = {
    {DLT_EN10MB, parse<Tins::EthernetII>},
    {DLT_LINUX_SLL, parse<Tins::SLL>},
    {DLT_LINUX_SLL2, parse_ip<20>},
    {DLT_NULL, parse_ip<4>},
    {DLT_LOOP, parse_ip<4>},
    {DLT_RAW, parse_ip<0>},
    {DLT_IPV4, parse_ip<0>},
    {DLT_IPV6, parse_ip<0>},
    {DLT_IEEE802_11_RADIO, parse<Tins::RadioTap>},
};

// The payload of a fragment or an upper layer, which libtins does not parse.
std::vector<std::uint8_t> raw_payload(const Tins::PDU &pdu) {
    const auto *raw = pdu.find_pdu<Tins::RawPDU>();
    return raw == nullptr ? std::vector<std::uint8_t>() : raw->payload();
}

Bytes payload_of(const Tins::PDU &pdu) {
    const auto *raw = Tins::tins_cast<const Tins::RawPDU *>(pdu.inner_pdu());
    return raw == nullptr ? Bytes() : Bytes(raw->payload());
}

// What PPPoE (RFC 2516) or VXLAN (RFC 7348) carries, which libtins leaves as bytes; otherwise the packet itself.
Pdu unwrapped(Pdu packet) {
    constexpr std::uint16_t vxlan_port = 4789;
    constexpr std::size_t vxlan_header = 8;
    constexpr std::size_t ppp_header = 2;
    if (packet == nullptr)
        return packet;
    if (const auto *pppoe = packet->find_pdu<Tins::PPPoE>(); pppoe != nullptr && payload_of(*pppoe).size() > ppp_header)
        return parse_ip<ppp_header>(payload_of(*pppoe));
    const auto *udp = packet->find_pdu<Tins::UDP>();
    if (udp != nullptr && udp->dport() == vxlan_port && payload_of(*udp).size() > vxlan_header)
        return parse<Tins::EthernetII>(payload_of(*udp).subspan(vxlan_header));
    return packet;
}

// The innermost IP packet: of a tunnel, the packet inside it.
const Tins::PDU *innermost_ip(const Tins::PDU &packet) {
    const Tins::PDU *found = nullptr;
    for (const Tins::PDU *pdu = &packet; pdu != nullptr; pdu = pdu->inner_pdu()) {
        if (pdu->pdu_type() == Tins::PDU::IP || pdu->pdu_type() == Tins::PDU::IPv6)
            found = pdu;
    }
    return found;
}

// libtins takes ten times as long.
std::string text_of(Tins::IPv4Address address) {
    const auto bytes = std::bit_cast<std::array<std::uint8_t, 4>>(static_cast<std::uint32_t>(address));
    return fmt::format(FMT_COMPILE("{}.{}.{}.{}"), bytes[0], bytes[1], bytes[2], bytes[3]);
}

Segment segment_of(const Tins::UDP &udp) {
    constexpr std::size_t header_size = 8;
    const std::size_t stated = udp.length() < header_size ? 0 : udp.length() - header_size;
    const Bytes payload = payload_of(udp);
    return {.transport = Transport::udp,
            .source = {"", udp.sport()},
            .destination = {"", udp.dport()},
            .payload = payload.first(std::min(payload.size(), stated))};
}

Segment segment_of(const Tins::TCP &tcp) {
    const bool opens = tcp.get_flag(Tins::TCP::SYN) != 0;
    return {.transport = Transport::tcp,
            .source = {"", tcp.sport()},
            .destination = {"", tcp.dport()},
            .payload = payload_of(tcp),
            .sequence = tcp.seq() + (opens ? 1 : 0),
            .opens = opens};
}

} // namespace

std::string_view transport_name(Transport transport) { return transport == Transport::udp ? "UDP" : "TCP"; }

std::string endpoint_text(const Endpoint &endpoint) {
    const bool is_ipv6 = endpoint.address.find(':') != std::string::npos;
    return fmt::format("{}:{}", is_ipv6 ? "[" + endpoint.address + "]" : endpoint.address, endpoint.port);
}

TransportReader::TransportReader(int link_type) : media_(link_type) {
    const auto *const layer = std::find_if(std::begin(link_layers), std::end(link_layers),
                                           [link_type](const LinkLayer &known) { return known.type == link_type; });
    if (layer == std::end(link_layers)) {
        const char *name = pcap_datalink_val_to_description_or_dlt(link_type);
        throw CaptureError(fmt::format("unknown link layer {}", name));
    }
    parse_ = layer->parse;
}

TransportReader::~TransportReader() = default;

std::optional<Segment> TransportReader::read(std::span<const std::uint8_t> packet) {
    if (media_.matches(packet))
        return std::nullopt;
    try {
        packet_ = unwrapped(parse_(packet));
        const Tins::PDU *ip = packet_ == nullptr ? nullptr : innermost_ip(*packet_);
        if (ip == nullptr) {
            ++without_ip_;
            return std::nullopt;
        }
        if (const auto *ipv4 = Tins::tins_cast<const Tins::IP *>(ip))
            return read_ipv4(*ipv4);
        return read_ipv6(static_cast<const Tins::IPv6 &>(*ip));
    } catch (const Tins::exception_base &) {
        ++malformed_;
        return std::nullopt;
    }
}

std::optional<Segment> TransportReader::read_ipv4(const Tins::IP &ip) {
    const std::string source = text_of(ip.src_addr());
    const std::string destination = text_of(ip.dst_addr());
    if (!ip.is_fragmented())
        return segment_in(ip, source, destination);
    constexpr std::size_t offset_unit = 8;
    return add_fragment({source, destination, ip.id(), ip.protocol(), ip.fragment_offset() * offset_unit,
                         (ip.flags() & Tins::IP::MORE_FRAGMENTS) != 0, raw_payload(ip)});
}

// The fragment header is: next header (1 byte), reserved (1), offset in the upper 13 bits and "more" in the lowest bit
// (2), identification (4).
std::optional<Segment> TransportReader::read_ipv6(const Tins::IPv6 &ip) {
    const std::string source = ip.src_addr().to_string();
    const std::string destination = ip.dst_addr().to_string();
    if (ip.search_header(Tins::IPv6::FRAGMENT) == nullptr)
        return segment_in(ip, source, destination);
    constexpr std::size_t header_size = 8;
    if (ip.headers().back().option() != Tins::IPv6::FRAGMENT || ip.headers().back().data_size() + 2 != header_size)
        return std::nullopt;
    // libtins gives access to all of the header except its first byte.
    const std::vector<std::uint8_t> bytes = Tins::IPv6(ip).serialize();
    const std::uint8_t *const header = bytes.data() + ip.header_size() - header_size;
    const auto id = static_cast<std::uint32_t>(header[4] << 24 | header[5] << 16 | header[6] << 8 | header[7]);
    const auto offset = static_cast<std::size_t>((header[2] << 8 | header[3]) & 0xfff8);
    return add_fragment({source, destination, id, header[0], offset, (header[3] & 1) != 0, raw_payload(ip)});
}

std::optional<Segment> TransportReader::add_fragment(Fragment fragment) {
    const std::uint8_t protocol = fragment.protocol;
    std::string source = fragment.source;
    std::string destination = fragment.destination;
    if (protocol != udp_protocol && protocol != tcp_protocol) {
        ++without_transport_;
        return std::nullopt;
    }
    const std::optional<std::vector<std::uint8_t>> whole = fragments_.add(std::move(fragment));
    if (!whole)
        return std::nullopt;
    packet_ = protocol == udp_protocol ? parse<Tins::UDP>(*whole) : parse<Tins::TCP>(*whole);
    return segment_in(*packet_, std::move(source), std::move(destination));
}

std::optional<Segment> TransportReader::segment_in(const Tins::PDU &pdu, std::string source, std::string destination) {
    std::optional<Segment> segment;
    if (const auto *udp = pdu.find_pdu<Tins::UDP>())
        segment = segment_of(*udp);
    else if (const auto *tcp = pdu.find_pdu<Tins::TCP>())
        segment = segment_of(*tcp);
    else
        ++without_transport_;
    if (segment) {
        segment->source.address = std::move(source);
        segment->destination.address = std::move(destination);
    }
    return segment;
}
