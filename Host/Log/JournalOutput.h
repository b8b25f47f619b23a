#pragma once

#include "Host/Log/ILogOutput.h"

#include <filesystem>
#include <memory>

namespace ZuHost
{

/// Writes the log to the journal of systemd, with fields by which `journalctl` filters: `ZU_SERVICE`, `ZU_FUNCTION` and
/// `ZU_STATUS` beside those of every program.
class JournalOutput final : public ILogOutput
{
public:
    static constexpr char const* SOCKET = "/run/systemd/journal/socket";

    /// An output to the journal if the system has connected standard error to it and listens at `socket`; else null.
    static std::unique_ptr<ILogOutput> OfStandardError(std::filesystem::path const& socket = SOCKET);

    /// Whether `journalStream`, the value of the environment variable JOURNAL_STREAM, names the file behind
    /// `descriptor`.
    static bool IsJournal(char const* journalStream, int descriptor);

    /// Throws `Zu::Status::NOT_FOUND` if no journal listens at `socket`.
    explicit JournalOutput(std::filesystem::path const& socket);
    ~JournalOutput() override;

    JournalOutput(JournalOutput const&) = delete;
    JournalOutput& operator=(JournalOutput const&) = delete;

    int Descriptor() const override;
    std::string Format(LogRecord const& record) const override; ///< one field a line, and an empty line
    std::size_t NextWrite(std::string_view records) const override;
    std::string StallSentence() const override;

private:
    int descriptor = -1;
};

} // namespace ZuHost
