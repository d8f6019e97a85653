#include "Drive/DriveReceiver.h"

#include "Attempts/RetryPolicy.h"
#include "Drive/DrivePage.h"
#include "Drive/DriveRoute.h"

namespace CorvaneDriveReceiver
{
	/** What speaks of the file's bytes (412, 416), or may pass, is no word about the place. */
	static bool SaysThatPlaceIsGone(int32 Code)
	{
		return Code >= 400 && Code < 500 && Code != 412 && Code != 416 && !CorvaneRetry::IsPassing(Code);
	}
} // namespace CorvaneDriveReceiver

FCorvaneDriveReceiver::FCorvaneDriveReceiver(
	const TSharedRef<FCorvaneDriveRoute>& InRoute, const TSharedRef<FCorvaneExchangeReceiver>& InTransfer, const FAsked& InAsked)
	: Route(InRoute)
	, Transfer(InTransfer)
	, Asked(InAsked)
{
}

FCorvaneDriveReceiver::EAnswer FCorvaneDriveReceiver::Judge(const FAsked& How, const FCorvaneAnswer& Answer)
{
	if (How.bPlaceIsOld && CorvaneDriveReceiver::SaysThatPlaceIsGone(Answer.Code))
	{
		return EAnswer::PlaceIsGone;
	}
	if (CorvaneDrive::IsPage(Answer))
	{
		return EAnswer::Page;
	}
	return How.bOnlyLooks && Answer.IsSuccess() ? EAnswer::FileIsHere : EAnswer::ForTransfer;
}

bool FCorvaneDriveReceiver::OnAnswer(const FCorvaneAnswer& Answer)
{
	Answered = Judge(Asked, Answer);
	return Answered == EAnswer::ForTransfer ? Transfer->OnAnswer(Answer) : Answered == EAnswer::Page;
}

bool FCorvaneDriveReceiver::OnBytes(const uint8* Bytes, int64 Number)
{
	if (Answered == EAnswer::ForTransfer)
	{
		return Transfer->OnBytes(Bytes, Number);
	}
	if (Page.Num() + Number > CorvaneDrive::MostPageBytes)
	{
		return false;
	}
	Page.Append(Bytes, static_cast<int32>(Number));
	return true;
}

void FCorvaneDriveReceiver::OnEnd(const FCorvaneExchangeResult& Result)
{
	const TSharedRef<FCorvaneDriveRoute> Told = Route.ToSharedRef();
	Route.Reset();
	Transfer.Reset();
	switch (Answered)
	{
	case EAnswer::Page:
		return Told->OnPage(Result, MoveTemp(Page));
	case EAnswer::FileIsHere:
		return Told->OnFileIsHere(Result);
	case EAnswer::PlaceIsGone:
		return Told->OnPlaceIsGone(Result);
	default:
		return Told->End(Result);
	}
}
