#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuApi/Properties/Value.h"
#include "ZuControl/Control/IPreviewedActions.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <memory>
#include <string>

namespace Zu::Params
{
class Group;
}

namespace PluginCommon
{

/// A text parameter that refuses longer texts. The schema shows the limit as "maxLength".
class LimitedText final : public Zu::Params::Value<std::string>
{
public:
    explicit LimitedText(uint32 newMostBytes);
    ~LimitedText() override;
    LimitedText(LimitedText const&) = delete;
    LimitedText& operator=(LimitedText const&) = delete;

    void CheckValidation(std::string const& candidate) override;

private:
    Zu::Properties::Value<uint32> maxLength;
};

/// The longest text in the arguments of an action, such as the name or the data source of an output.
inline constexpr std::size_t MOST_TEXT_BYTES = 256;

/// Throws `Zu::Status::BAD_ARGUMENT` if a text in `args` has more than MOST_TEXT_BYTES. The module does not validate the
/// arguments of an action.
void CheckTexts(Zu::Params::Group const& args);

/// The actions of `Target`, an action target. Refuses arguments with a text that is too long.
template <typename Target>
class LimitedActions final : public Target, public ZuControl::IPreviewedActions
{
public:
    using Target::Target;

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) override
    {
        CheckTexts(args);
        return Target::InvokeAction(id, args);
    }

    void CheckArguments(Zu::Params::Group const& args) const override
    {
        CheckTexts(args);
    }
};

} // namespace PluginCommon
