#pragma once

#include "Host/Store/ArchiveContents.h"
#include "ZuCommon/IPersistStore.h"

namespace ZuHost
{

/// The documents of one load or save, in memory: what is read was read from a file before, what is written goes into one
/// afterwards. The leading slash of a path is no part of the name in the file. One thread at a time.
class DocumentStore final : public ZuCommon::IPersistStore
{
public:
    using Files = ArchiveContents::Files;

    /// A store that holds `given`, and tells `onLookUp`, if there is one, each name that is asked for.
    explicit DocumentStore(Files given = {}, std::function<void(std::string const&)> onLookUp = {});
    ~DocumentStore() override;

    DocumentStore(DocumentStore const&) = delete;
    DocumentStore& operator=(DocumentStore const&) = delete;

    std::string Read(std::string const& path) const override;

    /// Throws `Zu::Status::BAD_ARGUMENT` for a document that could not be read again: see `DocumentCheck`.
    void Write(std::string const& path, void const* data, std::size_t size) override;

    bool Exists(std::string const& path) const override;

    /// What is in it now.
    Files const& All() const;

private:
    Files files;
    std::function<void(std::string const&)> const lookedUp;
};

} // namespace ZuHost
