#pragma once

#include "wApi/wTypes.h"

#include <functional>
#include <string>
#include <vector>

namespace ZuBench
{

/// Runs contenders for the same work turn by turn, so that other load on the machine affects all of them alike.
///
/// For each contender two lines are printed: "figure NAME/CONTENDER VALUE" with the median of the turns, and
/// "figure NAME/CONTENDER:decile VALUE" with their lower decile; in nanoseconds unless the contender gives something else.
class Contest final
{
public:
    /// Does the work once. Returns the time for one piece of it.
    using Turn = std::function<double()>;

    explicit Contest(std::string newName);
    ~Contest();

    Contest(Contest const&) = delete;
    Contest& operator=(Contest const&) = delete;

    void Enter(std::string const& contender, Turn turn);

    /// Runs one turn of each contender that is not counted, then `rounds` turns of each.
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

/// Prints a figure in the format that the table of goals reads.
void PrintFigure(std::string const& name, double value);

} // namespace ZuBench
