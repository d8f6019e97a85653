#pragma once

#include "CoreTypes.h"

/**
 * Fills of fresh memory that is this large cost a fraction of the page faults when it comes in large pages. No more than a
 * wish: where the system has none, nothing changes.
 * @param Memory  that is about to be written to.
 * @param Number  bytes.
 * @note Thread: any.
 */
void preferLargePages(void* Memory, int64 Number);
