// SIP_Decode_Buffer: untrusted text of a given length, into a record that need not be zeroed.
#include <algorithm>
#include <cstddef>

#include "decode/decoders.h"
#include "safe/clear.h"

namespace sipcode {
namespace {

// Line and column of a place, counted from 1. Counts in blocks, since a report may hold up to seventeen places.
void locate(text data, int at, int &line, int &column) {
    line = 0;
    column = 0;
    if (at < 0)
        return;
    line = 1;
    std::size_t line_begin = 0;
    const text before = at_most(data, static_cast<std::size_t>(at));
    for (std::size_t block = 0; block < before.size(); block += block_size) {
        const std::size_t left = before.size() - block;
        const std::uint64_t ends = left >= block_size ? matches(before.data() + block, '\n')
                                                      : matches_of_rest(before.data() + block, left, '\n');
        if (ends == 0)
            continue;
        line += std::popcount(ends);
        line_begin = block + block_size - static_cast<std::size_t>(std::countl_zero(ends));
    }
    column = static_cast<int>(before.size() - line_begin) + 1;
}

// A missing header is reported at the end of the header section: before the line end of its last line. There is always
// a start line.
int before_line_end(text data, int at) {
    if (data[static_cast<std::size_t>(at) - 1] == '\n')
        --at;
    if (data[static_cast<std::size_t>(at) - 1] == '\r')
        --at;
    return at;
}

void locate_all(text data, SIP_DECODE_REPORT &report) {
    const bool is_missing = report.outcome == SIP_DECODE_NO_HEADER || report.outcome == SIP_DECODE_NO_CALL_ID ||
                            report.outcome == SIP_DECODE_NO_CSEQ || report.outcome == SIP_DECODE_NO_VIA;
    if (is_missing)
        report.at = before_line_end(data, report.at);
    locate(data, report.at, report.line, report.column);
    const int noted = std::min(report.cut_count, SIP_DECODE_CUTS);
    std::for_each(report.cuts, report.cuts + noted,
                  [data](SIP_DECODE_CUT &cut) { locate(data, cut.at, cut.line, cut.column); });
}

void start(SIP_DECODE_REPORT &report, SIP_DECODE_OUTCOME outcome) {
    report.outcome = outcome;
    report.header = "";
    report.at = -1;
    report.line = 0;
    report.column = 0;
    report.left_out = 0;
    report.cut_count = 0;
}

} // namespace
} // namespace sipcode

int SIP_Decode_Buffer(const char *data, size_t length, SIP_CODE_MSG *record, SIP_DECODE_REPORT *report) {
    using namespace sipcode;
    SIP_DECODE_REPORT unseen;
    SIP_DECODE_REPORT &result = report != nullptr ? *report : unseen;
    start(result, data != nullptr && record != nullptr ? SIP_DECODE_DONE : SIP_DECODE_NULL_ARGUMENT);
    if (result.outcome == SIP_DECODE_NULL_ARGUMENT)
        return result.outcome;

    SIP_MSG split; // the splitter sets everything that is read
    const std::size_t used = std::min(length, std::size_t{SIP_LONGEST_MESSAGE});
    const text received(data, strnlen(data, used));
    std::memcpy(split.data, received.data(), received.size());
    split.data[received.size()] = '\0';
    result.left_out = received.size() == used && length > used && data[used] != '\0';
    clear(*record);
    decode(split, received.size(), *record, &result);
    if (report != nullptr)
        locate_all(received, result);
    return result.outcome;
}
