#include "Calls.h"

#include "UObject/Class.h"

#include <stdexcept>
#include <vector>

namespace
{
	struct Place
	{
		std::string_view pin;
		const FPropertyType& type;
		void* value;
	};

	template <class T>
	Place place(std::string_view pin, T& value)
	{
		return {pin, PropertyTypeOf<T>(), &value};
	}

	void* valueOf(const FParameter& parameter, Pins& p)
	{
		static EHTTPCorvFileUpload absolute = EHTTPCorvFileUpload::E_ad;
		if (parameter.Kind == EParameterKind::Return)
		{
			return parameter.Type().Kind == EPropertyKind::Object ? static_cast<void*>(&p.node) : &p.statusCode;
		}
		const Place places[] = {place("otherHttpRequests", p.otherHttpRequests), place("url", p.url), place("downloadID", p.downloadID),
			place("header", p.header), place("verb", p.verb), place("contentType", p.contentType), place("contentBodyType", p.contentType),
			place("content", p.content), place("contentBody", p.content), place("addContentLengthHeader", p.addContentLengthHeader),
			place("ActionIfFileExists", p.actionIfFileExists), place("DirectoryType", absolute), place("directoryType", absolute),
			place("filePathWithFileName", p.filePathWithFileName), place("FileSizeStepsInBytes", p.fileSizeStepsInBytes),
			place("filePath", p.filePath), place("filePaths", p.filePaths), place("fileID", p.fileID), place("fileIDs", p.fileIDs),
			place("POSTData", p.POSTData), place("uploadType", p.uploadType), place("optionalFileSizeInByte", p.optionalFileSizeInByte),
			place("bindDownloadProgressEvent", p.bindDownloadProgressEvent), place("bindUploadProgressEvent", p.bindUploadProgressEvent),
			place("bindServerSendEvent", p.bindServerSendEvent), place("optionalRequestID", p.optionalRequestID),
			place("httpRequests", p.httpRequests), place("requestID", p.requestID)};
		for (const Place& each : places)
		{
			if (each.pin == parameter.Name && &each.type == &parameter.Type())
			{
				return each.value;
			}
		}
		throw std::logic_error(std::string("no value for the pin ") + parameter.Name);
	}

	const UFunction& scriptFunction(std::string_view name)
	{
		for (const FCompiledInHeader* header : GetCompiledInHeaders())
		{
			for (UClass* (*const owner)() : header->Classes)
			{
				for (const UFunction& function : owner()->Definition.Functions)
				{
					if (name == function.Name)
					{
						return function;
					}
				}
			}
		}
		throw std::logic_error("no function " + std::string(name));
	}
} // namespace

void call(std::string_view name, Pins& pins)
{
	const UFunction& function = scriptFunction(name);
	std::vector<void*> arguments;
	for (const FParameter& parameter : function.Parameters)
	{
		arguments.push_back(valueOf(parameter, pins));
	}
	function.Invoke(nullptr, arguments.data());
}

TArray<FhttpRequest> build(std::string_view builder, Pins pins)
{
	call(builder, pins);
	return pins.httpRequests;
}
