#pragma once

#include "Fuzz/Support/Check.h"
#include "ZuApi/Logging.h"

#include <cstring>
#include <memory>

namespace ZuFuzz
{

/// Formats every line of the log while it exists, because many lines contain text from a client. It keeps none.
class FormattedLog final
{
public:
    FormattedLog() : sink(std::make_shared<Sink>())
    {
        Zu::Logging::AddSink(sink);
    }

    ~FormattedLog()
    {
        Zu::Logging::RemoveSink(sink);
    }

    FormattedLog(FormattedLog const&) = delete;
    FormattedLog& operator=(FormattedLog const&) = delete;

private:
    class Sink final : public Zu::Logging::ISink
    {
    public:
        bool Wants(uint64) const override
        {
            return true;
        }

        void Write(Zu::Logging::Entry const& entry) override
        {
            ZU_FUZZ_CHECK(entry.label[0] != '\0');
            ZU_FUZZ_CHECK(std::strlen(entry.text) <= LONGEST_LINE);
        }

    private:
        static constexpr std::size_t LONGEST_LINE = 4U << 20; // at most the whole body of a request in one line
    };

    std::shared_ptr<Sink> const sink;
};

} // namespace ZuFuzz
