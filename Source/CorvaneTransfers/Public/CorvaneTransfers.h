#pragma once

#include "CoreMinimal.h"
#include "Modules/ModuleInterface.h"

#include "CorvaneTransfers.generated.h"

/** How a transfer ended. Scripts save the numbers. */
UENUM(BlueprintType)
enum class ECorvaneTransferOutcome : uint8
{
	/** It has not ended yet. */
	Running = 0,
	/** What was wanted is there, whole and checked. */
	Succeeded = 1,
	/** It was not started: an argument is wrong, or what is on disk forbids it. */
	Refused = 2,
	/** The server could not be found or reached, or its certificate is not trusted. */
	NoConnection = 3,
	/** A request took longer than the HTTP layer allows. */
	TimedOut = 4,
	/** The server fell silent for longer than the limit. */
	Stalled = 5,
	/** The connection broke off, or had to be given up since nobody took its events. */
	Dropped = 6,
	/** The server answered with a status that is no success. */
	ServerError = 7,
	/** What the server sends changed again and again. */
	Changed = 8,
	/** The size is not the one that was told or expected. */
	WrongSize = 9,
	/** The bytes do not have the expected hash. */
	WrongHash = 10,
	/** The disk has no room for it. */
	DiskFull = 11,
	/** A file or folder cannot be written. */
	CannotWrite = 12,
	/** A file cannot be read, or changed while it was sent. */
	CannotRead = 13,
	/** Cancel was called. */
	Cancelled = 14,
	/** The program, or the stream that was followed, came to its end. */
	Ended = 15,
	/** The owner's quota for this file is used up for now. */
	QuotaReached = 16,
	/** The file is not shared with whoever asks. */
	NotPermitted = 17
};

/** The module: it ends running transfers in order, and keeps their bytes, when the program ends or the module is unloaded. */
class FCorvaneTransfersModule : public IModuleInterface
{
public:
	virtual void StartupModule() override;
	/** Does what the end of the program does, if objects still exist. Thread: game thread. */
	virtual void ShutdownModule() override;

private:
	void EndTransfers();
};
