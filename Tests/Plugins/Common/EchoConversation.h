#pragma once

#include "Plugins/Common/ITcpConversation.h"

#include <array>
#include <string_view>

namespace PluginCommon
{

/// Sends back what it gets.
class EchoConversation final : public ITcpConversation
{
public:
    std::span<char> Room() override
    {
        return Pending().empty() ? std::span<char>(bytes) : std::span<char>();
    }

    void Received(std::size_t count) override
    {
        pending = std::string_view(bytes.data(), count);
        progress += count > 0 ? 1 : 0;
    }

    void InputEnded() override
    {
        hasEnded = true;
    }

    std::string_view Pending() const override
    {
        return pending;
    }

    void Sent(std::size_t count) override
    {
        pending.remove_prefix(count);
    }

    Step NextStep() const override
    {
        return hasEnded ? Step::CLOSE : Step::CONTINUE;
    }

    uint64 ProgressCount() const override
    {
        return progress;
    }

private:
    std::array<char, 16> bytes{};
    std::string_view pending;
    uint64 progress = 0;
    bool hasEnded = false;
};

} // namespace PluginCommon
