// What a part of a message does to its record, told by decoding the message with and without it.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "message_lines.h"
#include "safe.h"

// The record's texts up to their terminators, and its numbers, are equal.
bool same_records(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b);

// Name of the member at an offset of the record: "from.user"; empty when none begins there.
std::string_view member_name(int offset);

// Text of that member.
std::string_view member_text(const SIP_CODE_MSG &record, int offset);

class Trial {
  public:
    using Same = std::function<bool(const SIP_CODE_MSG &, const SIP_CODE_MSG &)>;

    // The text as the decoder reads it: no longer than that, and without a NUL.
    explicit Trial(std::string_view text);

    const SIP_CODE_MSG &record() const { return record_; }
    const SIP_DECODE_REPORT &report() const { return report_; }

    // Whether the decode ends in the same outcome and in the same record with these parts blank. What stands at a line end and
    // joins two lines stays.
    bool is_same_without(std::span<const Range> parts, const Same &same) const;

    // The same for other values in these parts, digits and FALSE: the one that stands there may be that of a missing one.
    bool is_same_with_others(std::span<const Range> parts, const Same &same) const;

    // Leaves the parts blank for later trials.
    void remove(std::span<const Range> parts);

  private:
    bool is_same(const std::string &text, const Same &same) const;

    std::string text_;
    SIP_CODE_MSG record_{};
    SIP_DECODE_REPORT report_{};
};
