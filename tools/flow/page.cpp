// Makes the page, see ladder.h.
#include <algorithm>
#include <random>
#include <sstream>

#include <fmt/core.h>

#include "ladder.h"
#include "message_check.h"
#include "page_html.h"
#include "print.h"
#include "record_json.h"
#include "safe.h"

namespace {

using sipcode::JsonWriter;

void write_key(JsonWriter &out, std::string_view name) {
    out.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void write_bytes(JsonWriter &out, std::string_view bytes) {
    const std::string text = sipcode::latin1_to_utf8(bytes);
    out.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

// The members of the record as decode prints them, or why there is none.
std::string reading_of(const std::string &message) {
    SIP_CODE_MSG record;
    SIP_DECODE_REPORT report;
    SIP_Decode_Buffer(message.data(), message.size(), &record, &report);
    if (report.outcome != SIP_DECODE_DONE)
        return fmt::format("refused: {}", refusal_text(report.outcome));
    std::ostringstream text;
    print_session(text, record);
    print_record(text, record, sipcode::Scope::present);
    return text.str();
}

void write_message(JsonWriter &out, const FlowMessage &message) {
    out.StartObject();
    write_key(out, "packet");
    out.Uint64(message.mark.number);
    write_key(out, "text");
    write_bytes(out, message.text);
    write_key(out, "record");
    write_bytes(out, reading_of(message.text));
    write_key(out, "findings");
    out.StartArray();
    for (const Finding &finding : check_message(message.text, 1)) {
        out.StartObject();
        write_key(out, "begin");
        out.Uint64(finding.place.begin);
        write_key(out, "end");
        out.Uint64(finding.place.end);
        write_key(out, "kind");
        write_bytes(out, loss_name(finding.loss));
        write_key(out, "text");
        write_bytes(out, finding.text);
        out.EndObject();
    }
    out.EndArray();
    out.EndObject();
}

void write_call(JsonWriter &out, const FlowCall &flow) {
    const Call &call = flow.call;
    const auto seconds = [](const std::optional<Microseconds> &time) {
        return time ? fmt::format("{:.3f} s", static_cast<double>(*time) / 1e6) : std::string();
    };
    std::string outcome(outcome_name(call));
    if (call.status >= 300)
        outcome += fmt::format(" {}", call.status);
    out.StartObject();
    write_key(out, "columns");
    out.StartArray();
    for (const std::string &column :
         {time_text(call.start), call.from, call.to, outcome, seconds(call.ringing), seconds(call.answered),
          seconds(call.length()), std::to_string(flow.messages.size()), call.call_id})
        write_bytes(out, column);
    out.EndArray();
    write_key(out, "messages");
    out.StartArray();
    for (const FlowMessage &message : flow.messages)
        write_message(out, message);
    out.EndArray();
    out.EndObject();
}

// As JSON that cannot end the script element around it.
std::string data_of(const std::vector<FlowCall> &calls) {
    rapidjson::StringBuffer json;
    JsonWriter out(json);
    out.StartArray();
    for (const FlowCall &call : calls)
        write_call(out, call);
    out.EndArray();
    std::string text;
    for (const char c : std::string_view(json.GetString(), json.GetSize())) {
        if (c == '<' || c == '>' || c == '&')
            text += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
        else
            text += c;
    }
    return text;
}

std::string ladders_of(const std::vector<FlowCall> &calls) {
    std::string text;
    for (const FlowCall &call : calls)
        text += fmt::format("<div class=\"scroll flow\"{}>{}</div>\n", &call == calls.data() ? "" : " hidden",
                            draw_svg(make_ladder(call.messages), call.messages));
    return text;
}

// Only the page's own script has it, so that nothing else can run.
std::string nonce() {
    std::random_device random;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

} // namespace

std::string draw_page(const std::vector<FlowCall> &calls, std::string_view note) {
    const std::string own_nonce = nonce();
    std::string page;
    // What is put in is not looked at again: it may contain such marks itself.
    for (std::string_view rest = page_html; !rest.empty();) {
        const std::size_t begin = rest.find('%');
        page += rest.substr(0, begin);
        rest.remove_prefix(std::min(begin, rest.size()));
        const std::size_t end = rest.find('%', 1);
        const std::string_view mark = rest.substr(0, end == std::string_view::npos ? 1 : end + 1);
        if (mark == "%NONCE%")
            page += own_nonce;
        else if (mark == "%NOTE%")
            page += escape_markup(note);
        else if (mark == "%LADDERS%")
            page += ladders_of(calls);
        else if (mark == "%DATA%")
            page += data_of(calls);
        else {
            page += rest.substr(0, 1);
            rest.remove_prefix(std::min<std::size_t>(1, rest.size()));
            continue;
        }
        rest.remove_prefix(mark.size());
    }
    return page;
}
