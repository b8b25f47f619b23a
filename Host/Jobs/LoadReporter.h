#pragma once

#include "Host/Jobs/LoadReport.h"
#include "Host/Store/ArchiveFile.h"

#include <memory>

namespace ZuHost
{

/// Observes a load on the thread that made the object, from construction to destruction, and reports the result.
///
/// A log line for the user belongs to the protocol of the last document looked up. To find the parts that were taken
/// over, the reporter compares the loaded documents with the documents of a save after the load.
class LoadReporter final
{
public:
    LoadReporter();
    ~LoadReporter();

    LoadReporter(LoadReporter const&) = delete;
    LoadReporter& operator=(LoadReporter const&) = delete;

    /// The load asks for the document `name`.
    void NoteLookUp(std::string const& name);

    /// `now`: the documents that a save gives after the load.
    LoadReport Report(JobName const& job, ArchiveFile::Documents const& loaded,
                      ArchiveContents::Files const& now) const;

private:
    class Sink;

    std::shared_ptr<Sink> const sink;
};

} // namespace ZuHost
