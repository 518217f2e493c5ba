// SIP messages of a capture.
#pragma once

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

// A datagram is a message when its first line has the form of a start line, on any port, and on port 5060 when it begins with
// a letter; what keeps a path open, media and other protocols are passed over. On a TCP stream a message begins with a line of
// that form.
class CaptureMessages {
  public:
    using Deliver = std::function<void(const CapturedMessage &message)>;

    // Throws CaptureError for a link layer that is not known.
    CaptureMessages(int link_type, Deliver deliver);

    void add(const Packet &packet);

    // What is left when the capture ends.
    void finish() { streams_.finish(); }

    // Packets that were none, and packets of which fragments were lost.
    std::size_t malformed() const { return transport_.malformed(); }
    std::size_t incomplete() const { return transport_.incomplete(); }

  private:
    Deliver deliver_;
    TransportReader transport_;
    TcpStreams streams_;
};
