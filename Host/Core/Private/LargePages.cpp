#include "Host/LargePages.h"

#include <sys/mman.h>

void preferLargePages(void* Memory, int64 Number)
{
	constexpr uintptr_t pageSize = 2 << 20;
	const uintptr_t Begin = reinterpret_cast<uintptr_t>(Memory);
	const uintptr_t First = (Begin + pageSize - 1) / pageSize * pageSize;
	const uintptr_t End = (Begin + static_cast<uintptr_t>(Number)) / pageSize * pageSize;
	if (First < End)
	{
		madvise(reinterpret_cast<void*>(First), End - First, MADV_HUGEPAGE);
	}
}
