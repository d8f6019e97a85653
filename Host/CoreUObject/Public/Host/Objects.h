#pragma once

#include <cstddef>

/** The object system's door for the loop in Launch. Thread: game thread. */
namespace HostObjects
{
	/** Makes the default object of every registered class, base classes first. */
	void CreateDefaultObjects();

	/** Frees every object that nothing holds: BeginDestroy for all of them first, then the memory. @return how many. */
	size_t CollectGarbage();

	/** The number of objects made since the last collection. */
	size_t NumCreatedSinceCollection();

	/** The number of objects, default objects included. */
	size_t NumObjects();

	/** End of the program: destroys all objects, held or not, default objects last. */
	void DestroyAll();
} // namespace HostObjects
