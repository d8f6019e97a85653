#include "HttpFixture.h"

#include "Containers/StringConv.h"
#include "Host/GameThreadTasks.h"

FString text(std::string_view utf8)
{
	const FUTF8ToTCHAR units(utf8.data(), static_cast<int32>(utf8.size()));
	return FString::ConstructFromPtrSize(units.Get(), units.Length());
}

std::string utf8(const FString& text)
{
	const FTCHARToUTF8 bytes(*text, text.Len());
	return std::string(bytes.Get(), static_cast<size_t>(bytes.Length()));
}

std::string bytesOf(const TArray<uint8>& array)
{
	return std::string(array.begin(), array.end());
}

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
				seen->progress.push_back({sent, received, std::this_thread::get_id()});
				seen->progressAfterCompletion |= seen->over;
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
			++seen->completions;
			seen->over = true;
			seen->succeeded = succeeded;
			seen->shown = response;
			seen->completionThread = std::this_thread::get_id();
		});
}

bool Exchange::start()
{
	{
		const std::scoped_lock lock(Seen->mutex);
		Seen->over = false;
	}
	return Request->ProcessRequest();
}

int Exchange::completions() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->completions;
}

bool Exchange::succeeded() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->succeeded;
}

std::thread::id Exchange::completionThread() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->completionThread;
}

FHttpResponsePtr Exchange::response() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->shown;
}

uint64 Exchange::received() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->progress.empty() ? 0 : Seen->progress.back().received;
}

std::vector<Exchange::Progress> Exchange::progress() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->progress;
}

bool Exchange::progressAfterCompletion() const
{
	const std::scoped_lock lock(Seen->mutex);
	return Seen->progressAfterCompletion;
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

Exchange& HttpTest::make(const std::string& url, Policy policy)
{
	return Exchanges.emplace_back(url, policy);
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
		EXPECT_EQ(exchange.completions(), starts);
		EXPECT_FALSE(exchange.progressAfterCompletion());
	}
	Exchanges.clear();
}
