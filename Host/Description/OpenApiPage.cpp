#include "Host/Description/OpenApiPage.h"

#include "ZuApi/Guard.h"
#include "ZuRest/Answer.h"
#include "ZuRest/EntityTag.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Request.h"
#include "ZuRest/ResourceRouter.h"

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;

namespace
{

constexpr char const* PATH_OF_DESCRIPTION = "/openapi.json";

} // namespace

OpenApiPage::OpenApiPage(ZuRest::ResourceRouter& usedRouter, OpenApi::Service const& service) : router(usedRouter)
{
    router.Register(PATH_OF_DESCRIPTION, *this);
    try
    {
        text = ZuRest::JsonText::Write(OpenApi::Describe(service));
        tag = ZuRest::EntityTag::Of(text);
    }
    catch (...)
    {
        router.Deregister(PATH_OF_DESCRIPTION, false);
        throw;
    }
}

OpenApiPage::~OpenApiPage()
{
    ZU_GUARD_DESTRUCTOR([this] { router.Deregister(PATH_OF_DESCRIPTION, false); });
}

std::vector<std::string> OpenApiPage::ContentMethods() const
{
    return {"GET"};
}

ZuRest::Answer OpenApiPage::AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& /*info*/)
{
    if (ZuRest::EntityTag::IsNamed(request.ifNoneMatch, tag))
    {
        return {HttpStatus::NOT_MODIFIED, "", "", {{"ETag", tag}}};
    }
    return {HttpStatus::OK, "application/json", text, {{"ETag", tag}, {"Cache-Control", "no-cache"}}};
}

} // namespace ZuHost
