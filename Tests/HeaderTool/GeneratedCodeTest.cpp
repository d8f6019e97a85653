#include "Host/Objects.h"
#include "SampleLibrary.h"
#include "SampleNode.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtr.h"

#include <algorithm>
#include <gtest/gtest.h>

// The tests of the script front end call what is generated for static functions, of every type.

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

TEST_F(GeneratedCode, MakesDefaultObjectsOfAllButAbstractClasses)
{
	EXPECT_EQ(USampleBase::StaticClass()->GetDefaultObject(), nullptr);
	EXPECT_TRUE(GetMutableDefault<USampleLibrary>()->text == TEXT("made with an initializer"));
}

TEST_F(GeneratedCode, CallsMembersAndVirtualsThroughTheObject)
{
	USampleLibrary* Library = NewObject<USampleLibrary>();
	FString Text;
	void* const Arguments[] = {&Text};
	find(USampleLibrary::StaticClass(), "getText").Invoke(Library, Arguments);
	EXPECT_TRUE(Text == Library->text);

	USampleDerived* Derived = NewObject<USampleDerived>();
	find(USampleBase::StaticClass(), "ping").Invoke(Derived, nullptr);
	EXPECT_EQ(Derived->pings, 1);
}

TEST_F(GeneratedCode, ReachesDelegateMembersByTheirTables)
{
	USampleLibrary* Library = NewObject<USampleLibrary>();
	const auto Delegates = Library->GetClass()->Definition.Delegates;
	ASSERT_EQ(Delegates.size(), 2u);
	EXPECT_EQ(Delegates[1].Signature->Parameters[2].Type().Class(), USampleLibrary::StaticClass());
	Library->onSampleDone.AddUniqueDynamic(Library, &USampleLibrary::onDone);
	TArray<FString> Lines{TEXT("!")};
	FString Message = TEXT("done");
	void* const Arguments[] = {&Message, &Lines, nullptr};
	Delegates[0].Get(Library).Process(Arguments);
	EXPECT_TRUE(Library->heard == TEXT("done!"));
}
