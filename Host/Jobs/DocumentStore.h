#pragma once

#include "Host/Store/Archive.h"
#include "ZuCommon/Persistence.h"

namespace ZuHost
{

/// The documents of one load or save, in memory. A load fills the store from a file beforehand; a save writes its
/// content to a file afterwards. A name in the file is the path without its leading slash. One thread at a time.
class DocumentStore final : public ZuCommon::IPersistStore
{
public:
    using Files = ArchiveContents::Files;

    /// Makes a store that holds `given`. `onLookUp`, unless empty, is called with each name that a reader asks for.
    explicit DocumentStore(Files given = {}, std::function<void(std::string const&)> onLookUp = {});
    ~DocumentStore() override;

    DocumentStore(DocumentStore const&) = delete;
    DocumentStore& operator=(DocumentStore const&) = delete;

    std::string Read(std::string const& path) const override;

    /// Throws `Zu::Status::BAD_ARGUMENT` for a document that could not be read again: see `DocumentCheck`.
    void Write(std::string const& path, void const* data, std::size_t size) override;

    bool Exists(std::string const& path) const override;

    /// All documents that the store holds now.
    Files const& All() const;

    /// Takes all documents out of the store.
    Files Take();

private:
    Files files;
    std::function<void(std::string const&)> const lookedUp;
};

} // namespace ZuHost
