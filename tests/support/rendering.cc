#include "support/rendering.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <stdexcept>
#include <vector>

#include <sipcode/host.h>

#include "support/members.h"

namespace support {

std::string rendered_date;

namespace {

struct Clause {
    std::string member;
    std::string operation;
    std::string values;
};

struct Row {
    std::vector<Clause> when;
    std::string text;
};

std::vector<Clause> clauses_of(std::string_view when) {
    std::vector<Clause> all;
    while (!when.empty()) {
        const std::string_view clause = when.substr(0, when.find(" & "));
        const std::size_t end = std::min(clause.find_first_of("!=<>~"), clause.size());
        const std::size_t values = std::min(clause.find_first_not_of("!=<>~", end), clause.size());
        all.push_back({std::string(clause.substr(0, end)), std::string(clause.substr(end, values - end)),
                       std::string(clause.substr(values))});
        when.remove_prefix(std::min(when.size(), clause.size() + 3));
    }
    return all;
}

const std::vector<Row> &table(const std::string &name) {
    static std::map<std::string, std::vector<Row>> tables;
    std::vector<Row> &rows = tables[name];
    if (!rows.empty())
        return rows;
    std::ifstream file(SIPCODE_TEST_DATA "/rendering/" + name + ".rows");
    for (std::string line; std::getline(file, line);) {
        const std::size_t arrow = line.find("=> ");
        rows.push_back(
            {clauses_of(std::string_view(line).substr(0, arrow == 0 ? 0 : arrow - 1)), line.substr(arrow + 3)});
    }
    if (rows.empty())
        throw std::runtime_error("no table " + name);
    return rows;
}

// Payload and name of each audio codec by e_codec, a dynamic one without a payload; and of video payloads.
const std::string audio[] = {
    "",           "8 PCMA/8000", "0 PCMU/8000", "18 G729/8000", "4 G723/8000", " telephone-event/8000",
    "3 GSM/8000", "2 G726-32",   "9 G722/8000", " speex/8000",  " ilbc/8000",  "5 dvi4/8000"};
const std::string video[] = {"99 H264/90000",  "34 H263/90000",  "31 H261/90000",
                             "109 H264/90000", "103 H263/90000", "96 H263/90000"};

class Rendering {
  public:
    Rendering(SIP_CODE_MSG &source, bool request) : record(source), is_request(request) {}

    std::string all_of(const std::string &name, char element = '0') const {
        std::string out;
        for (const Row &row : table(name))
            if (std::all_of(row.when.begin(), row.when.end(), [&](const Clause &one) { return holds(one, element); }))
                out += written(row.text, element);
        return out;
    }

  private:
    bool holds(const std::string &member, const std::string &values) const { return holds({member, "=", values}, '0'); }

    bool holds(const Clause &clause, char element) const {
        const auto &[member, operation, values] = clause;
        if (member == ":timer")
            return holds("method", "180 Ringing,183 Session Progress") ||
                   (holds("method", "200 OK") && holds("cseq.method", "INVITE,UPDATE"));
        if (member == ":own_connections")
            return holds("sdp.fax_use", "1") ||
                   (holds("sdp.v_addr.ip", "*") && text("sdp.v_addr.ip") != text("sdp.a_addr.ip"));
        const std::string path = path_of(member, element);
        if (operation == "==" || operation == "!==")
            return (text(path) == text(values)) == (operation == "==");
        if (operation == "!~")
            return text(path).find(values) == std::string::npos;
        if (operation == ">" || operation == "<=")
            return (number_at(record, path) > std::stol(values)) == (operation == ">");
        return is_one_of(place(path), values) == (operation == "=");
    }

    bool is_one_of(const Place &member, const std::string &values) const {
        if (member.is_text())
            return values == "*" ? !text(member.path).empty() : text(member.path) == values;
        const std::string name(sipcode::value_name_of(member.member, member.in(record)));
        const auto listed = [list = "," + values + ","](const std::string &value) {
            return list.find("," + value + ",") != list.npos;
        };
        return listed(std::to_string(number_at(record, member.path))) || (!name.empty() && listed(name));
    }

    std::string written(std::string_view row, char element) const {
        std::string out;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t close = row[i] == '{' ? row.find('}', i) : i;
            if (close > i)
                out += value(row.substr(i + 1, close - i - 1), element);
            else
                out += row[i] == '$' ? "\r\n" : std::string(1, row[i]);
            i = close;
        }
        return out;
    }

    std::string value(std::string_view what, char element) const {
        const std::size_t colon = std::min(what.find(':'), what.size());
        if (colon == 0)
            return special(what);
        const std::string path = path_of(what.substr(0, colon), element);
        if (place(path).is_text())
            return text(path);
        const long number = number_at(record, path);
        if (what.ends_with(":method"))
            return decode_methods[number >= 0 && number < SIP_CODE_METHOD_COUNT ? number : 0].text;
        char digits[9];
        std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(number));
        return what.ends_with(":hex") ? digits : std::to_string(number);
    }

    std::string special(std::string_view what) const {
        static const std::string transports[] = {"UDP", "TCP", "TLS"};
        if (what == ":transport")
            return record.trans_type >= E_UDP && record.trans_type <= E_TLS ? transports[record.trans_type] : "";
        if (what == ":date")
            return rendered_date;
        if (what == ":history")
            return history();
        if (what == ":body")
            return body();
        return what.starts_with(":a_") ? audio_of(what == ":a_lines") : video_of(what == ":v_lines");
    }

    std::string history() const {
        std::string out;
        for (char entry = '0'; entry < '4' && holds({"history_info[#].use", "=", "1"}, entry); ++entry)
            out += (entry > '0' ? ",\r\n " : "") + all_of("history-entry", entry);
        return out;
    }

    std::string body() const {
        std::string out;
        if (holds("content.use", "1") && holds("info.use", "1"))
            return written("Content-Length: 10$$Signal={info.key}$", '0');
        if (!holds("content.use", "1"))
            out.clear();
        else if (is_request && holds("message_summary.use", "1"))
            out = all_of("summary");
        else if (holds("sdp.a_use", "1") || holds("sdp.fax_use", "1"))
            out = description();
        else if (holds("xml.use", "1"))
            out = document();
        else if (is_request && holds("xml.use", "2"))
            out = text("xml_buf");
        else if (is_request && holds("msg_sdp.use", "1"))
            out = text("msg_sdp.content");
        return "Content-Length: " + std::to_string(out.size()) + "\r\n\r\n" + out;
    }

    std::string document() const {
        char out[4096] = {};
        int room = sizeof out;
        if (record.xml.xml != nullptr)
            Xml_Encode(record.xml.xml, out, &room);
        return out;
    }

    std::string description() const {
        SIP_SDP &sdp = record.sdp;
        const auto entry_of = [&sdp](e_codec codec) {
            return std::find_if(std::begin(sdp.rtpmap), std::end(sdp.rtpmap),
                                [codec](const CODEC_RTPMAP &entry) { return entry.a_coder == codec; });
        };
        const bool has_events = std::count(std::begin(sdp.a_coders), std::end(sdp.a_coders), TE101) > 0;
        const auto known = entry_of(TE101);
        const auto entry = known != std::end(sdp.rtpmap) ? known : entry_of(UNKONW);
        if (sdp.a_use == 1 && sdp.fax_use != 1 && has_events && entry != std::end(sdp.rtpmap))
            *entry = {TE101, entry == known && entry->a_payload != 0 ? entry->a_payload : 101};
        return all_of("sdp");
    }

    // The payloads of a media line, or the attributes of its section.
    std::string audio_of(bool lines) const {
        std::string out;
        for (const e_codec codec : record.sdp.a_coders) {
            const std::string &known = audio[codec > UNKONW && codec < SIP_CODE_CODEC_COUNT ? codec : UNKONW];
            const std::string payload = known.substr(0, known.find(' '));
            if (!payload.empty())
                out += lines ? "a=rtpmap:" + known + "\r\n" : " " + payload;
            for (const CODEC_RTPMAP &entry : record.sdp.rtpmap) {
                const std::string number = std::to_string(entry.a_payload);
                if (codec != UNKONW && entry.a_coder == codec && !lines)
                    out += " " + number;
                else if (codec != UNKONW && entry.a_coder == codec && payload.empty() && !known.empty())
                    out += "a=rtpmap:" + number + known + "\r\n";
            }
        }
        return out;
    }

    std::string video_of(bool lines) const {
        std::string out;
        for (int slot = 0; slot < 4; ++slot) {
            const std::string payload = std::to_string(record.sdp.v_coders[slot]);
            out += !lines && record.sdp.v_coders[slot] > 0 ? " " + payload : "";
            for (const std::string &known : video)
                out += lines && known.starts_with(payload + " ") ? "a=rtpmap:" + known + "\r\n" : "";
        }
        return out;
    }

    static std::string path_of(std::string_view path, char element) {
        std::string whole(path);
        std::replace(whole.begin(), whole.end(), '#', element);
        return whole;
    }

    std::string text(std::string_view path) const { return text_at(record, path); }

    SIP_CODE_MSG &record;
    bool is_request;
};

void strip_prefix(SIP_CODE_MSG &record) {
    const std::string callid = text_at(record, "callid");
    if (callid.starts_with("ims-"))
        set_text(record, place("callid"), callid.substr(4));
}

} // namespace

std::string render_request(SIP_CODE_MSG &record) {
    strip_prefix(record);
    return Rendering(record, true).all_of("request");
}

std::string render_response(SIP_CODE_MSG &record) {
    strip_prefix(record);
    if (record.via_count == 2 && record.via1.addr.port == 0)
        record.via1.addr.port = 5060;
    if (record.to.tag[0] == '\0')
        record.to.tag_use = 0;
    return Rendering(record, false).all_of("response");
}

} // namespace support
