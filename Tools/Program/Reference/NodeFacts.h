#pragma once

#include "Reflection.h"

#include <optional>
#include <string>
#include <vector>

namespace Program
{
	struct PinFacts
	{
		std::string name; // as scripts write it
		std::string title; // as the editor shows it
		const FPropertyType* type;
		EParameterKind kind;
		std::optional<std::string> defaultText; // as declared
		bool mayStayUnconnected = false; // the editor takes an empty value then
		std::vector<std::string> texts; // paragraphs

		bool isLeft() const { return kind == EParameterKind::Input || kind == EParameterKind::InputOutput; }
	};

	/** One way in which a latent node ends. */
	struct OutcomeFacts
	{
		std::string name;
		std::string title;
		std::vector<std::string> texts;
	};

	enum class NodeKind
	{
		Pure, // no execution pins
		Callable,
		Latent, // goes on later, by one of its outcomes
		Event // an execution begins here
	};

	/** Everything that the reference tells about one function, node or event, taken from the reflection registry. */
	struct NodeFacts
	{
		NodeKind kind;
		std::string name; // "Class.function"
		std::string title;
		std::string category; // levels separated by bars
		std::vector<std::string> texts;
		std::vector<PinFacts> pins; // those of the outcomes of a latent node too, each once
		std::vector<OutcomeFacts> outcomes;
		std::string owner; // the class that it belongs to, as the engine names it: "/Script/Module.Class"
		std::string nodeClass; // of a latent node: the class of the nodes that it makes
		std::string signature; // of an event: what its handlers take
		bool isOfObject = false; // it is called on an object of its class

		/** The name without its class. */
		std::string ownName() const { return name.substr(name.find('.') + 1); }
		/** The structs with fields that its pins take, each once. */
		std::vector<const UScriptStruct*> structs() const;
		/** The enumerations that its pins and their fields take, each once. */
		std::vector<const UEnum*> enumerations() const;
	};

	/** A kind as the command and the pages call it: "pure", "callable", "latent", "event". */
	const char* kindName(NodeKind kind);

	/** @return a type's name; of an enumeration without its values. */
	std::string shortTypeName(const FPropertyType& type);

	NodeFacts factsOf(const Reflect::Function& function);

	/** Every script function and node in the order of the registry, then every event of the classes that they belong to. */
	std::vector<NodeFacts> allFacts();
} // namespace Program
