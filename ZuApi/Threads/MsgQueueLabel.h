#pragma once

#include <cstddef>

namespace Zu::Internal
{

/// The label of an operation of a queue of records, "Zu::MsgQueue<struct ZuControl::EndOfOpResult>::Add", cut at compile time
/// out of what the compiler calls a function template that knows the record. An unnamed namespace is left out.
struct MsgQueueLabel
{
    static constexpr std::size_t CAPACITY = 256;

    template <typename Record>
    static consteval MsgQueueLabel Of(char const* operation)
    {
        return {__PRETTY_FUNCTION__, sizeof(__PRETTY_FUNCTION__) - 1, operation};
    }

    char text[CAPACITY] = {};

private:
    consteval MsgQueueLabel(char const* pretty, std::size_t size, char const* operation)
    {
        Append("Zu::MsgQueue<struct ", CAPACITY);
        std::size_t const end = EndOfRecord(pretty, size);
        for (std::size_t i = StartOfRecord(pretty, size); i < end; ++i)
        {
            std::size_t const skipped = UnnamedNamespace(pretty + i, end - i);
            if (skipped == 0)
            {
                Append(pretty + i, 1);
            }
            else
            {
                i += skipped - 1;
            }
        }
        Append(">::", CAPACITY);
        Append(operation, CAPACITY);
    }

    consteval void Append(char const* what, std::size_t count)
    {
        for (std::size_t i = 0; i < count && what[i] != '\0' && length + 1 < CAPACITY; ++i)
        {
            text[length++] = what[i];
        }
    }

    static consteval bool StartsWith(char const* where, std::size_t available, char const* what)
    {
        std::size_t i = 0;
        while (what[i] != '\0' && i < available && where[i] == what[i])
        {
            ++i;
        }
        return what[i] == '\0';
    }

    /// How many characters an unnamed namespace takes here, 0 when there is none; both compilers' spellings.
    static consteval std::size_t UnnamedNamespace(char const* where, std::size_t available)
    {
        if (StartsWith(where, available, "{anonymous}::"))
        {
            return 13;
        }
        return StartsWith(where, available, "(anonymous namespace)::") ? 23 : 0;
    }

    /// Behind "Record = ", which both compilers write in front of it.
    static consteval std::size_t StartOfRecord(char const* pretty, std::size_t size)
    {
        std::size_t i = 0;
        while (i < size && !StartsWith(pretty + i, size - i, "Record = "))
        {
            ++i;
        }
        return i < size ? i + 9 : size;
    }

    /// Both compilers end the list of template arguments, and with it the name, with the last bracket.
    static consteval std::size_t EndOfRecord(char const* pretty, std::size_t size)
    {
        while (size > 0 && pretty[size - 1] != ']')
        {
            --size;
        }
        return size > 0 ? size - 1 : 0;
    }

    std::size_t length = 0;
};

} // namespace Zu::Internal
