// Input: the bytes that a client of the line protocol sends.
//
// Checks: the answers do not depend on the pieces in which the bytes arrive. Each line of the client gets one line as
// its answer, without a byte that would break the line, unless the client is dropped. The buffers do not grow. A written name reads back unchanged.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/Input.h"
#include "Plugins/AsciiTcp/AsciiConversation.h"
#include "Plugins/AsciiTcp/AsciiMetrics.h"
#include "Plugins/AsciiTcp/AsciiText.h"
#include "Plugins/AsciiTcp/DataFeed.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace
{

using namespace AsciiTcp;

constexpr std::size_t LONGEST_ANSWER = 8192;

/// Has the output "zMax". Refuses a job with a name that begins with "x"; the text of the refusal has line breaks.
class Service final : public IAsciiService
{
public:
    bool AppendReading(std::string& line, std::string_view name) override
    {
        if (name != "zMax")
        {
            return false;
        }
        AppendName(line, name);
        line += " 25.000 1";
        return true;
    }

    void AppendNames(std::string& line) override
    {
        line += "1 zMax";
    }

    void AppendStatus(std::string& line) override
    {
        line += "state=ready";
    }

    uint64 Begin(Command command, std::string_view argument) override
    {
        if (command == ZuControl::ControlProtocol::CommandLoadJob && argument.starts_with('x'))
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "%s\r\n\tis no job", std::string(argument).c_str());
        }
        return ++ticket;
    }

    uint64 Ask(AsciiRequest const&) override
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "nothing here takes its time");
    }

    void Abandon(uint64) override
    {
    }

private:
    uint64 ticket = 0;
};

class Talk final
{
public:
    /// Sends `bytes` in pieces of `pieceBytes`. Takes the answers only when the conversation has no more room for
    /// input.
    void Say(std::string_view bytes, std::size_t pieceBytes)
    {
        while (!bytes.empty() && conversation.NextStep() != AsciiConversation::Step::DROP)
        {
            std::span<char> const room = conversation.Room();
            std::size_t const count = std::min({room.size(), bytes.size(), pieceBytes});
            std::memcpy(room.data(), bytes.data(), count);
            conversation.Received(count);
            bytes.remove_prefix(count);
            ZU_FUZZ_CHECK(conversation.Pending().size() < AsciiConversation::FULL_BYTES + LONGEST_ANSWER);
            if (count == 0)
            {
                TakeAnswers(pieceBytes);
            }
        }
        TakeAnswers(pieceBytes);
    }

    DataFeed feed;
    Service service;
    AsciiCounters counters;
    AsciiConversation conversation{service, feed, counters};
    std::string answers;

private:
    void TakeAnswers(std::size_t atATime)
    {
        while (!conversation.Pending().empty())
        {
            std::string_view const taken = conversation.Pending().substr(0, atATime);
            answers += taken;
            conversation.Sent(taken.size());
        }
    }
};

void CheckAnswers(std::string_view answers, uint64 answeredCount)
{
    ZU_FUZZ_CHECK(static_cast<uint64>(std::ranges::count(answers, '\n')) == answeredCount);
    while (!answers.empty())
    {
        std::string_view const line = answers.substr(0, answers.find('\n'));
        ZU_FUZZ_CHECK(line.starts_with("OK") || line.starts_with("ERROR "));
        ZU_FUZZ_CHECK(IsPrintable(line) && line.size() <= LONGEST_ANSWER);
        answers.remove_prefix(line.size() + 1);
    }
}

void CheckName(std::string_view name)
{
    std::string written;
    AppendName(written, name);
    ZU_FUZZ_CHECK(IsPrintable(written) && written.find_first_of(" =") == std::string::npos);
    ZU_FUZZ_CHECK(ReadName(written) == name);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    ZuFuzz::Input input(data, size);
    std::size_t const pieceBytes = 1 + input.TakeByte();
    std::string_view const text = input.TakeRest();

    Talk whole;
    Talk inPieces;
    whole.Say(text, SIZE_MAX);
    inPieces.Say(text, pieceBytes);

    ZU_FUZZ_CHECK(whole.answers == inPieces.answers);
    ZU_FUZZ_CHECK(whole.conversation.ProgressCount() <= static_cast<uint64>(std::ranges::count(text, '\n')) + 1);
    CheckAnswers(whole.answers, whole.conversation.ProgressCount());
    CheckName(text);
    return 0;
}
