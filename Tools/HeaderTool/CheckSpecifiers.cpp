#include "Checks.h"

#include <algorithm>

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
			{"USTRUCT", "BlueprintType", false},
			{"USTRUCT", "DisplayName", true},
			{"UENUM", "BlueprintType", false},
			{"UENUM", "DisplayName", true},
			{"UFUNCTION", "BlueprintCallable", false},
			{"UFUNCTION", "BlueprintPure", false},
			{"UFUNCTION", "Category", true},
			{"UFUNCTION", "DisplayName", true},
			{"UPROPERTY", "BlueprintAssignable", false},
			{"UPROPERTY", "BlueprintReadOnly", false},
			{"UPROPERTY", "BlueprintReadWrite", false},
			{"UPROPERTY", "Category", true},
			{"UPROPERTY", "DisplayName", true},
			{"UPROPERTY", "EditAnywhere", false},
			{"UPROPERTY", "Transient", false},
			{"UPARAM", "DisplayName", true},
			{"UPARAM", "ref", false},
		};

		void checkKnown(const Specifier& specifier, std::string_view macro)
		{
			const auto rule = std::find_if(
				std::begin(rules), std::end(rules), [&](const Rule& r) { return r.macro == macro && sameName(r.name, specifier.key); });
			if (rule == std::end(rules))
			{
				fail(specifier.line, "unknown specifier '{}' in {}", specifier.key, macro);
			}
			if (rule->takesValue != specifier.value.has_value())
			{
				fail(specifier.line, "the specifier '{}' of {} takes {}", rule->name, macro, rule->takesValue ? "a value" : "no value");
			}
		}
	} // namespace

	void checkSpecifiers(const Specifiers& specifiers, std::string_view macro)
	{
		for (const Specifier& specifier : specifiers.entries)
		{
			if (macro != "UMETA") // its arguments are metadata themselves
			{
				checkKnown(specifier, macro);
			}
		}
		// The meta list holds what specifiers say, too.
		std::vector<Specifier> all = specifiers.entries;
		all.insert(all.end(), specifiers.meta.begin(), specifiers.meta.end());
		for (auto entry = all.begin(); entry != all.end(); ++entry)
		{
			if (std::any_of(all.begin(), entry, [&](const Specifier& earlier) { return sameName(earlier.key, entry->key); }))
			{
				fail(entry->line, "'{}' stands twice in {}", entry->key, macro);
			}
		}
	}
} // namespace HeaderTool
