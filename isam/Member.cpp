#include "isam/Member.h"

#include "isam/RecordSeal.h"

#include <cstring>
#include <utility>

namespace isam {

namespace {

constexpr int kRowColumn = 0;
constexpr int kKeyColumn = 1;
constexpr int kRecordColumn = 2;
constexpr std::int64_t kMaxPosition = 0xFFFFFFFFLL;

std::string columnString(const Statement& st, int column) {
    const unsigned char* p = st.columnBytes(column);
    return p ? std::string(reinterpret_cast<const char*>(p), st.columnSize(column)) : std::string();
}

}  // namespace

std::string localName(const std::string& memberName) {
    const std::size_t at = memberName.rfind('!');
    return at == std::string::npos ? memberName : memberName.substr(at + 1);
}

std::string collationFor(std::uint32_t lcid) {
    return lcid ? "qvb_lcid_" + std::to_string(lcid) : std::string();
}

std::string keyColumn(std::size_t index) { return "k" + std::to_string(index + 1); }

std::string createIndexSql(const std::string& table, const IndexDefinition& index,
                           std::size_t ordinal, std::uint32_t lcid) {
    std::string sql = index.duplicates ? "CREATE INDEX " : "CREATE UNIQUE INDEX ";
    sql += quoted(localName(index.name)) + " ON " + quoted(table) + "(" + keyColumn(ordinal);
    if (lcid && isLocaleOrdered(index)) sql += " COLLATE " + collationFor(lcid);
    return sql + ")";
}

Member::Member(sqlite3* db, FileDefinition definition, std::vector<std::uint32_t> indexLocales,
               std::uint32_t dataLocale, int format)
    : db_(db),
      definition_(std::move(definition)),
      dataLocale_(dataLocale),
      sealed_(format >= kSealedFormat),
      keyForm_(format >= kSealedFormat ? KeyForm::Compact : KeyForm::Padded) {
    table_ = localName(definition_.name);
    indexes_.resize(definition_.indexes.size());
    for (std::size_t i = 0; i < indexes_.size(); ++i) {
        indexes_[i].definition = definition_.indexes[i];
        indexes_[i].locale = i < indexLocales.size() ? indexLocales[i] : 0;
        indexes_[i].column = keyColumn(i);
    }
}

Member::~Member() { closeBlob(); }

// ---- Queries ----------------------------------------------------------------------

bool Member::collated(const IndexState& ix) const {
    return ix.locale != 0 && isLocaleOrdered(ix.definition);
}

std::string Member::keyExpression(const IndexState& ix) const {
    return collated(ix) ? ix.column + " COLLATE " + collationFor(ix.locale) : ix.column;
}

std::string Member::whereClause(const std::string& k, Filter filter) {
    switch (filter) {
        case kGe: return " WHERE " + k + " >= ?1";
        case kGt: return " WHERE " + k + " > ?1";
        case kLt: return " WHERE " + k + " < ?1";
        case kLe: return " WHERE " + k + " <= ?1";
        case kEq: return " WHERE " + k + " = ?1";
        case kRange: return " WHERE " + k + " >= ?1 AND " + k + " < ?2";
        case kEqRow: return " WHERE " + k + " = ?1 AND rowid = ?2";
        case kEqRowGe: return " WHERE " + k + " = ?1 AND rowid >= ?2";
        case kEqRowLt: return " WHERE " + k + " = ?1 AND rowid < ?2";
        case kGtLt: return " WHERE " + k + " > ?1 AND " + k + " < ?2";
        default: return "";
    }
}

std::string Member::orderClause(const IndexState& ix, bool descending) const {
    const std::string direction = descending ? " DESC" : "";
    return " ORDER BY " + keyExpression(ix) + direction + ", rowid" + direction;
}

int Member::statement(IndexState& ix, Shape shape, Filter filter, Statement** out) {
    Statement& st = ix.statements[shape][filter];
    *out = &st;
    if (st.prepared()) return ISAM_OK;
    const std::string from = " FROM " + quoted(table_) + whereClause(keyExpression(ix), filter);
    std::string sql;
    switch (shape) {
        case kAscending:
            sql = "SELECT rowid, " + ix.column + ", rec" + from + orderClause(ix, false);
            break;
        case kDescending:
            sql = "SELECT rowid, " + ix.column + ", rec" + from + orderClause(ix, true);
            break;
        case kCount:
            sql = "SELECT count(*)" + from;
            break;
        default:
            sql = "SELECT rowid" + from + orderClause(ix, false) + " LIMIT ?3";
            break;
    }
    return st.prepare(db_, sql);
}

void Member::bindKey(const IndexState& ix, Statement& st, int slot, const std::string& key) const {
    // A collation applies only to text values, so locale-ordered keys are stored
    // and compared as text; every other key is a blob compared byte by byte.
    // Keys are short, and a cursor statement is stepped after the key is gone.
    if (collated(ix)) {
        st.bindText(slot, key.data(), key.size(), true);
    } else {
        st.bindBlob(slot, key.data(), key.size(), true);
    }
}

void Member::bindBound(const IndexState& ix, Statement& st, const Bound& bound) const {
    switch (bound.filter) {
        case kAll:
            break;
        case kRange:
        case kGtLt:
            bindKey(ix, st, 1, bound.key);
            bindKey(ix, st, 2, bound.key2);
            break;
        case kEqRow:
        case kEqRowGe:
        case kEqRowLt:
            bindKey(ix, st, 1, bound.key);
            st.bindInt(2, bound.row);
            break;
        default:
            bindKey(ix, st, 1, bound.key);
            break;
    }
}

// The rows whose keys begin with a search key.
Member::Bound Member::prefixBound(const IndexState& ix, const SearchKey& key) const {
    Bound b;
    b.key = key.bytes;
    if (key.hasPosition) {
        b.filter = kEqRow;
        b.row = key.position;
    } else if (key.bytes.empty()) {
        b.filter = kAll;
    } else if (key.hasUpper) {
        b.filter = kRange;
        b.key2 = key.upper;
    } else if (key.complete || collated(ix)) {
        b.filter = kEq;
    } else if (prefixSuccessor(key.bytes, &b.key2)) {
        b.filter = kRange;
    } else {
        b.filter = kGe;
    }
    return b;
}

// ---- Positioning --------------------------------------------------------------------

int Member::takeRow(std::size_t index, Statement* st, bool bounded, Position* position) {
    IndexState& ix = indexes_[index];
    const std::int64_t row = st->columnInt(kRowColumn);
    ix.cursor = st;
    ix.cursorBounded = bounded;
    ix.anchorValid = true;
    ix.anchorRow = row;
    ix.anchorKey = columnString(*st, kKeyColumn);
    hasCurrent_ = true;
    current_ = row;
    recordSource_ = st;
    *position = static_cast<Position>(row);
    return ISAM_OK;
}

int Member::seek(std::size_t index, Shape shape, const std::vector<Bound>& bounds,
                 Position* position) {
    IndexState& ix = indexes_[index];
    recordSource_ = nullptr;
    ix.cursor = nullptr;
    for (const Bound& bound : bounds) {
        Statement* st = nullptr;
        int rc = statement(ix, shape, bound.filter, &st);
        if (rc) return rc;
        st->reset();
        bindBound(ix, *st, bound);
        int step = st->step();
        if (step == SQLITE_ROW) {
            // Only an ascending scan can be stepped on by next(); a scan limited to one
            // key or range must hand over to an open one when it runs out.
            const bool bounded = bound.filter != kAll && bound.filter != kGe && bound.filter != kGt;
            int taken = takeRow(index, st, bounded, position);
            if (shape == kDescending) ix.cursor = nullptr;
            return taken;
        }
        st->reset();
        if (step != SQLITE_DONE) return fromSqlite(step);
    }
    return ISAM_NO_RECORD;
}

int Member::first(std::size_t index, Position* position) {
    return seek(index, kAscending, {Bound{}}, position);
}

int Member::last(std::size_t index, Position* position) {
    return seek(index, kDescending, {Bound{}}, position);
}

int Member::anchorFromCurrent(std::size_t index) {
    IndexState& ix = indexes_[index];
    if (!hasCurrent_) return ISAM_NO_CURRENT_RECORD;
    if (ix.anchorValid && ix.anchorRow == current_) return ISAM_OK;
    int rc = prepareOnce(ix.keyOf, [&] {
        return "SELECT " + ix.column + " FROM " + quoted(table_) + " WHERE rowid = ?1";
    });
    if (rc) return rc;
    ix.keyOf.reset();
    ix.keyOf.bindInt(1, current_);
    int step = ix.keyOf.step();
    if (step == SQLITE_ROW) {
        ix.anchorKey = columnString(ix.keyOf, 0);
        ix.anchorRow = current_;
        ix.anchorValid = true;
    }
    ix.keyOf.reset();
    if (step == SQLITE_DONE) return ISAM_NO_CURRENT_RECORD;
    return step == SQLITE_ROW ? ISAM_OK : fromSqlite(step);
}

int Member::seekAfterAnchor(std::size_t index, Position* position) {
    IndexState& ix = indexes_[index];
    Bound sameKey{kEqRowGe, ix.anchorKey, std::string(), ix.anchorRow + 1};
    Bound greaterKey{kGt, ix.anchorKey, std::string(), 0};
    return seek(index, kAscending, {sameKey, greaterKey}, position);
}

int Member::next(std::size_t index, Position* position) {
    IndexState& ix = indexes_[index];
    const bool onCurrent = ix.anchorValid && hasCurrent_ && ix.anchorRow == current_;
    if (ix.cursor && onCurrent) {
        Statement* st = ix.cursor;
        recordSource_ = nullptr;
        int step = st->step();
        if (step == SQLITE_ROW) return takeRow(index, st, ix.cursorBounded, position);
        st->reset();
        ix.cursor = nullptr;
        if (step != SQLITE_DONE) return fromSqlite(step);
        if (!ix.cursorBounded) return ISAM_NO_RECORD;
        return seekAfterAnchor(index, position);
    }
    int rc = anchorFromCurrent(index);
    return rc ? rc : seekAfterAnchor(index, position);
}

int Member::findEqual(std::size_t index, const void* key, std::size_t length, Position* position) {
    SearchKey sk;
    int rc = parseSearchKey(indexes_[index].definition, key, length, true, keyForm_, &sk);
    if (rc) return rc;
    return seek(index, kAscending, {prefixBound(indexes_[index], sk)}, position);
}

int Member::findKey(std::size_t index, const void* key, std::size_t length, SearchMode mode,
                    Position* position) {
    const IndexState& ix = indexes_[index];
    SearchKey sk;
    int rc = parseSearchKey(ix.definition, key, length, false, keyForm_, &sk);
    if (rc) return rc;
    if (mode == SearchMode::Equal) return seek(index, kAscending, {prefixBound(ix, sk)}, position);

    const std::string& k = sk.bytes;
    const bool whole = sk.complete || collated(ix);
    std::string successor;
    bool hasSuccessor = false;
    if (!whole && sk.hasUpper) {
        successor = sk.upper;
        hasSuccessor = true;
    } else if (!whole) {
        hasSuccessor = prefixSuccessor(k, &successor);
    }
    // A key value stands for the interval of keys that begin with it: the searches
    // start just below (lower bound) or just above (upper bound) that interval.
    if (sk.hasPosition) {
        const std::int64_t lower = sk.position;
        const std::int64_t upper = lower + 1;
        switch (mode) {
            case SearchMode::GreaterOrEqual:
                return seek(index, kAscending, {{kEqRowGe, k, {}, lower}, {kGt, k, {}, 0}}, position);
            case SearchMode::Greater:
                return seek(index, kAscending, {{kEqRowGe, k, {}, upper}, {kGt, k, {}, 0}}, position);
            case SearchMode::Less:
                return seek(index, kDescending, {{kEqRowLt, k, {}, lower}, {kLt, k, {}, 0}}, position);
            default:
                return seek(index, kDescending, {{kEqRowLt, k, {}, upper}, {kLt, k, {}, 0}}, position);
        }
    }
    switch (mode) {
        case SearchMode::GreaterOrEqual:
            return seek(index, kAscending, {{kGe, k, {}, 0}}, position);
        case SearchMode::Greater:
            if (whole) return seek(index, kAscending, {{kGt, k, {}, 0}}, position);
            if (!hasSuccessor) return ISAM_NO_RECORD;
            return seek(index, kAscending, {{kGe, successor, {}, 0}}, position);
        case SearchMode::Less:
            return seek(index, kDescending, {{kLt, k, {}, 0}}, position);
        default:
            if (whole) return seek(index, kDescending, {{kLe, k, {}, 0}}, position);
            if (!hasSuccessor) return seek(index, kDescending, {Bound{}}, position);
            return seek(index, kDescending, {{kLt, successor, {}, 0}}, position);
    }
}

int Member::findText(std::size_t index, const char* text, SearchMode mode, Position* position) {
    const IndexDefinition& def = indexes_[index].definition;
    if (!text || def.segments.empty() || def.segments[0].mode != kSegmentVariableText) {
        return ISAM_BAD_PARAMETER;
    }
    const std::size_t segment = def.segments[0].length;
    const std::size_t n = std::strlen(text);
    if (n > segment) return ISAM_KEY_TOO_LONG;
    std::string value(text, n);
    value.append(segment - n, ' ');
    return findKey(index, value.data(), value.size(), mode, position);
}

// ---- Key prefixes ------------------------------------------------------------------------

int Member::countByPrefix(std::size_t index, const void* prefix, std::size_t length,
                          std::uint32_t* count) {
    IndexState& ix = indexes_[index];
    SearchKey sk;
    int rc = parseSearchKey(ix.definition, prefix, length, false, keyForm_, &sk);
    if (rc) return rc;
    const Bound bound = prefixBound(ix, sk);
    Statement* st = nullptr;
    rc = statement(ix, kCount, bound.filter, &st);
    if (rc) return rc;
    st->reset();
    bindBound(ix, *st, bound);
    int step = st->step();
    if (step != SQLITE_ROW) {
        st->reset();
        return fromSqlite(step);
    }
    const std::int64_t n = st->columnInt(0);
    st->reset();
    *count = static_cast<std::uint32_t>(n);
    return n == 0 ? ISAM_NO_RECORD : ISAM_OK;
}

int Member::fetchByPrefix(std::size_t index, const void* prefix, std::size_t length,
                          std::uint32_t wanted, Position* positions, std::uint32_t* fetched) {
    IndexState& ix = indexes_[index];
    *fetched = 0;
    SearchKey sk;
    int rc = parseSearchKey(ix.definition, prefix, length, false, keyForm_, &sk);
    if (rc) return rc;
    if (wanted == 0) return ISAM_OK;
    if (!positions) return ISAM_BAD_PARAMETER;
    const Bound bound = prefixBound(ix, sk);
    Statement* st = nullptr;
    rc = statement(ix, kRows, bound.filter, &st);
    if (rc) return rc;
    st->reset();
    bindBound(ix, *st, bound);
    st->bindInt(3, wanted);
    int step;
    while ((step = st->step()) == SQLITE_ROW) {
        positions[(*fetched)++] = static_cast<Position>(st->columnInt(0));
    }
    st->reset();
    return step == SQLITE_DONE ? ISAM_OK : fromSqlite(step);
}

// ---- Reading ahead along a prefix scan ---------------------------------------------------

namespace {

// A chunk of records read ahead stops at this many rows or bytes, whichever comes
// first: enough to make a query per chunk cheap, little enough to bound memory.
constexpr std::size_t kAheadRows = 256;
constexpr std::size_t kAheadBytes = std::size_t{1} << 20;

}  // namespace

void Member::endReadAhead() {
    ahead_ = ReadAhead();
}

int Member::scanByPrefix(std::size_t index, const void* prefix, std::size_t length,
                         std::vector<Position>* positions) {
    IndexState& ix = indexes_[index];
    positions->clear();
    endReadAhead();
    SearchKey sk;
    int rc = parseSearchKey(ix.definition, prefix, length, false, keyForm_, &sk);
    if (rc) return rc;
    const Bound bound = prefixBound(ix, sk);
    Statement* st = nullptr;
    if ((rc = statement(ix, kAscending, bound.filter, &st))) return rc;
    if (ix.cursor == st) ix.cursor = nullptr;
    if (recordSource_ == st) recordSource_ = nullptr;
    st->reset();
    bindBound(ix, *st, bound);
    ahead_.index = index;
    ahead_.bound = bound;
    // The first chunk of records comes with the positions; the positions past it
    // come from the index alone.
    std::size_t bytes = 0;
    int step = SQLITE_DONE;
    while (ahead_.rows.size() < kAheadRows && bytes < kAheadBytes && (step = st->step()) == SQLITE_ROW) {
        positions->push_back(static_cast<Position>(st->columnInt(kRowColumn)));
        bytes += appendAheadRow(*st);
    }
    const bool allLoaded = step != SQLITE_ROW;
    st->reset();
    if (allLoaded && step != SQLITE_DONE) {
        positions->clear();
        endReadAhead();
        return fromSqlite(step);
    }
    if (!allLoaded) {
        const ReadAhead::Row& last = ahead_.rows.back();
        for (const Bound& part : partsAfter(bound, ahead_.keyOf(last), last.row)) {
            Statement* rows = nullptr;
            if ((rc = statement(ix, kRows, part.filter, &rows))) break;
            rows->reset();
            bindBound(ix, *rows, part);
            rows->bindInt(3, -1);  // no limit
            while ((step = rows->step()) == SQLITE_ROW) {
                positions->push_back(static_cast<Position>(rows->columnInt(0)));
            }
            rows->reset();
            if (step != SQLITE_DONE) rc = fromSqlite(step);
            if (rc) break;
        }
        if (rc) {
            positions->clear();
            endReadAhead();
            return rc;
        }
    }
    ahead_.active = !positions->empty();
    ahead_.exhausted = allLoaded;
    ahead_.resumed = !ahead_.rows.empty();
    if (ahead_.resumed) {
        ahead_.resumeKey = ahead_.keyOf(ahead_.rows.back());
        ahead_.resumeRow = ahead_.rows.back().row;
    }
    return ISAM_OK;
}

// The rows of a prefix bound that follow the row `row` with key `key`: first
// among the rows of equal key, then among greater keys up to the bound.
std::vector<Member::Bound> Member::partsAfter(const Bound& bound, const std::string& key, std::int64_t row) {
    std::vector<Bound> parts;
    if (bound.filter == kEqRow) return parts;
    parts.push_back({kEqRowGe, key, {}, row + 1});
    if (bound.filter == kAll || bound.filter == kGe) parts.push_back({kGt, key, {}, 0});
    if (bound.filter == kRange) parts.push_back({kGtLt, key, bound.key2, 0});
    return parts;
}

std::size_t Member::appendAheadRow(const Statement& st) {
    ReadAhead::Row row{st.columnInt(kRowColumn), ahead_.bytes.size(), st.columnSize(kKeyColumn), 0,
                       st.columnSize(kRecordColumn), false};
    ahead_.bytes.append(reinterpret_cast<const char*>(st.columnBytes(kKeyColumn)), row.keyLength);
    row.stored = ahead_.bytes.size();
    ahead_.bytes.append(reinterpret_cast<const char*>(st.columnBytes(kRecordColumn)), row.storedLength);
    ahead_.rows.push_back(row);
    return row.keyLength + row.storedLength;
}

int Member::appendAhead(Statement* st, std::size_t* bytes) {
    IndexState& ix = indexes_[ahead_.index];
    // The statement may be a cursor or hold the current record: it is reset below.
    if (ix.cursor == st) ix.cursor = nullptr;
    if (recordSource_ == st) recordSource_ = nullptr;
    int step = SQLITE_DONE;
    while (ahead_.rows.size() < kAheadRows && *bytes < kAheadBytes && (step = st->step()) == SQLITE_ROW) {
        *bytes += appendAheadRow(*st);
    }
    st->reset();
    if (step == SQLITE_DONE) return ISAM_NO_RECORD;
    return step == SQLITE_ROW ? ISAM_OK : fromSqlite(step);
}

int Member::loadAhead() {
    IndexState& ix = indexes_[ahead_.index];
    ahead_.rows.clear();
    ahead_.bytes.clear();
    ahead_.next = 0;
    ahead_.startResumed = ahead_.resumed;
    ahead_.startKey = ahead_.resumeKey;
    ahead_.startRow = ahead_.resumeRow;
    // The first chunk starts at the prefix; later ones after the last row loaded,
    // first among the rows of equal key, then among greater keys up to the bound.
    const std::vector<Bound> parts = ahead_.resumed
                                         ? partsAfter(ahead_.bound, ahead_.resumeKey, ahead_.resumeRow)
                                         : std::vector<Bound>{ahead_.bound};
    std::size_t bytes = 0;
    int rc = ISAM_NO_RECORD;
    for (const Bound& part : parts) {
        Statement* st = nullptr;
        if ((rc = statement(ix, kAscending, part.filter, &st))) return rc;
        st->reset();
        bindBound(ix, *st, part);
        rc = appendAhead(st, &bytes);
        if (rc != ISAM_NO_RECORD) break;  // full, or an error
    }
    if (rc != ISAM_OK && rc != ISAM_NO_RECORD) return rc;
    ahead_.exhausted = rc == ISAM_NO_RECORD;
    if (!ahead_.rows.empty()) {
        ahead_.resumed = true;
        ahead_.resumeKey = ahead_.keyOf(ahead_.rows.back());
        ahead_.resumeRow = ahead_.rows.back().row;
    }
    return ISAM_OK;
}

bool Member::readAhead(Position position, void* buffer, std::size_t capacity, std::size_t* length,
                       int* rc) {
    if (ahead_.next == ahead_.rows.size()) {
        if (ahead_.exhausted || loadAhead() != ISAM_OK) {
            endReadAhead();
            return false;
        }
    }
    std::size_t at = ahead_.next;
    while (at < ahead_.rows.size() && ahead_.rows[at].row != position) ++at;
    if (at == ahead_.rows.size()) return false;
    ahead_.next = at + 1;
    const ReadAhead::Row& row = ahead_.rows[at];
    hasCurrent_ = true;
    current_ = row.row;
    recordSource_ = nullptr;
    std::size_t n = 0;
    const char* stored = ahead_.storedOf(row);
    if (!recordOf(stored, row.storedLength, &n)) {
        *rc = ISAM_DAMAGED;
        return true;
    }
    *length = n;
    *rc = n > capacity ? ISAM_BUFFER_TOO_SHORT : ISAM_OK;
    if (*rc == ISAM_OK && n) std::memcpy(buffer, stored, n);
    return true;
}

void Member::forgetAheadFrom(std::int64_t row) {
    if (!ahead_.active) return;
    // The copy of the row handed out last no longer answers for its keys.
    if (ahead_.next > 0 && ahead_.rows[ahead_.next - 1].row == row) {
        ahead_.rows[ahead_.next - 1].written = true;
    }
    for (std::size_t i = ahead_.next; i < ahead_.rows.size(); ++i) {
        if (ahead_.rows[i].row != row) continue;
        // Read again from the last row handed out (or where this chunk began).
        ahead_.rows.resize(ahead_.next);
        ahead_.exhausted = false;
        ahead_.resumed = ahead_.next > 0 || ahead_.startResumed;
        ahead_.resumeKey = ahead_.next > 0 ? ahead_.keyOf(ahead_.rows.back()) : ahead_.startKey;
        ahead_.resumeRow = ahead_.next > 0 ? ahead_.rows.back().row : ahead_.startRow;
        return;
    }
}

// ---- Records ------------------------------------------------------------------------------


void Member::closeBlob() {
    if (blob_) sqlite3_blob_close(blob_);
    blob_ = nullptr;
    blobRow_ = -1;
}

void Member::releaseReaders() {
    resetCursors();
    closeBlob();
    endReadAhead();
}

// False when the blob reader cannot serve the read; the statement path then gives
// the precise answer (no such record, or the error).
bool Member::readByBlob(Position position, void* buffer, std::size_t capacity, std::size_t* length,
                        int* rc) {
    const int opened =
        blob_ ? sqlite3_blob_reopen(blob_, position)
              : sqlite3_blob_open(db_, "main", table_.c_str(), "rec", position, 0, &blob_);
    if (opened != SQLITE_OK) {
        closeBlob();
        return false;
    }
    const std::size_t stored = static_cast<std::size_t>(sqlite3_blob_bytes(blob_));
    const std::size_t seal = sealed_ ? kSealLength : 0;
    const bool sealCut = stored < seal;
    const std::size_t n = sealCut ? 0 : stored - seal;
    unsigned char checksum[kSealLength] = {};
    if (!sealCut && n <= capacity &&
        ((n && sqlite3_blob_read(blob_, buffer, int(n), 0) != SQLITE_OK) ||
         (seal && sqlite3_blob_read(blob_, checksum, int(seal), int(n)) != SQLITE_OK))) {
        closeBlob();
        return false;
    }
    // A damaged record is current like any other record read, as on the other paths.
    hasCurrent_ = true;
    current_ = position;
    blobRow_ = position;
    recordSource_ = nullptr;
    if (sealCut) {
        *rc = ISAM_DAMAGED;
    } else if (n > capacity) {
        *length = n;
        *rc = ISAM_BUFFER_TOO_SHORT;
    } else if (seal && !sealMatches(buffer, n, checksum)) {
        // The bytes were read into the caller's buffer to be checked: none of
        // them may stay there as data.
        std::memset(buffer, 0, n);
        *rc = ISAM_DAMAGED;
    } else {
        *length = n;
        *rc = ISAM_OK;
    }
    return true;
}

int Member::read(Position position, void* buffer, std::size_t capacity, std::size_t* length) {
    int aheadRc = ISAM_OK;
    if (ahead_.active && readAhead(position, buffer, capacity, length, &aheadRc)) return aheadRc;
    Statement* source = recordSource_;
    if (!(source && hasCurrent_ && current_ == position)) {
        int rc = ISAM_OK;
        if (readByBlob(position, buffer, capacity, length, &rc)) return rc;
        rc = prepareOnce(read_, [&] {
            return "SELECT rowid, NULL, rec FROM " + quoted(table_) + " WHERE rowid = ?1";
        });
        if (rc) return rc;
        read_.reset();
        read_.bindInt(1, position);
        int step = read_.step();
        if (step != SQLITE_ROW) {
            read_.reset();
            return step == SQLITE_DONE ? ISAM_NO_RECORD : fromSqlite(step);
        }
        source = &read_;
        if (!(hasCurrent_ && current_ == position)) {
            hasCurrent_ = true;
            current_ = position;
        }
        recordSource_ = &read_;
    }
    const unsigned char* stored = source->columnBytes(kRecordColumn);
    std::size_t n = 0;
    if (!recordOf(stored, source->columnSize(kRecordColumn), &n)) return ISAM_DAMAGED;
    *length = n;
    if (n > capacity) return ISAM_BUFFER_TOO_SHORT;
    if (n) std::memcpy(buffer, stored, n);
    return ISAM_OK;
}

std::pair<const void*, std::size_t> Member::toStore(const void* data, std::size_t length) {
    if (!sealed_) return {data, length};
    seal(data, length, &sealScratch_);
    return {sealScratch_.data(), sealScratch_.size()};
}

bool Member::recordOf(const void* stored, std::size_t storedLength, std::size_t* length) const {
    if (!sealed_) {
        *length = storedLength;
        return true;
    }
    return unseal(stored, storedLength, length);
}

int Member::buildStoredKeys(const void* stored, std::size_t storedLength,
                            std::vector<std::string>* keys) const {
    std::size_t length = 0;
    if (!recordOf(stored, storedLength, &length)) return ISAM_DAMAGED;
    return buildKeys(stored, length, keys);
}

int Member::buildKeys(const void* record, std::size_t length, std::vector<std::string>* keys) const {
    if (!record && length) return ISAM_BAD_PARAMETER;
    std::vector<FieldSpan> fields;
    const unsigned char* bytes = static_cast<const unsigned char*>(record);
    int rc = parseRecord(definition_, bytes, length, &fields);
    if (rc) return rc;
    keys->clear();
    for (const IndexState& ix : indexes_) keys->push_back(buildKey(ix.definition, bytes, fields, keyForm_));
    return ISAM_OK;
}

void Member::anchorAll(const std::vector<std::string>& keys, std::int64_t row) {
    for (std::size_t i = 0; i < indexes_.size(); ++i) {
        indexes_[i].anchorValid = true;
        indexes_[i].anchorKey = keys[i];
        indexes_[i].anchorRow = row;
    }
    hasCurrent_ = true;
    current_ = row;
}

int Member::add(const void* record, std::size_t length, Position* position) {
    std::vector<std::string> keys;
    int rc = buildKeys(record, length, &keys);
    if (rc) return rc;
    rc = prepareOnce(insert_, [&] {
        std::string sql = "INSERT INTO " + quoted(table_) + "(rec";
        std::string values = ") VALUES(?1";
        for (std::size_t i = 0; i < indexes_.size(); ++i) {
            sql += ", " + indexes_[i].column;
            values += ", ?" + std::to_string(i + 2);
        }
        return sql + values + ")";
    });
    if (rc) return rc;
    resetCursors();
    insert_.reset();
    const auto stored = toStore(record, length);
    insert_.bindBlob(1, stored.first, stored.second);
    for (std::size_t i = 0; i < indexes_.size(); ++i) bindKey(indexes_[i], insert_, int(i) + 2, keys[i]);
    int step = insert_.step();
    insert_.reset();
    if (step != SQLITE_DONE) return fromSqlite(step);
    const std::int64_t row = sqlite3_last_insert_rowid(db_);
    if (row > kMaxPosition) {
        // Positions are 32 bits wide; a row beyond them cannot be addressed.
        Statement undo;
        if (undo.prepare(db_, "DELETE FROM " + quoted(table_) + " WHERE rowid = ?1") == ISAM_OK) {
            undo.bindInt(1, row);
            undo.step();
        }
        return ISAM_FILE_FULL;
    }
    anchorAll(keys, row);
    if (position) *position = static_cast<Position>(row);
    return ISAM_OK;
}

// The keys of the current record as stored, when they are at hand without a query:
// ISAM_OK, ISAM_DAMAGED when the stored record fails its checksum, ISAM_NO_RECORD
// when they are not at hand (or the record does not parse under this definition).
int Member::currentKeys(std::vector<std::string>* keys) const {
    if (!hasCurrent_) return ISAM_NO_RECORD;
    bool anchored = true;
    for (const IndexState& ix : indexes_) {
        anchored = anchored && ix.anchorValid && ix.anchorRow == current_;
    }
    if (anchored) {
        keys->clear();
        for (const IndexState& ix : indexes_) keys->push_back(ix.anchorKey);
        return ISAM_OK;
    }
    const auto fromStored = [&](const void* stored, std::size_t length) {
        const int rc = buildStoredKeys(stored, length, keys);
        return rc == ISAM_OK || rc == ISAM_DAMAGED ? rc : ISAM_NO_RECORD;
    };
    // The row read ahead last, unless it was written since.
    if (ahead_.active && ahead_.next > 0 && ahead_.next <= ahead_.rows.size() &&
        ahead_.rows[ahead_.next - 1].row == current_ && !ahead_.rows[ahead_.next - 1].written) {
        const ReadAhead::Row& row = ahead_.rows[ahead_.next - 1];
        return fromStored(ahead_.storedOf(row), row.storedLength);
    }
    if (recordSource_ && recordSource_->columnInt(kRowColumn) == current_) {
        return fromStored(recordSource_->columnBytes(kRecordColumn),
                          recordSource_->columnSize(kRecordColumn));
    }
    // A record read by position: the blob handle is still on it, unless a write to
    // the row has expired it since (the read then fails).
    if (!blob_ || blobRow_ != current_) return ISAM_NO_RECORD;
    std::string stored(static_cast<std::size_t>(sqlite3_blob_bytes(blob_)), '\0');
    if (!stored.empty() && sqlite3_blob_read(blob_, &stored[0], int(stored.size()), 0) != SQLITE_OK) {
        return ISAM_NO_RECORD;
    }
    return fromStored(stored.data(), stored.size());
}

int Member::rewrite(const void* record, std::size_t length) {
    if (!hasCurrent_) return ISAM_NO_CURRENT_RECORD;
    std::vector<std::string> keys;
    int rc = buildKeys(record, length, &keys);
    if (rc) return rc;
    // SQLite rewrites the entry of every index whose column is assigned, changed or
    // not, so only the key columns that change are assigned.
    const std::size_t n = indexes_.size();
    const std::uint32_t all = n == 32 ? ~0u : (1u << n) - 1;
    std::uint32_t changed = all;
    std::vector<std::string> old;
    rc = currentKeys(&old);
    if (rc == ISAM_DAMAGED) return rc;  // its keys in the indexes are unknown
    if (rc == ISAM_OK) {
        changed = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (old[i] != keys[i]) changed |= 1u << i;
        }
    }
    Statement& update = updates_[changed];
    rc = prepareOnce(update, [&] {
        std::string sql = "UPDATE " + quoted(table_) + " SET rec = ?1";
        for (std::size_t i = 0; i < n; ++i) {
            if (changed >> i & 1) sql += ", " + indexes_[i].column + " = ?" + std::to_string(i + 2);
        }
        return sql + " WHERE rowid = ?" + std::to_string(n + 2);
    });
    if (rc) return rc;
    resetCursors();
    forgetAheadFrom(current_);
    update.reset();
    const auto stored = toStore(record, length);
    update.bindBlob(1, stored.first, stored.second);
    for (std::size_t i = 0; i < n; ++i) {
        if (changed >> i & 1) bindKey(indexes_[i], update, int(i) + 2, keys[i]);
    }
    update.bindInt(int(n) + 2, current_);
    int step = update.step();
    update.reset();
    if (step != SQLITE_DONE) return fromSqlite(step);
    if (sqlite3_changes(db_) == 0) return ISAM_NO_CURRENT_RECORD;
    anchorAll(keys, current_);
    return ISAM_OK;
}

int Member::remove() {
    if (!hasCurrent_) return ISAM_NO_CURRENT_RECORD;
    int rc = prepareOnce(delete_, [&] {
        std::string sql = "DELETE FROM " + quoted(table_) + " WHERE rowid = ?1 RETURNING rowid";
        for (const IndexState& ix : indexes_) sql += ", " + ix.column;
        return sql;
    });
    if (rc) return rc;
    resetCursors();
    forgetAheadFrom(current_);
    delete_.reset();
    delete_.bindInt(1, current_);
    int step = delete_.step();
    if (step != SQLITE_ROW) {
        delete_.reset();
        return step == SQLITE_DONE ? ISAM_NO_CURRENT_RECORD : fromSqlite(step);
    }
    // The deleted record's keys stay as the position, so that next() continues
    // with the record that followed it.
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < indexes_.size(); ++i) keys.push_back(columnString(delete_, int(i) + 1));
    while ((step = delete_.step()) == SQLITE_ROW) {
    }
    delete_.reset();
    if (step != SQLITE_DONE) return fromSqlite(step);
    anchorAll(keys, current_);
    return ISAM_OK;
}

int Member::current(Position* position) const {
    if (!hasCurrent_) return ISAM_NO_CURRENT_RECORD;
    *position = static_cast<Position>(current_);
    return ISAM_OK;
}

void Member::resetCursors() {
    for (IndexState& ix : indexes_) {
        if (ix.cursor) ix.cursor->reset();
        ix.cursor = nullptr;
    }
    if (recordSource_) recordSource_->reset();
    recordSource_ = nullptr;
}

void Member::restoreLocales(const std::vector<std::uint32_t>& locales, std::uint32_t dataLocale) {
    resetCursors();
    dataLocale_ = dataLocale;
    for (std::size_t i = 0; i < indexes_.size() && i < locales.size(); ++i) {
        if (indexes_[i].locale == locales[i]) continue;
        indexes_[i].locale = locales[i];
        for (auto& shape : indexes_[i].statements) {
            for (Statement& st : shape) st = Statement();
        }
    }
}

int Member::setIndexLocale(std::size_t index, std::uint32_t lcid) {
    IndexState& ix = indexes_[index];
    const bool wasCollated = collated(ix);
    const std::uint32_t previous = ix.locale;
    ix.locale = lcid;
    if (!isLocaleOrdered(ix.definition) || (!wasCollated && !collated(ix)) || previous == lcid) {
        return ISAM_OK;
    }
    // The index's order depends on the locale: rebuild it in the new order. The
    // stored keys change type too (text under a collation, bytes otherwise).
    resetCursors();
    for (auto& shape : ix.statements) {
        for (Statement& st : shape) st = Statement();
    }
    const std::string cast = collated(ix) ? "TEXT" : "BLOB";
    int rc = execute(db_, "DROP INDEX IF EXISTS " + quoted(localName(ix.definition.name)));
    if (!rc) {
        rc = execute(db_, "UPDATE " + quoted(table_) + " SET " + ix.column + " = CAST(" + ix.column +
                              " AS " + cast + ")");
    }
    if (!rc) rc = execute(db_, createIndexSql(table_, ix.definition, index, lcid));
    if (rc) ix.locale = previous;
    return rc;
}

// ---- Resources ------------------------------------------------------------------------------

// Prepares a resource statement (the side table is made on first use) and binds
// the resource's type and number as ?1 and ?2. The statement text is built only
// when it is first prepared.
int Member::resourceStatement(Statement& st, const char* head, const char* tail,
                              std::uint32_t type, std::uint32_t number) {
    if (!st.prepared()) {
        const std::string resources = quoted(table_ + "$res");
        int rc = execute(db_, "CREATE TABLE IF NOT EXISTS " + resources +
                                  "(type INTEGER, number INTEGER, data BLOB NOT NULL,"
                                  " PRIMARY KEY(type, number)) WITHOUT ROWID");
        if (!rc) rc = st.prepare(db_, head + resources + tail);
        if (rc) return rc;
    }
    st.reset();
    st.bindInt(1, type);
    st.bindInt(2, number);
    return ISAM_OK;
}

int Member::addResource(std::uint32_t type, std::uint32_t number, const void* data,
                        std::size_t length, bool replace) {
    if (!data && length) return ISAM_BAD_PARAMETER;
    Statement& st = replace ? resourceReplace_ : resourceInsert_;
    int rc = resourceStatement(st, replace ? "INSERT OR REPLACE INTO " : "INSERT INTO ",
                               "(type, number, data) VALUES(?1, ?2, ?3)", type, number);
    if (rc) return rc;
    const auto stored = toStore(data, length);
    st.bindBlob(3, stored.first, stored.second);
    const int step = st.step();
    st.reset();
    if ((step & 0xff) == SQLITE_CONSTRAINT) return ISAM_RESOURCE_EXISTS;
    return step == SQLITE_DONE ? ISAM_OK : fromSqlite(step);
}

int Member::readResource(std::uint32_t type, std::uint32_t number, void* buffer,
                         std::size_t capacity, std::size_t* length) {
    int rc = resourceStatement(resourceRead_, "SELECT data FROM ",
                               " WHERE type = ?1 AND number = ?2", type, number);
    if (rc) return rc;
    const int step = resourceRead_.step();
    if (step == SQLITE_ROW) {
        const unsigned char* stored = resourceRead_.columnBytes(0);
        std::size_t n = 0;
        if (!recordOf(stored, resourceRead_.columnSize(0), &n)) {
            rc = ISAM_DAMAGED;
        } else if (n > capacity) {
            rc = ISAM_BUFFER_TOO_SHORT;
        } else if (n) {
            std::memcpy(buffer, stored, n);
        }
        if (rc != ISAM_DAMAGED) *length = n;
    } else {
        rc = step == SQLITE_DONE ? ISAM_NO_RECORD : fromSqlite(step);
    }
    resourceRead_.reset();
    return rc;
}

int Member::resourceNumbers(std::uint32_t type, std::vector<std::uint32_t>* numbers) {
    numbers->clear();
    // Rarely asked: a statement of its own that lives only for this call.
    Statement st;
    int rc = resourceStatement(st, "SELECT number FROM ", " WHERE type = ?1 AND number >= ?2 ORDER BY number",
                               type, 0);
    int step = SQLITE_DONE;
    while (!rc && (step = st.step()) == SQLITE_ROW) {
        numbers->push_back(static_cast<std::uint32_t>(st.columnInt(0)));
    }
    if (!rc && step != SQLITE_DONE) rc = fromSqlite(step);
    return rc;
}

int Member::deleteResource(std::uint32_t type, std::uint32_t number) {
    int rc = resourceStatement(resourceDelete_, "DELETE FROM ",
                               " WHERE type = ?1 AND number = ?2", type, number);
    if (rc) return rc;
    const int step = resourceDelete_.step();
    resourceDelete_.reset();
    if (step != SQLITE_DONE) return fromSqlite(step);
    return sqlite3_changes(db_) ? ISAM_OK : ISAM_NO_RECORD;
}

}  // namespace isam
