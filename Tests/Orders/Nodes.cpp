// Latent nodes of the library. The result of one that is gone goes to the library's event.

#include "Listen.h"
#include "Scenarios.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UAsyncNodeHttpRequest.h"
#include "UObject/StrongObjectPtr.h"

namespace
{
	template <class Node>
	void playNode(World& world, const std::function<Node*()>& make)
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
						for (FMulticastScriptDelegate* output : {&node->OnSuccess, &node->OnFail})
						{
							output->AddHandler([&world, own](void* const*) { world.end(own); });
						}
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

	void playDownload(World& world)
	{
		playNode<UAsyncNodeHttpDownloadUpload>(world,
			[&world]
			{
				return UAsyncNodeHttpDownloadUpload::AsyncExecuteHTTP_Download_REQUEST("http://host/file", {},
					EHTTPCorvFileDownloadResumeType::E_RESUME, EHTTPCorvFileUpload::E_ad, text(world.folder.path("file")), "one");
			});
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
		{"node-download", &playDownload, [](const World& world) { world.expectPrefix("file"); }, true, OfNode},
		{"node-info", &playInfo, nullptr, true, OfNode},
	};
}
