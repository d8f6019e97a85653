#pragma once

#include "Attempts/Answer.h"
#include "CoreMinimal.h"
#include "CorvaneTransfers.h"
#include "Download/DownloadQuestion.h"

/** What becomes of an answer and its body. */
enum class ECorvaneDownloadVerdict : uint8
{
	/** The body goes behind what is on disk. */
	Append,
	/** The same, once its first bytes were compared with the end of what is on disk. */
	CompareThenAppend,
	/** The body is the file from its beginning: it takes the place of what is on disk. */
	StartOverWithThis,
	/** The body is of no use; the file is asked for from its beginning. */
	StartOverAgain,
	/** What is on disk is the whole file. */
	AllThere,
	/** The server cannot now; what is on disk stays. */
	WaitAndGoOn,
	/** The server never will; what is on disk stays. */
	Fail,
	/** The server has nothing newer than the target. */
	Unchanged
};

struct FCorvaneDownloadJudgement
{
	ECorvaneDownloadVerdict Verdict = ECorvaneDownloadVerdict::Fail;
	/** Of Fail. */
	ECorvaneTransferOutcome Outcome = ECorvaneTransferOutcome::ServerError;
	/** Why, for people, as a part of a sentence; of whatever does not simply go on. */
	FString Reason;
	/** Of StartOverWithThis: the file is another one than before, as far as that can be told; else the server sends no parts. */
	bool bChanged = false;
	/** Bytes that the body may have, those that are compared among them; one more and the answer lies. -1 = no limit is told. */
	int64 MostBytes = -1;
	/** The whole file's; -1 = unknown. */
	int64 Total = -1;
	/** Without a total: a body that is shorter may have been cut, although its connection ended in order. 0 = nobody can tell. */
	int64 LeastBytes = 0;
	/** Of what will be on disk, to be asked by later. Nothing of an answer that nobody can go on behind. */
	FCorvaneVersion Version;

	/** Whether the body goes into the part file. */
	bool TakesBody() const { return Verdict <= ECorvaneDownloadVerdict::StartOverWithThis; }
};

namespace CorvaneDownload
{
	/**
	 * Decides what an answer means. The same for the same values: the HTTP thread, which needs it before the first byte, and the
	 * machine, which needs it at the end, both ask. Thread: any.
	 */
	FCorvaneDownloadJudgement JudgeAnswer(const FCorvaneDownloadQuestion& Question, const FCorvaneAnswer& Answer);
} // namespace CorvaneDownload
