#pragma once

#include "Host/Console/ConsoleFiles.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

#include <span>
#include <string>
#include <vector>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// "/ui/:file": the files of the console, the page that shows the sensor in a browser. "/ui" leads to the page.
///
/// The files need no caller: they are the same for everybody and have no data. The page reads the data over REST.
class ConsolePages final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    static constexpr char const* START_FILE = "index.html";

    /// Registers the route. The router outlives the pages. Without files every request is answered with 404 and the
    /// reason.
    explicit ConsolePages(ZuRest::ResourceRouter& usedRouter,
                          std::span<ConsoleFiles::File const> newFiles = ConsoleFiles::All());
    ~ConsolePages() override; ///< removes the route

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    struct Entry
    {
        ConsoleFiles::File file;
        std::string tag;
    };

    ZuRest::ResourceRouter& router;
    std::vector<Entry> entries;
};

} // namespace ZuHost
