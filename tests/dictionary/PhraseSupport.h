// Pieces the phrase tests share: adding phrases with named values, and reading back
// the parts of a phrase a test looks at.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "qvb/qvb.h"

namespace phrasetest {

struct NewPhrase {
    DWORD pair = 1;
    const char* source = "";
    const char* filtered = "";
    const char* translation = "";
    WORD maxChars = 0;
    int readOnly = 0;
    int translated = 0;
    int standard = 0;
    DWORD flags = 0;
};

// Adds a phrase with a new identifier and returns the identifier.
inline DWORD add(CDbObject& db, const NewPhrase& p) {
    DWORD id = 0;
    EXPECT_EQ(1, db.AddDictionary(&id, p.pair, p.source, p.filtered, p.translation, p.maxChars,
                                  p.readOnly, p.translated, p.standard, p.flags))
        << db.GetError();
    return id;
}

struct Stored {
    DWORD pair = 0;
    CString source, filtered, translation;
    WORD maxChars = 0;
    int readOnly = 0;
    DWORD count = 0;
    int translated = 0;
    int standard = 0;
    DWORD flags = 0;
};

// Reads a phrase that must exist.
inline Stored read(CDbObject& db, DWORD id) {
    Stored s;
    int used = 0;
    EXPECT_EQ(1, db.GetDictionary(id, &s.pair, &s.source, &s.filtered, &s.translation,
                                  &s.maxChars, &s.readOnly, &used, &s.translated, &s.standard,
                                  &s.flags))
        << "phrase " << id << " error " << db.GetError();
    EXPECT_EQ(1, db.GetDictionary(id, nullptr, static_cast<CString*>(nullptr), nullptr, nullptr,
                                  nullptr, &s.count, nullptr, nullptr, nullptr));
    EXPECT_EQ(s.count > 0 ? 1 : 0, used);
    return s;
}

inline bool exists(CDbObject& db, DWORD id) {
    DWORD pair = 0;
    const int found = db.GetDictionary(id, &pair, static_cast<CString*>(nullptr), nullptr, nullptr,
                                       nullptr, static_cast<int*>(nullptr), nullptr, nullptr, nullptr);
    if (!found) {
        EXPECT_EQ(101, db.GetError());
    }
    return found != 0;
}

inline std::vector<DWORD> toVector(const CDWordArray& ids) {
    std::vector<DWORD> out;
    for (int i = 0; i < ids.GetSize(); ++i) out.push_back(ids[i]);
    return out;
}

inline std::vector<DWORD> family(CDbObject& db, DWORD pair, const char* source) {
    CDWordArray ids;
    EXPECT_EQ(1, db.EnumDictionary(ids, pair, source)) << db.GetError();
    return toVector(ids);
}

}  // namespace phrasetest
