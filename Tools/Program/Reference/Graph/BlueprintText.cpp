#include "Graph/BlueprintText.h"

#include "DisplayName.h"

#include "Misc/SecureHash.h"

#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Program
{
	namespace
	{
		/** 32 digits that nothing else has: made from where something stands, so that no text differs from the last one. */
		std::string identifierOf(const std::string& place)
		{
			FMD5 hash;
			std::array<uint8, 16> digest;
			hash.Update(reinterpret_cast<const uint8*>(place.data()), place.size());
			hash.Final(digest.data());
			return fmt::format("{:02X}", fmt::join(digest, ""));
		}

		std::string quote(std::string_view text)
		{
			std::string quoted = "\"";
			for (const char c : text)
			{
				quoted += c == '\n' ? "\\n" : c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
			}
			return quoted + '"';
		}

		std::string orNone(const std::string& text)
		{
			return text.empty() ? "None" : text;
		}

		std::string trueOrFalse(bool value)
		{
			return value ? "True" : "False";
		}

		class Writer
		{
		public:
			explicit Writer(const Graph& written)
				: graph(written)
			{
			}

			std::string node(size_t index) const
			{
				const GraphNode& own = graph.nodes[index];
				std::string text = fmt::format("Begin Object Class=/Script/BlueprintGraph.{} Name={}\n", own.kind, quote(own.name));
				for (const std::string& property : own.properties)
				{
					text += fmt::format("   {}\n", property);
				}
				text += fmt::format(
					"   NodePosX={}\n   NodePosY={}\n   NodeGuid={}\n", own.x, own.y, identifierOf(graph.title + '\n' + own.name));
				for (size_t pin = 0; pin < own.pins.size(); ++pin)
				{
					text += fmt::format("   CustomProperties Pin ({})\n", members({index, pin}));
				}
				for (const GraphPin& pin : own.pins)
				{
					text += pin.isUserDefined ? userDefined(pin) : "";
				}
				return text + "End Object\n";
			}

		private:
			std::string identifier(PinPlace place) const
			{
				const GraphPin& pin = graph[place];
				return identifierOf(
					fmt::format("{}\n{}\n{} {}", graph.title, graph.nodes[place.node].name, pin.isOutput ? "out" : "in", pin.name));
			}

			std::string links(PinPlace place) const
			{
				std::string ends;
				for (const Wire& wire : graph.wires)
				{
					if (wire.from == place || wire.to == place)
					{
						const PinPlace other = wire.from == place ? wire.to : wire.from;
						ends += fmt::format("{} {},", graph.nodes[other.node].name, identifier(other));
					}
				}
				return ends.empty() ? ends : fmt::format("LinkedTo=({}),", ends);
			}

			static std::string typeMembers(const PinType& type)
			{
				const std::string mapValue = type.mapValue.empty() ? "" : fmt::format("TerminalCategory={}", quote(type.mapValue));
				return fmt::format("PinType.PinCategory={},PinType.PinSubCategory={},PinType.PinSubCategoryObject={},"
								   "PinType.PinSubCategoryMemberReference=({}),PinType.PinValueType=({}),PinType.ContainerType={},"
								   "PinType.bIsReference={},PinType.bIsConst={},PinType.bIsWeakPointer=False,"
								   "PinType.bIsUObjectWrapper=False,PinType.bSerializeAsSinglePrecisionFloat=False,",
					quote(type.category), quote(type.subCategory), type.object.empty() ? "None" : quote(type.object), type.signature,
					mapValue, orNone(type.container), trueOrFalse(type.isReference), trueOrFalse(type.isReference));
			}

			std::string members(PinPlace place) const
			{
				const GraphPin& pin = graph[place];
				const bool isNamedAnew = !pin.title.empty() && pin.title != displayName(pin.name, pin.type.category == "bool");
				std::string text = fmt::format("PinId={},PinName={},", identifier(place), quote(pin.name));
				text += isNamedAnew ? fmt::format("PinFriendlyName=NSLOCTEXT(\"K2Node\",{},{}),", quote(pin.title), quote(pin.title)) : "";
				text += pin.isOutput ? "Direction=\"EGPD_Output\"," : "";
				text += typeMembers(pin.type) + links(place);
				text += pin.value.empty() ? "" : fmt::format("DefaultValue={},", quote(pin.value));
				return text + fmt::format("PersistentGuid={:032},bHidden={},bNotConnectable=False,bDefaultValueIsReadOnly=False,"
										  "bDefaultValueIsIgnored=False,bAdvancedView=False,bOrphanedPin=False,",
								  0, trueOrFalse(pin.isHidden));
			}

			/** Says once more, in words of its own, what a pin of an event is. */
			static std::string userDefined(const GraphPin& pin)
			{
				const PinType& type = pin.type;
				std::string members = fmt::format("PinCategory={}", quote(type.category));
				members += type.subCategory.empty() ? "" : fmt::format(",PinSubCategory={}", quote(type.subCategory));
				members += type.object.empty() ? "" : fmt::format(",PinSubCategoryObject={}", quote(type.object));
				members += type.container.empty() ? "" : ",ContainerType=" + type.container;
				members += type.isReference ? ",bIsReference=True,bIsConst=True" : "";
				return fmt::format("   CustomProperties UserDefinedPin (PinName={},PinType=({}),DesiredPinDirection=EGPD_Output)\n",
					quote(pin.name), members);
			}

			const Graph& graph;
		};
	} // namespace

	std::string blueprintText(const Graph& graph)
	{
		std::string text;
		for (size_t node = 0; node < graph.nodes.size(); ++node)
		{
			text += Writer(graph).node(node);
		}
		return text;
	}
} // namespace Program
