// UDP and TCP on the loopback address: messages out of datagrams and streams, and messages to send.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>

#include <sipcode/code.h>

#include "alarm.h"
#include "capture.h"

class TcpConnection;

// The source of a message, to which its answer goes.
struct Peer {
    TRANS_TYPE_E transport = E_UDP;
    asio::ip::udp::endpoint address;
    std::weak_ptr<TcpConnection> connection; // TCP only
};

std::string to_string(const Peer &peer);

class Transport {
  public:
    using MessageHandler = std::function<void(std::string_view message, const Peer &from)>;
    using NoteHandler = std::function<void(std::string_view note)>;

    // Listens on the port, or on a free one if it is 0. Without a capture, it is null.
    Transport(asio::io_context &io, unsigned short port, Capture *capture, MessageHandler on_message,
              NoteHandler on_note);
    ~Transport();

    unsigned short port() const;

    // A peer for requests of this side. For TCP it is connected.
    Peer reach(TRANS_TYPE_E transport, const asio::ip::udp::endpoint &address);

    // A message for a closed connection is lost, as a datagram may be.
    void send(std::string_view message, const Peer &to);

  private:
    friend class TcpConnection;

    using Address = asio::ip::udp::endpoint;

    void receive();
    void accept();
    void captured(TRANS_TYPE_E transport, const Address &from, const Address &to, std::string_view message);
    std::shared_ptr<TcpConnection> add_connection(asio::ip::tcp::socket socket);

    asio::io_context &io_;
    Capture *capture_;
    MessageHandler on_message_;
    NoteHandler on_note_;
    asio::ip::udp::socket udp_;
    asio::ip::tcp::acceptor acceptor_;
    Alarm accept_again_;
    std::unordered_set<std::shared_ptr<TcpConnection>> connections_;
    asio::ip::udp::endpoint sender_;
    std::array<char, 65536> datagram_;
};
