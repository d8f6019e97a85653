#include "DownloadFixture.h"
#include "LogCapture.h"

namespace
{
	const std::string plain = "hello, hello, hello, hello";
	const std::string packed("\x1F\x8B\x08\0\0\0\0\0\x02\x03\xCBH\xCD\xC9\xC9\xD7Q\xC8\xC0\xA4\0U\xA3\x82w\x1A\0\0\0", 29);

	/** Sends everything packed to whoever takes it, ranges of the packed bytes included. */
	class Compression : public DownloadFixture
	{
	protected:
		Compression()
		{
			const Lab::Behaviour packs({Lab::file(packed), Lab::headers({{"Content-Encoding", "gzip"}})});
			origin.at("/file", [packs](const Lab::Request& request)
				{ return request.header("Accept-Encoding").find("gzip") == std::string::npos ? Lab::file(plain) : packs; });
		}

		LogCapture log;
	};
} // namespace

TEST_F(Compression, IsUnpackedWhereTheBodyIsToBeRead)
{
	const Completion result = run(get(origin.url("/file")));
	EXPECT_EQ(result.dataString, plain);
	EXPECT_EQ(result.byteData, plain);
}

TEST_F(Compression, IsRefusedWhereTheBytesOfAFileAreMeant)
{
	for (const DownloadKind kind : {DownloadKind::Whole, DownloadKind::Stepped})
	{
		for (const std::optional<std::string>& before : {std::optional<std::string>(), std::optional(plain.substr(0, 7))})
		{
			setTarget(before);
			fetch({origin.url("/file"), kind, Action::E_RESUME, "", "", {}, 9});
			EXPECT_EQ(target(), plain);
		}
	}
	EXPECT_EQ(run(get(origin.url("/file"), {{"Range", "bytes=7-11"}})).byteData, plain.substr(7, 5));
}

TEST_F(Compression, IsTheScriptsToChoose)
{
	setTarget(std::nullopt);
	EXPECT_EQ(fetch({origin.url("/file"), DownloadKind::Whole, Action::E_RESUME, "", "", {{"accept-encoding", "gzip"}}}).statusCode, 200);
	EXPECT_EQ(target(), plain) << "unpacked by the HTTP layer";
}
