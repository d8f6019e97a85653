#include "FieldFacts.h"

#include "DocText.h"
#include "JsonValues.h"
#include "Value.h"

namespace Program
{
	namespace
	{
		std::string defaultOf(const FStructField& field, const Reflect::Value& fresh)
		{
			JsonSink sink;
			Reflect::writeValue(field.Type(), field.Get(fresh.get()), sink);
			const Json json = sink.take();
			return field.Type().Kind == EPropertyKind::Enum && json.is_string() ? json.get<std::string>() : json.dump();
		}

		std::vector<std::string> textsOf(const FStructField& field)
		{
			const std::string text = readComment(FindMeta(field.Meta, "Comment")).text;
			return text.empty() ? std::vector<std::string>() : std::vector{text};
		}
	} // namespace

	std::optional<std::string> FieldFacts::presetText() const
	{
		const bool isQuoted = type->Kind == EPropertyKind::String && !defaultText.empty();
		return defaultText.empty() ? std::nullopt : std::optional(isQuoted ? Json::parse(defaultText).get<std::string>() : defaultText);
	}

	std::vector<FieldFacts> fieldsOf(const UScriptStruct& type)
	{
		std::vector<FieldFacts> fields;
		if (type.Fields.empty())
		{
			return fields;
		}
		const Reflect::Value fresh(type.Type());
		for (const FStructField& field : type.Fields)
		{
			fields.push_back({field.Name, &field.Type(), field.bIsReadOnly ? "" : defaultOf(field, fresh), textsOf(field)});
		}
		return fields;
	}
} // namespace Program
