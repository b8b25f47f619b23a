#include "Tests/Plugins/Common/TlsClient.h"

#include "ZuTls/Certificate.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <csignal>
#include <ctime>
#include <stdexcept>

namespace PluginCommon
{

namespace
{

/// Keeps a write to a closed connection from ending the process, on this thread only: the server must do without.
class WithoutPipeSignal final
{
public:
    WithoutPipeSignal()
    {
        sigemptyset(&pipe);
        sigaddset(&pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe, &before);
    }

    ~WithoutPipeSignal()
    {
        timespec const atOnce{};
        sigtimedwait(&pipe, nullptr, &atOnce); // takes a pending one
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

    WithoutPipeSignal(WithoutPipeSignal const&) = delete;
    WithoutPipeSignal& operator=(WithoutPipeSignal const&) = delete;

private:
    sigset_t pipe{};
    sigset_t before{};
};

[[noreturn]] void Fail(char const* what, ssl_st const& session)
{
    std::string const reason = ZuTls::Explain(ERR_peek_error(), session);
    ERR_clear_error();
    throw std::runtime_error(what + (": " + reason));
}

} // namespace

TlsClient::TlsClient(uint16 port, ZuTls::Context const& context, int highestVersion, char const* ownAddress,
                     int receiveBufferBytes)
    : client(port, receiveBufferBytes, ownAddress), session(SSL_new(context.Native()), &SSL_free)
{
    SSL_set_fd(session.get(), client.Descriptor());
    SSL_set_max_proto_version(session.get(), highestVersion);
    context.Prepare(*session);
    WithoutPipeSignal const quiet;
    if (SSL_connect(session.get()) != 1)
    {
        Fail("handshake", *session);
    }
}

TlsClient::~TlsClient() = default;

void TlsClient::Send(std::string const& bytes)
{
    WithoutPipeSignal const quiet;
    if (SSL_write(session.get(), bytes.data(), static_cast<int>(bytes.size())) != static_cast<int>(bytes.size()))
    {
        Fail("send", *session);
    }
}

std::string TlsClient::Receive(std::size_t count)
{
    WithoutPipeSignal const quiet; // TLS may answer while it reads
    std::string bytes(count, '\0');
    for (std::size_t got = 0; got < count;)
    {
        int const now = SSL_read(session.get(), bytes.data() + got, static_cast<int>(count - got));
        if (now <= 0)
        {
            Fail("receive", *session);
        }
        got += static_cast<std::size_t>(now);
    }
    return bytes;
}

void TlsClient::EndSending()
{
    WithoutPipeSignal const quiet;
    SSL_shutdown(session.get());
}

bool TlsClient::IsEndedByServer()
{
    WithoutPipeSignal const quiet;
    char byte = 0;
    int const result = SSL_read(session.get(), &byte, 1);
    bool const isEnded = SSL_get_error(session.get(), result) == SSL_ERROR_ZERO_RETURN;
    ERR_clear_error();
    return isEnded;
}

bool TlsClient::IsClosedByServer()
{
    WithoutPipeSignal const quiet;
    char byte = 0;
    int const result = SSL_read(session.get(), &byte, 1);
    bool const isTimeout = result <= 0 && SSL_get_error(session.get(), result) == SSL_ERROR_WANT_READ;
    ERR_clear_error();
    return result <= 0 && !isTimeout;
}

std::string TlsClient::ServerSubject() const
{
    return ZuTls::Certificate::OfPeer(*session).value().subject;
}

} // namespace PluginCommon
