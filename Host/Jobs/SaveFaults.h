#pragma once

#include <memory>
#include <string>
#include <vector>

namespace ZuHost
{

/// Observes a save on the thread that made the object, and collects why services could not save their documents.
///
/// The module catches and logs the failure of a service or of the store, and goes on with the next service. Only the
/// log has the reason.
class SaveFaults final
{
public:
    SaveFaults();
    ~SaveFaults();

    SaveFaults(SaveFaults const&) = delete;
    SaveFaults& operator=(SaveFaults const&) = delete;

    /// One sentence for each failed service, in the order of the save.
    std::vector<std::string> const& Reasons() const;

private:
    class Sink;

    std::shared_ptr<Sink> const sink;
};

} // namespace ZuHost
