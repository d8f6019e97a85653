#include "Tus/TusOptions.h"

#include "Attempts/Headers.h"
#include "Attempts/OptionFaults.h"

namespace CorvaneTusOptions
{
	/** A body of 2 GiB and more is not safe in the engine's HTTP module, and one that is tiny is all head. */
	static constexpr int64 LeastPiece = 1024;
	static constexpr int64 MostPiece = MAX_int32;

	static bool IsOwn(const FString& Name)
	{
		return Name == TEXT("Tus-Resumable") || Name == TEXT("Content-Type") || Name == TEXT("Content-Length") ||
			   Name == TEXT("Transfer-Encoding") || Name == TEXT("Accept-Encoding") ||
			   Name.StartsWith(TEXT("Upload-"), ESearchCase::IgnoreCase);
	}

	/** The protocol cuts entries by commas, and a name from its value by a blank. */
	static FString FindMetadataFault(const TMap<FString, FString>& Metadata)
	{
		for (const TPair<FString, FString>& Entry : Metadata)
		{
			if (!CorvaneHeaders::IsName(Entry.Key))
			{
				return TEXT("The name of a metadata entry has to be of plain characters without blanks and commas: ") + Entry.Key;
			}
		}
		return FString();
	}

	static FString FindPieceFault(int64 PieceBytes)
	{
		const bool bFits = PieceBytes >= LeastPiece && PieceBytes <= MostPiece;
		return bFits ? FString() : FString(TEXT("The pieces have to be of 1024 bytes or more, and below 2 GiB."));
	}

	static FString FindFileFault(const FString& FilePath)
	{
		const bool bNamesFile = !FilePath.IsEmpty() && !CorvaneHeaders::HasControl(FilePath);
		return bNamesFile ? FString() : FString(TEXT("There is no file to read: its path is empty or has control characters."));
	}

	static FString FindHashFault(const FCorvaneResumableOptions& Options, FCorvaneTusWishes& Wishes)
	{
		if (!FCorvaneHashWish::Parse(Options.Hash, Wishes.Hash))
		{
			return TEXT("The expected hash cannot be read; it is written like sha256:0123456789abcdef... or, to be told it, sha256.");
		}
		FCorvaneHashWish Piece;
		if (!FCorvaneHashWish::Parse(Options.PieceChecksum, Piece) || !Piece.Expected.IsEmpty())
		{
			return TEXT("The sum of the pieces is called sha1, sha256 or md5.");
		}
		Wishes.PieceChecksum = Piece.Kind;
		return FString();
	}
} // namespace CorvaneTusOptions

FCorvaneTusWishes FCorvaneTusWishes::Read(const FString& URL, const FString& FilePath, const FCorvaneResumableOptions& Options)
{
	using namespace CorvaneTusOptions;
	FCorvaneTusWishes Wishes;
	Wishes.Fault = CorvaneOptionFaults::First({CorvaneOptionFaults::OfAddress(URL), FindFileFault(FilePath),
		CorvaneOptionFaults::OfHeaders(Options.Headers, &IsOwn, TEXT("is the upload's own and cannot be set")),
		FindMetadataFault(Options.Metadata), FindPieceFault(Options.PieceBytes),
		CorvaneOptionFaults::OfTries(Options.Attempts, Options.FirstWaitSeconds, Options.LongestWaitSeconds, Options.SilenceSeconds),
		FindHashFault(Options, Wishes)});
	return Wishes;
}
