// Decoded messages on standard output, see message_printer.h.
#include "message_printer.h"

#include <iostream>

#include <fmt/ostream.h>

#include "console.h"
#include "decode.h"
#include "print.h"
#include "record_json.h"

namespace {

using nlohmann::ordered_json;

// "INVITE", or "200 OK to INVITE".
std::string kind_of(const SIP_CODE_MSG &record) {
    const char *kind = decode_methods[record.method].text;
    if (record.method < SIP_RESPONSE_MSG_100_TRY)
        return kind;
    return fmt::format("{} to {}", kind, sipcode::method_name(record.cseq.method));
}

std::string origin_text(const CapturedMessage &origin) {
    return fmt::format("packet {}, {}, {} {} > {}", origin.mark.number, time_text(origin.mark),
                       transport_name(origin.transport), endpoint_text(origin.source),
                       endpoint_text(origin.destination));
}

ordered_json endpoint_json(const Endpoint &endpoint) {
    return {{"address", endpoint.address}, {"port", endpoint.port}};
}

ordered_json origin_json(const CapturedMessage &origin) {
    return {{"packet", origin.mark.number},
            {"time", time_text(origin.mark)},
            {"transport", transport_name(origin.transport)},
            {"source", endpoint_json(origin.source)},
            {"destination", endpoint_json(origin.destination)},
            {"whole", origin.is_whole}};
}

} // namespace

void MessagePrinter::print(Decoded &decoded, const std::string &place, const CapturedMessage *origin) {
    switch (form_) {
    case Form::members:
        print_members(decoded, place, origin);
        break;
    case Form::json:
        print_json(decoded, origin);
        break;
    case Form::dump:
        print_dump(decoded.record);
        break;
    }
    // After every message, so that output and log keep their order if both go to the same place.
    flush_output();
}

void MessagePrinter::print_dump(SIP_CODE_MSG &record) {
    char dump[SIP_DUMP_SIZE];
    SIP_Decode_Msg_Printf(dump, &record);
    std::cout << (is_first_ ? "" : "----\n") << dump;
    is_first_ = false;
}

void MessagePrinter::print_json(const Decoded &decoded, const CapturedMessage *origin) const {
    const bool accepted = decoded.refusal.empty();
    ordered_json record = accepted ? sipcode::to_json(decoded.record, scope_) : ordered_json::object();
    if (origin == nullptr) {
        std::cout << record << '\n';
        return;
    }
    ordered_json message = origin_json(*origin);
    if (accepted)
        message["record"] = std::move(record);
    else
        message["refused"] = decoded.refusal;
    std::cout << message << '\n';
}

void MessagePrinter::print_members(const Decoded &decoded, const std::string &place,
                                   const CapturedMessage *origin) const {
    const bool accepted = decoded.refusal.empty();
    fmt::print(std::cout, "{}: {}{}\n", place, origin == nullptr ? "" : origin_text(*origin) + ": ",
               accepted ? kind_of(decoded.record) : "refused: " + decoded.refusal);
    print_session(std::cout, decoded.record);
    print_record(std::cout, decoded.record, scope_);
}
