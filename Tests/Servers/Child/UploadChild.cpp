// A program that uploads one file and may be killed at any moment. It ends with the number of the outcome.
// usage: UploadChild URL FILE FOLDER-OF-JOURNALS BYTES-OF-A-PIECE

#include "CorvaneUploadResumable.h"
#include "GameLoop.h"
#include "TextSupport.h"

#include <cstdlib>

int main(int argc, char** argv)
{
	if (argc != 5)
	{
		return 255;
	}
	FGameLoop loop;
	FCorvaneResumableOptions options;
	options.JournalFolder = text(argv[3]);
	options.PieceBytes = std::atoll(argv[4]);
	options.FirstWaitSeconds = 0.001;
	ECorvaneTransferOutcome outcome = ECorvaneTransferOutcome::Running;
	UCorvaneUploadResumable::Start(
		text(argv[1]), text(argv[2]), options, [&](const FCorvaneTransferReport& report) { outcome = report.Outcome; });
	loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
	return static_cast<int>(outcome);
}
