#include "Graph/GraphFile.h"

#include "Graph/GraphLayout.h"
#include "Graph/GraphNodes.h"
#include "Graph/PinTypes.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace Program
{
	namespace
	{
		constexpr std::string_view blanks = " \t";

		std::string trimmed(const std::string& text)
		{
			const size_t begin = std::min(text.find_first_not_of(blanks), text.size());
			return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
		}

		/** Cuts a text in two at its first mark. @return whether the mark is there. */
		bool cut(const std::string& text, std::string_view mark, std::string& before, std::string& after)
		{
			const size_t place = text.find(mark);
			if (place == std::string::npos)
			{
				return false;
			}
			after = trimmed(text.substr(place + mark.size()));
			before = trimmed(text.substr(0, place));
			return true;
		}

		bool isSame(const PinType& a, const PinType& b)
		{
			return a.category == b.category && a.object == b.object && a.container == b.container;
		}

		class GraphReader
		{
		public:
			GraphReader(const std::string& title, const std::vector<NodeFacts>& allNodes)
				: known(allNodes)
			{
				graph.title = title;
			}

			Graph read(const std::string& text)
			{
				std::istringstream lines(text);
				for (std::string line; std::getline(lines, line);)
				{
					++lineNumber;
					guarded([&] { readLine(line); });
				}
				for (const LateWire& wire : lateWires)
				{
					lineNumber = wire.line;
					guarded([&] { connect(wire.from, wire.node, wire.pin); });
				}
				placeInRows(graph, rows);
				return graph;
			}

		private:
			/** A wire may come from a node that is not read yet. */
			struct LateWire
			{
				std::string from;
				size_t node;
				std::string pin;
				int line;
			};

			template <class Step>
			void guarded(Step step) const
			{
				try
				{
					step();
				}
				catch (const std::out_of_range& fault)
				{
					throw std::runtime_error(fmt::format("line {}: {}", lineNumber, fault.what()));
				}
			}

			void readLine(const std::string& line)
			{
				if (trimmed(line).empty())
				{
					beginsRow = true;
				}
				else if (blanks.find(line.front()) != std::string_view::npos)
				{
					readPin(trimmed(line));
				}
				else if (line.starts_with("after "))
				{
					runsAfter = line.substr(6);
				}
				else if (!line.starts_with('#'))
				{
					readNode(line);
				}
			}

			const NodeFacts& factsOf(const std::string& name) const
			{
				const auto found = std::find_if(known.begin(), known.end(), [&](const NodeFacts& node) { return node.ownName() == name; });
				if (found == known.end())
				{
					throw std::out_of_range("there is no function or event " + name);
				}
				return *found;
			}

			const UScriptStruct& structOf(const std::string& name) const
			{
				for (const NodeFacts& node : known)
				{
					for (const UScriptStruct* record : node.structs())
					{
						if (record->Name == name)
						{
							return *record;
						}
					}
				}
				throw std::out_of_range("no pin is a struct of the name " + name);
			}

			GraphNode makeNode(const std::string& words)
			{
				std::string name;
				std::string event;
				facts = nullptr;
				if (words == "print")
				{
					return printNode();
				}
				if (words.starts_with("bind "))
				{
					return bindNode(factsOf(words.substr(5)));
				}
				if (words.starts_with("make ") || words.starts_with("break "))
				{
					return structNode(structOf(words.substr(words.find(' ') + 1)), words.starts_with("make "));
				}
				if (words.starts_with("event "))
				{
					const bool isBound = cut(words.substr(6), " of ", name, event);
					return isBound ? customEvent(name, &factsOf(event)) : customEvent(words.substr(6), nullptr);
				}
				facts = &factsOf(words);
				return callNode(*facts);
			}

			void readNode(const std::string& line)
			{
				std::string name;
				std::string words = line;
				const bool isNamed = cut(line, "=", name, words);
				const size_t node = graph.add(makeNode(words));
				if (isNamed)
				{
					names[name] = node;
				}
				run(node);
				rows.back().nodes.push_back(node);
			}

			/** Lets the node before it in its row, or the one that leads to its row, run it. */
			void run(size_t node)
			{
				const bool runs = graph.nodes[node].find("execute", false) < graph.nodes[node].pins.size();
				if (beginsRow)
				{
					beginRow();
				}
				if (runs && !runsAfter.empty())
				{
					connect(std::exchange(runsAfter, ""), node, "execute");
					rows.back().after = graph.wires.back().from.node;
				}
				else if (runs && previous)
				{
					graph.connect(*previous, "then", node, "execute");
				}
				if (runs || graph.nodes[node].look == NodeLook::Event)
				{
					previous = node;
				}
			}

			void beginRow()
			{
				rows.emplace_back();
				previous.reset();
				beginsRow = false;
			}

			void readPin(const std::string& line)
			{
				const size_t end = std::min(line.find_first_of(" :"), line.size());
				const std::string pin = line.substr(0, end);
				const std::string mark = trimmed(line.substr(end)).substr(0, 1);
				if (graph.nodes.empty() || (mark != ":" && mark != "<"))
				{
					throw std::out_of_range("'pin: value' or 'pin < node.pin' of a node is expected, found " + line);
				}
				const std::string rest = trimmed(trimmed(line.substr(end)).substr(1));
				if (mark == "<")
				{
					lateWires.push_back({rest, graph.nodes.size() - 1, pin, lineNumber});
					return;
				}
				setValue(graph.nodes.back(), pin, rest);
			}

			void setValue(GraphNode& node, const std::string& name, const std::string& written) const
			{
				const size_t place = node.find(name, false);
				if (place == node.pins.size())
				{
					throw std::out_of_range(fmt::format("{} has no such pin: {}", node.title, name));
				}
				PinValue value{written, written};
				for (const PinFacts& pin : facts ? facts->pins : std::vector<PinFacts>())
				{
					value = pin.name == name && pin.isLeft() ? pinValueOf(*pin.type, written) : value;
				}
				node.pins[place].value = value.text;
				node.pins[place].shownValue = value.shown;
			}

			void connect(const std::string& from, size_t node, const std::string& pin)
			{
				std::string name;
				std::string output;
				if (!cut(from, ".", name, output) || !names.contains(name))
				{
					throw std::out_of_range("no node has the name before the dot: " + from);
				}
				graph.connect(names.at(name), output, node, pin);
				const Wire& wire = graph.wires.back();
				if (!isSame(graph[wire.from].type, graph[wire.to].type))
				{
					throw std::out_of_range(fmt::format("{} and {} are of different types", from, pin));
				}
			}

			const std::vector<NodeFacts>& known;
			Graph graph;
			std::vector<GraphRow> rows;
			std::map<std::string, size_t> names;
			std::vector<LateWire> lateWires;
			const NodeFacts* facts = nullptr; // of the node that was read last, when it is a function
			std::optional<size_t> previous; // runs the next node of the row
			std::string runsAfter; // what leads to the next row
			bool beginsRow = true;
			int lineNumber = 0;
		};
	} // namespace

	Graph readGraph(const std::string& title, const std::string& text, const std::vector<NodeFacts>& nodes)
	{
		return GraphReader(title, nodes).read(text);
	}
} // namespace Program
