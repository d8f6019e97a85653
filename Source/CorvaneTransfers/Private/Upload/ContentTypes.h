#pragma once

#include "CoreMinimal.h"

namespace CorvaneContentTypes
{
	/** @return the content type of files with such an ending; that of any bytes when it is not known. Thread: game thread. */
	FString Of(const FString& Path);
} // namespace CorvaneContentTypes
