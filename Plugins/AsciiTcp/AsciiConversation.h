#pragma once

#include "Plugins/AsciiTcp/IAsciiService.h"
#include "wApi/wTypes.h"

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace AsciiTcp
{

class DataFeed;
struct AsciiCounters;

/// What is said with one client, without a socket: bytes in, lines out.
///
/// The caller reads into `Room`, tells `Received`, and writes what `Pending` holds, telling `Sent`. A client that sends
/// without reading fills FULL_BYTES of answers; then nothing more is read from it. One that has subscribed and does not read
/// gets no result lines beyond DATA_BYTES, and misses those that the feed cannot keep for it.
class AsciiConversation final
{
public:
    static constexpr std::size_t INPUT_BYTES = 4096;
    static constexpr std::size_t FULL_BYTES = 64 * 1024;
    static constexpr std::size_t DATA_BYTES = 16 * 1024;

    AsciiConversation(IAsciiService& usedService, DataFeed& usedFeed, AsciiCounters& usedCounters);
    ~AsciiConversation();
    AsciiConversation(AsciiConversation const&) = delete;
    AsciiConversation& operator=(AsciiConversation const&) = delete;

    /// Where the next bytes go; empty while the client is to take its answers first.
    std::span<char> Room();

    /// `bytes` have been put into the room. Answers every complete line that the output has room for.
    void Received(std::size_t bytes);

    /// Nothing more comes from the client. Bytes behind its last line end are no request.
    void InputEnded();

    /// What has not been sent yet.
    std::string_view Pending() const;

    /// `bytes` of the pending ones have gone. Answers what waited in the input when there is room for it.
    void Sent(std::size_t bytes);

    /// Takes result lines from the feed as far as there is room for them, and counts those that were missed.
    void TakeData();

    /// The operation of this ticket has ended. True when the client is told, since it was its own.
    bool OperationEnded(uint64 ticket, bool isDone);

    /// The answer to the request of this ticket, which is one line. True when it is this client's; the requests behind it are
    /// answered from now on.
    bool Answered(uint64 ticketOfAnswer, std::string_view line);

    /// Says a line of the service's own; a client that takes nothing misses it, which counts as a drop.
    void Tell(std::string_view line);

    bool IsSubscribed() const
    {
        return subscribed;
    }

    /// Whether the client waits for the end of an operation, or for an answer that takes its time.
    bool IsWaiting() const
    {
        return ticket != 0 || awaited != 0;
    }

    /// The client has ended its side, everything is answered and sent, and nothing more can come.
    bool IsOver() const;

    /// Requests answered so far.
    uint64 AnsweredCount() const
    {
        return answered;
    }

private:
    bool HasRoomForAnswer() const;
    void AnswerAll();
    bool TakeLine(std::string_view& line);
    void Answer(std::string_view line);
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
    std::size_t inputFirst = 0; // the next line begins here
    std::size_t inputEnd = 0;
    bool isSkipping = false; // the rest of a line that is too long
    bool hasInputEnded = false;
    std::string output;
    std::size_t outputFirst = 0; // sent up to here
    bool subscribed = false;
    uint64 nextLine = 0; // of the feed, while subscribed
    uint64 ticket = 0;   // of the operation whose end the client waits for
    uint64 awaited = 0;  // the ticket of the answer that the next request waits for
    uint64 awaitedSinceUsec = 0;
    uint64 answered = 0;
};

} // namespace AsciiTcp
