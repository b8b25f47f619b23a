#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

namespace ZuTest
{

/// An enumeration of one byte, as a plug-in might have.
enum class Colour : uint8
{
    RED = 0,
    GREEN = 1,
    BLUE = 200,
};

/// A record with an array of records, a nested record and an enumeration.
struct Stroke : Zu::Params::Group
{
    Stroke() : Group("Stroke")
    {
        Register("width", "Width", width);
        Register("name", "", name);
    }

    Zu::Params::Value<uint16> width{1};
    Zu::Params::Value<std::string> name;
};

/// A record derived from a record.
struct Brush : Stroke
{
    Brush()
    {
        Register("hard", "Hard", hard);
    }

    Zu::Params::Value<bool> hard;
};

struct Palette : Zu::Params::Group
{
    Palette()
    {
        Register("colour", "Colour", colour);
        Register("strokes", "Strokes", strokes);
        Register("pen", "Pen", pen);
        colour.AddOption(Colour::RED, "Red").AddOption(Colour::BLUE, "Blue");
    }

    Zu::Params::Enum<Colour> colour;
    Zu::Params::Array<Stroke> strokes;
    Stroke pen;
};

} // namespace ZuTest

ZU_DECLARE_ENUM_VALUE(ZuTest::Colour);
