// Words of a command line: one becomes a value that is written as what is read again, or is refused with words.

#include "Fuzz.h"
#include "HeaderLine.h"
#include "InputError.h"
#include "JsonValues.h"
#include "ReflectedSample.h"
#include "Value.h"

#include <cmath>

namespace
{
	using namespace Program;

	Json Written(const FPropertyType& Type, const Reflect::Value& Value)
	{
		JsonSink Sink;
		writeValue(Type, Value.get(), Sink);
		return Sink.take();
	}

	/** Bytes are JSON's own kind of value there, which no word is; infinite numbers have no word. */
	bool HasWord(const Json& Value)
	{
		return !Value.is_binary() && (!Value.is_number_float() || std::isfinite(Value.get<double>()));
	}

	void ReadWord(const FPropertyType& Type, const std::string& Word)
	{
		Reflect::Value Value(Type);
		const Json Parsed = parseWord(Word, Type);
		try
		{
			readValue(Type, JsonSource(Parsed), Value.get());
		}
		catch (const Reflect::InputError& Refused)
		{
			HOST_CHECK(*Refused.what() != '\0');
			return;
		}
		const Json First = Written(Type, Value);
		if (Type.Kind == EPropertyKind::Enum || Type.Kind == EPropertyKind::DateTime)
		{
			HOST_CHECK(
				Parsed.is_number() || Parsed.get<std::string>().size() == First.get<std::string>().size()); // no byte of it is passed over
		}
		if (HasWord(First))
		{
			Reflect::Value Again(Type);
			readValue(Type, JsonSource(First), Again.get());
			HOST_CHECK(Written(Type, Again) == First);
		}
	}

	void ReadHeaderLine(const std::string& Line)
	{
		try
		{
			const auto [Name, Value] = parseHeader(Line);
			HOST_CHECK(!Name.IsEmpty() && !Name.Contains(TEXT(":")) && !Value.StartsWith(TEXT(" ")));
		}
		catch (const Reflect::InputError& Refused)
		{
			HOST_CHECK(*Refused.what() != '\0');
		}
	}
} // namespace

FUZZ(Input)
{
	static const FPropertyType* const Types[] = {&PropertyTypeOf<bool>(), &PropertyTypeOf<uint8>(), &PropertyTypeOf<int32>(),
		&PropertyTypeOf<int64>(), &PropertyTypeOf<float>(), &PropertyTypeOf<double>(), &PropertyTypeOf<FString>(),
		&PropertyTypeOf<FDateTime>(), &PropertyTypeOf<ESampleColour>(), &PropertyTypeOf<TArray<uint8>>(),
		&PropertyTypeOf<TArray<FString>>(), &PropertyTypeOf<TArray<int32>>(), &PropertyTypeOf<TMap<FString, FString>>(),
		&PropertyTypeOf<TMap<FString, int32>>(), &PropertyTypeOf<FSampleOptions>(), &PropertyTypeOf<TArray<FSampleOptions>>(),
		&PropertyTypeOf<USampleLibrary*>()};
	const std::string_view Kind = Input.Field();
	const std::string Word(Input.Rest());
	if (!Kind.empty())
	{
		ReadWord(*Types[static_cast<uint8>(Kind[0]) % std::size(Types)], Word);
		ReadHeaderLine(Word);
	}
}
