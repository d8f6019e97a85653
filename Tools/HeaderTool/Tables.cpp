#include "Tables.h"

#include "StringLiteral.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		constexpr std::array<std::string_view, 4> keptSpecifiers = {"Category", "DisplayName", "BlueprintType", "Blueprintable"};

		std::string_view kindOf(const ParameterDef& parameter)
		{
			return !parameter.type.isOutput() ? "Input" : parameter.specifiers.find("ref") ? "InputOutput" : "Output";
		}

		std::string parameterRow(const ParameterDef& parameter, std::string_view kind, const std::string& metaName)
		{
			return fmt::format("\t\t{{{}, &PropertyTypeOf<{}>, EParameterKind::{}, {}, {}}},\n", quote(parameter.name),
				storedType(parameter.type), kind, parameter.defaultValue ? quote(parameter.defaultValue->value) : "nullptr",
				metaReference(metaName, parameter.specifiers));
		}
	} // namespace

	std::vector<std::pair<std::string, std::string>> metaEntries(const Specifiers& specifiers)
	{
		std::vector<std::pair<std::string, std::string>> entries;
		for (const Specifier& meta : specifiers.meta)
		{
			entries.emplace_back(meta.key, meta.value.value_or("true"));
		}
		for (const std::string_view name : keptSpecifiers)
		{
			if (const Specifier* const specifier = specifiers.find(name))
			{
				entries.emplace_back(name, specifier->value.value_or("true"));
			}
		}
		if (!specifiers.comment.empty() && !specifiers.findMeta("Comment"))
		{
			entries.emplace_back("Comment", specifiers.comment); // under the key that the engine's tool keeps it under
		}
		return entries;
	}

	std::string metaTable(const std::string& name, const Specifiers& specifiers)
	{
		std::string rows;
		for (const auto& [key, value] : metaEntries(specifiers))
		{
			rows += fmt::format("\t\t{{{}, {}}},\n", quote(key), quote(value));
		}
		return rows.empty() ? rows : fmt::format("\tstatic constexpr FMetaEntry {}[] = {{\n{}\t}};\n", name, rows);
	}

	std::string metaReference(const std::string& name, const Specifiers& specifiers)
	{
		return metaEntries(specifiers).empty() ? "{}" : name;
	}

	std::string storedType(const TypeDef& type)
	{
		TypeDef stored = type;
		stored.isConst = false;
		stored.references = 0;
		return spell(stored);
	}

	std::string parameterTable(const std::string& suffix, const std::vector<ParameterDef>& parameters, const ParameterDef* result)
	{
		std::string tables;
		std::string rows;
		const auto addRow = [&](const ParameterDef& parameter, std::string_view kind, size_t index)
		{
			const std::string metaName = fmt::format("ParameterMeta{}_{}", suffix, index);
			tables += metaTable(metaName, parameter.specifiers);
			rows += parameterRow(parameter, kind, metaName);
		};
		for (size_t i = 0; i < parameters.size(); ++i)
		{
			addRow(parameters[i], kindOf(parameters[i]), i);
		}
		if (result)
		{
			addRow(*result, "Return", parameters.size());
		}
		return rows.empty() ? rows : fmt::format("{}\tstatic constexpr FParameter Parameters{}[] = {{\n{}\t}};\n", tables, suffix, rows);
	}
} // namespace HeaderTool
