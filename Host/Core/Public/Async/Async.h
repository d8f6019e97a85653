#pragma once

#include "Async/TaskGraphInterfaces.h"
#include "Templates/Function.h"

/**
 * Queues a task. It never runs inside this call, also not on the thread it is meant for. Those of the game thread run in call
 * order, those of the background several at a time. Tasks that are pending when the program ends are dropped.
 * @note Thread: any.
 */
void AsyncTask(ENamedThreads::Type Thread, TUniqueFunction<void()> Function);
