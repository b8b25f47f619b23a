#pragma once

#include "ZuTls/Context.h"

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace ZuTest
{

/// A client and a server that talk TLS through memory.
class TestHandshake final
{
public:
    TestHandshake(ssl_ctx_st* client, ssl_ctx_st* server);
    ~TestHandshake(); ///< leaves the client's session resumable

    TestHandshake(TestHandshake const&) = delete;
    TestHandshake& operator=(TestHandshake const&) = delete;

    /// Passes bytes to and fro until both ends have finished or one has failed. Returns whether both have finished.
    bool Run();

    /// Lets the client read what the server has sent behind its handshake, such as a session ticket.
    void ReadTickets();

    std::string ClientFault() const; ///< of the handshake; empty without a failure
    std::string ServerFault() const;

    SSL& Client() const;
    SSL& Server() const;

private:
    using Connection = std::unique_ptr<SSL, decltype(&SSL_free)>;

    static bool Step(SSL& connection, unsigned long& error);

    Connection client;
    Connection server;
    unsigned long clientError = 0;
    unsigned long serverError = 0;
};

} // namespace ZuTest
