#pragma once

#include <cstddef>

namespace Zu
{

/// The qualified name of a function, without return type, arguments and template arguments. It is extracted at compile
/// time from __PRETTY_FUNCTION__: "const char* Zu::Params::Value<T>::Name() const [with T = int]" becomes
/// "Zu::Params::Value::Name". In a lambda it is the name of the enclosing function. Unnamed namespaces are left out.
struct FunctionLabel
{
    static constexpr std::size_t CAPACITY = 256;

    template <std::size_t Size>
    consteval FunctionLabel(char const (&pretty)[Size]) // implicit: lets the macro below pass the literal directly
    {
        std::size_t const end = EndOfName(pretty, Size - 1);
        std::size_t length = 0;
        int depth = 0;
        for (std::size_t i = StartOfName(pretty, end); i < end && length + 1 < CAPACITY; ++i)
        {
            if (std::size_t const skipped = UnnamedNamespace(pretty + i, end - i); skipped > 0)
            {
                i += skipped - 1;
                continue;
            }
            depth += pretty[i] == '<' ? 1 : 0;
            if (depth == 0)
            {
                text[length++] = pretty[i];
            }
            depth -= pretty[i] == '>' ? 1 : 0;
        }
        text[length] = '\0';
    }

    char text[CAPACITY] = {};

private:
    static constexpr bool StartsWith(char const* where, std::size_t available, char const* what)
    {
        std::size_t i = 0;
        for (; what[i] != '\0'; ++i)
        {
            if (i >= available || where[i] != what[i])
            {
                return false;
            }
        }
        return true;
    }

    /// The number of characters that an unnamed namespace takes here, in the spelling of either compiler; 0 if there is
    /// none.
    static constexpr std::size_t UnnamedNamespace(char const* where, std::size_t available)
    {
        if (StartsWith(where, available, "{anonymous}::"))
        {
            return 13;
        }
        return StartsWith(where, available, "(anonymous namespace)::") ? 23 : 0;
    }

    /// The position at which the argument list of the outermost function begins.
    static constexpr std::size_t EndOfName(char const* pretty, std::size_t size)
    {
        int depth = 0;
        for (std::size_t i = 0; i < size; ++i)
        {
            if (std::size_t const skipped = UnnamedNamespace(pretty + i, size - i); skipped > 0)
            {
                i += skipped - 1;
                continue;
            }
            depth += pretty[i] == '<' ? 1 : 0;
            depth -= pretty[i] == '>' ? 1 : 0;
            bool const isCallOperator = i >= 8 && StartsWith(pretty + i - 8, 8, "operator");
            if (pretty[i] == '(' && depth == 0 && !isCallOperator)
            {
                return i;
            }
        }
        return size;
    }

    /// The position after the last blank that separates the return type from the name.
    static constexpr std::size_t StartOfName(char const* pretty, std::size_t end)
    {
        std::size_t start = 0;
        int depth = 0;
        for (std::size_t i = 0; i < end; ++i)
        {
            if (std::size_t const skipped = UnnamedNamespace(pretty + i, end - i); skipped > 0)
            {
                i += skipped - 1;
                continue;
            }
            depth += pretty[i] == '<' ? 1 : 0;
            depth -= pretty[i] == '>' ? 1 : 0;
            if (depth == 0 && StartsWith(pretty + i, end - i, "operator"))
            {
                break; // the blank in "operator bool" belongs to the name
            }
            start = depth == 0 && pretty[i] == ' ' ? i + 1 : start;
        }
        while (start < end && (pretty[start] == '*' || pretty[start] == '&'))
        {
            ++start; // clang puts the star of a return type directly before the name
        }
        return start;
    }
};

} // namespace Zu

/// The label of the enclosing function; valid until the end of the full expression.
#define ZU_FUNCTION_LABEL (::Zu::FunctionLabel(__PRETTY_FUNCTION__).text)
