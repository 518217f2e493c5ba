// What a part of a message changes in its record, found by decoding the message with and without it.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "message_lines.h"
#include "safe.h"

// Whether all texts (up to their terminators) and all numbers of two records are equal.
bool same_records(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b);

// Name of the member at an offset of the record: "from.user". Empty if none begins there.
std::string_view member_name(int offset);

// Text of that member.
std::string_view member_text(const SIP_CODE_MSG &record, int offset);

class Trial {
  public:
    using Same = std::function<bool(const SIP_CODE_MSG &, const SIP_CODE_MSG &)>;

    // The text must be what the decoder reads: no longer than that, and without a NUL.
    explicit Trial(std::string_view text);

    const SIP_CODE_MSG &record() const { return record_; }
    const SIP_DECODE_REPORT &report() const { return report_; }

    // Whether the outcome and the record stay the same if these parts are blank. Line ends, and commas that join two
    // lines, are not blanked.
    bool is_same_without(std::span<const Range> parts, const Same &same) const;

    // The same with other values in these parts: other digits, TRUE instead of FALSE. The value that is there may equal
    // the default of a missing one.
    bool is_same_with_others(std::span<const Range> parts, const Same &same) const;

    // Leaves the parts blank for later trials.
    void remove(std::span<const Range> parts);

  private:
    bool is_same(const std::string &text, const Same &same) const;

    std::string text_;
    SIP_CODE_MSG record_{};
    SIP_DECODE_REPORT report_{};
};
