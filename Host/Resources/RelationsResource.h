#pragma once

#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

namespace ZuHost
{

/// Pages for people that explain the `zu:` keys of documents: all keys at "/relations", one key at "/relations/:rel".
class RelationsResource final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    RelationsResource();
    ~RelationsResource() override;

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;
};

} // namespace ZuHost
