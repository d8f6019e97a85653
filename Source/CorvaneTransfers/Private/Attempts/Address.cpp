#include "Attempts/Address.h"

namespace CorvaneAddressParts
{
	/** Where the first of some characters stands, from a place on; the end of the text when none does. */
	template <typename... CharTypes>
	static int32 FindAny(const FString& Text, int32 From, CharTypes... Wanted)
	{
		const TCHAR* const Units = *Text;
		const int32 End = Text.Len();
		while (From < End && ((Units[From] != Wanted) && ...))
		{
			++From;
		}
		return From;
	}

	/** Where the path, the query or the fragment begins, whichever is first. */
	static int32 FindRest(const FString& URL, int32 From)
	{
		return FindAny(URL, From, TEXT('/'), TEXT('?'), TEXT('#'));
	}

	/** @return where the host, with what stands before and behind it, begins. */
	static int32 AuthorityBegin(const FString& URL)
	{
		const int32 Slash = FindRest(URL, 0);
		const bool bBegins = Slash > 0 && Slash + 1 < URL.Len() && URL[Slash - 1] == TEXT(':') && URL[Slash] == TEXT('/') &&
							 URL[Slash + 1] == TEXT('/'); // else it stands in a path or a query
		return bBegins ? Slash + 2 : 0;
	}

	/** @return where the host begins: behind the last @ before the path. */
	static int32 HostBegin(const FString& URL)
	{
		const int32 Begin = AuthorityBegin(URL);
		int32 Host = FindRest(URL, Begin);
		while (Host > Begin && URL[Host - 1] != TEXT('@'))
		{
			--Host;
		}
		return Host;
	}

	/** @return where a scheme of a link ends, with its colon; 0 when it has none. */
	static int32 SchemeEnd(const FString& Link)
	{
		const int32 End = FindAny(Link, 0, TEXT(':'), TEXT('/'), TEXT('?'), TEXT('#'));
		return End < Link.Len() && Link[End] == TEXT(':') ? End + 1 : 0;
	}

	/** @param Base  without query. @return the address of the folder that it names a file in. */
	static FString FolderOf(const FString& Base)
	{
		const int32 Host = HostBegin(Base);
		const int32 Slash = Base.Find(TEXT("/"), ESearchCase::CaseSensitive, ESearchDir::FromEnd);
		return Slash < Host ? Base + TEXT("/") : Base.Left(Slash + 1);
	}

	static FString Trim(const FString& Text)
	{
		int32 Begin = 0;
		int32 End = Text.Len();
		while (Begin < End && Text[Begin] <= TEXT(' '))
		{
			++Begin;
		}
		while (Begin < End && Text[End - 1] <= TEXT(' '))
		{
			--End;
		}
		return Text.Mid(Begin, End - Begin);
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
	return bWeb && !CorvaneAddressParts::HasBlankOrControl(URL) &&
		   CorvaneAddressParts::FindAny(URL, Host, TEXT(':'), TEXT('/'), TEXT('?'), TEXT('#')) > Host;
}

FString CorvaneAddress::WithoutUser(const FString& URL)
{
	if (CorvaneAddressParts::FindAny(URL, 0, TEXT('@')) == URL.Len())
	{
		return URL;
	}
	const int32 Host = CorvaneAddressParts::HostBegin(URL);
	const int32 Begin = CorvaneAddressParts::AuthorityBegin(URL);
	return Host == Begin ? URL : URL.Left(Begin) + URL.Mid(Host, MAX_int32);
}

FString CorvaneAddress::ForLog(const FString& URL)
{
	return WithoutQuery(WithoutUser(URL));
}

FString CorvaneAddress::Origin(const FString& URL)
{
	const FString Shown = WithoutUser(URL);
	return Shown.Left(CorvaneAddressParts::FindRest(Shown, CorvaneAddressParts::AuthorityBegin(Shown)));
}

FString CorvaneAddress::OriginWithoutUsualPort(const FString& URL)
{
	const FString Whole = Origin(URL);
	const FString UsualPort = Whole.StartsWith(TEXT("https:"), ESearchCase::IgnoreCase) ? TEXT(":443") : TEXT(":80");
	return Whole.EndsWith(UsualPort, ESearchCase::CaseSensitive) ? Whole.LeftChop(UsualPort.Len()) : Whole;
}

bool CorvaneAddress::IsSameOrigin(const FString& A, const FString& B)
{
	return OriginWithoutUsualPort(A).Equals(OriginWithoutUsualPort(B), ESearchCase::IgnoreCase);
}

FString CorvaneAddress::WithUserOf(const FString& URL, const FString& Other)
{
	using namespace CorvaneAddressParts;
	const FString Plain = WithoutUser(URL);
	if (!IsSameOrigin(URL, Other))
	{
		return Plain;
	}
	const int32 Begin = AuthorityBegin(Other);
	return Plain.Left(AuthorityBegin(Plain)) + Other.Mid(Begin, HostBegin(Other) - Begin) + Plain.Mid(AuthorityBegin(Plain), MAX_int32);
}

FString CorvaneAddress::WithoutQuery(const FString& URL)
{
	return URL.Left(CorvaneAddressParts::FindAny(URL, 0, TEXT('?'), TEXT('#')));
}

FString CorvaneAddress::Resolve(const FString& Base, const FString& Link)
{
	const FString Target = CorvaneAddressParts::Trim(Link);
	FString Whole;
	if (Target.Contains(TEXT("\\"), ESearchCase::CaseSensitive))
	{
		return FString(); // programs do not agree on what it separates
	}
	if (CorvaneAddressParts::SchemeEnd(Target) > 0)
	{
		Whole = Target;
	}
	else if (Target.StartsWith(TEXT("//"), ESearchCase::CaseSensitive))
	{
		Whole = Base.Left(CorvaneAddressParts::SchemeEnd(Base)) + Target;
	}
	else if (Target.StartsWith(TEXT("/"), ESearchCase::CaseSensitive))
	{
		Whole = Origin(Base) + Target;
	}
	else if (Target.IsEmpty() || Target.StartsWith(TEXT("?"), ESearchCase::CaseSensitive))
	{
		Whole = WithoutQuery(Base) + Target;
	}
	else
	{
		Whole = CorvaneAddressParts::FolderOf(WithoutQuery(Base)) + Target;
	}
	return IsUsable(Whole) ? WithoutUser(Whole) : FString();
}
