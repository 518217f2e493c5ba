// Reads the packets of a capture file, pcap or pcapng, with libpcap.
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

// A damaged file, an invalid filter or an unknown link layer.
class CaptureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// How many bytes it takes to recognise a capture.
inline constexpr std::size_t capture_magic_size = 4;

bool is_capture(std::string_view first_bytes);

// Why a file that begins so is not read, though it may hold a capture; empty for any other.
std::string_view why_not_readable(std::string_view first_bytes);

class CaptureFile {
  public:
    // Takes ownership of the stream, which must be at the first byte of the file. The filter is a BPF expression; an
    // empty one matches every packet. Throws CaptureError.
    CaptureFile(std::FILE *stream, const std::string &filter);

    int link_type() const { return pcap_datalink(file_.get()); }

    // Packets read so far, including those that the filter does not match.
    std::size_t packets() const { return packets_; }

    // Returns false at the end of the file. Throws CaptureError if the file cannot be read on.
    bool next(Packet &packet);

  private:
    class Filter {
      public:
        Filter(pcap_t *file, const std::string &expression);
        ~Filter() { pcap_freecode(&program_); }
        Filter(const Filter &) = delete;
        Filter &operator=(const Filter &) = delete;
        bool matches(const pcap_pkthdr *header, const u_char *bytes) const;

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
