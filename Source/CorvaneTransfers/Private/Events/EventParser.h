#pragma once

#include "CoreMinimal.h"

/** What a step of the parser came to. */
enum class ECorvaneEventStep : uint8
{
	/** All bytes were taken. */
	NeedsMore,
	/** An event is whole. */
	Event,
	/** A line or an event is longer than allowed; nothing is read any more. */
	TooLong
};

/**
 * Reads a stream of server-sent events (text/event-stream, as the HTML standard defines it), cut wherever the network cuts it:
 * the same bytes give the same events. Texts are UTF-8 as it was sent. Thread: one at a time.
 */
class FCorvaneEventParser
{
public:
	/** @param InMostBytes  that one line, and the data of one event, may have. */
	explicit FCorvaneEventParser(int32 InMostBytes)
		: MostBytes(InMostBytes)
	{
	}

	/** Begins with a new stream; the ID of the last event, and the wait that was asked for, go on to hold. */
	void BeginStream();

	/**
	 * Reads up to the end of the next event.
	 * @param Taken  how many bytes were read; the next call goes on behind them.
	 */
	ECorvaneEventStep Read(const uint8* Bytes, int64 Number, int64& Taken);

	/** Of the event that was read last, until the next Read. Its lines have a line feed between them. */
	const TArray<uint8>& GetData() const { return Data; }
	/** Empty = "message". */
	const TArray<uint8>& GetType() const { return Type; }
	/** Of the last event, also of one without data; it holds until another one comes. */
	const TArray<uint8>& GetLastID() const { return LastID; }
	void SetLastID(const uint8* Bytes, int32 Number);
	/** Milliseconds to wait before connecting again; -1 = the server did not say. */
	int64 GetRetry() const { return Retry; }

private:
	bool TakeLine(const uint8* Begin, const uint8* End);
	void TakeField(const uint8* Begin, const uint8* End);
	void TakeRetry(const uint8* Begin, const uint8* End);
	bool Dispatch();
	const uint8* SkipMark(const uint8* At, const uint8* End);
	ECorvaneEventStep Keep(const uint8* Begin, const uint8* End);
	bool IsTooLong() const { return Line.Num() > MostBytes || Data.Num() - 1 > MostBytes; }

	const int32 MostBytes;
	TArray<uint8> Line; // the beginning of one whose end has not come
	TArray<uint8> Data; // each line with a line feed, but the last one of an event that was given out
	TArray<uint8> Type;
	TArray<uint8> ID; // of the event that is being read, if bHasID
	TArray<uint8> LastID;
	int64 Retry = -1;
	int32 MarkBytes = 0; // of the UTF-8 mark that may stand at the very beginning
	bool bSkipsLineFeed = false; // the last line ended with a carriage return
	bool bGaveEvent = false;
	bool bHasID = false;
};
