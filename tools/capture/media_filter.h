// Recognises media packets without taking them apart: most of a capture may be media.
#pragma once

#include <cstdint>
#include <span>

#include <pcap/pcap.h>

class MediaFilter {
  public:
    explicit MediaFilter(int link_type);
    ~MediaFilter() { pcap_freecode(&program_); }
    MediaFilter(const MediaFilter &) = delete;
    MediaFilter &operator=(const MediaFilter &) = delete;

    // Whether the packet is an unfragmented UDP datagram, in no tunnel, whose payload begins as RTP and RTCP do and as
    // no SIP message does. Never for a link layer that libpcap has no filter for.
    bool matches(std::span<const std::uint8_t> packet) const;

  private:
    bpf_program program_{};
};
