#pragma once

#include "Plugins/Common/ITcpConversation.h"
#include "Plugins/Common/TcpMetrics.h"

#include <array>
#include <functional>
#include <string>
#include <string_view>

using PluginCommon::Count;

/// The counters of the service: those of every TCP service, and one of its own.
struct TemplateCounters final : PluginCommon::TcpCounters
{
    Counter lines{0}; ///< result lines sent to clients
};

/// The protocol with one client: lines in, lines out. It has no socket; the kit reads and writes it.
class TemplateConversation final : public PluginCommon::ITcpConversation
{
public:
    static constexpr std::size_t LONGEST_REQUEST = 256;
    static constexpr std::size_t MOST_UNSENT_BYTES = 64 * 1024;

    /// Carries out a request and returns the answer, without a line end. May throw.
    using Answer = std::function<std::string(std::string_view request)>;

    /// The counters outlive the conversation.
    TemplateConversation(Answer newAnswer, TemplateCounters& usedCounters);
    ~TemplateConversation() override;

    /// Sends a result line, which has its line end. Drops and counts it if the client is too slow.
    void AddResults(std::string_view line);

    std::span<char> Room() override;
    void Received(std::size_t bytes) override;
    void InputEnded() override;
    std::string_view Pending() const override;
    void Sent(std::size_t bytes) override;
    Step NextStep() const override;
    uint64 ProgressCount() const override;
    bool MayBeSilent() const override;

private:
    void AnswerLines();

    Answer const answer;
    TemplateCounters& counters;
    std::array<char, LONGEST_REQUEST> input;
    std::size_t inputBytes = 0;
    std::string output;
    uint64 answered = 0;
    Step step = Step::CONTINUE;
};
