// Sip_Decode: the order of work. The file of each decoder describes what it reads.
#include <initializer_list>

#include "decoders.h"
#include "host.h"
#include "log.h"
#include "methods.h"

namespace sipcode {
namespace {

constexpr int decoded = 1;
constexpr int refused = -1;

// Kind of a response. A status missing from the table becomes 480 if it is from 400 to 699 and unknown otherwise. Both
// are logged.
int response_kind(const char *status) {
    const int kind = SIP_Decode_Parse_Method_Response(text(status));
    if (kind != SIP_REQUEST_MSG_UNKNOWN)
        return kind;
    const int stand_in = SIP_Decode_Parse_Other_Response(text(status));
    SIPCODE_TRACE(1, "recv sip response method: [%s], transfer to 480", status);
    return stand_in;
}

void decode_start_line(message &msg, SIP_CODE_MSG &record) {
    SIP_MSG &split = msg.split();
    if (split.method == SIP_REQUEST_MSG_RESPONSE)
        split.method = response_kind(split.rlPart2);
    else
        Parse_Uri(msg.store, message::padded(split.rlPart2), record.uri.user, record.uri.addr);
    record.method = split.method;
}

int refuse_cseq(const message &msg) {
    const char *const value = msg.value(header::cseq).data();
    return msg.store.refuse(value != nullptr ? SIP_DECODE_BAD_CSEQ : SIP_DECODE_NO_CSEQ, "CSeq", value);
}

// Three or more Vias are counted but not read. Returns false if there is none.
bool decode_vias(const message &msg, SIP_CODE_MSG &record) {
    record.via_count = SIP_Decode_Judge_Via_Count(msg);
    if (record.via_count == 1)
        Parse_Via(&record.via, msg);
    else if (record.via_count == 2)
        Parse_Via_Pair(&record.via1, &record.via, msg);
    return record.via_count != 0;
}

void decode_rseq(const message &msg, SIP_CODE_MSG &record) {
    record.rseq.use = Parse_RSeq(msg, &record) == 1;
    if (record.rseq.use == 0)
        record.rseq.RSeq = -1;
}

void decode_expiry(const message &msg, SIP_CODE_MSG &record) {
    Parse_Expires(&record.expire.expires, msg);
    record.expire.use = record.expire.expires != 0;
}

// A few identifiers, one bit each.
class method_set {
  public:
    consteval method_set(std::initializer_list<int> identifiers) {
        for (const int identifier : identifiers)
            bits |= std::uint64_t{1} << identifier;
    }
    bool has(int identifier) const { return static_cast<unsigned>(identifier) < 64 && (bits >> identifier & 1) != 0; }

  private:
    static_assert(SIP_CODE_METHOD_COUNT <= 64);
    std::uint64_t bits = 0;
};

bool is_any_of(int identifier, method_set identifiers) { return identifiers.has(identifier); }

bool carries_session(int method, int cseq_method) {
    return is_any_of(cseq_method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_ACK, SIP_REQUEST_MSG_UPDATE}) &&
           is_any_of(method, {SIP_REQUEST_MSG_INVITE, SIP_RESPONSE_MSG_183_RING, SIP_RESPONSE_MSG_180_RING,
                              SIP_RESPONSE_MSG_181, SIP_RESPONSE_MSG_182_RING, SIP_RESPONSE_MSG_200_OK,
                              SIP_REQUEST_MSG_ACK, SIP_REQUEST_MSG_UPDATE});
}

bool carries_credentials(int method, int cseq_method) {
    return cseq_method == SIP_REQUEST_MSG_REGISTER ||
           is_any_of(method, {SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_MESSAGE});
}

bool carries_challenge(int method, int cseq_method) {
    return is_any_of(cseq_method, {SIP_REQUEST_MSG_REGISTER, SIP_REQUEST_MSG_INVITE, SIP_REQUEST_MSG_BYE,
                                   SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_MESSAGE}) &&
           is_any_of(method, {SIP_RESPONSE_MSG_401_UNAUTHORIZED, SIP_RESPONSE_MSG_407_PROXY_AUTHENTICATION_REQUIRED});
}

// Bodies and credentials, which depend on the method and the CSeq method.
void decode_by_method(message &msg, SIP_CODE_MSG &record) {
    const int method = record.method;
    const int cseq_method = record.cseq.method;
    if (carries_session(method, cseq_method))
        Parse_Sdp(&record.sdp, msg);
    if (is_any_of(cseq_method, {SIP_REQUEST_MSG_MESSAGE, SIP_REQUEST_MSG_SUBCRIBE, SIP_REQUEST_MSG_NOTIFY}))
        Parse_Sdp_Sub_And_Msg(&record.msg_sdp, msg);
    if (method == SIP_REQUEST_MSG_NOTIFY)
        Parse_Message_Summary(msg.store, &record.message_summary, msg.split().content);
    Parse_Content_Type(&record.content, msg);
    if (cseq_method == SIP_REQUEST_MSG_INFO && method == SIP_REQUEST_MSG_INFO)
        Parse_Info(&record.info, msg);
    if (carries_credentials(method, cseq_method))
        Parse_Author(&record.author, msg);
    if (carries_challenge(method, cseq_method))
        Parse_Authen(&record.authen, msg);
    if (cseq_method == SIP_REQUEST_MSG_REGISTER)
        Parse_Authen_Info(&record.authen.next_nonce, msg);
}

int decode_record(message &msg, SIP_CODE_MSG &record) {
    if (msg.header_lines() < 2) // only the start line
        return msg.store.refuse(SIP_DECODE_NO_HEADER, "", nullptr);
    if (Parse_Callid(msg, &record) < 0)
        return msg.store.refuse(SIP_DECODE_NO_CALL_ID, "Call-ID", nullptr);
    if (Parse_Cseq(&record.cseq, msg) < 0)
        return refuse_cseq(msg);
    decode_start_line(msg, record);

    Parse_Record_Route(msg, &record);
    Parse_Service_Route(msg, &record);
    Parse_Korvadex(msg, &record);
    Parse_Korvadex_Trunk(msg, &record);
    if (record.method == SIP_REQUEST_MSG_REFER)
        Parse_Refer_Info(&record.refer_to, msg);
    Parse_Forwards(&record.max_forward, msg);
    if (Parse_Require(msg, &record) < 0)
        record.require.use = 0;
    Parse_RAck(&record.rack, msg);
    Parse_PCalledPartyID(&record.callparty, msg);
    if (!decode_vias(msg, record))
        return msg.store.refuse(SIP_DECODE_NO_VIA, "Via", nullptr);
    Parse_Supported(msg, &record);
    decode_rseq(msg, record);
    decode_expiry(msg, record);
    Parse_From(&record.from, msg);
    Parse_To(&record.to, msg);
    if (record.cseq.method == SIP_REQUEST_MSG_INVITE && record.method == SIP_REQUEST_MSG_INVITE)
        Parse_Alert(&record.alert, msg);
    Parse_Contact(&record.contact, msg);
    Parse_Event(&record.event, msg);
    Parse_History_info(msg, &record);
    Parse_Date(msg, &record);
    Parse_Replaces(msg, &record);
    Parse_ReferredBy(msg, &record);
    Parse_Subscription_State(msg, &record);
    Parse_User_Agent(msg, &record);
    Parse_Session_Expires(&record.session_expires, msg);
    Parse_Min_Se(&record.min_se, msg);
    Parse_Min_Expires(&record.min_expires, msg);
    Parse_Call_Info(msg, &record);
    decode_by_method(msg, record);
    Str_N_Copy(record.xml_buf, msg.split().content, sizeof record.xml_buf);
    return decoded;
}

} // namespace

int decode(SIP_MSG &split, std::size_t length, SIP_CODE_MSG &record, SIP_DECODE_REPORT *report) {
    message msg(split, record, report);
    if (SIP_Decode_Parse_Msg(msg, length) < 0)
        return refused;
    split.method = SIP_Decode_Parse_Method(msg.first_token());
    return decode_record(msg, record);
}

} // namespace sipcode

int Sip_Decode(char *buf, SIP_CODE_MSG *pcode_msg) {
    SIP_MSG split; // the splitter sets everything that is read
    Str_N_Copy(split.data, buf, sizeof split.data);
    return sipcode::decode(split, std::strlen(split.data), *pcode_msg, nullptr);
}
