#pragma once

#include "wApi/wTypes.h"

#include <functional>
#include <string>
#include <vector>

namespace ZuBench
{

/// Contenders that do the same work turn by turn: what else the machine does, it does to all of them.
///
/// The median of the turns is printed, a line for each: "figure NAME/CONTENDER VALUE", in nanoseconds unless the
/// contender gives something else.
class Contest final
{
public:
    /// Does the work once and tells what one piece of it took.
    using Turn = std::function<double()>;

    explicit Contest(std::string newName);
    ~Contest();

    Contest(Contest const&) = delete;
    Contest& operator=(Contest const&) = delete;

    void Enter(std::string const& contender, Turn turn);

    /// One turn of each comes ahead that does not count.
    void Run(uint64 rounds);

private:
    struct Contender
    {
        std::string name;
        Turn turn;
        std::vector<double> taken;
    };

    std::string const name;
    std::vector<Contender> contenders;
};

/// The line by which the table of all goals learns of a figure.
void PrintFigure(std::string const& name, double value);

} // namespace ZuBench
