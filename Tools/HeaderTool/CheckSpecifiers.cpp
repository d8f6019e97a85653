#include "Checks.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		struct Rule
		{
			std::string_view macro;
			std::string_view name;
			bool takesValue;
		};

		constexpr Rule rules[] = {
			{"UCLASS", "Abstract", false},
			{"UCLASS", "Blueprintable", false},
			{"UCLASS", "BlueprintType", false},
			{"UCLASS", "DisplayName", true},
			{"UCLASS", "NotBlueprintable", false},
			{"UCLASS", "NotBlueprintType", false},
			{"USTRUCT", "BlueprintType", false},
			{"USTRUCT", "DisplayName", true},
			{"UENUM", "BlueprintType", false},
			{"UENUM", "DisplayName", true},
			{"UFUNCTION", "BlueprintCallable", false},
			{"UFUNCTION", "BlueprintPure", false},
			{"UFUNCTION", "Category", true},
			{"UFUNCTION", "DisplayName", true},
			{"UPROPERTY", "BlueprintAssignable", false},
			{"UPROPERTY", "Category", true},
			{"UPROPERTY", "DisplayName", true},
			{"UPROPERTY", "Transient", false},
			{"UPARAM", "DisplayName", true},
			{"UPARAM", "ref", false},
		};

		constexpr std::pair<std::string_view, std::string_view> contradictions[] = {
			{"Blueprintable", "NotBlueprintable"},
			{"BlueprintType", "NotBlueprintType"},
		};

		/** Keys that mean nothing without a text. */
		constexpr std::array<std::string_view, 4> textKeys = {"AutoCreateRefTerm", "Category", "DisplayName", "ToolTip"};

		void checkKnown(const CheckContext& context, const Specifier& specifier, std::string_view macro)
		{
			const auto rule = std::find_if(
				std::begin(rules), std::end(rules), [&](const Rule& r) { return r.macro == macro && sameName(r.name, specifier.key); });
			if (rule == std::end(rules))
			{
				context.report(specifier.line, fmt::format("unknown specifier '{}' in {}", specifier.key, macro));
			}
			else if (rule->takesValue != specifier.value.has_value())
			{
				context.report(specifier.line,
					fmt::format("the specifier '{}' of {} takes {}", rule->name, macro, rule->takesValue ? "a value" : "no value"));
			}
		}

		void checkRepeated(const CheckContext& context, const std::vector<Specifier>& list, std::string_view macro)
		{
			for (auto entry = list.begin(); entry != list.end(); ++entry)
			{
				if (std::any_of(list.begin(), entry, [&](const Specifier& earlier) { return sameName(earlier.key, entry->key); }))
				{
					context.report(entry->line, fmt::format("'{}' stands twice in {}", entry->key, macro));
				}
			}
		}

		void checkMetaText(const CheckContext& context, const std::vector<Specifier>& list, std::string_view macro)
		{
			for (const Specifier& entry : list)
			{
				const auto isKey = [&](std::string_view key) { return sameName(key, entry.key); };
				if (!entry.value && std::any_of(textKeys.begin(), textKeys.end(), isKey))
				{
					context.report(entry.line, fmt::format("'{}' of {} needs a text", entry.key, macro));
				}
			}
		}
	} // namespace

	void checkSpecifiers(const CheckContext& context, const Specifiers& specifiers, std::string_view macro, const std::string& owner)
	{
		const bool isMetaOnly = macro == "UMETA"; // its arguments are metadata themselves
		for (const Specifier& specifier : specifiers.entries)
		{
			if (!isMetaOnly)
			{
				checkKnown(context, specifier, macro);
			}
			if (const Specifier* const meta = specifiers.findMeta(specifier.key))
			{
				context.report(meta->line, fmt::format("'{}' of {} stands in {} and in its meta list", meta->key, owner, macro));
			}
		}
		checkRepeated(context, specifiers.entries, macro);
		checkRepeated(context, specifiers.meta, macro);
		checkMetaText(context, isMetaOnly ? specifiers.entries : specifiers.meta, macro);
		for (const auto& [one, other] : contradictions)
		{
			if (specifiers.find(one) && specifiers.find(other))
			{
				context.report(specifiers.find(other)->line, fmt::format("{} contradicts {} in {}", other, one, macro));
			}
		}
	}
} // namespace HeaderTool
