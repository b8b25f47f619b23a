#pragma once

#include <filesystem>
#include <string_view>

namespace ZuHost
{

/// A copy of a file in memory that can be loaded in place of the file, and that no process can change.
///
/// Child processes that this process forks have it too.
class SealedFile final
{
public:
    static constexpr std::size_t MAX_BYTES = 256 * 1024 * 1024;

    /// Throws `Zu::Status::NOT_FOUND` with the reason, as words that may follow the name of the file.
    explicit SealedFile(std::filesystem::path const& file);
    ~SealedFile();

    SealedFile(SealedFile const&) = delete;
    SealedFile& operator=(SealedFile const&) = delete;

    std::string_view Bytes() const;

    /// A path of the copy that is valid in this process and in its forked children.
    std::filesystem::path Path() const;

private:
    void CopyFrom(int source);
    void Seal();

    int descriptor = -1;
    void* mapped = nullptr;
    std::size_t size = 0;
};

} // namespace ZuHost
