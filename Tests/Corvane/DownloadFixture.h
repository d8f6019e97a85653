#pragma once

#include "ModuleFixture.h"
#include "RangeOrigin.h"
#include "TempDir.h"

#include <optional>

/** The two kinds of downloads. */
enum class DownloadKind
{
	Whole,
	Stepped
};

/** Downloads into a directory of their own. */
class DownloadFixture : public ModuleFixture
{
protected:
	using Action = EHTTPCorvFileDownloadResumeType;

	struct Download
	{
		std::string url;
		DownloadKind kind = DownloadKind::Whole;
		Action action = Action::E_RESUME;
		std::string path = ""; // empty = the target
		const char* id = "";
		Headers header = {};
		int32 step = 1000;
	};

	DownloadFixture() = default;
	explicit DownloadFixture(FGameLoopSettings settings)
		: ModuleFixture(settings)
	{
	}

	/** @return the record; none when the download was refused. */
	TArray<FhttpRequest> build(const Download& download);
	Completion fetch(const Download& download) { return run(build(download)); }

	/** Makes the target hold these bytes, or be absent. */
	void setTarget(const std::optional<std::string>& content);
	/** @return the target's bytes, nothing when it does not exist. */
	std::optional<std::string> target() const;

	TempDir dir;
	const std::string targetPath = dir.path("target.bin");
};

/** For messages: the length of a file's content, or its absence. */
std::string describe(const std::optional<std::string>& content);
