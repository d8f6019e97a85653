#include "Host/Objects.h"
#include "SampleLibrary.h"
#include "SampleNode.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtr.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{
	const UFunction& find(UClass* Class, std::string_view Name)
	{
		const auto Functions = Class->Definition.Functions;
		const auto Found = std::find_if(Functions.begin(), Functions.end(), [&](const UFunction& F) { return Name == F.Name; });
		EXPECT_NE(Found, Functions.end()) << Name;
		return *Found;
	}

	class GeneratedCode : public testing::Test
	{
	protected:
		GeneratedCode() { HostObjects::CreateDefaultObjects(); }
		~GeneratedCode() override { HostObjects::DestroyAll(); }
	};
} // namespace

TEST_F(GeneratedCode, RegistersWhatTheHeadersDeclare)
{
	std::vector<std::string> Seen;
	for (const FCompiledInHeader* Header : GetCompiledInHeaders())
	{
		for (UClass* (*const StaticClass)() : Header->Classes)
		{
			Seen.push_back(std::string(Header->Name) + ":" + StaticClass()->GetName() + "<" + StaticClass()->GetSuperClass()->GetName());
		}
		for (const UScriptStruct* Struct : Header->Structs)
		{
			Seen.push_back(std::string(Header->Name) + ":" + Struct->Name);
		}
		for (const UEnum* Enum : Header->Enums)
		{
			Seen.push_back(std::string(Header->Name) + ":" + Enum->Name);
		}
		for (const UDelegateFunction* Delegate : Header->Delegates)
		{
			Seen.push_back(std::string(Header->Name) + ":" + Delegate->Name);
		}
	}
	const std::vector<std::string> Expected = {"BlueprintAsyncActionBase.h:BlueprintAsyncActionBase<Object",
		"BlueprintFunctionLibrary.h:BlueprintFunctionLibrary<Object", "SampleLibrary.h:SampleLibrary<BlueprintFunctionLibrary",
		"SampleNode.h:SampleNode<BlueprintAsyncActionBase", "SampleNode.h:SampleBase<Object", "SampleNode.h:SampleDerived<SampleBase",
		"SampleTypes.h:SampleRecord", "SampleTypes.h:ESampleKind", "SampleTypes.h:FSampleDoneDelegate",
		"SampleTypes.h:FSampleStepDelegate"};
	EXPECT_EQ(Seen, Expected);
	EXPECT_EQ(USampleBase::StaticClass()->GetDefaultObject(), nullptr);
	EXPECT_TRUE(GetMutableDefault<USampleLibrary>()->text == TEXT("made with an initializer"));
}

TEST_F(GeneratedCode, CallsAStaticFunctionWithEveryKindOfParameter)
{
	const UFunction& Mix = find(USampleLibrary::StaticClass(), "mix");
	EXPECT_EQ(Mix.Flags, uint32(FUNC_Static | FUNC_BlueprintCallable));
	TArray<FSampleRecord> Records;
	Records.Add(FSampleRecord());
	TMap<FString, FString> Table;
	Table.Add(TEXT("k"), TEXT("v"));
	USampleNode* Node = NewObject<USampleNode>();
	Node->held.number = 100000;
	bool Flag = true;
	uint8 Small = 3;
	float Factor = 0.5f;
	FString Text = TEXT("old");
	TArray<FString> Lines;
	Lines.Add(TEXT("kept"));
	int64 Limit = 1000000;
	ESampleKind Kind = ESampleKind::Six;
	FString Title = TEXT("t");
	FString Plain = TEXT("p");
	float Step = 0.25f;
	bool Last = false;
	int32 Result = 0;
	void* const Arguments[] = {
		&Records, &Table, &Flag, &Small, &Factor, &Text, &Lines, &Limit, &Kind, &Title, &Plain, &Step, &Last, &Node, &Result};
	ASSERT_EQ(Mix.Parameters.size(), std::size(Arguments));

	Mix.Invoke(nullptr, Arguments);
	EXPECT_EQ(Result, 1103021); // 1 record, 1 pair, 10 + 3 + 6, 500 + 2500, the limit and the node's number
	EXPECT_TRUE(Text == TEXT("tp"));
	EXPECT_EQ(Lines.Num(), 2);
	EXPECT_EQ(Records.Num(), 1);
}

TEST_F(GeneratedCode, DescribesParametersForScripts)
{
	using enum EParameterKind;
	const UFunction& Mix = find(USampleLibrary::StaticClass(), "mix");
	std::vector<EParameterKind> Kinds;
	std::string Defaults;
	for (const FParameter& Parameter : Mix.Parameters)
	{
		Kinds.push_back(Parameter.Kind);
		Defaults += std::string(Parameter.Default ? Parameter.Default : "-") + ";";
	}
	EXPECT_EQ(Kinds, (std::vector<EParameterKind>{
						 Input, Input, Input, Input, Input, Output, InputOutput, Input, Input, Input, Input, Input, Input, Input, Return}));
	EXPECT_EQ(Defaults, "-;-;-;-;-;-;-;10485760;Six;a \"b\";;-0.5;true;;-;");
	EXPECT_EQ(&Mix.Parameters[1].Type(), (&PropertyTypeOf<TMap<FString, FString>>()));
	EXPECT_EQ(Mix.Parameters[13].Type().Class(), USampleNode::StaticClass());
	EXPECT_EQ(Mix.Parameters[8].Type().Enum()->FindByName("last")->Value, 255);
	EXPECT_STREQ(FindMeta(Mix.Parameters[7].Meta, "DisplayName"), "How much");
	EXPECT_STREQ(FindMeta(Mix.Meta, "Category"), "Sample|Values");
	EXPECT_STREQ(FindMeta(USampleLibrary::StaticClass()->Definition.Meta, "ToolTip"), "Two pieces,\none \\ text: \xC3\xA4.");
	EXPECT_STREQ(FindMeta(USampleLibrary::StaticClass()->Definition.Meta, "Blueprintable"), "true");
	EXPECT_STREQ(StaticEnum<ESampleKind>()->FindByValue(0)->DisplayName, "Nothing \"at all\"");
}

TEST_F(GeneratedCode, CallsMembersAndVirtualsThroughTheObject)
{
	USampleLibrary* Library = NewObject<USampleLibrary>();
	FString Text;
	void* const TextArguments[] = {&Text};
	find(USampleLibrary::StaticClass(), "getText").Invoke(Library, TextArguments);
	EXPECT_TRUE(Text == Library->text);

	USampleLibrary* Found = nullptr;
	void* const FindArguments[] = {&Library, &Found};
	find(USampleLibrary::StaticClass(), "find").Invoke(nullptr, FindArguments);
	EXPECT_EQ(Found, Library);

	USampleDerived* Derived = NewObject<USampleDerived>();
	find(USampleBase::StaticClass(), "ping").Invoke(Derived, nullptr);
	EXPECT_EQ(Derived->pings, 1);
}

TEST_F(GeneratedCode, ReachesDelegateMembersByTheirTables)
{
	USampleLibrary* Library = NewObject<USampleLibrary>();
	const auto Delegates = Library->GetClass()->Definition.Delegates;
	ASSERT_EQ(Delegates.size(), 2u);
	EXPECT_STREQ(Delegates[1].Signature->Name, "FSampleStepDelegate");
	EXPECT_EQ(Delegates[1].Signature->Parameters[2].Type().Class(), USampleLibrary::StaticClass());
	EXPECT_STREQ(FindMeta(Delegates[0].Signature->Meta, "Comment"), "It is over.\n@param message  what became of it.");
	EXPECT_STREQ(FindMeta(Delegates[1].Signature->Meta, "Comment"), "One step.\nThere are more.");
	EXPECT_EQ(&Delegates[0].Get(Library), &Library->onSampleDone);

	Library->onSampleDone.AddUniqueDynamic(Library, &USampleLibrary::onDone);
	TArray<FString> Lines;
	Lines.Add(TEXT("!"));
	FString Message = TEXT("done");
	void* const Arguments[] = {&Message, &Lines, nullptr};
	Delegates[0].Get(Library).Process(Arguments);
	EXPECT_TRUE(Library->heard == TEXT("done!"));
}
