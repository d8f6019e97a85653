#include "FunctionCall.h"

#include "CallFrame.h"
#include "Containers/StringConv.h"
#include "Context.h"
#include "Converters.h"
#include "CoreMinimal.h"
#include "Nodes.h"

#include <fmt/format.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace Script
{
	namespace
	{
		constexpr int pinsIndex = 1;
		constexpr int handlersIndex = 2; // of a node factory: event to Lua function

		/** Reads the table of input pins of one call. */
		class PinReader
		{
		public:
			PinReader(lua_State* luaState, const Function& calledFunction, CallFrame& callFrame)
				: lua(luaState)
				, called(calledFunction)
				, frame(callFrame)
				, nodeClass(nodeClassOf(*calledFunction.function))
			{
			}

			void readAll()
			{
				lua_pushnil(lua);
				while (lua_next(lua, pinsIndex))
				{
					if (lua_type(lua, -2) != LUA_TSTRING)
					{
						throw ScriptError(fmt::format("{}: pins are given by name: {{ name = value }}", called.name));
					}
					readOne(lua_tostring(lua, -2));
					lua_pop(lua, 1);
				}
			}

		private:
			/** The value is on top of the stack, and stays there. */
			void readOne(const char* pin)
			{
				const FMulticastDelegateProperty* const event = nodeClass ? findEvent(nodeClass, pin) : nullptr;
				const std::optional<size_t> index = frame.findInput(pin);
				if (!event && !index)
				{
					throw ScriptError(fmt::format("{}: unknown pin '{}' (it has: {})", called.name, pin, fmt::join(inputNames(), ", ")));
				}
				if (!given.insert(index ? frame.parameter(*index).Name : event->Name).second)
				{
					throw ScriptError(fmt::format("{}: pin '{}' is given twice, in different spelling", called.name, pin));
				}
				try
				{
					index ? readValue(lua, lua_gettop(lua), frame[*index].type(), frame[*index].get()) : readHandler(*event);
				}
				catch (const ScriptError& error)
				{
					throw error.inside(fmt::format("{}: pin '{}'", called.name, pin));
				}
			}

			void readHandler(const FMulticastDelegateProperty& event)
			{
				if (!lua_isfunction(lua, -1))
				{
					throw ScriptError(fmt::format("expected function, got {}", luaL_typename(lua, -1)));
				}
				lua_pushvalue(lua, -1);
				lua_rawsetp(lua, handlersIndex, &event);
			}

			std::vector<const char*> inputNames() const
			{
				std::vector<const char*> names;
				for (const FParameter& parameter : called.function->Parameters)
				{
					if (isInput(parameter.Kind))
					{
						names.push_back(parameter.Name);
					}
				}
				for (const FMulticastDelegateProperty* event : eventsOf(nodeClass))
				{
					names.push_back(event->Name);
				}
				return names;
			}

			lua_State* const lua;
			const Function& called;
			CallFrame& frame;
			UClass* const nodeClass;
			std::set<std::string> given;
		};

		void pushOutputs(lua_State* lua, const CallFrame& frame)
		{
			lua_newtable(lua);
			for (size_t index = 0; index < frame.size(); ++index)
			{
				if (isOutput(frame.parameter(index).Kind))
				{
					pushValue(lua, frame[index].type(), frame[index].get());
					lua_setfield(lua, -2, frame.parameter(index).Name);
				}
			}
		}

		void warnOfEndedNode(const std::string& factory)
		{
			const std::string text = factory +
									 ": the request was refused inside this call, before the outcomes were bound; none of them is raised. "
									 "An event that is bound before the call tells.";
			const FUTF8ToTCHAR units(text.data(), static_cast<int32>(text.size()));
			UE_LOG(LogTemp, Warning, TEXT("%s"), *FString::ConstructFromPtrSize(units.Get(), units.Length()));
		}

		void pushStartedNode(lua_State* lua, const CallFrame& frame, const std::string& factory)
		{
			const Value& result = frame[frame.size() - 1];
			pushValue(lua, result.type(), result.get());
			UObject* node = nullptr;
			std::memcpy(&node, result.get(), sizeof(node));
			if (!startNode(lua, node, handlersIndex))
			{
				warnOfEndedNode(factory);
			}
		}

		int call(lua_State* lua)
		{
			const Function& function = *static_cast<const Function*>(lua_touserdata(lua, lua_upvalueindex(1)));
			const int count = lua_gettop(lua);
			if (count > 1 || (count == 1 && !lua_istable(lua, pinsIndex)))
			{
				throw ScriptError(fmt::format("{}: takes one table of pins: {{ name = value }}", function.name));
			}
			const RunningThread running(lua);
			CallFrame frame(*function.function);
			lua_settop(lua, pinsIndex);
			lua_newtable(lua); // the handlers
			if (count == 1)
			{
				PinReader(lua, function, frame).readAll();
			}
			frame.invoke();
			nodeClassOf(*function.function) ? pushStartedNode(lua, frame, function.name) : pushOutputs(lua, frame);
			return 1;
		}
	} // namespace

	void pushFunction(lua_State* lua, const Function& function)
	{
		lua_pushlightuserdata(lua, const_cast<Function*>(&function)); // Lua knows no const; it is only read
		lua_pushcclosure(lua, guarded<call>, 1);
	}
} // namespace Script
