// The buttons that copy a graph. Without a script the text can be marked by hand.
"use strict";

/** For browsers that keep the clipboard from pages in folders. */
function copyMarked(element) {
	element.closest("details").open = true;
	getSelection().selectAllChildren(element);
	return document.execCommand("copy");
}

async function copy(element) {
	try {
		await navigator.clipboard.writeText(element.textContent);
		return true;
	} catch {
		return copyMarked(element);
	}
}

async function copyText(button) {
	const isCopied = await copy(button.closest("figure").querySelector("pre"));
	button.textContent = isCopied ? "Copied" : "Marked below: copy it from there";
}

for (const button of document.querySelectorAll("button.copy")) {
	button.hidden = false;
	button.addEventListener("click", () => copyText(button));
}
