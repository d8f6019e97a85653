#include "Files/Journal.h"
#include "Files/FileHash.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <vector>

namespace
{
	FCorvaneJournal readJournal(const std::string& Bytes)
	{
		TArray<uint8> Array;
		Array.Append(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int32>(Bytes.size()));
		return FCorvaneJournal::Read(Array);
	}

	FCorvaneFileStart start(int64 Length)
	{
		FCorvaneFileStart Start;
		Start.Length = Length;
		Start.TailHash = "abcdef";
		return Start;
	}

	FCorvaneSourceFacts factsOf(const char* Address)
	{
		FCorvaneSourceFacts Source;
		Source.Address = text(Address);
		Source.ETag = text("\"a b%\u00fc\"");
		Source.LastModified = text("a day");
		Source.Total = 5'000'000'000;
		return Source;
	}

	const std::vector<std::string> lines = {bytesOf(FCorvaneJournal::SourceLine(factsOf("http://host/first?a=b c"))),
		bytesOf(FCorvaneJournal::KeptLine(start(0))), bytesOf(FCorvaneJournal::KeptLine(start(4'300'000'000))),
		bytesOf(FCorvaneJournal::WholeLine(start(4'300'000'001), true)), bytesOf(FCorvaneJournal::SourceLine(factsOf("http://host/2"))),
		bytesOf(FCorvaneJournal::KeptLine(start(7)))};

	std::string joined(size_t Number)
	{
		std::string All;
		for (size_t Index = 0; Index < Number; ++Index)
		{
			All += lines[Index];
		}
		return All;
	}

	/** What a journal vouches for, in a form that can be compared. */
	std::string told(const FCorvaneJournal& Journal)
	{
		return utf8(Journal.Source.Address + "|" + Journal.Source.ETag + "|" + Journal.Source.LastModified) + "|" +
			   std::to_string(Journal.Source.Total) + "|" + std::to_string(Journal.Kept.Length) + utf8(Journal.Kept.TailHash) +
			   (Journal.bHasSource ? "|source" : "") + (Journal.bWhole ? "|whole" : "") + (Journal.bToldApart ? "|apart" : "");
	}
} // namespace

TEST(TransferJournal, TellsWhatWasWrittenLast)
{
	const std::string First = "http://host/first?a=b c|\"a b%\u00fc\"|a day|5000000000|";
	const std::string Expected[] = {"|||-1|0", First + "0|source", First + "0abcdef|source", First + "4300000000abcdef|source",
		First + "4300000001abcdef|source|whole|apart", "http://host/2|\"a b%\u00fc\"|a day|5000000000|0|source",
		"http://host/2|\"a b%\u00fc\"|a day|5000000000|7abcdef|source"};
	for (size_t Number = 0; Number <= lines.size(); ++Number)
	{
		const FCorvaneJournal Journal = readJournal(joined(Number));
		EXPECT_EQ(told(Journal), Expected[Number]);
		EXPECT_EQ(Journal.ValidBytes, static_cast<int64>(joined(Number).size()));
	}
}

TEST(TransferJournal, DamageIsForgivenOnlyAtItsEnd)
{
	const std::string Whole = joined(lines.size());
	const size_t LastStart = joined(lines.size() - 1).size();
	const std::string Before = told(readJournal(joined(lines.size() - 1)));
	const std::string BeforeBoth = told(readJournal(joined(lines.size() - 2)));
	const std::string Nothing = told(FCorvaneJournal());
	for (size_t At = 0; At < Whole.size(); ++At)
	{
		for (const char Bit : {'\1', '\x80', '\x2a'})
		{
			std::string Damaged = Whole;
			Damaged[At] = static_cast<char>(Damaged[At] ^ Bit);
			ASSERT_EQ(told(readJournal(Damaged)), At >= LastStart ? Before : At == LastStart - 1 ? BeforeBoth : Nothing) << At;
		}
		// Cut anywhere, it tells what its whole lines tell.
		size_t NumLines = 0;
		while (joined(NumLines + 1).size() <= At)
		{
			++NumLines;
		}
		ASSERT_EQ(told(readJournal(Whole.substr(0, At))), told(readJournal(joined(NumLines)))) << At;
		ASSERT_EQ(told(readJournal(Whole.substr(0, At) + std::string(100, '\0'))), told(readJournal(joined(NumLines)))) << At;
	}
	EXPECT_EQ(told(readJournal(lines[1] + lines[0])), Nothing) << "no bytes without a source";
}

TEST(TransferJournal, OfAnotherVersionTellsNothing)
{
	for (const std::string Record :
		{"source\t2\thttp://host/2\t\t\t-1", "kept\t7", "block\t7\tabcdef", "kept\t-7\tabcdef", "kept\t 7\tabcdef"})
	{
		// The checksum is right: whoever wrote it knows more.
		const FString Sum = CorvaneSha256Of(reinterpret_cast<const uint8*>(Record.data()), static_cast<int64>(Record.size())).Left(16);
		EXPECT_EQ(told(readJournal(lines[0] + lines[1] + Record + "\t" + utf8(Sum) + "\n")), told(FCorvaneJournal())) << Record;
	}
}
