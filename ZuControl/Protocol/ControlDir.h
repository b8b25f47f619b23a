#pragma once

#include "ZuControl/Export.h"

#include <memory>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuControl
{

class ControlMetrics;
class IControlManager;

namespace Protocol
{

/// The tree under `/controls`: it owns the resources and their routes.
///
/// Build it when all protocols are there and destroy it before them, on one thread. Its end waits for the requests that are
/// in it.
class ZUCONTROL_INTERNAL_API ControlDir final
{
public:
    /// The arguments outlive it. When a route cannot be registered, none is left behind.
    ControlDir(ZuRest::ResourceRouter& usedRouter, IControlManager& manager, ControlMetrics& metrics);
    ~ControlDir();

    ControlDir(ControlDir const&) = delete;
    ControlDir& operator=(ControlDir const&) = delete;

private:
    struct Resources;

    void RegisterRoutes();

    ZuRest::ResourceRouter& router;
    std::unique_ptr<Resources> const resources;
};

} // namespace Protocol

} // namespace ZuControl
