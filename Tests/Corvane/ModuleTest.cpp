#include "FileFunctionsCorv.h"
#include "Host/Directories.h"
#include "ModuleFixture.h"
#include "UObject/Class.h"

#include <gmock/gmock.h>

namespace
{
	const UFunction* findFunction(UClass* owner, std::string_view name)
	{
		for (const UFunction& function : owner->Definition.Functions)
		{
			if (name == function.Name)
			{
				return &function;
			}
		}
		return nullptr;
	}
} // namespace

class Module : public ModuleFixture
{
};

TEST_F(Module, ShowsTheEnumerationsWithTheNumbersThatScriptsHaveSaved)
{
	const auto describe = [](const UEnum* enumeration)
	{
		std::string line;
		for (const FEnumerator& enumerator : enumeration->Enumerators)
		{
			line += std::to_string(enumerator.Value) + ' ' + enumerator.Name + " \"" + enumerator.DisplayName + "\"; ";
		}
		return line;
	};
	EXPECT_EQ(describe(StaticEnum<EHTTPCorvRequestType>()),
		"0 GET \"GET\"; 1 GETLowRamDownload \"GETLowRamDownload\"; 2 PUT \"PUT\"; 3 PUT_STREAM_MP \"PUT Stream (Multipart)\"; "
		"4 PUT_STREAM_BLANK \"PUT Stream (Blank)\"; 5 PUT_STREAM_COPY \"PUT Stream (Copy)\"; 6 POST \"POST\"; "
		"7 POST_UPLOAD \"POST_UPLOAD\"; 8 INDIVIDUAL \"INDIVIDUAL\"; 9 INDIVIDUAL_STREAM \"INDIVIDUAL_STEAM\"; ");
	EXPECT_EQ(describe(StaticEnum<EHTTPCorvFileUploadType>()),
		"0 PUT \"PUT\"; 1 PUT_STREAM_BLANK \"PUT Stream (Blank)\"; 2 PUT_STREAM_COPY \"PUT Stream (Copy)\"; "
		"3 PUT_STREAM_MP \"PUT Stream (Multipart)\"; ");
	EXPECT_EQ(
		describe(StaticEnum<EHTTPCorvIndividualType>()), "0 STRING \"Content as String\"; 1 STREAM \"Content as Stream (Filepath)\"; ");
	EXPECT_EQ(describe(StaticEnum<EHTTPCorvFileDownloadResumeType>()),
		"0 E_OVERWRITE \"Overwrite\"; 1 E_NOT_OVERWRITE \"Cancel Download\"; 2 E_RESUME \"Resume\"; ");
	EXPECT_EQ(
		describe(StaticEnum<EHTTPCorvFileBytesToFileActionType>()), "0 E_OVERWRITE \"Overwrite\"; 1 E_NOT_OVERWRITE \"Cancel Download\"; ");
	for (const UEnum* directories : {StaticEnum<EHTTPCorvFileUpload>(), StaticEnum<EFileFunctionsCorvDirectoryType>()})
	{
		EXPECT_EQ(describe(directories), "0 E_gd \"Game directory\"; 1 E_ad \"Absolute directory\"; ");
	}
	EXPECT_STREQ(FhttpRequest::StaticStruct()->Name, "httpRequest");
}

TEST_F(Module, ShowsItsEventsInOrder)
{
	std::string events;
	for (const FMulticastDelegateProperty& event : UCorvaneBPLibrary::StaticClass()->Definition.Delegates)
	{
		events += std::string(event.Name) + " [" + FindMeta(event.Meta, "Category") + "]";
		for (const FParameter& parameter : event.Signature->Parameters)
		{
			events += std::string(" ") + parameter.Name;
		}
		events += "\n";
	}
	EXPECT_EQ(events,
		"onhttpRequestCompleteDelegate [Corvane|Events|RequestComplete] dataString dataArray header statusCode byteData requestID\n"
		"onhttpRequestCompleteGoogleInfoDelegate [Corvane|Events|RequestCompleteGoogleInfo] fileName fileSizeInBytes statusCode "
		"downloadID requestID\n"
		"onhttpFileDownloadDelegate [Corvane|Events|Download] size megaBytesReceived percentDownload megaBit requestID\n"
		"onhttpFileUploadDelegate [Corvane|Events|Upload] size bytesSent percentUpload requestID\n"
		"onhttpServerSendEventDelegate [Corvane|Events|ServerSendEvent] response requestID\n");
}

TEST_F(Module, KeepsItsOwnListenersOutOfScripts)
{
	const UFunction* listener = findFunction(UCorvaneBPLibrary::StaticClass(), "httpRequestCompleteDelegate");
	ASSERT_NE(listener, nullptr);
	EXPECT_EQ(listener->Flags & FUNC_BlueprintCallable, 0u);
	const UFunction* target = findFunction(UCorvaneBPLibrary::StaticClass(), "getCorvaneTarget");
	ASSERT_NE(target, nullptr);
	EXPECT_STREQ(FindMeta(target->Meta, "ToolTip"), "Return a Target for the Events");
}

TEST_F(Module, ResolvesTheTwoKindsOfDirectories)
{
	HostDirectories::Set("../Game", "/engine/bin");
	using EFileFunctionsCorvDirectoryType::E_ad;
	using EFileFunctionsCorvDirectoryType::E_gd;
	const auto clean = [](EFileFunctionsCorvDirectoryType kind, const char* path)
	{ return utf8(UFileFunctionsCorv::getCleanDirectory(kind, path)); };
	EXPECT_EQ(clean(E_gd, "Content/a.txt"), "/engine/Game/Content/a.txt");
	EXPECT_EQ(clean(E_gd, "/Content//a.txt"), "/engine/Game/Content/a.txt");
	EXPECT_EQ(clean(E_gd, ""), "/engine/Game/");
	EXPECT_EQ(clean(E_ad, "Content/a.txt"), "/engine/bin/Content/a.txt");
	EXPECT_EQ(clean(E_ad, "/x/../y"), "/y");
	EXPECT_EQ(clean(E_ad, ""), "/engine/bin/");
}
