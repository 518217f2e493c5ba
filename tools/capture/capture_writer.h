// Writes messages to a capture file, a packet for each: what came in fragments, in segments or through a tunnel is one
// datagram or one segment there.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "capture_messages.h"

class CaptureWriter {
  public:
    // Throws CaptureError if the file cannot be written.
    explicit CaptureWriter(const std::string &file);

    void add(const CapturedMessage &message);

    // Throws CaptureError if not everything could be written.
    void finish();

  private:
    struct Close {
        void operator()(pcap_t *format) const { pcap_close(format); }
        void operator()(pcap_dumper_t *file) const { pcap_dump_close(file); }
    };

    [[noreturn]] void fail() const;

    std::string name_;
    std::unique_ptr<pcap_t, Close> format_;
    std::unique_ptr<pcap_dumper_t, Close> file_;
    std::map<std::pair<Endpoint, Endpoint>, std::uint32_t> sequences_; // the next one of each TCP stream
};
