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
} // namespace CorvaneAddress
