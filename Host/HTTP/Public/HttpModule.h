#pragma once

#include "Interfaces/IHttpRequest.h"

/** Makes requests. Thread: any. */
class FHttpModule
{
public:
	static FHttpModule& Get();
	FHttpRequestRef CreateRequest();
};
