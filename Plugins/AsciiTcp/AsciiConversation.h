#pragma once

#include "Plugins/AsciiTcp/AsciiRequest.h"
#include "Plugins/Common/ITcpConversation.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "wApi/wTypes.h"

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace AsciiTcp
{

/// The operations that a conversation uses to answer requests. Called on the server's I/O thread, so none may block for
/// long.
class IAsciiService
{
public:
    using Command = ZuControl::ControlProtocol::ControlRegisterCommandId;

    virtual ~IAsciiService();

    /// Appends "name value decision". Returns false and appends nothing if there is no such output.
    virtual bool AppendReading(std::string& line, std::string_view name) = 0;

    /// Appends the number of outputs and their names.
    virtual void AppendNames(std::string& line) = 0;

    /// Appends the state of the system and the service as key=value words.
    virtual void AppendStatus(std::string& line) = 0;

    /// Begins an operation. Returns the ticket under which its end is reported, never 0. Throws if the operation is
    /// refused.
    virtual uint64 Begin(Command command, std::string_view argument) = 0;

    /// Begins a slow request. Returns the ticket under which its answer is reported, never 0. Throws if the request is
    /// refused.
    virtual uint64 Ask(AsciiRequest const& request) = 0;

    /// The client of the slow request has gone: drops the request if it has not begun to run. Must not throw.
    virtual void Abandon(uint64 ticket) = 0;
};

class DataFeed;
struct AsciiCounters;

/// The protocol with one client: requests in, lines out.
///
/// When FULL_BYTES of output are unsent, nothing more is read from the client. A subscribed client gets no result lines
/// while DATA_BYTES are unsent; it misses the lines that the feed has dropped meanwhile.
///
/// A client that sends a line of HTTP or the hello of TLS is dropped: that line and all later ones are ignored. Answers
/// that wait are sent first.
///
/// When a client closes its sending side, it still gets all answers, the end of its operation and, while subscribed,
/// results for as long as it takes them. Then the connection is closed.
class AsciiConversation final : public PluginCommon::ITcpConversation
{
public:
    static constexpr std::size_t INPUT_BYTES = 4096;
    static constexpr std::size_t FULL_BYTES = 64 * 1024;
    static constexpr std::size_t DATA_BYTES = 16 * 1024;

    AsciiConversation(IAsciiService& usedService, DataFeed& usedFeed, AsciiCounters& usedCounters);
    ~AsciiConversation() override;
    AsciiConversation(AsciiConversation const&) = delete;
    AsciiConversation& operator=(AsciiConversation const&) = delete;

    /// Empty while the client has to take answers first, after `InputEnded`, and after bytes of another protocol.
    std::span<char> Room() override;

    /// Answers each complete line, as long as the output has room.
    void Received(std::size_t bytes) override;

    /// Bytes after the last line end are ignored.
    void InputEnded() override;

    std::string_view Pending() const override;

    /// If there is room now, answers the lines that waited in the input.
    void Sent(std::size_t bytes) override;

    /// Takes result lines from the feed as far as there is room, and counts the missed lines.
    void TakeData() override;

    /// The operation of this ticket has ended. Returns true if it was this client's; the client then gets a line.
    bool OperationEnded(uint64 ticket, bool isDone);

    /// `line` is the answer to the request of this ticket. Returns true if it is this client's. Its later requests are
    /// answered from now on.
    bool Answered(uint64 ticketOfAnswer, std::string_view line);

    /// Sends a line to the client unasked. If the output is full, the line is dropped and counted.
    void Tell(std::string_view line);

    bool IsSubscribed() const
    {
        return subscribed;
    }

    /// Whether the client waits for the end of an operation or for the answer of a slow request.
    bool IsWaiting() const
    {
        return ticket != 0 || awaited != 0;
    }

    /// A client that is subscribed, or waits for an operation or an answer, need not send requests.
    bool MayBeSilent() const override
    {
        return subscribed || IsWaiting();
    }

    /// CLOSE when the client has closed its sending side, everything is answered and sent, and nothing more can follow.
    /// DROP after bytes of another protocol.
    Step NextStep() const override;

    /// The number of requests answered and of operations ended so far.
    uint64 ProgressCount() const override
    {
        return answered + ended;
    }

private:
    bool HasRoomForAnswer() const;
    void AnswerAll();
    bool TakeLine(std::string_view& line);
    void NoteEnd(std::string_view part, bool isBegin);
    void TurnAway();
    void Answer(std::string_view line);
    void CheckRole(AsciiRequest::Verb verb);
    void CarryOut(AsciiRequest const& request);
    void Get(std::string_view argument);
    void Subscribe();
    void Unsubscribe();
    void Begin(IAsciiService::Command command, std::string_view argument);
    void NoteAnswered(uint64 tookUsec);

    IAsciiService& service;
    DataFeed& feed;
    AsciiCounters& counters;
    std::array<char, INPUT_BYTES> input;
    std::size_t inputFirst = 0; // begin of the next line
    std::size_t inputEnd = 0;
    bool isSkipping = false; // skipping the rest of a line that is too long
    std::string lineEnd;     // the last bytes of the line so far
    bool isForeign = false;  // the client speaks another protocol
    bool hasInputEnded = false;
    std::string output;
    std::size_t outputFirst = 0; // bytes before it are sent
    bool subscribed = false;
    uint64 nextLine = 0; // number of the next line in the feed, while subscribed
    uint64 ticket = 0;   // of the operation that the client waits for; 0 for none
    uint64 awaited = 0;  // ticket of the answer that later requests wait for; 0 for none
    uint64 awaitedSinceUsec = 0;
    uint64 answered = 0;
    uint64 ended = 0; // operations of the client
};

} // namespace AsciiTcp
