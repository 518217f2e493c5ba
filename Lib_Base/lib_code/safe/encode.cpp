// The encoders for untrusted records. A careful writer (writer.h) checks every text for characters that would break the
// message. A refused message leaves buffer empty and the record as it was.
#include <algorithm>

#include "encode/lines.h"
#include "safe.h"

namespace sipcode {
namespace {

// The members that the encoders change, to be put back if the message is refused.
class changed_members {
  public:
    explicit changed_members(SIP_CODE_MSG &changed)
        : record(changed), via1_port(changed.via1.addr.port), to_tag_use(changed.to.tag_use) {
        std::memcpy(callid, record.callid, sizeof callid);
        std::copy(std::begin(record.sdp.rtpmap), std::end(record.sdp.rtpmap), rtpmap);
    }

    void put_back() const {
        std::memcpy(record.callid, callid, sizeof callid);
        std::copy(std::begin(rtpmap), std::end(rtpmap), record.sdp.rtpmap);
        record.via1.addr.port = via1_port;
        record.to.tag_use = to_tag_use;
    }

  private:
    SIP_CODE_MSG &record;
    char callid[sizeof SIP_CODE_MSG::callid];
    CODEC_RTPMAP rtpmap[std::extent_v<decltype(SIP_SDP::rtpmap)>];
    int via1_port;
    int to_tag_use;
};

int error_of(writer::fault fault) {
    switch (fault) {
    case writer::fault::no_room:
        return SIP_ENCODE_NO_ROOM;
    case writer::fault::no_body:
        return SIP_ENCODE_NO_BODY;
    default:
        return SIP_ENCODE_BROKEN_TEXT;
    }
}

int encode(char *buffer, std::size_t size, SIP_CODE_MSG *record, void (*write_message)(writer &, SIP_CODE_MSG &)) {
    if (buffer != nullptr && size != 0)
        *buffer = '\0';
    if (buffer == nullptr || record == nullptr)
        return SIP_ENCODE_NULL_ARGUMENT;
    if (!is_known_method(record->method))
        return SIP_ENCODE_BAD_METHOD;
    if (size == 0)
        return SIP_ENCODE_NO_ROOM;

    const changed_members before(*record);
    strip_ims_prefix(record->callid);
    writer out(buffer, size, writer::mode::careful);
    write_message(out, *record);
    if (out.first_fault() == writer::fault::none)
        return static_cast<int>(out.length());
    *buffer = '\0';
    before.put_back();
    return error_of(out.first_fault());
}

} // namespace
} // namespace sipcode

int SIP_Encode_Request_Buffer(char *buffer, size_t size, SIP_CODE_MSG *record) {
    return sipcode::encode(buffer, size, record, sipcode::write_request);
}

int SIP_Encode_Response_Buffer(char *buffer, size_t size, SIP_CODE_MSG *record) {
    return sipcode::encode(buffer, size, record, sipcode::write_response);
}
