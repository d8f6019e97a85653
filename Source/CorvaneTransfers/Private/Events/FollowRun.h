#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneFollowOptions.h"
#include "CorvaneTransferReport.h"
#include "Events/EventParser.h"
#include "Events/FollowMachine.h"
#include "RunningTransfers.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/Alarm.h"
#include "Threads/ByteBuffer.h"
#include "Threads/Mailbox.h"

/**
 * Follows a stream of events from its start to its report: does what the machine says, and reads and tells the events. They
 * are read on the game thread out of a bounded buffer, a few milliseconds of each frame: when handlers do not keep up, the
 * buffer fills, and the connection waits. It is held by the list of running transfers until it is over. Thread: game thread.
 */
class FCorvaneFollowRun : public FCorvaneRunningTransfer, public TSharedFromThis<FCorvaneFollowRun>
{
public:
	/** What is told. All but Close may be told any number of times; each may call whatever this class offers. */
	struct FEars
	{
		/** Before each try, inside which the headers may change. */
		TFunction<void(const FCorvaneTransferReport&)> Prepare;
		/** The first byte of a stream is there. */
		TFunction<void(const FCorvaneTransferReport&)> Open;
		TFunction<void(const FString& ID, const FString& Type, const FString& Data)> Event;
		/** Once, the last, and later than Start. */
		TFunction<void(const FCorvaneTransferReport&)> Close;
	};

	FCorvaneFollowRun(const FString& InURL, const FCorvaneFollowOptions& InOptions, FEars InEars);

	void Start();
	void Pause();
	void Continue();
	void Cancel();
	/** @param Value  empty = the header is left out. Holds from the next try on. */
	void SetHeader(const FString& Name, const FString& Value);
	bool IsPaused() const { return Machine.IsPaused(); }
	/** @return the ID behind which a later start goes on; empty = the server gave none. */
	FString GetLastEventID() const;
	/** @return how it stands, with the bytes of the connection that runs as far as they were read. */
	FCorvaneTransferReport GetReport() const;

	virtual void EndWithProgram() override;
	virtual bool IsOver() const override { return bTold; }
	virtual void Abandon() override;
	virtual FCorvaneMailbox& GetMailbox() override { return *Mailbox; }

private:
	/** Brings what another thread has to tell to this object. Thread: any. */
	void Post(TUniqueFunction<void(FCorvaneFollowRun&)> Letter);

	void Follow(const FCorvaneFollowStep& Step);
	void Prepare();
	void Ask();
	void Stop();
	void Wait(double Seconds);
	void TellEnd();

	void OnOpened(const FCorvaneAnswer& Answer);
	void OnEnded(const FCorvaneExchangeResult& Result);
	void TellEvents();
	bool TellSome();
	bool HasBytes();
	void ReadOne();
	void TellEvent();
	void CloseTry();
	void GoOnInNextFrame();

	const FString URL;
	const FCorvaneFollowOptions Options;
	const FEars Ears;
	TMap<FString, FString> Headers;

	FCorvaneFollowMachine Machine;
	FCorvaneEventParser Parser;
	const TSharedRef<FCorvaneMailbox> Mailbox = MakeShared<FCorvaneMailbox>();

	// Of the try that runs:
	TSharedPtr<FCorvaneExchange> Exchange;
	TSharedPtr<FCorvaneByteBuffer> Buffer;
	TArray<uint8> Bytes; // taken out of the buffer
	int32 BytesRead = 0; // of those
	int64 BytesOfTry = 0;
	FCorvaneExchangeResult Result;
	bool bEnded = false; // with Result, but maybe events of it are still to be told

	bool bTelling = false; // a handler is at work
	FCorvaneAlarm WaitAlarm;
	FCorvaneAlarm FrameAlarm;
	bool bTold = false; // later than the machine is over
};
