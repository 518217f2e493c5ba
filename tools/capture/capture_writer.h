// Writes messages to a capture file, a packet for each: what came in fragments, in segments or through a tunnel is one
// datagram or one segment there.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include <tins/packet_writer.h>

#include "capture_messages.h"

class CaptureWriter {
  public:
    // Throws CaptureError if the file cannot be written.
    explicit CaptureWriter(const std::string &file);

    void add(const CapturedMessage &message);

  private:
    Tins::PacketWriter writer_;
    std::map<std::pair<Endpoint, Endpoint>, std::uint32_t> sequences_; // the next one of each TCP stream
};
