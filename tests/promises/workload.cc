#include "workload.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <unistd.h>

#include "digest.h"
#include "linear/worst_cases.h"
#include "record.h"

// The clock stands still, so that dates are the same each time. Found before that of libc.
extern "C" std::time_t time(std::time_t *stored) noexcept {
    constexpr std::time_t now = 1795081443;
    if (stored != nullptr)
        *stored = now;
    return now;
}

namespace promises {
namespace {

void add_messages(std::vector<std::string> &all, const std::string &directory, bool behind_members) {
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::string text{std::istreambuf_iterator<char>(file), {}};
        all.push_back(behind_members ? text.substr(text.find("\n\n") + 2) : text);
    }
}

// As a host does that splits messages itself.
void split_lines(const std::string &message, SIP_MSG &split) {
    std::memset(&split, 0, sizeof split);
    message.copy(split.data, sizeof split.data - 1);
    const char *const body = std::strstr(split.data, "\r\n\r\n");
    std::strncpy(split.content, body == nullptr ? "" : body + 4, sizeof split.content - 1);
    bool in_body = false;
    for (char *line = split.data; line != nullptr && *line != '\0' && split.headers < 64 && split.lines < 64;) {
        char *const end = std::strstr(line, "\r\n");
        if (end != nullptr)
            *end = '\0';
        if (*line == '\0')
            in_body = true;
        else if (in_body)
            split.line[split.lines++] = line;
        else
            split.header[split.headers++] = line;
        line = end == nullptr ? nullptr : end + 2;
    }
}

void fill(SIP_CODE_MSG &record, std::mt19937 &draw) {
    static constexpr long numbers[] = {0, 1, 1, 1, 2, 5, 9, 25, 101, 102, 103, 5060, -1, INT_MAX, INT_MIN};
    std::memset(&record, 0, sizeof record);
    sipcode::for_each_leaf(record, [&draw](const sipcode::Leaf<std::byte> &leaf) {
        if (leaf.member.kind == sipcode::Kind::text)
            std::memset(leaf.element, 'z', draw() % 3 == 0 ? draw() % 8 : leaf.member.size);
        else if (leaf.member.kind == sipcode::Kind::number)
            sipcode::store_number(leaf.member, leaf.element, numbers[draw() % std::size(numbers)]);
    });
    static Xmldoc document{};
    document.content[0] = 'x';
    record.xml.xml = draw() % 2 == 0 ? nullptr : &document;
}

} // namespace

const std::vector<std::string> &messages() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> read;
        add_messages(read, SIPCODE_SOURCE "/examples/messages", false);
        add_messages(read, SIPCODE_SOURCE "/tests/data/messages", false);
        add_messages(read, SIPCODE_SOURCE "/tests/data/encoded", true);
        for (const linear::WorstCase &row : linear::worst_cases())
            read.push_back(row.message(SIP_LONGEST_MESSAGE));
        return read;
    }();
    return all;
}

const std::vector<SIP_CODE_MSG> &records() {
    static const std::vector<SIP_CODE_MSG> all = [] {
        std::vector<SIP_CODE_MSG> drawn(50);
        std::mt19937 draw(7);
        for (SIP_CODE_MSG &record : drawn)
            fill(record, draw);
        return drawn;
    }();
    return all;
}

std::uint64_t decode(const std::string &message, Buffers &room) {
    Digest digest;
    log_digest = &digest;
    for (const bool by_length : {true, false}) {
        std::memset(&room.record, 0, sizeof room.record);
        std::memset(&room.report, 0, sizeof room.report);
        const int result = by_length ? SIP_Decode_Buffer(message.data(), message.size(), &room.record, &room.report)
                                     : Sip_Decode(const_cast<char *>(message.c_str()), &room.record);
        digest.add(&result, sizeof result);
        digest.add(&room.record, sizeof room.record);
        room.report.header = nullptr; // an address
        digest.add(&room.report, sizeof room.report);
    }
    log_digest = nullptr;
    return digest.value();
}

std::uint64_t encode(Buffers &room) {
    Digest digest;
    log_digest = &digest;
    room.kept = room.record;
    for (int method = 0; method <= SIP_CODE_METHOD_COUNT; ++method)
        for (int encoder = 0; encoder < 4; ++encoder) {
            room.record = room.kept;
            room.record.method = method;
            room.text[0] = '\0';
            int result = 0;
            switch (encoder) {
            case 0:
                result = SIP_Encode_Message_Reuqest(room.text, &room.record);
                break;
            case 1:
                result = SIP_Encode_Message_Response(room.text, &room.record);
                break;
            case 2:
                result = SIP_Encode_Request_Buffer(room.text, sizeof room.text, &room.record);
                break;
            default:
                result = SIP_Encode_Response_Buffer(room.text, sizeof room.text, &room.record);
            }
            digest.add(&result, sizeof result);
            digest.add(room.text, std::strlen(room.text));
        }
    room.record = room.kept;
    log_digest = nullptr;
    return digest.value();
}

std::uint64_t scan_and_build(const std::string &message, Buffers &room) {
    Digest digest;
    log_digest = &digest;
    room.kept = room.record;
    SIP_CODE_MSG &record = room.kept;

    SIP_Decode_Msg_Printf(room.text, &room.record);
    digest.add(room.text, std::strlen(room.text));

    split_lines(message, room.split);
    SIP_MSG *const split = &room.split;
    Parse_Contact(&record.contact, split);
    Parse_Session_Expires(&record.session_expires, split);
    Parse_Min_Se(&record.min_se, split);
    Parse_Min_Expires(&record.min_expires, split);
    Parse_Call_Info(split, &record);
    Parse_Author(&record.author, split);
    Parse_Authen(&record.authen, split);
    Parse_Authen_Info(&record.authen.next_nonce, split);
    room.text[0] = '\0';
    message.copy(room.text, sizeof room.text - 1);
    Parse_Authen_bak(&record.authen, split, room.text);
    Parse_Authen_bak2(&record.authen, split, room.text);
    Parse_Authen_bak3(&record.authen, split, room.text);
    Parse_Message_Summary(&record.message_summary, split->content);
    Parse_Info(&record.info, split);
    BuildDefaultSdp(&record.sdp);
    const int counts[] = {SIP_Decode_Judge_Via_Count(split),
                          SIP_Decode_Judge_RecordRoute_Count(split),
                          SIP_Decode_Parse_Method(message.c_str()),
                          SIP_Decode_Parse_Method_Response(message.c_str()),
                          SIP_Decode_Parse_Other_Response(message.c_str()),
                          Judge_Strlen_Zero(message.c_str())};
    digest.add(counts, sizeof counts);
    std::size_t framed = 0;
    const int outcome = SIP_Frame_Stream(message.data(), message.size(), &framed);
    digest.add(&outcome, sizeof outcome);
    digest.add(&framed, sizeof framed);
    split->rlPart2 = split->content;
    CompatibleSipMethodName(split);
    if (const char *const value = Parse_Header(split, "CSeq"))
        Copy_String(record.callid, Parse_Skip_Blanks(value), sizeof record.callid);
    Uri_Decode(record.callid);
    digest.add(&record, sizeof record);

    Build_Date(room.text);
    digest.add(room.text, std::strlen(room.text));
    char *end = room.text;
    MSG_Sprintf(&end, "%s:%d;%05u", "a", -1234567, 12U);
    digest.add(room.text, static_cast<std::size_t>(end - room.text));
    log_digest = nullptr;
    return digest.value();
}

void build_identifiers(Buffers &room) {
    static char host[] = "192.0.2.1";
    Build_Tag(room.text);
    Build_Via_Branch(room.text);
    Bulid_Call_id(room.text, host);
}

std::uint64_t everything(Buffers &room) {
    Digest digest;
    const auto add = [&digest](std::uint64_t value) { digest.add(&value, sizeof value); };
    for (const std::string &message : messages()) {
        add(decode(message, room));
        add(encode(room));
        add(scan_and_build(message, room));
    }
    for (const SIP_CODE_MSG &record : records()) {
        room.record = record;
        add(encode(room));
    }
    return digest.value();
}

Silence::Silence() {
    std::fflush(stdout);
    kept_ = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

Silence::~Silence() {
    std::fflush(stdout);
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
}

} // namespace promises
