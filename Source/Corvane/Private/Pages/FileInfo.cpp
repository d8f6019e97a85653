#include "CorvaneRequestCompleteObject.h"

#include "Completion/CompletionResult.h"
#include "Completion/GameThreadDelivery.h"
#include "Rules/PageReading.h"

void UCorvaneRequestCompleteObject::completeFileInfo(
	const FHttpRequestPtr& InRequest, const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	constexpr int32 unreadablePage = 452;
	FCorvFileInfoResult Result;
	Result.downloadID = downloadID;
	Result.requestID = requestID;
	if (bInWasSuccessful && InResponse.IsValid())
	{
		const FCorvFileInfo Info = CorvaneRules::readFileInfo(CorvaneResult::toText(InResponse->GetContent()));
		Result.fileName = Info.name;
		Result.fileSizeInBytes = Info.size;
		Result.statusCode = Info.bReadable ? InResponse->GetResponseCode() : unreadablePage;
	}
	else
	{
		Result.statusCode = failureOf(InResponse).statusCode;
	}
	completionPosted = true;
	CorvaneDelivery::fileInfo(corvaneBPLibrary, node, InRequest, MoveTemp(Result));
}
