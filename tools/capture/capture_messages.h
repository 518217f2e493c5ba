// Finds the SIP messages of a capture.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string_view>

#include "capture_file.h"
#include "tcp_streams.h"
#include "transport.h"

struct CapturedMessage {
    PacketMark mark; // the packet that completed it
    Transport transport;
    const Endpoint &source;
    const Endpoint &destination;
    std::string_view text;
    bool is_whole; // false: the capture holds only its beginning
};

// A datagram is a message if its first line looks like a start line, on any port. On port 5060 it is one if it begins
// with a letter. Keep-alives, media and other protocols are skipped. On a TCP stream a message begins with a line that
// looks like a start line.
class CaptureMessages {
  public:
    using Deliver = std::function<void(const CapturedMessage &message)>;

    // Throws CaptureError for an unknown link layer.
    CaptureMessages(int link_type, Deliver deliver);

    void add(const Packet &packet);

    // Delivers what is left at the end of the capture.
    void finish() { streams_.finish(); }

    // What was not read, and how often: "malformed packets", 3.
    struct NotRead {
        std::string_view what;
        std::size_t count;
    };
    std::array<NotRead, 5> not_read() const;

  private:
    Deliver deliver_;
    TransportReader transport_;
    TcpStreams streams_;
};
