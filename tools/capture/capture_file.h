// Packets of a capture file, pcap or pcapng, through libpcap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include <pcap/pcap.h>

// Where in the file a message came from.
struct PacketMark {
    std::size_t number = 0;   // from 1, as other tools count
    std::int64_t seconds = 0; // since 1970-01-01 UTC
    std::int32_t microseconds = 0;
};

// "2026-11-23T14:05:09.000123Z"
std::string time_text(const PacketMark &mark);

struct Packet {
    PacketMark mark;
    std::span<const std::uint8_t> bytes; // valid up to the next one
    bool cut_off;                        // the capture kept only its beginning
};

// A file that cannot be read on, a filter that is none, a link layer that is not known.
class CaptureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Bytes that are enough to recognise a capture.
inline constexpr std::size_t capture_magic_size = 4;

bool is_capture(std::string_view first_bytes);

class CaptureFile {
  public:
    // Takes the stream over, which stands in front of the file's first byte. The filter is a BPF expression; an empty one
    // takes every packet. Throws CaptureError.
    CaptureFile(std::FILE *stream, const std::string &filter);

    int link_type() const { return pcap_datalink(file_.get()); }

    // Read up to now, those that the filter does not take too.
    std::size_t packets() const { return packets_; }

    // False at the end of the file. Throws CaptureError where the file is damaged.
    bool next(Packet &packet);

  private:
    class Filter {
      public:
        Filter(pcap_t *file, const std::string &expression);
        ~Filter() { pcap_freecode(&program_); }
        Filter(const Filter &) = delete;
        Filter &operator=(const Filter &) = delete;
        bool takes(const pcap_pkthdr *header, const u_char *bytes) const;

      private:
        bpf_program program_{};
    };
    struct Close {
        void operator()(pcap_t *file) const { pcap_close(file); }
    };

    std::unique_ptr<pcap_t, Close> file_;
    Filter filter_;
    std::size_t packets_ = 0;
};
