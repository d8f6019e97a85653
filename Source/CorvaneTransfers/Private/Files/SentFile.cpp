#include "Files/SentFile.h"

#include "Files/FileFaults.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"
#include "Templates/UniquePtr.h"

FCorvaneFileResult FCorvaneSentFile::Find(const FString& InPath, FCorvaneSentFile& File)
{
	constexpr bool bWhileItIsWritten = true; // nobody is kept from his file; that it changes is noticed
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	const TUniquePtr<IFileHandle> Handle(Files.OpenRead(*InPath, bWhileItIsWritten));
	if (!Handle.IsValid())
	{
		return CorvaneFileFaults::CannotRead(InPath);
	}
	File.Path = InPath;
	File.Size = Handle->Size();
	File.ChangedAt = Files.GetTimeStamp(*InPath);
	return FCorvaneFileResult();
}

bool FCorvaneSentFile::IsUnchanged() const
{
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	return Files.FileSize(*Path) == Size && Files.GetTimeStamp(*Path).GetTicks() == ChangedAt.GetTicks();
}
