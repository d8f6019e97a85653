#include "Generator.h"

#include <nlohmann/json.hpp>

namespace HeaderTool
{
	namespace
	{
		using Json = nlohmann::ordered_json;

		template <class Def, class Convert>
		Json listOf(const std::vector<Def>& defs, Convert convert)
		{
			Json list = Json::array();
			for (const Def& def : defs)
			{
				list.push_back(convert(def));
			}
			return list;
		}

		Json specifierList(const std::vector<Specifier>& list)
		{
			Json object = Json::object();
			for (const Specifier& specifier : list)
			{
				object[specifier.key] = specifier.value ? Json(*specifier.value) : Json(true);
			}
			return object;
		}

		/** Leaves out what is empty: most things have none of it. */
		void addList(Json& object, const char* name, const Json& list)
		{
			if (!list.empty())
			{
				object[name] = list;
			}
		}

		void addSpecifiers(Json& object, const Specifiers& specifiers)
		{
			addList(object, "specifiers", specifierList(specifiers.entries));
			addList(object, "meta", specifierList(specifiers.meta));
			if (!specifiers.comment.empty())
			{
				object["comment"] = specifiers.comment;
			}
		}

		Json parameterJson(const ParameterDef& parameter)
		{
			Json object = {{"name", parameter.name}, {"type", spell(parameter.type)}};
			if (parameter.defaultValue)
			{
				object["default"] = parameter.defaultValue->value;
			}
			addSpecifiers(object, parameter.specifiers);
			return object;
		}

		Json functionJson(const FunctionDef& function)
		{
			Json object = {{"name", function.name}, {"line", function.line}, {"static", function.isStatic}, {"const", function.isConst},
				{"returns", function.returnType ? spell(*function.returnType) : "void"}};
			addSpecifiers(object, function.specifiers);
			addList(object, "parameters", listOf(function.parameters, parameterJson));
			return object;
		}

		Json propertyJson(const PropertyDef& property)
		{
			Json object = {{"name", property.name}, {"line", property.line}, {"type", spell(property.type)}};
			addSpecifiers(object, property.specifiers);
			return object;
		}

		Json classJson(const ClassDef& def)
		{
			Json object = {{"name", def.name}, {"line", def.line}, {"super", def.super}};
			addSpecifiers(object, def.specifiers);
			addList(object, "functions", listOf(def.functions, functionJson));
			addList(object, "properties", listOf(def.properties, propertyJson));
			return object;
		}

		Json structJson(const StructDef& def)
		{
			Json object = {{"name", def.name}, {"line", def.line}, {"super", def.super}};
			addSpecifiers(object, def.specifiers);
			addList(object, "properties", listOf(def.properties, propertyJson));
			return object;
		}

		Json enumJson(const EnumDef& def)
		{
			Json object = {{"name", def.name}, {"line", def.line}};
			addSpecifiers(object, def.specifiers);
			object["enumerators"] = listOf(def.enumerators,
				[](const EnumeratorDef& enumerator)
				{
					Json entry = {{"name", enumerator.name}, {"value", enumerator.value}};
					addList(entry, "meta", specifierList(enumerator.specifiers.entries));
					return entry;
				});
			return object;
		}

		Json delegateJson(const DelegateDef& def)
		{
			Json object = {{"name", def.name}, {"line", def.line}};
			addSpecifiers(object, def.specifiers);
			addList(object, "parameters", listOf(def.parameters, parameterJson));
			return object;
		}

		Json headerJson(const HeaderDef& header)
		{
			Json object = {{"header", header.includeName}};
			addList(object, "classes", listOf(header.classes, classJson));
			addList(object, "structs", listOf(header.structs, structJson));
			addList(object, "enums", listOf(header.enums, enumJson));
			addList(object, "delegates", listOf(header.delegates, delegateJson));
			return object;
		}
	} // namespace

	std::string dumpJson(const std::vector<HeaderDef>& headers, const std::string& module)
	{
		Json list = Json::array();
		for (const HeaderDef& header : headers)
		{
			if (!header.isReference)
			{
				list.push_back(headerJson(header));
			}
		}
		return Json{{"module", module}, {"headers", list}}.dump(2) + "\n";
	}
} // namespace HeaderTool
