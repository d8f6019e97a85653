#include "NodeFixture.h"

#include <algorithm>

const std::vector<NodeKind> nodeKinds = {
	{"Get", "AsyncExecuteHTTP_GET_REQUEST", "CreateHttpRequestGET"},
	{"GetEvents", "AsyncExecuteHTTP_GET_REQUEST", "CreateHttpRequestGET", [](Pins& pins) { pins.bindServerSendEvent = true; }},
	{"Post", "AsyncExecuteHTTP_POST_REQUEST", "CreateHttpRequestPOST"},
	{"PostEvents", "AsyncExecuteHTTP_POST_REQUEST", "CreateHttpRequestPOST", [](Pins& pins) { pins.bindServerSendEvent = true; }},
	{"IndividualText", "AsyncExecuteHTTP_Individual_REQUEST", "CreateHttpRequestIndividual",
		[](Pins& pins) { pins.addContentLengthHeader = true; }},
	{"IndividualTextWithoutLength", "AsyncExecuteHTTP_Individual_REQUEST", "CreateHttpRequestIndividual"},
	{"IndividualFile", "AsyncExecuteHTTP_Individual_REQUEST", "CreateHttpRequestIndividual",
		[](Pins& pins) { pins.contentType = EHTTPCorvIndividualType::STREAM; }},
	{"GoogleDrive", "AsyncExecuteHTTP_GoogleDrive_REQUEST", "CreateHttpRequestGoogleDrive"},
	{"GoogleFileInfo", "AsyncExecuteHTTP_GoogleFileInfo_REQUEST", "CreateHttpRequestGoogleDriveFileInfo"},
	{"Download", "AsyncExecuteHTTP_Download_REQUEST", "CreateHttpRequestGETDownload"},
	{"LowRamDownload", "AsyncExecuteHTTP_Low_RAM_Download_REQUEST", "CreateHttpRequestGETLowRamDownload"},
	{"UploadPost", "AsyncExecuteHTTP_Upload_POST_REQUEST", "CreateHttpRequestFileUploadPOST"},
	{"UploadPut", "AsyncExecuteHTTP_Upload_PUT_REQUEST", "CreateHttpRequestFileUploadPUT"},
	{"UploadPutStreamBlank", "AsyncExecuteHTTP_Upload_PUT_REQUEST", "CreateHttpRequestFileUploadPUT",
		[](Pins& pins) { pins.uploadType = EHTTPCorvFileUploadType::PUT_STREAM_BLANK; }},
	{"UploadPutStreamMultipart", "AsyncExecuteHTTP_Upload_PUT_REQUEST", "CreateHttpRequestFileUploadPUT",
		[](Pins& pins) { pins.uploadType = EHTTPCorvFileUploadType::PUT_STREAM_MP; }},
	{"MultiUploadPost", "AsyncExecuteHTTP_Multi_Upload_POST_REQUEST", "CreateHttpRequestFileMultiUploadPOST"},
	{"MultiUploadPut", "AsyncExecuteHTTP_Multi_Upload_PUT_REQUEST", "CreateHttpRequestFileMultiUploadPUT"},
};

const NodeKind& nodeKind(std::string_view name)
{
	return *std::ranges::find(nodeKinds, name, &NodeKind::name);
}

UAsyncNodeCorv* NodeKind::make(Pins pins, const FString& id) const
{
	adjust(pins);
	pins.optionalRequestID = id;
	call(factory, pins);
	return Cast<UAsyncNodeCorv>(pins.node);
}

TArray<FhttpRequest> NodeKind::build(Pins pins, const FString& id) const
{
	adjust(pins);
	pins.optionalRequestID = id;
	return ::build(builder, pins);
}
