#include "Contest.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace ZuBench
{

namespace
{

/// The value below which this share of the values lies.
double QuantileOf(std::vector<double> values, double share)
{
    auto const place = values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size()));
    std::nth_element(values.begin(), place, values.end());
    return *place;
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
        PrintFigure(contender.name, QuantileOf(contender.taken, 0.5));
        PrintFigure(contender.name + ":decile", QuantileOf(contender.taken, 0.1));
    }
}

void PrintFigure(std::string const& name, double value)
{
    std::printf("figure %s %.6g\n", name.c_str(), value);
    std::fflush(stdout);
}

} // namespace ZuBench
