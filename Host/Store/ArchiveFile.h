#pragma once

#include "Host/Store/Archive.h"

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ZuHost
{

class DataFolder;

/// The documents of one file in the data folder. A damaged file does not lose what was stored.
///
/// Each document has a copy of its last good state. If a document is not valid JSON, the copy is used. A damaged file
/// is kept under another name before a sound one takes its place. One thread at a time.
class ArchiveFile final
{
public:
    using Files = ArchiveContents::Files;

    /// The documents that were read from a file, and its faults.
    struct Documents
    {
        Files files;                        ///< valid JSON each, by name: "controls/ModbusTcp/config.json"
        std::set<std::string> fromLastGood; ///< names of the documents that are their last good state
        std::vector<std::string> faults;    ///< a sentence for the user for each fault
    };

    /// The folder outlives this object.
    ArchiveFile(DataFolder const& usedFolder, std::filesystem::path newPath);
    ~ArchiveFile();

    ArchiveFile(ArchiveFile&&) noexcept;
    ArchiveFile& operator=(ArchiveFile&&) = delete;
    ArchiveFile(ArchiveFile const&) = delete;
    ArchiveFile& operator=(ArchiveFile const&) = delete;

    /// Whether the file exists and is not empty.
    bool Exists() const;

    /// Throws `Zu::Status::NOT_FOUND` when there is no file, `Zu::Status::BAD_FORMAT` when nothing in it can be read,
    /// and other statuses of `SqliteFile`.
    Documents Read();

    /// Stores those of `files` that `due` names, or all of them if the file is new or damaged. Only documents that
    /// differ are written, in one transaction, which is durable when this returns. If this throws, the file is
    /// unchanged. Throws `Zu::Status::FAILURE` when the file would exceed the bounds that `Archive` can read. With
    /// `keepsReplaced`, the replaced documents stay in the file under "rejected/".
    void Save(Files const& files, std::set<std::string> const& due, bool keepsReplaced);

    /// Replaces the whole content of the file with these documents. Makes the file if it does not exist. Throws
    /// `Zu::Status::FULL` as `DataFolder::InstallCopy` does.
    void Replace(Files const& files);

    /// As `Replace`, for the file `target` and the entries of this file.
    void CopyTo(std::filesystem::path const& target) const;

    /// The bytes of the file, as of one moment.
    std::string Image() const;

    /// Reads the documents from the bytes of a foreign archive. Throws `Zu::Status::BAD_FORMAT` with a sentence for the
    /// first fault.
    static Files Checked(std::string const& name, std::string_view bytes);

private:
    void Update(Files const& files, std::set<std::string> const& due, bool keepsReplaced);
    void Rebuild(Files const& files);
    /// Makes a new file with these entries, which is to take the place of the present one.
    std::filesystem::path Make(Files const& files) const;

    DataFolder const& folder;
    std::filesystem::path path;
    bool isDamaged = false; // as of the last read or save
};

} // namespace ZuHost
