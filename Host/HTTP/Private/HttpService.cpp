#include "Host/HttpService.h"

#include "HttpThread.h"

void HttpService::Start(const FHttpSettings& Settings)
{
	FHttpThread::Get().Launch(Settings);
}

void HttpService::Stop()
{
	FHttpThread::Get().Shutdown();
}
