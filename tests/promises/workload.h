// All that the library does, on memory that stands ready beforehand: nothing here but the library itself takes heap or stack worth
// mentioning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <sipcode/decode.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>

namespace promises {

struct Buffers {
    SIP_CODE_MSG record;
    SIP_CODE_MSG kept;
    SIP_DECODE_REPORT report;
    SIP_MSG split;
    char text[SIP_REQUEST_SIZE];
};

// The sample messages, those that the encoder tests expect, and the worst cases of each decoder.
const std::vector<std::string> &messages();

// Records of careless hosts: texts without terminators, flags and numbers of all kinds.
const std::vector<SIP_CODE_MSG> &records();

// Each returns a digest of the bytes that were written, log lines included.
std::uint64_t decode(const std::string &message, Buffers &room);         // both decoders; leaves room.record filled
std::uint64_t encode(Buffers &room);                                     // room.record with every method, four encoders
std::uint64_t scan_and_build(const std::string &message, Buffers &room); // every other function; room.record stays

// All of it for all messages, and the encoders for all records. May run on several threads at once.
std::uint64_t everything(Buffers &room);

// Tag, branch and Call-ID, which differ each time: one thread at a time.
void build_identifiers(Buffers &room);

// Standard output goes nowhere while one of these lives.
class Silence {
  public:
    Silence();
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;
    ~Silence();

  private:
    int kept_;
};

} // namespace promises
