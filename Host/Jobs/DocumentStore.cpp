#include "Host/Jobs/DocumentStore.h"

#include "Host/Store/DocumentCheck.h"
#include "ZuApi/Exception.h"

#include <string_view>
#include <utility>

namespace ZuHost
{

namespace
{

std::string NameOf(std::string const& path)
{
    return path.starts_with('/') ? path.substr(1) : path;
}

} // namespace

DocumentStore::DocumentStore(Files given, std::function<void(std::string const&)> onLookUp)
    : files(std::move(given)), lookedUp(std::move(onLookUp))
{
}

DocumentStore::~DocumentStore() = default;

std::string DocumentStore::Read(std::string const& path) const
{
    auto const found = files.find(NameOf(path));
    if (found == files.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no document '%s'", path.c_str());
    }
    return found->second;
}

void DocumentStore::Write(std::string const& path, void const* data, std::size_t size)
{
    std::string_view const text(static_cast<char const*>(data), size);
    if (std::string const fault = DocumentCheck::FaultOf(text); !fault.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The document '%s' cannot be stored: %s", path.c_str(), fault.c_str());
    }
    files.insert_or_assign(NameOf(path), std::string(text));
}

bool DocumentStore::Exists(std::string const& path) const
{
    std::string const name = NameOf(path);
    if (lookedUp)
    {
        lookedUp(name);
    }
    return files.contains(name);
}

DocumentStore::Files const& DocumentStore::All() const
{
    return files;
}

DocumentStore::Files DocumentStore::Take()
{
    return std::exchange(files, {});
}

} // namespace ZuHost
