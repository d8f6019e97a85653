#pragma once

#include "CoreMinimal.h"
#include "CorvaneFollowOptions.h"
#include "CorvaneTransferReport.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "CorvaneFollowEvents.generated.h"

class FCorvaneFollowRun;

/**
 * All pins of the node share these outputs, or the editor would mix them.
 * @param ID  of the last event that had one: a later start goes on behind it.
 * @param Type  "message" when the server gave none.
 * @param Data  the lines of the event, with a line feed between them.
 * @param Report  how it stands, or what it ended with.
 */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_FourParams(
	FCorvaneFollowPin, const FString&, ID, const FString&, Type, const FString&, Data, const FCorvaneTransferReport&, Report);

/**
 * Follows a stream of server-sent events (text/event-stream) over drops, time limits and troubles of the server: it connects
 * again and asks to go on behind the last event. Each event comes once and in order, in bounded memory. It goes on until it is
 * cancelled, the program ends, the server says that there are no more events (204) or answers with something that is no stream,
 * or the tries are used up; that is its one outcome. Thread: game thread.
 */
UCLASS(BlueprintType, meta = (ExposedAsyncProxy = "Transfer"))
class CORVANETRANSFERS_API UCorvaneFollowEvents : public UBlueprintAsyncActionBase
{
	GENERATED_BODY()

public:
	/** Functions of native code; each may be unset. */
	struct FHandlers
	{
		TFunction<void(const FString& ID, const FString& Type, const FString& Data)> OnEvent;
		TFunction<void(const FCorvaneTransferReport&)> OnClose;
		TFunction<void(const FCorvaneTransferReport&)> OnOpen;
		TFunction<void(UCorvaneFollowEvents&)> OnBeforeAttempt;
	};

	/**
	 * Raised before each connection, the first one too: SetHeader may change what it is asked with, such as a token that has
	 * expired. Whoever has to wait for that calls Pause, and then SetHeader and Continue; it is not raised again for the same
	 * connection. Type and Data are empty.
	 */
	UPROPERTY(BlueprintAssignable)
	FCorvaneFollowPin OnBeforeAttempt;

	/** Raised when the first byte of a stream has come, for each connection. Type and Data are empty. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneFollowPin OnOpen;

	/** An event. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneFollowPin OnEvent;

	/** It is over; the report says why. Raised once. Type and Data are empty. */
	UPROPERTY(BlueprintAssignable)
	FCorvaneFollowPin OnClose;

	/**
	 * Makes a node that follows a stream of events.
	 * @param URL  http or https; a user and a password in it are sent, and never shown.
	 * @param Options  what may be set, each with a default that suits most.
	 * @return the node, which begins when it is activated, as a graph does at once.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "Options", DisplayName = "Follow Events"))
	static UCorvaneFollowEvents* FollowEvents(const FString& URL, const FCorvaneFollowOptions& Options);

	/** Follows a stream for native code. @return the node, which is held until its outcome. */
	static UCorvaneFollowEvents* Start(const FString& URL, const FCorvaneFollowOptions& Options, FHandlers InHandlers);

	virtual void Activate() override;

	/**
	 * Raises no event until Continue. The connection is given up: an open one cannot be held without reading it. What has
	 * arrived is told after the pause. Harmless when it is paused or over.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void Pause();

	/** Connects again after Pause, and asks to go on behind the last event. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void Continue();

	/** Ends it soon, through OnClose with Cancelled. No event comes any more. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void Cancel();

	/** Changes a header from the next connection on. @param Value  empty = it is left out. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Transfers")
	void SetHeader(const FString& Name, const FString& Value);

	/** Tells the ID of the last event that had one; empty = none had. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	FString GetLastEventID() const;

	/** Tells how it stands now, or what it ended with. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	FCorvaneTransferReport GetReport() const;

	/** Tells whether it waits for Continue. */
	UFUNCTION(BlueprintPure, Category = "Corvane|Transfers")
	bool IsPaused() const;

private:
	void BeforeAttempt(const FCorvaneTransferReport& Report);
	void Open(const FCorvaneTransferReport& Report);
	void Hear(const FString& ID, const FString& Type, const FString& Data);
	void Close(const FCorvaneTransferReport& Report);

	TSharedPtr<FCorvaneFollowRun> Run; // null before Activate
	FString Address;
	FCorvaneFollowOptions Wishes;
	FHandlers Handlers;
};
