#include "Download/DownloadQuestion.h"

#include "Attempts/HttpDate.h"

namespace CorvaneDownloadQuestion
{
	static FString RangeText(const FCorvaneDownloadQuestion& Question)
	{
		return Question.Until < 0 ? FString::Printf(TEXT("bytes=%lld-"), Question.From())
								  : FString::Printf(TEXT("bytes=%lld-%lld"), Question.From(), Question.Until - 1);
	}
} // namespace CorvaneDownloadQuestion

TMap<FString, FString> CorvaneDownload::MakeHeaders(const FCorvaneDownloadQuestion& Question, const FCorvaneDownloadOptions& Options)
{
	TMap<FString, FString> Headers = Options.Headers;
	if (Question.OnDisk > 0)
	{
		Headers.Remove(TEXT("If-None-Match")); // it was asked before the first byte
	}
	if (Question.bRange)
	{
		Headers.Add(TEXT("Range"), CorvaneDownloadQuestion::RangeText(Question));
	}
	const FString Version = Question.OnDisk > 0 ? Question.Version.ForIfRange() : FString();
	if (!Version.IsEmpty())
	{
		Headers.Add(TEXT("If-Range"), Version);
	}
	if (Question.IfNewerThan.GetTicks() > 0)
	{
		Headers.Add(TEXT("If-Modified-Since"), CorvaneHttpDate::ToText(Question.IfNewerThan));
	}
	return Headers;
}
