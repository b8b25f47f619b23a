#include "Host/Store/ArchiveFile.h"

#include "Host/Store/Archive.h"
#include "Host/Store/DataFolder.h"
#include "Host/Store/DocumentCheck.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"

#include <functional>
#include <utility>

namespace ZuHost
{

namespace
{

using Files = ArchiveContents::Files;
using Access = SqliteFile::Access;

constexpr std::string_view REJECTED = "rejected/"; // folder of replaced documents that were never taken over

/// Whether an entry is a document and not another file that a person has added.
bool IsDocument(std::string_view name)
{
    return (name.starts_with("controls/") || name.starts_with("sensor/")) && name.ends_with(".json");
}

/// `readLastGood` is called only for a document that has a fault.
void TakeDocument(ArchiveFile::Documents& documents, ArchiveContents& contents, std::string const& name,
                  std::string const& file, std::function<Files&()> const& readLastGood)
{
    auto const entry = contents.entries.find(name);
    auto const unread = contents.faults.find(name);
    std::string fault = unread != contents.faults.end() ? unread->second : "it is not there any more";
    if (entry != contents.entries.end())
    {
        fault = DocumentCheck::FaultOf(entry->second);
        if (fault.empty())
        {
            documents.files.insert(contents.entries.extract(entry));
            return;
        }
    }
    auto lastGood = readLastGood().extract(name);
    bool const isThere = !lastGood.empty() && DocumentCheck::FaultOf(lastGood.mapped()).empty();
    documents.faults.push_back(
        "The document '" + name + "' of '" + file + "' cannot be read (" + fault + "). " +
        (isThere ? "The last good one is used in its place." : "There is no other in its place."));
    if (isThere)
    {
        documents.fromLastGood.insert(name);
        documents.files.insert(std::move(lastGood));
    }
}

/// The names of all documents in `contents`.
std::set<std::string> NamesOf(ArchiveContents const& contents)
{
    std::set<std::string> names;
    auto const add = [&names](Files const& files) {
        for (auto const& [name, bytes] : files)
        {
            if (IsDocument(name))
            {
                names.insert(name);
            }
        }
    };
    add(contents.entries);
    add(contents.faults);
    add(contents.lastGood);
    return names;
}

/// Describes a fault of the file as a whole; empty if there is none.
std::string FaultOf(Archive& archive, ArchiveContents const& contents)
{
    if (std::string fault = archive.FindFault(); !fault.empty())
    {
        return fault;
    }
    if (!archive.HasTable())
    {
        return "it has no table 'sqlar'";
    }
    auto const whole = contents.faults.find("");
    return whole != contents.faults.end() ? whole->second : "";
}

/// Throws when a table that holds `stored` could not be read again after adding `written`.
void CheckBounds(std::filesystem::path const& path, Files const& stored, Files const& written)
{
    uint64 count = written.size();
    uint64 bytes = 0;
    for (auto const& [name, content] : written)
    {
        bytes += content.size();
    }
    for (auto const& [name, content] : stored)
    {
        if (!written.contains(name))
        {
            ++count;
            bytes += content.size();
        }
    }
    if (count > Archive::MAX_ENTRIES || bytes > Archive::MAX_TOTAL_BYTES)
    {
        ZU_THROW(Zu::Status::FAILURE,
                 "The file '%s' would hold %llu files of %llu bytes in all; it may hold %llu of %llu",
                 path.filename().c_str(), static_cast<unsigned long long>(count),
                 static_cast<unsigned long long>(bytes), static_cast<unsigned long long>(Archive::MAX_ENTRIES),
                 static_cast<unsigned long long>(Archive::MAX_TOTAL_BYTES));
    }
}

bool Holds(Files const& files, std::string const& name, std::string const& bytes)
{
    auto const found = files.find(name);
    return found != files.end() && found->second == bytes;
}

} // namespace

ArchiveFile::ArchiveFile(DataFolder const& usedFolder, std::filesystem::path newPath)
    : folder(usedFolder), path(std::move(newPath))
{
}

ArchiveFile::~ArchiveFile() = default;
ArchiveFile::ArchiveFile(ArchiveFile&&) noexcept = default;

bool ArchiveFile::Exists() const
{
    std::error_code error;
    auto const bytes = std::filesystem::file_size(path, error);
    return !error && bytes != 0; // a crash while the file was being made leaves an empty one
}

ArchiveFile::Documents ArchiveFile::Read()
{
    std::string const file = path.filename().string();
    Documents documents;
    try
    {
        Archive archive(path, Access::READ);
        ArchiveContents contents = archive.ReadEntries();
        std::string const fault = FaultOf(archive, contents);
        contents.faults.erase("");
        isDamaged = !fault.empty();
        bool hasLastGood = false;
        auto const readLastGood = [&]() -> Files& {
            if (!std::exchange(hasLastGood, true))
            {
                contents.lastGood = archive.ReadLastGood();
            }
            return contents.lastGood;
        };
        if (isDamaged)
        {
            documents.faults.push_back("The file '" + file + "' is damaged (" + fault + ").");
            // A document that has only a last good state may have lost its entry. In a sound file a person removed it.
            readLastGood();
        }
        for (std::string const& name : NamesOf(contents))
        {
            TakeDocument(documents, contents, name, file, readLastGood);
        }
    }
    catch (Zu::Exception const& exception)
    {
        isDamaged = exception.Status() == Zu::Status::BAD_FORMAT;
        throw;
    }
    if (isDamaged && documents.files.empty())
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "%s", documents.faults.front().c_str());
    }
    return documents;
}

void ArchiveFile::Save(Files const& files, std::set<std::string> const& due, bool keepsReplaced)
{
    if (!isDamaged)
    {
        try
        {
            Update(files, due, keepsReplaced);
            return;
        }
        catch (Zu::Exception const& exception)
        {
            if (exception.Status() != Zu::Status::BAD_FORMAT)
            {
                throw;
            }
            isDamaged = true; // damaged since the last read
        }
    }
    Rebuild(files);
}

void ArchiveFile::Replace(Files const& files)
{
    folder.InstallCopy(Make(files), path);
    isDamaged = false;
}

void ArchiveFile::CopyTo(std::filesystem::path const& target) const
{
    ArchiveFile(folder, target).Replace(Archive(path, Access::READ).ReadEntries().entries);
}

std::string ArchiveFile::Image() const
{
    return Archive(path, Access::READ).Image();
}

Files ArchiveFile::Checked(std::string const& name, std::string_view bytes)
{
    ArchiveContents contents;
    std::string fault;
    try
    {
        Archive archive(name, bytes);
        fault = FaultOf(archive, {}); // before a row is read
        if (fault.empty())
        {
            contents = archive.ReadEntries();
        }
    }
    catch (Zu::Exception const& exception)
    {
        fault = exception.what();
    }
    for (auto const& [entry, bytesOfEntry] : contents.entries)
    {
        std::string const wrong = IsDocument(entry) ? DocumentCheck::FaultOf(bytesOfEntry) : "";
        if (!wrong.empty())
        {
            contents.faults.emplace(entry, wrong);
        }
    }
    if (fault.empty() && !contents.faults.empty())
    {
        auto const& [entry, wrong] = *contents.faults.begin();
        fault = entry.empty() ? wrong : "'" + entry + "': " + wrong;
    }
    if (!fault.empty())
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "What was sent is no job: %s", fault.c_str());
    }
    return std::move(contents.entries);
}

void ArchiveFile::Update(Files const& files, std::set<std::string> const& due, bool keepsReplaced)
{
    Archive archive(path, Access::CREATE);
    ArchiveContents const stored = archive.Read();
    if (stored.faults.contains(""))
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "%s", stored.faults.at("").c_str());
    }
    bool const isNew = !archive.HasTable();
    Files entries;
    Files lastGood;
    for (auto const& [name, bytes] : files)
    {
        if (!isNew && !due.contains(name))
        {
            continue;
        }
        auto const replaced = stored.entries.find(name);
        if (replaced == stored.entries.end() || replaced->second != bytes)
        {
            entries.emplace(name, bytes);
            if (keepsReplaced && replaced != stored.entries.end())
            {
                entries.emplace(std::string(REJECTED) + name, replaced->second);
            }
        }
        if (!Holds(stored.lastGood, name, bytes))
        {
            lastGood.emplace(name, bytes);
        }
    }
    CheckBounds(path, stored.entries, entries);
    CheckBounds(path, stored.lastGood, lastGood);
    if (isNew || !entries.empty() || !lastGood.empty()) // a new job without documents also gets its table
    {
        archive.Write(entries, lastGood);
    }
}

void ArchiveFile::Rebuild(Files const& files)
{
    ArchiveContents contents;
    try
    {
        contents = Archive(path, Access::READ).Read();
    }
    catch (Zu::Exception const&) // nothing can be read; the kept file has all of it
    {
    }
    contents.entries.merge(contents.lastGood); // keep every entry that can be read, documents or not
    for (auto const& [name, bytes] : files)
    {
        contents.entries.insert_or_assign(name, bytes);
    }
    CheckBounds(path, {}, contents.entries); // before the damaged file is kept
    std::filesystem::path const kept = folder.KeepDamaged(path);
    folder.Install(Make(contents.entries), path);
    isDamaged = false;
    ZU_LOG_USER_WARNING("The damaged file '%1$s' is kept as '%2$s'; a new one has taken its place",
                        path.filename().c_str(), kept.filename().c_str());
}

std::filesystem::path ArchiveFile::Make(Files const& files) const
{
    CheckBounds(path, {}, files);
    if (Exists())
    {
        try
        {
            Archive(path, Access::WRITE).HasTable(); // rolls back a transaction that a crash interrupted
        }
        catch (Zu::Exception const& exception)
        {
            if (exception.Status() != Zu::Status::BAD_FORMAT)
            {
                throw;
            }
        }
    }
    std::filesystem::path made = folder.NewFile();
    Archive(made, Access::CREATE).WriteGood(files, IsDocument);
    return made;
}

} // namespace ZuHost
