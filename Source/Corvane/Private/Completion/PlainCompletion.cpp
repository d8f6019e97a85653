#include "CorvaneRequestCompleteObject.h"

#include "Completion/GameThreadDelivery.h"

namespace CorvanePlainCompletion
{
	static TArray<FString> toLines(const FString& Text)
	{
		TArray<FString> Lines;
		Text.ParseIntoArray(Lines, TEXT("\r\n"));
		return Lines;
	}

	static void fillSuccess(const FHttpResponsePtr& Response, FCorvCompletion& Result)
	{
		Result.byteData = Response->GetContent();
		Result.dataString = Response->GetContentAsString();
		Result.dataArray = toLines(Result.dataString);
		Result.header = Response->GetAllHeaders();
		Result.statusCode = Response->GetResponseCode();
	}

	/** A broken exchange may still hand over a response; below 400 it would pass for a success, so it counts as none. */
	static void fillFailure(const FHttpResponsePtr& Response, FCorvCompletion& Result)
	{
		constexpr int32 firstErrorCode = 400;
		constexpr int32 noResponseCode = 500;
		const bool bServerRefused = Response.IsValid() && Response->GetResponseCode() >= firstErrorCode;
		Result.dataString = bServerRefused ? Response->GetContentAsString() : FString(TEXT("No Response"));
		Result.dataArray = toLines(Result.dataString);
		Result.statusCode = bServerRefused ? Response->GetResponseCode() : noResponseCode;
	}
} // namespace CorvanePlainCompletion

void UCorvaneRequestCompleteObject::requestCompleteInternal(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	if (!corvaneBPLibrary)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (12)."));
		return;
	}
	FCorvCompletion Result;
	Result.requestID = requestID;
	if (bInWasSuccessful && InResponse.IsValid())
	{
		CorvanePlainCompletion::fillSuccess(InResponse, Result);
	}
	else
	{
		CorvanePlainCompletion::fillFailure(InResponse, Result);
	}
	completionPosted = true;
	CorvaneDelivery::completion(corvaneBPLibrary, InRequest, MoveTemp(Result));
}
