#pragma once

#include "CoreTypes.h"

class FRunnable;

/** The thread of one runnable. Deleting it stops the runnable and waits for its end. */
class FRunnableThread
{
public:
	/**
	 * Starts a thread; a finished system thread is taken again when there is one, so this is cheap. Those that nobody wants
	 * end after some seconds.
	 * @param Runnable  must outlive the thread.
	 * @return null when the system has no thread to give. Run may already be executing.
	 * @note Thread: any.
	 */
	static FRunnableThread* Create(FRunnable* Runnable, const TCHAR* Name);

	virtual ~FRunnableThread() = default;
	/** Calls the runnable's Stop and waits for its end if asked to. Not from the thread itself. */
	virtual bool Kill(bool bShouldWait = true) = 0;
	virtual void WaitForCompletion() = 0;
};
