#include "judge.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <sipcode/decode.h>
#include <sipcode/safe.h>

namespace fuzz {

namespace {

constexpr unsigned char stale = 0xA5; // a decode leaves no member full of it

void demand_of(const Leaf &leaf, bool holds, const char *reason) {
    if (!holds)
        std::fprintf(stderr, "%s\n", leaf.path);
    demand(holds, reason);
}

} // namespace

void demand_equal_within(std::string_view member, const SIP_CODE_MSG &a, const SIP_CODE_MSG &b, const char *reason) {
    for (const Leaf &leaf : leaves())
        if (is_within(member, leaf))
            demand_of(leaf, equal(leaf, a, b), reason);
}

void demand_equal(const SIP_CODE_MSG &a, const SIP_CODE_MSG &b, const char *reason) {
    demand_equal_within("", a, b, reason);
}

void demand_terminated_texts(const SIP_CODE_MSG &record) {
    for (const Leaf &leaf : leaves())
        demand_of(leaf, !leaf.is_text() || text_of(leaf, record).size() < leaf.member->size,
                  "a decoded text is terminated");
}

const SIP_CODE_MSG &without_hidden_bytes(const SIP_CODE_MSG &record) {
    static char *memory = nullptr;
    std::free(memory);
    memory = allocate(sizeof record);
#if defined(__has_feature)
#if __has_feature(memory_sanitizer)
    // MemorySanitizer takes the index of a mask's lowest set bit as undefined if any higher bit is undefined; valgrind
    // does not.
    std::memset(memory, 'x', sizeof record);
#endif
#endif
    auto &copy = *reinterpret_cast<SIP_CODE_MSG *>(memory);
    for (const Leaf &leaf : leaves()) {
        const std::size_t length = text_of(leaf, record).size();
        const bool is_whole = !leaf.is_text() || length == leaf.member->size;
        std::memcpy(leaf.in(copy), leaf.in(record), is_whole ? leaf.member->size : length + 1);
    }
    return copy;
}

// ---------------------------------------------------------------------------------------------------------------------

namespace {

void judge_dump(const SIP_CODE_MSG &record) {
    static Arena pages(SIP_DUMP_SIZE);
    static SIP_CODE_MSG shown;
    char *const dump = pages.fill(SIP_DUMP_SIZE, stale);
    shown = record;
    SIP_Decode_Msg_Printf(dump, &shown);
    pages.demand_intact();
    demand(strnlen(dump, SIP_DUMP_SIZE) < SIP_DUMP_SIZE, "the dump is terminated");
    demand(std::memcmp(&shown, &record, sizeof shown) == 0, "the dump only reads the record");
}

void judge_place(std::string_view text, int at, int line, int column) {
    if (at < 0)
        return demand(at == -1 && line == 0 && column == 0, "what is nowhere in the text has no line");
    demand(static_cast<std::size_t>(at) <= text.size(), "a place is in the text");
    const std::string_view before = text.substr(0, static_cast<std::size_t>(at));
    demand(line == 1 + std::count(before.begin(), before.end(), '\n'), "a place has its line");
    demand(column == at - static_cast<int>(before.rfind('\n') + 1) + 1, "a place has its column");
}

void judge_cut(std::string_view text, const SIP_DECODE_CUT &cut) {
    demand(cut.kept < cut.length, "what was cut was longer");
    judge_place(text, cut.at, cut.line, cut.column);
    if (cut.at >= 0)
        demand(static_cast<std::size_t>(cut.at) + cut.length <= text.size(), "what was cut is in the text");
    if (cut.member == -1)
        return;
    const auto takes = [&cut](const Leaf &leaf) {
        return leaf.offset == static_cast<std::size_t>(cut.member) && (!leaf.is_text() || cut.kept < leaf.member->size);
    };
    demand(std::any_of(leaves().begin(), leaves().end(), takes), "what was kept fits in a member of the record");
}

void judge_report(std::string_view data, const SIP_DECODE_REPORT &report) {
    const std::size_t end = std::min(data.find('\0'), data.size());
    const std::string_view text = data.substr(0, std::min<std::size_t>(end, SIP_LONGEST_MESSAGE));
    demand(report.left_out == (end > SIP_LONGEST_MESSAGE ? 1 : 0), "the report says whether text was left out");
    demand(std::strlen(report.header) < 32, "a header has a name");
    demand((report.at == -1) == (report.outcome == SIP_DECODE_DONE), "a refusal has a place");
    judge_place(text, report.at, report.line, report.column);
    demand(report.cut_count >= 0, "cuts are counted");
    for (int i = 0; i < std::min(report.cut_count, SIP_DECODE_CUTS); ++i)
        judge_cut(text, report.cuts[i]);
}

// Decodes by length, into a record that is not clear. The results are those of the plain decoder.
void judge_buffer(std::string_view data, int result, const SIP_CODE_MSG &plain) {
    static Arena data_pages(longest_input);
    static Arena record_pages(sizeof(SIP_CODE_MSG));
    static Arena report_pages(sizeof(SIP_DECODE_REPORT));
    const Arena::Side side = side_for(data.size());

    const char *const bytes = data_pages.copy(data, side);
    auto &record = *reinterpret_cast<SIP_CODE_MSG *>(record_pages.fill(sizeof(SIP_CODE_MSG), stale, side));
    auto &report = *reinterpret_cast<SIP_DECODE_REPORT *>(report_pages.fill(sizeof(SIP_DECODE_REPORT), stale, side));
    const int outcome = SIP_Decode_Buffer(bytes, data.size(), &record, &report);
    demand(outcome == report.outcome, "the report has the outcome");
    demand(outcome == SIP_DECODE_DONE || (outcome <= SIP_DECODE_NO_START_LINE && outcome >= SIP_DECODE_NO_VIA),
           "an outcome that is listed");
    demand((outcome == SIP_DECODE_DONE) == (result == 1), "both decoders refuse the same messages");
    demand(data.empty() || std::memcmp(bytes, data.data(), data.size()) == 0, "the data is as it was");
    data_pages.demand_intact();
    record_pages.demand_intact();
    report_pages.demand_intact();
    demand_equal(plain, record, "both decoders give the same members");
    judge_report(data, report);

    record_pages.undefined(sizeof(SIP_CODE_MSG), side);
    demand(SIP_Decode_Buffer(bytes, data.size(), &record, nullptr) == outcome, "decoding is the same without a report");
    demand_equal(plain, record, "decoding is the same without a report");
    judge_walk(data, outcome, plain);
}

} // namespace

Decoded decode(std::string_view text) {
    static Arena text_pages(longest_input + 1);
    static Arena record_pages(sizeof(SIP_CODE_MSG));
    const Arena::Side side = side_for(text.size());

    char *const message = text_pages.copy_terminated(text, side);
    auto &record = *new (record_pages.fill(sizeof(SIP_CODE_MSG), 0, side)) SIP_CODE_MSG;
    const int result = Sip_Decode(message, &record);
    demand(result == 1 || result == -1, "a message is decoded or refused");
    demand(text.empty() || std::memcmp(message, text.data(), text.size()) == 0, "the text is as it was");
    demand(message[text.size()] == '\0', "the text is as it was");
    text_pages.demand_intact();
    record_pages.demand_intact();
    demand_terminated_texts(record);
    judge_dump(record);
    judge_buffer(text, result, record);
    return {result, record};
}

} // namespace fuzz
