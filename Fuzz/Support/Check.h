#pragma once

#include <cstdio>
#include <cstdlib>

/// What must hold for every input. The fuzzer keeps the input that breaks it.
#define ZU_FUZZ_CHECK(condition)                                                                                       \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(condition))                                                                                              \
        {                                                                                                              \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition);                        \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
