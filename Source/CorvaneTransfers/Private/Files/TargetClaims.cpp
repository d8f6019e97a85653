#include "Files/TargetClaims.h"

#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "Misc/Paths.h"
#include "Misc/ScopeLock.h"

namespace CorvaneTargetClaims
{
	struct FTable
	{
		FCriticalSection Lock;
		TArray<FString> Targets CORVANE_GUARDED_BY(Lock); // as many as transfers run
	};

	static FTable& TheTable()
	{
		static FTable Table;
		return Table;
	}
} // namespace CorvaneTargetClaims

bool FCorvaneTargetClaim::Take(const FString& InTarget)
{
	Release();
	CorvaneTargetClaims::FTable& Table = CorvaneTargetClaims::TheTable();
	FScopeLock Held(&Table.Lock);
	for (const FString& Taken : Table.Targets)
	{
		if (FPaths::IsSamePath(Taken, InTarget))
		{
			return false;
		}
	}
	Table.Targets.Add(InTarget);
	Target = InTarget;
	return true;
}

void FCorvaneTargetClaim::Release()
{
	CorvaneTargetClaims::FTable& Table = CorvaneTargetClaims::TheTable();
	FScopeLock Held(&Table.Lock);
	for (int32 Index = 0; Index < Table.Targets.Num(); ++Index)
	{
		if (Table.Targets[Index].Equals(Target, ESearchCase::CaseSensitive))
		{
			Table.Targets.RemoveAt(Index);
			break;
		}
	}
	Target = FString();
}
