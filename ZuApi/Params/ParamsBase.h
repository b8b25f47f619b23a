#pragma once

#include "ZuApi/Params/NumberAttribute.h"
#include "ZuApi/Params/TextAttribute.h"
#include "ZuApi/Properties/Value.h"
#include "wApi/wExport.h"

#include <memory>
#include <string>

namespace Zu::Params
{

/// What every parameter has beside its value: a title, a place in the order of display, and the marks that say whether it
/// takes writes and whether it is shown. A second base, without virtual operations.
///
/// The marks show in the schema once they are enabled. "used" and "visibility" exclude each other.
class ZUAPI_API ParamsBase
{
public:
    TextAttribute title;
    NumberAttribute<bool> readOnly; ///< while enabled and true, a validated write is ignored; may change at any time
    NumberAttribute<bool> used;
    std::unique_ptr<Properties::Value<uint32>> visibility; ///< a bit mask; null until enabled
    NumberAttribute<uint32> sortOrder;

    ParamsBase(ParamsBase const&) = delete;
    ParamsBase& operator=(ParamsBase const&) = delete;

    /// Clears the mask; -997 when visibility is not enabled.
    void ClearVisibility();

    bool IsReadOnlyEnabled() const noexcept
    {
        return readOnlyEnabled;
    }

    bool IsUsedEnabled() const noexcept
    {
        return usedEnabled;
    }

    bool IsVisibilityEnabled() const noexcept
    {
        return visibilityEnabled;
    }

protected:
    ParamsBase() noexcept;
    ~ParamsBase();

    /// The read-only test: a write to a read-only parameter is logged and marked as rejected; it throws nothing.
    void CheckValidation();

    /// True once after a rejected write, for the read that follows it.
    bool TakeReadOnlyRejected() noexcept;

    bool IsReadOnlyRejected() const noexcept
    {
        return readOnlyRejected;
    }

    /// Logs `logFormat` for the person at the screen and throws -997 with `exceptionFormat`; both are given the name of
    /// the parameter. `label` is the function that refuses.
    [[noreturn]] void Refuse(int line, char const* file, char const* label, char const* logFormat,
                             char const* exceptionFormat) const;

    /// The title, or what stands for an empty one in messages.
    char const* Name() const noexcept;

    // The owner hands over its schema where the marks may have to change it: null while it has not been made.

    /// Enters "title" and "sortOrder", and the marks that are to show.
    void EnterParams(Properties::Structure& schema);

    void EnableReadOnly(Properties::Structure* schema);

    /// -997 for true when visibility is enabled.
    void EnableUsed(Properties::Structure* schema, bool enable);

    /// -997 for true when used is enabled; nothing when it is so already.
    void EnableVisibility(Properties::Structure* schema, bool enable);

    /// Copies attributes and marks, and enters "readOnly" and "used" when they are enabled now: -997 when visibility is
    /// enabled beside used. "visibility" is not entered: that is left to the constructor of the class. A mark that the
    /// other lacks is no longer enabled, but stays in the schema.
    void CopyParams(Properties::Structure* schema, ParamsBase const& other);

private:
    bool readOnlyRejected : 1 = false;
    bool readOnlyEnabled : 1 = false;
    bool usedEnabled : 1 = false;
    bool visibilityEnabled : 1 = false;
    // Which marks show in the schema; a copy can part this from what is enabled.
    bool readOnlyEntered : 1 = false;
    bool usedEntered : 1 = false;
    bool visibilityEntered : 1 = false;
};

} // namespace Zu::Params
