#pragma once

#include <cstdio>
#include <cstdlib>

/// Aborts unless `condition` holds. The fuzzer keeps the input that led to the abort.
#define ZU_FUZZ_CHECK(condition)                                                                                       \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(condition))                                                                                              \
        {                                                                                                              \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition);                        \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
