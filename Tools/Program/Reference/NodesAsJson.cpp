#include "NodesAsJson.h"

#include "FieldFacts.h"

namespace Program
{
	namespace
	{
		void addValues(Json& json, const FPropertyType& type)
		{
			if (type.Kind == EPropertyKind::Enum)
			{
				for (const FEnumerator& value : type.Enum()->Enumerators)
				{
					json["values"][value.Name] = value.Value;
					json["meanings"][value.Name] = value.Comment;
				}
			}
		}

		Json fieldAsJson(const FieldFacts& field)
		{
			Json json = {{"name", field.name}, {"type", shortTypeName(*field.type)}};
			addValues(json, *field.type);
			if (!field.defaultText.empty())
			{
				json["default"] = field.defaultText;
			}
			json["texts"] = field.texts;
			return json;
		}

		Json pinAsJson(const PinFacts& pin)
		{
			static constexpr const char* directions[] = {"in", "out", "in/out", "out"};

			Json json = {{"name", pin.name}, {"direction", directions[static_cast<size_t>(pin.kind)]}, {"type", shortTypeName(*pin.type)}};
			addValues(json, *pin.type);
			if (pin.defaultText)
			{
				json["default"] = *pin.defaultText;
			}
			json["mayStayUnconnected"] = pin.mayStayUnconnected;
			json["texts"] = pin.texts;
			if (pin.type->Kind == EPropertyKind::Struct)
			{
				for (const FieldFacts& field : fieldsOf(*pin.type->Struct()))
				{
					json["fields"].push_back(fieldAsJson(field));
				}
			}
			return json;
		}
	} // namespace

	Json toJson(const Reference& reference, const NodeFacts& facts)
	{
		Json json = {{"name", facts.name}, {"kind", kindName(facts.kind)}, {"title", facts.title}, {"category", facts.category},
			{"texts", facts.texts}, {"pins", Json::array()}, {"outcomes", Json::array()}, {"examples", Json::array()}};
		for (const PinFacts& pin : facts.pins)
		{
			json["pins"].push_back(pinAsJson(pin));
		}
		for (const OutcomeFacts& outcome : facts.outcomes)
		{
			json["outcomes"].push_back({{"name", outcome.name}, {"texts", outcome.texts}});
		}
		for (const Example* example : reference.examplesOf(facts))
		{
			json["examples"].push_back(example->file);
		}
		return json;
	}
} // namespace Program
