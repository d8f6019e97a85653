#include "HttpFixture.h"

#include "Host/GameThreadTasks.h"

Exchange::Exchange(const std::string& url, Policy policy)
	: Request(FHttpModule::Get().CreateRequest())
{
	Request->SetURL(text(url));
	Request->SetDelegateThreadPolicy(policy);
	Request->SetHeader(TEXT("User-Agent"), TEXT("test"));
	Request->OnRequestProgress64().BindLambda(
		[this](FHttpRequestPtr request, uint64 sent, uint64 received)
		{
			{
				const std::scoped_lock lock(Mutex);
				Seen.progress.push_back({sent, received});
				Seen.threads.insert(std::this_thread::get_id());
				EXPECT_LT(Seen.completions, Starts) << "nothing comes after the completion";
			}
			if (onProgress)
			{
				onProgress(*request);
			}
		});
	Request->OnProcessRequestComplete().BindLambda(
		[this](FHttpRequestPtr, FHttpResponsePtr response, bool succeeded)
		{
			const std::scoped_lock lock(Mutex);
			++Seen.completions;
			Seen.succeeded = succeeded;
			Seen.response = response;
			Seen.threads.insert(std::this_thread::get_id());
		});
}

HttpTest::HttpTest()
{
	setenv("no_proxy", "*", 1);
	GameThreadTasks::BindToThisThread();
	Settings.connectTimeoutSeconds = Settings.activityTimeoutSeconds = patienceSeconds;
	HttpService::Start(Settings);
}

HttpTest::~HttpTest()
{
	HttpService::Stop();
	GameThreadTasks::RunQueued();
	for (const Exchange& exchange : Exchanges)
	{
		EXPECT_EQ(exchange.record().completions, exchange.starts());
	}
	GameThreadTasks::Drop(false);
}
