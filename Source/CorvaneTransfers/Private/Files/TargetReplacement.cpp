#include "Files/TargetReplacement.h"

#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"

namespace CorvaneTargetReplacement
{
	static FString OldName(const FString& Target)
	{
		return Target + TEXT(".corvold");
	}

	static bool ReplaceInSteps(IPlatformFile& Files, const FString& Target, const FString& NewFile, const TFunction<bool()>& TellJournal)
	{
		if (!TellJournal())
		{
			return false;
		}
		const FString Old = OldName(Target);
		Files.DeleteFile(*Old); // of a replacement before
		if (!Files.MoveFile(*Old, *Target))
		{
			return false;
		}
		const bool bReplaced = Files.MoveFile(*Target, *NewFile);
		Heal(Target);
		return bReplaced;
	}
} // namespace CorvaneTargetReplacement

bool CorvaneTargetReplacement::Replace(const FString& Target, const FString& NewFile, const TFunction<bool()>& TellJournal)
{
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	return Files.MoveFile(*Target, *NewFile) || (Files.FileExists(*Target) && ReplaceInSteps(Files, Target, NewFile, TellJournal));
}

void CorvaneTargetReplacement::Heal(const FString& Target)
{
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	const FString Old = OldName(Target);
	if (Files.FileExists(*Target))
	{
		Files.DeleteFile(*Old);
	}
	else
	{
		Files.MoveFile(*Target, *Old);
	}
}
