#pragma once

#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

namespace ZuHost
{

/// What the `zu:` keys of documents mean, as pages for people: all of them at "/relations", one at "/relations/:rel".
class RelationsResource final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    RelationsResource();
    ~RelationsResource() override;

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;
};

} // namespace ZuHost
