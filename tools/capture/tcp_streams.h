// Messages out of TCP segments: put in order by libtins, cut by Content-Length.
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
    // Where the stream goes from and to, the packet that completed the message, its text; whether that is all of it.
    using Deliver = std::function<void(const Endpoint &source, const Endpoint &destination, const PacketMark &mark,
                                       std::string_view text, bool is_whole)>;

    explicit TcpStreams(Deliver deliver) : deliver_(std::move(deliver)) {}

    void add(const Segment &segment, const PacketMark &mark);

    // What is left when the capture ends.
    void finish();

  private:
    // One direction of a connection.
    struct Stream {
        explicit Stream(std::uint32_t sequence) : begin(sequence), data(sequence) {}
        std::uint32_t begin;
        Tins::TCPIP::DataTracker data; // its payload is what is not delivered yet
        PacketMark last;
    };
    using Key = std::pair<Endpoint, Endpoint>;
    using Entry = std::pair<const Key, Stream>;

    void deliver_whole(Entry &entry);
    void deliver_rest(Entry &entry);
    void skip_gap(Entry &entry);
    void drain(Entry &entry);
    void forget_idle(const PacketMark &now);

    Deliver deliver_;
    std::map<Key, Stream> streams_;
    PacketMark last_sweep_;
};
