// A server of resumable uploads that keeps them as files in a folder. Prints "port N" when it listens.
// usage: node tus.mjs FOLDER_OF_PACKAGES FOLDER
import { createRequire } from "node:module";
import { pathToFileURL } from "node:url";

const [packages, directory] = process.argv.slice(2);
const load = (name) => import(pathToFileURL(createRequire(packages + "/").resolve(name)).href);
const [{ Server }, { FileStore }] = await Promise.all([load("@tus/server"), load("@tus/file-store")]);

const server = new Server({ path: "/files", datastore: new FileStore({ directory }), relativeLocation: true });
const listener = server.listen({ port: 0, host: "127.0.0.1" }, () => console.log(`port ${listener.address().port}`));
