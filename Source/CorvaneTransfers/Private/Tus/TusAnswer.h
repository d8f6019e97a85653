#pragma once

#include "Attempts/Answer.h"
#include "CoreMinimal.h"
#include "CorvaneTransfers.h"
#include "Files/FileHash.h"
#include "Misc/DateTime.h"

/** What an answer tells by the headers of the protocol. What a hostile server breaks counts as untold. */
struct FCorvaneTusHeaders
{
	/** Bytes that the server has; -1 = untold. */
	int64 Offset = -1;
	/** Bytes that the upload shall have in the end; -1 = untold. */
	int64 Length = -1;
	/** The most that the server takes, in bytes; -1 = untold. */
	int64 MostBytes = -1;
	/** As it was sent. */
	FString Location;
	/** MinValue = untold. */
	FDateTime Expires = FDateTime::MinValue();
	/** It speaks other versions of the protocol, and not this one. */
	bool bOtherVersion = false;
	/** Which extensions it has is told; the next three count. */
	bool bTellsExtensions = false;
	bool bTakesFirstPiece = false;
	bool bTerminates = false;
	/** The sum of a piece that it compares; None = none that is known here. */
	ECorvaneHashKind Checksum = ECorvaneHashKind::None;

	static FCorvaneTusHeaders Read(const FCorvaneAnswer& Answer);
	/** @return those that Read looks at. */
	static TArray<FString> Names();
};

enum class ECorvaneTusVerdict : uint8
{
	/** The upload is begun, and its address told. */
	Created,
	/** The server has as many bytes as it says. */
	Told,
	/** Only the server knows how far it is. */
	AskAgain,
	/** The piece came to it damaged. */
	SendAgain,
	/** The server knows no such upload (any more). */
	StartOver,
	/** A later try may end otherwise. */
	Wait,
	/** No try will. */
	Fail
};

/** What an answer means to an upload. */
struct FCorvaneTusJudgement
{
	ECorvaneTusVerdict Verdict = ECorvaneTusVerdict::Fail;
	/** If it ends for this. */
	ECorvaneTransferOutcome Outcome = ECorvaneTransferOutcome::ServerError;
	/** For people, the part of a sentence. */
	FString Reason;
};

/** What answers to each kind of request mean. Places and sizes are bytes. Thread: any. */
namespace CorvaneTus
{
	/** @param Answer  to the request that begins an upload. @param Size  of the file. */
	FCorvaneTusJudgement JudgeCreation(const FCorvaneAnswer& Answer, int64 Size);
	/** @param Answer  to the question how far it is. */
	FCorvaneTusJudgement JudgeOffset(const FCorvaneAnswer& Answer, int64 Size);
	/** @param Answer  to a piece. @param Start, End  where it begins, and ends, in the file. */
	FCorvaneTusJudgement JudgePiece(const FCorvaneAnswer& Answer, int64 Start, int64 End);
} // namespace CorvaneTus
