// The search of the index: every word typed must stand somewhere in an entry. The list itself needs no script.
"use strict";

const field = document.getElementById("search");
const count = document.getElementById("count");
const entries = Array.from(document.querySelectorAll("ul.nodes li"), (element) => ({
	element,
	text: (element.dataset.words + " " + element.textContent).toLowerCase(),
}));

function search() {
	const words = field.value.toLowerCase().split(/\s+/).filter(Boolean);
	let shown = 0;
	for (const { element, text } of entries) {
		element.hidden = !words.every((word) => text.includes(word));
		shown += element.hidden ? 0 : 1;
	}
	for (const section of document.querySelectorAll("section")) {
		section.hidden = !section.querySelector("li:not([hidden])");
	}
	count.textContent = shown + " of " + entries.length;
}

field.addEventListener("input", search);
field.addEventListener("keydown", (event) => {
	const first = document.querySelector("li:not([hidden]) a");
	if (event.key === "Enter" && first) {
		first.click();
	}
});
document.addEventListener("keydown", (event) => {
	if (event.key === "/" && document.activeElement !== field) {
		event.preventDefault();
		field.focus();
	}
});
search();
