// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/sqlite/sqlite_dialect.h"

#include "catalogue/search_words.h"

namespace nqp2::catalogue {
namespace {

constexpr const char* kCards[] = {
    "CREATE TABLE catalogue_version (version INTEGER NOT NULL) STRICT",
    "CREATE TABLE card ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT, medium_key TEXT NOT NULL, epoch INTEGER NOT NULL,"
    " kind TEXT NOT NULL, is_medium INTEGER NOT NULL, serial TEXT NOT NULL, volume TEXT NOT NULL,"
    " volume_label TEXT NOT NULL, label TEXT NOT NULL, host TEXT NOT NULL, place TEXT NOT NULL,"
    " contents TEXT NOT NULL, state TEXT NOT NULL, clips INTEGER NOT NULL, bytes INTEGER NOT NULL,"
    " added INTEGER NOT NULL, changed INTEGER NOT NULL, seen INTEGER NOT NULL,"
    " UNIQUE (medium_key, epoch)) STRICT",
    "CREATE INDEX card_contents ON card (contents)",
    "CREATE TABLE clip ("
    " id INTEGER PRIMARY KEY, identity TEXT NOT NULL UNIQUE, name TEXT NOT NULL,"
    " title TEXT NOT NULL, start TEXT NOT NULL, frames INTEGER NOT NULL,"
    " milliseconds INTEGER NOT NULL, rate TEXT NOT NULL, codec TEXT NOT NULL,"
    " timecode TEXT NOT NULL, manufacturer TEXT NOT NULL, camera TEXT NOT NULL,"
    " camera_serial TEXT NOT NULL, programme TEXT NOT NULL, scene TEXT NOT NULL,"
    " take TEXT NOT NULL, place TEXT NOT NULL, latitude TEXT NOT NULL, longitude TEXT NOT NULL,"
    " people TEXT NOT NULL, memos TEXT NOT NULL, words TEXT NOT NULL) STRICT",
    "CREATE INDEX clip_start ON clip (start)",
    "CREATE INDEX clip_name ON clip (name)",
    "CREATE TABLE holding ("
    " card_id INTEGER NOT NULL REFERENCES card (id), clip_id INTEGER NOT NULL REFERENCES clip (id),"
    " name TEXT NOT NULL, stamp TEXT NOT NULL, identifier TEXT NOT NULL, bytes INTEGER NOT NULL,"
    " file_gaps INTEGER NOT NULL, segment_gaps INTEGER NOT NULL, is_ingested INTEGER NOT NULL,"
    " offset_in_shot INTEGER NOT NULL, top_identity TEXT NOT NULL, top_name TEXT NOT NULL,"
    " top_serial TEXT NOT NULL, previous_identity TEXT NOT NULL, previous_name TEXT NOT NULL,"
    " previous_serial TEXT NOT NULL, next_identity TEXT NOT NULL, next_name TEXT NOT NULL,"
    " next_serial TEXT NOT NULL, PRIMARY KEY (card_id, name)) STRICT, WITHOUT ROWID",
    "CREATE INDEX holding_clip ON holding (clip_id, card_id, is_ingested)",
    "CREATE INDEX holding_files ON holding (clip_id) WHERE file_gaps > 0",
    "CREATE INDEX holding_segments ON holding (clip_id) WHERE segment_gaps > 0",
    "CREATE TABLE gap ("
    " card_id INTEGER NOT NULL REFERENCES card (id), clip TEXT NOT NULL, kind TEXT NOT NULL,"
    " what TEXT NOT NULL, problem TEXT NOT NULL, identity TEXT NOT NULL, serial TEXT NOT NULL)"
    " STRICT",
    "CREATE INDEX gap_card ON gap (card_id, clip)",
    // Of the words it keeps the index alone; the texts stand in the table.
    "CREATE VIRTUAL TABLE clip_words USING fts5 (words, content = 'clip', content_rowid = 'id',"
    " columnsize = 0, tokenize = 'ascii')",
    "CREATE TRIGGER clip_added AFTER INSERT ON clip BEGIN"
    " INSERT INTO clip_words (rowid, words) VALUES (new.id, new.words); END",
    "CREATE TRIGGER clip_removed AFTER DELETE ON clip BEGIN"
    " INSERT INTO clip_words (clip_words, rowid, words) VALUES ('delete', old.id, old.words); END",
    "CREATE TRIGGER clip_changed AFTER UPDATE OF words ON clip WHEN old.words <> new.words BEGIN"
    " INSERT INTO clip_words (clip_words, rowid, words) VALUES ('delete', old.id, old.words);"
    " INSERT INTO clip_words (rowid, words) VALUES (new.id, new.words); END",
};

constexpr const char* kLists[] = {
    "CREATE TABLE list ("
    " card_id INTEGER NOT NULL REFERENCES card (id), name TEXT NOT NULL, kind TEXT NOT NULL,"
    " rate TEXT NOT NULL, frames INTEGER NOT NULL) STRICT",
    "CREATE INDEX list_card ON list (card_id)",
    "CREATE TABLE event ("
    " card_id INTEGER NOT NULL REFERENCES card (id), list TEXT NOT NULL, ordinal INTEGER NOT NULL,"
    " identity TEXT NOT NULL, clip TEXT NOT NULL, serial TEXT NOT NULL, position INTEGER NOT NULL,"
    " source_in INTEGER NOT NULL, source_out INTEGER NOT NULL) STRICT",
    "CREATE INDEX event_card ON event (card_id)",
    "CREATE INDEX event_clip ON event (identity)",
    "CREATE TABLE ingest ("
    " card_id INTEGER NOT NULL REFERENCES card (id), clip TEXT NOT NULL,"
    " in_point INTEGER NOT NULL, out_point INTEGER NOT NULL) STRICT",
    "CREATE INDEX ingest_card ON ingest (card_id)",
    "CREATE TABLE generation ("
    " card_id INTEGER NOT NULL REFERENCES card (id), number INTEGER NOT NULL,"
    " manifest TEXT NOT NULL, c4 TEXT NOT NULL, created INTEGER NOT NULL,"
    " root_format TEXT NOT NULL, root_content TEXT NOT NULL, root_structure TEXT NOT NULL) STRICT",
    "CREATE INDEX generation_card ON generation (card_id)",
};

constexpr const char* kSpeed[] = {
    "CREATE INDEX card_state ON card (state)",
};

constexpr Migration kMigrations[] = {kCards, kLists, kSpeed};

/// Words are quoted, and hold no quotes.
std::string TermText(const WordTerm& term) {
    std::string text = "\"";
    for (const std::string& word : term.words) {
        text += word + ' ';
    }
    return text += term.isPrefix ? "\" *" : "\"";
}

/// What is excluded comes behind all else.
std::string QueryText(const WordQuery& query) {
    std::string text;
    std::string excluded;
    for (const WordTerm& term : query) {
        if (term.isExcluded) {
            excluded += " NOT " + TermText(term);
        } else {
            text += (text.empty() ? "" : " AND ") + TermText(term);
        }
    }
    return text + excluded;
}

std::string KeptWords(const std::string& words) {
    return words;
}

} // namespace

const Dialect kSqliteDialect = {
    kMigrations,
    "SELECT count(*), count(*) FILTER (WHERE name = 'catalogue_version') FROM sqlite_master"
    " WHERE type = 'table'",
    "BEGIN IMMEDIATE",
    "",
    "SELECT count(*) FROM (SELECT 1 FROM clip_words WHERE clip_words MATCH $1 LIMIT $2)",
    "clip_words JOIN clip c ON c.id = clip_words.rowid WHERE clip_words MATCH ",
    "",
    " INDEXED BY ",
    "instr(' ' || c.words || ' ', ",
    QueryText,
    KeptWords,
};

} // namespace nqp2::catalogue
