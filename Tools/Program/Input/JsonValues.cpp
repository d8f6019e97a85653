#include "JsonValues.h"

#include "InputError.h"
#include "NearestName.h"
#include "Reflection.h"

#include <fmt/format.h>

namespace Program
{
	namespace
	{
		using Reflect::InputError;

		constexpr int mostDepth = 16; // values that scripts hold need two
	} // namespace

	Json parseWord(std::string word, const FPropertyType& type)
	{
		if (type.Kind == EPropertyKind::String || Reflect::isBytes(type))
		{
			return Json(std::move(word));
		}
		bool isTooDeep = false;
		const auto check = [&isTooDeep](int depth, Json::parse_event_t, const Json&)
		{
			isTooDeep = isTooDeep || depth > mostDepth;
			return !isTooDeep;
		};
		const Json parsed = Json::parse(word, check, false);
		return isTooDeep ? Json(Json::value_t::discarded) : parsed.is_discarded() ? Json(std::move(word)) : parsed;
	}

	std::optional<bool> JsonSource::boolean() const
	{
		return json.is_boolean() ? std::optional(json.get<bool>()) : std::nullopt;
	}

	std::optional<int64> JsonSource::integer() const
	{
		const bool isTooLarge = json.is_number_unsigned() && json.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX);
		return json.is_number_integer() && !isTooLarge ? std::optional(json.get<int64>()) : std::nullopt;
	}

	std::optional<double> JsonSource::number() const
	{
		return json.is_number() ? std::optional(json.get<double>()) : std::nullopt;
	}

	std::optional<std::string_view> JsonSource::text() const
	{
		return json.is_string() ? std::optional<std::string_view>(json.get_ref<const std::string&>()) : std::nullopt;
	}

	bool JsonSource::list(const Visitor& element) const
	{
		if (json.is_array())
		{
			for (const Json& each : json)
			{
				element(JsonSource(each));
			}
		}
		return json.is_array();
	}

	bool JsonSource::map(const Visitor& visitKey, const Visitor& visitValue) const
	{
		if (!json.is_structured())
		{
			return false;
		}
		for (const auto& [name, entry] : json.items())
		{
			const bool isPair = entry.is_array() && entry.size() == 2;
			if (json.is_array() && !isPair)
			{
				return false;
			}
			visitKey(JsonSource(json.is_array() ? entry[0] : Json(name)));
			visitValue(JsonSource(json.is_array() ? entry[1] : entry));
		}
		return true;
	}

	void JsonSource::refuse(const FPropertyType& expected) const
	{
		if (json.is_discarded())
		{
			throw InputError(fmt::format("brackets may not stand more than {} deep in one another", mostDepth));
		}
		if (expected.Kind == EPropertyKind::Struct || expected.Kind == EPropertyKind::Object)
		{
			throw InputError(fmt::format("a {} cannot be written on a command line", Reflect::typeName(expected)));
		}
		const std::string shown = json.dump(-1, ' ', false, Json::error_handler_t::replace); // a word may be no UTF-8
		const std::string meant =
			json.is_string() ? Reflect::suggestion(json.get_ref<const std::string&>(), Reflect::valueNames(expected)) : "";
		throw InputError(fmt::format("expected {}, got {}{}", Reflect::typeName(expected), shown, meant));
	}

	Json JsonSink::take()
	{
		Json top = std::move(values.back());
		values.pop_back();
		return top;
	}

	void JsonSink::bytes(std::span<const uint8> value)
	{
		values.push_back(Json::binary({value.begin(), value.end()}));
	}

	void JsonSink::enumerator(const UEnum& enumeration, int64 value)
	{
		const FEnumerator* const entry = enumeration.FindByValue(value);
		values.push_back(entry ? Json(entry->Name) : Json(value));
	}

	void JsonSink::record(const FPropertyType& type, const void*)
	{
		text(fmt::format("<{}>", type.Struct()->Name));
	}

	void JsonSink::object(const FPropertyType& type, UObject* object)
	{
		values.push_back(object ? Json(fmt::format("<{}>", type.Class()->GetName())) : Json());
	}

	void JsonSink::addElement(int32)
	{
		Json element = take();
		values.back().push_back(std::move(element));
	}

	void JsonSink::addPair()
	{
		Json value = take();
		const Json key = take();
		values.back()[key.is_string() ? key.get<std::string>() : key.dump()] = std::move(value);
	}
} // namespace Program
