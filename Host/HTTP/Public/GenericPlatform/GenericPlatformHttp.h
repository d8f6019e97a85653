#pragma once

#include "CoreMinimal.h"

class FGenericPlatformHttp
{
public:
	/** @return the UTF-8 bytes, those outside A-Z a-z 0-9 - _ . ~ as %XX in upper case. Thread: any. */
	static FString UrlEncode(const FStringView UnencodedString);
};
