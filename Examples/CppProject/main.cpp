// get URL: prints the body of the answer, and its status code and headers to standard error.

#include "Containers/StringConv.h"
#include "CorvaneBPLibrary.h"
#include "GameLoop.h"
#include "Listen.h"

#include <cstdio>

namespace
{
	using FTexts = TArray<FString>;

	void printLine(const FString& line)
	{
		std::fprintf(stderr, "%s\n", FTCHARToUTF8(*line).Get());
	}
} // namespace

int main(int argc, char** argv)
{
	if (argc != 2)
	{
		std::fprintf(stderr, "usage: get URL\n");
		return 2;
	}

	FGameLoop loop; // makes this thread the game thread: everything below runs here
	int32 answered = 0;
	Listen(UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate,
		[&](const FString&, const FTexts&, const FTexts& header, int32 statusCode, const TArray<uint8>& byteData, const FString&)
		{
			answered = statusCode;
			printLine(FString::Printf(TEXT("%d"), statusCode));
			for (const FString& line : header)
			{
				printLine(line);
			}
			std::fwrite(byteData.GetData(), 1, static_cast<size_t>(byteData.Num()), stdout);
		});

	TArray<FhttpRequest> requests;
	FString requestID;
	UCorvaneBPLibrary::CreateHttpRequestGET({}, argv[1], {}, "", false, requests, requestID);
	UCorvaneBPLibrary* target = nullptr;
	UCorvaneBPLibrary::executeHttpRequests(requests, target);
	loop.RunUntilIdle(UCorvaneBPLibrary::hasPendingWork);
	return answered >= 200 && answered < 400 ? 0 : 1;
}
