#pragma once

#include "CoreMinimal.h"

/** What a request may say in its headers. Thread: any. */
namespace CorvaneHeaders
{
	/** Whether a text has control characters, with which no header can be sent. */
	bool HasControl(const FString& Text);
	/** Whether a header may be called so. */
	bool IsName(const FString& Text);
} // namespace CorvaneHeaders
