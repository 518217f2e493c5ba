// Values that a new dialog or transaction needs: tag, Via branch, Call-ID, date.
//
//   tag      327b23c6
//   branch   z9hG4bK 1804489383 2 2 2 20261119094403       magic cookie, random value, counter three times, local time
//   Call-ID  32 hexadecimal digits "@" host
//   date     Thu, 19 Nov 2026 09:44:03 GMT                  (RFC 3261 section 20.17)
//
// Names of days and months are written here, not by strftime: a host's locale must not reach the wire.
#include <cstdlib>
#include <ctime>
#include <unistd.h>

#include "encode.h"
#include "output.h"

namespace sipcode {
namespace {

constexpr unsigned first_seq = 200277;
constexpr unsigned last_seq = 499998;
constexpr long last_count = 65536;

// The only state that the library keeps between calls.
unsigned seq = first_seq;
long count = 1;

int Random() {
    if (seq > last_seq)
        seq = first_seq;
    const auto seconds = static_cast<unsigned>(std::time(nullptr));
    std::srand((seconds + seq + static_cast<unsigned>(getpid())) ^ 0xAAAAAAAAU);
    ++seq;
    return static_cast<int>(static_cast<unsigned>(std::rand()) + seq);
}

std::tm local_time() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

// 32 hexadecimal digits, drawn eight at a time in the order in which they stand.
void generate_random_string(writer &out) {
    for (int i = 0; i < 4; ++i)
        out.line<"%08x">(Random());
}

} // namespace
} // namespace sipcode

void Build_Tag(char *buf) {
    sipcode::writer out(buf, SIP_TAG_SIZE);
    out.line<"%08x">(static_cast<int>(random()));
}

void Build_Via_Branch(char *str) {
    using namespace sipcode;
    if (++count > last_count)
        count = 0;
    writer out(str, SIP_BRANCH_SIZE);
    out.line<"z9hG4bK%d%d%d%d">(Random(), count, count, count);
    const std::tm now = local_time();
    out.line<"%d%02d%02d%02d%02d%02d">(1900L + now.tm_year, now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min,
                                       now.tm_sec);
}

void Bulid_Call_id(char *callid, char *ip) {
    sipcode::writer out(callid, SIP_CALL_ID_SIZE);
    sipcode::generate_random_string(out);
    out.line<"@%s">(ip);
}

void Build_Date(char *pchDate) {
    static constexpr const char *days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char *months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    sipcode::writer out(pchDate, SIP_DATE_SIZE);
    out.line<"%s, %02d %s %d %02d:%02d:%02d GMT">(days[utc.tm_wday], utc.tm_mday, months[utc.tm_mon],
                                                  1900L + utc.tm_year, utc.tm_hour, utc.tm_min, utc.tm_sec);
}
