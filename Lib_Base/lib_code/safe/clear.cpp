#include "clear.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "record_members.h"

namespace sipcode {
namespace {

// The bytes of a record that a reader may look at: all of a number or pointer, and the first of a text.
constexpr std::size_t record_size = sizeof(SIP_CODE_MSG);
using record_bytes = std::array<bool, record_size>;

consteval void mark_read_bytes(const Record &description, std::size_t begin, record_bytes &read) {
    for (const Member &member : description.members) {
        for (std::size_t i = 0; i < member.count; ++i) {
            const std::size_t element = begin + member.offset + i * member.size;
            if (member.kind == Kind::record)
                mark_read_bytes(*member.record, element, read);
            else
                std::fill_n(read.begin() + element, member.kind == Kind::text ? 1 : member.size, true);
        }
    }
}

struct run {
    std::size_t begin;
    std::size_t end;
};

// The runs of such bytes. A short gap between two runs costs less than a run of its own, so it belongs to the run.
struct record_runs {
    static constexpr std::size_t short_gap = 16;

    consteval record_runs() {
        record_bytes read{};
        mark_read_bytes(description<SIP_CODE_MSG>, 0, read);
        for (std::size_t at = 0; at < record_size; ++at) {
            if (!read[at])
                continue;
            if (count == 0 || at - runs[count - 1].end > short_gap)
                runs[count++].begin = at;
            runs[count - 1].end = at + 1;
        }
    }

    run runs[128] = {};
    std::size_t count = 0;
};
constexpr record_runs cleared;

// Each run is a few stores of constant size.
template <std::size_t... I>
void clear_runs(char *record, std::index_sequence<I...>) {
    (..., std::memset(record + cleared.runs[I].begin, 0, cleared.runs[I].end - cleared.runs[I].begin));
}

} // namespace

void clear(SIP_CODE_MSG &record) {
    clear_runs(reinterpret_cast<char *>(&record), std::make_index_sequence<cleared.count>());
}

} // namespace sipcode
