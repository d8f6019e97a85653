#include "Drive/DrivePage.h"

#include "Attempts/Address.h"
#include "Drive/HtmlReader.h"
#include "GenericPlatform/GenericPlatformHttp.h"

namespace CorvaneDrivePage
{
	static constexpr int32 MostFields = 64;
	static constexpr int32 MostAddress = 16 * 1024;

	/** A form whose answer is one address, as far as the page has told it. */
	struct FForm
	{
		bool bOpen = false;
		bool bAsksByAddress = false;
		bool bConfirms = false;
		FString Action;
		FString Query;
		int32 Fields = 0;
	};

	/** @param Parts  with a null at the end. */
	static bool HasAny(const FString& Text, const TCHAR* const* Parts)
	{
		while (*Parts && !Text.Contains(*Parts, ESearchCase::IgnoreCase))
		{
			++Parts;
		}
		return *Parts != nullptr;
	}

	static bool IsNamed(const FCorvaneHtmlTag& Tag, const TCHAR* Name)
	{
		return Tag.Name.Equals(Name, ESearchCase::IgnoreCase);
	}

	/** What a page says about a file, gathered tag by tag. */
	class FFinder
	{
	public:
		explicit FFinder(const FString& InPageAddress)
			: PageAddress(InPageAddress)
		{
		}

		void Take(const FCorvaneHtmlTag& Tag)
		{
			if (IsNamed(Tag, TEXT("form")))
			{
				TakeForm(Tag);
			}
			else if (IsNamed(Tag, TEXT("input")))
			{
				TakeInput(Tag);
			}
			else if (IsNamed(Tag, TEXT("a")) && Link.IsEmpty() &&
					 Tag.Get(TEXT("href")).Contains(TEXT("confirm="), ESearchCase::CaseSensitive))
			{
				Link = Usable(CorvaneAddress::Resolve(PageAddress, Tag.Get(TEXT("href"))));
			}
		}

		/** @return where the file is; forms come before links. */
		FString Finish()
		{
			EndForm(); // a page may forget to
			return Found.IsEmpty() ? Link : Found;
		}

		bool AsksForPassword() const { return bPassword; }

	private:
		/** Nothing that was asked for safely is asked for openly on the way. */
		FString Usable(const FString& Address) const
		{
			const bool bOpener = PageAddress.StartsWith(TEXT("https:"), ESearchCase::IgnoreCase) &&
								 !Address.StartsWith(TEXT("https:"), ESearchCase::IgnoreCase);
			return bOpener || Address.Len() > MostAddress || !CorvaneAddress::IsUsable(Address) ? FString() : Address;
		}

		void TakeForm(const FCorvaneHtmlTag& Tag)
		{
			if (Tag.bCloses)
			{
				EndForm();
			}
			else if (!Form.bOpen) // a form inside a form is none
			{
				BeginForm(Tag);
			}
		}

		void BeginForm(const FCorvaneHtmlTag& Tag)
		{
			const FString Method = Tag.Get(TEXT("method"));
			Form.bOpen = true;
			Form.bAsksByAddress = Method.IsEmpty() || Method.Equals(TEXT("get"), ESearchCase::IgnoreCase);
			Form.Action = Tag.Get(TEXT("action"));
		}

		void EndForm()
		{
			if (Form.bOpen && Form.bAsksByAddress && Form.bConfirms && Form.Fields <= MostFields && Found.IsEmpty())
			{
				const FString Action = CorvaneAddress::WithoutQuery(CorvaneAddress::Resolve(PageAddress, Form.Action));
				Found = Action.IsEmpty() ? FString() : Usable(Action + TEXT("?") + Form.Query);
			}
			Form = FForm();
		}

		void TakeInput(const FCorvaneHtmlTag& Tag)
		{
			const FString Type = Tag.Get(TEXT("type"));
			const FString Name = Tag.Get(TEXT("name"));
			bPassword |= Type.Equals(TEXT("password"), ESearchCase::IgnoreCase);
			if (!Form.bOpen || Name.IsEmpty() || !Type.Equals(TEXT("hidden"), ESearchCase::IgnoreCase) || Form.Query.Len() > MostAddress)
			{
				return;
			}
			++Form.Fields;
			Form.bConfirms |= Name.Equals(TEXT("confirm"), ESearchCase::CaseSensitive);
			Form.Query += Form.Query.IsEmpty() ? TEXT("") : TEXT("&");
			Form.Query += FGenericPlatformHttp::UrlEncode(Name) + TEXT("=") + FGenericPlatformHttp::UrlEncode(Tag.Get(TEXT("value")));
		}

		const FString PageAddress;
		FForm Form;
		FString Found;
		FString Link;
		bool bPassword = false;
	};

	static FCorvaneDrivePage Fail(ECorvaneTransferOutcome Failure, const TCHAR* Sentence)
	{
		FCorvaneDrivePage Read;
		Read.Failure = Failure;
		Read.Sentence = Sentence;
		return Read;
	}

	/** @param Text  what a person reads on a page that leads to no file. The pages come in English, which is asked for. */
	static FCorvaneDrivePage Judge(const FString& Text, bool bAsksForPassword, int32 Code)
	{
		static const TCHAR* const Quota[] = {TEXT("quota exceeded"), TEXT("download quota"), TEXT("exceeded the quota"),
			TEXT("quota for this file"), TEXT("too many users have viewed or downloaded"), nullptr};
		static const TCHAR* const Permission[] = {TEXT("you need access"), TEXT("you need permission"), TEXT("request access"),
			TEXT("access denied"), TEXT("not have access"), TEXT("not have permission"), TEXT("sign in"), TEXT("sign-in"), nullptr};
		if (HasAny(Text, Quota))
		{
			return Fail(ECorvaneTransferOutcome::QuotaReached,
				TEXT("Not downloaded: the file's quota of downloads is used up for now; the service gives it out again later."));
		}
		if (Code == 401 || Code == 403 || bAsksForPassword || HasAny(Text, Permission))
		{
			return Fail(
				ECorvaneTransferOutcome::NotPermitted, TEXT("Not downloaded: the file is not shared with everyone who has its link."));
		}
		return Fail(ECorvaneTransferOutcome::ServerError,
			TEXT("Not downloaded: the service sent a page instead of the file, and no way from it to the file."));
	}
} // namespace CorvaneDrivePage

FString CorvaneDrive::FindIDFault(const FString& FileID)
{
	constexpr int32 MostLength = 256;
	for (int32 Index = 0; Index < FileID.Len(); ++Index)
	{
		const TCHAR Unit = FileID[Index];
		const TCHAR Lower = static_cast<TCHAR>(Unit | 0x20);
		const bool bLetter = Unit < 0x80 && Lower >= TEXT('a') && Lower <= TEXT('z');
		if (!bLetter && !(Unit >= TEXT('0') && Unit <= TEXT('9')) && Unit != TEXT('-') && Unit != TEXT('_'))
		{
			return TEXT("This is no ID of a Drive file, which has only letters, digits, - and _: ") + FileID.Left(MostLength);
		}
	}
	return FileID.IsEmpty() || FileID.Len() > MostLength ? FString(TEXT("The ID of the Drive file is empty or too long.")) : FString();
}

FString CorvaneDrive::MakeAddress(const FString& Base, const FString& FileID)
{
	return Base + TEXT("/uc?id=") + FGenericPlatformHttp::UrlEncode(FileID) + TEXT("&export=download");
}

FString CorvaneDrive::FindID(const FString& Base, const FString& Address)
{
	const FString Begin = Base + TEXT("/uc?id=");
	const FString End = TEXT("&export=download");
	const bool bOwn = Address.StartsWith(*Begin, ESearchCase::CaseSensitive) && Address.EndsWith(*End, ESearchCase::CaseSensitive);
	return bOwn ? Address.LeftChop(End.Len()).RightChop(Begin.Len()) : FString();
}

bool CorvaneDrive::IsPage(const FCorvaneAnswer& Answer)
{
	const bool bHtml = Answer.ContentType.StartsWith(TEXT("text/html"), ESearchCase::IgnoreCase) ||
					   Answer.ContentType.StartsWith(TEXT("application/xhtml"), ESearchCase::IgnoreCase);
	return (Answer.IsSuccess() && bHtml && !Answer.bAttachment) || Answer.Code == 401 || Answer.Code == 403;
}

FCorvaneDrivePage CorvaneDrive::ReadPage(const FString& Page, const FString& PageAddress, int32 Code)
{
	FCorvaneHtmlReader Reader(Page);
	CorvaneDrivePage::FFinder Finder(PageAddress);
	FCorvaneHtmlTag Tag;
	while (Reader.Next(Tag))
	{
		Finder.Take(Tag);
	}
	const FString Address = Code == 401 || Code == 403 ? FString() : Finder.Finish();
	FCorvaneDrivePage Read;
	Read.FileAddress = Address;
	return Address.IsEmpty() ? CorvaneDrivePage::Judge(Reader.GetText(), Finder.AsksForPassword(), Code) : Read;
}
