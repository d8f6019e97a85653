#include "HttpFixture.h"

#include "Host/GameThreadTasks.h"

Exchange::Exchange(const std::string& url, Policy policy)
	: Request(FHttpModule::Get().CreateRequest())
{
	Request->SetURL(text(url));
	Request->SetDelegateThreadPolicy(policy);
	Request->SetHeader(TEXT("User-Agent"), TEXT("test"));
	Request->OnRequestProgress64().BindLambda(
		[this, seen = Seen](FHttpRequestPtr request, uint64 sent, uint64 received)
		{
			{
				const std::scoped_lock lock(seen->mutex);
				seen->record.progress.push_back({sent, received, std::this_thread::get_id()});
				seen->record.progressAfterCompletion |= seen->record.over;
			}
			if (onProgress)
			{
				onProgress(*request);
			}
		});
	Request->OnProcessRequestComplete().BindLambda(
		[seen = Seen](FHttpRequestPtr, FHttpResponsePtr response, bool succeeded)
		{
			const std::scoped_lock lock(seen->mutex);
			++seen->record.completions;
			seen->record.over = true;
			seen->record.succeeded = succeeded;
			seen->record.response = response;
			seen->record.completionThread = std::this_thread::get_id();
		});
}

bool Exchange::start()
{
	{
		const std::scoped_lock lock(Seen->mutex);
		Seen->record.over = false;
	}
	return Request->ProcessRequest();
}

Exchange::Record Exchange::record() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->record;
}

uint64 Exchange::received() const
{
	const std::vector<Progress> seen = progress();
	return seen.empty() ? 0 : seen.back().received;
}

int Exchange::code() const
{
	const FHttpResponsePtr shown = response();
	return shown ? shown->GetResponseCode() : 0;
}

std::string Exchange::body() const
{
	const FHttpResponsePtr shown = response();
	return shown ? bytesOf(shown->GetContent()) : "";
}

std::string Exchange::header(const char* name) const
{
	const FHttpResponsePtr shown = response();
	return shown ? utf8(shown->GetHeader(text(name))) : "";
}

HttpTest::HttpTest()
{
	for (const char* variable : {"http_proxy", "https_proxy", "all_proxy", "HTTPS_PROXY", "ALL_PROXY"})
	{
		unsetenv(variable);
	}
	GameThreadTasks::BindToThisThread();
	Settings.connectTimeoutSeconds = Settings.activityTimeoutSeconds = patienceSeconds;
	HttpService::Start(Settings);
}

HttpTest::~HttpTest()
{
	stopAndCheck();
	GameThreadTasks::Drop(false);
}

void HttpTest::restart(const FHttpSettings& settings)
{
	HttpService::Stop();
	HttpService::Start(settings);
}

Exchange& HttpTest::make(const std::string& url, const char* verb, Policy policy)
{
	Exchange& made = Exchanges.emplace_back(url, policy);
	if (verb)
	{
		made.request().SetVerb(verb);
	}
	return made;
}

Exchange& HttpTest::run(Exchange& exchange)
{
	exchange.start();
	pumpUntil([&] { return exchange.completed(); });
	return exchange;
}

void HttpTest::stopAndCheck(int starts)
{
	HttpService::Stop();
	GameThreadTasks::RunQueued();
	for (const Exchange& exchange : Exchanges)
	{
		EXPECT_EQ(exchange.record().completions, starts);
		EXPECT_FALSE(exchange.record().progressAfterCompletion);
	}
	Exchanges.clear();
}
