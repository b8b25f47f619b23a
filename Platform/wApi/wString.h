#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

// Texts end at their first NUL. A null text has the length 0, equals null alone, and nothing is found in it.

/// Sets `size` bytes to `value`. -997 for null with a size.
ZUAPI_API wStatus wMemSet(void* destination, int value, std::size_t size);

ZUAPI_API bool wStrEquals(char const* left, char const* right);

/// Bytes before the NUL.
ZUAPI_API uint64 wStrLength(char const* text);

/// Where `pattern` first begins in `text`; null when it does not. An empty pattern is found at the start.
ZUAPI_API char const* wStrFindFirst(char const* text, char const* pattern);

/// Appends `tail` to the text in a buffer of `capacity` bytes, the NUL included. -992 when it does not fit: nothing is
/// written then. -997 for null and for a buffer in which no text ends.
ZUAPI_API wStatus wStrCat(char* text, std::size_t capacity, char const* tail);
