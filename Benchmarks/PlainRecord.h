#pragma once

#include "wApi/wTypes.h"

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZuBench
{

/// A simple implementation of a self-describing record: the constructor makes a schema for every value and a copy of
/// every text.
class PlainRecord final
{
public:
    PlainRecord();
    ~PlainRecord();

    PlainRecord(PlainRecord const&) = delete;
    PlainRecord& operator=(PlainRecord const&) = delete;

private:
    struct Entry
    {
        std::string text;
        double number = 0;
        bool flag = false;
    };

    struct Node
    {
        std::string text;
        uint64 number = 0;
        std::map<std::string, std::unique_ptr<Entry>> schema;
        std::list<std::function<void(Node&)>> observers;
    };

    void Register(std::string const& key, std::string const& title, char const* type);

    std::map<std::string, std::unique_ptr<Node>> members;
    std::vector<std::string> order;
};

} // namespace ZuBench
