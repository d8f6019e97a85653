// The search of the index: each word typed must begin a word of an entry. The list itself needs no script.
"use strict";

const field = document.getElementById("search");
const count = document.getElementById("count");

/** The words of a text; those of names such as bindProgressEvent one by one, too. */
function wordsOf(text) {
	const parts = text.replace(/([a-z0-9])([A-Z])|([A-Z])([A-Z][a-z])/g, "$1$3 $2$4");
	return (text + " " + parts).toLowerCase().split(/[^\p{L}\p{N}]+/u).filter(Boolean);
}

const entries = Array.from(document.querySelectorAll("ul.nodes li"), (element, place) => ({
	element,
	place,
	section: element.closest("section"),
	name: wordsOf(element.dataset.name || element.querySelector("a").textContent),
	words: wordsOf(element.dataset.words + " " + element.textContent),
}));

/** How well an entry fits: 0 = not at all, and a word in its name is worth more than one in what is said about it. */
function fit(entry, typed) {
	const has = (words, start) => words.some((word) => word.startsWith(start));
	if (!typed.every((start) => has(entry.words, start) || has(entry.name, start))) {
		return 0;
	}
	return typed.reduce((sum, start) => sum + (entry.name.includes(start) ? 9 : has(entry.name, start) ? 5 : entry.words.includes(start) ? 2 : 1), 1);
}

function search() {
	const typed = field.value.toLowerCase().split(/[^\p{L}\p{N}]+/u).filter(Boolean);
	for (const entry of entries) {
		entry.fit = fit(entry, typed);
		entry.element.hidden = !entry.fit;
	}
	// The best comes first, and its section with it.
	const sorted = entries.toSorted((a, b) => b.fit - a.fit || a.place - b.place);
	for (const entry of sorted) {
		entry.element.parentElement.append(entry.element);
	}
	for (const section of new Set(sorted.map((entry) => entry.section))) {
		section.parentElement.append(section);
		section.hidden = !section.querySelector("li:not([hidden])");
	}
	count.textContent = sorted.filter((entry) => entry.fit).length + " of " + entries.length;
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
