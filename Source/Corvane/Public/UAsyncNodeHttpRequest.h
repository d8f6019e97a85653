#pragma once

#include "CoreMinimal.h"
#include "CorvaneBPLibrary.h"
#include "UAsyncNodeCorv.h"

#include "UAsyncNodeHttpRequest.generated.h"

/**
 * How a request ended, as onhttpRequestCompleteDelegate tells it.
 * @param data  the body's lines, cut at CR LF, empty ones dropped.
 */
DECLARE_DYNAMIC_MULTICAST_DELEGATE_SixParams(FAsyncNodeHttpRequestCompleteDelegate, const FString, dataString, const TArray<FString>&, data,
	const TArray<FString>&, header, int32, statusCode, const TArray<uint8>&, byteData, const FString, requestID);

/**
 * Latent nodes of plain requests: one node, one request, one outcome. A factory takes the parameters of the builder that
 * it is named after and makes a node of its own for the request, under optionalRequestID or a new GUID; the caller binds
 * the outcomes and activates it. A request that the builder refuses has its outcome, status 400, inside the factory, where
 * nobody hears it yet (the library's event tells as well); that of an individual request comes one game-thread task later.
 * The node is rooted from its factory until its outcome. Thread: game thread.
 */
UCLASS()
class CORVANE_API UAsyncNodeHttpRequest : public UAsyncNodeCorv
{
	GENERATED_BODY()

public:
	/** The request ended with a status from 1 to 399. The pins are those of onhttpRequestCompleteDelegate. */
	UPROPERTY(BlueprintAssignable)
	FAsyncNodeHttpRequestCompleteDelegate OnSuccess;

	/**
	 * The request ended with any other status: the server's from 400 on, or 500 (no response, or cancelled) or 400 (a file that
	 * cannot be sent) of the system itself. The pins are those of OnSuccess. A request that cannot be built, for its URL has
	 * fewer than 3 characters, has ended before anybody listens: nothing is raised here, onhttpRequestCompleteDelegate tells with
	 * status 400, for an empty downloadID onhttpRequestCompleteGoogleInfoDelegate. Only an individual request is told here all
	 * the same.
	 */
	UPROPERTY(BlueprintAssignable)
	FAsyncNodeHttpRequestCompleteDelegate OnFail;

	/** Under which the node waits for its result; cancelRequest takes it. */
	FString requestID;
	/** What Activate starts; empty once it has, and when the builder refused. */
	TArray<FhttpRequest> httpRequests;

	/** Makes a node for a GET request. The pins are those of CreateHttpRequestGET. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|GET",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "header",
			ToolTip =
				"Send a GET HTTP Request to Webserver.\nif statusCode >= 400 then OnFail else OnSuccess\n@param bindServerSendEvent Switches on server-sent events for this request (several responses to one request)."))
	static UAsyncNodeHttpRequest* AsyncExecuteHTTP_GET_REQUEST(
		FString url, TMap<FString, FString> header, FString optionalRequestID, bool bindServerSendEvent);

	/** Makes a node for a POST request of form fields. The pins are those of CreateHttpRequestPOST. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|POST",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "header,POSTData",
			ToolTip =
				"Send a POST HTTP Request to Webserver.\nif statusCode >= 400 then OnFail else OnSuccess\n@param bindServerSendEvent Switches on server-sent events for this request (several responses to one request)."))
	static UAsyncNodeHttpRequest* AsyncExecuteHTTP_POST_REQUEST(
		FString url, TMap<FString, FString> header, TMap<FString, FString> POSTData, FString optionalRequestID, bool bindServerSendEvent);

	/**
	 * Makes a node for a request of which the caller sets everything, without progress and server-sent events. The pins are
	 * those of CreateHttpRequestIndividual.
	 * @param contentType  what content is.
	 * @param content  STRING: the body, sent as UTF-8; STREAM: path of the file whose bytes are the body.
	 */
	UFUNCTION(BlueprintCallable, Category = "Corvane|Individual",
		meta = (BlueprintInternalUseOnly = "true", AutoCreateRefTerm = "header",
			ToolTip =
				"Individual HTTP Request. You have to set all parameters yourself.\n@param header For example User-Agent and Content-Type.\n@param verb POST, GET, PUT, PATCH, DELETE\n@param optionalRequestID Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being assigned to the response."))
	static UAsyncNodeHttpRequest* AsyncExecuteHTTP_Individual_REQUEST(FString url, TMap<FString, FString> header, FString verb,
		EHTTPCorvIndividualType contentType, FString content, FString optionalRequestID, bool addContentLengthHeader = true);

	/** Makes a node for the download of a Drive file into memory. The pins are those of CreateHttpRequestGoogleDrive. */
	UFUNCTION(BlueprintCallable, Category = "Corvane|GET", meta = (BlueprintInternalUseOnly = "true", ToolTip = ""))
	static UAsyncNodeHttpRequest* AsyncExecuteHTTP_GoogleDrive_REQUEST(
		FString downloadID, FString optionalRequestID, int64 optionalFileSizeInByte);

	virtual void Activate() override;

	/** Raises OnSuccess for a status from 1 to 399, else OnFail, then ends the node. */
	virtual void httpRequestComplete(FString dataString, const TArray<FString>& dataArray, const TArray<FString>& header, int32 statusCode,
		const TArray<uint8>& byteData, FString requestID) override;

	/** Gives up the ID and the root. */
	virtual void BeginDestroy() override;
};
