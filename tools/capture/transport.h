// Reads UDP datagrams and TCP segments from packets, with libtins.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "capture_file.h"
#include "fragments.h"
#include "media_filter.h"

namespace Tins {
class IP;
class IPv6;
class PDU;
class TCP;
class UDP;
} // namespace Tins

enum class Transport { udp, tcp };

std::string_view transport_name(Transport transport); // "UDP", "TCP"

struct Endpoint {
    std::string address; // "192.0.2.1", "2001:db8::1"
    std::uint16_t port = 0;
    auto operator<=>(const Endpoint &) const = default;
};

// "192.0.2.1:5060", "[2001:db8::1]:5060"
std::string endpoint_text(const Endpoint &endpoint);

// A datagram or a segment. The members after the payload are only for segments.
struct Segment {
    Transport transport;
    Endpoint source;
    Endpoint destination;
    std::span<const std::uint8_t> payload;
    std::uint32_t sequence = 0; // of the payload's first byte
    bool opens = false;         // SYN
};

class TransportReader {
  public:
    // For packets with this link layer. Throws CaptureError if it is unknown.
    explicit TransportReader(int link_type);
    ~TransportReader();

    // Returns nothing for a packet that carries neither, for media, and for a fragment while others are missing. The
    // payload is valid until the next call.
    std::optional<Segment> read(std::span<const std::uint8_t> packet);

    std::size_t malformed() const { return malformed_; }
    std::size_t incomplete() const { return fragments_.incomplete(); }

    // Packets whose link layer carries something other than IP, or in a wrapping that is not known, and IP packets with
    // something other than UDP and TCP.
    std::size_t without_ip() const { return without_ip_; }
    std::size_t without_transport() const { return without_transport_; }

  private:
    using Parse = std::unique_ptr<Tins::PDU> (*)(std::span<const std::uint8_t>);

    std::optional<Segment> read_ipv4(const Tins::IP &ip);
    std::optional<Segment> read_ipv6(const Tins::IPv6 &ip);
    std::optional<Segment> add_fragment(Fragment fragment);
    std::optional<Segment> segment_in(const Tins::PDU &pdu, std::string source, std::string destination);

    Parse parse_;
    MediaFilter media_;
    Fragments fragments_;
    std::unique_ptr<Tins::PDU> packet_; // holds the payload
    std::size_t malformed_ = 0;
    std::size_t without_ip_ = 0;
    std::size_t without_transport_ = 0;
};
