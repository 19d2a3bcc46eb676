# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""What is printed as JSON, held against its schemas, and metadata against the files themselves."""

import copy
import json
import os
import re
import shutil
import unittest
from pathlib import Path
from xml.etree import ElementTree

from jsonschema import Draft202012Validator

from dv_stream import dv_frame
from program import SOURCES, CardTest, clip_xml, main, run, sample
from usage_test import HAS_WORKER, LEVELS

SCHEMAS = SOURCES / "docs" / "json"
DEFINITIONS = "definitions.schema.json"
CLIPS = ("clips", "clips {card} --json"), ("clips", "clips {card} --json --report --files --metadata")
OF_A_CARD = (*CLIPS, ("clips-line", "clips {card} --jsonl --files --metadata"))
OF_P2 = (("clip", "clip {card} 0001AB --json"), ("info", "info {card} --json"),
         ("space", "space {card} --frames 15000 --json"), ("edl-list", "edl list {card} --json"),
         ("rewrap", "rewrap {card} --clip 0013SB -o {folder}/x.mov --dry-run --json"),
         ("space", "space --bytes 9 --code-type 9999 --standard 1 --json"),
         ("ingest-list", "ingest list {card} --json"))
BY_WORKER = (("import", "import {card} 0001AB --to {folder}/taken --json"),
             ("export", "export {other} 0001AB --from {folder}/taken --json"),
             ("last-error", "last-error --json"),
             ("record", "record {other} {folder}/tape.dv --code-type CT_DV25_50I --json"),
             ("probe", "probe {other}/CONTENTS/CLIP/0001AB.XML --json"))


def sealed(schema):
    """The schema with nothing left open: what the documents have now is all described."""
    if isinstance(schema, list):
        return [sealed(each) for each in schema]
    if not isinstance(schema, dict):
        return schema
    return {key: False if key == "unevaluatedProperties" else sealed(value)
            for key, value in schema.items()}


def validator(name, seal=True):
    """Of the schema with its definitions in it, so that no reference leads to a file."""
    text = (SCHEMAS / f"{name}.schema.json").read_text().replace(f'"{DEFINITIONS}#', '"#')
    schema = json.loads(text) | json.loads((SCHEMAS / DEFINITIONS).read_text())
    Draft202012Validator.check_schema(schema)
    return Draft202012Validator(sealed(schema) if seal else schema)


def documents_in(shown, name):
    texts = shown.split("\n")[:-1] if name == "clips-line" else [shown]
    return list(map(json.loads, texts))


def leaves(value, path=()):
    """All values that hold no others, with the way to each."""
    if isinstance(value, (dict, list)) and value:
        for key, each in value.items() if isinstance(value, dict) else enumerate(value):
            yield from leaves(each, (*path, key))
    else:
        yield path, value


def texts_of_file(path):
    """Every text and attribute of an XML file but white space between elements."""
    for element in ElementTree.parse(path).iter():
        for text in (element.text, *element.attrib.values()):
            if text and text.strip():
                yield text


class SchemaTest(CardTest):
    def setUp(self):
        super().setUp()
        self.p2 = sample()
        self.avchd = sample("avchd") / "PRIVATE"
        self.camera = sample("camera")

    def documents(self, name, command, **places):
        words = [word.format(folder=self.folder, other=self.card.path, **places)
                 for word in command.split()]
        result = run(*words)
        self.assertEqual(result.returncode, 0, (words, result.stderr))
        return documents_in(result.stdout, name)

    def assert_valid(self, name, command, **places):
        schema = validator(name)
        for document in self.documents(name, command, **places):
            self.assertEqual([(error.json_path, error.message)
                              for error in schema.iter_errors(document)], [], command)

    def test_each_command_with_json_has_a_schema_and_each_schema_a_command(self):
        named = {"definitions", "progress-line"}
        for level in LEVELS[1:]:
            shown = run(*level, "--help").stdout
            for option, suffix in (("--json", ""), ("--jsonl", "-line")):
                if re.search(rf"^\s+{option}\b[^-l]", shown, re.MULTILINE):
                    named.add("-".join(level) + suffix)
        self.assertEqual({path.name.removesuffix(".schema.json")
                          for path in SCHEMAS.glob("*.schema.json")}, named)

    def test_output_is_as_its_schema_says(self):
        cards = (self.p2, self.avchd, self.camera if HAS_WORKER else self.card.path)
        for card in cards:
            for name, command in OF_A_CARD:
                self.assert_valid(name, command, card=card)
        for name, command in OF_P2:
            self.assert_valid(name, command, card=self.p2)
        self.assert_valid("playlists", "playlists {card} --json", card=self.avchd)

    @unittest.skipUnless(HAS_WORKER, "the worker is not built")
    def test_output_of_the_worker_is_as_its_schema_says(self):
        (self.folder / "tape.dv").write_bytes(b"".join(map(dv_frame, range(3))))
        for name, command in BY_WORKER:
            self.assert_valid(name, command.replace("import", "import --quiet"), card=self.p2)
        # Not every volume has a number.
        serial = run("serial", self.p2, "--json")
        if serial.returncode == 0:
            validator("serial").validate(json.loads(serial.stdout))

    def test_a_member_that_goes_or_changes_its_type_is_noticed(self):
        (document,) = self.documents("clips", CLIPS[1][1], card=self.p2)
        document["clips"] = [clip for clip in document["clips"] if "take" in clip][-1:]
        del document["clips"][0]["metadata"]["others"][2:], document["otherFiles"][2:]
        for open_one, schema in ((False, validator("clips")), (True, validator("clips", False))):
            changes = 0
            for path, value in leaves(document):
                changed = copy.deepcopy(document)
                *way, last = path
                holder = changed
                for step in way:
                    holder = holder[step]
                holder[last] = [value, {}]
                self.assertFalse(schema.is_valid(changed), path)
                changes += 1
            self.assertGreater(changes, 150)
            document["clips"][0]["news"] = 1
            self.assertEqual(schema.is_valid(document), open_one)
            del document["clips"][0]["news"]

    def test_paths_lead_there_from_any_folder(self):
        whole = self.p2.resolve()
        self.assertEqual(self.told("clips", f"{self.p2}/CONTENTS/../../p2")["card"], str(whole))
        for card, folder in ((self.p2.name, self.p2.parent), (".", self.p2), ("../../p2", self.avchd)):
            text = run("clips", "--json", "--files", card, cwd=folder.resolve()).stdout
            document = json.loads(text)
            paths = [value for path, value in leaves(document["clips"])
                     if value and str(path[-1]).endswith("Path")]
            self.assertGreater(len(paths), 50)
            for path in (*paths, document["card"], document["cards"][0]["root"],
                         *(each["card"] for each in document["clips"])):
                self.assertTrue(path.startswith("/") and "/.." not in path, path)
            files = [each for clip in document["clips"] for each in clip["files"]]
            for each in (*files, *document["otherFiles"]):
                there = each.get("state") != "missing"
                self.assertEqual(Path(each["path"]).is_file(), there, each)
                self.assertEqual(each["size"],
                                 Path(each["path"]).stat().st_size if there else 0, each)

    def test_each_file_of_the_card_is_a_clips_or_none(self):
        whole = Path(shutil.copytree(self.avchd.parent, self.folder / "sd"))
        (whole / "MISC").mkdir()
        (whole / "MISC" / "NOTES.TXT").write_text("beside PRIVATE")
        Path(os.fsdecode(bytes(whole / "MISC") + b"/\xff")).write_text("no UTF-8")
        for name, target in (("file", "NOTES.TXT"), ("folder", ".."), ("nothing", "none")):
            (whole / "MISC" / name).symlink_to(target)
        os.mkfifo(whole / "MISC" / "pipe")
        kinds = {"link": Path.is_symlink, "special": Path.is_fifo}
        for card in (self.p2, self.avchd, whole):
            document = self.told("clips", card, "--files")
            files = [each for clip in document["clips"] for each in clip["files"]
                     if each["state"] != "missing"] + document["otherFiles"]
            told = [os.fsdecode(bytes.fromhex(each["pathBytes"])) if "pathBytes" in each
                    else each["path"] for each in files]
            there = [str(path) for path in card.rglob("*") if path.is_symlink() or not path.is_dir()]
            self.assertEqual(sorted(told), sorted(there))
            for each in (each for each in files if each.get("kind") in kinds):
                self.assertTrue(kinds[each["kind"]](Path(each["path"])), each)

    def test_every_text_of_a_clip_file_is_told(self):
        for clip in self.told("clips", self.p2, "--metadata")["clips"]:
            told = {str(value) for _, value in leaves(clip["metadata"])}
            own = set(texts_of_file(clip["XmlPath"]))
            self.assertGreater(len(own), 5)
            self.assertEqual(own - told, set(), clip["ClipName"])

    def test_hostile_texts_stay_texts(self):
        strange = "\u009b31m\u202e\ufeff<b>" + "x" * 10_000 + "\u2028\U0001f600"
        other = self.card
        other.add("0001AA", title=strange, memos=[(1, strange, strange)])
        other.add_raw(b"\xff\xed\xa0\x80.XML", clip_xml("x", title=strange).encode())
        other.add_raw("0003AA.XML", clip_xml("0003AA", title="z" * 2_000_000).encode())
        for name, command in OF_A_CARD:
            self.assert_valid(name, command, card=other.path)
        document = self.told("clips", other.path, "--metadata", "--files", "--report")
        json.dumps(document, ensure_ascii=False).encode()  # no half of a character
        self.assertIn(strange, [value for _, value in leaves(document["clips"][0]["metadata"])])


if __name__ == "__main__":
    main()
