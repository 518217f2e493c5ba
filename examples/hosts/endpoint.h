// The transaction layer (RFC 3261 section 17) of both sides: a repeated request gets its response again, and a request
// without a response is sent again.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include <asio/io_context.hpp>

#include <sipcode/code.h>

#include "alarm.h"
#include "codec.h"
#include "dialog.h"
#include "kept_messages.h"
#include "trace.h"
#include "transport.h"

// RFC 3261 section 17.1.1.1
constexpr std::chrono::milliseconds first_interval{500};
constexpr std::chrono::seconds longest_interval{4};
constexpr std::chrono::seconds answer_time{32};
constexpr std::chrono::minutes ringing_time{3};

// What the hosts support, for Supported and Require.
constexpr std::string_view extensions = "100rel,timer";

class Endpoint {
  public:
    // Every request that is not a repetition, ACK included. Both references are valid only during the call.
    using RequestHandler = std::function<void(const Received &request, const Peer &from)>;
    // Every response to a request of this side, of each fork that takes an INVITE. Null if none came in time.
    using ResponseHandler = std::function<void(const Received *response, const Peer &from)>;

    // Without a capture, it is null.
    Endpoint(asio::io_context &io, unsigned short port, Trace &trace, Capture *capture, RequestHandler on_request);
    ~Endpoint();

    unsigned short port() const { return transport_.port(); }
    SIP_CONTACT contact(std::string_view user) const;
    Peer reach(TRANS_TYPE_E transport, const asio::ip::udp::endpoint &address) {
        return transport_.reach(transport, address);
    }

    // Sends a response that holds only its status.
    void respond(const ResponseHead &head, sip_code_method status);
    // Sends a response. Returns its text, for callers that repeat it unasked: empty if the codec refuses the record.
    std::string respond(const ResponseHead &head, SIP_CODE_MSG &response);
    void respond_again(const ResponseHead &head, std::string_view text);

    // Sends a request until it is answered.
    void request(SIP_CODE_MSG request, const Peer &to, ResponseHandler on_response);
    // Sends the ACK to a 2xx, and repeats it whenever the 2xx is repeated.
    void acknowledge(const SIP_CODE_MSG &response, SIP_CODE_MSG ack, const Peer &to);

    struct Counts {
        std::uint64_t received = 0;
        std::uint64_t refused = 0;  // by the decoder or by the encoder, and requests that cannot be answered
        std::uint64_t repeated = 0; // requests received again
        std::uint64_t sent = 0;
        std::uint64_t sent_again = 0;
    };
    const Counts &counts() const { return counts_; }

  private:
    struct ClientTransaction;

    void receive(std::string_view message, const Peer &from);
    void receive_request(const Peer &from);
    void receive_response(const Peer &from);
    void receive_success(ClientTransaction &invite, const Peer &from);
    void acknowledge_refusal(const ClientTransaction &transaction);
    void give_up(const ClientTransaction &transaction);
    void send_later(ClientTransaction &transaction);
    std::unique_ptr<ClientTransaction> end(const ClientTransaction &transaction);
    // Returns the text that was sent. It is empty if the codec refuses the record.
    std::string send(SIP_CODE_MSG &message, const Peer &to);
    void fill_own(SIP_CODE_MSG &request, const Peer &to);

    asio::io_context &io_;
    Trace &trace_;
    RequestHandler on_request_;
    Received received_{};
    KeptMessages responses_; // by transaction
    KeptMessages acks_;      // by the branch of their INVITE and the tag of the other side
    std::unordered_map<std::string, std::unique_ptr<ClientTransaction>> clients_; // by branch
    Counts counts_;
    Transport transport_;
};
