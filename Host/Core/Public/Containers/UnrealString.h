#pragma once

#include "Containers/Array.h"

#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace ESearchCase
{
	enum Type
	{
		CaseSensitive,
		IgnoreCase
	};
} // namespace ESearchCase

namespace ESearchDir
{
	enum Type
	{
		FromStart,
		FromEnd
	};
} // namespace ESearchDir

using FStringView = std::basic_string_view<TCHAR>;

/**
 * Text in UTF-16 units; lengths and positions count units. It may hold zeros. Comparison and search ignore the case of
 * ASCII letters unless told otherwise.
 */
class FString
{
public:
	FString() = default;
	FString(const TCHAR* InText)
		: Text(InText ? InText : TEXT(""))
	{
	}
	/** Each byte becomes one unit: for ASCII only. */
	FString(const ANSICHAR* AsciiText);
	explicit FString(FStringView View)
		: Text(View)
	{
	}
	static FString ConstructFromPtrSize(const TCHAR* Units, int32 Size) { return FString(FStringView(Units, static_cast<size_t>(Size))); }

	/** Reads UTF-8; each byte that is no part of a well-formed character becomes U+FFFD. */
	static FString ConstructFromPtrSize(const UTF8CHAR* Bytes, int32 Size);

	int32 Len() const { return static_cast<int32>(Text.size()); }
	bool IsEmpty() const { return Text.empty(); }
	/** Zero-terminated units, never null; valid until the text changes. */
	const TCHAR* operator*() const { return Text.c_str(); }
	const TCHAR& operator[](int32 Index) const { return Text[static_cast<size_t>(Index)]; }
	operator FStringView() const { return Text; }

	bool Equals(const FString& Other, ESearchCase::Type Case = ESearchCase::CaseSensitive) const;
	friend bool operator==(const FString& Left, const FString& Right) { return Left.Equals(Right, ESearchCase::IgnoreCase); }
	friend bool operator==(const FString& Left, const TCHAR* Right);
	friend size_t GetTypeHash(const FString& Value);

	/** @return the position of the first or last occurrence, or INDEX_NONE. */
	int32 Find(
		const FString& Part, ESearchCase::Type Case = ESearchCase::IgnoreCase, ESearchDir::Type Direction = ESearchDir::FromStart) const;
	bool Contains(const FString& Part, ESearchCase::Type Case = ESearchCase::IgnoreCase) const { return Find(Part, Case) != INDEX_NONE; }
	bool StartsWith(const FString& Prefix, ESearchCase::Type Case = ESearchCase::IgnoreCase) const;
	bool EndsWith(const FString& Suffix, ESearchCase::Type Case = ESearchCase::IgnoreCase) const;
	/** @return true for digits with at most one dot among them, also after a sign. */
	bool IsNumeric() const;

	/** Cut; counts are clamped to the length. */
	FString Left(int32 Count) const { return Mid(0, Count); }
	FString LeftChop(int32 Count) const { return Left(Len() - std::clamp(Count, 0, Len())); }
	FString Right(int32 Count) const { return Mid(Len() - std::clamp(Count, 0, Len())); }
	FString RightChop(int32 Count) const { return Mid(std::clamp(Count, 0, Len())); }
	FString Mid(int32 Start, int32 Count = MAX_int32) const;
	/** @return the text without blanks, tabs and line ends after it. */
	FString TrimEnd() const;
	FString ToUpper() const;

	/** @return the text with every occurrence of From replaced; an empty From occurs nowhere. */
	FString Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type Case = ESearchCase::IgnoreCase) const;

	/**
	 * Cuts the text in two at the first or last occurrence of Separator.
	 * @param LeftPart, RightPart  what stands before and after it; either may be null or this text itself.
	 * @return false when it does not occur; the parts are not touched then.
	 */
	bool Split(const FString& Separator, FString* LeftPart, FString* RightPart, ESearchCase::Type Case = ESearchCase::IgnoreCase,
		ESearchDir::Type Direction = ESearchDir::FromStart) const;

	/**
	 * Cuts the text at every Delimiter (compared exactly). Parts is emptied first.
	 * @return the number of parts.
	 */
	int32 ParseIntoArray(TArray<FString>& Parts, const TCHAR* Delimiter, bool bCullEmpty = true) const;

	/** Makes room for so many units. */
	void Reserve(int32 CharacterCount);
	void AppendChar(TCHAR Unit) { Text.push_back(Unit); }
	void AppendChars(const TCHAR* Units, int32 Count) { Text.append(Units, static_cast<size_t>(Count)); }
	/** Each byte becomes one unit: for ASCII only. */
	void AppendChars(const ANSICHAR* AsciiText, int32 Count);
	FString& operator+=(const FString& Other)
	{
		Text += Other.Text;
		return *this;
	}
	friend FString operator+(FString Left, const FString& Right)
	{
		Left += Right;
		return Left;
	}

	/**
	 * printf on typed arguments: %s takes TCHAR texts, the number formats take what C's do.
	 * @param Format  a literal.
	 */
	template <class... Args>
	static FString Printf(const TCHAR* Format, Args... Arguments)
	{
		return PrintfImpl(Format, {FormatArgument(Arguments)...});
	}

private:
	using FArgument = std::variant<const TCHAR*, int64, uint64, double>;

	template <class T>
	static FArgument FormatArgument(T Value)
	{
		if constexpr (std::is_convertible_v<T, const TCHAR*>)
		{
			return static_cast<const TCHAR*>(Value);
		}
		else if constexpr (std::is_floating_point_v<T>)
		{
			return static_cast<double>(Value);
		}
		else if constexpr (std::is_signed_v<T>)
		{
			return static_cast<int64>(Value);
		}
		else
		{
			static_assert(std::is_unsigned_v<T>, "not a printf argument");
			return static_cast<uint64>(Value);
		}
	}

	static FString PrintfImpl(const TCHAR* Format, std::initializer_list<FArgument> Arguments);

	std::basic_string<TCHAR> Text;
};
