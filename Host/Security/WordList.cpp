#include "Host/Security/WordList.h"

#include "wApi/wMutex.h"

#include <cstdio> // before the header of cracklib, which uses it without including it
#include <memory>
#include <utility>

extern "C"
{
#include <crack.h>
#include <packer.h>
}

namespace ZuHost
{

namespace
{

constexpr std::size_t MAX_WORD_BYTES = MAXWORDLEN - 1;

/// The library has one open dictionary for the whole process.
Zu::Mutex& LibraryLock()
{
    static Zu::Mutex lock; // a leaf
    return lock;
}

struct Closed
{
    void operator()(PWDICT* dictionary) const noexcept
    {
        PWClose(dictionary);
    }
};

} // namespace

WordList::WordList(std::filesystem::path newPath) : path(std::move(newPath))
{
}

WordList::~WordList() = default;

std::filesystem::path WordList::DefaultPath()
{
    return GetDefaultCracklibDict();
}

bool WordList::Exists() const
{
    std::error_code error;
    for (char const* const suffix : {".pwd", ".pwi"})
    {
        if (!std::filesystem::is_regular_file(path.string() + suffix, error))
        {
            return false;
        }
    }
    return true;
}

bool WordList::Contains(std::string const& word) const
{
    if (word.empty() || word.size() > MAX_WORD_BYTES || word.find('\0') != word.npos || !Exists())
    {
        return false;
    }
    std::string mode = "r"; // the library takes no constants
    std::string sought = word;
    std::string none;
    Zu::MutexLock const guard(LibraryLock());
    std::unique_ptr<PWDICT, Closed> const dictionary(PWOpen(path.c_str(), mode.data()));
    if (dictionary == nullptr)
    {
        return false;
    }
    // For a missing word the library returns the number of words, which it gives for the empty word too.
    return FindPW(dictionary.get(), sought.data()) != FindPW(dictionary.get(), none.data());
}

std::filesystem::path const& WordList::Path() const
{
    return path;
}

} // namespace ZuHost
