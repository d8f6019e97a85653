#include "HAL/FileManager.h"

#include "FileArchives.h"
#include "HAL/PlatformFileManager.h"
#include "NativePath.h"

namespace
{
	template <class Archive>
	FArchive* archiveOf(std::unique_ptr<FFileHandle> File)
	{
		return File ? new Archive(std::move(File)) : nullptr;
	}
} // namespace

IFileManager& IFileManager::Get()
{
	static IFileManager Manager;
	return Manager;
}

FArchive* IFileManager::CreateFileReader(const TCHAR* Filename, uint32)
{
	return archiveOf<FFileReader>(FFileHandle::OpenToRead(Filename));
}

FArchive* IFileManager::CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags)
{
	std::error_code Ignored; // a directory that could not be made shows in the open
	std::filesystem::create_directories(toNativePath(Filename).parent_path(), Ignored);
	return archiveOf<FFileWriter>(FFileHandle::OpenToWrite(Filename, (WriteFlags & FILEWRITE_Append) != 0, false));
}

int64 IFileManager::FileSize(const TCHAR* Filename)
{
	return FPlatformFileManager::Get().GetPlatformFile().FileSize(Filename);
}

void IFileManager::FindFiles(TArray<FString>& FoundFiles, const TCHAR* Directory, const TCHAR* FileExtension)
{
	const std::string Wanted = FileExtension ? toNativePath(FileExtension).string() : "";
	const std::string End = Wanted.empty() || Wanted[0] == '.' ? Wanted : "." + Wanted;
	std::error_code Error;
	for (std::filesystem::directory_iterator Entry(toNativePath(Directory), Error), None; !Error && Entry != None; Entry.increment(Error))
	{
		const std::string Name = Entry->path().filename().string();
		std::error_code Ignored; // it may just have gone
		if (Name.ends_with(End) && Entry->is_regular_file(Ignored))
		{
			FoundFiles.Add(FUTF8ToTCHAR(Name.data(), static_cast<int32>(Name.size())).Get());
		}
	}
}

bool IFileManager::Delete(const TCHAR* Filename, bool bRequireExists, bool bEvenReadOnly, bool)
{
	IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
	if (!Files.FileExists(Filename))
	{
		return !bRequireExists;
	}
	if (bEvenReadOnly)
	{
		Files.SetReadOnly(Filename, false);
	}
	return Files.DeleteFile(Filename);
}
