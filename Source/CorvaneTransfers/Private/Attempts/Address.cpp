#include "Attempts/Address.h"

namespace CorvaneAddressParts
{
	/** Where the first of some characters stands, from a place on; the end of the text when none does. */
	static int32 FindAny(const FString& Text, int32 From, const FString& Wanted)
	{
		int32 At = From;
		while (At < Text.Len() && !Wanted.Contains(Text.Mid(At, 1), ESearchCase::CaseSensitive))
		{
			++At;
		}
		return At;
	}

	/** @return where the host, with what stands before and behind it, begins. */
	static int32 AuthorityBegin(const FString& URL)
	{
		const int32 Scheme = URL.Find(TEXT("://"), ESearchCase::CaseSensitive, ESearchDir::FromStart);
		return Scheme < 0 ? 0 : Scheme + 3;
	}

	/** @return where the host begins: behind the last @ before the path. */
	static int32 HostBegin(const FString& URL)
	{
		const int32 Begin = AuthorityBegin(URL);
		const FString Authority = URL.Mid(Begin, FindAny(URL, Begin, TEXT("/?#")) - Begin);
		return Begin + Authority.Find(TEXT("@"), ESearchCase::CaseSensitive, ESearchDir::FromEnd) + 1;
	}

	static bool HasBlankOrControl(const FString& Text)
	{
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			const TCHAR Unit = Text[Index];
			if (Unit <= TEXT(' ') || (Unit >= 0x7F && Unit <= 0x9F))
			{
				return true;
			}
		}
		return false;
	}
} // namespace CorvaneAddressParts

bool CorvaneAddress::IsUsable(const FString& URL)
{
	const bool bWeb = URL.StartsWith(TEXT("http://"), ESearchCase::IgnoreCase) || URL.StartsWith(TEXT("https://"), ESearchCase::IgnoreCase);
	const int32 Host = CorvaneAddressParts::HostBegin(URL);
	return bWeb && !CorvaneAddressParts::HasBlankOrControl(URL) && CorvaneAddressParts::FindAny(URL, Host, TEXT(":/?#")) > Host;
}

FString CorvaneAddress::WithoutUser(const FString& URL)
{
	return URL.Left(CorvaneAddressParts::AuthorityBegin(URL)) + URL.Mid(CorvaneAddressParts::HostBegin(URL), MAX_int32);
}

FString CorvaneAddress::ForLog(const FString& URL)
{
	const FString Shown = WithoutUser(URL);
	return Shown.Left(CorvaneAddressParts::FindAny(Shown, 0, TEXT("?#")));
}
