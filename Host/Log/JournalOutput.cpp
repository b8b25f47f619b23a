#include "Host/Log/JournalOutput.h"

#include "Host/Log/LogLine.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"

#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace ZuHost
{

namespace
{

/// The priority of syslog.
char const* PriorityText(LogLevel level)
{
    switch (level)
    {
    case LogLevel::INFO:
        return "6";
    case LogLevel::WARNING:
        return "4";
    default:
        return "3";
    }
}

/// A printable value has no line feed, which would begin another field.
void AppendField(std::string& fields, char const* name, std::string_view value)
{
    fields.append(name).append("=").append(Printable(value)).append("\n");
}

} // namespace

std::unique_ptr<ILogOutput> JournalOutput::OfStandardError(std::filesystem::path const& socket)
{
    if (!IsJournal(std::getenv("JOURNAL_STREAM"), STDERR_FILENO)) // NOLINT(concurrency-mt-unsafe): at the start
    {
        return nullptr;
    }
    try
    {
        return std::make_unique<JournalOutput>(socket);
    }
    catch (Zu::Exception const&) // the journal also reads standard error
    {
        return nullptr;
    }
}

bool JournalOutput::IsJournal(char const* journalStream, int descriptor)
{
    struct stat file
    {
    };
    return journalStream != nullptr && fstat(descriptor, &file) == 0 &&
           std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino) == journalStream;
}

JournalOutput::JournalOutput(std::filesystem::path const& socket)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string const path = socket.string();
    if (path.size() >= sizeof address.sun_path)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "the path of the journal, '%s', is too long", path.c_str());
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0 || connect(descriptor, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
    {
        close(descriptor);
        ZU_THROW(Zu::Status::NOT_FOUND, "no journal listens at '%s'", path.c_str());
    }
}

JournalOutput::~JournalOutput()
{
    close(descriptor);
}

int JournalOutput::Descriptor() const
{
    return descriptor;
}

std::string JournalOutput::Format(LogRecord const& record) const
{
    std::string fields;
    AppendField(fields, "PRIORITY", PriorityText(record.level));
    AppendField(fields, "SYSLOG_IDENTIFIER", "zucontrol-host");
    if (!record.isForUser)
    {
        AppendField(fields, "ZU_FUNCTION", record.label);
    }
    if (!record.service.empty())
    {
        AppendField(fields, "ZU_SERVICE", record.service);
    }
    if (record.status != Zu::Status::SUCCESS)
    {
        AppendField(fields, "ZU_STATUS", std::to_string(record.status));
    }
    if (!record.file.empty())
    {
        AppendField(fields, "CODE_FILE", record.file);
        AppendField(fields, "CODE_LINE", std::to_string(record.line));
    }
    AppendField(fields, "MESSAGE", record.text);
    return fields + "\n";
}

/// Each record is a datagram of its own. The journal takes the empty line at its end for the end of the record.
std::size_t JournalOutput::NextWrite(std::string_view records) const
{
    return records.find("\n\n") + 2;
}

std::string JournalOutput::StallSentence() const
{
    return "The journal does not keep up with the log; lines of the log wait or are lost.";
}

} // namespace ZuHost
