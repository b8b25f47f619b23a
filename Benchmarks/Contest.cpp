#include "Contest.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace ZuBench
{

namespace
{

double MedianOf(std::vector<double> values)
{
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

Contest::Contest(std::string newName) : name(std::move(newName))
{
}

Contest::~Contest() = default;

void Contest::Enter(std::string const& contender, Turn turn)
{
    contenders.push_back({name + "/" + contender, std::move(turn), {}});
}

void Contest::Run(uint64 rounds)
{
    for (uint64 round = 0; round <= std::max<uint64>(rounds, 1); ++round)
    {
        for (Contender& contender : contenders)
        {
            double const taken = contender.turn();
            if (round > 0)
            {
                contender.taken.push_back(taken);
            }
        }
    }
    for (Contender const& contender : contenders)
    {
        PrintFigure(contender.name, MedianOf(contender.taken));
    }
}

void PrintFigure(std::string const& name, double value)
{
    std::printf("figure %s %.6g\n", name.c_str(), value);
    std::fflush(stdout);
}

} // namespace ZuBench
