#pragma once

#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"
#include "TempDir.h"

#include <gmock/gmock.h>

/** One request as an UploadSink got it. */
struct Received
{
	std::string head;
	std::string body;

	/** The value of a header; empty when absent. */
	std::string header(const std::string& name) const { return headerOf(head, name); }
};

/** An origin that reads bodies of the announced length, keeps them and answers 200. */
class UploadSink
{
public:
	/** @param gate  held back until it opens, when given: the body is not read, the answer not sent. Outlives the sink. */
	explicit UploadSink(Gate* gate = nullptr);

	std::string url() const { return Server.url(); }
	std::string authority() const { return Server.authority(); }
	/** The requests read so far, in the order in which their bodies ended. */
	std::vector<Received> received() const;
	Received last() const { return received().back(); }
	/** Requests whose head has arrived. */
	size_t begun() const { return Server.requests().size(); }
	int connectionCount() const { return Server.connectionCount(); }

private:
	void serve(Connection& connection, Gate* gate);

	mutable std::mutex Mutex;
	std::vector<Received> Requests;
	RawServer Server; // last: its threads use all of the above
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
