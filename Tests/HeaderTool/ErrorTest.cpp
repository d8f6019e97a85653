#include "ToolRun.h"

#include <gtest/gtest.h>

namespace
{
	/** Headers of one run and every message that they must give. The first header is Case.h. */
	struct Case
	{
		const char* name;
		std::string text;
		std::vector<std::string> expected; // without "Case.h(" and "): Error"
		std::string otherName = "";
		std::string otherText = "";
	};

	/** The lines that every sound header begins with; what follows stands on line 4. */
	std::string file(const std::string& text)
	{
		return "#pragma once\n#include \"CoreMinimal.h\"\n#include \"Case.generated.h\"\n" + text;
	}

	/** The members begin on line 8. */
	std::string inClass(const std::string& members)
	{
		return file("UCLASS()\nclass UCase : public UObject\n{\n\tGENERATED_BODY() public:\n" + members + "\n};\n");
	}

	std::string repeated(int times, const std::string& text)
	{
		std::string all;
		for (int time = 0; time < times; ++time)
		{
			all += text;
		}
		return all;
	}

	/** One reflected function on line 8. */
	std::string function(const std::string& declaration)
	{
		return inClass("UFUNCTION() " + declaration);
	}

	std::string other(const std::string& text, const std::string& includes = "")
	{
		return "#pragma once\n" + includes + "#include \"Other.generated.h\"\n" + text;
	}

	const std::string delegates = "DECLARE_DYNAMIC_MULTICAST_DELEGATE";
	const std::string structWithBody = "USTRUCT(BlueprintType)\nstruct FOther { GENERATED_BODY() };\n";
	const std::string enumNode = "UENUM()\nenum class EOther : uint8 { A };\n";
	const std::string parentClass = "UCLASS()\nclass UOther : public UObject { GENERATED_BODY()\npublic:\n"
									"UFUNCTION() void taken();\nUPROPERTY() int32 value; };\n";

	const Case cases[] = {
		{"PragmaLate", "#include \"A.h\"\n#pragma once\n#include \"Case.generated.h\"\n" + enumNode,
			{"1: the header must begin with #pragma once"}},
		{"NoGenerated", "#pragma once\n" + enumNode, {"3: reflected types need #include \"Case.generated.h\""}},
		{"WrongGenerated", "#pragma once\n#include \"Cases.generated.h\"\n" + enumNode,
			{"2: expected #include \"Case.generated.h\", found \"Cases.generated.h\""}},
		{"GeneratedNotLast", file("#include \"A.h\"\n#include <b>\n"),
			{"4: \"Case.generated.h\" must be the last include", "5: \"Case.generated.h\" must be the last include"}},
		{"TypesBeforeGenerated", "#pragma once\n" + delegates + "(FEarly);\n" + structWithBody + "#include \"Case.generated.h\"\n",
			{"2: 'FEarly' is declared before #include \"Case.generated.h\"",
				"4: 'FOther' is declared before #include \"Case.generated.h\""}},
		{"GeneratedInCondition", "#pragma once\n#if A\n#include \"Case.generated.h\"\n#endif\n",
			{"3: \"Case.generated.h\" must not stand inside #if"}},
		{"ReflectedInCondition", inClass("#ifdef A\nUFUNCTION() void a();\n#endif\n#if WITH_EDITOR\n#else\nUPROPERTY() int32 b;\n#endif"),
			{"9: UFUNCTION stands inside '#ifdef A' of line 8; only WITH_EDITOR and WITH_EDITORONLY_DATA may enclose it",
				"13: UPROPERTY stands inside '#else' of line 12; only WITH_EDITOR and WITH_EDITORONLY_DATA may enclose it"}},
		{"ConditionInDeclaration", function("void a(int32 b\n#if A\n, int32 c\n#endif\n);"),
			{"12: a preprocessor line stands inside this reflected declaration"}},
		{"OpenConditions", file("#endif\n#if A\n#if B\n#endif"), {"4: #endif without #if", "5: '#if A' has no #endif"}},
		{"NoUtf8", file("// f\xFCr\nUENUM() enum class E : uint8 { A };"), {"4: a byte on this line is no UTF-8"}},
		{"NoUtf8ByEscapes",
			inClass("UFUNCTION(meta = (ToolTip = \"\\xC3\" \"\\xA4\")) void a();\n"
					"UFUNCTION(meta = (ToolTip = \"\\xED\\xA0\\x80\")) void b();"),
			{"9: the escapes of this text make no UTF-8"}},
		{"DeepScopes", file(repeated(200'000, "namespace A {\n") + repeated(200'000, "}")),
			{"260: scopes may not stand more than 256 deep in one another"}},
		{"DeepTypes", function("void a(" + repeated(200'000, "TArray<") + "int32" + repeated(200'000, ">") + " b);\nint32 c;"),
			{"8: template arguments may not stand more than 64 deep in one another"}},
		{"SameFileName", file(""), {"1: the header 'Case.h' takes a name that Deep/case.h(1) has taken"}, "Deep/case.h", "#pragma once\n"},
		{"Circle", "#pragma once\n#include \"Other.h\"\n#include \"Case.generated.h\"\n",
			{"2: \"Other.h\" includes this header in turn", "!Other.h(2): Error: \"Case.h\" includes this header in turn"}, "Other.h",
			"#pragma once\n#include \"Case.h\"\n"},
		{"ReferenceMistakesCount", file(""), {"!Other.h(3): Error: unknown specifier 'Foo' in UENUM"}, "Other.h",
			other("UENUM(Foo)\nenum class EOther : uint8 { A };\n")},

		{"Prefixes",
			file("UCLASS() class Case : public UObject { GENERATED_BODY() };\n"
				 "USTRUCT() struct Record { GENERATED_BODY() };\nUENUM() enum class Kind : uint8 { A };\n" +
				 delegates + "(Done);"),
			{"4: the name of the class 'Case' must begin with U", "5: the name of the struct 'Record' must begin with F",
				"7: the name of the delegate 'Done' must begin with F"}},
		{"NoBody", file("UCLASS()\nclass UCase : public UObject { };\nUSTRUCT()\nstruct FRecord { int a; };"),
			{"5: UCase has no GENERATED_BODY()", "7: FRecord has no GENERATED_BODY()"}},
		{"BodyNotFirst", file("UCLASS()\nclass UCase : public UObject { public:\nGENERATED_BODY()\n};"),
			{"6: GENERATED_BODY() must come first in the body of UCase"}},
		{"BodyTwice", inClass("GENERATED_BODY()"), {"8: UCase has a second GENERATED_BODY()"}},
		{"OldBody", file("USTRUCT()\nstruct FCase {\nGENERATED_USTRUCT_BODY()\n};"),
			{"5: FCase has no GENERATED_BODY()", "6: GENERATED_USTRUCT_BODY is outdated, write GENERATED_BODY()"}},
		{"BodyElsewhere", file("GENERATED_BODY()"), {"4: GENERATED_BODY stands inside the file"}},
		{"UnknownBase", file("UCLASS() class UCase : public UMissing { GENERATED_BODY() };\nUCLASS() class ULone { GENERATED_BODY() };"),
			{"4: the base 'UMissing' of 'UCase' is not a reflected class", "5: 'ULone' must derive from UObject or a class that does"}},
		{"BaseNotIncluded",
			file("UCLASS() class UCase : public UOther { GENERATED_BODY() };\n"
				 "USTRUCT() struct FRecord : public FMissing { GENERATED_BODY() };"),
			{"4: the base 'UOther' of 'UCase' must be declared before it",
				"5: the base 'FMissing' of 'FRecord' is not a reflected struct declared before it"},
			"Other.h", other(parentClass)},
		{"TwoBases", file("UCLASS() class UCase : public UObject, public FPlain, public UObject { GENERATED_BODY() };"),
			{"4: 'UCase' may have one reflected base only, 'UObject' is a second one"}},
		{"PrivateBase", file("UCLASS() class UCase : UObject { GENERATED_BODY() };"),
			{"4: expected 'public' before a base of UCase, found 'UObject'"}},
		{"Nested",
			inClass(
				"USTRUCT() struct FInner { GENERATED_BODY() UPROPERTY() int32 a; };\nclass FPlain { UENUM() enum class E : uint8 { A }; };"),
			{"8: USTRUCT stands inside UCase; reflected types belong to the file itself",
				"9: UENUM stands inside another class; reflected types belong to the file itself"}},
		{"Namespace", file("namespace A::B {\nUCLASS()\nclass UCase : public UObject { GENERATED_BODY() };\n" + delegates + "(FDone);\n}"),
			{"5: UCLASS stands inside a namespace; reflected types belong to the file itself",
				"7: " + delegates + " stands inside a namespace; reflected types belong to the file itself"}},
		{"MembersElsewhere", file("class FPlain { UFUNCTION() void a(); UPROPERTY() int32 b; };\nUFUNCTION() void c();"),
			{"4: UFUNCTION stands inside another class, which is not a reflected class",
				"4: UPROPERTY stands inside another class, which is not a reflected class",
				"5: UFUNCTION stands inside the file, which is not a reflected class"}},
		{"FunctionInStruct", file("USTRUCT()\nstruct FCase {\nGENERATED_BODY()\nUFUNCTION() void a();\n};"),
			{"7: the struct FCase may have no UFUNCTION"}},
		{"MacroInBody", inClass("void a() { UPROPERTY() int b; }"), {"8: UPROPERTY stands where it is not read"}},
		{"ForwardDeclaration", file("UCLASS() class UCase;\nUSTRUCT() class FCase {};"),
			{"4: expected '{' at the beginning of UCase, found ';'", "5: expected 'struct' behind USTRUCT, found 'class'"}},
		{"OpenClass", file("UCLASS()\nclass UCase : public UObject {\nGENERATED_BODY()\nvoid a();\n"),
			{"8: expected '}' at the end of UCase, found the end of the file"}},
		{"LoneBrace", file("}\nint a;"), {"4: '}' without '{'"}},
		{"UnsupportedMacro", file("UINTERFACE()\nclass UCase : public UInterface {};\nUDELEGATE() int a;"),
			{"4: UINTERFACE is not read here", "6: UDELEGATE is not read here"}},
		{"CppNames", file(structWithBody + delegates + "(fother);\nUENUM() enum class FOTHER : uint8 { A };"),
			{"6: the name of the delegate 'fother' must begin with F", "6: 'fother' takes a name that Case.h(5) has taken",
				"7: 'FOTHER' takes a name that Case.h(5) has taken"}},
		{"EngineNames",
			file("UCLASS() class UVector : public UObject { GENERATED_BODY() };\nUSTRUCT() struct Fworld { GENERATED_BODY() };\n"
				 "UENUM() enum class EAxis : uint8 { A };\nUENUM() enum class Axis : uint8 { A };\n" +
				 delegates + "(FGuid);"),
			{"4: 'UVector': the engine has a type of its own called 'Vector'",
				"5: 'Fworld': the engine has a type of its own called 'world'",
				"6: 'EAxis': the engine has a type of its own called 'EAxis'",
				"8: 'FGuid': the engine has a type of its own called 'Guid'"}},
		{"ScriptNames", file(structWithBody), {"5: 'FOther', 'Other' to scripts, takes a name that Other.h(4) has taken"}, "Other.h",
			other(parentClass)},

		{"EnumForm", file("UENUM() enum class EA : int32 { A };\nUENUM() enum class EB { A };\nUENUM() enum EC : uint8 { A };"),
			{"4: 'EA' must be an 'enum class' based on uint8", "5: 'EB' must be an 'enum class' based on uint8",
				"6: 'EC' must be an 'enum class' based on uint8"}},
		{"EnumValues", file("UENUM() enum class E : uint8 {\nA = 255,\nB,\nC = -1,\nD = 255 };"),
			{"6: the value 256 of 'B' is outside 0..255", "7: the value -1 of 'C' is outside 0..255", "8: 'D' has the value 255 of 'A'"}},
		{"EnumNames", file("UENUM() enum class E : uint8 { A, B,\na };"), {"5: E has 'a' twice"}},
		{"EnumExpression",
			file("UENUM() enum class E : uint8 {\nA = 1 << 2 };\nUENUM() enum class F : uint8 {\nA = B };\n"
				 "UENUM() enum class G : uint8 { A = 010 };"),
			{"5: expected ',' or '}' after an enumerator, found '<'", "7: the value of A must be a plain number, found 'B'",
				"8: the value of A must be a plain number, found '010'"}},
		{"EnumMeta",
			file("UENUM() enum class E : uint8 { A UMETA(DisplayName),\nB UMETA(X = 1, x = 2) };\nUENUM() enum class F : uint8 { };"),
			{"4: 'DisplayName' of UMETA needs a text", "5: 'x' stands twice in UMETA", "6: 'F' has no enumerators"}},

		{"UnknownSpecifiers",
			file("UCLASS(Blueprintabel)\nclass UCase : public UObject { GENERATED_BODY()\nUFUNCTION(Exec) void a();\n"
				 "UPROPERTY(BlueprintReadWrite) int32 b;\nUFUNCTION() void c(UPARAM(Ref = 1, out) int32& d); };\n"
				 "USTRUCT(Blueprintable) struct FX { GENERATED_BODY() };\nUENUM(Flags) enum class E : uint8 { A };"),
			{"4: unknown specifier 'Blueprintabel' in UCLASS", "6: unknown specifier 'Exec' in UFUNCTION",
				"7: unknown specifier 'BlueprintReadWrite' in UPROPERTY", "8: the specifier 'ref' of UPARAM takes no value",
				"8: unknown specifier 'out' in UPARAM", "9: unknown specifier 'Blueprintable' in USTRUCT",
				"10: unknown specifier 'Flags' in UENUM"}},
		{"Contradictions",
			file("UCLASS(Blueprintable, NotBlueprintable, blueprintable)\nclass UCase : public UObject { GENERATED_BODY() };"),
			{"4: 'blueprintable' stands twice in UCLASS", "4: NotBlueprintable contradicts Blueprintable in UCLASS"}},
		{"DisplayNameTwice", inClass("UFUNCTION(DisplayName = \"a\", meta = (\nDisplayName = \"b\", Key, KEY)) void a();"),
			{"9: 'DisplayName' of a stands in UFUNCTION and in its meta list", "9: 'KEY' stands twice in UFUNCTION"}},
		{"MetaSyntax",
			inClass(
				"UFUNCTION(meta = \"a\") void a();\nUFUNCTION(meta = (A = TEXT(\"a\"))) void b();\nUFUNCTION(meta = (A = L\"a\")) void c();\n"
				"UFUNCTION(meta = (A = (B, C))) void d();\nUFUNCTION(meta = (A B)) void e();\nUFUNCTION(meta = (A,)) void f();\n"
				"UFUNCTION(Category) void g();\nUFUNCTION(meta = (ToolTip)) void h();"),
			{"8: expected '(' before the specifiers, found a string", "9: expected the value of 'A', found 'TEXT'",
				"10: a string with the prefix L is not read here", "11: expected the value of 'A', found '('",
				"12: expected ')' or ',' after a specifier, found 'B'", "13: expected the name of a specifier, found ')'",
				"14: the specifier 'Category' of UFUNCTION takes a value", "15: 'ToolTip' of UFUNCTION needs a text"}},
		{"NoCategory", inClass("UFUNCTION(BlueprintCallable) void a();\nUFUNCTION(BlueprintPure, Category = \"\") int32 b();"),
			{"8: 'a' is for scripts and needs a Category", "9: 'b' is for scripts and needs a Category"}},
		{"PureWithoutResult", inClass("UFUNCTION(BlueprintPure, Category = A) void a(int32 b);"),
			{"8: 'a' is BlueprintPure but gives no result"}},
		{"StaticAnd", function("static void a() const;\nUFUNCTION() static virtual void b();"),
			{"8: 'a' cannot be static and const", "9: 'b' cannot be static and virtual"}},
		{"PureVirtual", function("virtual void a() = 0;"), {"8: expected ';' after the declaration of a, found '='"}},
		{"RefNeedsReference", inClass("UFUNCTION() void a(UPARAM(ref) int32 b,\nUPARAM(ref) const int32& c);"),
			{"8: parameter 'b' of 'a': UPARAM(ref) needs a non-const reference, not 'int32'",
				"9: parameter 'c' of 'a': UPARAM(ref) needs a non-const reference, not 'const int32&'"}},

		{"Overloads",
			inClass("UPROPERTY() int32 c; UPROPERTY() int32 C;\nUFUNCTION() void a(); UFUNCTION() void A(int32 b);\nUPROPERTY() int32 a;"),
			{"8: 'C' is already a reflected property of UCase; case does not tell names apart and there are no overloads",
				"9: 'A' is already a reflected function of UCase; case does not tell names apart and there are no overloads",
				"10: 'a' is already a reflected function of UCase; case does not tell names apart and there are no overloads"}},
		{"NamesOfBases",
			"#pragma once\n#include \"Other.h\"\n#include \"Case.generated.h\"\nUCLASS()\nclass UCase : public UOther { GENERATED_BODY()\n"
			"UFUNCTION() void TAKEN();\nUFUNCTION() void a(int32 Value); };",
			{"6: 'TAKEN' is already a reflected function of UOther; case does not tell names apart and there are no overloads",
				"7: parameter 'Value' of 'a' has the name of a reflected property of UOther"},
			"Other.h", other(parentClass)},
		{"ParameterNames", inClass("UPROPERTY() int32 own;\nUFUNCTION() int32 a(int32 b, int32 B,\nint32 returnValue, int32 OWN);"),
			{"9: 'a' has two parameters called 'B'", "10: 'returnValue' of 'a' is the name of the return value",
				"10: parameter 'OWN' of 'a' has the name of a reflected property of UCase"}},
		{"StructNames", file("USTRUCT() struct FCase { GENERATED_BODY()\nUPROPERTY() int32 a;\nUPROPERTY() int32 A; };"),
			{"6: 'A' is already a reflected property of FCase"}},
		{"ParameterForms",
			inClass("UFUNCTION() void a(int32);\nUFUNCTION() void b(int32 c[2]);\nUFUNCTION() void d(int32 e, ...);\n"
					"UFUNCTION() void f(void (*g)());\nUFUNCTION() h();"),
			{"8: expected the name of a parameter, found ')'", "9: expected ')' or ',' after a parameter, found '['",
				"10: expected the name of a type, found '.'", "11: expected the name of a parameter, found '('",
				"12: expected the name of a function, found '('"}},
		{"PropertyForms", inClass("UPROPERTY() int32 a, b;\nUPROPERTY() int32 c[2];\nUPROPERTY() static int32 d;"),
			{"8: expected ';' after the declaration of a, found ','", "9: expected ';' after the declaration of c, found '['",
				"10: expected ';' after the declaration of int32, found 'd'"}},
		{"Assignable",
			file(delegates +
				 "(FDone);\nUCLASS() class UCase : public UObject { GENERATED_BODY()\n"
				 "UPROPERTY(BlueprintAssignable) int32 a;\nUPROPERTY(BlueprintAssignable) FMissing b;\n"
				 "UPROPERTY(BlueprintAssignable) FDone c; UPROPERTY() FDone d;\nUPROPERTY(BlueprintAssignable) FLate e; };\n" +
				 delegates + "(FLate);\nUSTRUCT() struct FX { GENERATED_BODY() UPROPERTY(BlueprintAssignable) FDone a; };"),
			{"6: 'a': BlueprintAssignable needs a dynamic multicast delegate, 'int32' is none",
				"7: 'b': BlueprintAssignable needs a dynamic multicast delegate, 'FMissing' is none",
				"9: property 'e' of 'UCase': 'FLate' must be declared before it is used by value",
				"11: 'a': BlueprintAssignable is for members of classes"}},
		{"MemberTypes",
			inClass("UPROPERTY() TSharedPtr<int32> a;\nUPROPERTY() TArray<TArray<int32>> b;\nUPROPERTY() FMissing c;\n"
					"UPROPERTY() TObjectPtr<UCase> d; UPROPERTY() double e = 1.0; UPROPERTY() uint8 f : 1;"),
			{"8: property 'a' of 'UCase': scripts cannot hold the type 'TSharedPtr'",
				"9: property 'b' of 'UCase': 'TArray<TArray<int32>>' nests containers, which scripts cannot hold",
				"10: property 'c' of 'UCase': scripts cannot hold the type 'FMissing'"}},
		{"DelegateForms",
			file(delegates + "_TwoParams(FA, int32, a);\n" + delegates + "_OneParam(FB, TMap<FString, int32>, a);\n" + delegates +
				 "_OneParam(FC, int32 a);\n" + delegates + "_TenParams(FD);\nDECLARE_DYNAMIC_DELEGATE(FE);\n" + delegates +
				 "_TwoParams(FF, FString&, a, int32, A);"),
			{"4: 'FA' has 1 parameters, its macro is for 2", "5: the comma in 'TMap<FString, int32>' splits the macro's arguments",
				"6: expected ',' between the type 'int32' and the parameter's name, found 'a'",
				"7: " + delegates + "_TenParams is not available in this host; multicast delegates with up to nine parameters are",
				"8: DECLARE_DYNAMIC_DELEGATE is not available in this host; multicast delegates with up to nine parameters are",
				"9: parameter 'a' of 'FF': delegates take no non-const references", "9: 'FF' has two parameters called 'A'"}},

		{"DefaultEnumerators",
			"#pragma once\n#include \"Other.h\"\n#include \"Case.generated.h\"\nUCLASS()\nclass UCase : public UObject {\n"
			"GENERATED_BODY()\nUFUNCTION() void a(EOther b = EOther::A, EOther c = EOther::B,\nEOther d = EFoo::A,\nEOther e = A);\n};",
			{"7: parameter 'c' of 'a': EOther has no enumerator 'B'",
				"8: parameter 'd' of 'a': the default 'EFoo::A' cannot be given to 'EOther'",
				"9: parameter 'e' of 'a': the default 'A' cannot be given to 'EOther'"},
			"Other.h", other(enumNode)},
		{"DefaultNotTrailing", function("void a(int32 b = 1, int32 c, int32 d = 2,\nint32 e);"),
			{"8: parameter 'c' of 'a' needs a default, since one before it has one",
				"9: parameter 'e' of 'a' needs a default, since one before it has one"}},
	};

	/** A type that may not be the type of a parameter, and what is said about it. */
	struct TypeCase
	{
		const char* type;
		const char* problem;
	};

	const TypeCase refusedTypes[] = {
		{"uint32", "scripts cannot hold the type 'uint32'"},
		{"unsigned int", "scripts cannot hold the type 'unsigned int', write int32"},
		{"const char*", "scripts cannot hold the type 'const char*'"},
		{"std::string", "scripts cannot hold the type 'std::string', write FString"},
		{"TSharedPtr<FOther>", "scripts cannot hold the type 'TSharedPtr'"},
		{"TFunction<void(int32, int32)>", "scripts cannot hold the type 'TFunction'"},
		{"double", "the type 'double' is not available in this host"},
		{"const FText&", "the type 'FText' is not available in this host"},
		{"TArray<double>", "the type 'double' is not available in this host"},
		{"TArray<TArray<int32>>", "'TArray<TArray<int32>>' nests containers, which scripts cannot hold"},
		{"TMap<FString, TArray<int32>>", "'TMap<FString, TArray<int32>>' nests containers, which scripts cannot hold"},
		{"TMap<FString>", "'TMap<FString>' is no container that scripts can hold"},
		{"TArray<int32>*", "'TArray<int32>*' is no container that scripts can hold"},
		{"TArray<const FString>", "the elements of 'TArray<const FString>' must be plain values"},
		{"UCase**", "scripts cannot hold 'UCase**': an object is passed as one plain pointer"},
		{"UCase", "objects are held by pointer: write 'UCase*'"},
		{"UMissing*", "scripts cannot hold the type 'UMissing*'"},
		{"FOther*", "scripts cannot hold the type 'FOther*'"},
		{"TObjectPtr<UCase>", "TObjectPtr is for members; write the plain pointer in a function"},
		{"FString&&", "'FString&&' is a reference that cannot be kept"},
		{"FMissing", "scripts cannot hold the type 'FMissing'"},
		{"FOther", "'FOther' is used by value, so include \"Other.h\""},
		{"TArray<EOther>", "'EOther' is used by value, so include \"Other.h\""},
		{"FLate", "'FLate' must be declared before it is used by value"},
		{"FHidden", "'FHidden' is not for scripts: its USTRUCT lacks BlueprintType"},
	};

	/** A default that a parameter of a type may not have. */
	struct DefaultCase
	{
		const char* type;
		const char* value;
	};

	const DefaultCase refusedDefaults[] = {{"int32", "1+1"}, {"int32", "0x10"}, {"int32", "1'000"}, {"int64", "10L"},
		{"int32", "2147483648"}, {"int32", "1.0f"}, {"uint8", "256"}, {"uint8", "'a'"}, {"bool", "1"}, {"bool", "!true"}, {"float", "1e3f"},
		{"FString", "FString()"}, {"FString", "TEXT(\"a\")\"b\""}, {"FString", "nullptr"}, {"FString&", "\"\""}, {"UCase*", "0"},
		{"TArray<int32>", "{}"}};

	std::vector<Case> allCases()
	{
		std::vector<Case> all(std::begin(cases), std::end(cases));
		Case types{"RefusedTypes", "", {}, "Other.h", other(structWithBody + enumNode)};
		std::string members;
		int line = 8;
		for (const TypeCase& type : refusedTypes)
		{
			members += fmt::format("UFUNCTION() void f{}({} a);\n", line, type.type);
			types.expected.push_back(fmt::format("{0}: parameter 'a' of 'f{0}': {1}", line++, type.problem));
		}
		// One of them as a return value: every type goes through the same check.
		members += "UFUNCTION() FString& g();\nUFUNCTION() double h();\n";
		types.expected.push_back(fmt::format("{}: return value of 'g': 'FString&' is a reference that cannot be kept", line++));
		types.expected.push_back(fmt::format("{}: return value of 'h': the type 'double' is not available in this host", line));
		types.text =
			inClass(members) + "USTRUCT(BlueprintType) struct FLate { GENERATED_BODY() };\nUSTRUCT() struct FHidden { GENERATED_BODY() };";
		all.push_back(types);
		Case defaults{"RefusedDefaults", "", {}};
		for (int number = 0; const DefaultCase& refused : refusedDefaults)
		{
			defaults.text += fmt::format("{} p{} = {},\n", refused.type, number, refused.value);
			defaults.expected.push_back(fmt::format(
				"{}: parameter 'p{}' of 'a': the default '{}' cannot be given to '{}'", 8 + number, number, refused.value, refused.type));
			++number;
		}
		defaults.text = function("void a(" + defaults.text + "bool last = true);");
		all.push_back(defaults);
		return all;
	}
} // namespace

TEST(Errors, AreExactlyTheseMessages)
{
	for (const Case& c : allCases())
	{
		SCOPED_TRACE(c.name);
		ToolRun tool;
		tool.addHeader("Case.h", c.text);
		if (!c.otherName.empty())
		{
			tool.addHeader(c.otherName, c.otherText);
			tool.options.references = {tool.options.headers.back()};
			tool.options.headers.pop_back();
		}
		std::vector<std::string> expected;
		for (const std::string& message : c.expected)
		{
			const size_t colon = message.find(": ");
			expected.push_back(message[0] == '!' ? message.substr(1)
												 : fmt::format("Case.h({}): Error{}", message.substr(0, colon), message.substr(colon)));
		}
		EXPECT_EQ(tool.run(), expected);
	}
}
