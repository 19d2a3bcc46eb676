# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Hash lists as another program would make and read them: from the bytes up, with other habits."""

import hashlib
from pathlib import Path
from xml.etree import ElementTree
from xml.sax.saxutils import escape

MANIFEST = "urn:ASC:MHL:v2.0"
CHAIN = "urn:ASC:MHL:DIRECTORY:v2.0"
DIGITS = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz"
MAKERS = {"c4": hashlib.sha512, "md5": hashlib.md5, "sha1": hashlib.sha1}


def text_of(name, digest):
    if name != "c4":
        return digest.hex()
    number, text = int.from_bytes(digest, "big"), ""
    while number:
        number, digit = divmod(number, 58)
        text = DIGITS[digit] + text
    return "c4" + text.rjust(88, "1")


def digest_of(name, content):
    return MAKERS[name](content).digest()


def hash_of_hashes(name, digests):
    in_order = sorted((text_of(name, digest), digest) for digest in digests)
    return digest_of(name, b"".join(digest for _, digest in in_order))


def children(folder):
    return [each for each in sorted(folder.iterdir()) if each.name != "ascmhl"]


def folder_digests(name, folder):
    """Digests of content and structure."""
    contents, structures = [], []
    for each in children(folder):
        content, structure = (folder_digests(name, each) if each.is_dir()
                              else [digest_of(name, each.read_bytes())] * 2)
        contents.append(content)
        structures.append(digest_of(name, each.name.encode() + structure))
    return hash_of_hashes(name, contents), hash_of_hashes(name, structures)


def folder_texts(name, folder):
    return tuple(text_of(name, digest) for digest in folder_digests(name, folder))


def pair_xml(folder, names):
    pairs = {name: folder_texts(name, folder) for name in names}
    return "".join(f"<m:{kind}>" + "".join(f"<m:{name}>{pairs[name][which]}</m:{name}>"
                                           for name in names) + f"</m:{kind}>"
                   for which, kind in enumerate(("content", "structure")))


def records(scope, folder, names):
    """With prefixes, a slash behind folders, sizes of some files alone: all of it is allowed."""
    for each in children(folder):
        path = escape(each.relative_to(scope).as_posix())
        if each.is_dir():
            yield from records(scope, each, names)
            yield f"<m:directoryhash><m:path>{path}/</m:path>{pair_xml(each, names)}</m:directoryhash>"
            continue
        content = each.read_bytes()
        size = f' size="{len(content)}"' if content else ""
        hashes = "".join(f'<m:{name} action="original">{text_of(name, digest_of(name, content))}'
                         f"</m:{name}>" for name in names)
        yield f"<m:hash><m:path{size}>{path}</m:path>{hashes}</m:hash>"


def write_history(scope, names=("md5", "sha1")):
    """A first generation, as another program writes it."""
    manifest = (
        f'\ufeff<?xml version="1.0" encoding="utf-8"?>\r\n<m:hashlist xmlns:m="{MANIFEST}" version="2.0">'
        "<m:creatorinfo><m:creationdate>2024-03-01T10:00:00.25+01:00</m:creationdate>"
        '<m:hostname>cart</m:hostname><m:tool version="9">other</m:tool></m:creatorinfo>'
        "<m:processinfo><m:process>in-place</m:process>"
        f"<m:roothash>{pair_xml(scope, names)}</m:roothash><m:ignore><m:pattern>.DS_Store</m:pattern>"
        "<m:pattern>ascmhl</m:pattern></m:ignore></m:processinfo>"
        f"<m:hashes>{''.join(records(scope, scope, names))}</m:hashes></m:hashlist>\r\n").encode()
    folder = scope / "ascmhl"
    folder.mkdir()
    (folder / "0001_first.mhl").write_bytes(manifest)
    rewrite_chain(folder)


def rewrite_chain(folder):
    """A chain of all manifests as they are now."""
    entries = "".join(
        f'<hashlist sequencenr="{number}"><path>{path.name}</path>'
        f"<c4>{text_of('c4', digest_of('c4', path.read_bytes()))}</c4></hashlist>"
        for number, path in enumerate(sorted(folder.glob("*.mhl")), start=1))
    (folder / "ascmhl_chain.xml").write_text(
        f'<?xml version="1.0"?><ascmhldirectory xmlns="{CHAIN}">{entries}</ascmhldirectory>')


def read_manifest(path):
    """Records by path: for a file its size and its hashes with their actions, for a folder its
    content and structure."""
    found = {}
    root = ElementTree.parse(path).getroot()

    def plain(element):
        return element.tag.rpartition("}")[2]

    def hashes(element):
        return {plain(each): (each.text, each.get("action")) for each in element
                if plain(each) in ("c4", "md5", "sha1", "xxh128", "xxh3", "xxh64")}

    for record in root.iter():
        if plain(record) == "hash":
            name = record.find(f"{{{MANIFEST}}}path")
            found[name.text] = (int(name.get("size")), hashes(record))
        elif plain(record) in ("directoryhash", "roothash"):
            name = record.find(f"{{{MANIFEST}}}path")
            found["" if name is None else name.text] = tuple(
                {key: text for key, (text, _) in
                 hashes(record.find(f"{{{MANIFEST}}}{kind}")).items()}
                for kind in ("content", "structure"))
    return found


def manifests(scope):
    return sorted((Path(scope) / "ascmhl").glob("*.mhl"))
