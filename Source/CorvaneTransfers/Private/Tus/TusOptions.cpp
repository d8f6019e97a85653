#include "Tus/TusOptions.h"

#include "Attempts/Address.h"
#include "Attempts/Headers.h"

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

	static FString FindHeaderFault(const TMap<FString, FString>& Headers)
	{
		for (const TPair<FString, FString>& Header : Headers)
		{
			if (!CorvaneHeaders::IsName(Header.Key) || CorvaneHeaders::HasControl(Header.Value))
			{
				return TEXT("A header has a name or a value that cannot be sent: ") + Header.Key; // never the value, which may be a key
			}
			if (IsOwn(Header.Key))
			{
				return TEXT("This header is the upload's own and cannot be set: ") + Header.Key;
			}
		}
		return FString();
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

	/** Written so that what is no number does not fit either. */
	static bool IsTime(double Seconds)
	{
		constexpr double Longest = 1e9;
		return Seconds >= 0 && Seconds <= Longest;
	}

	static FString FindNumberFault(const FCorvaneResumableOptions& Options)
	{
		if (Options.PieceBytes < LeastPiece || Options.PieceBytes > MostPiece)
		{
			return TEXT("The pieces have to be of 1024 bytes or more, and below 2 GiB.");
		}
		if (Options.Attempts < 1)
		{
			return TEXT("There has to be at least one attempt.");
		}
		if (!IsTime(Options.FirstWaitSeconds) || !IsTime(Options.LongestWaitSeconds))
		{
			return TEXT("The waits between attempts have to be 0 seconds or more.");
		}
		const bool bSilence = IsTime(Options.SilenceSeconds) && Options.SilenceSeconds > 0;
		return bSilence ? FString() : FString(TEXT("The limit of silence has to be more than 0 seconds."));
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
	const FString AddressFault =
		CorvaneAddress::IsUsable(URL) ? FString() : TEXT("This is no http or https address: ") + CorvaneAddress::ForLog(URL);
	for (const FString& Found : {AddressFault, FindFileFault(FilePath), FindHeaderFault(Options.Headers),
			 FindMetadataFault(Options.Metadata), FindNumberFault(Options), FindHashFault(Options, Wishes)})
	{
		if (Wishes.Fault.IsEmpty())
		{
			Wishes.Fault = Found;
		}
	}
	return Wishes;
}
