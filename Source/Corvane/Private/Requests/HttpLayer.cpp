#include "Requests/HttpLayer.h"

bool CorvaneHttpLayer::sends(const FString& UpperVerb)
{
	static const TCHAR* const everywhere[] = {TEXT("GET"), TEXT("HEAD"), TEXT("POST"), TEXT("PUT"), TEXT("PATCH"), TEXT("DELETE")};
	for (const TCHAR* Verb : everywhere)
	{
		if (UpperVerb == Verb)
		{
			return true;
		}
	}
	return CORVANE_HTTP_SENDS_ALL_VERBS != 0;
}
