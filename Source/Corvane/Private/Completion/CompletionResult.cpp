#include "Completion/CompletionResult.h"

#include "Containers/StringConv.h"

FString CorvaneResult::toText(const TArray<uint8>& Utf8)
{
	const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Utf8.GetData()), Utf8.Num());
	return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
}

FCorvCompletion CorvaneResult::success(const IHttpResponse& Response, TArray<uint8> Body)
{
	FCorvCompletion Result = successWithoutBody(Response);
	Result.dataString = toText(Body);
	Result.dataArray = toLines(Result.dataString);
	Result.byteData = MoveTemp(Body);
	return Result;
}

FCorvCompletion CorvaneResult::successWithoutBody(const IHttpResponse& Response)
{
	FCorvCompletion Result;
	Result.header = Response.GetAllHeaders();
	Result.statusCode = Response.GetResponseCode();
	return Result;
}

FCorvCompletion CorvaneResult::noResponse()
{
	constexpr int32 noResponseCode = 500;
	return refusal(noResponseCode, TEXT("No Response"));
}

FCorvCompletion CorvaneResult::refusal(int32 StatusCode, FString Text)
{
	FCorvCompletion Result;
	Result.dataArray = toLines(Text);
	Result.dataString = MoveTemp(Text);
	Result.statusCode = StatusCode;
	return Result;
}

TArray<FString> CorvaneResult::toLines(const FString& Text)
{
	TArray<FString> Lines;
	Text.ParseIntoArray(Lines, TEXT("\r\n"));
	return Lines;
}
