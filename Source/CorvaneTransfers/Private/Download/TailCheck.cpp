#include "Download/TailCheck.h"

FCorvaneTailCheck::FCorvaneTailCheck(TArray<uint8>&& InTail)
	: Tail(MoveTemp(InTail))
{
}

int64 FCorvaneTailCheck::Take(const uint8* Bytes, int64 Number)
{
	const int64 Belonging = FMath::Min<int64>(Number, Tail.Num() - Seen);
	for (int64 Index = 0; Index < Belonging && !bDiffers; ++Index)
	{
		bDiffers = Bytes[Index] != Tail[Seen++];
	}
	return Belonging;
}
