#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

// Texts end at their first NUL. A null text has the length 0 and equals only null; a search in it finds nothing.

/// Sets `size` bytes to `value`. Returns `Zu::Status::BAD_ARGUMENT` if `destination` is null and `size` is not 0.
ZUAPI_API wStatus wMemSet(void* destination, int value, std::size_t size);

ZUAPI_API bool wStrEquals(char const* left, char const* right);

/// The number of bytes before the NUL.
ZUAPI_API uint64 wStrLength(char const* text);

/// Returns the first occurrence of `pattern` in `text`, or null if there is none. An empty pattern is found at the
/// start.
ZUAPI_API char const* wStrFindFirst(char const* text, char const* pattern);

/// Appends `tail` to the text in a buffer of `capacity` bytes, including the NUL. If it does not fit, returns
/// `Zu::Status::WRONG_BUFFER_SIZE` and writes nothing. Returns `Zu::Status::BAD_ARGUMENT` for null and if the buffer
/// contains no NUL.
ZUAPI_API wStatus wStrCat(char* text, std::size_t capacity, char const* tail);
