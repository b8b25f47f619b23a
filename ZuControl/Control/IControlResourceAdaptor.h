#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl
{

/// Lets a protocol read any resource of the application, as text, with a bound on the wait.
///
/// A path is a route ("/health"), or a route, "#/" and a fragment that names a part of the document. A fragment without "/"
/// is a member of the document ("/controls/ModbusTcp#/enabled"); one with "/" is the place of a leaf, a value that is no
/// object and no array, as a JSON Pointer without its leading "/" ("/controls/ModbusTcp#/parameters/port").
class ZUCONTROL_API IControlResourceAdaptor
{
public:
    IControlResourceAdaptor() noexcept;
    virtual ~IControlResourceAdaptor(); // first of the slots that plug-ins call through: never move one

    /// Puts the JSON text of what `path` names into `output`: a string with its quotes, "null" for a part that is not there.
    ///
    /// Any thread may call. It waits for `timeout` microseconds at most and throws -998 then; the read runs on to its end, and
    /// a protocol that reads what waits for itself blocks the others that long. One read runs at a time, for all protocols:
    /// one that comes meanwhile is refused at once with -976. Throws -999 when the resource cannot be read: the log says why.
    /// `output` is left alone when this throws.
    virtual void Read(std::string const& path, std::string& output, uint64 timeout) = 0;
};

} // namespace ZuControl
