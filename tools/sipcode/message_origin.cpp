// Where in a capture a message came from, see message_origin.h.
#include "message_origin.h"

#include <fmt/core.h>

#include "json_members.h"

std::string origin_text(const CapturedMessage &origin) {
    return fmt::format("packet {}, {}, {} {} > {}", origin.mark.number, time_text(origin.mark),
                       transport_name(origin.transport), endpoint_text(origin.source),
                       endpoint_text(origin.destination));
}

void write_endpoint(sipcode::JsonWriter &out, std::string_view name, const Endpoint &endpoint) {
    JsonMembers members(out);
    members.key(name);
    out.StartObject();
    members.text("address", endpoint.address);
    members.number("port", endpoint.port);
    out.EndObject();
}

void write_origin(sipcode::JsonWriter &out, const CapturedMessage &origin) {
    JsonMembers members(out);
    members.number("packet", origin.mark.number);
    members.text("time", time_text(origin.mark));
    members.text("transport", transport_name(origin.transport));
    write_endpoint(out, "source", origin.source);
    write_endpoint(out, "destination", origin.destination);
    members.flag("whole", origin.is_whole);
}
