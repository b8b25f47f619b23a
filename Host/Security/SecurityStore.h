#pragma once

#include "wApi/wMutex.h"

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZuHost
{

/// The documents of users and tokens, in an archive of its own that only the owner of the host can read.
///
/// It is not the archive of the protocols' settings: that one is replaced when it is damaged, which would open the
/// service. A damaged archive of users stays as it is, and nothing is let in.
/// Any thread may call. All operations may wait for the disk.
class SecurityStore final
{
public:
    /// Takes the rights of others away from an existing file. Throws `Zu::Status::FAILURE` if that fails.
    explicit SecurityStore(std::filesystem::path newFile);
    ~SecurityStore();

    SecurityStore(SecurityStore const&) = delete;
    SecurityStore& operator=(SecurityStore const&) = delete;

    /// Returns the document `name` ("security/tokens"), or null if there is none. Throws `Zu::Status::BAD_FORMAT` with a
    /// sentence for the user if the archive or the document is damaged, and as `SqliteFile::Fail` does.
    nlohmann::json Load(std::string const& name) const;

    /// Stores the document. It is durable when this returns. If this throws, the archive is unchanged. Throws
    /// `Zu::Status::BAD_FORMAT` for a damaged archive, and as `SqliteFile::Fail` does: for a full disk.
    void Save(std::string const& name, nlohmann::json const& document);

private:
    void CheckSound() const ZU_REQUIRES(lock);

    std::filesystem::path const file;
    mutable Zu::Mutex lock; // a leaf
};

} // namespace ZuHost
