#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuBench
{

/// Durations of one stage, and their statistics.
class Samples final
{
public:
    explicit Samples(std::string newName);

    void Add(uint64 nanoseconds);

    /// The duration that `share` (0 to 1) of the samples do not exceed, in microseconds.
    double Quantile(double share);

    /// One row: name, median, 99th percentile, largest, in microseconds.
    void Print();

    static void PrintHead();

private:
    std::string const name;
    std::vector<uint64> values;
    bool isSorted = false;
};

} // namespace ZuBench
