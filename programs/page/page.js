// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT
"use strict";
(() => {
  const tools = document.querySelector(".tools");
  const search = document.getElementById("search");
  const day = document.getElementById("day");
  const state = document.getElementById("state");
  const view = document.getElementById("view");
  const count = document.getElementById("count");
  const clips = Array.from(document.querySelectorAll(".clip"), (row) => ({
    row,
    text: row.textContent.toLowerCase(),
    day: row.dataset.start.slice(0, 10),
    states: [row.dataset.state, row.dataset.taken],
  }));

  function filter() {
    const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    let shown = 0;
    for (const clip of clips) {
      const fits = words.every((word) => clip.text.includes(word)) &&
        (day.value === "" || clip.day === day.value) &&
        (state.value === "" || clip.states.includes(state.value));
      clip.row.hidden = !fits;
      shown += fits ? 1 : 0;
    }
    count.textContent = shown === clips.length ? `${shown} ${shown === 1 ? "clip" : "clips"}` : `${shown} of ${clips.length} clips`;
  }

  const places = new Map(clips.map((clip, place) => [clip.row, place]));
  // Clocks without a zone count as if they had that of Greenwich; no date comes before all dates.
  const instant = (text) => text === "" ? -Infinity : Date.parse(text.length > 19 ? text : `${text}Z`);
  const values = { start: instant, length: Number, sound: Number, notes: Number, frames: Number };
  function compare(key, left, right) {
    const value = values[key] || String;
    const [a, b] = [value(left.dataset[key]), value(right.dataset[key])];
    return a < b ? -1 : a > b ? 1 : 0;
  }

  function sort(table, head) {
    const down = head.getAttribute("aria-sort") === "ascending";
    for (const other of table.querySelectorAll("th")) {
      other.removeAttribute("aria-sort");
    }
    head.setAttribute("aria-sort", down ? "descending" : "ascending");
    const body = table.tBodies[0];
    const rows = Array.from(body.rows);
    rows.sort((left, right) => (down ? -1 : 1) * compare(head.dataset.key, left, right) ||
      places.get(left) - places.get(right));
    body.append(...rows);
  }

  for (const table of document.querySelectorAll(".clips")) {
    for (const head of table.querySelectorAll("th[data-key]")) {
      const button = document.createElement("button");
      button.type = "button";
      button.textContent = head.textContent;
      button.addEventListener("click", () => sort(table, head));
      head.replaceChildren(button);
    }
  }
  for (const choice of [search, day, state]) {
    choice.addEventListener("input", filter);
  }
  tools.addEventListener("submit", (event) => event.preventDefault());
  view?.addEventListener("click", () => {
    const pictures = document.body.classList.toggle("as-pictures");
    view.setAttribute("aria-pressed", String(pictures));
  });
  document.body.classList.add("sortable");
  tools.hidden = false;
  filter();
})();
