#include "Containers/UnrealString.h"

#include "Containers/StringConv.h"
#include "Host/LargePages.h"
#include "Utf8Decoding.h"

#include <algorithm>
#include <cstring>

namespace
{
	TCHAR toLowerAscii(TCHAR Unit)
	{
		return Unit >= u'A' && Unit <= u'Z' ? static_cast<TCHAR>(Unit + ('a' - 'A')) : Unit;
	}

	TCHAR toUpperAscii(TCHAR Unit)
	{
		return Unit >= u'a' && Unit <= u'z' ? static_cast<TCHAR>(Unit - ('a' - 'A')) : Unit;
	}

	bool equalUnits(TCHAR A, TCHAR B)
	{
		return toLowerAscii(A) == toLowerAscii(B);
	}

	auto sameUnits(ESearchCase::Type Case)
	{
		return [Case](TCHAR A, TCHAR B) { return Case == ESearchCase::IgnoreCase ? equalUnits(A, B) : A == B; };
	}
} // namespace

FString::FString(const ANSICHAR* AsciiText)
{
	AppendChars(AsciiText, static_cast<int32>(std::strlen(AsciiText)));
}

FString FString::ConstructFromPtrSize(const UTF8CHAR* Bytes, int32 Size)
{
	FString Result;
	Result.Text = utf16FromUtf8({reinterpret_cast<const char*>(Bytes), static_cast<size_t>(Size)});
	return Result;
}

void FString::Reserve(int32 CharacterCount)
{
	if (CharacterCount > static_cast<int32>(Text.capacity()))
	{
		Text.reserve(static_cast<size_t>(CharacterCount));
		preferLargePages(Text.data() + Text.size(), static_cast<int64>(CharacterCount - Len()) * static_cast<int64>(sizeof(TCHAR)));
	}
}

void FString::AppendChars(const ANSICHAR* AsciiText, int32 Count)
{
	const size_t Start = Text.size();
	Text.resize(Start + static_cast<size_t>(Count));
	std::transform(AsciiText, AsciiText + Count, Text.begin() + static_cast<std::ptrdiff_t>(Start),
		[](ANSICHAR Byte) { return static_cast<TCHAR>(static_cast<uint8>(Byte)); });
}

bool FString::Equals(const FString& Other, ESearchCase::Type Case) const
{
	if (Case == ESearchCase::CaseSensitive)
	{
		return Text == Other.Text;
	}
	return std::equal(Text.begin(), Text.end(), Other.Text.begin(), Other.Text.end(), equalUnits);
}

bool operator==(const FString& Left, const TCHAR* Right)
{
	const FStringView Other(Right);
	return std::equal(Left.Text.begin(), Left.Text.end(), Other.begin(), Other.end(), equalUnits);
}

size_t GetTypeHash(const FString& Value)
{
	// As FNV-1a, four units at a time. One bit is the same for a letter in either case; what else it makes equal does no harm.
	constexpr size_t atATime = 4;
	constexpr uint64 anyCase = 0x0020002000200020ull;
	uint64 Hash = 14695981039346656037ull;
	for (size_t At = 0; At < Value.Text.size(); At += atATime)
	{
		uint64 Units = 0;
		std::memcpy(&Units, &Value.Text[At], std::min(atATime, Value.Text.size() - At) * sizeof(TCHAR));
		Hash = (Hash ^ (Units | anyCase)) * 1099511628211ull;
		Hash ^= Hash >> 32;
	}
	return Hash;
}

int32 FString::Find(const FString& Part, ESearchCase::Type Case, ESearchDir::Type Direction) const
{
	const auto Same = sameUnits(Case);
	if (Direction == ESearchDir::FromStart)
	{
		const auto Found = std::search(Text.begin(), Text.end(), Part.Text.begin(), Part.Text.end(), Same);
		return Found == Text.end() && !Part.IsEmpty() ? INDEX_NONE : static_cast<int32>(Found - Text.begin());
	}
	const auto Found = std::search(Text.rbegin(), Text.rend(), Part.Text.rbegin(), Part.Text.rend(), Same);
	return Found == Text.rend() && !Part.IsEmpty() ? INDEX_NONE : static_cast<int32>(Text.rend() - Found) - Part.Len();
}

bool FString::StartsWith(const FString& Prefix, ESearchCase::Type Case) const
{
	return Prefix.Len() <= Len() && std::equal(Prefix.Text.begin(), Prefix.Text.end(), Text.begin(), sameUnits(Case));
}

bool FString::EndsWith(const FString& Suffix, ESearchCase::Type Case) const
{
	return Suffix.Len() <= Len() && std::equal(Suffix.Text.begin(), Suffix.Text.end(), Text.end() - Suffix.Len(), sameUnits(Case));
}

bool FString::IsNumeric() const
{
	const FStringView Digits = FStringView(Text).substr(StartsWith("-") || StartsWith("+") ? 1 : 0);
	const auto bDigitOrDot = [](TCHAR Unit) { return Unit == '.' || (Unit >= '0' && Unit <= '9'); };
	return !Digits.empty() && std::all_of(Digits.begin(), Digits.end(), bDigitOrDot) && std::count(Digits.begin(), Digits.end(), u'.') <= 1;
}

FString FString::Mid(int32 Start, int32 Count) const
{
	const int32 From = std::clamp(Start, 0, Len());
	const int32 Number = std::clamp(Count, 0, Len() - From);
	return ConstructFromPtrSize(Text.data() + From, Number);
}

FString FString::TrimEnd() const
{
	return FString(FStringView(Text).substr(0, Text.find_last_not_of(TEXT(" \t\n\v\f\r")) + 1)); // npos + 1 is 0
}

FString FString::Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type Case) const
{
	const FString Wanted(From);
	FString Result;
	auto Rest = Text.begin();
	if (!Wanted.IsEmpty())
	{
		for (auto Found = Rest;
			 (Found = std::search(Rest, Text.end(), Wanted.Text.begin(), Wanted.Text.end(), sameUnits(Case))) != Text.end();)
		{
			Result.Text.append(Rest, Found);
			Result += To;
			Rest = Found + Wanted.Len();
		}
	}
	Result.Text.append(Rest, Text.end());
	return Result;
}

bool FString::Split(
	const FString& Separator, FString* LeftPart, FString* RightPart, ESearchCase::Type Case, ESearchDir::Type Direction) const
{
	const int32 At = Separator.IsEmpty() ? INDEX_NONE : Find(Separator, Case, Direction);
	if (At == INDEX_NONE)
	{
		return false;
	}
	const FString Before = Left(At);
	const FString After = RightChop(At + Separator.Len());
	if (LeftPart)
	{
		*LeftPart = Before;
	}
	if (RightPart)
	{
		*RightPart = After;
	}
	return true;
}

FString FString::ToUpper() const
{
	FString Result(*this);
	std::transform(Result.Text.begin(), Result.Text.end(), Result.Text.begin(), toUpperAscii);
	return Result;
}

int32 FString::ParseIntoArray(TArray<FString>& Parts, const TCHAR* Delimiter, bool bCullEmpty) const
{
	Parts.Reset();
	const FStringView Cut(Delimiter);
	FStringView Rest(Text);
	while (!Rest.empty())
	{
		const size_t End = Cut.empty() ? FStringView::npos : Rest.find(Cut);
		const FStringView Part = Rest.substr(0, End);
		if (!Part.empty() || !bCullEmpty)
		{
			Parts.Add(FString(Part));
		}
		if (End == FStringView::npos)
		{
			return Parts.Num();
		}
		Rest.remove_prefix(End + Cut.size());
		if (Rest.empty() && !bCullEmpty)
		{
			Parts.Add(FString()); // a delimiter at the very end leaves an empty last part
		}
	}
	return Parts.Num();
}
