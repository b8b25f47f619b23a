/// The REST service of the host beside what its web server can do at best: one process that serves the module's tree and, at
/// "/fixed", a string as long as the document of the protocol. rest_load.py asks for both.
///
/// usage: RestServer      prints where it listens and ends with its standard input

#include "Host/Http/HttpServer.h"
#include "Host/Module/DeploymentQuery.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Module/UpdateGate.h"
#include "Host/Resources/HostResources.h"
#include "ZuCommon/ProblemsManager.h"
#include "ZuControl/Control/ControlModule.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuPlugin/PluginManager.h"
#include "ZuRest/Answer.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuScan/ScanEngineManager.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

namespace
{

using namespace ZuHost;

constexpr char const* TYPE_NAME = "ModbusTcp";
constexpr char const* DOCUMENT_PATH = "/controls/ModbusTcp";

class FixedText final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    std::vector<std::string> ContentMethods() const override
    {
        return {"GET"};
    }

    ZuRest::Answer AnswerContent(ZuRest::Request const& /*request*/, ZuRest::RequestInfo const& /*info*/) override
    {
        return {ZuRest::HttpStatus::OK, "text/plain", text, {}};
    }

    std::string text;
};

/// The module with its resources, as the host builds it, but for the sensor.
class Bench final
{
public:
    Bench()
        : processor(router, HostResources::RELATION_TEMPLATE,
                    [this] { return std::make_shared<UpdateGate::Request>(updateGate); }),
          server(processor)
    {
        pluginManager.LoadFolder((std::filesystem::read_symlink("/proc/self/exe").parent_path() / "plugins").string());
        ZuControl::ControlModuleEnviron environ;
        environ.deployment = &deployment;
        environ.persistRegistry = &persistRegistry;
        environ.problems = &problems;
        environ.updateGate = &updateGate;
        environ.requestProcessor = &processor;
        module.emplace(pluginManager, router, environ);
        persistRegistry.Controls().GetInstance(TYPE_NAME).ResetInstance(true,
                                                                        ZuControl::IControlInstance::DataToResetAll);
        router.Register("/fixed", fixed);
        hostResources.emplace(router, problems, scanEngines);
        ZuRest::Request request;
        request.path = DOCUMENT_PATH;
        fixed.text = processor.Process(request).answer.body;

        HttpServer::Settings settings;
        settings.port = 0;
        server.Listen(settings);
        server.Start();
    }

    ~Bench()
    {
        server.Stop();
        router.Deregister("/fixed", false);
    }

    Bench(Bench const&) = delete;
    Bench& operator=(Bench const&) = delete;

    void Serve() const
    {
        std::printf("%s %zu\n", server.Endpoint().c_str(), fixed.text.size());
        std::fflush(stdout);
        std::string line;
        while (std::getline(std::cin, line))
        {
        }
    }

private:
    // As in the host, the order is that of their life.
    ZuCommon::ProblemsManager problems;
    DeploymentQuery deployment{Deployment::PHYSICAL_SENSOR};
    PersistRegistry persistRegistry;
    UpdateGate updateGate;
    ZuScan::Internal::ScanEngineManager scanEngines;
    ZuPlugin::PluginManager pluginManager;
    FixedText fixed;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor;
    std::optional<ZuControl::ControlModule> module;
    std::optional<HostResources> hostResources;
    HttpServer server;
};

} // namespace

int main()
{
    try
    {
        Bench().Serve();
        return 0;
    }
    catch (std::exception const& exception)
    {
        std::fprintf(stderr, "RestServer: %s\n", exception.what());
        return 1;
    }
}
