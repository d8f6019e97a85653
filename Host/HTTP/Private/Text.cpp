#include "Text.h"

#include "Containers/StringConv.h"

#include <algorithm>
#include <type_traits>

namespace
{
	char lower(char Letter)
	{
		return Letter >= 'A' && Letter <= 'Z' ? static_cast<char>(Letter + ('a' - 'A')) : Letter;
	}

	template <class View>
	bool isAscii(View Text)
	{
		return std::none_of(
			Text.begin(), Text.end(), [](auto Unit) { return static_cast<std::make_unsigned_t<decltype(Unit)>>(Unit) >= 0x80; });
	}
} // namespace

std::string Text::ToUtf8(const FString& Units)
{
	const FStringView View = Units;
	if (isAscii(View)) // as headers and addresses are, as a rule
	{
		return std::string(View.begin(), View.end());
	}
	const FTCHARToUTF8 Bytes(*Units, Units.Len());
	return std::string(Bytes.Get(), static_cast<size_t>(Bytes.Length()));
}

FString Text::FromUtf8(std::string_view Bytes)
{
	if (isAscii(Bytes))
	{
		FString Text;
		Text.AppendChars(Bytes.data(), static_cast<int32>(Bytes.size()));
		return Text;
	}
	const FUTF8ToTCHAR Units(Bytes.data(), static_cast<int32>(Bytes.size()));
	return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
}

bool Text::EqualNoCase(std::string_view Left, std::string_view Right)
{
	return Left.size() == Right.size() && StartsWithNoCase(Left, Right);
}

bool Text::StartsWithNoCase(std::string_view Whole, std::string_view Prefix)
{
	return Whole.size() >= Prefix.size() &&
		   std::equal(Prefix.begin(), Prefix.end(), Whole.begin(), [](char A, char B) { return lower(A) == lower(B); });
}

bool Text::IsUnreserved(uint8 Byte)
{
	const char Letter = lower(static_cast<char>(Byte));
	return (Letter >= 'a' && Letter <= 'z') || (Letter >= '0' && Letter <= '9') ||
		   std::string_view("-_.~").find(Letter) != std::string_view::npos;
}

std::string_view Text::Trim(std::string_view Whole)
{
	const size_t First = Whole.find_first_not_of(" \t");
	return First == Whole.npos ? std::string_view() : Whole.substr(First, Whole.find_last_not_of(" \t") - First + 1);
}
