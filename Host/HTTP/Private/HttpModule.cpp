#include "HttpModule.h"

#include "HttpRequest.h"

FHttpModule& FHttpModule::Get()
{
	static FHttpModule Module;
	return Module;
}

FHttpRequestRef FHttpModule::CreateRequest()
{
	return MakeShared<FHttpRequest>();
}
