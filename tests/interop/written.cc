#include "written.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fmt/core.h>

#include "answer.h"
#include "decode.h"
#include "encode.h"
#include "plausible.h"
#include "record_json.h"
#include "safe.h"

namespace interop {
namespace {

constexpr unsigned seed = 20;
constexpr int random_records = 1000;

std::vector<std::filesystem::path> files_in(const char *directory) {
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(std::filesystem::path(SIPCODE_EXAMPLES) / directory))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    if (files.empty())
        throw std::runtime_error(fmt::format("no files in {}", directory));
    return files;
}

std::string contents(const std::filesystem::path &file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

Written write(std::string name, const SIP_CODE_MSG &record) {
    Written made{std::move(name), record.method < SIP_RESPONSE_MSG_100_TRY, record, {}};
    SIP_CODE_MSG consumed = record;
    std::string buffer(std::max(SIP_REQUEST_SIZE, SIP_RESPONSE_SIZE), '\0');
    const auto encode = made.is_request ? SIP_Encode_Message_Reuqest : SIP_Encode_Message_Response;
    if (encode(buffer.data(), &consumed) != 1)
        throw std::runtime_error(made.name + ": not written");
    made.text = buffer.c_str();

    // A careful host's record is refused by no encoder.
    SIP_CODE_MSG again = record;
    const auto encode_sized = made.is_request ? SIP_Encode_Request_Buffer : SIP_Encode_Response_Buffer;
    const int length = encode_sized(buffer.data(), buffer.size(), &again);
    if (length < 0 || made.text != std::string_view(buffer.data(), static_cast<std::size_t>(length)))
        throw std::runtime_error(fmt::format("{}: the sized encoder writes something else, {}", made.name, length));
    return made;
}

void write_answers(const std::string &name, std::string message, std::vector<Written> &written) {
    SIP_CODE_MSG request{};
    if (Sip_Decode(message.data(), &request) != 1)
        return;
    IPV4_ADDRESS media{"198.51.100.7", 40010};
    for (int status = SIP_RESPONSE_MSG_100_TRY; status < SIP_CODE_METHOD_COUNT; ++status) {
        AnswerSettings settings{static_cast<sip_code_method>(status), E_UDP, "b7", "", "", {}, {}};
        if (status == SIP_RESPONSE_MSG_200_OK && (request.sdp.a_use == 1 || request.sdp.fax_use == 1))
            settings.media = media;
        Answer made = answer(request, settings);
        if (made.refusal.empty())
            written.push_back(write(fmt::format("{} answered {}", name, decode_methods[status].text), made.record));
    }
}

} // namespace

std::string Written::kind() const {
    const std::string_view own = decode_methods[record.method].text;
    return is_request ? std::string(own) : fmt::format("{} to {}", own, decode_methods[record.cseq.method].text);
}

std::vector<Written> written_messages() {
    std::vector<Written> written;
    for (const auto &file : files_in("records"))
        written.push_back(write(file.stem(), sipcode::record_from_json(nlohmann::ordered_json::parse(contents(file)))));
    for (const auto &file : files_in("messages"))
        write_answers(file.stem(), contents(file), written);
    PlausibleRecords records(seed);
    for (int i = 0; i < random_records; ++i)
        written.push_back(write(fmt::format("random {}", i), i % 2 == 0 ? records.request() : records.response()));
    return written;
}

} // namespace interop
