#include "Runs/FollowUp.h"

#include "Async/Async.h"
#include "CorvaneRequestCompleteObject.h"
#include "Runs/Result.h"
#include "Runs/Run.h"
#include "Runs/RunList.h"

namespace CorvaneFollowUp
{
	static bool bIsBuilding = false;

	/** Keeps the program from ending between two requests; the task may also be dropped without having run. */
	class FPending
	{
	public:
		FPending(UCorvaneBPLibrary* InLibrary, const FCorvFollowUp& FollowUp)
			: library(InLibrary)
			, number(InLibrary->runList().beginFollowUp(FollowUp.requestID, FollowUp.cancelState))
		{
		}
		FPending(FPending&& Other)
			: library(Other.library)
			, number(Other.number)
		{
			Other.library.Reset();
		}
		~FPending()
		{
			if (UCorvaneBPLibrary* Alive = library.Get())
			{
				Alive->runList().end(number);
			}
		}

	private:
		TWeakObjectPtr<UCorvaneBPLibrary> library;
		int64 number;
	};

	static void fail(UCorvaneBPLibrary& Library, const FCorvFollowUp& FollowUp)
	{
		if (FollowUp.abandon)
		{
			FollowUp.abandon(Library);
		}
		FCorvCompletion Result = CorvaneResult::noResponse();
		Result.requestID = FollowUp.requestID;
		CorvaneDelivery::completion(&Library, FollowUp.node, MoveTemp(Result));
	}

	/** A copy of all fields, those that are new tomorrow as well. */
	static FhttpRequest asBefore(const FhttpRequest& Before, const FhttpRequest& Built)
	{
		FhttpRequest Next = Before;
		Next.url = Built.url;
		Built.requestCompleteObject()->setRequestStruct(Next);
		Next.setRequestCompleteObject(Built.requestCompleteObject());
		return Next;
	}

	static TArray<FhttpRequest> build(UCorvaneBPLibrary& Library, const FCorvFollowUp& FollowUp)
	{
		bIsBuilding = true;
		TArray<FhttpRequest> Requests = FollowUp.build();
		bIsBuilding = false;
		for (FhttpRequest& Request : Requests)
		{
			Request = asBefore(FollowUp.record, Request);
			Request.requestCompleteObject()->run().continueFor(Library, FollowUp.node);
		}
		return Requests;
	}

	static void run(UCorvaneBPLibrary& Library, const FCorvFollowUp& FollowUp)
	{
		if (FollowUp.cancelState->isAsked(FollowUp.requestID) || FollowUp.cancelState->programEnds)
		{
			Library.dropCancelMark(FollowUp.requestID);
			fail(Library, FollowUp);
			return;
		}
		TArray<FhttpRequest> Requests = build(Library, FollowUp);
		if (Requests.IsEmpty())
		{
			UE_LOG(LogTemp, Error, TEXT("Something's went wrong. download is aborted "));
			fail(Library, FollowUp);
			return;
		}
		Library.startRequests(Requests);
	}
} // namespace CorvaneFollowUp

bool CorvaneFollowUp::isBuilding()
{
	return bIsBuilding;
}

void CorvaneFollowUp::start(UCorvaneBPLibrary* InLibrary, FCorvFollowUp FollowUp)
{
	AsyncTask(ENamedThreads::GameThread,
		[Library = TWeakObjectPtr<UCorvaneBPLibrary>(InLibrary), Pending = FPending(InLibrary, FollowUp), FollowUp = MoveTemp(FollowUp)]
		{
			if (UCorvaneBPLibrary* Alive = Library.Get())
			{
				run(*Alive, FollowUp);
			}
		});
}
