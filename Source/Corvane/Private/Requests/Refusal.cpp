#include "Requests/Refusal.h"

#include "Async/Async.h"
#include "CorvaneRequestCompleteObject.h"
#include "Rules/ShownAddress.h"
#include "Rules/StatusCodes.h"
#include "Runs/FollowUp.h"
#include "Runs/Result.h"
#include "Runs/Run.h"
#include "UAsyncNodeCorv.h"

int32 CorvaneRefusal::atOnce(const FString& RequestID)
{
	const UCorvaneBPLibrary* Library = UCorvaneBPLibrary::getCorvaneTarget();
	if (Library && !CorvaneFollowUp::isBuilding())
	{
		Library->onhttpRequestCompleteDelegate.Broadcast(FString(), {}, {}, CorvaneStatus::refused, {}, RequestID);
	}
	return CorvaneStatus::refused;
}

int32 CorvaneRefusal::ofDriveFile(const FString& DownloadID, const FString& RequestID)
{
	if (const UCorvaneBPLibrary* Library = UCorvaneBPLibrary::getCorvaneTarget())
	{
		Library->onhttpRequestCompleteGoogleInfoDelegate.Broadcast(FString(), 0, CorvaneStatus::refused, DownloadID, RequestID);
	}
	return CorvaneStatus::refused;
}

void CorvaneRefusal::oneTaskLater(UAsyncNodeCorv* Node, const FString& RequestID)
{
	if (Node)
	{
		Node->waitState = ECorvNodeWait::HasRequest; // of which the refusal is the result: a later node of the ID leaves it alone
	}
	AsyncTask(ENamedThreads::GameThread,
		[Handle = TWeakObjectPtr<UAsyncNodeCorv>(Node), RequestID]
		{
			UAsyncNodeCorv* Alive = Handle.Get();
			// It may have had its result meanwhile, from another request of the same ID.
			if (Alive && Alive->waitState != ECorvNodeWait::NotWaiting)
			{
				Alive->httpRequestComplete(FString(), {}, {}, CorvaneStatus::refused, {}, RequestID);
			}
			else
			{
				atOnce(RequestID);
			}
		});
}

void CorvaneRefusal::ofRun(const FhttpRequest& Record)
{
	const UCorvaneRequestCompleteObject& Object = *Record.requestCompleteObject();
	FCorvRun& Run = Object.run();
	UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: The request could not be started. Request %s, %s"), *Run.requestID,
		*CorvaneRules::shownAddress(Record.url));
	if (Object.getMultiStepDownloadType() == EMultiStepType::E_GOOGLE_DRIVE_FILE_INFO)
	{
		Run.deliver(nullptr, FCorvFileInfoResult{FString(), 0, CorvaneStatus::refused, Object.getDownloadID(), FString()});
	}
	else
	{
		Run.deliver(nullptr, CorvaneResult::refusal(CorvaneStatus::refused, FString()));
	}
	Run.stopJobs();
}

void UCorvaneBPLibrary::fireErrorMessageInGameThread(UAsyncNodeCorv* InNode, int32, FString InRequestID)
{
	CorvaneRefusal::oneTaskLater(InNode, InRequestID);
}
