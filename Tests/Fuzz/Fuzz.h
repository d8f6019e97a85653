#pragma once

#include "CoreMinimal.h"
#include "TextSupport.h"

#include <charconv>
#include <string>
#include <string_view>
#include <utility>

inline TArray<uint8> ToArray(std::string_view Bytes)
{
	TArray<uint8> Array;
	Array.Append(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int32>(Bytes.size()));
	return Array;
}
inline std::string_view ViewOf(const TArray<uint8>& Array)
{
	return {reinterpret_cast<const char*>(Array.GetData()), static_cast<size_t>(Array.Num())};
}
inline bool IsSame(const FString& A, const FString& B)
{
	return A.Equals(B, ESearchCase::CaseSensitive);
}

/** Takes apart what the fuzzer made. Fields are lines as a rule, so that people can read, and write, an input that is kept. */
class FFuzzInput
{
public:
	explicit FFuzzInput(std::string_view Bytes)
		: Left(Bytes)
	{
	}

	std::string_view Field(char End = '\n')
	{
		const std::string_view Taken = Left.substr(0, Left.find(End));
		Left.remove_prefix(std::min(Left.size(), Taken.size() + 1));
		return Taken;
	}
	FString Text(char End = '\n') { return text(Field(End)); }
	/** A decimal number in a field; what is none, or lies outside, becomes the nearest that may be. */
	int64 Number(int64 Least, int64 Most, char End = '\n')
	{
		const std::string_view Digits = Field(End);
		int64 Value = 0;
		std::from_chars(Digits.data(), Digits.data() + Digits.size(), Value);
		return std::clamp(Value, Least, Most);
	}
	bool Flag() { return Number(0, 1) == 1; }
	bool IsOver() const { return Left.empty(); }
	/** What follows the fields. */
	std::string_view Rest() { return std::exchange(Left, {}); }

private:
	std::string_view Left;
};

/** Cuts bytes at places that a text of letters chooses, and hands the pieces out one by one; no piece is empty. */
template <class Take>
void CutUp(std::string_view Bytes, std::string_view Cuts, Take&& TakePiece)
{
	for (size_t Cut = 0; !Bytes.empty(); ++Cut)
	{
		const size_t Size = Cut < Cuts.size() ? 1 + static_cast<uint8>(Cuts[Cut]) % 32u : Bytes.size();
		const std::string Piece(Bytes.substr(0, Size)); // memory of its own: a step beyond its end shows
		Bytes.remove_prefix(Piece.size());
		TakePiece(Piece);
	}
}

/** The body of a target. HOST_CHECK in it says what has to hold for every input. */
#define FUZZ(Input) \
	static void FuzzOne(FFuzzInput Input); \
	extern "C" int LLVMFuzzerTestOneInput(const uint8* Bytes, size_t Number) \
	{ \
		FuzzOne(FFuzzInput({reinterpret_cast<const char*>(Bytes), Number})); \
		return 0; \
	} \
	static void FuzzOne(FFuzzInput Input)
