// Decoded messages on standard output, see message_printer.h.
#include "message_printer.h"

#include <iostream>

#include <fmt/ostream.h>

#include "console.h"
#include "decode.h"
#include "json_members.h"
#include "message_origin.h"
#include "print.h"
#include "record_json.h"

namespace {

// The library reads a status without an identifier as another one, so this is what was received: "INVITE", or "200 OK
// to INVITE".
std::string kind_of(const Decoded &decoded) {
    const auto received = [&](const SIP_SLICE &slice) {
        return printable(decoded.text.substr(slice.at, slice.length));
    };
    if (decoded.start.method.length != 0)
        return received(decoded.start.method);
    return fmt::format("{:03} {} to {}", decoded.start.status, received(decoded.start.reason),
                       sipcode::method_name(decoded.record.cseq.method));
}

void write_start_line(sipcode::JsonWriter &out, const Decoded &decoded) {
    const SIP_START_LINE &start = decoded.start;
    const auto received = [&](const SIP_SLICE &slice) { return decoded.text.substr(slice.at, slice.length); };
    JsonMembers members(out);
    members.key("start_line");
    out.StartObject();
    if (start.method.length != 0) {
        members.text("method", received(start.method));
        members.text("uri", received(start.uri));
    } else {
        members.number("status", static_cast<std::uint64_t>(start.status));
        members.text("reason", received(start.reason));
    }
    out.EndObject();
}

} // namespace

void MessagePrinter::print(Decoded &decoded, std::string_view place, const CapturedMessage *origin) {
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
    case Form::raw:
        text_.write(decoded.text);
        break;
    }
    end_result();
}

void MessagePrinter::print_dump(SIP_CODE_MSG &record) {
    char dump[SIP_DUMP_SIZE];
    SIP_Decode_Msg_Printf(dump, &record);
    std::cout << (is_first_ ? "" : "----\n") << dump;
    is_first_ = false;
}

void MessagePrinter::print_json(const Decoded &decoded, const CapturedMessage *origin) {
    const bool accepted = decoded.refusal.empty();
    json_.Clear();
    sipcode::JsonWriter out(json_);
    JsonMembers members(out);
    out.StartObject();
    if (origin != nullptr)
        write_origin(out, *origin);
    if (accepted)
        write_start_line(out, decoded);
    if (origin != nullptr && accepted) {
        members.key("record");
        out.StartObject();
    }
    if (accepted)
        sipcode::write_members(out, decoded.record, scope_);
    else if (origin != nullptr)
        members.text("refused", decoded.refusal);
    if (origin != nullptr && accepted)
        out.EndObject();
    out.EndObject();
    json_.Put('\n');
    std::cout.write(json_.GetString(), static_cast<std::streamsize>(json_.GetSize()));
}

void MessagePrinter::print_members(const Decoded &decoded, std::string_view place,
                                   const CapturedMessage *origin) const {
    const bool accepted = decoded.refusal.empty();
    fmt::print(std::cout, "{}: {}{}\n", place, origin == nullptr ? "" : origin_text(*origin) + ": ",
               accepted ? kind_of(decoded) : fmt::format("refused: {}", decoded.refusal));
    print_session(std::cout, decoded.record);
    print_record(std::cout, decoded.record, scope_);
}
