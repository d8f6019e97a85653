#pragma once

#include "Downloads/SteppedDownload.h"
#include "Pages/PageRequest.h"
#include "Runs/Run.h"
#include "Uploads/UploadProgress.h"

/** What a completion object consists of. */
struct FCorvRequestParts
{
	explicit FCorvRequestParts(UCorvaneRequestCompleteObject& owner)
		: run(owner)
		, upload(run)
		, download(run)
		, steppedDownload(run, download)
		, pageRequest(run)
	{
	}

	FCorvRun run;
	FCorvUploadProgress upload;
	FCorvDownload download;
	FCorvSteppedDownload steppedDownload;
	FCorvPageRequest pageRequest;
};
