#pragma once

#include "Host/Store/ArchiveContents.h"

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ZuHost
{

class DataFolder;

/// The documents of one file in the data folder, and what keeps them: nothing that was stored is lost to a bad file.
///
/// Each document has its last good state beside it. A document that is no JSON gives way to that; a file that is damaged is
/// kept under another name as soon as a sound one takes its place. One thread at a time.
class ArchiveFile final
{
public:
    using Files = ArchiveContents::Files;

    /// What a file was found to hold.
    struct Documents
    {
        Files files;                        ///< good JSON each, by name: "controls/ModbusTcp/config.json"
        std::set<std::string> fromLastGood; ///< of these the ones that are not what was last stored
        std::vector<std::string> faults;    ///< a sentence for each thing that is wrong, for the user
    };

    /// The folder outlives it.
    ArchiveFile(DataFolder const& usedFolder, std::filesystem::path newPath);
    ~ArchiveFile();

    ArchiveFile(ArchiveFile&&) noexcept;
    ArchiveFile& operator=(ArchiveFile&&) = delete;
    ArchiveFile(ArchiveFile const&) = delete;
    ArchiveFile& operator=(ArchiveFile const&) = delete;

    /// Whether there is a file with anything in it.
    bool Exists() const;

    /// Throws -999 when there is no file, -984 when nothing in it can be read, and what keeps it from being read.
    Documents Read();

    /// Stores those of `files` that `due` names, or all of them when the file is new or damaged. What differs is stored, in
    /// one transaction, and is durable when this returns; when it throws, all is as it was. Throws `Zu::Status::FAILURE` when
    /// the file would hold more than can be read again. With `keepsReplaced` the
    /// documents that are replaced stay in the file, under "rejected/".
    void Save(Files const& files, std::set<std::string> const& due, bool keepsReplaced);

    /// Puts these documents in the place of all that the file holds, and makes it when it is not there.
    void Replace(Files const& files);

    /// Puts what this file holds in the place of what `target` does.
    void CopyTo(std::filesystem::path const& target) const;

    /// The bytes of the file as they stand at one moment.
    std::string Image() const;

    /// The documents in the bytes of an archive that came from elsewhere. Throws -984 with a sentence for anything that is
    /// wrong with it.
    static Files Checked(std::string const& name, std::string_view bytes);

private:
    void Update(Files const& files, std::set<std::string> const& due, bool keepsReplaced);
    void Rebuild(Files const& files);
    void Install(ArchiveContents const& contents) const;

    DataFolder const& folder;
    std::filesystem::path path;
    bool isDamaged = false; // as far as is known
};

} // namespace ZuHost
