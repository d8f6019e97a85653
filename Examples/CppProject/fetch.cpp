// fetch URL FILE: downloads a file that ends up whole, and prints how it went and its hash.

#include "Containers/StringConv.h"
#include "CorvaneDownloadFile.h"
#include "GameLoop.h"

#include <cstdio>

int main(int argc, char** argv)
{
	if (argc != 3)
	{
		std::fprintf(stderr, "usage: fetch URL FILE\n");
		return 2;
	}

	FGameLoop loop; // makes this thread the game thread: everything below runs here
	FCorvaneDownloadOptions options;
	options.Hash = TEXT("sha256");
	bool isThere = false;
	const auto tell = [&isThere](const FCorvaneTransferReport& report)
	{
		isThere = report.Outcome == ECorvaneTransferOutcome::Succeeded;
		std::printf("%s %s\n", FTCHARToUTF8(*report.Sentence).Get(), FTCHARToUTF8(*report.Hash).Get());
	};
	UCorvaneDownloadFile::Start(argv[1], argv[2], options, tell);
	loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
	return isThere ? 0 : 1;
}
