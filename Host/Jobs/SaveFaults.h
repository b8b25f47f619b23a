#pragma once

#include <memory>
#include <string>
#include <vector>

namespace ZuHost
{

/// Listens to a save on this thread, for as long as it lives, and tells why services could not save their documents.
///
/// The module catches and logs what a service or the store throws, and goes on with the next service: the log is the only
/// place where the reason stands.
class SaveFaults final
{
public:
    SaveFaults();
    ~SaveFaults();

    SaveFaults(SaveFaults const&) = delete;
    SaveFaults& operator=(SaveFaults const&) = delete;

    /// One sentence for each service that failed, in the order of the save.
    std::vector<std::string> const& Reasons() const;

private:
    class Sink;

    std::shared_ptr<Sink> const sink;
};

} // namespace ZuHost
