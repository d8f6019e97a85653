#pragma once

#include <pthread.h>

/** While it lives, this process gets no further thread: each would want more stack than there are addresses. */
class NoThreads
{
public:
	NoThreads()
	{
		pthread_getattr_default_np(&Usual);
		pthread_attr_t Impossible;
		pthread_attr_init(&Impossible);
		pthread_attr_setstacksize(&Impossible, size_t(1) << 47);
		pthread_setattr_default_np(&Impossible);
		pthread_attr_destroy(&Impossible);
	}
	~NoThreads()
	{
		pthread_setattr_default_np(&Usual);
		pthread_attr_destroy(&Usual);
	}
	NoThreads(const NoThreads&) = delete;
	NoThreads& operator=(const NoThreads&) = delete;

private:
	pthread_attr_t Usual;
};
