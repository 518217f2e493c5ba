#include "support/random_record.h"

#include <algorithm>
#include <climits>
#include <vector>

#include "support/decoding.h"
#include "support/members.h"

namespace support {

namespace {

template <typename Value>
struct Pool {
    std::string_view part; // of the path; the first pool that fits counts, the last one always
    std::vector<Value> values;
};

const Pool<long> numbers[] = {
    {"via_count", {0, 1, 2, 2, 3}},
    {"method", {-1, 0, 2, 3, 4, 5, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 20, 48, 49, 1000, LONG_MAX}},
    {"trans_type", {0, 1, 2, 3, 4, -1}},
    {"author_type", {100, 101, 102, 102, 103, 103}},
    {"authen_type", {25, 22, 102, 103}},
    {"xml.use", {0, 1, 2, 3}},
    {"expire.expires", {-5, 0, 1, 899, 900, 901, 3600}},
    {"_media", {0, 1, 2, 3, 4, -1}},
    {"rtpmap", {0, 5, 9, 10, 1, 77}},
    {"a_coders", {0, 0, 1, 2, 3, 4, 5, 5, 6, 7, 8, 9, 10, 11, 12, -1, INT_MAX}},
    {"v_coders", {0, -1, 1, 31, 34, 96, 99, 103, 109, 126, INT_MAX, INT_MIN}},
    {"o_sec", {0, 1, -1, INT_MAX, INT_MAX + 1L, LONG_MAX, LONG_MIN}},
    {"port", {5060, 0, 1, -1, 65535, INT_MAX, INT_MIN}},
    {"use", {0, 1, 1, 1, 1, 2, -1}},
    {"", {0, 1, 1, 1, 2, 20, -1, 255, INT_MAX, INT_MIN}},
};

const Pool<std::string> texts[] = {
    {"callid", {"ims-", "ims-a@b", "IMS-a", "a-ims-b", "im", "ims-ims-a"}},
    {".ip", {"", "10.0.0.1", "10.0.0.1", "10.0.0.2", "0.0.0.0"}},
    {"event.content", {"reg", "dialog", "reg;id=1", "dialogs", "", "REG"}},
    {"_content", {"", "c=IN IP4 10.0.0.9\r\na=x\r\n", "a=x\r\n", "abc=\r\n"}},
    {"", {"", "a", "abc", "%n%s%d", "\"<>;\\", "\xC3\xA4\xFF\x01", "\r\nX: y\r\n\r\n", "{callid}"}},
};

template <typename Value, std::size_t N>
const std::vector<Value> &values_for(const Pool<Value> (&pools)[N], std::string_view path) {
    const auto *const pool = std::find_if(std::begin(pools), std::end(pools),
                                          [&path](const Pool<Value> &one) { return path.find(one.part) != path.npos; });
    return pool->values;
}

} // namespace

SIP_CODE_MSG RandomRecords::next() {
    SIP_CODE_MSG record{};
    for (const Leaf &at : leaves()) {
        const std::size_t room = at.member->size;
        if (at.is_number()) {
            const std::vector<long> &values = values_for(numbers, at.path);
            const long number = values[below(values.size())];
            sipcode::store_number(*at.member, at.in(record), room == sizeof(long) ? number : static_cast<int>(number));
        } else if (at.is_text()) {
            const std::vector<std::string> &values = values_for(texts, at.path);
            const std::string long_texts[] = {std::string(room, 'z'), letters(below(room))};
            set_text(at, record, below(4) == 0 ? long_texts[below(2)] : values[below(values.size())]);
        }
    }
    record.method = static_cast<int>(below(4) == 0 ? 1 + below(48) : 2 + below(14));
    return record;
}

} // namespace support
