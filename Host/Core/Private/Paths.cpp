#include "Misc/Paths.h"

#include "HAL/PlatformFileManager.h"
#include "Host/Directories.h"
#include "Math/UnrealMathUtility.h"
#include "NativePath.h"

#include <algorithm>

namespace
{
	struct FRoots
	{
		std::string Project = "./";
		std::filesystem::path Base = std::filesystem::current_path();
	};

	FRoots& theRoots()
	{
		static FRoots Roots;
		return Roots;
	}

	FString toText(const std::string& Utf8)
	{
		const FUTF8ToTCHAR Units(Utf8.data(), static_cast<int32>(Utf8.size()));
		return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
	}

	/** @return the last position of a slash, or INDEX_NONE. */
	int32 lastSlash(const FString& Path)
	{
		return FMath::Max(Path.Find("/", ESearchCase::CaseSensitive, ESearchDir::FromEnd),
			Path.Find("\\", ESearchCase::CaseSensitive, ESearchDir::FromEnd));
	}

	/** @return the position of the dot before the extension, or INDEX_NONE. */
	int32 extensionDot(const FString& Path)
	{
		const int32 Dot = Path.Find(".", ESearchCase::CaseSensitive, ESearchDir::FromEnd);
		return Dot > lastSlash(Path) ? Dot : INDEX_NONE;
	}
} // namespace

void HostDirectories::Set(const std::string& Project, const std::string& Base)
{
	theRoots().Base = std::filesystem::absolute(Base.empty() ? std::filesystem::current_path() : std::filesystem::path(Base));
	theRoots().Project = Project.empty() ? "./" : Project;
	if (theRoots().Project.back() != '/')
	{
		theRoots().Project += '/';
	}
}

FString FPaths::ProjectDir()
{
	return toText(theRoots().Project);
}

FString FPaths::ProjectSavedDir()
{
	return ProjectDir() + TEXT("Saved/");
}

FString FPaths::ConvertRelativePathToFull(const FString& Path)
{
	std::string Text = FTCHARToUTF8(*Path, Path.Len()).Get();
	std::replace(Text.begin(), Text.end(), '\\', '/');
	return toText((theRoots().Base / Text).lexically_normal().generic_string());
}

bool FPaths::FileExists(const FString& Path)
{
	return FPlatformFileManager::Get().GetPlatformFile().FileExists(*Path);
}

bool FPaths::DirectoryExists(const FString& Path)
{
	return FPlatformFileManager::Get().GetPlatformFile().DirectoryExists(*Path);
}

bool FPaths::IsSamePath(const FString& PathA, const FString& PathB)
{
	return ConvertRelativePathToFull(PathA).Equals(ConvertRelativePathToFull(PathB));
}

FString FPaths::GetCleanFilename(const FString& Path)
{
	return Path.RightChop(lastSlash(Path) + 1);
}

FString FPaths::GetExtension(const FString& Path, bool bIncludeDot)
{
	const int32 Dot = extensionDot(Path);
	return Dot == INDEX_NONE ? FString() : Path.RightChop(bIncludeDot ? Dot : Dot + 1);
}

FString FPaths::GetBaseFilename(const FString& Path, bool bRemovePath)
{
	const int32 Dot = extensionDot(Path);
	const FString Base = Dot == INDEX_NONE ? Path : Path.Left(Dot);
	return bRemovePath ? GetCleanFilename(Base) : Base;
}

FString FPaths::GetPath(const FString& Path)
{
	return Path.Left(lastSlash(Path));
}
