#include "Samples.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace ZuBench
{

Samples::Samples(std::string newName) : name(std::move(newName))
{
}

void Samples::Add(uint64 nanoseconds)
{
    values.push_back(nanoseconds);
    isSorted = false;
}

double Samples::Quantile(double share)
{
    if (values.empty())
    {
        return 0;
    }
    if (!isSorted)
    {
        std::sort(values.begin(), values.end());
        isSorted = true;
    }
    auto const rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size())));
    return static_cast<double>(values[std::clamp<std::size_t>(rank, 1, values.size()) - 1]) / 1000.0;
}

void Samples::Print()
{
    std::printf("%-44s %10.1f %10.1f %10.1f\n", name.c_str(), Quantile(0.5), Quantile(0.99), Quantile(1));
}

void Samples::PrintHead()
{
    std::printf("%-44s %10s %10s %10s\n", "microseconds", "median", "99 %", "largest");
}

} // namespace ZuBench
