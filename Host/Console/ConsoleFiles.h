#pragma once

#include <span>
#include <string_view>

/// The files of the console, as the build has made them from the folder Console.
namespace ZuHost::ConsoleFiles
{

/// A file of the page. All texts have static storage.
struct File
{
    std::string_view name; ///< the last segment of its path: "index.html"
    std::string_view contentType;
    std::string_view content; ///< compressed with gzip
    bool isImmutable = false; ///< the name has a hash of the content, so browsers may keep the file
};

/// All files. Empty if the host was built without the console.
std::span<File const> All() noexcept;

} // namespace ZuHost::ConsoleFiles
