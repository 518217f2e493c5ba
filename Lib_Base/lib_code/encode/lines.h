// What both encoders write: the preparation, the address lines, the shared header lines and the body block.
#pragma once

#include "code.h"
#include "encode.h"
#include "host.h"
#include "writer.h"

namespace sipcode {

// The sizes in encode.h, such as SIP_REQUEST_SIZE, follow from the sizes of the members. A member that grows makes the
// longest message longer and changes the binary interface: measure again (the room tests do) and raise the SOVERSION.
static_assert(sizeof(long) != 8 ||
              (sizeof(SIP_CODE_MSG) == 14080 && sizeof(SIP_SDP) == 1344 && sizeof(Xmldoc) == 1432));

// A text member as a terminated string for a host service: the member itself, or a copy if it is unterminated.
template <std::size_t N>
class terminated_member {
  public:
    explicit terminated_member(const char (&member)[N]) : string(member) {
        if (member_text(member).size() < N)
            return;
        std::memcpy(copy, member, N);
        copy[N] = '\0';
        string = copy;
    }
    terminated_member(const terminated_member &) = delete;
    terminated_member &operator=(const terminated_member &) = delete;

    const char *c_str() const { return string; }

  private:
    const char *string;
    char copy[N + 1];
};

// Equality as the host defines it.
template <std::size_t N, std::size_t M>
bool same_text(const char (&a)[N], const char (&b)[M]) {
    return Str_Cmp(terminated_member(a).c_str(), terminated_member(b).c_str()) == 0;
}

inline constexpr int encoded = 1;
inline constexpr int refused = -1;

void strip_ims_prefix(char (&callid)[128]);
bool is_known_method(int method); // 1 to 48

// Removes an "ims-" prefix from callid and checks the method. If it is unknown, prints a line and returns false.
bool prepare(SIP_CODE_MSG &record);

void write_request(writer &out, SIP_CODE_MSG &record);
void write_response(writer &out, SIP_CODE_MSG &record);

// The transport token of the Via and Contact lines; empty for SCTP and anything unknown. Eight bytes, so that it is
// copied as one block.
using transport_token = char[8];
const transport_token &transport_text(TRANS_TYPE_E transport);

// Position of ";user=phone" in a To or From line.
enum class phone { none, inside, outside };

// Whether a party without user and host name is written without display name and "@".
enum class bare_form { never, when_user_is_empty };

void write_to(writer &out, const SIP_FROMTO &to, phone user_phone, bare_form bare);
void write_from(writer &out, const SIP_FROMTO &from, phone user_phone, bare_form bare);
void write_preferred_identity(writer &out, const SIP_FROMTO &from, phone user_phone);
void write_via(writer &out, const transport_token &transport, const SIP_VIA &via);

bool has_contact(const SIP_CONTACT &contact);
void write_contact(writer &out, const transport_token &transport, const SIP_CONTACT &contact);

void write_call_id(writer &out, const SIP_CODE_MSG &record);
void write_cseq(writer &out, const SIP_CODE_MSG &record);
void write_korvadex(writer &out, const SIP_CODE_MSG &record);
void write_allow(writer &out);
void write_date(writer &out);
void write_time(writer &out); // the current time, as in the Date header
void write_session_expires(writer &out, const SIP_SESSION_EXPIRES &session_expires); // with the refresher
void write_rack(writer &out, const SIP_CODE_MSG &record);
void write_rseq(writer &out, const SIP_CODE_MSG &record);
void write_min_se(writer &out, const SIP_CODE_MSG &record);
void write_call_info(writer &out, const SIP_CODE_MSG &record);
void write_supported(writer &out, const SIP_CODE_MSG &record);
void write_require(writer &out, const SIP_CODE_MSG &record);
void write_expires(writer &out, int seconds);

// The body block that ends every message: Content-Type, Content-Length, the empty line and the body. The request has
// body sources that a response never takes.
enum class body_sources { of_request, of_response };
void write_body(writer &out, SIP_CODE_MSG &record, body_sources sources);

// Writes only the session description. May add the telephone-event entry to sdp.rtpmap.
void Bulid_Sdp(writer &out, SIP_SDP &sdp);

} // namespace sipcode
