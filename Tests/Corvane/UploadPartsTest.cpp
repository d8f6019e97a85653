#include "RandomBytes.h"
#include "UploadFixture.h"

#include <httplib.h>

namespace
{
	/** A library's server that takes forms apart and saves each file of them, named by its field. */
	class SavingServer
	{
	public:
		SavingServer()
		{
			const auto save = [this](const httplib::Request& request, httplib::Response& response)
			{
				for (const auto& [name, part] : request.files)
				{
					Saved.write(name, part.content);
					const std::scoped_lock lock(Mutex);
					Names[name] = part.filename + " " + part.content_type;
				}
				response.set_content("saved " + std::to_string(request.files.size()), "text/plain");
			};
			Http.new_task_queue = [] { return new httplib::ThreadPool(1); };
			Http.set_keep_alive_max_count(1); // its end would wait for connections that are kept
			Http.Post("/", save);
			Http.Put("/", save);
			Port = Http.bind_to_any_port("127.0.0.1");
			Thread = std::thread([this] { Http.listen_after_bind(); });
			waitFor([this] { return Http.is_running(); });
		}
		~SavingServer()
		{
			Http.stop();
			Thread.join();
		}

		std::string url() const { return "http://127.0.0.1:" + std::to_string(Port) + "/"; }
		std::string name(const std::string& field) const
		{
			const std::scoped_lock lock(Mutex);
			return Names.at(field);
		}

		const TempDir Saved;

	private:
		mutable std::mutex Mutex;
		std::map<std::string, std::string> Names; // field to file name and type
		httplib::Server Http;
		int Port = 0;
		std::thread Thread;
	};

	class UploadParts : public UploadTest
	{
	protected:
		/** Random bytes, with a delimiter behind them that is none of this upload's. */
		static std::string content(size_t size) { return randomBytes(size) + "\r\n------UE4CorvanePlugin_--\r\n"; }

		SavingServer server;
	};
} // namespace

TEST_F(UploadParts, ArriveAsTheyAreOnDisk)
{
	TArray<FString> paths, ids;
	for (const size_t size : {1u, 1024u, 1u << 20})
	{
		ids.Add(text(std::to_string(size)));
		paths.Add(text(dir.write(std::to_string(size) + " ü;.tar.PNG", content(size))));
	}
	for (const bool bPost : {true, false})
	{
		const UploadOptions options{"", {}, {{"text", "value"}}};
		EXPECT_EQ(run(multi(bPost, server.url(), paths, ids, options)).dataString, bPost ? "saved 4" : "saved 3");
		for (const size_t size : {1u, 1024u, 1u << 20})
		{
			const std::string field = std::to_string(size);
			EXPECT_TRUE(server.Saved.read(field) == content(size)) << field;
			EXPECT_EQ(server.name(field), field + " ü;.tar.PNG image/png");
		}
	}
	EXPECT_EQ(server.Saved.read("text"), "value");
}

TEST_F(UploadParts, OfStreamsArriveAsTheyAreOnDisk)
{
	for (const Type type : {Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		for (const size_t size : {1u, 1023u, 65536u, 1000000u})
		{
			EXPECT_EQ(run(put(server.url(), dir.write("a.bin", content(size)), type, {"field"})).dataString, "saved 1");
			EXPECT_TRUE(server.Saved.read("field") == content(size)) << size;
			EXPECT_TRUE(dir.read("a.bin") == content(size)) << size;
			EXPECT_EQ(server.name("field"), "a.bin ") << "its type stands there without a name";
		}
	}
}
