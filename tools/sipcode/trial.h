// What a part of a message changes in its record, found by decoding the message with and without it.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "message_lines.h"
#include "safe.h"

// Whether all texts (up to their terminators) and all numbers of two records are equal.
bool same_records(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b);

// Name of the member at an offset of the record: "from.user". Empty if none begins there.
std::string_view member_name(int offset);

// Text of that member; empty if it is a number.
std::string_view member_text(const SIP_CODE_MSG &record, int offset);

// Value of that member; 0 if it is a text.
long member_number(const SIP_CODE_MSG &record, int offset);

class Trial {
  public:
    // The text must be what the decoder reads: no longer than that, and without a NUL.
    explicit Trial(std::string_view text);

    const SIP_CODE_MSG &record() const { return record_; }
    const SIP_DECODE_REPORT &report() const { return report_; }

    // Whether the outcome and the record stay the same if these parts are blank. Line ends, and commas that join two
    // lines, are not blanked.
    template <typename Same>
    bool is_same_without(std::span<const Range> parts, const Same &same) {
        tried_ = text_;
        blank(tried_, parts);
        return decodes_alike() && same(tried_record_, record_);
    }

    // The same with other values in these parts: other digits, TRUE instead of FALSE. The value that is there may equal
    // the default of a missing one.
    template <typename Same>
    bool is_same_with_others(std::span<const Range> parts, const Same &same) {
        tried_ = text_;
        put_other_values(tried_, parts);
        return decodes_alike() && same(tried_record_, record_);
    }

    // Whether the record holds nothing of these parts: both of the above.
    bool is_unread(std::span<const Range> parts) {
        return is_same_without(parts, same_records) && is_same_with_others(parts, same_records);
    }

    // Leaves the parts blank for later trials.
    void remove(std::span<const Range> parts) { blank(text_, parts); }

  private:
    static void blank(std::string &text, std::span<const Range> parts);
    static void put_other_values(std::string &text, std::span<const Range> parts);
    bool decodes_alike();

    std::string text_;
    std::string tried_;
    SIP_DECODE_REPORT report_;
    SIP_CODE_MSG record_;
    SIP_CODE_MSG tried_record_;
};
