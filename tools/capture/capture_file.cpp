// Reads the packets of a capture file, see capture_file.h.
#include "capture_file.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <iterator>

#include <fmt/compile.h>

namespace {

// First four bytes: pcap with microseconds and with nanoseconds, in either byte order, and pcapng.
constexpr std::string_view magics[] = {"\xa1\xb2\xc3\xd4", "\xd4\xc3\xb2\xa1", "\xa1\xb2\x3c\x4d", "\x4d\x3c\xb2\xa1",
                                       "\x0a\x0d\x0d\x0a"};

pcap_t *open_capture(std::FILE *stream) {
    char error[PCAP_ERRBUF_SIZE] = "";
    pcap_t *file = pcap_fopen_offline(stream, error);
    if (file == nullptr) {
        static_cast<void>(std::fclose(stream)); // the file is unusable anyway
        throw CaptureError(error);
    }
    return file;
}

} // namespace

bool is_capture(std::string_view first_bytes) {
    return std::find(std::begin(magics), std::end(magics), first_bytes.substr(0, capture_magic_size)) !=
           std::end(magics);
}

std::string_view why_not_readable(std::string_view first_bytes) {
    if (first_bytes.starts_with("GMBU"))
        return "it is a NetMon capture; 'editcap' turns it into one that is read";
    return "";
}

std::string time_text(const PacketMark &mark) {
    const std::time_t seconds = mark.seconds;
    std::tm utc{};
    if (gmtime_r(&seconds, &utc) == nullptr)
        return fmt::format("{}.{:06} s", mark.seconds, mark.microseconds);
    return fmt::format(FMT_COMPILE("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z"), utc.tm_year + 1900L, utc.tm_mon + 1,
                       utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, mark.microseconds);
}

CaptureFile::Filter::Filter(pcap_t *file, const std::string &expression) {
    if (pcap_compile(file, &program_, expression.c_str(), 1, PCAP_NETMASK_UNKNOWN) != 0)
        throw CaptureError(fmt::format("filter: {}", pcap_geterr(file)));
}

bool CaptureFile::Filter::matches(const pcap_pkthdr *header, const u_char *bytes) const {
    return pcap_offline_filter(&program_, header, bytes) != 0;
}

CaptureFile::CaptureFile(std::FILE *stream, const std::string &filter)
    : file_(open_capture(stream)), filter_(file_.get(), filter) {}

bool CaptureFile::next(Packet &packet) {
    pcap_pkthdr *header = nullptr;
    const u_char *bytes = nullptr;
    // Not pcap_setfilter, so that packets keep the numbers that they have in the file.
    do {
        const int result = pcap_next_ex(file_.get(), &header, &bytes);
        if (result == PCAP_ERROR_BREAK)
            return false;
        if (result != 1)
            throw CaptureError(fmt::format("cannot be read after packet {}: {}", packets_, pcap_geterr(file_.get())));
        ++packets_;
    } while (!filter_.matches(header, bytes));

    constexpr long microseconds_per_second = 1'000'000;
    packet.mark.number = packets_;
    packet.mark.seconds = header->ts.tv_sec;
    packet.mark.microseconds =
        static_cast<std::int32_t>(std::clamp(header->ts.tv_usec, 0L, microseconds_per_second - 1));
    packet.bytes = {bytes, header->caplen};
    packet.cut_off = header->caplen < header->len;
    return true;
}
