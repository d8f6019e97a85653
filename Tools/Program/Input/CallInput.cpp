#include "CallInput.h"

#include "FileContent.h"
#include "HeaderLine.h"
#include "InputError.h"
#include "JsonValues.h"
#include "NearestName.h"
#include "RequestChecks.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <set>

namespace Program
{
	namespace
	{
		using Reflect::InputError;

		bool holdsTexts(const FPropertyType& type)
		{
			return type.Inner()->Kind == EPropertyKind::String;
		}

		/** How structs, and lists and maps of texts, are written, for messages; other types need no explanation. */
		std::string spelling(const std::string& pin, const FPropertyType& type)
		{
			if (type.Kind == EPropertyKind::Struct && !type.Struct()->Fields.empty())
			{
				return fmt::format(R"(; it is written {}='{{"{}":...}}')", pin, type.Struct()->Fields.front().Name);
			}
			if (type.Kind == EPropertyKind::Map && holdsTexts(type))
			{
				return fmt::format(R"(; it is written {}='{{"Accept":"text/plain"}}')", pin);
			}
			return type.Kind == EPropertyKind::Array && holdsTexts(type) ? fmt::format(R"(; it is written {}='["one","two"]')", pin) : "";
		}

		bool isBody(const FParameter& parameter)
		{
			constexpr std::string_view names[] = {"contentBody", "content", "data"};
			const auto isNamed = [&](std::string_view name) { return Reflect::equalNames(parameter.Name, name); };
			return Reflect::isBytes(parameter.Type()) ||
				   (parameter.Type().Kind == EPropertyKind::String && std::any_of(std::begin(names), std::end(names), isNamed));
		}

		/** @return a word as it is meant: "@path" stands for the content of a file where a body belongs, "@@" for an at sign. */
		std::string meantBy(const std::string& word, const FParameter& parameter)
		{
			if (!word.starts_with('@') || !isBody(parameter))
			{
				return word;
			}
			const bool isText = parameter.Type().Kind == EPropertyKind::String || word.starts_with("@@");
			return isText ? textMeantBy(word) : contentOf(word.substr(1));
		}

		class PinWords
		{
		public:
			PinWords(const Reflect::Function& calledFunction, Reflect::CallFrame& callFrame)
				: function(calledFunction)
				, frame(callFrame)
			{
			}

			void set(const std::string& assignment)
			{
				const size_t equals = assignment.find('=');
				const std::string pin = assignment.substr(0, equals);
				const std::optional<size_t> index = frame.findInput(pin);
				if (equals == std::string::npos || (!index && pin.find(':') != std::string::npos))
				{
					throw InputError(fmt::format("'{}' is no pin=value{}", assignment, addressPin(assignment)));
				}
				checkPin(pin, index);
				set(pin, *index, assignment.substr(equals + 1));
			}

			void addHeader(const std::string& line)
			{
				const std::optional<size_t> index = frame.findInput("header");
				if (!index || &frame[*index].type() != &PropertyTypeOf<TMap<FString, FString>>())
				{
					throw InputError(fmt::format("{} takes no headers", function.name));
				}
				const auto [name, value] = parseHeader(line);
				static_cast<TMap<FString, FString>*>(frame[*index].get())->Add(name, value);
			}

		private:
			/** People forget the name of the pin that nearly every call begins with. */
			std::string addressPin(const std::string& word) const
			{
				const bool isAddress = word.find("://") != std::string::npos && frame.findInput("url");
				return isAddress ? fmt::format(", did you mean 'url={}'?", word) : "; it is written url='http://...'";
			}

			void checkPin(const std::string& pin, std::optional<size_t> index)
			{
				if (!index)
				{
					throw InputError(fmt::format(
						"{}: unknown pin '{}'{}", function.name, pin, Reflect::suggestion(pin, settablePins(*function.function))));
				}
				if (frame.parameter(*index).Kind == EParameterKind::Output)
				{
					throw InputError(fmt::format("{}: pin '{}' is an output", function.name, pin));
				}
				if (!isSet.insert(*index).second)
				{
					throw InputError(fmt::format("{}: pin '{}' is set twice", function.name, pin));
				}
			}

			void set(const std::string& pin, size_t index, const std::string& word)
			{
				const FPropertyType& type = frame[index].type();
				try
				{
					const Json value = parseWord(meantBy(word, frame.parameter(index)), type);
					frame.set(index, pin, JsonSource(value));
				}
				catch (const InputError& error)
				{
					throw InputError(error.what() + spelling(pin, type));
				}
			}

			const Reflect::Function& function;
			Reflect::CallFrame& frame;
			std::set<size_t> isSet;
		};
	} // namespace

	std::vector<std::string> settablePins(const UFunction& function)
	{
		std::vector<std::string> names;
		for (const FParameter& parameter : function.Parameters)
		{
			if (parameter.Kind == EParameterKind::Input || parameter.Kind == EParameterKind::InputOutput)
			{
				names.emplace_back(parameter.Name);
			}
		}
		return names;
	}

	void setPins(const Reflect::Function& function, Reflect::CallFrame& frame, const CallOptions& options)
	{
		PinWords words(function, frame);
		for (const std::string& assignment : options.pins)
		{
			words.set(assignment);
		}
		for (const std::string& line : options.headers)
		{
			words.addHeader(line);
		}
		checkRequest(function, frame);
	}
} // namespace Program
