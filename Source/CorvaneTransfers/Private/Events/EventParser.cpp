#include "Events/EventParser.h"

#include "Attempts/ByteScan.h"

namespace CorvaneEventParser
{
	static constexpr uint8 Mark[] = {0xEF, 0xBB, 0xBF};
	static constexpr int32 MarkLength = 3;
	static constexpr int64 LongestName = 5; // of a field that means something

	static bool Is(const uint8* Begin, const uint8* End, const char* Name)
	{
		while (Begin != End && *Name != 0 && *Begin == static_cast<uint8>(*Name))
		{
			++Begin;
			++Name;
		}
		return Begin == End && *Name == 0;
	}

	static void Assign(TArray<uint8>& Out, const uint8* Begin, const uint8* End)
	{
		Out.Reset();
		Out.Append(Begin, static_cast<int32>(End - Begin));
	}
} // namespace CorvaneEventParser

void FCorvaneEventParser::BeginStream()
{
	Line.Reset();
	Data.Reset();
	Type.Reset();
	MarkBytes = 0;
	bSkipsLineFeed = false;
	bGaveEvent = false;
	bHasID = false; // one that stood in an event that never ended does not count
}

void FCorvaneEventParser::SetLastID(const uint8* Bytes, int32 Number)
{
	CorvaneEventParser::Assign(LastID, Bytes, Bytes + Number);
}

ECorvaneEventStep FCorvaneEventParser::Read(const uint8* Bytes, int64 Number, int64& Taken)
{
	if (bGaveEvent)
	{
		bGaveEvent = false;
		Data.Reset();
		Type.Reset();
	}
	const uint8* const End = Bytes + Number;
	const uint8* At = SkipMark(Bytes, End);
	while (At != End)
	{
		if (bSkipsLineFeed)
		{
			bSkipsLineFeed = false;
			At += *At == '\n' ? 1 : 0;
			continue;
		}
		const uint8* const LineEnd = CorvaneByteScan::FindLineEnd(At, End);
		if (LineEnd == End)
		{
			Taken = Number;
			return Keep(At, End);
		}
		bSkipsLineFeed = *LineEnd == '\r';
		bGaveEvent = TakeLine(At, LineEnd);
		At = LineEnd + 1;
		if (bGaveEvent || IsTooLong())
		{
			Taken = At - Bytes;
			return bGaveEvent ? ECorvaneEventStep::Event : ECorvaneEventStep::TooLong;
		}
	}
	Taken = Number;
	return IsTooLong() ? ECorvaneEventStep::TooLong : ECorvaneEventStep::NeedsMore;
}

/** Bytes that only began like a mark are those of the first line. */
const uint8* FCorvaneEventParser::SkipMark(const uint8* At, const uint8* End)
{
	using namespace CorvaneEventParser;
	while (At != End && MarkBytes < MarkLength)
	{
		if (*At != Mark[MarkBytes])
		{
			Line.Append(Mark, MarkBytes);
			MarkBytes = MarkLength;
			return At;
		}
		++At;
		++MarkBytes;
	}
	return At;
}

/** Of a line that is too long no more is kept than tells so. */
ECorvaneEventStep FCorvaneEventParser::Keep(const uint8* Begin, const uint8* End)
{
	const int64 Room = static_cast<int64>(MostBytes) + 1 - Line.Num();
	Line.Append(Begin, static_cast<int32>(FMath::Min<int64>(End - Begin, FMath::Max<int64>(Room, 0))));
	return IsTooLong() ? ECorvaneEventStep::TooLong : ECorvaneEventStep::NeedsMore;
}

/** @return whether an event is whole. */
bool FCorvaneEventParser::TakeLine(const uint8* Begin, const uint8* End)
{
	if (Line.IsEmpty() && Begin == End)
	{
		return Dispatch();
	}
	if (End - Begin > MostBytes - Line.Num())
	{
		Keep(Begin, End);
		return false;
	}
	if (!Line.IsEmpty())
	{
		Line.Append(Begin, static_cast<int32>(End - Begin));
		Begin = Line.GetData();
		End = Begin + Line.Num();
	}
	TakeField(Begin, End);
	Line.Reset();
	return false;
}

/** A comment is a field without a name, and as unknown as others. */
void FCorvaneEventParser::TakeField(const uint8* Begin, const uint8* End)
{
	using namespace CorvaneEventParser;
	const uint8* const NameEnd = Begin + FMath::Min<int64>(End - Begin, LongestName + 1); // no known name goes beyond it
	const uint8* Colon = Begin;
	while (Colon != NameEnd && *Colon != ':')
	{
		++Colon;
	}
	const uint8* Value = Colon == End ? End : Colon + 1;
	Value += Value != End && *Value == ' ' ? 1 : 0;
	if (Is(Begin, Colon, "data"))
	{
		Data.Append(Value, static_cast<int32>(End - Value));
		Data.Add('\n');
	}
	else if (Is(Begin, Colon, "event"))
	{
		Assign(Type, Value, End);
	}
	else if (Is(Begin, Colon, "id"))
	{
		if (CorvaneByteScan::Find(Value, End, 0) == End)
		{
			Assign(ID, Value, End);
			bHasID = true;
		}
	}
	else if (Is(Begin, Colon, "retry"))
	{
		TakeRetry(Value, End);
	}
}

void FCorvaneEventParser::TakeRetry(const uint8* Begin, const uint8* End)
{
	constexpr int64 Most = MAX_int32; // more than three weeks: however many digits there are, it is forever
	int64 Number = 0;
	for (const uint8* At = Begin; At != End; ++At)
	{
		if (*At < '0' || *At > '9')
		{
			return;
		}
		Number = FMath::Min<int64>(Number * 10 + (*At - '0'), Most);
	}
	Retry = Begin == End ? Retry : Number;
}

bool FCorvaneEventParser::Dispatch()
{
	if (bHasID)
	{
		bHasID = false;
		LastID = ID;
	}
	if (Data.IsEmpty())
	{
		Type.Reset();
		return false;
	}
	Data.SetNumUninitialized(Data.Num() - 1); // the line feed behind the last line
	return true;
}
