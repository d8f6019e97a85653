#include "Tables.h"

#include "Text.h"

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

		std::string metaRow(std::string_view key, std::string_view value)
		{
			return fmt::format("\t\t{{{}, {}}},\n", quote(key), quote(value));
		}
	} // namespace

	Table makeTable(std::string_view declaration, const std::string& name, const std::string& rows)
	{
		return rows.empty() ? Table() : Table{fmt::format("\t{} = {{\n{}\t}};\n", declaration, rows), name};
	}

	Table metaTable(const std::string& name, const Specifiers& specifiers)
	{
		std::string rows;
		for (const Specifier& meta : specifiers.meta)
		{
			rows += metaRow(meta.key, meta.value.value_or("true"));
		}
		for (const std::string_view key : keptSpecifiers)
		{
			if (const Specifier* const specifier = specifiers.find(key))
			{
				rows += metaRow(key, specifier->value.value_or("true"));
			}
		}
		if (!specifiers.comment.empty() && !specifiers.findMeta("Comment"))
		{
			rows += metaRow("Comment", specifiers.comment); // under the key that the engine's tool keeps it under
		}
		return makeTable(fmt::format("static constexpr FMetaEntry {}[]", name), name, rows);
	}

	std::string storedType(const TypeDef& type)
	{
		TypeDef stored = type;
		stored.isConst = false;
		stored.references = 0;
		return spell(stored);
	}

	Table parameterTable(const std::string& suffix, const std::vector<ParameterDef>& parameters, const std::optional<ParameterDef>& result)
	{
		std::string metaTables;
		std::string rows;
		const auto addRow = [&](const ParameterDef& parameter, std::string_view kind, size_t index)
		{
			const Table meta = metaTable(fmt::format("ParameterMeta{}_{}", suffix, index), parameter.specifiers);
			metaTables += meta.text;
			rows += fmt::format("\t\t{{{}, &PropertyTypeOf<{}>, EParameterKind::{}, {}, {}}},\n", quote(parameter.name),
				storedType(parameter.type), kind, parameter.defaultValue ? quote(parameter.defaultValue->value) : "nullptr",
				meta.reference);
		};
		for (size_t i = 0; i < parameters.size(); ++i)
		{
			addRow(parameters[i], kindOf(parameters[i]), i);
		}
		if (result)
		{
			addRow(*result, "Return", parameters.size());
		}
		Table table = makeTable(fmt::format("static constexpr FParameter Parameters{}[]", suffix), "Parameters" + suffix, rows);
		table.text.insert(0, metaTables);
		return table;
	}
} // namespace HeaderTool
