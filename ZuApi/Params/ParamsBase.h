#pragma once

#include "ZuApi/Params/NumberAttribute.h"
#include "ZuApi/Params/TextAttribute.h"
#include "ZuApi/Properties/Value.h"
#include "wApi/wExport.h"

#include <memory>
#include <string>

namespace Zu::Params
{

/// The attributes of every parameter beside its value: a title, a sort order for display, and the marks that control
/// whether it accepts writes and whether it is shown. It is a second base without virtual operations.
///
/// A mark appears in the schema once it is enabled. "used" and "visibility" exclude each other.
class ZUAPI_API ParamsBase
{
public:
    TextAttribute title;
    NumberAttribute<bool> readOnly; ///< while enabled and true, validated writes are ignored; may change at any time
    NumberAttribute<bool> used;
    std::unique_ptr<Properties::Value<uint32>> visibility; ///< a bit mask; null until enabled
    NumberAttribute<uint32> sortOrder;

    ParamsBase(ParamsBase const&) = delete;
    ParamsBase& operator=(ParamsBase const&) = delete;

    /// Sets the mask to 0. Throws `Zu::Status::BAD_ARGUMENT` if visibility is not enabled.
    void ClearVisibility();

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

    /// Checks the read-only mark. A write to a read-only parameter is logged and marked as rejected. Throws nothing.
    void CheckValidation();

    /// Returns true once after a rejected write, for the read that follows it.
    bool TakeReadOnlyRejected() noexcept;

    bool IsReadOnlyRejected() const noexcept
    {
        return readOnlyRejected;
    }

    /// Logs `logFormat` as a user error and throws `Zu::Status::BAD_ARGUMENT` with `exceptionFormat`. The argument of
    /// both formats is the name of the parameter. `label` is the qualified name of the refusing function.
    [[noreturn]] void Refuse(int line, char const* file, char const* label, char const* logFormat,
                             char const* exceptionFormat) const;

    /// Returns the title, or "<unnamed>" if it is empty; for messages.
    char const* Name() const noexcept;

    // The operations below get the owner's schema, or null if the schema has not been created yet.

    /// Adds "title", "sortOrder" and the marks that are to be shown to the schema.
    void EnterParams(Properties::Structure& schema);

    void EnableReadOnly(Properties::Structure* schema);

    /// Throws `Zu::Status::BAD_ARGUMENT` for true while visibility is enabled.
    void EnableUsed(Properties::Structure* schema, bool enable);

    /// Throws `Zu::Status::BAD_ARGUMENT` for true while used is enabled. Does nothing if the state does not change.
    void EnableVisibility(Properties::Structure* schema, bool enable);

    /// Copies attributes and marks. Adds "readOnly" and "used" to the schema if they are enabled now; throws
    /// `Zu::Status::BAD_ARGUMENT` if used and visibility are both enabled. It does not add "visibility": only the
    /// constructor of the class does. A mark that `other` lacks is no longer enabled but stays in the schema.
    void CopyParams(Properties::Structure* schema, ParamsBase const& other);

private:
    bool readOnlyRejected : 1 = false;
    bool readOnlyEnabled : 1 = false;
    bool usedEnabled : 1 = false;
    bool visibilityEnabled : 1 = false;
    // The marks that the schema shows. After a copy they may differ from the enabled marks.
    bool readOnlyEntered : 1 = false;
    bool usedEntered : 1 = false;
    bool visibilityEntered : 1 = false;
};

} // namespace Zu::Params
