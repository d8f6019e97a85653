#include "RandomBytes.h"
#include "UploadFixture.h"

#include <httplib.h>

namespace
{
	/** A library's server that takes forms apart and answers with what it found, as part() tells it. */
	class FormServer
	{
	public:
		FormServer()
		{
			const auto tell = [](const httplib::Request& request, httplib::Response& response)
			{
				for (const auto& [name, form] : request.files)
				{
					response.body += part(name, form.filename, form.content_type, form.content);
				}
			};
			Http.new_task_queue = [] { return new httplib::ThreadPool(1); };
			Http.set_keep_alive_max_count(1); // its end would wait for connections that are kept
			Http.Post("/", tell);
			Http.Put("/", tell);
			Port = Http.bind_to_any_port("127.0.0.1");
			Thread = std::thread([this] { Http.listen_after_bind(); });
			waitFor([this] { return Http.is_running(); });
		}
		~FormServer()
		{
			Http.stop();
			Thread.join();
		}

		std::string url() const { return "http://127.0.0.1:" + std::to_string(Port) + "/"; }
		static std::string part(const std::string& field, const std::string& file, const std::string& type, const std::string& bytes)
		{
			return field + "=" + file + " (" + type + "): " + bytes + "\n";
		}

	private:
		httplib::Server Http;
		int Port = 0;
		std::thread Thread;
	};

	class UploadParts : public UploadTest
	{
	protected:
		/** Random bytes, with a delimiter after them that is none of this upload's. */
		static std::string content(size_t size) { return randomBytes(size) + "\r\n------UE4CorvanePlugin_--\r\n"; }

		FormServer server;
	};
} // namespace

TEST_F(UploadParts, ArriveAsTheyAreOnDisk)
{
	TArray<FString> paths, ids;
	std::string expected;
	for (const size_t size : {1u, 1024u, 1u << 20})
	{
		const std::string field = std::to_string(size);
		ids.Add(text(field));
		paths.Add(text(dir.write(field + " ü;.tar.PNG", content(size))));
		expected += server.part(field, field + " ü;.tar.PNG", "image/png", content(size));
	}
	const UploadOptions options{"", {}, {{"text", "value"}}};
	EXPECT_TRUE(run(multi(true, server.url(), paths, ids, options)).byteData == expected + server.part("text", "", "", "value"));
	EXPECT_TRUE(run(multi(false, server.url(), paths, ids)).byteData == expected);
}

TEST_F(UploadParts, OfStreamsArriveAsTheyAreOnDisk)
{
	for (const Type type : {Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		for (const size_t size : {1u, 1023u, 65536u, 1000000u})
		{
			const Completion result = run(put(server.url(), dir.write("a.bin", content(size)), type, {"field"}));
			EXPECT_TRUE(result.byteData == server.part("field", "a.bin", "", content(size))) << "its type stands there without a name";
			EXPECT_TRUE(dir.read("a.bin") == content(size)) << size;
		}
	}
}
