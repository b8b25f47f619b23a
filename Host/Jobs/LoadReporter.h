#pragma once

#include "Host/Jobs/LoadReport.h"
#include "Host/Store/ArchiveFile.h"

#include <memory>

namespace ZuHost
{

/// Watches a load on this thread, for as long as it lives, and tells what became of it.
///
/// What the user is told belongs to the protocol whose document was asked for last. What was taken over shows afterwards,
/// when the documents as they would be saved are compared with those that were loaded.
class LoadReporter final
{
public:
    LoadReporter();
    ~LoadReporter();

    LoadReporter(LoadReporter const&) = delete;
    LoadReporter& operator=(LoadReporter const&) = delete;

    /// The document `name` has been asked for.
    void NoteLookUp(std::string const& name);

    /// `now` is what a save gives behind the load.
    LoadReport Report(std::string job, ArchiveFile::Documents const& loaded, ArchiveContents::Files const& now) const;

private:
    class Sink;

    std::shared_ptr<Sink> const sink;
};

} // namespace ZuHost
