#pragma once

#include <compare>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ZuHost
{

/// The checked name of a job. A text of a client, of the command line or of a folder becomes a `JobName` once, where
/// the host receives it; only a `JobName` names a file.
///
/// A name has 1 to 63 bytes of UTF-8, no separator, no control or format character (Unicode categories Cc and Cf), no
/// "..", no dot at its head, and not the suffix of the file at its end.
class JobName final
{
public:
    static constexpr std::size_t MAX_BYTES = 63;

    /// Takes a name with or without the suffix ".zpjob" of its file. Throws `Zu::Status::BAD_ARGUMENT` with a sentence
    /// for any other text.
    explicit JobName(std::string const& newText);

    /// The job of the file of this name; nothing if it is not the file of a job.
    static std::optional<JobName> OfFile(std::string const& fileName);

    /// The name without the suffix.
    std::string const& Text() const;

    std::string FileName() const;

    bool operator==(JobName const&) const = default;
    std::strong_ordering operator<=>(JobName const&) const = default;

private:
    std::string text;
};

} // namespace ZuHost
