#include "Runs/Result.h"

#include "Containers/StringConv.h"
#include "Rules/StatusCodes.h"

namespace CorvaneResult
{
	// Text takes several times the memory of the bytes, and each line an allocation of its own; strings have limits as well.
	constexpr int32 mostBytesAsText = 512 << 20;
	constexpr int32 mostTextAsLines = 64 << 20;
	constexpr int32 mostLines = 1000000;

	/** @return the number of lines that are not empty. */
	static int32 countLines(const FString& Text)
	{
		int32 Number = 0;
		int32 Length = 0;
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			const bool bEnds = Text[Index] == TEXT('\r') && Index + 1 < Text.Len() && Text[Index + 1] == TEXT('\n');
			Number += bEnds && Length > 0 ? 1 : 0;
			Length = bEnds ? 0 : Length + 1;
			Index += bEnds ? 1 : 0;
		}
		return Number + (Length > 0 ? 1 : 0);
	}
} // namespace CorvaneResult

FString CorvaneResult::toText(const TArray<uint8>& Utf8)
{
	if (Utf8.Num() > mostBytesAsText)
	{
		UE_LOG(LogTemp, Display, TEXT("%d bytes are too many for the text of a result, which stays empty."), Utf8.Num());
		return FString();
	}
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
	return refusal(CorvaneStatus::noResponse, TEXT("No Response"));
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
	if (Text.Len() > mostTextAsLines || countLines(Text) > mostLines)
	{
		UE_LOG(LogTemp, Display, TEXT("A text of %d characters is too long for the lines of a result, which has none."), Text.Len());
		return Lines;
	}
	Text.ParseIntoArray(Lines, TEXT("\r\n"));
	return Lines;
}
