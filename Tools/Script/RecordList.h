#pragma once

#include "Omissions.h"
#include "Records.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Script
{
	/**
	 * A list of records as a script has it: it never changes. Lists that grow out of each other share their records, and the
	 * newest has them as the one array that functions take as well. So a list that goes through a thousand calls, each of which
	 * appends to it, is never copied.
	 */
	class RecordList
	{
	public:
		/**
		 * Takes what a function has put out.
		 * @param type, array  of records; the array is moved from.
		 * @param given  the list that the function got; null when it got none. What a function puts out begins with what it got,
		 *   unless it puts out less.
		 * @param place  of the call, for those that it has made.
		 */
		static RecordList take(
			const FPropertyType& type, void* array, const RecordList* given, Omissions& omissions, const std::string& place);

		int32 size() const { return count; }
		const RecordPointer& operator[](int32 index) const { return shared->records[static_cast<size_t>(index)]; }
		const FPropertyType& type() const { return shared->type; }
		/** Sets an array to these records. */
		void giveTo(void* array) const;

	private:
		struct Shared
		{
			const FPropertyType& type; // of the array
			std::vector<RecordPointer> records;
			std::optional<Reflect::Value> array; // all of the records, unless a call has it
		};

		bool isNewest() const { return static_cast<size_t>(count) == shared->records.size(); }

		std::shared_ptr<Shared> shared;
		int32 count = 0;
	};

	/** @return whether a type is a list of records. */
	bool isRecordList(const FPropertyType& type);

	void pushRecordList(lua_State* lua, RecordList list);
	/** @return the list at an index, or null when it is something else. */
	const RecordList* recordListAt(lua_State* lua, int index);
} // namespace Script
