#include "Misc/Paths.h"

#include "Containers/StringConv.h"
#include "Host/Directories.h"

#include <algorithm>
#include <filesystem>

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

FString FPaths::ConvertRelativePathToFull(const FString& Path)
{
	std::string Text = FTCHARToUTF8(*Path, Path.Len()).Get();
	std::replace(Text.begin(), Text.end(), '\\', '/');
	return toText((theRoots().Base / Text).lexically_normal().generic_string());
}

bool FPaths::FileExists(const FString& Path)
{
	std::error_code Ignored;
	return std::filesystem::is_regular_file(FTCHARToUTF8(*Path, Path.Len()).Get(), Ignored);
}
