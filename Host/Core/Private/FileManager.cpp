#include "HAL/FileManager.h"

#include "Containers/StringConv.h"
#include "Serialization/Archive.h"

#include <filesystem>
#include <fstream>

namespace
{
	namespace fs = std::filesystem;

	class FFileWriter final : public FArchive
	{
	public:
		FFileWriter(const fs::path& Path, std::ios::openmode Mode)
			: Stream(Path, std::ios::binary | std::ios::out | Mode)
		{
		}

		bool IsOpen() const { return Stream.is_open(); }
		void Serialize(void* Value, int64 Length) override { Stream.write(static_cast<const char*>(Value), Length); }
		bool Close() override
		{
			Stream.close(); // what was still buffered may find the disk full
			return !Stream.fail();
		}

	private:
		std::ofstream Stream;
	};

	fs::path toPath(const TCHAR* Name)
	{
		return FTCHARToUTF8(Name).Get();
	}
} // namespace

IFileManager& IFileManager::Get()
{
	static IFileManager Manager;
	return Manager;
}

FArchive* IFileManager::CreateFileWriter(const TCHAR* Filename, uint32 WriteFlags)
{
	const fs::path Path = toPath(Filename);
	std::error_code Ignored; // a directory that could not be made shows in the open
	fs::create_directories(Path.parent_path(), Ignored);
	auto Writer = std::make_unique<FFileWriter>(Path, (WriteFlags & FILEWRITE_Append) ? std::ios::app : std::ios::trunc);
	return Writer->IsOpen() ? Writer.release() : nullptr;
}

bool IFileManager::Delete(const TCHAR* Filename)
{
	const fs::path Path = toPath(Filename);
	std::error_code Error;
	const fs::file_status Status = fs::status(Path, Error);
	const bool bWritable = (Status.permissions() & fs::perms::owner_write) != fs::perms::none;
	return fs::is_regular_file(Status) && bWritable && fs::remove(Path, Error);
}
