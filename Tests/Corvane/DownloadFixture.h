#pragma once

#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RandomBytes.h"
#include "TempDir.h"

#include <gmock/gmock.h>
#include <optional>

/** The two kinds of downloads. */
enum class DownloadKind
{
	Whole,
	Stepped
};

constexpr DownloadKind bothDownloadKinds[] = {DownloadKind::Whole, DownloadKind::Stepped};

/** A part, whatever was asked for. @param range  its Content-Range. */
Lab::Behaviour part(const std::string& range, const std::string& body);
/** @return the Range headers so far; empty ones when there was none. */
std::vector<std::string> ranges(const Lab::Origin& origin);

/** Downloads into a directory of their own. */
class DownloadFixture : public ModuleFixture
{
protected:
	using Action = EHTTPCorvFileDownloadResumeType;
	using Target = std::optional<std::string>;

	struct Download
	{
		std::string url;
		DownloadKind kind = DownloadKind::Whole;
		Action action = Action::E_RESUME;
		std::string path = ""; // empty = the target
		const char* id = "";
		Headers header = {};
		int32 step = 1000;
		EHTTPCorvFileUpload directory = EHTTPCorvFileUpload::E_ad;
	};

	/** What the server does, what is on disk, and what must come of it. A redirect to "/target" leads to this. */
	struct Fault
	{
		const char* name;
		Lab::Behaviour serve;
		Target before;
		int32 statusCode;
		Target after;
		Action action = Action::E_RESUME;
		const char* message = nullptr;
	};

	explicit DownloadFixture(FGameLoopSettings settings = {})
		: ModuleFixture(settings)
	{
	}

	/** @return the others and the record, if it was not refused. */
	TArray<FhttpRequest> build(const Download& download, const TArray<FhttpRequest>& others = {});
	Completion fetch(const Download& download) { return run(build(download)); }
	/** Downloads from a server with a fault and compares what became of the target. */
	void expectOutcome(const Fault& fault, DownloadKind kind);

	/** Makes the target hold these bytes, or be absent. */
	void setTarget(const Target& content);
	/** @return the target's bytes, nothing when it does not exist. */
	Target target() const;

	static constexpr const char* noPath = "none";

	Lab::Origin origin;
	TempDir dir;
	const std::string targetPath = dir.path("target.bin");
};

/** What tells one content of a file from another, in a readable length; or that there is no file. */
std::string describe(const std::optional<std::string>& content);
