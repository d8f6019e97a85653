#pragma once

#include "Calls.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "TempDir.h"
#include "UAsyncNodeCorv.h"

#include <map>

/** What one of a node's outputs said: every pin by its name, lists with their entries after each other. */
struct Outcome
{
	std::string output;
	std::map<std::string, std::string> pins;

	/** The output and the status: "OnFail 404". */
	std::string brief() const { return output + ' ' + pins.at("statusCode"); }
	std::string requestID() const { return pins.at("requestID"); }
};

/** One factory, and the builder that does the same. */
struct NodeKind
{
	std::string name;
	std::string_view factory;
	std::string_view builder;
	void (*adjust)(Pins& pins) = [](Pins&) {};

	UAsyncNodeCorv* make(Pins pins, const FString& id) const;
	TArray<FhttpRequest> build(Pins pins, const FString& id) const;
	friend void PrintTo(const NodeKind& kind, std::ostream* stream) { *stream << kind.name; }
};

/** All factories; some with more than one choice of their pins. */
extern const std::vector<NodeKind> nodeKinds;
const NodeKind& nodeKind(std::string_view name);

/** Answers what all kinds of nodes ask for. */
class NodeOrigin : public Lab::Origin
{
public:
	/** @param also  happens to every answer. */
	explicit NodeOrigin(const Lab::Behaviour& also = Lab::headers({}));

	/** Heads with their bodies since the last call, in order; what differs from one form to the next is taken out. */
	std::vector<std::string> takeRequests();

private:
	size_t taken = 0;
};

/** Nodes as a graph uses them; every outcome is recorded. */
class NodeFixture : public ModuleFixture
{
protected:
	NodeFixture();

	/** For the origin, with the files of this test and the Drive service played by the origin as well. */
	Pins pins(const NodeOrigin& origin) const;
	/** What every builder refuses. */
	static Pins badPins() { return {.url = "x"}; }

	/** Records the outcomes of a node. */
	void listen(UAsyncNodeCorv& node);
	/** Records the outcomes of a node and activates it; nothing holds it. */
	UAsyncNodeCorv& start(UAsyncNodeCorv* node);
	/** The same, and holds the node to the end of the test. */
	UAsyncNodeCorv& startHeld(UAsyncNodeCorv* node);
	/** Whether a node has told whoever holds it to let go. */
	static bool hasEnded(UAsyncNodeCorv& node);

	LogCapture log;
	TempDir dir;
	std::vector<Outcome> outcomes;
	std::vector<std::string> fileInfos; // request IDs of the library's event
	std::vector<TStrongObjectPtr<UObject>> held;
	std::function<void(UAsyncNodeCorv& node)> duringOutcome; // may be empty
};
