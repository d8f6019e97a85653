#pragma once

/** True on the thread that runs the loop (before start-up: on the main thread). Thread: any. */
bool IsInGameThread();
