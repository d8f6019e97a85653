#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"

class FCorvaneDriveRoute;

/** One exchange on the way to a Drive file: tells a page from the file by the first lines, and each to whom it concerns. Thread: HTTP thread. */
class FCorvaneDriveReceiver : public FCorvaneExchangeReceiver
{
public:
	/** What the answer is. */
	enum class EAnswer : uint8
	{
		/** None came. */
		None,
		/** The transfer's own: the file, or a failure that it knows to deal with. */
		ForTransfer,
		Page,
		/** The file, which was not asked for in the way that the transfer wants it. */
		FileIsHere,
		/** What was remembered does not lead to the file any more. */
		PlaceIsGone
	};

	/** How the exchange was asked. */
	struct FAsked
	{
		/** Less than the transfer asks: a file that comes is not taken as it comes. */
		bool bOnlyLooks = false;
		/** By an earlier try's knowledge. */
		bool bPlaceIsOld = false;
	};

	FCorvaneDriveReceiver(
		const TSharedRef<FCorvaneDriveRoute>& InRoute, const TSharedRef<FCorvaneExchangeReceiver>& InTransfer, const FAsked& InAsked);

	/** Thread: any. */
	static EAnswer Judge(const FAsked& How, const FCorvaneAnswer& Answer);

	virtual bool OnAnswer(const FCorvaneAnswer& Answer) override;
	virtual bool OnBytes(const uint8* Bytes, int64 Number) override;
	virtual void OnEnd(const FCorvaneExchangeResult& Result) override;

private:
	TSharedPtr<FCorvaneDriveRoute> Route; // both until the end: the route holds whoever holds this
	TSharedPtr<FCorvaneExchangeReceiver> Transfer;
	const FAsked Asked;
	EAnswer Answered = EAnswer::None;
	TArray<uint8> Page;
};
