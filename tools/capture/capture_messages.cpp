// Finds the SIP messages of a capture, see capture_messages.h.
#include "capture_messages.h"

#include <cctype>
#include <utility>

#include "stream_message.h"

namespace {

constexpr std::uint16_t sip_port = 5060;

bool is_message(const Segment &datagram, std::string_view text) {
    const std::size_t begin = text.find_first_not_of("\r\n");
    if (begin == std::string_view::npos)
        return false;
    const std::string_view rest = text.substr(begin);
    return is_start_line(rest.substr(0, rest.find('\n'))) ||
           ((datagram.source.port == sip_port || datagram.destination.port == sip_port) &&
            std::isalpha(static_cast<unsigned char>(rest.front())) != 0);
}

} // namespace

CaptureMessages::CaptureMessages(int link_type, Deliver deliver)
    : deliver_(std::move(deliver)), transport_(link_type),
      streams_([this](const Endpoint &source, const Endpoint &destination, const PacketMark &mark,
                      std::string_view text, bool is_whole) {
          deliver_({mark, Transport::tcp, source, destination, text, is_whole});
      }) {}

void CaptureMessages::add(const Packet &packet) {
    const std::optional<Segment> segment = transport_.read(packet.bytes);
    if (!segment)
        return;
    if (segment->transport == Transport::tcp)
        return streams_.add(*segment, packet.mark);
    const std::string_view text(reinterpret_cast<const char *>(segment->payload.data()), segment->payload.size());
    if (is_message(*segment, text))
        deliver_({packet.mark, Transport::udp, segment->source, segment->destination, text, !packet.cut_off});
}

std::array<CaptureMessages::NotRead, 5> CaptureMessages::not_read() const {
    return {{{"malformed packets", transport_.malformed()},
             {"packets with missing fragments", transport_.incomplete()},
             {"packets without IP", transport_.without_ip()},
             {"IP packets without UDP or TCP", transport_.without_transport()},
             {"streams given up for lack of room", streams_.given_up()}}};
}
