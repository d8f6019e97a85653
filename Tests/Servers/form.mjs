// Reads forms with a parser of Node and tells as JSON what it has read. Prints "port N" when it listens.
// usage: node form.mjs FOLDER_OF_PACKAGES busboy|multer|formidable
import { createHash } from "node:crypto";
import { createReadStream, rmSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { pipeline } from "node:stream/promises";

const [packages, parser] = process.argv.slice(2);
const load = createRequire(packages + "/");
load(parser); // fails now rather than with the first form

async function described(field, name, type, stream) {
	const hash = createHash("sha256");
	let size = 0;
	await pipeline(stream, async (chunks) => {
		for await (const chunk of chunks) {
			hash.update(chunk);
			size += chunk.length;
		}
	});
	return { field, name, type, size, sha256: hash.digest("hex") };
}

/** The parser alone; without a word from its user it takes names for Latin 1. */
async function readWithBusboy(request) {
	const fields = [];
	const files = [];
	const reader = load("busboy")({ headers: request.headers, defParamCharset: "utf8" });
	reader.on("field", (name, value) => fields.push([name, value]));
	reader.on("file", (field, stream, { filename, mimeType }) => files.push(described(field, filename, mimeType, stream)));
	await pipeline(request, reader);
	return { fields, files: await Promise.all(files) };
}

const keepNothing = {
	_handleFile(_request, { fieldname, originalname, mimetype, stream }, done) {
		described(fieldname, originalname, mimetype, stream).then((told) => done(null, { told }), done);
	},
	_removeFile: (_request, _file, done) => done(null),
};

async function readWithMulter(request) {
	const read = load("multer")({ storage: keepNothing, defParamCharset: "utf8" }).any();
	await new Promise((resolve, reject) => read(request, {}, (error) => (error ? reject(error) : resolve())));
	return { fields: Object.entries(request.body), files: request.files.map(({ told }) => told) };
}

async function readWithFormidable(request) {
	const options = { maxFileSize: 1e10, maxTotalFileSize: 1e10, allowEmptyFiles: true, minFileSize: 0 };
	const [values, kept] = await load("formidable").formidable(options).parse(request);
	const fields = Object.entries(values).flatMap(([name, all]) => all.map((value) => [name, value]));
	const files = [];
	for (const [field, all] of Object.entries(kept)) {
		for (const { originalFilename, mimetype, filepath } of all) {
			files.push(await described(field, originalFilename, mimetype, createReadStream(filepath)));
			rmSync(filepath);
		}
	}
	return { fields, files };
}

const read = { busboy: readWithBusboy, multer: readWithMulter, formidable: readWithFormidable }[parser];

const server = createServer(async (request, response) => {
	try {
		response.end(JSON.stringify(await read(request)));
	} catch (error) {
		response.statusCode = 400;
		response.end(String(error));
	}
});
server.listen(0, "127.0.0.1", () => console.log(`port ${server.address().port}`));
