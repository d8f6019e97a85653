#include "Host/LargePages.h"

#include <sys/mman.h>

void preferLargePages(void* Memory, int64 Number)
{
	constexpr int64 largePage = 2 << 20;
	constexpr uintptr_t page = 4 << 10;
	if (Number < largePage * 2)
	{
		return; // a whole one may not lie in it
	}
	// All of the block: what is advised in part can no longer be moved by its page tables when it grows.
	const uintptr_t First = reinterpret_cast<uintptr_t>(Memory) / page * page;
	const uintptr_t End = (reinterpret_cast<uintptr_t>(Memory) + static_cast<uintptr_t>(Number) + page - 1) / page * page;
	madvise(reinterpret_cast<void*>(First), End - First, MADV_HUGEPAGE);
}
