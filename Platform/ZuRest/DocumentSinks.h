#pragma once

#include "ZuApi/JsonTextWriter.h"
#include "ZuRest/JsonText.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ZuRest
{

/// Receives a document and builds text. Resources may pass parts that are JSON text already.
class TextSink final
{
public:
    static constexpr bool IS_TEXT = true;
    using Mark = std::size_t;

    void BeginObject()
    {
        writer.BeginObject();
    }

    void NextMember(std::string const& key)
    {
        writer.NextMember(key);
    }

    void EndObject()
    {
        writer.EndObject();
    }

    void BeginArray()
    {
        writer.BeginArray();
    }

    void NextElement()
    {
        writer.NextElement();
    }

    void EndArray()
    {
        writer.EndArray();
    }

    void Put(nlohmann::json const& value)
    {
        JsonText::Append(value, writer);
    }

    void PutString(std::string const& value)
    {
        writer.WriteString(value);
    }

    void PutText(std::string_view json)
    {
        writer.WriteJson(json);
    }

    /// Returns the position of the next value.
    Mark Here() const noexcept
    {
        return writer.Size();
    }

    /// Removes the output after the mark.
    void GoBack(Mark mark) noexcept
    {
        writer.Cut(mark);
    }

    std::string Take()
    {
        return writer.Take();
    }

private:
    Zu::Properties::JsonTextWriter writer;
};

/// Receives a document and builds a JSON tree. Strings keep the bytes that the resources gave.
class TreeSink final
{
public:
    static constexpr bool IS_TEXT = false;

    TreeSink() = default;
    TreeSink(TreeSink const&) = delete;
    TreeSink& operator=(TreeSink const&) = delete;

    struct Mark
    {
        std::size_t depth;
        nlohmann::json* next;
    };

    void BeginObject()
    {
        Open(nlohmann::json::object());
    }

    void NextMember(std::string const& key)
    {
        next = &(*open.back())[key];
    }

    void EndObject()
    {
        open.pop_back();
    }

    void BeginArray()
    {
        Open(nlohmann::json::array());
    }

    void NextElement()
    {
        next = &open.back()->emplace_back();
    }

    void EndArray()
    {
        open.pop_back();
    }

    void Put(nlohmann::json const& value)
    {
        *next = value;
    }

    void PutString(std::string const& value)
    {
        *next = value;
    }

    /// As in `TextSink`. `GoBack` leaves the value at the mark in place; the next value overwrites it.
    Mark Here() const noexcept
    {
        return {open.size(), next};
    }

    void GoBack(Mark const& mark) noexcept
    {
        open.resize(mark.depth);
        next = mark.next;
    }

    nlohmann::json Take()
    {
        return std::move(root);
    }

private:
    void Open(nlohmann::json value)
    {
        *next = std::move(value);
        open.push_back(next);
    }

    nlohmann::json root;
    nlohmann::json* next = &root;      // the place of the next value
    std::vector<nlohmann::json*> open; // the open objects and arrays; each is the last value of the one before it
};

} // namespace ZuRest
