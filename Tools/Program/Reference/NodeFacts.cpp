#include "NodeFacts.h"

#include "DisplayName.h"
#include "DocText.h"
#include "Words.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace Program
{
	namespace
	{
		/** What the header says about a function or an event. */
		struct Documented
		{
			std::string name;
			DocText tooltip;
			DocText comment;
			DocText signature; // of an event: what its declaration says about the pins
			std::string references; // where other names may stand: the whole comment and that of the class

			Documented(std::string ownName, FMetaList meta, const UClass& owner, FMetaList signatureMeta = {})
				: name(std::move(ownName))
				, tooltip(readTooltip(FindMeta(meta, "ToolTip")))
				, comment(readComment(FindMeta(meta, "Comment")))
				, signature(readComment(FindMeta(signatureMeta, "Comment")))
				, references(std::string(FindMeta(meta, "Comment")) + " " + FindMeta(owner.Definition.Meta, "Comment"))
			{
			}
		};

		/** The classes that own script functions, in order. */
		std::vector<const UClass*> owners()
		{
			std::vector<const UClass*> found;
			for (const Reflect::Function& function : Reflect::functions())
			{
				if (std::find(found.begin(), found.end(), function.owner) == found.end())
				{
					found.push_back(function.owner);
				}
			}
			return found;
		}

		std::vector<Documented> collectDocumented()
		{
			std::vector<Documented> all;
			for (const Reflect::Function& function : Reflect::functions())
			{
				all.emplace_back(function.function->Name, function.function->Meta, *function.owner);
			}
			for (const Reflect::Function& method : Reflect::methods())
			{
				all.emplace_back(method.function->Name, method.function->Meta, *method.owner);
			}
			for (const UClass* owner : owners())
			{
				for (const FMulticastDelegateProperty& event : owner->Definition.Delegates)
				{
					all.emplace_back(event.Name, event.Meta, *owner, event.Signature->Meta);
				}
			}
			return all;
		}

		void addText(std::vector<std::string>& texts, std::string_view text)
		{
			if (!text.empty() && std::find(texts.begin(), texts.end(), text) == texts.end())
			{
				texts.emplace_back(text);
			}
		}

		std::vector<std::string> textsOf(const Documented& documented)
		{
			std::vector<std::string> texts;
			addText(texts, documented.tooltip.text);
			addText(texts, documented.comment.text);
			return texts;
		}

		/**
		 * The texts about one pin. Comments say "the parameters are those of" another function instead of saying it all again:
		 * what is missing is looked up there.
		 */
		std::vector<std::string> pinTexts(const Documented& documented, const std::string& pin, std::set<std::string>& visited)
		{
			static const std::vector<Documented> all = collectDocumented();

			std::vector<std::string> texts;
			addText(texts, documented.tooltip.pin(pin));
			addText(texts, documented.comment.pin(pin));
			addText(texts, documented.signature.pin(pin));
			visited.insert(documented.name);
			for (auto other = all.begin(); other != all.end() && texts.empty(); ++other)
			{
				if (hasWord(documented.references, other->name) && !visited.contains(other->name))
				{
					texts = pinTexts(*other, pin, visited);
				}
			}
			return texts;
		}

		/** @param unconnected  names with commas between them. */
		PinFacts pinOf(const FParameter& parameter, const Documented& documented, const char* unconnected)
		{
			const char* const title = FindMeta(parameter.Meta, "DisplayName");
			PinFacts pin{parameter.Name, *title ? title : displayName(parameter.Name, parameter.Type().Kind == EPropertyKind::Bool),
				&parameter.Type(), parameter.Kind, std::nullopt, hasWord(unconnected, parameter.Name), {}};
			if (parameter.Default)
			{
				pin.defaultText = parameter.Default;
			}
			std::set<std::string> visited;
			pin.texts = pinTexts(documented, pin.name, visited);
			return pin;
		}

		/** What an event hands over comes out of a node. */
		PinFacts eventPinOf(const FParameter& parameter, const Documented& documented)
		{
			PinFacts pin = pinOf(parameter, documented, "");
			pin.kind = EParameterKind::Output;
			return pin;
		}

		template <class Type>
		void addOnce(std::vector<const Type*>& list, const Type* item)
		{
			if (std::find(list.begin(), list.end(), item) == list.end())
			{
				list.push_back(item);
			}
		}

		/** @return what the editor calls the pin that hands out the node itself; empty = it hides it. */
		std::string objectTitle(const UClass* nodeClass)
		{
			std::string title;
			for (; nodeClass && title.empty(); nodeClass = nodeClass->GetSuperClass())
			{
				title = FindMeta(nodeClass->Definition.Meta, "ExposedAsyncProxy");
			}
			return title;
		}

		/** The node itself, under the name that the editor gives to its pin. */
		PinFacts objectPinOf(const FParameter& result, const Documented& documented, const std::string& title)
		{
			PinFacts pin = pinOf(result, documented, "");
			pin.name = "AsyncTaskProxy";
			pin.title = title;
			return pin;
		}

		std::string enginePath(std::string_view module, std::string_view name)
		{
			return fmt::format("/Script/{}.{}", module, name);
		}

		std::string enginePath(const UClass& type)
		{
			return enginePath(Reflect::moduleOf(type), type.GetName());
		}

		/** The engine leaves out the prefix, and says what it is. */
		std::string signaturePath(const UDelegateFunction& signature)
		{
			return enginePath(Reflect::moduleOf(signature), fmt::format("{}__DelegateSignature", signature.Name + 1));
		}

		void addOutcomes(NodeFacts& facts, const UClass* nodeClass)
		{
			for (const FMulticastDelegateProperty* event : Reflect::eventsOf(nodeClass))
			{
				const Documented documented(event->Name, event->Meta, *nodeClass, event->Signature->Meta);
				facts.outcomes.push_back({event->Name, displayName(event->Name), textsOf(documented)});
				for (const FParameter& parameter : event->Signature->Parameters)
				{
					const auto isSame = [&](const PinFacts& pin) { return !pin.isLeft() && pin.name == parameter.Name; };
					if (std::none_of(facts.pins.begin(), facts.pins.end(), isSame))
					{
						facts.pins.push_back(eventPinOf(parameter, documented));
					}
				}
			}
		}

		NodeFacts eventFacts(const UClass& owner, const FMulticastDelegateProperty& event)
		{
			const Documented documented(event.Name, event.Meta, owner, event.Signature->Meta);
			NodeFacts facts{NodeKind::Event, std::string(owner.GetName()) + "." + event.Name, displayName(event.Name),
				FindMeta(event.Meta, "Category"), textsOf(documented), {}, {}, enginePath(owner), "", signaturePath(*event.Signature)};
			for (const FParameter& parameter : event.Signature->Parameters)
			{
				facts.pins.push_back(eventPinOf(parameter, documented));
			}
			return facts;
		}
	} // namespace

	std::vector<const UScriptStruct*> NodeFacts::structs() const
	{
		std::vector<const UScriptStruct*> found;
		for (const PinFacts& pin : pins)
		{
			const UScriptStruct* const record = pin.type->Kind == EPropertyKind::Struct ? pin.type->Struct() : nullptr;
			if (record && !record->Fields.empty())
			{
				addOnce(found, record);
			}
		}
		return found;
	}

	std::vector<const UEnum*> NodeFacts::enumerations() const
	{
		std::vector<const UEnum*> found;
		const auto add = [&found](const FPropertyType& type)
		{
			if (type.Kind == EPropertyKind::Enum)
			{
				addOnce(found, type.Enum());
			}
		};
		for (const PinFacts& pin : pins)
		{
			add(*pin.type);
		}
		for (const UScriptStruct* record : structs())
		{
			for (const FStructField& field : record->Fields)
			{
				add(field.Type());
			}
		}
		return found;
	}

	const char* kindName(NodeKind kind)
	{
		static constexpr const char* names[] = {"pure", "callable", "latent", "event"};
		return names[static_cast<size_t>(kind)];
	}

	std::string shortTypeName(const FPropertyType& type)
	{
		return type.Kind == EPropertyKind::Enum ? type.Enum()->Name : Reflect::typeName(type);
	}

	NodeFacts factsOf(const Reflect::Function& function)
	{
		const FMetaList meta = function.function->Meta;
		const Documented documented(function.function->Name, meta, *function.owner);
		const UClass* const nodeClass = Reflect::nodeClassOf(*function.function);
		const bool isPure = function.function->Flags & FUNC_BlueprintPure;
		const char* const title = FindMeta(meta, "DisplayName");

		NodeFacts facts{nodeClass ? NodeKind::Latent
						: isPure  ? NodeKind::Pure
								  : NodeKind::Callable,
			function.name, *title ? title : displayName(function.function->Name), FindMeta(meta, "Category"), textsOf(documented), {}, {},
			enginePath(*function.owner), nodeClass ? enginePath(*nodeClass) : "", "", !(function.function->Flags & FUNC_Static)};
		for (const FParameter& parameter : function.function->Parameters)
		{
			if (!nodeClass || parameter.Kind != EParameterKind::Return)
			{
				facts.pins.push_back(pinOf(parameter, documented, FindMeta(meta, "AutoCreateRefTerm")));
			}
			else if (const std::string object = objectTitle(nodeClass); !object.empty())
			{
				facts.pins.push_back(objectPinOf(parameter, documented, object));
			}
		}
		addOutcomes(facts, nodeClass);
		return facts;
	}

	std::vector<NodeFacts> allFacts()
	{
		std::vector<NodeFacts> all;
		for (const Reflect::Function& function : Reflect::functions())
		{
			all.push_back(factsOf(function));
		}
		for (const Reflect::Function& method : Reflect::methods())
		{
			all.push_back(factsOf(method));
		}
		for (const UClass* owner : owners())
		{
			const bool isNode = std::any_of(all.begin(), all.end(),
				[&](const NodeFacts& facts)
				{ return facts.kind == NodeKind::Latent && facts.name.starts_with(std::string(owner->GetName()) + "."); });
			for (size_t index = 0; index < owner->Definition.Delegates.size() && !isNode; ++index) // those of a node are its outcomes
			{
				all.push_back(eventFacts(*owner, owner->Definition.Delegates[index]));
			}
		}
		return all;
	}
} // namespace Program
