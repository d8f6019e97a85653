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
		/** By path; keys ignore case, and not all file systems do, so a few may share one. */
		TMap<FString, TArray<FString>> Targets CORVANE_GUARDED_BY(Lock);
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
	TArray<FString>* Alike = Table.Targets.Find(InTarget);
	Alike = Alike ? Alike : &Table.Targets.Add(InTarget, TArray<FString>());
	for (const FString& Taken : *Alike)
	{
		if (FPaths::IsSamePath(Taken, InTarget))
		{
			return false;
		}
	}
	Alike->Add(InTarget);
	Target = InTarget;
	return true;
}

void FCorvaneTargetClaim::Release()
{
	CorvaneTargetClaims::FTable& Table = CorvaneTargetClaims::TheTable();
	FScopeLock Held(&Table.Lock);
	TArray<FString>* Alike = Table.Targets.Find(Target);
	for (int32 Index = 0; Alike && Index < Alike->Num(); ++Index)
	{
		if ((*Alike)[Index].Equals(Target, ESearchCase::CaseSensitive))
		{
			Alike->RemoveAt(Index);
			break;
		}
	}
	if (Alike && Alike->IsEmpty())
	{
		Table.Targets.Remove(Target);
	}
	Target = FString();
}
