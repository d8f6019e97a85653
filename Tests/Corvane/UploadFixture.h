#pragma once

#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "TempDir.h"

#include <gmock/gmock.h>

/** An origin that thanks for whatever comes. */
class UploadSink : public Lab::Origin
{
public:
	UploadSink() { at("*", "thanks"); }
	/** @param gate  bodies are left unread until it opens. */
	explicit UploadSink(const Lab::Gate& gate) { at("*", "thanks", Lab::holdBody(gate)); }

	/** The request that was complete last. */
	const Lab::Request& last() const { return *log().back().request; }
};

/** What the fixture's put() and post() are told, besides the file. */
struct UploadOptions
{
	std::string fileID = "f";
	TMap<FString, FString> header = {};
	TMap<FString, FString> fields = {};
	std::string requestID = "";
	TArray<FhttpRequest> others = {};
};

/** Uploads of files in a folder of the test's own; repairs do not wait. */
class UploadTest : public ModuleFixture
{
protected:
	explicit UploadTest(FGameLoopSettings settings = {});

	using Type = EHTTPCorvFileUploadType;
	static constexpr Type everyType[] = {Type::PUT, Type::PUT_STREAM_BLANK, Type::PUT_STREAM_COPY, Type::PUT_STREAM_MP};

	static UCorvaneBPLibrary& library() { return *UCorvaneBPLibrary::getCorvaneTarget(); }
	// The three hand out the other records and their own, if it was not refused.
	static TArray<FhttpRequest> put(const std::string& url, const std::string& path, Type type, const UploadOptions& options = {});
	static TArray<FhttpRequest> post(const std::string& url, const std::string& path, const UploadOptions& options = {});

	/** One form of several files, by POST or PUT. */
	static TArray<FhttpRequest> multi(
		bool bPost, const std::string& url, const TArray<FString>& paths, const TArray<FString>& ids, const UploadOptions& options = {});
	/** The file as a POST, as an individual PUT whose body it is, and by every type. */
	static TArray<FhttpRequest> ofEveryKind(const std::string& url, const std::string& path);

	/** The tail that stands after a file of this size during its upload. */
	static std::string tail(const std::string& size) { return "\r\n------UE4CorvanePlugin_" + size + "--\r\n"; }
	static std::string tail(size_t size) { return tail(std::to_string(size)); }
	static inline const std::string thousand = std::string(1000, 'x');
	/** Makes a file of so many bytes that takes no room on disk, and of these after them. */
	std::string sparse(const std::string& name, std::uintmax_t size, const std::string& end = "") const;
	/** @return the names of all files in the folder, in order. */
	std::vector<std::string> files() const;
	int logged(ELogVerbosity::Type verbosity, const std::string& part) const { return log.count("LogTemp", verbosity, part); }

	static constexpr const char* stillOpen =
		"UCorvaneBPLibrary: Can't read File. If you tried to upload the same file a few seconds ago, it may still be open. Please wait a few seconds until the file is closed. ";

	TempDir dir;
	LogCapture log;
};
