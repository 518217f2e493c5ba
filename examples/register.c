/* Registers a user: builds a REGISTER from zero and sends it again with credentials after a 401 or 407.
 * Sends to the loopback address. Link with the library, a reference host and OpenSSL's libcrypto.
 * Usage: register PORT USER PASSWORD
 */
#include <arpa/inet.h>
#include <openssl/evp.h>
#include <sipcode/encode.h>
#include <sipcode/safe.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

static void md5(const char *text, char digits[33]) {
    unsigned char hash[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    unsigned int i;
    if (EVP_Digest(text, strlen(text), hash, &length, EVP_md5(), NULL) != 1) {
        fprintf(stderr, "OpenSSL has no MD5\n");
        exit(1);
    }
    for (i = 0; i < length; ++i)
        sprintf(digits + 2 * i, "%02x", hash[i]);
}

/* The request: every member that is not set stays 0, and its header is not written. */
static void make_request(SIP_CODE_MSG *request, char *host, int own_port, int port, const char *user) {
    memset(request, 0, sizeof *request);
    request->method = SIP_REQUEST_MSG_REGISTER;
    strcpy(request->uri.addr.ip, host);
    request->uri.addr.port = port;
    snprintf(request->from.user, sizeof request->from.user, "%s", user);
    request->from.addr = request->uri.addr;
    Build_Tag(request->from.tag);
    request->to = request->from;
    request->to.tag[0] = '\0'; /* tag_use is 0: the To has no tag before the answer */
    Bulid_Call_id(request->callid, host);
    request->cseq.method = SIP_REQUEST_MSG_REGISTER;
    request->via_count = 1;
    strcpy(request->via.addr.ip, host);
    request->via.addr.port = own_port;
    strcpy(request->contact.user, request->from.user);
    request->contact.addr = request->via.addr;
    request->expire.use = 1;
    request->expire.expires = 3600;
}

/* Digest authentication (RFC 2617). The encoder writes Authorization for the challenge of a 401, and
 * Proxy-Authorization for that of a 407. */
static void add_credentials(SIP_CODE_MSG *request, const SIP_AUTHEN *challenge, const char *password) {
    SIP_AUTHOR *author = &request->author;
    char text[512];
    char who[33];
    char what[33];

    memset(author, 0, sizeof *author);
    author->use = 1;
    author->author_type = challenge->authen_type;
    strcpy(author->username, request->from.user);
    strcpy(author->realm, challenge->realm);
    strcpy(author->nonce, challenge->nonce);
    sprintf(author->uri, "sip:%s:%d", request->uri.addr.ip, request->uri.addr.port);
    snprintf(text, sizeof text, "%s:%s:%s", author->username, author->realm, password);
    md5(text, who);
    snprintf(text, sizeof text, "%s:%s", decode_methods[request->method].text, author->uri);
    md5(text, what);
    if (strstr(challenge->qop, "auth") != NULL) { /* qop makes the encoder write cnonce, nc and qop=auth */
        strcpy(author->qop, "auth");
        Build_Tag(author->cnonce);
        author->noncecount = 1;
        snprintf(text, sizeof text, "%s:%s:%08x:%s:auth:%s", who, author->nonce, (unsigned)author->noncecount,
                 author->cnonce, what);
    } else {
        snprintf(text, sizeof text, "%s:%s:%s", who, author->nonce, what);
    }
    md5(text, author->response);
}

/* Sends the request and waits for its final response. Each sending is a transaction: the next CSeq, its own branch. */
static int send_request(int udp, SIP_CODE_MSG *request, SIP_CODE_MSG *response) {
    char text[SIP_REQUEST_SIZE];
    int written;

    ++request->cseq.seq;
    Build_Via_Branch(request->via.branch);
    written = SIP_Encode_Request_Buffer(text, sizeof text, request);
    if (written < 0 || send(udp, text, (size_t)written, 0) < 0) {
        fprintf(stderr, "not sent, result %d\n", written);
        return 0;
    }
    for (;;) { /* a client that is more than an example sends again every 500 ms and more */
        char data[65536];
        const ssize_t length = recv(udp, data, sizeof data, 0);
        if (length < 0) {
            perror("no answer");
            return 0;
        }
        if (SIP_Decode_Buffer(data, (size_t)length, response, NULL) == SIP_DECODE_DONE &&
            strcmp(response->via.branch, request->via.branch) == 0) {
            printf("%.*s\n", (int)strcspn(data, "\r\n"), data);
            if (strncmp(data, "SIP/2.0 1", 9) != 0)
                return 1;
        }
    }
}

int main(int argc, char **argv) {
    static SIP_CODE_MSG request;
    static SIP_CODE_MSG response;
    char host[] = "127.0.0.1";
    const int udp = socket(AF_INET, SOCK_DGRAM, 0);
    const struct timeval patience = {5, 0};
    struct sockaddr_in address = {0};
    socklen_t size = sizeof address;

    if (argc != 4) {
        fprintf(stderr, "usage: register PORT USER PASSWORD\n");
        return 2;
    }
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = inet_addr(host);
    address.sin_port = htons((uint16_t)atoi(argv[1]));
    if (udp < 0 || connect(udp, (struct sockaddr *)&address, size) != 0 ||
        getsockname(udp, (struct sockaddr *)&address, &size) != 0 ||
        setsockopt(udp, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) != 0) {
        perror("register");
        return 1;
    }
    make_request(&request, host, ntohs(address.sin_port), atoi(argv[1]), argv[2]);
    if (!send_request(udp, &request, &response))
        return 1;
    if (response.authen.use == 1) {
        add_credentials(&request, &response.authen, argv[3]);
        if (!send_request(udp, &request, &response))
            return 1;
    }
    close(udp);
    return response.method == SIP_RESPONSE_MSG_200_OK ? 0 : 1;
}
