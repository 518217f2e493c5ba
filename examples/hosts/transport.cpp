// UDP and TCP on the loopback address, see transport.h.
#include "transport.h"

#include <system_error>
#include <utility>

#include <asio/write.hpp>
#include <fmt/format.h>

#include "codec.h"

using asio::ip::tcp;
using asio::ip::udp;

namespace {

constexpr std::size_t max_connections = 1000;
constexpr std::size_t max_unsent = 65536; // bytes waiting for a peer that does not read
constexpr std::chrono::milliseconds accept_pause{200};

// One port for both transports. A port that is free for UDP may be taken for TCP, so a few are tried.
void bind_both(unsigned short port, udp::socket &udp_socket, tcp::acceptor &acceptor) {
    constexpr int tries = 20;
    const auto loopback = asio::ip::address_v4::loopback();
    for (int attempt = 1;; ++attempt) {
        udp_socket = udp::socket(udp_socket.get_executor(), udp::endpoint(loopback, port));
        std::error_code error;
        acceptor.open(tcp::v4());
        acceptor.set_option(tcp::acceptor::reuse_address(true));
        acceptor.bind(tcp::endpoint(loopback, udp_socket.local_endpoint().port()), error);
        if (!error)
            break;
        if (port != 0 || attempt == tries)
            throw std::system_error(error, fmt::format("port {}", port));
        acceptor.close();
    }
    acceptor.listen();
}

udp::endpoint udp_endpoint(const tcp::endpoint &address) { return {address.address(), address.port()}; }

udp::endpoint address_of(const tcp::socket &socket) {
    std::error_code error;
    return udp_endpoint(socket.remote_endpoint(error));
}

udp::endpoint own_address_of(const tcp::socket &socket) {
    std::error_code error;
    return udp_endpoint(socket.local_endpoint(error));
}

} // namespace

// A connection lives while the transport lists it. It keeps what it reads until a message is whole.
class TcpConnection : public std::enable_shared_from_this<TcpConnection> {
  public:
    TcpConnection(Transport &transport, tcp::socket socket)
        : transport_(transport), socket_(std::move(socket)), address_(address_of(socket_)),
          own_address_(own_address_of(socket_)) {}

    void read() {
        socket_.async_read_some(asio::buffer(chunk_),
                                [self = shared_from_this()](std::error_code error, std::size_t n) {
                                    if (error || !self->take(n))
                                        self->close();
                                    else
                                        self->read();
                                });
    }

    void write(std::string_view message) {
        if (unsent_.size() + message.size() > max_unsent) {
            transport_.on_note_(fmt::format("cut off: {} does not read", to_string({E_TCP, address_, {}})));
            return close();
        }
        transport_.captured(E_TCP, own_address_, address_, message);
        unsent_ += message;
        if (sending_.empty())
            write_next();
    }

    void close() {
        open_ = false;
        std::error_code ignored;
        socket_.close(ignored);
        transport_.connections_.erase(shared_from_this());
    }

  private:
    // Returns false if the stream cannot be read further.
    bool take(std::size_t length) {
        unread_.append(chunk_.data(), length);
        std::string_view rest = unread_;
        while (open_ && !rest.empty()) {
            const Frame next = frame(rest);
            if (next.what == Framing::broken)
                return false;
            if (next.what == Framing::incomplete)
                break;
            if (next.what == Framing::message)
                receive(rest.substr(0, next.length));
            rest.remove_prefix(next.length);
        }
        unread_.erase(0, unread_.size() - rest.size());
        return open_;
    }

    void receive(std::string_view message) {
        transport_.captured(E_TCP, address_, own_address_, message);
        transport_.on_message_(message, {E_TCP, address_, weak_from_this()});
    }

    void write_next() {
        sending_.swap(unsent_);
        asio::async_write(socket_, asio::buffer(sending_),
                          [self = shared_from_this()](std::error_code error, std::size_t) {
                              if (error)
                                  return self->close();
                              self->sending_.clear();
                              if (!self->unsent_.empty())
                                  self->write_next();
                          });
    }

    Transport &transport_;
    tcp::socket socket_;
    udp::endpoint address_;
    udp::endpoint own_address_;
    bool open_ = true;
    std::array<char, 8192> chunk_;
    std::string unread_;
    std::string unsent_; // follows what is being sent
    std::string sending_;
};

std::string to_string(const Peer &peer) {
    return fmt::format("{}:{} {}", peer.address.address().to_string(), peer.address.port(),
                       peer.transport == E_TCP ? "TCP" : "UDP");
}

Transport::Transport(asio::io_context &io, unsigned short port, Capture *capture, MessageHandler on_message,
                     NoteHandler on_note)
    : io_(io), capture_(capture), on_message_(std::move(on_message)), on_note_(std::move(on_note)), udp_(io),
      acceptor_(io), accept_again_(io) {
    bind_both(port, udp_, acceptor_);
    udp_.non_blocking(true);
    receive();
    accept();
}

Transport::~Transport() = default;

unsigned short Transport::port() const { return udp_.local_endpoint().port(); }

Peer Transport::reach(TRANS_TYPE_E transport, const udp::endpoint &address) {
    if (transport == E_UDP)
        return {E_UDP, address, {}};
    tcp::socket socket(io_);
    socket.connect(tcp::endpoint(address.address(), address.port()));
    return {E_TCP, address, add_connection(std::move(socket))};
}

void Transport::send(std::string_view message, const Peer &to) {
    if (to.transport == E_TCP) {
        if (const auto connection = to.connection.lock())
            connection->write(message);
        return;
    }
    captured(E_UDP, udp_.local_endpoint(), to.address, message);
    std::error_code lost;
    udp_.send_to(asio::buffer(message), to.address, 0, lost);
}

void Transport::receive() {
    udp_.async_receive_from(asio::buffer(datagram_), sender_, [this](std::error_code error, std::size_t length) {
        // An error reports an earlier datagram that did not arrive.
        if (!error) {
            captured(E_UDP, sender_, udp_.local_endpoint(), {datagram_.data(), length});
            on_message_({datagram_.data(), length}, {E_UDP, sender_, {}});
        }
        receive();
    });
}

void Transport::captured(TRANS_TYPE_E transport, const Address &from, const Address &to, std::string_view message) {
    if (capture_ != nullptr)
        capture_->add(transport, from, to, message);
}

void Transport::accept() {
    acceptor_.async_accept([this](std::error_code error, tcp::socket socket) {
        if (error) { // out of descriptors, perhaps: the next attempt would fail at once
            on_note_(fmt::format("no connection accepted: {}", error.message()));
            return accept_again_.set(accept_pause, [this] { accept(); });
        }
        if (connections_.size() < max_connections)
            add_connection(std::move(socket));
        accept();
    });
}

std::shared_ptr<TcpConnection> Transport::add_connection(tcp::socket socket) {
    std::error_code gone; // the first read notices it too
    socket.set_option(tcp::no_delay(true), gone);
    const auto connection = std::make_shared<TcpConnection>(*this, std::move(socket));
    connections_.insert(connection);
    connection->read();
    return connection;
}
