// Writes what a host sends and receives as a capture file, which other tools read. It needs no privilege, because the
// host makes the packets itself: a datagram or a segment for each message.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include <asio/ip/udp.hpp>
#include <tins/packet_writer.h>

#include <sipcode/code.h>

class Capture {
  public:
    using Address = asio::ip::udp::endpoint;

    // Throws std::exception if the file cannot be written.
    explicit Capture(const std::string &file);

    void add(TRANS_TYPE_E transport, const Address &from, const Address &to, std::string_view message);

  private:
    Tins::PacketWriter writer_;
    std::map<std::pair<Address, Address>, std::uint32_t> sequences_; // the next one of each TCP stream
};
