#include "Rules/ShownAddress.h"

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
	while (Host.Split(TEXT("@"), &Secret, &Host)) // the last one ends it
	{
	}
	return (bHasScheme ? Scheme + TEXT("://") : FString()) + Host + (bHasPath ? TEXT("/") + Path : FString());
}
