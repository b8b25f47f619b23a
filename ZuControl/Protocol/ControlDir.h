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
/// Build it when all protocols exist and destroy it before them, on the same thread. The destructor waits for the
/// requests that are running in the tree.
class ZUCONTROL_INTERNAL_API ControlDir final
{
public:
    /// The arguments outlive the object. When a route cannot be registered, all of its routes are deregistered.
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
