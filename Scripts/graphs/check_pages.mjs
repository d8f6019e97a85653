// Opens the reference in a browser as its readers do, and gives what its buttons copy to another reader of such text.
// usage: node check_pages.mjs FOLDER_OF_PAGES FOLDER_OF_PACKAGES. Prints one line per fault.
import { readFileSync, readdirSync } from "node:fs";
import { createRequire } from "node:module";
import { pathToFileURL } from "node:url";

const [pages, packages] = process.argv.slice(2);
const { chromium } = createRequire(packages + "/")("playwright-core");
const phoneWidth = 380;

// What somebody types, a page that has to be found, and one that has the letters inside another word at most.
const searches = [
	["resume", "guide-download-and-resume.html", "guide-drive.html"],
	["overwrite", "values.html#EHTTPCorvFileDownloadResumeType", "guide-server-sent-events.html"],
	["range", "guide-very-large-files.html", "guide-first-request.html"],
	["progress", "CorvaneBPLibrary.onhttpFileUploadDelegate.html", "values.html#EFileFunctionsCorvDirectoryType"],
	["sse", "guide-server-sent-events.html", "example-01-get.html"],
	["server sent", "CorvaneBPLibrary.onhttpServerSendEventDelegate.html", "guide-drive.html"],
	["E_RESUME", "values.html#EHTTPCorvFileDownloadResumeType", "guide-uploads.html"],
	["createhttprequestget", "CorvaneBPLibrary.CreateHttpRequestGET.html", "guide-drive.html"],
];

let faults = 0;
function expect(isRight, place, fault) {
	if (!isRight) {
		console.log(`${place}: ${fault}`);
		faults += 1;
	}
}

async function open(context, place) {
	const page = await context.newPage();
	page.on("console", (message) => expect(message.type() !== "error", place.name, message.text()));
	page.on("pageerror", (error) => expect(false, place.name, error));
	return page;
}

/** What the drawings of a page show: for each the pins of each node, and the number of wires. */
const drawn = () =>
	Array.from(document.querySelectorAll("figure"), (figure) => ({
		nodes: Array.from(figure.querySelectorAll(".node"), (node) =>
			Array.from(node.querySelectorAll(".pin"), (pin) => pin.dataset.pin).sort(),
		),
		wires: figure.querySelectorAll(".wire").length,
	}));

/** The same of a text, as the other reader understands it. */
async function understood(text) {
	const page = document.createElement("template");
	page.innerHTML = "<ueb-blueprint><template></template></ueb-blueprint>";
	page.content.querySelector("template").content.textContent = text;
	document.body.replaceChildren(page.content);
	const graph = document.querySelector("ueb-blueprint");
	for (const element of [graph, ...graph.querySelectorAll("*")]) {
		await element.updateComplete;
	}
	return {
		nodes: graph.getNodes().map((node) => Array.from(node.querySelectorAll("ueb-pin"), (pin) => pin.entity.PinName.toString()).sort()),
		wires: graph.getLinks().length,
	};
}

async function openReader(context, place) {
	const dist = `${packages}/node_modules/ueblueprint/dist/`;
	const reader = await open(context, place);
	await reader.setContent("<!DOCTYPE html><body></body>");
	await reader.addStyleTag({ content: readFileSync(dist + "css/ueb-style.min.css", "utf8").replace(/@font-face\s*\{[^}]*\}/g, "") });
	await reader.addScriptTag({ type: "module", content: readFileSync(dist + "ueblueprint.js", "utf8") });
	await reader.waitForFunction(() => customElements.get("ueb-blueprint"));
	return reader;
}

async function checkGraphs(page, reader, name) {
	const figures = await page.evaluate(drawn);
	const buttons = await page.locator("button.copy").all();
	expect(buttons.length === figures.length, name, "a graph has no button that copies it");
	for (const [index, button] of buttons.entries()) {
		await button.click();
		await button.filter({ hasText: "Copied" }).waitFor({ timeout: 5000 });
		const text = await page.evaluate(() => navigator.clipboard.readText());
		const seen = await reader.evaluate(understood, text);
		expect(JSON.stringify(seen) === JSON.stringify(figures[index]), name,
			`drawn ${JSON.stringify(figures[index])}, understood ${JSON.stringify(seen)}`);
		const ends = (text.match(/LinkedTo=\(([^)]*)\)/g) ?? []).join("").split(",)").join(",").split(" ").length - 1;
		expect(ends === 2 * seen.wires, name, `${seen.wires} wires with ${ends} ends`);
	}
	return buttons.length;
}

async function checkSearch(page) {
	for (const [words, wanted, unwanted] of searches) {
		await page.fill("#search", words);
		const hits = await page.$$eval("li:not([hidden]) a", (links) => links.map((link) => link.getAttribute("href")));
		expect(hits.includes(wanted), "index.html", `'${words}' does not find ${wanted}`);
		expect(!hits.includes(unwanted), "index.html", `'${words}' finds ${unwanted}`);
	}
}

const browser = await chromium.launch({
	executablePath: "/usr/bin/chromium",
	args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking", "--disable-component-update", "--disable-sync"],
});
const context = await browser.newContext({ viewport: { width: phoneWidth, height: 800 }, permissions: ["clipboard-read", "clipboard-write"] });
const place = { name: "" };
const reader = await openReader(context, place);
const page = await open(context, place);
let graphs = 0;
for (const name of readdirSync(pages).filter((file) => file.endsWith(".html"))) {
	place.name = name;
	await page.goto(pathToFileURL(`${pages}/${name}`).href);
	const width = await page.evaluate(() => document.documentElement.scrollWidth);
	expect(width <= phoneWidth, name, `${width} pixels wide on a phone of ${phoneWidth}`);
	graphs += await checkGraphs(page, reader, name);
	if (name === "index.html") {
		await checkSearch(page);
	}
}
await browser.close();
expect(graphs > 0, pages, "no graph at all");
console.log(`${graphs} graphs, ${faults} faults`);
process.exit(faults ? 1 : 0);
