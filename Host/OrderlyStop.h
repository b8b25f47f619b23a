#pragma once

#include "wApi/wTypes.h"

#include <functional>

/// The orderly stop of the process, which SIGTERM or SIGINT asks for.
///
/// The first of these signals starts a clock. If the process has not ended when the limit is over, it writes a line to
/// standard error that names the step in which it hangs, and ends with status 1.
/// The signal handlers run on the main thread: the system prefers it, since it never blocks the signals. Any thread may
/// call, except `Install` and `Wait`, which belong to the main thread.
namespace ZuHost::OrderlyStop
{

inline constexpr uint32 DEFAULT_LIMIT_SECONDS = 30;

/// Handles the signals from now on. Call it first in `main`.
void Install();

/// Changes the limit for a stop that no signal has asked for yet.
void SetLimit(uint32 seconds);

/// Names the step that runs from now on, as the end of the sentence "it hangs while ...". Keeps the pointer.
void SetStep(char const* literal);

/// Whether a signal has asked for a stop.
bool IsRequested();

/// `Wait` calls `handler` after each SIGHUP, also after one that came before. Call it before `Wait`, on its thread.
void SetHangUpHandler(std::function<void()> handler);

/// Returns when a signal asks for a stop, or has asked for one before.
void Wait();

} // namespace ZuHost::OrderlyStop
