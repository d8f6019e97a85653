#pragma once

/** @return whether objects exist: between the making of the default objects and the end of the program. */
bool UObjectInitialized();
