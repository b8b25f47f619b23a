#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl
{

/// Lets a protocol read any resource of the application, as text, with a bound on the wait.
///
/// Ownership: the module owns the adaptor, which outlives the protocols. Threads and states: any.
///
/// A path is a route ("/health"), or a route, "#/" and a fragment that names a part of the document. A fragment without
/// "/" is a member of the document ("/controls/ModbusTcp#/enabled"); one with "/" is the place of a leaf, a value that
/// is no object and no array, as a JSON Pointer without its leading "/" ("/controls/ModbusTcp#/parameters/port").
class ZUCONTROL_API IControlResourceAdaptor
{
public:
    IControlResourceAdaptor() noexcept;
    virtual ~IControlResourceAdaptor(); // first of the slots that plug-ins call through: never move one

    /// Stores the JSON text of the resource or part that `path` names in `output`: a string with its quotes, "null" for
    /// a part that does not exist. An exception leaves `output` unchanged.
    ///
    /// Blocks for `timeout` microseconds at most and then throws `Zu::Status::NOT_OFFERED`. The read itself continues
    /// to its end: a protocol that reads a resource which waits for this protocol blocks the reads of all protocols for
    /// that long. One read runs at a time, for all protocols: throws `Zu::Status::BUSY` at once while another one runs.
    /// Throws `Zu::Status::NOT_FOUND` when the resource cannot be read; the log says why.
    virtual void Read(std::string const& path, std::string& output, uint64 timeout) = 0;
};

} // namespace ZuControl
