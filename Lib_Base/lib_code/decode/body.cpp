// Bodies other than a session description: DTMF of an INFO, message-waiting summary (RFC 3842), text of a MESSAGE,
// SUBSCRIBE or NOTIFY.
//
//   application/dtmf-relay   Signal=5 on a line of its own            info.key 5
//   application/dtmf         5                                        info.key 5
//   Messages-Waiting: yes
//   Message-Account: sip:*97@10.0.0.1
//   Voice-Message: 2/8 (0/2)                                          message_summary
#include "decoders.h"
#include "host.h"
#include "log.h"

namespace sipcode {
namespace {

// The value of a body line of the form name "=" value, without leading blanks; empty for any other line.
text Parse_Get_Body_By_Line(text line, text name) {
    if (!starts_nocase(line, name) || line.size() == name.size() || line[name.size()] != '=')
        return {};
    return skip_blanks(drop(line, name.size() + 1));
}

// The first value of a body line with this name that is not empty; empty if there is none.
text Parse_Get_Body(const message &msg, text name) {
    for (int i = 0; i < msg.body_lines(); ++i)
        if (const text value = Parse_Get_Body_By_Line(msg.body_line(static_cast<std::size_t>(i)), name); !value.empty())
            return value;
    return {};
}

// A working copy of a summary, from which one line is cut in place.
class summary_line {
  public:
    summary_line(const char *body, const char *start) : copy(text(body, strnlen(body, longest_body))) {
        char *cursor = copy.data();
        found = Str_Two_Tok(&cursor, start, "\r\n");
    }

    const char *value() const { return found; }

    static constexpr std::size_t longest_body = 510;

  private:
    terminated<longest_body> copy;
    const char *found;
};

void read_message_counts(text value, MESSAGE_SUMMARY &summary) {
    scanner counts{padded_text(value)};
    static_cast<void>(counts.integer(summary.newmsgcount) && counts.literal("/") &&
                      counts.integer(summary.oldmsgcount) && counts.white_space() && counts.literal("(") &&
                      counts.integer(summary.urgentmsgcount) && counts.literal("/") &&
                      counts.integer(summary.urgentoldcount));
}

} // namespace

void Parse_Info(SIP_INFO *info, message &msg) {
    const text type = msg.value(header::content_type, header::compact_content_type);
    if (equals_nocase(type, "application/dtmf-relay")) {
        const text signal = Parse_Get_Body(msg, "Signal");
        if (signal.empty()) {
            SIPCODE_TRACE(0, "Unable to retrieve DTMF signal from INFO message");
            return;
        }
        info->use = 1;
        msg.store.put(info->key, signal);
    } else if (equals_nocase(type, "application/dtmf")) {
        msg.trim_body();
        info->use = 1;
        msg.store.put(info->key, msg.body());
    }
}

void Parse_Sdp_Sub_And_Msg(SIP_MES_SDP *SDP, const message &msg) {
    if (msg.body().empty())
        return;
    SDP->use = 1;
    store(SDP->content, {});
    msg.store.put_verbatim(SDP->content, msg.body());
}

// The host cuts Message-Account and the counts from copies, so a report cannot give the place of a value that is cut.
void Parse_Message_Summary(const bounded_store &store, MESSAGE_SUMMARY *ptMsgSummary, const char *pchMesseagSummary) {
    if (pchMesseagSummary == nullptr || *pchMesseagSummary == '\0')
        return;
    store.within(text(pchMesseagSummary), summary_line::longest_body);
    if (const summary_line waiting(pchMesseagSummary, "Messages-Waiting: "); waiting.value() != nullptr)
        store.put_verbatim(ptMsgSummary->messageswaiting, waiting.value());
    if (const summary_line account(pchMesseagSummary, "Message-Account: "); account.value() != nullptr)
        Parse_Uri(store, padded_text(text(account.value())), ptMsgSummary->account, ptMsgSummary->addr);
    if (const summary_line counts(pchMesseagSummary, "Voice-Message:"); counts.value() != nullptr)
        read_message_counts(counts.value(), *ptMsgSummary);
    ptMsgSummary->use = 1;
}

} // namespace sipcode

void Parse_Info(SIP_INFO *info, SIP_MSG *psip_msg) {
    sipcode::message msg(*psip_msg);
    sipcode::Parse_Info(info, msg);
}

void Parse_Message_Summary(MESSAGE_SUMMARY *ptMsgSummary, char *pchMesseagSummary) {
    sipcode::Parse_Message_Summary(sipcode::bounded_store(), ptMsgSummary, pchMesseagSummary);
}
