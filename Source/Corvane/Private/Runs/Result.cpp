#include "Runs/Result.h"

#include "Rules/StatusCodes.h"

namespace CorvaneResult
{
	// Text takes several times the memory of the bytes, and each line an allocation of its own; strings have limits as well.
	constexpr int32 mostBytesAsText = 512 << 20;
	constexpr int32 mostTextAsLines = 64 << 20;
	constexpr int32 mostLines = 1000000;

	/** @return false when there are too many. */
	static bool addLine(const TCHAR* Units, int32 Number, TArray<FString>& Lines)
	{
		const bool bFits = Number == 0 || Lines.Num() < mostLines;
		if (bFits && Number > 0)
		{
			Lines.Add(FString::ConstructFromPtrSize(Units, Number));
		}
		return bFits;
	}

	static bool hasReturn(const TCHAR* Units, int32 Number)
	{
		int32 Found = 0; // no branch for each unit: compilers then look at many at once
		for (int32 Index = 0; Index < Number; ++Index)
		{
			Found |= Units[Index] == TEXT('\r') ? 1 : 0;
		}
		return Found != 0;
	}

	/** @return where the next carriage return stands, or Length. */
	static int32 findReturn(const TCHAR* Units, int32 From, int32 Length)
	{
		constexpr int32 stride = 32;
		while (Length - From >= stride && !hasReturn(Units + From, stride))
		{
			From += stride;
		}
		while (From < Length && Units[From] != TEXT('\r'))
		{
			++From;
		}
		return From;
	}

	/** In one pass: the text may be large. @return false when there are too many lines. */
	static bool cutLines(const FString& Text, TArray<FString>& Lines)
	{
		const TCHAR* const Units = *Text;
		const int32 Length = Text.Len();
		int32 Begin = 0;
		for (int32 Index = findReturn(Units, 0, Length); Index < Length; Index = findReturn(Units, Index + 1, Length))
		{
			if (Units[Index + 1] == TEXT('\n')) // a text ends with a zero
			{
				if (!addLine(Units + Begin, Index - Begin, Lines))
				{
					return false;
				}
				Begin = Index + 2;
			}
		}
		return addLine(Units + Begin, Length - Begin, Lines);
	}
} // namespace CorvaneResult

FString CorvaneResult::toText(const TArray<uint8>& Utf8)
{
	if (Utf8.Num() > mostBytesAsText)
	{
		UE_LOG(LogTemp, Display, TEXT("%d bytes are too many for the text of a result, which stays empty."), Utf8.Num());
		return FString();
	}
	return FString::ConstructFromPtrSize(reinterpret_cast<const UTF8CHAR*>(Utf8.GetData()), Utf8.Num());
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
	if (Text.Len() > mostTextAsLines || !cutLines(Text, Lines))
	{
		UE_LOG(LogTemp, Display, TEXT("A text of %d characters is too long for the lines of a result, which has none."), Text.Len());
		Lines.Empty();
	}
	return Lines;
}
