#pragma once

#include "CoreMinimal.h"

/** What is done with the text of addresses. Thread: any. */
namespace CorvaneAddress
{
	/** Whether it is an http or https address with a host, and without blanks and control characters. */
	bool IsUsable(const FString& URL);
	/** @return the address without user and password. */
	FString WithoutUser(const FString& URL);
	/** @return what a log may show: without user, password, query and fragment, which often carry keys. */
	FString ForLog(const FString& URL);
	/** @return scheme, host and port, as they are written: letters of another case are the same. */
	FString Origin(const FString& URL);
	/** @return the same without the port that everybody takes when none is told. */
	FString OriginWithoutUsualPort(const FString& URL);
	/** Whether both are of one scheme, host and port, told or usual. */
	bool IsSameOrigin(const FString& A, const FString& B);
	/** @return the address with the user and password of another one, which has to be of the same origin; without any if it is not. */
	FString WithUserOf(const FString& URL, const FString& Other);
	/** @return the address without query and fragment. */
	FString WithoutQuery(const FString& URL);
	/**
	 * @param Base  http or https. @param Link  as a page has it: an address, or a part of one.
	 * @return where the link leads, without user and password; empty for links to anything but http and https.
	 */
	FString Resolve(const FString& Base, const FString& Link);
} // namespace CorvaneAddress
