#include "FunctionCall.h"

#include "CallFrame.h"
#include "Context.h"
#include "InputError.h"
#include "LuaSink.h"
#include "LuaSource.h"
#include "NamedFields.h"
#include "Nodes.h"
#include "Objects.h"
#include "RecordList.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <vector>

namespace Script
{
	namespace
	{
		using Reflect::CallFrame;
		using Reflect::Function;
		using Reflect::InputError;

		constexpr int pinsIndex = 1;
		constexpr int handlersIndex = 2; // of a node factory: event to Lua function

		/** @return whether a function puts out records: those that it was given, and new ones. */
		bool givesRecords(const UFunction& function)
		{
			return std::any_of(function.Parameters.begin(), function.Parameters.end(),
				[](const FParameter& parameter) { return Reflect::isOutput(parameter.Kind) && isRecordList(parameter.Type()); });
		}

		/** Reads the table of input pins of one call. */
		class PinReader
		{
		public:
			PinReader(lua_State* luaState, const Function& calledFunction, CallFrame& callFrame)
				: lua(luaState)
				, called(calledFunction)
				, frame(callFrame)
				, nodeClass(Reflect::nodeClassOf(*calledFunction.function))
				, isBuilder(givesRecords(*calledFunction.function))
			{
			}

			/** @return the list of records that was given; null when there was none, or several. */
			const RecordList* readAll()
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
				return lists.size() == 1 ? lists.front() : nullptr;
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
				index ? readPin(*index, pin) : readHandler(pin, *event);
			}

			void readPin(size_t index, const char* pin)
			{
				frame.set(index, pin, LuaSource(lua, lua_gettop(lua)));
				if (!isBuilder)
				{
					noteStarted();
				}
				if (const RecordList* const list = recordListAt(lua, -1))
				{
					lists.push_back(list);
				}
			}

			/** The records of the value on top go to a function that does not only hand them on. */
			void noteStarted()
			{
				Omissions& omissions = Context::of(lua).omissions;
				const RecordList* const list = recordListAt(lua, -1);
				for (int32 index = 0; list && index < list->size(); ++index)
				{
					omissions.noteStarted((*list)[index]->number);
				}
				const lua_Unsigned count = lua_istable(lua, -1) ? lua_rawlen(lua, -1) : 0;
				for (lua_Unsigned place = 1; place <= count; ++place)
				{
					lua_rawgeti(lua, -1, static_cast<lua_Integer>(place));
					const Record* const record = recordAt(lua, -1);
					omissions.noteStarted(record ? record->number : 0);
					lua_pop(lua, 1);
				}
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
			const bool isBuilder;
			std::vector<const RecordList*> lists; // the pins keep them
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
			if (!startNode(lua, node, handlersIndex, placeOfCall(lua, factory)))
			{
				warnOfEndedNode(factory);
			}
		}

		/** Puts a table of the output pins on top. @param given  the list of records that went in; may be null. */
		void pushOutputs(lua_State* lua, CallFrame& frame, const Function& function, const RecordList* given)
		{
			LuaSink sink(lua);
			sink.newMap();
			const std::span<const FParameter> parameters = function.function->Parameters;
			for (size_t index = 0; index < parameters.size(); ++index)
			{
				const Reflect::Value& value = frame[index];
				if (!Reflect::isOutput(parameters[index].Kind))
				{
					continue;
				}
				if (isRecordList(value.type()))
				{
					Omissions& omissions = Context::of(lua).omissions;
					sink.text(parameters[index].Name);
					pushRecordList(lua, RecordList::take(value.type(), value.get(), given, omissions, placeOfCall(lua, function.name)));
					sink.addPair();
				}
				else
				{
					Reflect::writeParameter(parameters[index], value.get(), sink);
				}
			}
			nameFields(lua, function.function, function.name, parameters, Reflect::isOutput);
		}

		const Function& calledFunction(lua_State* lua)
		{
			return *static_cast<const Function*>(lua_touserdata(lua, lua_upvalueindex(1)));
		}

		/** Reads the pins from the table that is all that is on the stack, and calls. @return the list of records that was given. */
		const RecordList* callWithPins(lua_State* lua, const Function& function, CallFrame& frame, UObject* self)
		{
			const int count = lua_gettop(lua);
			if (count > 1 || (count == 1 && !lua_istable(lua, pinsIndex)))
			{
				throw InputError(fmt::format("{}: takes one table of pins: {{ name = value }}", function.name));
			}
			const RunningThread running(lua);
			lua_settop(lua, pinsIndex);
			lua_newtable(lua); // the handlers
			const RecordList* const given = count == 1 ? PinReader(lua, function, frame).readAll() : nullptr;
			frame.invoke(self);
			return given;
		}

		int call(lua_State* lua)
		{
			const Function& function = calledFunction(lua);
			CallFrame frame(function);
			const RecordList* const given = callWithPins(lua, function, frame, nullptr);
			if (Reflect::nodeClassOf(*function.function))
			{
				pushStartedNode(lua, frame, function.name);
			}
			else
			{
				pushOutputs(lua, frame, function, given);
			}
			return 1;
		}

		/** @return whether there is nothing but a return value, and no records in it. */
		bool returnsOneValue(const UFunction& function)
		{
			const auto isResult = [](const FParameter& parameter) { return Reflect::isOutput(parameter.Kind); };
			return std::count_if(function.Parameters.begin(), function.Parameters.end(), isResult) == 1 &&
				   function.Parameters.back().Kind == EParameterKind::Return && !givesRecords(function);
		}

		int callMethod(lua_State* lua)
		{
			const Function& method = calledFunction(lua);
			const std::optional<UObject*> self = objectAt(lua, 1, *method.owner);
			if (!self || !*self)
			{
				throw InputError(fmt::format("{}: is called with a colon: object:{}()", method.name, method.function->Name));
			}
			const TStrongObjectPtr<UObject> held(*self);
			lua_remove(lua, 1);
			CallFrame frame(method);
			const RecordList* const given = callWithPins(lua, method, frame, *self);
			if (returnsOneValue(*method.function))
			{
				LuaSink sink(lua);
				const size_t last = method.function->Parameters.size() - 1;
				Reflect::writeValue(frame[last].type(), frame[last].get(), sink);
				return 1;
			}
			pushOutputs(lua, frame, method, given);
			return 1;
		}
	} // namespace

	void pushMethod(lua_State* lua, const Reflect::Function& method)
	{
		lua_pushlightuserdata(lua, const_cast<Function*>(&method)); // as below
		lua_pushcclosure(lua, guarded<callMethod>, 1);
	}

	void pushFunction(lua_State* lua, const Reflect::Function& function)
	{
		lua_pushlightuserdata(lua, const_cast<Function*>(&function)); // Lua knows no const; it is only read
		lua_pushcclosure(lua, guarded<call>, 1);
	}
} // namespace Script
