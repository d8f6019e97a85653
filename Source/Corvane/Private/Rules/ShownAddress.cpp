#include "Rules/ShownAddress.h"

namespace CorvaneShownAddress
{
	/** In characters: a page may stand where an address should. */
	static constexpr int32 longest = 1000;

	static FString forOneLine(const FString& Address)
	{
		FString Line;
		for (int32 Index = 0; Index < Address.Len() && Index < longest; ++Index)
		{
			Line.AppendChar(Address[Index] < TEXT(' ') ? TEXT('\uFFFD') : Address[Index]);
		}
		return Line.Len() < Address.Len() ? Line + TEXT("...") : Line;
	}
} // namespace CorvaneShownAddress

FString CorvaneRules::shownAddress(const FString& Url)
{
	int32 End = 0;
	while (End < Url.Len() && Url[End] != TEXT('?') && Url[End] != TEXT('#'))
	{
		++End;
	}
	FString Shown = Url.Left(End);
	FString Scheme;
	FString Rest = Shown;
	const bool bHasScheme = Shown.Split(TEXT("://"), &Scheme, &Rest) && !Scheme.Contains(TEXT("/"));
	Rest = bHasScheme ? Rest : Shown; // what stands in a path is no scheme
	FString Host = Rest;
	FString Path;
	const bool bHasPath = Rest.Split(TEXT("/"), &Host, &Path);
	FString Secret;
	const FString Authority = Host;
	Authority.Split(TEXT("@"), &Secret, &Host, ESearchCase::CaseSensitive, ESearchDir::FromEnd);
	return CorvaneShownAddress::forOneLine(
		(bHasScheme ? Scheme + TEXT("://") : FString()) + Host + (bHasPath ? TEXT("/") + Path : FString()));
}
