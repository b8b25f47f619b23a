#pragma once

#include <filesystem>
#include <string>

namespace ZuHost
{

/// The dictionary of cracklib: words that are tried first when a password is guessed.
///
/// Only the look-up of single words is used. The library's own judgement of passwords asks for kinds of characters,
/// which is no rule of this host, and it ends the process when there is no dictionary. All operations are thread-safe;
/// they read a file.
class WordList final
{
public:
    /// The dictionary at `newPath`, without the suffix of its files. The default is the dictionary of the system, in which
    /// an administrator of the machine may include further words.
    explicit WordList(std::filesystem::path newPath = DefaultPath());
    ~WordList();

    static std::filesystem::path DefaultPath();

    /// Whether the files of the dictionary are there.
    bool Exists() const;

    /// Whether `word`, in lower case, is in the dictionary. False if there is no dictionary.
    bool Contains(std::string const& word) const;

    std::filesystem::path const& Path() const;

private:
    std::filesystem::path const path;
};

} // namespace ZuHost
