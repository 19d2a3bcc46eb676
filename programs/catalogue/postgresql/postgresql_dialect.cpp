// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/postgresql/postgresql_dialect.h"

#include "catalogue/search_words.h"

#include <cstddef>

namespace nqp2::catalogue {
namespace {

constexpr const char* kCards[] = {
    // Whoever may not make schemas can be given this one.
    "DO $$ BEGIN IF NOT EXISTS (SELECT FROM pg_namespace WHERE nspname = 'nqp2_catalogue') THEN"
    " CREATE SCHEMA nqp2_catalogue; END IF; END $$",
    "CREATE TABLE catalogue_version (version BIGINT NOT NULL)",
    "CREATE TABLE card ("
    " id BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY, medium_key TEXT NOT NULL, epoch BIGINT "
    "NOT NULL,"
    " kind TEXT NOT NULL, is_medium BIGINT NOT NULL, serial TEXT NOT NULL, volume TEXT NOT NULL,"
    " volume_label TEXT NOT NULL, label TEXT NOT NULL, host TEXT NOT NULL, place TEXT NOT NULL,"
    " contents TEXT NOT NULL, state TEXT NOT NULL, clips BIGINT NOT NULL, bytes BIGINT NOT NULL,"
    " added BIGINT NOT NULL, changed BIGINT NOT NULL, seen BIGINT NOT NULL,"
    " UNIQUE (medium_key, epoch))",
    "CREATE INDEX card_contents ON card (contents)",
    "CREATE TABLE clip ("
    " id BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY, identity TEXT NOT NULL UNIQUE, name TEXT "
    "COLLATE \"C\" NOT NULL,"
    " title TEXT NOT NULL, start TEXT COLLATE \"C\" NOT NULL, frames BIGINT NOT NULL,"
    " milliseconds BIGINT NOT NULL, rate TEXT NOT NULL, codec TEXT NOT NULL,"
    " timecode TEXT NOT NULL, manufacturer TEXT NOT NULL, camera TEXT NOT NULL,"
    " camera_serial TEXT NOT NULL, programme TEXT NOT NULL, scene TEXT NOT NULL,"
    " take TEXT NOT NULL, place TEXT NOT NULL, latitude TEXT NOT NULL, longitude TEXT NOT NULL,"
    " people TEXT NOT NULL, memos TEXT NOT NULL, words TSVECTOR NOT NULL)",
    "CREATE INDEX clip_start ON clip (start)",
    "CREATE INDEX clip_name ON clip (name)",
    "CREATE TABLE holding ("
    " card_id BIGINT NOT NULL REFERENCES card (id), clip_id BIGINT NOT NULL REFERENCES clip (id),"
    " name TEXT NOT NULL, stamp TEXT NOT NULL, identifier TEXT NOT NULL, bytes BIGINT NOT NULL,"
    " file_gaps BIGINT NOT NULL, segment_gaps BIGINT NOT NULL, is_ingested BIGINT NOT NULL,"
    " offset_in_shot BIGINT NOT NULL, top_identity TEXT NOT NULL, top_name TEXT NOT NULL,"
    " top_serial TEXT NOT NULL, previous_identity TEXT NOT NULL, previous_name TEXT NOT NULL,"
    " previous_serial TEXT NOT NULL, next_identity TEXT NOT NULL, next_name TEXT NOT NULL,"
    " next_serial TEXT NOT NULL, PRIMARY KEY (card_id, name))",
    "CREATE INDEX holding_clip ON holding (clip_id, card_id, is_ingested)",
    "CREATE INDEX holding_files ON holding (clip_id) WHERE file_gaps > 0",
    "CREATE INDEX holding_segments ON holding (clip_id) WHERE segment_gaps > 0",
    "CREATE TABLE gap ("
    " card_id BIGINT NOT NULL REFERENCES card (id), clip TEXT NOT NULL, kind TEXT NOT NULL,"
    " what TEXT NOT NULL, problem TEXT NOT NULL, identity TEXT NOT NULL, serial TEXT NOT NULL)",
    "CREATE INDEX gap_card ON gap (card_id, clip)",
    "CREATE INDEX clip_words ON clip USING gin (words) WITH (fastupdate = off)",
};

constexpr const char* kLists[] = {
    "CREATE TABLE list ("
    " card_id BIGINT NOT NULL REFERENCES card (id), name TEXT NOT NULL, kind TEXT NOT NULL,"
    " rate TEXT NOT NULL, frames BIGINT NOT NULL)",
    "CREATE INDEX list_card ON list (card_id)",
    "CREATE TABLE event ("
    " card_id BIGINT NOT NULL REFERENCES card (id), list TEXT NOT NULL, ordinal BIGINT NOT NULL,"
    " identity TEXT NOT NULL, clip TEXT NOT NULL, serial TEXT NOT NULL, position BIGINT NOT NULL,"
    " source_in BIGINT NOT NULL, source_out BIGINT NOT NULL)",
    "CREATE INDEX event_card ON event (card_id)",
    "CREATE INDEX event_clip ON event (identity)",
    "CREATE TABLE ingest ("
    " card_id BIGINT NOT NULL REFERENCES card (id), clip TEXT NOT NULL,"
    " in_point BIGINT NOT NULL, out_point BIGINT NOT NULL)",
    "CREATE INDEX ingest_card ON ingest (card_id)",
    "CREATE TABLE generation ("
    " card_id BIGINT NOT NULL REFERENCES card (id), number BIGINT NOT NULL,"
    " manifest TEXT NOT NULL, c4 TEXT NOT NULL, created BIGINT NOT NULL,"
    " root_format TEXT NOT NULL, root_content TEXT NOT NULL, root_structure TEXT NOT NULL)",
    "CREATE INDEX generation_card ON generation (card_id)",
};

/// What is added to the index waits in a list, from which it is put in all at once: writers wait
/// for each other at the pages of frequent words otherwise. Searches read that list, so that it may
/// not grow long.
constexpr const char* kSpeed[] = {
    "ALTER INDEX clip_words SET (fastupdate = on, gin_pending_list_limit = 1024)",
    "CREATE INDEX card_state ON card (state)",
};

constexpr Migration kMigrations[] = {kCards, kLists, kSpeed};

/// Words are quoted, and hold neither quotes nor backslashes.
std::string QueryText(const WordQuery& query) {
    std::string text;
    for (const WordTerm& term : query) {
        text += text.empty() ? "" : " & ";
        text += term.isExcluded ? "!(" : "(";
        for (std::size_t i = 0; i < term.words.size(); ++i) {
            text += (i == 0 ? "'" : " <-> '") + term.words[i] + '\'';
        }
        text += term.isPrefix ? ":*)" : ")";
    }
    return text;
}

/// Each word with its place, so that the server need not find words by rules of its own.
std::string KeptWords(const std::string& words) {
    constexpr std::size_t kLastPlace = 16'383;
    std::string kept;
    std::size_t place = 0;
    for (std::size_t at = 0; at < words.size() && place < kLastPlace;) {
        const std::size_t end = std::min(words.find(' ', at), words.size());
        kept.append(kept.empty() ? "'" : " '").append(words, at, end - at).append("':");
        kept += std::to_string(++place);
        at = end + 1;
    }
    return kept;
}

} // namespace

const Dialect kPostgresqlDialect = {
    kMigrations,
    "SELECT count(*), count(*) FILTER (WHERE tablename = 'catalogue_version') FROM pg_tables"
    " WHERE schemaname = 'nqp2_catalogue'",
    "BEGIN",
    "SELECT pg_advisory_xact_lock(hashtextextended($1, 0))",
    "",
    "clip c WHERE c.words @@ CAST(",
    " AS tsquery)",
    "",
    "",
    QueryText,
    KeptWords,
};

} // namespace nqp2::catalogue
