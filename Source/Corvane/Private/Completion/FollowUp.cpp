#include "Completion/FollowUp.h"

#include "Async/Async.h"
#include "Completion/CompletionResult.h"
#include "Completion/RunningRequests.h"

namespace CorvaneFollowUp
{
	/** Keeps the program from ending between two requests; the task may also be dropped without having run. */
	class FPending
	{
	public:
		explicit FPending(UCorvaneBPLibrary* InLibrary)
			: library(InLibrary)
		{
			InLibrary->runningRequestList().beginFollowUp();
		}
		FPending(FPending&& Other)
			: library(Other.library)
		{
			Other.library.Reset();
		}
		~FPending()
		{
			if (UCorvaneBPLibrary* Alive = library.Get())
			{
				Alive->runningRequestList().endFollowUp();
			}
		}

	private:
		TWeakObjectPtr<UCorvaneBPLibrary> library;
	};

	static void fail(UCorvaneBPLibrary& Library, const FCorvFollowUp& FollowUp)
	{
		if (FollowUp.abandon)
		{
			FollowUp.abandon(Library);
		}
		FCorvCompletion Result = CorvaneResult::failure(nullptr);
		Result.requestID = FollowUp.requestID;
		CorvaneDelivery::completion(&Library, nullptr, MoveTemp(Result));
	}

	static void run(UCorvaneBPLibrary& Library, const FCorvFollowUp& FollowUp)
	{
		if (Library.takeCancelMark(FollowUp.requestID)) // the start would clear it
		{
			UE_LOG(LogTemp, Warning, TEXT("Request has been canceled. %s"), *FollowUp.requestID);
			fail(Library, FollowUp);
			return;
		}
		if (*FollowUp.cancelSeen) // logged by then
		{
			fail(Library, FollowUp);
			return;
		}
		TArray<FhttpRequest> Requests = FollowUp.build();
		if (Requests.IsEmpty())
		{
			UE_LOG(LogTemp, Error, TEXT("Something's went wrong. download is aborted "));
			fail(Library, FollowUp);
			return;
		}
		Library.startRequests(Requests);
	}
} // namespace CorvaneFollowUp

void CorvaneFollowUp::start(UCorvaneBPLibrary* InLibrary, FCorvFollowUp FollowUp)
{
	AsyncTask(ENamedThreads::GameThread,
		[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Pending = FPending(InLibrary), FollowUp = MoveTemp(FollowUp)]
		{
			if (UCorvaneBPLibrary* Alive = Library.Get())
			{
				run(*Alive, FollowUp);
			}
		});
}
