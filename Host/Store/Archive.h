#pragma once

#include "Host/Store/ArchiveContents.h"
#include "Host/Store/SqliteFile.h"

namespace ZuHost
{

/// An SQLite archive: one database that holds files, which `sqlite3 FILE -A` lists, extracts and replaces.
///
/// Beside the table of that tool stands one of ours, with the last good state of each document. One thread at a time.
class Archive final
{
public:
    static constexpr uint64 MAX_ENTRIES = 1'000;
    static constexpr uint64 MAX_TOTAL_BYTES = 64 * 1024 * 1024; ///< of all that is in it, not deflated
    static constexpr std::size_t MAX_NAME_BYTES = 255;

    /// What throws and with which status: SqliteFile.
    Archive(std::filesystem::path const& path, SqliteFile::Access access);

    /// One that came as the bytes of its file, for reading.
    Archive(std::string const& name, std::string_view bytes);

    ~Archive();

    Archive(Archive const&) = delete;
    Archive& operator=(Archive const&) = delete;

    /// What is wrong with the file as a database or with its schema; empty for nothing. It reads the whole file.
    std::string FindFault();

    /// Whether there is a table of files, with a schema that this host or the command-line tool has written.
    bool HasTable() const;

    /// All that can be read. Folders are passed over; an entry that is no file, too long or damaged stands under the faults.
    /// A table with any other schema is not read; that is a fault of the file as a whole.
    /// Throws `Zu::Status::BAD_FORMAT` where the file is no database.
    ArchiveContents Read();

    /// Adds or replaces these entries and last good states, in one transaction. It is durable when this returns; when it
    /// throws, the file has nothing of it once this object is gone.
    void Write(ArchiveContents::Files const& entries, ArchiveContents::Files const& lastGood);

    std::string Image() const;

private:
    void ReadTable(char const* table, ArchiveContents::Files& files, ArchiveContents& contents);
    void WriteTable(char const* table, ArchiveContents::Files const& files);
    bool HasTable(char const* name) const;
    std::string SchemaFault() const;

    SqliteFile file;
};

} // namespace ZuHost
