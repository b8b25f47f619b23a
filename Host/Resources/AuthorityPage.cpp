#include "Host/Resources/AuthorityPage.h"

#include "ZuApi/Guard.h"
#include "ZuRest/Answer.h"
#include "ZuRest/ResourceRouter.h"

#include <utility>

namespace ZuHost
{

namespace
{

constexpr char const* ROUTE = "/authority";

} // namespace

AuthorityPage::AuthorityPage(ZuRest::ResourceRouter& usedRouter, std::string newPem)
    : router(usedRouter), pem(std::move(newPem))
{
    router.Register(ROUTE, *this);
}

AuthorityPage::~AuthorityPage()
{
    ZU_GUARD_DESTRUCTOR([this] { router.Deregister(ROUTE, false); });
}

std::vector<std::string> AuthorityPage::ContentMethods() const
{
    return {"GET"};
}

ZuRest::Answer AuthorityPage::AnswerContent(ZuRest::Request const& /*request*/, ZuRest::RequestInfo const& /*info*/)
{
    ZuRest::Answer answer;
    answer.contentType = "application/x-pem-file";
    answer.body = pem;
    answer.headers.emplace_back("Content-Disposition", "attachment; filename=\"zucontrol-authority.pem\"");
    return answer;
}

} // namespace ZuHost
