// Addresses that pages, servers and people name: secrets stay out of logs, and no link leads where it must not.

#include "Attempts/Address.h"

#include "AddressFault.h"
#include "AddressList.h"
#include "Drive/DrivePage.h"
#include "Fuzz.h"
#include "GenericPlatform/GenericPlatformHttp.h"
#include "InputError.h"
#include "Rules/ShownAddress.h"
#include "TargetNames.h"

#include <filesystem>

namespace
{
	/** Whether a user, and maybe a password, stands in front of the host. */
	bool HasUser(const FString& Shown)
	{
		const std::string Address = utf8(Shown);
		const size_t Scheme = Address.find("://");
		const size_t Begin = Scheme < Address.find_first_of("/?#") ? Scheme + 3 : 0;
		return Address.find('@', Begin) < Address.find_first_of("/?#", Begin);
	}

	void CheckOne(const FString& Address)
	{
		const FString Bare = CorvaneAddress::WithoutUser(Address);
		HOST_CHECK(IsSame(CorvaneAddress::WithoutUser(Bare), Bare) && CorvaneAddress::IsSameOrigin(Address, Bare));
		HOST_CHECK(!CorvaneAddress::IsUsable(Address) || CorvaneAddress::IsUsable(Bare));
		for (const FString& Shown : {CorvaneAddress::ForLog(Address), CorvaneAddress::Origin(Address), CorvaneRules::shownAddress(Address)})
		{
			HOST_CHECK(!Shown.Contains(TEXT("?")) && !Shown.Contains(TEXT("#")) && !HasUser(Shown));
		}
	}

	/** @param Base  usable. */
	void CheckLink(const FString& Base, const FString& Link)
	{
		const FString Target = CorvaneAddress::Resolve(Base, Link);
		HOST_CHECK(Target.IsEmpty() || (CorvaneAddress::IsUsable(Target) && IsSame(CorvaneAddress::WithoutUser(Target), Target)));
		const bool bPlain = !Link.Contains(TEXT(":")) && !Link.Contains(TEXT("//")) && !Link.Contains(TEXT("\\"));
		HOST_CHECK(Target.IsEmpty() || !bPlain || CorvaneAddress::IsSameOrigin(Base, Target));
		const FString Joined = CorvaneAddress::WithUserOf(Target, Base);
		HOST_CHECK(CorvaneAddress::IsSameOrigin(Base, Target) ? CorvaneAddress::IsSameOrigin(Joined, Base) : IsSame(Joined, Target));
	}

	void CheckNames(const std::string& Address)
	{
		const std::string Name = Program::fileNameOf(Address);
		HOST_CHECK(!Name.empty() && Name != "." && Name != ".." && Name.find_first_of(std::string_view("/\\\0", 3)) == Name.npos);
		HOST_CHECK(!Program::addressFault(Address).empty() || !Program::isFolder(Program::addressFor(Address, "a b")));
		try
		{
			for (const Program::ListedAddress& Listed : Program::readAddressList(Address, "list"))
			{
				const std::filesystem::path File = (std::filesystem::path("/below") / Listed.file).lexically_normal();
				HOST_CHECK(!Listed.address.empty() && File.string().starts_with("/below/"));
			}
		}
		catch (const Reflect::InputError& Fault)
		{
			HOST_CHECK(std::string_view(Fault.what()).starts_with("list:"));
		}
	}
} // namespace

FUZZ(Input)
{
	const std::string_view First = Input.Field(), Second = Input.Rest();
	const FString Base = text(First), Link = text(Second);
	CheckOne(Base);
	CheckOne(Link);
	if (CorvaneAddress::IsUsable(Base))
	{
		CheckLink(Base, Link);
	}
	CheckNames(std::string(Second));
	const FString Asked = CorvaneDrive::MakeAddress(TEXT("https://drive.test"), Link);
	HOST_CHECK(!CorvaneDrive::FindIDFault(Link).IsEmpty() || IsSame(CorvaneDrive::FindID(TEXT("https://drive.test"), Asked), Link));
	HOST_CHECK(utf8(FGenericPlatformHttp::UrlEncode(Link))
				   .find_first_not_of("%0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-._~") == std::string::npos);
}
