#include "MortalFiles.h"

#include "TextSupport.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <unistd.h>

namespace
{
	std::string contentOf(const std::string& Path)
	{
		std::ifstream Stream(Path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(Stream), {});
	}

	class MortalHandle final : public ForwardingHandle
	{
	public:
		MortalHandle(MortalFiles& InFiles, std::string InPath, IFileHandle* InLower)
			: ForwardingHandle(InLower)
			, Files(InFiles)
			, Path(std::move(InPath))
		{
		}

		bool Write(const uint8* From, int64 Number) override
		{
			Files.step(Lower.get(), From, Number);
			return Lower->Write(From, Number);
		}
		bool Truncate(int64 NewSize) override
		{
			Files.step();
			return Lower->Truncate(NewSize);
		}
		bool Flush(const bool bFullFlush) override
		{
			Files.step();
			if (bFullFlush)
			{
				Files.flushed(Path);
			}
			return true;
		}

	private:
		MortalFiles& Files;
		const std::string Path;
	};
} // namespace

void MortalFiles::step(IFileHandle* Handle, const uint8* Bytes, int64 Number)
{
	if (++Steps != MyFate.DiesAtStep)
	{
		return;
	}
	if (Handle)
	{
		Handle->Write(Bytes, Number / 2);
	}
	die();
}

void MortalFiles::die()
{
	for (const auto& [Path, Flushed] : OnDisk)
	{
		if (MyFate.HowItDies == Death::Killed || !std::filesystem::exists(Path))
		{
			continue;
		}
		std::string Left = MyFate.HowItDies == Death::PowerCut ? Flushed : contentOf(Path);
		for (size_t At = 0; At < Left.size(); ++At)
		{
			Left[At] = At < Flushed.size() && Left[At] == Flushed[At] ? Left[At] : '\0';
		}
		std::ofstream(Path, std::ios::binary | std::ios::trunc) << Left;
	}
	_exit(exitCode);
}

void MortalFiles::flushed(const std::string& Path)
{
	OnDisk[Path] = contentOf(Path);
}

bool MortalFiles::DeleteFile(const TCHAR* Filename)
{
	step();
	OnDisk.erase(utf8(Filename));
	return Lower.DeleteFile(Filename);
}

bool MortalFiles::MoveFile(const TCHAR* To, const TCHAR* From)
{
	step();
	const bool bMoved = (MyFate.bMovesReplace || !Lower.FileExists(To)) && Lower.MoveFile(To, From);
	if (auto Known = bMoved ? OnDisk.extract(utf8(From)) : decltype(OnDisk)::node_type())
	{
		OnDisk[utf8(To)] = std::move(Known.mapped());
	}
	return bMoved;
}

void MortalFiles::SetTimeStamp(const TCHAR* Filename, FDateTime Time)
{
	step();
	Lower.SetTimeStamp(Filename, Time);
}

IFileHandle* MortalFiles::OpenWrite(const TCHAR* Filename, bool bAppend, bool bAllowRead)
{
	step();
	OnDisk.try_emplace(utf8(Filename), contentOf(utf8(Filename)));
	IFileHandle* const Handle = Lower.OpenWrite(Filename, bAppend, bAllowRead);
	return Handle ? new MortalHandle(*this, utf8(Filename), Handle) : nullptr;
}
