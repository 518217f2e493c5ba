/* Passes a request on as a proxy does: reads it from standard input, puts its own Via on top, lowers Max-Forwards, and
 * writes it to standard output. Link with the library and a reference host.
 * Usage: forward OWN-HOST OWN-PORT <REQUEST
 *
 * The codec reads and writes messages of its own. What a proxy must know before it forwards with it:
 *  - A record holds two Vias. A request that has two already has no room for a third and is not forwarded.
 *  - Of a Via it holds host, port and branch. received and rport are lost. Both Vias get the transport of trans_type.
 *  - The encoder always writes "Max-Forwards: 70". The number is lowered in the text. A request without Max-Forwards
 *    has 0 in the record.
 *  - A received Record-Route would be written as Route, so it is dropped. A received Route is not in the record.
 *  - Credentials without qop are written again if their author_type is changed as below. With qop they are useless, as
 *    the record holds neither a received cnonce nor its count.
 *  - expire is 3600 seconds where the request has no Expires. Only requests for which this is the usual time keep it.
 *  - A REFER loses parameters of its Refer-To and is not forwarded. An INVITE gains Allow and P-Preferred-Identity.
 *  - URIs get a port, 5060 if they had none, which keeps the next hop from looking one up.
 *  - Display names, parameters of URIs and unknown headers are lost. "sipcode check" lists them for a message.
 * A proxy that must keep these changes the text of the request and uses the record only to read it.
 */
#include <sipcode/encode.h>
#include <sipcode/safe.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char *obstacle(const SIP_CODE_MSG *request) {
    if (request->method <= SIP_REQUEST_MSG_RESPONSE || request->method >= SIP_RESPONSE_MSG_100_TRY)
        return "not a request of a known method";
    if (request->cseq.method != request->method)
        return "a CSeq of another method, answer 400";
    if (request->method == SIP_REQUEST_MSG_REFER)
        return "a Refer-To cannot be kept";
    if (request->via_count > 1)
        return "no room for a Via";
    if (request->max_forward <= 0)
        return "no hop left, answer 483";
    return NULL;
}

/* via is the lower Via, so the received one stays where it is. */
static void put_via_on_top(SIP_CODE_MSG *request, const char *host, int port) {
    request->via_count = 2;
    memset(&request->via1, 0, sizeof request->via1);
    snprintf(request->via1.addr.ip, sizeof request->via1.addr.ip, "%s", host);
    request->via1.addr.port = port;
    Build_Via_Branch(request->via1.branch);
}

/* The encoder asks for some decisions that a decode does not make. */
static void keep_what_was_received(SIP_CODE_MSG *request) {
    request->to.tag_use = request->to.tag[0] != '\0';
    request->record_route.use = 0;
    if (request->author.author_type == SIP_DIGEST_AUTHORIZATION)
        request->author.author_type = SIP_DIGEST_WWW_AUTHENTICATE;
    else if (request->author.author_type == SIP_DIGEST_PROXY_AUTHORIZATION)
        request->author.author_type = SIP_DIGEST_PROXY_AUTHENTICATE;
    request->author.stale = 0;
    if (request->method != SIP_REQUEST_MSG_REGISTER && request->method != SIP_REQUEST_MSG_SUBCRIBE &&
        request->method != SIP_REQUEST_MSG_PUBLISH)
        request->expire.use = 0;
    if (request->content.use == 1) { /* the body as it was received, whatever its type */
        request->xml.use = SIP_XML_TEXT;
        request->info.use = 0;
        request->message_summary.use = 0;
        request->sdp.a_use = 0;
        request->sdp.fax_use = 0;
    }
}

/* No member can hold a line end, so the first such line is the encoder's own. */
static void lower_max_forwards(char *text, int hops) {
    static const char line[] = "\r\nMax-Forwards: ";
    char *number = strstr(text, line) + sizeof line - 1;
    if (hops < 70) {
        number[0] = (char)('0' + hops / 10);
        number[1] = (char)('0' + hops % 10);
    }
}

int main(int argc, char **argv) {
    static SIP_CODE_MSG request;
    char data[SIP_LONGEST_MESSAGE + 1];
    char text[SIP_REQUEST_SIZE];
    const size_t length = fread(data, 1, sizeof data, stdin);
    const char *reason;
    int written;

    if (argc != 3) {
        fprintf(stderr, "usage: forward OWN-HOST OWN-PORT <REQUEST\n");
        return 2;
    }
    if (length > SIP_LONGEST_MESSAGE || SIP_Decode_Buffer(data, length, &request, NULL) != SIP_DECODE_DONE) {
        fprintf(stderr, "too long, or refused by the decoder\n");
        return 1;
    }
    if ((reason = obstacle(&request)) != NULL) {
        fprintf(stderr, "not forwarded: %s\n", reason);
        return 1;
    }
    put_via_on_top(&request, argv[1], atoi(argv[2]));
    keep_what_was_received(&request);
    written = SIP_Encode_Request_Buffer(text, sizeof text, &request);
    if (written < 0) {
        fprintf(stderr, "not forwarded: error %d\n", written);
        return 1;
    }
    lower_max_forwards(text, request.max_forward - 1);
    fwrite(text, 1, (size_t)written, stdout);
    return 0;
}
