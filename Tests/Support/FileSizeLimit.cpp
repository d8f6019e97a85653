#include "FileSizeLimit.h"

#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <utility>

namespace
{
	/** @return the limit before. */
	rlim_t setLimit(rlim_t bytes)
	{
		rlimit limit{};
		getrlimit(RLIMIT_FSIZE, &limit);
		const rlim_t before = std::exchange(limit.rlim_cur, std::min(bytes, limit.rlim_max));
		setrlimit(RLIMIT_FSIZE, &limit);
		return before;
	}
} // namespace

FileSizeLimit::FileSizeLimit(unsigned long bytes, bool bForOneWrite)
	: handlerBefore(std::signal(SIGXFSZ, bForOneWrite ? [](int) { setLimit(RLIM_INFINITY); } : SIG_IGN))
	, limitBefore(setLimit(bytes))
{
}

FileSizeLimit::~FileSizeLimit()
{
	setLimit(limitBefore);
	std::signal(SIGXFSZ, handlerBefore);
}
