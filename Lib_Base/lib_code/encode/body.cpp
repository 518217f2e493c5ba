// The body block: Content-Length, then the first body source of the record that applies.
#include "lines.h"

namespace sipcode {
namespace {

void write_length_and_body(writer &out, int length, text body) {
    out.line<"Content-Length: %d\r\n\r\n">(length);
    out.append(body);
}

void write_counted(writer &out, text body) { write_length_and_body(out, static_cast<int>(body.size()), body); }

void write_no_body(writer &out) { out.line<"Content-Length: 0\r\n\r\n">(); }

// The record announces a body but has none.
void write_missing_body(writer &out) {
    out.refuse(writer::fault::no_body);
    write_no_body(out);
}

// The length is fixed. It is right for a key of one character, which info.key must hold.
void write_dtmf(writer &out, const SIP_INFO &info) {
    const text key = member_text(info.key);
    if (key.size() != 1)
        out.refuse(writer::fault::broken_text);
    out.line<"Content-Length: 10\r\n\r\nSignal=%s\r\n">(key);
}

void write_summary(writer &out, const SIP_CODE_MSG &record) {
    const MESSAGE_SUMMARY &summary = record.message_summary;
    char buffer[500];
    writer body(buffer, sizeof buffer, out);
    body.line<"Messages-Waiting: yes\r\nMessage-Account: sip:%s@%s\r\nVoice-Message: %d/%d (%d/%d)\r\n">(
        summary.account, record.to.addr.ip, summary.newmsgcount, summary.oldmsgcount, summary.urgentmsgcount,
        summary.urgentoldcount);
    out.refuse(body.first_fault());
    write_counted(out, {buffer, body.length()});
}

void write_sdp(writer &out, SIP_SDP &sdp) {
    char buffer[SIP_SDP_SIZE];
    writer body(buffer, sizeof buffer, out);
    Bulid_Sdp(body, sdp);
    out.refuse(body.first_fault());
    write_counted(out, {buffer, body.length()});
}

void write_document(writer &out, pXmldoc document) {
    if (document == nullptr)
        return write_missing_body(out);
    char buffer[4096] = {};
    int room = sizeof buffer;
    Xml_Encode(document, buffer, &room);
    // Unsigned, since a host may leave any count here and a signed difference could overflow.
    const unsigned written = static_cast<unsigned>(sizeof buffer) - static_cast<unsigned>(room);
    const text body = member_text(buffer);
    if (written != body.size())
        out.refuse(writer::fault::broken_text);
    write_length_and_body(out, static_cast<int>(written), body);
}

bool has_sdp(const SIP_SDP &sdp) { return sdp.a_use == 1 || sdp.fax_use == 1; }

} // namespace

void write_body(writer &out, SIP_CODE_MSG &record, body_sources sources) {
    const bool is_request = sources == body_sources::of_request;
    if (record.content.use != 1)
        return write_no_body(out);
    out.line<"Content-Type: %s\r\n">(record.content.type);
    if (record.info.use == 1)
        write_dtmf(out, record.info);
    else if (is_request && record.message_summary.use == 1)
        write_summary(out, record);
    else if (has_sdp(record.sdp))
        write_sdp(out, record.sdp);
    else if (record.xml.use == SIP_XML_DOCUMENT)
        write_document(out, record.xml.xml);
    else if (is_request && record.xml.use == SIP_XML_TEXT)
        write_counted(out, member_text(record.xml_buf));
    else if (is_request && record.msg_sdp.use == 1)
        write_counted(out, member_text(record.msg_sdp.content));
    else
        write_missing_body(out);
}

} // namespace sipcode
