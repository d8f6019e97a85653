#pragma once

#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "HAL/Runnable.h"
#include "HAL/RunnableThread.h"

#include <chrono>
#include <functional>
#include <memory>
#include <semaphore>

struct ReturnToEventPool
{
	void operator()(FEvent* event) const { FPlatformProcess::ReturnSynchEventToPool(event); }
};

/** An event of the pool, which takes it back. */
class PooledEvent
{
public:
	void trigger() { event->Trigger(); }
	void wait() { event->Wait(); }

private:
	const std::unique_ptr<FEvent, ReturnToEventPool> event{FPlatformProcess::GetSynchEventFromPool()};
};

/** What a request's worker is to the one who starts it: it waits for its only job, does it and ends. */
class OneJobWorker final : public FRunnable
{
public:
	using Clock = std::chrono::steady_clock;
	using MakeThread = std::function<FRunnableThread*(FRunnable*)>;

	/** Gives the worker its thread. Thread: any. */
	void start(const MakeThread& makeThread);
	/** Gives it its job. Thread: any. */
	void queueJob() { job.trigger(); }
	/** Waits until the job is done; the thread itself is joined by the destructor. @return when the job began. */
	Clock::time_point waitForJob();

	virtual uint32 Run() override;

private:
	PooledEvent job;
	PooledEvent done;
	Clock::time_point jobBegan;
	std::binary_semaphore hasThread{0}; // it may be given from a third thread, later than the job is done
	std::unique_ptr<FRunnableThread> thread;
};

/** Who makes a request's thread, and when. */
class WorkerStart
{
public:
	virtual ~WorkerStart() = default;
	/** What the game thread does for the worker when the request starts. */
	virtual void beginRequest(OneJobWorker&) {}
	/** What the HTTP thread does for it when the request's first answer arrives. */
	virtual void firstJob(OneJobWorker& worker) = 0;
};

namespace WorkerStarts
{
	using Make = std::unique_ptr<WorkerStart>();

	/** The HTTP thread makes a new thread and is held until it runs, as in the engine. */
	Make byFirstJob;
	/** The game thread does so at the start of the request; the HTTP thread only wakes it. */
	Make byGameThread;
	/** The HTTP thread wakes a helper, which makes one thread after the other in the same way. */
	Make byStarter;
	/** The HTTP thread asks the stand-in for a thread, which may have done others' work before. */
	Make byStandIn;
} // namespace WorkerStarts
