// Finds messages in TCP segments. libtins puts the segments in order; Content-Length says where a message ends.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string_view>

#include <tins/tcp_ip/data_tracker.h>

#include "capture_file.h"
#include "transport.h"

class TcpStreams {
  public:
    // Source and destination of the stream, the packet that completed the message, its text, and whether that is all of
    // it.
    using Deliver = std::function<void(const Endpoint &source, const Endpoint &destination, const PacketMark &mark,
                                       std::string_view text, bool is_whole)>;

    explicit TcpStreams(Deliver deliver) : deliver_(std::move(deliver)) {}

    void add(const Segment &segment, const PacketMark &mark);

    // Delivers what is left at the end of the capture.
    void finish();

    // Streams with a part of a message that were given up because there were too many.
    std::size_t given_up() const { return given_up_; }

  private:
    // One direction of a connection.
    struct Stream {
        explicit Stream(std::uint32_t sequence) : begin(sequence), data(sequence) {}
        std::uint32_t begin;
        Tins::TCPIP::DataTracker data; // its payload is what has not been delivered yet
        PacketMark last;
    };
    using Key = std::pair<Endpoint, Endpoint>;
    using Entry = std::pair<const Key, Stream>;

    void deliver_whole(Entry &entry);
    void deliver_rest(Entry &entry);
    void skip_gap(Entry &entry);
    void drain(Entry &entry);
    void forget_idle(const PacketMark &now);
    void make_room();

    Deliver deliver_;
    std::map<Key, Stream> streams_;
    PacketMark last_sweep_;
    std::size_t given_up_ = 0;
};
