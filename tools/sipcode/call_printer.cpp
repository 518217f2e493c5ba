// Prints calls, see call_printer.h.
#include "call_printer.h"

#include <iostream>
#include <optional>
#include <string>

#include <fmt/ostream.h>

#include "console.h"
#include "json_members.h"
#include "message_origin.h"
#include "print.h"

namespace {

double seconds(Microseconds time) { return static_cast<double>(time) / 1e6; }

std::string seconds_text(const std::optional<Microseconds> &time, std::string_view absent) {
    return time ? fmt::format("{:.3f}", seconds(*time)) : std::string(absent);
}

// "refused 404", "answered, 2 forks"
std::string outcome_text(const Call &call) {
    std::string text(outcome_name(call));
    if (call.status >= 300)
        text += fmt::format(" {}", call.status);
    if (call.forks > 1)
        text += fmt::format(", {} forks", call.forks);
    return call.kind == Kind::call ? text : fmt::format("{} {}", call.method, text);
}

std::string codecs_text(const Call &call) {
    std::string names;
    for (const int codec : call.codecs)
        names.append(names.empty() ? "" : " ").append(codec_wire_name(codec));
    return names;
}

// RFC 4180
std::string csv_value(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos)
        return std::string(text);
    std::string value = "\"";
    for (const char c : text)
        value.append(c == '"' ? 2 : 1, c);
    return value + '"';
}

void print_text(const Call &call, bool is_first) {
    constexpr const char *line = "{:<27}  {:<14}  {:<14}  {:<20}  {:>8}  {:>8}  {:>9}  {:>8}  {:>8}  {:<20}  {}\n";
    if (is_first)
        fmt::print(std::cout, fmt::runtime(line), "start", "from", "to", "outcome", "ring", "answer", "length",
                   "messages", "repeated", "codecs", "call-id");
    fmt::print(std::cout, fmt::runtime(line), time_text(call.start), printable(call.from), printable(call.to),
               printable(outcome_text(call)), seconds_text(call.ringing, "-"), seconds_text(call.answered, "-"),
               seconds_text(call.length(), "-"), call.messages, call.repeated, codecs_text(call),
               printable(call.call_id));
}

void print_csv(const Call &call, bool is_first) {
    if (is_first)
        std::cout
            << "start,kind,method,from,to,outcome,status,ring,answer,length,messages,repeated,forks,codecs,source,"
               "destination,call_id\r\n";
    fmt::print(std::cout, "{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}\r\n", time_text(call.start),
               kind_name(call.kind), csv_value(call.method), csv_value(call.from), csv_value(call.to),
               outcome_name(call), call.status == 0 ? "" : std::to_string(call.status), seconds_text(call.ringing, ""),
               seconds_text(call.answered, ""), seconds_text(call.length(), ""), call.messages, call.repeated,
               call.forks, codecs_text(call), endpoint_text(call.source), endpoint_text(call.destination),
               csv_value(call.call_id));
}

void write_seconds(sipcode::JsonWriter &out, JsonMembers &members, std::string_view name,
                   const std::optional<Microseconds> &time) {
    if (!time)
        return;
    members.key(name);
    const std::string text = fmt::format("{:.6f}", seconds(*time));
    out.RawValue(text.data(), text.size(), rapidjson::kNumberType);
}

void print_json(const Call &call) {
    rapidjson::StringBuffer text;
    sipcode::JsonWriter out(text);
    JsonMembers members(out);
    out.StartObject();
    members.text("start", time_text(call.start));
    members.text("kind", kind_name(call.kind));
    members.text("method", call.method);
    members.text("call_id", call.call_id);
    members.text("from", call.from);
    members.text("to", call.to);
    members.text("outcome", outcome_name(call));
    if (call.status != 0)
        members.number("status", static_cast<std::uint64_t>(call.status));
    write_seconds(out, members, "ring", call.ringing);
    write_seconds(out, members, "answer", call.answered);
    write_seconds(out, members, "length", call.length());
    members.number("messages", call.messages);
    members.number("repeated", call.repeated);
    members.number("forks", call.forks);
    members.key("codecs");
    out.StartArray();
    for (const int codec : call.codecs)
        sipcode::write_text(out, codec_wire_name(codec));
    out.EndArray();
    write_endpoint(out, "source", call.source);
    write_endpoint(out, "destination", call.destination);
    out.EndObject();
    std::cout << text.GetString() << '\n';
}

struct NamedDelays {
    std::string_view name;
    const Delays &delays;
};

std::array<NamedDelays, 2> delays_of(const CallFigures &figures) {
    return {NamedDelays{"session_request_delay", figures.session_request_delay()},
            NamedDelays{"registration_request_delay", figures.registration_request_delay()}};
}

constexpr unsigned percentiles[] = {50, 90, 99};

} // namespace

void CallPrinter::print(const Call &call) {
    switch (form_) {
    case CallForm::text:
        print_text(call, is_first_);
        break;
    case CallForm::csv:
        print_csv(call, is_first_);
        break;
    case CallForm::json:
        print_json(call);
        break;
    case CallForm::none:
        return;
    }
    is_first_ = false;
    end_result();
}

void print_figures(const CallFigures &figures) {
    fmt::print(std::cout, "{}, {}, {} repeated\n", count_of(figures.calls(), "call"),
               count_of(figures.messages(), "message"), figures.repeated());
    for (const auto &[outcome, count] : figures.outcomes())
        fmt::print(std::cout, "  {:<28}{:>9}\n", outcome_name(outcome), count);
    for (const auto &[status, count] : figures.statuses())
        fmt::print(std::cout, "  final answer {:<15}{:>9}\n", status, count);
    for (const auto &[kind, count] : figures.kinds()) {
        if (kind != Kind::call)
            fmt::print(std::cout, "  {:<28}{:>9}\n", fmt::format("besides: {}", kind_name(kind)), count);
    }
    if (figures.given_up != 0)
        fmt::print(std::cout, "  {:<28}{:>9}\n", "reported before their end", figures.given_up);
    if (const std::optional<double> ratio = figures.session_establishment_ratio())
        fmt::print(std::cout, "  session establishment ratio {:>7.1f} %\n", *ratio * 100);
    for (const auto &[name, delays] : delays_of(figures)) {
        if (delays.count() == 0)
            continue;
        std::string title(name);
        std::replace(title.begin(), title.end(), '_', ' ');
        fmt::print(std::cout, "  {:<28}", title);
        for (const unsigned percent : percentiles)
            fmt::print(std::cout, "  {} %: {:.3f} s", percent, seconds(delays.percentile(percent)));
        std::cout << '\n';
    }
}

void print_figures_json(const CallFigures &figures) {
    rapidjson::StringBuffer text;
    sipcode::JsonWriter out(text);
    JsonMembers members(out);
    const auto begin = [&](std::string_view name) {
        members.key(name);
        out.StartObject();
    };
    out.StartObject();
    members.number("calls", figures.calls());
    members.number("messages", figures.messages());
    members.number("repeated", figures.repeated());
    members.number("given_up", figures.given_up);
    begin("outcomes");
    for (const auto &[outcome, count] : figures.outcomes())
        members.number(outcome_name(outcome), count);
    out.EndObject();
    begin("statuses");
    for (const auto &[status, count] : figures.statuses())
        members.number(std::to_string(status), count);
    out.EndObject();
    begin("kinds");
    for (const auto &[kind, count] : figures.kinds())
        members.number(kind_name(kind), count);
    out.EndObject();
    if (const std::optional<double> ratio = figures.session_establishment_ratio()) {
        members.key("session_establishment_ratio");
        out.Double(*ratio);
    }
    for (const auto &[name, delays] : delays_of(figures)) {
        if (delays.count() == 0)
            continue;
        begin(name);
        members.number("count", delays.count());
        for (const unsigned percent : percentiles)
            write_seconds(out, members, fmt::format("p{}", percent), delays.percentile(percent));
        out.EndObject();
    }
    out.EndObject();
    std::cout << text.GetString() << '\n';
}
