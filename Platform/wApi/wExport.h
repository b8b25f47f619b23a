#pragma once

/// What libZuApi offers to everybody.
#define ZUAPI_API __attribute__((visibility("default")))

/// What libZuPlatform offers to everybody.
#define ZUPLATFORM_API __attribute__((visibility("default")))

/// The compiler checks format and arguments against each other. clang only: GCC's -Wpedantic refuses "%1$u".
#ifdef __clang__
#define ZU_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define ZU_PRINTF_FORMAT(formatIndex, firstArgument)
#endif
