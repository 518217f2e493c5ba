// Finds messages in TCP segments, see tcp_streams.h.
#include "tcp_streams.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "stream_message.h"

namespace {

// How many segments may overtake a late one. If more do, the late one was never captured.
constexpr std::size_t most_ahead = 32;

// Directions of connections that are followed at a time.
constexpr std::size_t most_streams = 20'000;

// Seconds without a segment after which a connection counts as closed.
constexpr std::int64_t idle_time = 600;

// The times of a capture are untrusted. A difference that does not fit wraps around.
std::int64_t seconds_between(const PacketMark &from, const PacketMark &to) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(to.seconds) - static_cast<std::uint64_t>(from.seconds));
}

std::string_view text_of(const std::vector<std::uint8_t> &bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

void drop(std::vector<std::uint8_t> &bytes, std::size_t count) {
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
}

} // namespace

void TcpStreams::add(const Segment &segment, const PacketMark &mark) {
    forget_idle(mark);
    const Key key(segment.source, segment.destination);
    if (segment.opens) {
        // Another connection between the same ports, unless the packet was sent again.
        const auto old = streams_.find(key);
        if (old != streams_.end() && old->second.begin != segment.sequence) {
            drain(*old);
            streams_.erase(old);
        }
    }
    if (!segment.opens && segment.payload.empty())
        return;
    if (streams_.size() >= most_streams)
        make_room();
    Entry &entry = *streams_.try_emplace(key, segment.sequence).first;
    Stream &stream = entry.second;
    stream.last = mark;
    if (stream.data.process_payload(segment.sequence, {segment.payload.begin(), segment.payload.end()}))
        deliver_whole(entry);
    if (stream.data.buffered_payload().size() > most_ahead)
        skip_gap(entry);
}

void TcpStreams::finish() {
    for (Entry &entry : streams_)
        drain(entry);
    streams_.clear();
}

void TcpStreams::deliver_whole(Entry &entry) {
    auto &[key, stream] = entry;
    std::vector<std::uint8_t> &bytes = stream.data.payload();
    std::string_view rest = text_of(bytes);
    // A message may follow line ends that keep the connection alive, or the rest of a message whose beginning was not
    // captured.
    for (;;) {
        const StartLineSearch start = find_start_line(rest, 0);
        rest.remove_prefix(start.line);
        const std::optional<std::size_t> length = start.found ? stream_message_length(rest) : std::nullopt;
        if (!length)
            break;
        deliver_(key.first, key.second, stream.last, rest.substr(0, *length), true);
        rest.remove_prefix(*length);
    }
    if (rest.size() > longest_stream_message)
        rest = {};
    drop(bytes, bytes.size() - rest.size());
}

// Delivers the beginning of a message whose end was not captured.
void TcpStreams::deliver_rest(Entry &entry) {
    auto &[key, stream] = entry;
    std::vector<std::uint8_t> &bytes = stream.data.payload();
    const std::string_view rest = text_of(bytes);
    if (is_start_line(rest.substr(0, rest.find('\n'))))
        deliver_(key.first, key.second, stream.last, rest, false);
    bytes.clear();
}

// Continues after segments that were not captured.
void TcpStreams::skip_gap(Entry &entry) {
    deliver_rest(entry);
    Tins::TCPIP::DataTracker &data = entry.second.data;
    const auto distance = [&data](const auto &ahead) { return ahead.first - data.sequence_number(); };
    auto nearest = std::min_element(data.buffered_payload().begin(), data.buffered_payload().end(),
                                    [&](const auto &a, const auto &b) { return distance(a) < distance(b); });
    auto chunk = data.buffered_payload().extract(nearest);
    data.advance_sequence(chunk.key());
    data.process_payload(chunk.key(), std::move(chunk.mapped()));
    deliver_whole(entry);
}

void TcpStreams::drain(Entry &entry) {
    while (!entry.second.data.buffered_payload().empty())
        skip_gap(entry);
    deliver_rest(entry);
}

// A stream that holds nothing can be followed from its next segment on. If every stream holds something, all of them
// are given up.
void TcpStreams::make_room() {
    const auto holds_nothing = [](const Entry &entry) {
        return entry.second.data.payload().empty() && entry.second.data.buffered_payload().empty();
    };
    if (std::erase_if(streams_, holds_nothing) != 0)
        return;
    given_up_ += streams_.size();
    finish();
}

void TcpStreams::forget_idle(const PacketMark &now) {
    constexpr std::int64_t sweep_interval = 60;
    if (seconds_between(last_sweep_, now) < sweep_interval)
        return;
    last_sweep_ = now;
    for (auto stream = streams_.begin(); stream != streams_.end();) {
        const bool is_idle = seconds_between(stream->second.last, now) > idle_time;
        if (is_idle)
            drain(*stream);
        stream = is_idle ? streams_.erase(stream) : std::next(stream);
    }
}
