#pragma once

#include "ZuRest/RequestProcessor.h"

namespace ZuHost
{

/// The resources as plug-ins read them: those that a viewer may read. A plug-in shows them to clients whose role the host
/// does not know.
///
/// Any thread may call; several threads may call at the same time.
class PluginView final : public ZuRest::RequestProcessor
{
public:
    /// The processor outlives this.
    explicit PluginView(ZuRest::RequestProcessor& usedProcessor);
    ~PluginView() override;
    PluginView(PluginView const&) = delete;
    PluginView& operator=(PluginView const&) = delete;

    /// As the processor. Throws `Zu::Status::NOT_FOUND` for a resource that a viewer may not read.
    nlohmann::json Read(std::string const& path, nlohmann::json const& request, std::string const& query) override;

private:
    ZuRest::RequestProcessor& processor;
};

} // namespace ZuHost
