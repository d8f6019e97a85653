#include "FileFunctionsCorv.h"
#include "UObject/Class.h"

#include <gtest/gtest.h>

TEST(Module, ShowsTheEnumerationsWithTheNumbersThatScriptsHaveSaved)
{
	std::string all;
	for (const UEnum* enumeration :
		{StaticEnum<EHTTPCorvRequestType>(), StaticEnum<EHTTPCorvFileUploadType>(), StaticEnum<EHTTPCorvIndividualType>(),
			StaticEnum<EHTTPCorvFileDownloadResumeType>(), StaticEnum<EHTTPCorvFileBytesToFileActionType>(),
			StaticEnum<EHTTPCorvFileUpload>(), StaticEnum<EFileFunctionsCorvDirectoryType>()})
	{
		for (const FEnumerator& each : enumeration->Enumerators)
		{
			all += std::to_string(each.Value) + ' ' + each.Name + '=' + each.DisplayName + ", ";
		}
		all += "\n";
	}
	EXPECT_EQ(all,
		"0 GET=GET, 1 GETLowRamDownload=GETLowRamDownload, 2 PUT=PUT, 3 PUT_STREAM_MP=PUT Stream (Multipart), 4 PUT_STREAM_BLANK=PUT Stream (Blank), "
		"5 PUT_STREAM_COPY=PUT Stream (Copy), 6 POST=POST, 7 POST_UPLOAD=POST_UPLOAD, 8 INDIVIDUAL=INDIVIDUAL, 9 INDIVIDUAL_STREAM=INDIVIDUAL_STEAM, \n"
		"0 PUT=PUT, 1 PUT_STREAM_BLANK=PUT Stream (Blank), 2 PUT_STREAM_COPY=PUT Stream (Copy), 3 PUT_STREAM_MP=PUT Stream (Multipart), \n"
		"0 STRING=Content as String, 1 STREAM=Content as Stream (Filepath), \n"
		"0 E_OVERWRITE=Overwrite, 1 E_NOT_OVERWRITE=Cancel Download, 2 E_RESUME=Resume, \n"
		"0 E_OVERWRITE=Overwrite, 1 E_NOT_OVERWRITE=Cancel Download, \n"
		"0 E_gd=Game directory, 1 E_ad=Absolute directory, \n"
		"0 E_gd=Game directory, 1 E_ad=Absolute directory, \n");
	EXPECT_STREQ(FhttpRequest::StaticStruct()->Name, "httpRequest");
}
