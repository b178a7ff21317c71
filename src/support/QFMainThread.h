#pragma once

#include <functional>

/// Runs work on the application's main thread and returns when it is done: a direct
/// call when already there (or when there is no application object), else a
/// blocking queued call, so a worker thread may touch what the main thread owns.
void performOnMainThreadAndWait(const std::function<void()> &work);
