// Values that a new dialog or transaction needs: tag, Via branch, Call-ID, date.
//
//   tag      327b23c6
//   branch   z9hG4bK 1804489383 2 2 2 20261119094403       magic cookie, random value, counter three times, local time
//   Call-ID  32 hexadecimal digits "@" host
//   date     Thu, 19 Nov 2026 09:44:03 GMT                  (RFC 3261 section 20.17)
//
// Names of days and months are written here, not by strftime, so that the host's locale does not reach the wire.
#include <cstdlib>
#include <ctime>
#include <unistd.h>

#include "encode.h"
#include "lines.h"

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

struct quotient {
    long whole;
    int rest; // not negative
};

constexpr quotient divide_down(long value, int divisor) {
    const long rest = value % divisor;
    return rest < 0 ? quotient{value / divisor - 1, static_cast<int>(rest) + divisor}
                    : quotient{value / divisor, static_cast<int>(rest)};
}

struct calendar_date {
    long year;
    int month; // from 0
    int day;   // from 1
};

// The Gregorian date of a day counted from 1 January 1970. The years here begin in March, so that a leap day is the
// last day of its year. gmtime_r takes five times as long, and the Date header is always in GMT.
constexpr calendar_date date_of(long day) {
    constexpr int days_of_400_years = 146097;
    constexpr long march_of_year_0 = 719468; // days before 1970
    const auto [cycle, in_cycle] = divide_down(day + march_of_year_0, days_of_400_years);
    const int year = (in_cycle - in_cycle / 1460 + in_cycle / 36524 - in_cycle / 146096) / 365;
    const int in_year = in_cycle - (365 * year + year / 4 - year / 100);
    const int month = (5 * in_year + 2) / 153; // from March
    const int in_month = in_year - (153 * month + 2) / 5;
    const bool next_year = month >= 10;
    return {cycle * 400 + year + next_year, next_year ? month - 10 : month + 2, in_month + 1};
}
static_assert(date_of(0).year == 1970 && date_of(0).month == 0 && date_of(0).day == 1);
static_assert(date_of(11016).month == 1 && date_of(11016).day == 29 && date_of(-1).year == 1969);

// 32 hexadecimal digits, drawn eight at a time from left to right.
void generate_random_string(writer &out) {
    for (int i = 0; i < 4; ++i)
        out.line<"%08x">(Random());
}

} // namespace

void write_time(writer &out) {
    static constexpr char days[][4] = {"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"}; // day 0 was a Thursday
    static constexpr char months[][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t now = std::time(nullptr);
    const auto [day, second] = divide_down(now, 24 * 60 * 60);
    const calendar_date date = date_of(day);
    out.line<"%s, %02d %s %d %02d:%02d:%02d GMT">(own_text{text(days[divide_down(day, 7).rest], 3)}, date.day,
                                                  own_text{text(months[date.month], 3)}, date.year, second / 3600,
                                                  second / 60 % 60, second % 60);
}

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
    sipcode::writer out(pchDate, SIP_DATE_SIZE);
    sipcode::write_time(out);
}
