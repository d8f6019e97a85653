#include "FunctionCall.h"

#include "CallFrame.h"
#include "Context.h"
#include "InputError.h"
#include "LuaSink.h"
#include "LuaSource.h"
#include "Nodes.h"
#include "Objects.h"

#include <fmt/format.h>

#include <set>

namespace Script
{
	namespace
	{
		using Reflect::CallFrame;
		using Reflect::Function;
		using Reflect::InputError;

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
				, nodeClass(Reflect::nodeClassOf(*calledFunction.function))
			{
			}

			void readAll()
			{
				lua_pushnil(lua);
				while (lua_next(lua, pinsIndex))
				{
					if (lua_type(lua, -2) != LUA_TSTRING)
					{
						throw InputError(fmt::format("{}: pins are given by name: {{ name = value }}", called.name));
					}
					readOne(lua_tostring(lua, -2));
					lua_pop(lua, 1);
				}
			}

		private:
			/** The value is on top of the stack, and stays there. */
			void readOne(const char* pin)
			{
				const FMulticastDelegateProperty* const event = Reflect::findEvent(nodeClass, pin);
				const std::optional<size_t> index = frame.findInput(pin);
				if (!event && !index)
				{
					throw InputError(fmt::format("{}: unknown pin '{}' (it has: {})", called.name, pin, fmt::join(pinNames(), ", ")));
				}
				if (!given.insert(index ? frame.parameter(*index).Name : event->Name).second)
				{
					throw InputError(fmt::format("{}: pin '{}' is given twice, in different spelling", called.name, pin));
				}
				index ? frame.set(*index, pin, LuaSource(lua, lua_gettop(lua))) : readHandler(pin, *event);
			}

			void readHandler(const char* pin, const FMulticastDelegateProperty& event)
			{
				if (!lua_isfunction(lua, -1))
				{
					throw InputError(fmt::format("{}: pin '{}': expected function, got {}", called.name, pin, luaL_typename(lua, -1)));
				}
				lua_pushvalue(lua, -1);
				lua_rawsetp(lua, handlersIndex, &event);
			}

			std::vector<std::string> pinNames() const
			{
				std::vector<std::string> names = Reflect::inputNames(*called.function);
				for (const FMulticastDelegateProperty* event : Reflect::eventsOf(nodeClass))
				{
					names.emplace_back(event->Name);
				}
				return names;
			}

			lua_State* const lua;
			const Function& called;
			CallFrame& frame;
			UClass* const nodeClass;
			std::set<std::string> given;
		};

		void warnOfEndedNode(const std::string& factory)
		{
			const std::string text = factory +
									 ": the request was refused inside this call, before the outcomes were bound; none of them is raised. "
									 "An event that is bound before the call tells.";
			UE_LOG(LogTemp, Warning, TEXT("%s"), *Reflect::toFString(text));
		}

		void pushStartedNode(lua_State* lua, const CallFrame& frame, const std::string& factory)
		{
			UObject* const node = frame.returnedObject();
			pushObject(lua, node);
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
				throw InputError(fmt::format("{}: takes one table of pins: {{ name = value }}", function.name));
			}
			const RunningThread running(lua);
			CallFrame frame(function);
			lua_settop(lua, pinsIndex);
			lua_newtable(lua); // the handlers
			if (count == 1)
			{
				PinReader(lua, function, frame).readAll();
			}
			frame.invoke();
			if (Reflect::nodeClassOf(*function.function))
			{
				pushStartedNode(lua, frame, function.name);
			}
			else
			{
				LuaSink sink(lua);
				frame.writeOutputs(sink);
			}
			return 1;
		}
	} // namespace

	void pushFunction(lua_State* lua, const Reflect::Function& function)
	{
		lua_pushlightuserdata(lua, const_cast<Function*>(&function)); // Lua knows no const; it is only read
		lua_pushcclosure(lua, guarded<call>, 1);
	}
} // namespace Script
