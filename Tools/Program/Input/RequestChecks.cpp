#include "RequestChecks.h"

#include "AddressFault.h"
#include "FileFunctionsCorv.h"
#include "InputError.h"
#include "ValueTransfer.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <set>
#include <unistd.h>

namespace Program
{
	namespace
	{
		using Reflect::InputError;

		/** The pins of a request, looked up by the names that all of them share. */
		class RequestPins
		{
		public:
			RequestPins(const Reflect::Function& calledFunction, const Reflect::CallFrame& callFrame)
				: function(calledFunction)
				, frame(callFrame)
			{
			}

			bool isRequest() const { return frame.findInput("optionalRequestID").has_value(); }

			/** @return null when there is no such pin. */
			template <class T>
			const T* find(const char* pin) const
			{
				const std::optional<size_t> index = frame.findInput(pin);
				const bool isOfType = index && &frame[*index].type() == &PropertyTypeOf<T>();
				return isOfType ? static_cast<const T*>(frame[*index].get()) : nullptr;
			}

			[[noreturn]] void refuse(const char* pin, const std::string& reason) const
			{
				throw InputError(fmt::format("{}: pin '{}' {}", function.name, pin, reason));
			}

			std::string fullPath(const FString& path) const
			{
				const std::optional<size_t> index = frame.findInput("directoryType");
				const uint8 type = index ? *static_cast<const uint8*>(frame[*index].get()) : 0;
				return Reflect::toUtf8(UFileFunctionsCorv::getCleanDirectory(static_cast<EFileFunctionsCorvDirectoryType>(type), path));
			}

		private:
			const Reflect::Function& function;
			const Reflect::CallFrame& frame;
		};

		void checkNeededPins(const RequestPins& pins)
		{
			for (const char* name : {"url", "downloadID", "verb", "filePath", "fileID", "filePathWithFileName"})
			{
				if (const FString* const text = pins.find<FString>(name); text && text->IsEmpty())
				{
					pins.refuse(name, "is missing");
				}
			}
			for (const char* name : {"filePaths", "fileIDs"})
			{
				if (const TArray<FString>* const list = pins.find<TArray<FString>>(name); list && list->Num() == 0)
				{
					pins.refuse(name, fmt::format(R"(is missing; it is written {}='["one","two"]')", name));
				}
			}
		}

		void checkReadable(const RequestPins& pins, const char* pin, const FString& path)
		{
			const std::string full = pins.fullPath(path);
			const bool isReadable = access(full.c_str(), R_OK) == 0;
			if (!isReadable || std::filesystem::is_directory(full))
			{
				pins.refuse(pin, fmt::format("names '{}', which cannot be read: {}", full, std::strerror(isReadable ? EISDIR : errno)));
			}
		}

		void checkTarget(const RequestPins& pins, const FString& path)
		{
			const std::string full = pins.fullPath(path);
			const std::string directory = std::filesystem::path(full).parent_path();
			const bool isWritable = access(directory.c_str(), W_OK) == 0;
			if (!isWritable || std::filesystem::is_directory(full))
			{
				pins.refuse("filePathWithFileName",
					fmt::format("names '{}', which cannot be written: {}", full, std::strerror(isWritable ? EISDIR : errno)));
			}
		}

		/** Servers keep one file of a name, as a rule the last. */
		void checkFieldNames(const RequestPins& pins, const TArray<FString>& paths, const TArray<FString>& fields)
		{
			std::set<std::string> taken;
			for (int32 index = 0; index < paths.Num(); ++index)
			{
				const std::string field = index < fields.Num() ? Reflect::toUtf8(fields[index]) : "";
				if (!taken.insert(field).second)
				{
					pins.refuse("fileIDs", fmt::format("gives two files the field name '{}'", field));
				}
			}
		}

		void checkFiles(const RequestPins& pins)
		{
			if (const FString* const path = pins.find<FString>("filePath"))
			{
				checkReadable(pins, "filePath", *path);
			}
			if (const FString* const target = pins.find<FString>("filePathWithFileName"))
			{
				checkTarget(pins, *target);
			}
			const TArray<FString>* const paths = pins.find<TArray<FString>>("filePaths");
			const TArray<FString>* const fields = pins.find<TArray<FString>>("fileIDs");
			if (paths && fields)
			{
				for (const FString& path : *paths)
				{
					checkReadable(pins, "filePaths", path);
				}
				checkFieldNames(pins, *paths, *fields);
			}
		}
	} // namespace

	void checkRequest(const Reflect::Function& function, const Reflect::CallFrame& frame)
	{
		const RequestPins pins(function, frame);
		if (!pins.isRequest())
		{
			return;
		}
		checkNeededPins(pins);
		if (const FString* const url = pins.find<FString>("url"))
		{
			const std::string fault = addressFault(Reflect::toUtf8(*url));
			if (!fault.empty())
			{
				throw InputError(fmt::format("{}: {}", function.name, fault));
			}
		}
		checkFiles(pins);
	}
} // namespace Program
