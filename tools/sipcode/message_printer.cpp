// Decoded messages on standard output, see message_printer.h.
#include "message_printer.h"

#include <iostream>

#include <fmt/ostream.h>

#include "console.h"
#include "decode.h"
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

std::string origin_text(const CapturedMessage &origin) {
    return fmt::format("packet {}, {}, {} {} > {}", origin.mark.number, time_text(origin.mark),
                       transport_name(origin.transport), endpoint_text(origin.source),
                       endpoint_text(origin.destination));
}

// Writes the members of a JSON object.
class Members {
  public:
    explicit Members(sipcode::JsonWriter &out) : out_(out) {}

    Members &key(std::string_view name) {
        out_.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
        return *this;
    }
    void text(std::string_view name, std::string_view value) {
        key(name);
        sipcode::write_text(out_, value);
    }
    void number(std::string_view name, std::uint64_t value) {
        key(name);
        out_.Uint64(value);
    }
    void flag(std::string_view name, bool value) {
        key(name);
        out_.Bool(value);
    }
    void endpoint(std::string_view name, const Endpoint &value) {
        key(name);
        out_.StartObject();
        text("address", value.address);
        number("port", value.port);
        out_.EndObject();
    }
    void start_line(const Decoded &decoded) {
        const SIP_START_LINE &start = decoded.start;
        const auto received = [&](const SIP_SLICE &slice) { return decoded.text.substr(slice.at, slice.length); };
        key("start_line");
        out_.StartObject();
        if (start.method.length != 0) {
            text("method", received(start.method));
            text("uri", received(start.uri));
        } else {
            number("status", static_cast<std::uint64_t>(start.status));
            text("reason", received(start.reason));
        }
        out_.EndObject();
    }

  private:
    sipcode::JsonWriter &out_;
};

void write_origin(Members &members, const CapturedMessage &origin) {
    members.number("packet", origin.mark.number);
    members.text("time", time_text(origin.mark));
    members.text("transport", transport_name(origin.transport));
    members.endpoint("source", origin.source);
    members.endpoint("destination", origin.destination);
    members.flag("whole", origin.is_whole);
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
    Members members(out);
    out.StartObject();
    if (origin != nullptr)
        write_origin(members, *origin);
    if (accepted)
        members.start_line(decoded);
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
