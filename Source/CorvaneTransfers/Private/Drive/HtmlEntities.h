#pragma once

#include "CoreMinimal.h"

namespace CorvaneHtml
{
	/**
	 * @return the text with its entities ("&amp;", "&#38;", "&#x26;") as what they stand for; unknown ones stay as they are.
	 * Thread: any.
	 */
	FString Decode(const FString& Text);
} // namespace CorvaneHtml
