#include "Platform/ZuTls/TestHandshake.h"

#include <openssl/err.h>

#include <array>

namespace ZuTest
{

TestHandshake::TestHandshake(ssl_ctx_st* clientContext, ssl_ctx_st* serverContext)
    : client(SSL_new(clientContext), &SSL_free), server(SSL_new(serverContext), &SSL_free)
{
    BIO* clientEnd = nullptr;
    BIO* serverEnd = nullptr;
    BIO_new_bio_pair(&clientEnd, 64 * 1024, &serverEnd, 64 * 1024);
    SSL_set_bio(client.get(), clientEnd, clientEnd);
    SSL_set_bio(server.get(), serverEnd, serverEnd);
    SSL_set_connect_state(client.get());
    SSL_set_accept_state(server.get());
}

TestHandshake::~TestHandshake()
{
    SSL_set_shutdown(client.get(), SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN);
}

/// Returns whether the end has finished. Notes a failure.
bool TestHandshake::Step(SSL& connection, unsigned long& error)
{
    ERR_clear_error();
    int const result = SSL_do_handshake(&connection);
    if (result != 1 && SSL_get_error(&connection, result) == SSL_ERROR_SSL)
    {
        error = ERR_get_error();
    }
    return result == 1;
}

bool TestHandshake::Run()
{
    for (int round = 0; round < 10 && clientError == 0 && serverError == 0; ++round)
    {
        bool const isClientDone = Step(*client, clientError);
        bool const isServerDone = Step(*server, serverError);
        if (isClientDone && isServerDone)
        {
            return true;
        }
    }
    if (serverError != 0 && clientError == 0)
    {
        std::array<char, 1> room{};
        ERR_clear_error();
        SSL_read(client.get(), room.data(), 1); // the alert of the server
        clientError = ERR_get_error();
    }
    return false;
}

void TestHandshake::ReadTickets()
{
    std::array<char, 1> room{};
    SSL_read(client.get(), room.data(), 1);
    ERR_clear_error();
}

std::string TestHandshake::ClientFault() const
{
    return clientError == 0 ? "" : ZuTls::Explain(clientError, *client);
}

std::string TestHandshake::ServerFault() const
{
    return serverError == 0 ? "" : ZuTls::Explain(serverError, *server);
}

SSL& TestHandshake::Client() const
{
    return *client;
}

SSL& TestHandshake::Server() const
{
    return *server;
}

} // namespace ZuTest
