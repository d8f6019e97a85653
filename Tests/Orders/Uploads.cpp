// Uploads of the second module.

#include "CorvaneUploadFile.h"
#include "CorvaneUploadForm.h"
#include "CorvaneUploadResumable.h"
#include "Scenarios.h"
#include "Transfers.h"

namespace
{
	/** Pieces have 1024 bytes at least. */
	std::string longContent(const World& world)
	{
		std::string bytes;
		while (bytes.size() < (world.isBrief ? 1000 : 2500))
		{
			bytes += fileContent + std::to_string(bytes.size());
		}
		return bytes;
	}

	void playUpload(World& world, const std::string& bytes, const MakeTransfer& make)
	{
		world.folder.write("sent", bytes);
		playTransfer(world, make,
			[&world, bytes](const Report& report)
			{
				const bool isThere = world.origin.stored == bytes || world.origin.has(bytes);
				world.expect(report.Outcome != ECorvaneTransferOutcome::Succeeded || isThere, "a success, and the server has no file");
				world.expect(bytes.starts_with(world.origin.stored), "the server has something else");
				if (world.starts == 1) // else the other one may read it
				{
					world.expectClosed("sent");
				}
			});
	}

	void playForm(World& world)
	{
		playUpload(world, fileContent,
			[&world](UCorvaneTransfer::FTell tell)
			{
				FCorvaneFormFile file;
				file.FieldName = "file";
				file.FilePath = text(world.folder.path("sent"));
				return UCorvaneUploadForm::Start("http://host/form", {file}, {}, {}, std::move(tell));
			});
	}

	void playFile(World& world)
	{
		playUpload(world, fileContent,
			[&world](UCorvaneTransfer::FTell tell)
			{ return UCorvaneUploadFile::Start("http://host/put", text(world.folder.path("sent")), {}, std::move(tell)); });
	}

	void playResumable(World& world)
	{
		FCorvaneResumableOptions options;
		options.PieceBytes = 1024;
		options.JournalFolder = text(world.folder.path("journals"));
		options.PieceChecksum = "sha1";
		options.bTerminateOnCancel = !world.isBrief && Schedule::the().choose("a cancel takes it back", 2) == 1;
		playUpload(world, longContent(world),
			[&world, &options](UCorvaneTransfer::FTell tell)
			{ return UCorvaneUploadResumable::Start("http://host/tus", text(world.folder.path("sent")), options, std::move(tell)); });
	}

	void lookAtFile(const World& world)
	{
		const std::string bytes = world.read("sent");
		world.expect(bytes == fileContent || bytes == longContent(world), "the file is not what it was");
	}
} // namespace

std::vector<Kind> uploadKinds()
{
	return {
		{"form", &playForm, &lookAtFile, true, OfTransfer},
		{"upload-file", &playFile, &lookAtFile, true, OfTransfer},
		{"resumable", &playResumable, &lookAtFile, false, OfTransfer},
	};
}
