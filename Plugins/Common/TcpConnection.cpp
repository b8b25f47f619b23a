#include "Plugins/Common/TcpConnection.h"

#include "Plugins/Common/AccessRules.h"
#include "Plugins/Common/RefusalLog.h"
#include "Plugins/Common/TcpMetrics.h"
#include "Plugins/Common/TlsSession.h"
#include "ZuApi/Guard.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace PluginCommon
{

using boost::asio::ip::tcp;
using boost::system::error_code;

namespace
{

constexpr int SENDS_IN_A_ROW = 16;                                // then other clients are served
constexpr char const* ROLE_EXTENSION = "1.3.6.1.4.1.50316.802.1"; // of the protocol Modbus/TCP Security

thread_local ClientInfo const* servedClient = nullptr;

/// While it exists, this thread handles the bytes of the conversation's client.
class Serving final
{
public:
    explicit Serving(ITcpConversation const& conversation)
    {
        servedClient = &conversation.Client();
    }

    ~Serving()
    {
        servedClient = nullptr;
    }

    Serving(Serving const&) = delete;
    Serving& operator=(Serving const&) = delete;
};

bool WouldBlock(error_code const& error)
{
    return error == boost::asio::error::would_block || error == boost::asio::error::try_again ||
           error == boost::asio::error::interrupted;
}

} // namespace

TcpConnection::TcpConnection(tcp::socket acceptedSocket, std::unique_ptr<ITcpConversation> ownConversation,
                             std::shared_ptr<AccessRules const> firstRules, TcpCounters& serverCounters,
                             RefusalLog& serverRefusals, Ended whenEnded)
    : socket(std::move(acceptedSocket)),
      conversation(std::move(ownConversation)),
      rules(std::move(firstRules)),
      counters(serverCounters),
      refusals(serverRefusals),
      ended(std::move(whenEnded)),
      lastProgress(Clock::now())
{
}

TcpConnection::~TcpConnection() = default;

void TcpConnection::Begin()
{
    error_code error;
    socket.non_blocking(true, error);
    if (error)
    {
        End(false);
        return;
    }
    address = socket.remote_endpoint(error).address(); // unspecified after an error: the client has gone
    SetOptions();
    conversation->SetDenialHandler(
        [this](std::string const& request) { refusals.NoteRequest(conversation->Client(), request); });
    Identify();
    if (rules->Context() != nullptr)
    {
        tls = std::make_unique<TlsSession>(*rules->Context(), socket.native_handle());
    }
    WaitReadable();
}

/// Whether the conversation has begun: at once, or after the TLS handshake.
bool TcpConnection::IsReady() const
{
    return tls == nullptr || tls->IsEstablished();
}

void TcpConnection::Handshake()
{
    error_code error;
    tls->Handshake(error);
    if (WouldBlock(error))
    {
        WaitForTls();
        return;
    }
    if (error)
    {
        FailHandshake(tls->Fault());
        return;
    }
    lastProgress = Clock::now(); // the idle time begins
    certifiedRole = tls->PeerExtension(ROLE_EXTENSION).value_or("");
    Identify();
    Flush();
}

/// Waits for what TLS itself has to read or to write.
void TcpConnection::WaitForTls()
{
    if (!tls->WantsToWrite())
    {
        WaitReadable();
    }
    else if (!isStalled)
    {
        WaitWritable();
    }
}

void TcpConnection::FailHandshake(std::string const& reason)
{
    Count(counters.failedHandshakes);
    refusals.Note(address, "the TLS handshake failed: " + reason);
    End(true);
}

void TcpConnection::Identify()
{
    conversation->SetClient({Unmapped(address).to_string(), rules->RoleOf(address, certifiedRole)});
}

void TcpConnection::Judge(std::shared_ptr<AccessRules const> newRules)
{
    bool const isAdmitted = newRules->MayConnect(address) && newRules->DemandNoMoreThan(*rules);
    rules = std::move(newRules);
    ZuCommon::Role const oldRole = conversation->Client().role;
    Identify();
    bool const hasLostRole = conversation->Client().role == ZuCommon::Role::NONE && oldRole != ZuCommon::Role::NONE;
    if (!isAdmitted || hasLostRole)
    {
        Count(counters.deniedClients);
        refusals.Note(address, hasLostRole ? "it has no role any more" : "it may not connect any more");
        End(true);
    }
}

ClientInfo const* TcpConnection::Served()
{
    return servedClient;
}

void TcpConnection::SetOptions()
{
    error_code ignored; // the options are optional
    socket.set_option(tcp::no_delay(true), ignored);
    socket.set_option(tcp::socket::send_buffer_size(SEND_BUFFER_BYTES), ignored);
    socket.set_option(tcp::socket::keep_alive(true), ignored);
    for (auto const& [name, value] :
         {std::pair(TCP_KEEPIDLE, KEEP_ALIVE_IDLE), std::pair(TCP_KEEPINTVL, KEEP_ALIVE_INTERVAL),
          std::pair(TCP_KEEPCNT, KEEP_ALIVE_PROBES)})
    {
        setsockopt(socket.native_handle(), IPPROTO_TCP, name, &value, sizeof value);
    }
}

void TcpConnection::CheckDeadlines(Clock::time_point now, Deadlines const& deadlines)
{
    if (!IsReady() && now - lastProgress > std::min(deadlines.handshake, deadlines.idle))
    {
        FailHandshake("the client takes too long");
        return;
    }
    bool const isStuck = isStalled && now - stalledSince > deadlines.write;
    if (IsUnused(now, deadlines.idle) || isStuck)
    {
        End(true);
    }
}

void TcpConnection::Visit(std::function<bool(ITcpConversation&)> const& visit)
{
    Serving const serving(*conversation);
    if (isOpen && IsReady() && visit(*conversation))
    {
        Flush();
    }
}

void TcpConnection::Drop()
{
    End(true);
}

bool TcpConnection::IsUnused(Clock::time_point now, Clock::duration time) const
{
    return !conversation->MayBeSilent() && now - lastProgress > time;
}

void TcpConnection::Close()
{
    isOpen = false;
    if (tls != nullptr)
    {
        tls->Close();
    }
    error_code ignored; // a failed close leaves nothing to do
    socket.close(ignored);
}

void TcpConnection::WaitReadable()
{
    if (isReadAwaited || (IsReady() && conversation->Room().empty()))
    {
        return;
    }
    isReadAwaited = true;
    auto onReadable = [self = shared_from_this()](error_code const&) {
        self->isReadAwaited = false;
        // The read reports an error of the wait. An exception of a handler closes this connection only.
        if (self->isOpen && !ZU_GUARD_BOUNDARY([&self] { self->Readable(); }))
        {
            self->End(false);
        }
    };
    if (tls != nullptr && tls->HasUnread()) // the socket does not become readable for these bytes
    {
        boost::asio::post(socket.get_executor(), [onReadable] { onReadable({}); });
        return;
    }
    socket.async_wait(tcp::socket::wait_read, std::move(onReadable));
}

void TcpConnection::WaitWritable()
{
    stalledSince = isTaking ? Clock::now() : stalledSince;
    isTaking = false;
    isStalled = true;
    socket.async_wait(tcp::socket::wait_write, [self = shared_from_this()](error_code const&) {
        self->isStalled = false;
        if (self->isOpen && !ZU_GUARD_BOUNDARY([&self] { self->Writable(); }))
        {
            self->End(false);
        }
    });
}

void TcpConnection::Readable()
{
    Serving const serving(*conversation);
    if (!IsReady())
    {
        Handshake();
        return;
    }
    std::span<char> const room = conversation->Room();
    error_code error;
    std::size_t const bytes = room.empty() ? 0 : ReadSome(room, error);
    if (WouldBlock(error) && tls != nullptr)
    {
        WaitForTls();
        return;
    }
    if (error == boost::asio::error::eof)
    {
        conversation->InputEnded();
    }
    else if (error && !WouldBlock(error))
    {
        End(false);
        return;
    }
    conversation->Received(bytes);
    Flush();
}

void TcpConnection::Writable()
{
    Serving const serving(*conversation);
    if (IsReady())
    {
        Flush();
    }
    else
    {
        Handshake();
    }
}

std::size_t TcpConnection::ReadSome(std::span<char> room, error_code& error)
{
    return tls != nullptr ? tls->Read(room, error)
                          : socket.read_some(boost::asio::buffer(room.data(), room.size()), error);
}

std::size_t TcpConnection::WriteSome(std::string_view bytes, error_code& error)
{
    return tls != nullptr ? tls->Write(bytes, error)
                          : socket.write_some(boost::asio::buffer(bytes.data(), bytes.size()), error);
}

void TcpConnection::Flush()
{
    conversation->TakeData(); // counts missed data even while nothing can be sent
    for (int i = 0; !isStalled && !conversation->Pending().empty(); ++i)
    {
        if (i == SENDS_IN_A_ROW)
        {
            WaitWritable();
        }
        else if (!SendPending())
        {
            return;
        }
        conversation->TakeData();
    }
    NoteProgress();
    auto const step = conversation->NextStep();
    if (step != ITcpConversation::Step::CONTINUE && conversation->Pending().empty())
    {
        End(step == ITcpConversation::Step::DROP);
        return;
    }
    WaitReadable();
}

/// Returns false when the connection has ended.
bool TcpConnection::SendPending()
{
    std::string_view const pending = conversation->Pending();
    error_code error;
    std::size_t const bytes = WriteSome(pending, error);
    if (WouldBlock(error))
    {
        WaitWritable();
        return true;
    }
    if (error)
    {
        End(false);
        return false;
    }
    isTaking = true;
    conversation->Sent(bytes);
    return true;
}

void TcpConnection::NoteProgress()
{
    if (progressCount != conversation->ProgressCount())
    {
        progressCount = conversation->ProgressCount();
        lastProgress = Clock::now();
    }
}

void TcpConnection::End(bool isDropped)
{
    if (!isOpen)
    {
        return;
    }
    Count(counters.droppedClients, isDropped ? 1 : 0);
    Close();
    ended(shared_from_this());
}

} // namespace PluginCommon
