#include "Files/HashOnTheWay.h"

void FCorvaneHashOnTheWay::Begin()
{
	Hash = Kind == ECorvaneHashKind::None ? nullptr : MakeUnique<FCorvaneFileHash>(Kind);
	Hashed = 0;
}

void FCorvaneHashOnTheWay::Update(int64 Start, const uint8* Bytes, int64 Count)
{
	if (Start != Hashed)
	{
		Hash.Reset(); // such as bytes that the disk lost, and that come again
	}
	if (Hash.IsValid())
	{
		Hash->Update(Bytes, Count);
		Hashed += Count;
	}
}

FString FCorvaneHashOnTheWay::Final()
{
	const TUniquePtr<FCorvaneFileHash> Done = MoveTemp(Hash);
	return Done->Final();
}
