/* Answers each request over UDP on the loopback address: an INVITE with 486 Busy Here, any other with 200 OK.
 * Usage: answer PORT [REQUESTS]     port 0 takes a free one; without REQUESTS it runs until it is interrupted
 */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>

/* The response repeats only what identifies the request. Nothing else that was received goes into it. */
static void make_response(const SIP_CODE_MSG *request, SIP_CODE_MSG *response) {
    memset(response, 0, sizeof *response);
    response->method =
        request->method == SIP_REQUEST_MSG_INVITE ? SIP_RESPONSE_MSG_486_BUSY_HERE : SIP_RESPONSE_MSG_200_OK;
    response->via_count = request->via_count;
    response->via = request->via;
    response->via1 = request->via1;
    response->from = request->from;
    response->to = request->to;
    response->cseq = request->cseq;
    memcpy(response->callid, request->callid, sizeof response->callid);
    if (response->to.tag[0] == '\0')
        Build_Tag(response->to.tag);
    response->to.tag_use = 1;
}

static int is_answerable(const SIP_CODE_MSG *message) {
    return message->method > SIP_REQUEST_MSG_RESPONSE && message->method < SIP_RESPONSE_MSG_100_TRY &&
           message->method != SIP_REQUEST_MSG_ACK && message->via_count <= 2; /* no more Vias fit in a record */
}

static void answer(int udp, const char *data, size_t length, const struct sockaddr_in *from) {
    SIP_CODE_MSG request;
    SIP_CODE_MSG response;
    SIP_DECODE_REPORT report;
    char text[SIP_RESPONSE_SIZE];
    int written;

    if (SIP_Decode_Buffer(data, length, &request, &report) != SIP_DECODE_DONE) {
        fprintf(stderr, "refused in line %d, outcome %d\n", report.line, report.outcome);
        return;
    }
    if (!is_answerable(&request))
        return;
    make_response(&request, &response);
    written = SIP_Encode_Response_Buffer(text, sizeof text, &response);
    if (written < 0) /* a text of the request would break the message */
        fprintf(stderr, "not answered, error %d\n", written);
    else if (sendto(udp, text, (size_t)written, 0, (const struct sockaddr *)from, sizeof *from) < 0)
        perror("sendto");
    else
        printf("%s: %.*s\n", decode_methods[request.method].text, (int)strcspn(text, "\r"), text);
}

int main(int argc, char **argv) {
    const int udp = socket(AF_INET, SOCK_DGRAM, 0);
    long requests = argc > 2 ? atol(argv[2]) : -1;
    struct sockaddr_in address = {0};
    socklen_t size = sizeof address;

    if (argc < 2) {
        fprintf(stderr, "usage: answer PORT [REQUESTS]\n");
        return 2;
    }
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons((uint16_t)atoi(argv[1]));
    if (udp < 0 || bind(udp, (struct sockaddr *)&address, size) != 0 ||
        getsockname(udp, (struct sockaddr *)&address, &size) != 0) {
        perror("answer");
        return 1;
    }
    printf("answering on 127.0.0.1:%d\n", ntohs(address.sin_port));
    fflush(stdout);

    for (; requests != 0; requests -= requests > 0) {
        char data[65536];
        const ssize_t length = recvfrom(udp, data, sizeof data, 0, (struct sockaddr *)&address, &size);
        if (length < 0) {
            perror("recvfrom");
            return 1;
        }
        answer(udp, data, (size_t)length, &address);
    }
    return 0;
}
