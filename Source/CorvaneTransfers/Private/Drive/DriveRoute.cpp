#include "Drive/DriveRoute.h"

#include "Attempts/Address.h"
#include "Containers/StringConv.h"
#include "Drive/DrivePage.h"
#include "Drive/DriveReceiver.h"

namespace CorvaneDriveRoute
{
	/** Enough for a place that is gone, a page, the next page, and the file; a service that leads in circles is left. */
	static constexpr int32 MostExchanges = 5;

	static bool RemoveConditions(TMap<FString, FString>& Headers)
	{
		int32 Removed = 0;
		for (const TCHAR* const Name : {TEXT("Range"), TEXT("If-Range"), TEXT("If-Modified-Since")})
		{
			Removed += Headers.Remove(Name);
		}
		return Removed > 0;
	}

	static void RemoveSecrets(TMap<FString, FString>& Headers)
	{
		for (const TCHAR* const Name : {TEXT("Authorization"), TEXT("Proxy-Authorization"), TEXT("Cookie")})
		{
			Headers.Remove(Name);
		}
	}

	static FString Join(const FString& Before, const FString& After)
	{
		return Before.IsEmpty() || After.IsEmpty() ? Before + After : Before + TEXT("; ") + After;
	}

	static FString Join(const TArray<FString>& Cookies)
	{
		FString Joined;
		for (const FString& Cookie : Cookies)
		{
			Joined = Join(Joined, Cookie);
		}
		return Joined;
	}

	static bool IsSameOrigin(const FString& A, const FString& B)
	{
		return CorvaneAddress::Origin(A) == CorvaneAddress::Origin(B);
	}

	static FString ToText(TArray<uint8>&& Bytes)
	{
		for (uint8& Byte : Bytes)
		{
			Byte = Byte == 0 ? ' ' : Byte; // it would end a text
		}
		const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Bytes.GetData()), Bytes.Num());
		return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
	}
} // namespace CorvaneDriveRoute

FCorvaneDriveRoute::FCorvaneDriveRoute(const FString& InFileID)
	: FileID(InFileID)
{
}

FString FCorvaneDriveRoute::FindFault() const
{
	return CorvaneDrive::FindIDFault(FileID);
}

void FCorvaneDriveRoute::Start(const FCorvaneExchangeRequest& InAsked, const TSharedRef<FCorvaneExchangeReceiver>& InReceiver)
{
	Asked = InAsked;
	Receiver = InReceiver;
	Place.bIsOld = !Place.Address.IsEmpty();
	Exchanges = 0;
	SendNext(FCorvaneExchangeResult());
}

/** @param Before  what the exchange before has brought. */
void FCorvaneDriveRoute::SendNext(const FCorvaneExchangeResult& Before)
{
	if (++Exchanges > CorvaneDriveRoute::MostExchanges)
	{
		return Fail(Before, ECorvaneTransferOutcome::ServerError,
			TEXT("Not downloaded: the service leads from page to page, and not to the file."));
	}
	FCorvaneExchangeRequest Next = MakeRequest();
	FCorvaneDriveReceiver::FAsked How;
	How.bOnlyLooks = Place.Address.IsEmpty() && CorvaneDriveRoute::RemoveConditions(Next.Headers);
	How.bPlaceIsOld = Place.bIsOld;
	const TSharedRef<FCorvaneDriveReceiver> Taker = MakeShared<FCorvaneDriveReceiver>(AsShared(), Receiver.ToSharedRef(), How);
	if (!Send(Next, Taker))
	{
		End(FCorvaneExchangeResult());
	}
}

FCorvaneExchangeRequest FCorvaneDriveRoute::MakeRequest() const
{
	FCorvaneExchangeRequest Next = Asked;
	if (!Next.Headers.Contains(TEXT("Accept-Language")))
	{
		Next.Headers.Add(TEXT("Accept-Language"), TEXT("en")); // of the pages
	}
	if (!Place.Address.IsEmpty())
	{
		Next.URL = Place.Address;
		if (!CorvaneDriveRoute::IsSameOrigin(Asked.URL, Place.Address))
		{
			CorvaneDriveRoute::RemoveSecrets(Next.Headers);
		}
	}
	if (!Place.Cookies.IsEmpty())
	{
		Next.Headers.Add(TEXT("Cookie"), CorvaneDriveRoute::Join(Next.Headers.FindRef(TEXT("Cookie")), Place.Cookies));
	}
	return Next;
}

void FCorvaneDriveRoute::End(const FCorvaneExchangeResult& Result)
{
	const TSharedRef<FCorvaneExchangeReceiver> Told = Receiver.ToSharedRef();
	Receiver.Reset(); // before the next try can come
	Told->OnEnd(Result);
}

void FCorvaneDriveRoute::Fail(FCorvaneExchangeResult Result, ECorvaneTransferOutcome Failure, const FString& Sentence)
{
	Result.Failure = Failure;
	Result.Sentence = Sentence;
	End(Result);
}

/** The place is the address that was asked at first, to which ranges may go. */
void FCorvaneDriveRoute::OnFileIsHere(const FCorvaneExchangeResult& Result)
{
	Place.Address = Asked.URL;
	SendNext(Result);
}

void FCorvaneDriveRoute::OnPlaceIsGone(const FCorvaneExchangeResult& Result)
{
	Place = FPlace();
	SendNext(Result);
}

void FCorvaneDriveRoute::OnPage(const FCorvaneExchangeResult& Result, TArray<uint8>&& Bytes)
{
	if (Result.End == ECorvaneExchangeEnd::StoppedByUs)
	{
		return Fail(Result, ECorvaneTransferOutcome::ServerError,
			TEXT("Not downloaded: the service sent a page of more than 4 MiB instead of the file."));
	}
	if (Result.End != ECorvaneExchangeEnd::Done)
	{
		FCorvaneExchangeResult Broken = Result;
		Broken.bAnswerIsWhole = false; // it was not the file's
		return End(Broken);
	}
	const FString PageAddress = Result.ReachedURL.IsEmpty() ? Asked.URL : Result.ReachedURL;
	const FCorvaneDrivePage Read = CorvaneDrive::ReadPage(CorvaneDriveRoute::ToText(MoveTemp(Bytes)), PageAddress, Result.Answer.Code);
	if (Read.FileAddress.IsEmpty() && Place.bIsOld)
	{
		return OnPlaceIsGone(Result);
	}
	if (Read.FileAddress.IsEmpty())
	{
		return Fail(Result, Read.Failure, Read.Sentence);
	}
	const FString Cookies = CorvaneDriveRoute::Join(Result.Answer.Cookies);
	Place = FPlace();
	Place.Address = Read.FileAddress;
	Place.Cookies = CorvaneDriveRoute::IsSameOrigin(PageAddress, Read.FileAddress) ? Cookies : FString();
	SendNext(Result);
}
