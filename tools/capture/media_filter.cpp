// Recognises media packets, see media_filter.h.
#include "media_filter.h"

#include <memory>

namespace {

// The highest bit of the first byte is set: version 2 of RTP. libpcap's udp[8] is for IPv4 only and matches first
// fragments too. An IPv6 header has 40 bytes, a UDP header 8.
constexpr char media[] = "(udp[8] & 0x80 != 0 and ip[6:2] & 0x3fff = 0) or (ip6[6] = 17 and ip6[48] & 0x80 != 0)";

} // namespace

MediaFilter::MediaFilter(int link_type) {
    constexpr int longest_packet = 262144;
    const std::unique_ptr<pcap_t, decltype(&pcap_close)> layer(pcap_open_dead(link_type, longest_packet), pcap_close);
    if (layer == nullptr || pcap_compile(layer.get(), &program_, media, 1, PCAP_NETMASK_UNKNOWN) != 0)
        program_ = {};
}

bool MediaFilter::matches(std::span<const std::uint8_t> packet) const {
    pcap_pkthdr header{};
    header.caplen = header.len = static_cast<bpf_u_int32>(packet.size());
    return program_.bf_insns != nullptr && pcap_offline_filter(&program_, &header, packet.data()) != 0;
}
