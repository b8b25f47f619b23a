#pragma once

/// Exports a name from libZuApi.
#define ZUAPI_API __attribute__((visibility("default")))

/// Exports a name from libZuPlatform.
#define ZUPLATFORM_API __attribute__((visibility("default")))

/// Makes the compiler check a printf format against its arguments. Only clang checks: GCC's -Wpedantic refuses "%1$u".
#ifdef __clang__
#define ZU_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define ZU_PRINTF_FORMAT(formatIndex, firstArgument)
#endif
