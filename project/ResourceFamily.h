// What every family of resource records shares: records that belong to a language
// module (or a parent record), name their text by a TextId and keep that phrase's
// use count in step, carry the translation-state markers in Flags and may hold a
// notice. Each family's operations are a few lines over these steps.
#pragma once

#include <cstdint>
#include <functional>

#include "core/Catalogue.h"
#include "core/Markers.h"
#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

namespace qvb {

// A family's table and the names the shared steps need.
struct ResourceFamily {
    int table;            // table list index
    const char* idField;  // the identifier, unique key I1
    RESTABLE kind;        // how exceptions name an element of the family
    int ownerIndex;       // the index whose key begins with the owner's id
    int textIndex;        // the index whose key begins with the TextId
};

// How much of a record the find of an update or delete loads. Some operations
// take the fixed part only: their variable fields are then the values the table
// object holds from its previous operation, which a rewrite stores.
enum class Loading { FixedPart, Whole };

// Whether an add under the caller's identifier counts its phrase up.
enum class Counting { None, PhraseUp };

class ResourceFamilyOps {
public:
    ResourceFamilyOps(CDbProject& db, const ResourceFamily& family)
        : db_(db), family_(family), table_(db.Table(family.table)) {}

    // The allocating add: filters stale, the phrase counted up, the next identifier
    // handed to the caller, the record added. `fill` sets the family's own fields.
    template <typename Fill>
    int addNew(DWORD* pId, DWORD textId, Fill fill) {
        const auto record = withTextId(textId, fill);
        if (const int rc = checkFill(table_, record)) return rc;
        db_.MarkFiltersStale();
        if (!db_.ChangeCountInDictionary(textId, TRUE)) return failure();
        return addWithNewId(table_, family_.idField, pId, record);
    }

    // The add under the caller's identifier, which leaves the filters alone.
    template <typename Fill>
    int addWithCallersId(DWORD id, DWORD textId, Counting counting, Fill fill) {
        const auto record = withTextId(textId, fill);
        if (const int rc = checkFill(table_, record)) return rc;
        if (counting == Counting::PhraseUp && !db_.ChangeCountInDictionary(textId, TRUE)) {
            return failure();
        }
        return addWithId(table_, family_.idField, id, record);
    }

    // The update that keeps the phrase counts: the new phrase is counted up before
    // the old one is counted down, so keeping the phrase never passes through 0.
    template <typename Fill>
    int update(DWORD id, DWORD newTextId, Loading loading, Fill fill) {
        const auto record = withTextId(newTextId, fill);
        if (const int rc = checkFill(table_, record)) return rc;
        db_.MarkFiltersStale();
        if (!db_.ChangeCountInDictionary(newTextId, TRUE)) return failure();
        std::uint32_t oldTextId = 0;
        int rc = find(id, loading);
        if (rc == isam::ISAM_OK) rc = RecordReader(table_).Long("TextId", &oldTextId).error();
        if (rc != isam::ISAM_OK) return rc;
        if (!db_.ChangeCountInDictionary(oldTextId, FALSE)) return failure();
        RecordWriter writer(table_);
        record(writer);
        return writer.error() != isam::ISAM_OK ? writer.error() : table_.Rewrite();
    }

    // The delete that takes what hangs on the record along: the exceptions bound to
    // it, one count of its phrase and its notice.
    int remove(DWORD id, Loading loading);
    // The record alone.
    int removeOnly(DWORD id) { return deleteById(table_, id); }

    // The identifiers of the records whose key in `index` begins with `key` and
    // that pass the current filter, appended in key order.
    int enumerate(CDWordArray& ids, int index, DWORD key);
    // The same, calling `listed` for each id appended while its record is the
    // table's current one, so that the caller can take more of its fields.
    int enumerate(CDWordArray& ids, int index, DWORD key, const std::function<void(const CIsamTable&)>& listed);
    // Their number, stored also after a failure (then the number gathered so far).
    int count(DWORD* pCount, int index, DWORD key);

    // The refresh passes over the records of each language module: the marker is
    // set in the records whose phrase the dictionary pass listed and cleared in
    // the others; only records whose Flags change are written.
    int markNotTranslated(const CDWordArray& owners);
    // `included`: the user filter's switch for this family.
    int markUserFilter(const CDWordArray& owners, bool included);

private:
    // The record's fields: the TextId and the family's own.
    template <typename Fill>
    static auto withTextId(DWORD textId, Fill& fill) {
        return [textId, &fill](RecordWriter& r) {
            r.Long("TextId", textId);
            fill(r);
        };
    }
    int find(DWORD id, Loading loading);
    // The error a failed operation of the database object left.
    int failure() const;
    template <typename Belongs>
    int markRecords(const CDWordArray& owners, std::uint32_t marker, Belongs belongs);

    CDbProject& db_;
    const ResourceFamily& family_;
    CIsamTable& table_;
};

}  // namespace qvb
