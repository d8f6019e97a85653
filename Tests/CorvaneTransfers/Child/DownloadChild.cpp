// A program that downloads one file and may be killed at any moment, or kills itself at a chosen step.
// usage: DownloadChild URL TARGET DIES-AT-STEP MOVES-REPLACE

#include "CorvaneDownloadFile.h"
#include "GameLoop.h"
#include "MortalFiles.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
	if (argc != 5)
	{
		return 2;
	}
	MortalFiles files({.DiesAtStep = std::atoi(argv[3]), .bMovesReplace = std::atoi(argv[4]) != 0});
	FGameLoop loop;
	FCorvaneDownloadOptions options;
	options.FirstWaitSeconds = 0.001;
	options.LongestWaitSeconds = 0.002;
	ECorvaneTransferOutcome outcome = ECorvaneTransferOutcome::Running;
	UCorvaneDownloadFile::Start(text(argv[1]), text(argv[2]), options,
		[&](const FCorvaneTransferReport& report)
		{
			outcome = report.Outcome;
			std::fprintf(stderr, "%s", outcome == ECorvaneTransferOutcome::Succeeded ? "" : (utf8(report.Sentence) + "\n").c_str());
		});
	loop.WaitFor([&] { return outcome != ECorvaneTransferOutcome::Running; }, patienceSeconds);
	return outcome == ECorvaneTransferOutcome::Succeeded ? 0 : 1;
}
