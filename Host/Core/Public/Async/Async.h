#pragma once

#include "Async/TaskGraphInterfaces.h"
#include "Templates/Function.h"

/**
 * Queues a task. It never runs inside this call, also not on the thread it is meant for; tasks run in call order.
 * Tasks that are pending when the program ends are dropped.
 * @param Thread  the game thread.
 * @note Thread: any.
 */
void AsyncTask(ENamedThreads::Type Thread, TUniqueFunction<void()> Function);
