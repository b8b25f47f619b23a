#include "Host/Jobs/DocumentStore.h"

#include "Host/Store/DocumentCheck.h"
#include "ZuApi/Exception.h"

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
    if (size > DocumentCheck::MAX_BYTES)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The document '%s' is longer than %zu bytes", path.c_str(),
                 DocumentCheck::MAX_BYTES);
    }
    files.insert_or_assign(NameOf(path), std::string(static_cast<char const*>(data), size));
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

} // namespace ZuHost
