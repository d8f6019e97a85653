#include "AddressFault.h"
#include "Commands.h"
#include "Console.h"
#include "CorvaneUploadFile.h"
#include "CorvaneUploadForm.h"
#include "CorvaneUploadResumable.h"
#include "EndSignals.h"
#include "FilePaths.h"
#include "HeaderLine.h"
#include "InputError.h"
#include "JsonValues.h"
#include "PinOutput.h"
#include "ProgressBar.h"
#include "TargetNames.h"

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <set>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;
		using Reflect::InputError;

		/** One request: a file, or all of them in a form. */
		struct Upload
		{
			std::vector<std::string> files; // as people know them
			std::string address;
			std::vector<std::string> paths = {}; // of the files, in full
			FCorvaneTransferReport report = {};

			std::string name() const { return files.empty() ? "the form" : fmt::format("{}", fmt::join(files, ", ")); }
		};

		bool isForm(const PutOptions& options)
		{
			return !options.formField.empty() || !options.fields.empty();
		}

		/** One for each file, each to an address of its own. */
		std::vector<Upload> bareUploads(const std::vector<std::string>& files, const std::string& address)
		{
			if (files.size() > 1 && !isFolder(address))
			{
				throw InputError("there are several files, but one address for them; end it with '/', or send a form with --form");
			}
			std::vector<Upload> uploads;
			std::set<std::string> addresses;
			for (const std::string& file : files)
			{
				uploads.push_back({{file}, addressFor(address, file)});
				if (!addresses.insert(uploads.back().address).second)
				{
					throw InputError(fmt::format("two files lead to the address '{}'", uploads.back().address));
				}
			}
			return uploads;
		}

		/** The address begins uploads, and gives each one an address of its own. */
		std::vector<Upload> resumableUploads(const std::vector<std::string>& files, const PutOptions& options)
		{
			if (isForm(options) || !options.verb.empty() || options.mayBeRepeated)
			{
				throw InputError("--tus says itself how a file travels: --form, --field, -X and --may-repeat do not go with it");
			}
			std::vector<Upload> uploads;
			for (const std::string& file : files)
			{
				uploads.push_back({{file}, options.words.back()});
			}
			return uploads;
		}

		/** Throws InputError when the words do not fit together. */
		std::vector<Upload> uploadsOf(const PutOptions& options)
		{
			const std::string& address = options.words.back();
			if (const std::string fault = addressFault(address); !fault.empty())
			{
				throw InputError(fault);
			}
			const std::vector<std::string> files(options.words.begin(), options.words.end() - 1);
			if (files.empty() && !isForm(options))
			{
				throw InputError("there is no file to send, only where to");
			}
			if (options.resumable)
			{
				return resumableUploads(files, options);
			}
			if (!isForm(options))
			{
				return bareUploads(files, address);
			}
			if (options.formField.empty() && !files.empty())
			{
				throw InputError("a form needs a field for its files: --form NAME");
			}
			return {{files, address}};
		}

		TArray<FCorvaneFormField> fieldsOf(const PutOptions& options)
		{
			TArray<FCorvaneFormField> fields;
			for (const std::string& field : options.fields)
			{
				const size_t sign = field.find('=');
				if (sign == field.npos || sign == 0)
				{
					throw InputError(fmt::format("--field: '{}' is no NAME=VALUE", field));
				}
				fields.Add({Reflect::toFString(field.substr(0, sign)), Reflect::toFString(field.substr(sign + 1))});
			}
			return fields;
		}

		TMap<FString, FString> headersOf(const PutOptions& options)
		{
			TMap<FString, FString> headers;
			for (const std::string& line : options.headers)
			{
				const auto [name, value] = parseHeader(line);
				headers.Add(name, value);
			}
			return headers;
		}

		/** @return where notes of unfinished uploads are kept, wherever the command is called; empty = beside the project. */
		std::string notesFolder()
		{
			const char* const state = std::getenv("XDG_STATE_HOME");
			const char* const home = std::getenv("HOME");
			const fs::path folder = state && *state ? fs::path(state) : home && *home ? fs::path(home) / ".local/state" : fs::path();
			return folder.empty() ? "" : (folder / "corvane/uploads").string();
		}

		FCorvaneResumableOptions resumableOptions(const PutOptions& options)
		{
			FCorvaneResumableOptions upload;
			upload.Headers = headersOf(options);
			upload.Hash = Reflect::toFString(options.hash);
			upload.JournalFolder = Reflect::toFString(notesFolder());
			return upload;
		}

		FCorvaneUploadOptions uploadOptions(const PutOptions& options)
		{
			FCorvaneUploadOptions upload;
			upload.Headers = headersOf(options);
			upload.Verb = Reflect::toFString(options.verb);
			upload.Hash = Reflect::toFString(options.hash);
			upload.bMayBeRepeated = options.mayBeRepeated;
			return upload;
		}

		Json toJson(const Upload& upload)
		{
			JsonSink sink;
			Reflect::writeValue(PropertyTypeOf<FCorvaneTransferReport>(), &upload.report, sink);
			Json json = {{"Files", upload.files}};
			json.update(sink.take());
			return json;
		}

		/** @return a text as lines behind another one; one without a letter stays empty. */
		std::string asFurtherLines(const std::string& text)
		{
			return text.empty() ? "" : "\n" + text.substr(0, text.size() - (text.ends_with('\n') ? 1 : 0));
		}

		/** Some uploads, one after the other, from the first start to the last report. */
		class Put
		{
		public:
			Put(ProgramLoop& gameLoop, const PutOptions& putOptions)
				: loop(gameLoop)
				, options(putOptions)
				, wishes(uploadOptions(putOptions))
				, fields(fieldsOf(putOptions))
				, uploads(uploadsOf(putOptions))
			{
				for (Upload& upload : uploads)
				{
					for (const std::string& file : upload.files)
					{
						upload.paths.push_back(sourcePath(file));
					}
				}
				if (!options.quiet)
				{
					progress.emplace(false);
				}
			}

			/** @return the exit status. */
			int run()
			{
				startNext();
				loop.runToIdle({});
				loop.end(); // what a signal has left running is told now
				progress.reset();
				if (EndSignals::asked() && options.resumable)
				{
					complain("corvane: the same 'corvane put' goes on");
				}
				return succeeded == uploads.size() ? exitGood : exitFailed;
			}

		private:
			void startNext()
			{
				if (started == uploads.size() || EndSignals::asked() || std::ferror(stdout))
				{
					return;
				}
				Upload& upload = uploads[started++];
				const auto note = [this, &upload](const FCorvaneTransferReport& report)
				{
					upload.report = report;
					tellProgress(report);
				};
				const auto end = [this, &upload](const FCorvaneTransferReport& report)
				{
					upload.report = report;
					finish(upload);
				};
				start(upload, end, note);
			}

			/** The kinds of uploads part here, and nowhere else. */
			void start(const Upload& upload, const UCorvaneUpload::FTell& end, const UCorvaneUpload::FTell& note) const
			{
				const FString address = Reflect::toFString(upload.address);
				if (options.resumable)
				{
					UCorvaneUploadResumable::Start(address, Reflect::toFString(upload.paths.front()), resumableOptions(options), end, note);
				}
				else if (isForm(options))
				{
					UCorvaneUploadForm::Start(address, formFiles(upload), fields, wishes, end, note);
				}
				else
				{
					UCorvaneUploadFile::Start(address, Reflect::toFString(upload.paths.front()), wishes, end, note);
				}
			}

			TArray<FCorvaneFormFile> formFiles(const Upload& upload) const
			{
				TArray<FCorvaneFormFile> files;
				for (const std::string& path : upload.paths)
				{
					files.Add({Reflect::toFString(options.formField), Reflect::toFString(path), {}, {}});
				}
				return files;
			}

			void finish(const Upload& upload)
			{
				const bool isThere = upload.report.Outcome == ECorvaneTransferOutcome::Succeeded;
				succeeded += isThere ? 1 : 0;
				if (!isThere)
				{
					complainOf(upload);
				}
				if (options.json)
				{
					printLine(asJsonText(toJson(upload)));
				}
				else if (isThere && !options.quiet)
				{
					tellGood(upload);
				}
				startNext();
			}

			/** What the server said counts, too, when it can be read at a glance. */
			static void complainOf(const Upload& upload)
			{
				constexpr size_t mostOfAnswer = 500; // bytes
				const std::string way = Reflect::toUtf8(upload.report.HowToGoOn);
				const std::string said = Reflect::toUtf8(upload.report.Answer);
				complain(fmt::format(
					"corvane: {}: {}{}{}", upload.name(), Reflect::toUtf8(upload.report.Sentence), way.empty() ? "" : " ", way));
				if (!said.empty() && said.size() <= mostOfAnswer)
				{
					complain(said);
				}
			}

			static void tellGood(const Upload& upload)
			{
				const std::string hash = Reflect::toUtf8(upload.report.Hash);
				printLine(fmt::format("{}: {}{}{}{}", upload.name(), Reflect::toUtf8(upload.report.Sentence), hash.empty() ? "" : " ", hash,
					asFurtherLines(Reflect::toUtf8(upload.report.Answer))));
			}

			void tellProgress(const FCorvaneTransferReport& report)
			{
				if (progress)
				{
					const int64 sent = report.TakenOverBytes + report.TransferredBytes - report.RepeatedBytes;
					progress->tell(ProgressBar::sent(report.TotalBytes, sent));
				}
			}

			ProgramLoop& loop;
			const PutOptions& options;
			const FCorvaneUploadOptions wishes;
			const TArray<FCorvaneFormField> fields;
			std::vector<Upload> uploads;
			std::optional<ProgressBar> progress;
			size_t started = 0;
			size_t succeeded = 0;
		};
	} // namespace

	int putFiles(const Settings& settings, const PutOptions& options)
	{
		ProgramLoop loop(settings);
		leaveOutOfLog({"Transfer: "});
		return Put(loop, options).run();
	}
} // namespace Program
