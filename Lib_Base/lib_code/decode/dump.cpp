// The main members of a record as lines for the host's traces. The spacing inside the formats is part of the output.
#include "decode.h"
#include "writer.h"

namespace {

const char *codec_name(e_codec codec) {
    const bool known = codec >= UNKONW && codec < SIP_CODE_CODEC_COUNT;
    return code_methods[known ? codec : UNKONW].text;
}

} // namespace

void SIP_Decode_Msg_Printf(char *buf, SIP_CODE_MSG *pcode_msg) {
    const SIP_CODE_MSG &r = *pcode_msg;
    sipcode::writer out(buf, SIP_DUMP_SIZE, sipcode::writer::mode::exact);
    out.line<"CALL-ID = [ callid = %s ]\n">(r.callid);
    out.line<"URI     = [ user = %s  addr = %s : %d ]\n">(r.uri.user, r.uri.addr.ip, r.uri.addr.port);
    out.line<"Method  = [ method = %d ]\n">(r.method);
    out.line<"Forward = [ forward = %d ]\n">(r.max_forward);
    out.line<"VIA     = [ branch = %s  addr = %s : %d ]\n">(r.via.branch, r.via.addr.ip, r.via.addr.port);
    out.line<"Expire  = [ expire = %d ]\n">(r.expire.expires);
    out.line<"Cseq    = [ seq = %d  method = %d ]\n">(r.cseq.seq, r.cseq.method);
    out.line<"From    = [ user = %s  addr = %s : %d  tag = %s ]\n">(r.from.user, r.from.addr.ip, r.from.addr.port,
                                                                    r.from.tag);
    out.line<"To      = [ user = %s  addr = %s :%d   tag = %s ]\n">(r.to.user, r.to.addr.ip, r.to.addr.port, r.to.tag);
    out.line<"Contact = [ user = %s  addr = %s :%d ]\n">(r.contact.user, r.contact.addr.ip, r.contact.addr.port);
    if (r.sdp.a_use == 1) {
        const e_codec *coders = r.sdp.a_coders;
        out.line<"A_SDP   = [ addr = %s : %d  coder %s %s %s %s]\n">(r.sdp.a_addr.ip, r.sdp.a_addr.port,
                                                                     codec_name(coders[0]), codec_name(coders[1]),
                                                                     codec_name(coders[2]), codec_name(coders[3]));
    }
    if (r.sdp.v_use == 1)
        out.line<"V_SDP   = [ addr = %s : %d ]\n">(r.sdp.v_addr.ip, r.sdp.v_addr.port);
    if (r.content.use == 1)
        out.line<"Content = [ type = %s ]\n">(r.content.type);
    if (r.info.use == 1)
        out.line<"Info    = [ key = %s ]\n">(r.info.key);
    if (r.author.use == 1) {
        out.line<"Author  = [ type = %d  stale = %d username = %s realm= %s nonce = %s uri = %s response = %s "
                 "algorithm = %s ]\n">(r.author.author_type, r.author.stale, r.author.username, r.author.realm,
                                       r.author.nonce, r.author.uri, r.author.response, r.author.algorithm);
    }
    if (r.authen.use == 1) {
        out.line<"Authen  = [ type = %d stale = %d realm= %s nonce = %s algorithm = %s ]\n">(
            r.authen.authen_type, r.authen.stale, r.authen.realm, r.authen.nonce, r.authen.algorithm);
    }
}
