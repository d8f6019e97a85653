// Latent nodes of the library. The result of one that is gone goes to the library's event.

#include "Listen.h"
#include "Scenarios.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UAsyncNodeHttpRequest.h"
#include "UObject/StrongObjectPtr.h"

namespace
{
	bool isAnything()
	{
		return true;
	}

	/** @param isDone  whether a success has done what it tells of. */
	template <class Node>
	void playNode(World& world, const std::function<Node*()>& make, const std::function<bool()>& isDone = &isAnything)
	{
		std::vector<TStrongObjectPtr<Node>> graph;
		FString id;
		for (FMulticastScriptDelegate* event : std::initializer_list<FMulticastScriptDelegate*>{
				 &world.library().onhttpRequestCompleteDelegate, &world.library().onhttpRequestCompleteGoogleInfoDelegate})
		{
			event->AddHandler([&world](void* const*) { world.end(); });
		}
		world.play({.start =
						[&]
					{
						const int own = world.begin();
						Node* const node = make();
						node->OnFail.AddHandler([&world, own](void* const*) { world.end(own); });
						node->OnSuccess.AddHandler(
							[&world, own, isDone](void* const*)
							{
								world.end(own);
								world.expect(isDone(), "a node's success of something that is not done");
							});
						id = node->requestID;
						graph.emplace_back(node);
						node->Activate();
					},
			.cancel = [&id] { UCorvaneBPLibrary::cancelRequest(id); },
			.letGo = [&graph] { graph.clear(); }});
	}

	void playGet(World& world)
	{
		playNode<UAsyncNodeHttpRequest>(
			world, [] { return UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST("http://host/file", {}, "one", false); });
	}

	void playDriveNode(World& world)
	{
		UCorvaneBPLibrary::setGoogleDriveBase("http://host");
		playNode<UAsyncNodeHttpRequest>(world, [] { return UAsyncNodeHttpRequest::AsyncExecuteHTTP_GoogleDrive_REQUEST("1", "one", 0); });
	}

	template <bool isStepped>
	void playDownloadNode(World& world)
	{
		playNode<UAsyncNodeHttpDownloadUpload>(
			world,
			[path = text(world.folder.path("file"))]
			{
				using Node = UAsyncNodeHttpDownloadUpload;
				constexpr auto resume = EHTTPCorvFileDownloadResumeType::E_RESUME;
				constexpr auto absolute = EHTTPCorvFileUpload::E_ad;
				return isStepped ? Node::AsyncExecuteHTTP_Low_RAM_Download_REQUEST("http://host/file", {}, resume, absolute, path, "one", 5)
								 : Node::AsyncExecuteHTTP_Download_REQUEST("http://host/file", {}, resume, absolute, path, "one");
			},
			[&world] { return world.starts > 1 || world.read("file") == fileContent; });
	}

	void playUploadNode(World& world)
	{
		playNode<UAsyncNodeHttpDownloadUpload>(
			world,
			[path = text(world.folder.write("up", fileContent))]
			{
				return UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Upload_PUT_REQUEST(
					"http://host/put", {}, EHTTPCorvFileUpload::E_ad, path, "field", EHTTPCorvFileUploadType::PUT_STREAM_MP, "one");
			},
			[&world] { return world.origin.has(fileContent); });
	}

	void lookAtNodesDownload(const World& world)
	{
		world.expectPrefix("file");
	}

	void lookAtNodesUpload(const World& world)
	{
		world.expect(world.read("up") == fileContent, "the file is not what it was");
	}

	void playInfo(World& world)
	{
		UCorvaneBPLibrary::setGoogleDriveBase("http://host");
		playNode<UAsyncNodeHttpGoogleFileInfoRequest>(
			world, [] { return UAsyncNodeHttpGoogleFileInfoRequest::AsyncExecuteHTTP_GoogleFileInfo_REQUEST("1"); });
	}
} // namespace

std::vector<Kind> nodeKinds()
{
	return {
		{"node", &playGet, nullptr, true, OfNode},
		{"node-drive", &playDriveNode, nullptr, true, OfNode},
		{"node-download", &playDownloadNode<false>, &lookAtNodesDownload, true, OfNode},
		{"node-stepped", &playDownloadNode<true>, &lookAtNodesDownload, false, OfNode},
		{"node-upload", &playUploadNode, &lookAtNodesUpload, false, OfNode},
		{"node-info", &playInfo, nullptr, true, OfNode},
	};
}
