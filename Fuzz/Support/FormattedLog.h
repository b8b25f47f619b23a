#pragma once

#include "Fuzz/Support/Check.h"
#include "ZuApi/Logging.h"

#include <cstring>
#include <memory>

namespace ZuFuzz
{

/// Has every line of the log formatted for as long as it lives, since what a client sends stands in many of them. It keeps
/// none.
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
        static constexpr std::size_t LONGEST_LINE = 4U << 20; // a client's whole body may stand in a line, no more
    };

    std::shared_ptr<Sink> const sink;
};

} // namespace ZuFuzz
