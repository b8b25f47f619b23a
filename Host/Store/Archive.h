#pragma once

#include "Host/Store/SqliteFile.h"

#include <functional>
#include <map>
#include <string>

namespace ZuHost
{

/// The entries of an archive, and its faults.
struct ArchiveContents
{
    /// Bytes by name: "controls/ModbusTcp/config.json".
    using Files = std::map<std::string, std::string, std::less<>>;

    Files entries;
    Files lastGood; ///< the last state of an entry that was known to be good
    Files faults;   ///< entries that cannot be read, and why; an empty name stands for the file as a whole
};

/// An SQLite archive: a database that holds files. `sqlite3 FILE -A` can list, extract and replace them.
///
/// The host adds a second table with the last good state of each document. One thread at a time.
class Archive final
{
public:
    static constexpr uint64 MAX_ENTRIES = 1'000;
    static constexpr uint64 MAX_ROWS = 4'000; ///< of a table: entries, folders, and rows that cannot be read
    static constexpr uint64 MAX_TOTAL_BYTES = 64 * 1024 * 1024; ///< of all entries, before compression
    static constexpr uint64 MAX_FILE_BYTES = 256 * 1024 * 1024; ///< twice the largest file that the host writes
    static constexpr std::size_t MAX_NAME_BYTES = 255;

    /// This and all operations throw as `SqliteFile::Fail` does. This throws `Zu::Status::BAD_FORMAT` too for a file of
    /// more than `MAX_FILE_BYTES`.
    Archive(std::filesystem::path const& path, SqliteFile::Access access);

    /// Opens the bytes of an archive for reading; `name` stands in error texts.
    Archive(std::string const& name, std::string_view bytes);

    ~Archive();

    Archive(Archive const&) = delete;
    Archive& operator=(Archive const&) = delete;

    /// Describes a fault of the database or of its schema; empty if there is none. Reads the whole file.
    std::string FindFault();

    /// Whether there is a table of files with a schema that this host or the command-line tool writes.
    bool HasTable() const;

    /// Reads all entries that can be read. Folders are skipped. An entry that is no regular file, is too long or is
    /// damaged is listed under the faults. A table with any other schema is not read and counts as a fault of the file
    /// as a whole. Throws `Zu::Status::BAD_FORMAT` if the file is no database.
    ArchiveContents Read();

    /// As `Read`, without the last good states.
    ArchiveContents ReadEntries();

    /// The last good states that can be read.
    ArchiveContents::Files ReadLastGood();

    /// Adds or replaces these entries and last good states in one transaction, which is durable when this returns. If
    /// this throws, the file is unchanged once the archive object is destroyed.
    void Write(ArchiveContents::Files const& entries, ArchiveContents::Files const& lastGood);

    /// Chooses files by their names.
    using NameFilter = bool (*)(std::string_view name);

    /// As `Write`, for entries that are all good: the documents among them are their own last good states.
    void WriteGood(ArchiveContents::Files const& entries, NameFilter isDocument);

    std::string Image() const;

private:
    void ReadTable(char const* table, ArchiveContents::Files& files, ArchiveContents& contents);
    void WriteTable(char const* table, ArchiveContents::Files const& files, NameFilter isWritten);
    /// The schema, compared text by text with the schemas that the host and the command-line tool write.
    struct Schema
    {
        bool hasEntries = false;  ///< the table of files is there and known
        bool hasLastGood = false; ///< the same for the last good states
        std::string fault;        ///< empty if nothing else is there
    };

    Schema ReadSchema() const;

    SqliteFile file;
};

} // namespace ZuHost
