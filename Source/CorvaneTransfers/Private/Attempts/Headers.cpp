#include "Attempts/Headers.h"

bool CorvaneHeaders::HasControl(const FString& Text)
{
	for (int32 Index = 0; Index < Text.Len(); ++Index)
	{
		if (Text[Index] < TEXT(' ') || Text[Index] == 0x7F)
		{
			return true;
		}
	}
	return false;
}

bool CorvaneHeaders::IsName(const FString& Text)
{
	const FString Separators = TEXT(" \"(),/:;<=>?@[\\]{}");
	for (int32 Index = 0; Index < Text.Len(); ++Index)
	{
		if (Text[Index] > TEXT('~') || Separators.Contains(Text.Mid(Index, 1), ESearchCase::CaseSensitive))
		{
			return false;
		}
	}
	return !Text.IsEmpty() && !HasControl(Text);
}
