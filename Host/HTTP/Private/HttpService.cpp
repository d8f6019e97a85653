#include "Host/HttpService.h"

#include "HttpThread.h"

void HttpService::Start(const FHttpSettings& Settings)
{
	FHttpThread::Get().Launch(Settings);
}

void HttpService::EndGameThreadCallbacks()
{
	FHttpThread::Get().EndGameThreadCallbacks();
}

void HttpService::Stop()
{
	FHttpThread::Get().Shutdown();
}
