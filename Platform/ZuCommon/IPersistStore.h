#pragma once

#include "wApi/wExport.h"

#include <cstddef>
#include <string>

namespace ZuCommon
{

/// Named documents of one domain, as bytes. A path looks like "/folder/name.json".
class ZUPLATFORM_API IPersistStore
{
public:
    virtual ~IPersistStore();

    /// Returns the bytes at `path`. Throws `Zu::Status::NOT_FOUND` if there are none.
    virtual std::string Read(std::string const& path) const = 0;

    /// Replaces the bytes at `path` by a copy of `data`.
    virtual void Write(std::string const& path, void const* data, std::size_t size) = 0;

    virtual bool Exists(std::string const& path) const = 0;
};

} // namespace ZuCommon
