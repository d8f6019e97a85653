// Streams of server-sent events: however the network cuts one, it gives the events that a plain reading of the standard gives.

#include "Events/EventParser.h"
#include "Fuzz.h"
#include "Rules/EventChunk.h"
#include "Runs/EventBody.h"

#include <optional>
#include <vector>

namespace
{
	struct FEvent
	{
		std::string Data, Type, LastID;
		bool operator==(const FEvent&) const = default;
	};
	struct FStream
	{
		std::vector<FEvent> Events;
		bool bTooLong = false;
		int64 Retry = -1;
		bool operator==(const FStream&) const = default;
	};

	FStream ReadPieces(std::string_view Bytes, std::string_view Cuts, int32 Most)
	{
		FStream Read;
		FCorvaneEventParser Parser(Most);
		Parser.BeginStream();
		CutUp(Bytes, Cuts,
			[&](const std::string& Piece)
			{
				int64 At = 0;
				for (ECorvaneEventStep Step = ECorvaneEventStep::Event; Step == ECorvaneEventStep::Event && !Read.bTooLong;)
				{
					int64 Taken = -1;
					const int64 Number = static_cast<int64>(Piece.size()) - At;
					Step = Parser.Read(reinterpret_cast<const uint8*>(Piece.data()) + At, Number, Taken);
					HOST_CHECK(Taken >= 0 && Taken <= Number && (Step != ECorvaneEventStep::NeedsMore || Taken == Number));
					At += Taken;
					Read.bTooLong = Step == ECorvaneEventStep::TooLong;
					if (Step == ECorvaneEventStep::Event)
					{
						Read.Events.push_back({std::string(ViewOf(Parser.GetData())), std::string(ViewOf(Parser.GetType())),
							std::string(ViewOf(Parser.GetLastID()))});
						HOST_CHECK(Parser.GetData().Num() <= Most);
					}
				}
			});
		Read.Retry = Parser.GetRetry();
		return Read;
	}

	/** The standard's words, with all lines in memory. */
	FStream ReadPlainly(std::string_view Bytes)
	{
		FStream Read;
		std::string Data, Type, LastID;
		std::optional<std::string> ID;
		Bytes.remove_prefix(Bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0);
		for (size_t End; (End = Bytes.find_first_of("\r\n")) != Bytes.npos;)
		{
			const std::string_view Line = Bytes.substr(0, End);
			Bytes.remove_prefix(End + (Bytes.substr(End).starts_with("\r\n") ? 2 : 1));
			const std::string_view Name = Line.substr(0, Line.find(':'));
			std::string_view Value = Line.substr(std::min(Line.size(), Name.size() + 1));
			Value.remove_prefix(Value.starts_with(' ') ? 1 : 0);
			if (Line.empty())
			{
				LastID = std::exchange(ID, std::nullopt).value_or(LastID);
				if (!Data.empty())
				{
					Data.pop_back();
					Read.Events.push_back({Data, Type, LastID});
				}
				Data.clear();
				Type.clear();
			}
			else if (Name == "data")
			{
				Data.append(Value).append("\n");
			}
			else if (Name == "event")
			{
				Type = Value;
			}
			else if (Name == "id" && Value.find('\0') == Value.npos)
			{
				ID = Value;
			}
			else if (Name == "retry" && !Value.empty() && Value.find_first_not_of("0123456789") == Value.npos)
			{
				const std::string_view Digits = Value.substr(std::min(Value.find_first_not_of('0'), Value.size()));
				Read.Retry = Digits.size() > 10 ? MAX_int32 : std::min<int64>(std::stoll("0" + std::string(Digits)), MAX_int32);
			}
		}
		return Read;
	}

	/** The first module gives the text of each piece, up to its first zero. */
	void ReadChunks(std::string_view Bytes, std::string_view Cuts)
	{
		FCorvEventBody Body;
		CutUp(Bytes, Cuts,
			[&Body](const std::string& Piece)
			{
				FString Text;
				HOST_CHECK(Body.append(Piece.data(), static_cast<int64>(Piece.size())) && Body.nextChunk(Text) && !Body.nextChunk(Text));
				HOST_CHECK(IsSame(Text, text(Piece.substr(0, Piece.find('\0')))));
			});
		HOST_CHECK(ViewOf(Body.take()) == Bytes);
	}
} // namespace

FUZZ(Input)
{
	const std::string_view Cuts = Input.Field();
	const int32 Few = static_cast<int32>(Input.Number(1, 100));
	const std::string_view Bytes = Input.Rest();
	HOST_CHECK(ReadPieces(Bytes, Cuts, 1 << 20) == ReadPlainly(Bytes));
	HOST_CHECK(ReadPieces(Bytes, Cuts, Few) == ReadPieces(Bytes, {}, Few));
	ReadChunks(Bytes, Cuts);
}
