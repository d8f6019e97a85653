#include "Callbacks.h"

#include "Async/Async.h"
#include "Host/GameThreadTasks.h"

void FCallbacks::Reset(bool bForce)
{
	bForceGameThread = bForce;
	bGameThreadEnded = false;
}

template <class Callback>
void FCallbacks::Run(const FHttpRequest& Request, Callback Body)
{
	if (bForceGameThread || Request.WantsGameThread())
	{
		const std::scoped_lock Lock(Gate);
		if (!bGameThreadEnded)
		{
			AsyncTask(ENamedThreads::GameThread, std::move(Body));
			return;
		}
	}
	Body();
}

void FCallbacks::Progress(const std::shared_ptr<FHttpRequest>& Request, uint64 Sent, uint64 Received)
{
	if (Request->NoteProgress(Sent, Received)) // else one is on its way and will report these counts
	{
		Run(*Request, [Request] { Request->RunProgress(); });
	}
}

void FCallbacks::Complete(const std::shared_ptr<FHttpRequest>& Request, FHttpResponsePtr Shown, bool bSucceeded)
{
	Run(*Request, [Request, Shown, bSucceeded] { Request->RunComplete(Shown, bSucceeded); });
}

void FCallbacks::EndGameThread()
{
	const std::scoped_lock Lock(Gate);
	if (!bGameThreadEnded)
	{
		GameThreadTasks::RunQueued();
		bGameThreadEnded = true;
	}
}

void FCallbacks::CompleteWithoutService(const std::shared_ptr<FHttpRequest>& Request)
{
	AsyncTask(ENamedThreads::GameThread, [Request] { Request->RunComplete(nullptr, false); });
}
