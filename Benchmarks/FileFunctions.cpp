#include "FileFunctionsCorv.h"

#include "Containers/StringConv.h"
#include "Kit/ChildProcess.h"
#include "Kit/FileWorkload.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <stdexcept>

namespace
{
	namespace fs = std::filesystem;
	constexpr EFileFunctionsCorvDirectoryType absolute = EFileFunctionsCorvDirectoryType::E_ad;

	FString pathOf(const std::string& file)
	{
		const FUTF8ToTCHAR units(file.data(), static_cast<int32>(file.size()));
		return FString(units.Get());
	}

	void require(bool condition, const char* otherwise)
	{
		if (!condition)
		{
			throw std::runtime_error(otherwise);
		}
	}

	class FileMd5 final : public FileWorkload
	{
	public:
		FileMd5()
			: FileWorkload({"file-md5", "MD5 of a file", "openssl md5", 1024})
		{
		}

	private:
		void work(const std::string& file) const override
		{
			bool success = false;
			FString digest;
			UFileFunctionsCorv::getMD5FromFile(absolute, pathOf(file), success, digest);
			require(success, "getMD5FromFile failed");
			fmt::print("{}\n", FTCHARToUTF8(*digest).Get());
		}

		std::vector<std::string> peerCommand(const fs::path&, const std::string& file) const override
		{
			return {"openssl", "md5", "-r", file};
		}

		void check(const fs::path&, const std::string& output) const override
		{
			expected = expected.empty() ? output.substr(0, 32) : expected;
			require(output.size() > 32 && output.substr(0, 32) == expected, "the digests differ");
		}

		mutable std::string expected; // the first run's
	};

	class FileBase64 final : public FileWorkload
	{
	public:
		FileBase64()
			: FileWorkload({"file-base64", "Base64 of a file", "base64 -w0", 64})
		{
		}

	private:
		void work(const std::string& file) const override
		{
			bool success = false;
			FString text;
			FString name;
			UFileFunctionsCorv::fileToBase64String(absolute, pathOf(file), success, text, name);
			const int64 expected = static_cast<int64>((fs::file_size(file) + 2) / 3 * 4);
			require(success && text.Len() == expected, "fileToBase64String failed");
		}

		/** Its text goes nowhere, as Corvane's stays in memory. */
		std::vector<std::string> peerCommand(const fs::path&, const std::string& file) const override
		{
			return {"sh", "-c", "exec base64 -w0 \"$1\" > /dev/null", "sh", file};
		}

		void check(const fs::path&, const std::string&) const override {}
	};

	class FileSplit final : public FileWorkload
	{
	public:
		FileSplit()
			: FileWorkload({"file-split", "Cutting a file into parts", "split -n", 1024})
		{
		}

	private:
		void addOptions(CLI::App& command) override
		{
			command.add_option("--parts", parts, "Parts, ten at most")->capture_default_str()->check(CLI::Range(1, 10));
		}

		std::vector<std::string> corvaneOptions() const override { return {"--parts", std::to_string(parts)}; }

		void work(const std::string& file) const override
		{
			bool success = false;
			TArray<FString> paths;
			TArray<int64> sizes;
			UFileFunctionsCorv::splitFile(success, paths, sizes, absolute, pathOf(file), parts);
			require(success, "splitFile failed");
		}

		std::vector<std::string> peerCommand(const fs::path& folder, const std::string& file) const override
		{
			return {"split", "-n", std::to_string(parts), "-a", "1", "-d", "--additional-suffix=.bin", file, folder / "file_"};
		}

		/** Both sides name their parts alike, so one look serves for both. */
		void check(const fs::path& folder, const std::string&) const override
		{
			ChildProcess::run({"sh", "-c", "cd \"$1\" && cat file_?.bin | cmp - file.bin && rm file_?.bin", "sh", folder}, "/dev/null");
		}

		int32 parts = 8;
	};
} // namespace

std::unique_ptr<Workload> makeFileMd5()
{
	return std::make_unique<FileMd5>();
}

std::unique_ptr<Workload> makeFileBase64()
{
	return std::make_unique<FileBase64>();
}

std::unique_ptr<Workload> makeFileSplit()
{
	return std::make_unique<FileSplit>();
}
