// Pieces the resource-table tests share: a project with a language pair, phrases
// with named states, and reading back what a test looks at.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <vector>

#include "tests/db/DbTestSupport.h"

namespace resourcetest {

inline std::vector<DWORD> toVector(const CDWordArray& ids) {
    std::vector<DWORD> out;
    for (int i = 0; i < ids.GetSize(); ++i) out.push_back(ids[i]);
    return out;
}

inline CDWordArray list(std::initializer_list<DWORD> values) {
    CDWordArray ids;
    for (DWORD v : values) ids.Add(v);
    return ids;
}

// A user filter that takes every state and no text.
inline USERFILTER anyState(const char* text = "") {
    USERFILTER f{};
    std::strncpy(f.FindText, text, sizeof f.FindText - 1);
    f.StateTranslated = f.StateUsed = f.StateReadOnly = 2;
    f.StateStandard = f.StateLimited = f.StateNotice = 2;
    return f;
}

class ResourceTest : public dbtest::DbTest<CDbProject> {
protected:
    void SetUp() override {
        DbTest::SetUp();
        ASSERT_EQ(1, db_.AddSLang(kPair, 1031, 1033, "Arial", 0)) << db_.GetError();
    }

    static constexpr DWORD kPair = 1;

    // A phrase of the pair with a new identifier.
    DWORD phrase(const char* source, bool translated = false, DWORD pair = kPair) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddDictionary(&id, pair, source, source, translated ? source : "", 0, 0,
                                       translated ? 1 : 0, 0, 0))
            << db_.GetError();
        return id;
    }

    // The use count of a phrase that must exist.
    DWORD useCount(DWORD textId) {
        DWORD count = 0;
        EXPECT_EQ(1, db_.GetDictionary(textId, nullptr, static_cast<CString*>(nullptr), nullptr,
                                       nullptr, nullptr, &count, nullptr, nullptr, nullptr))
            << "phrase " << textId << " error " << db_.GetError();
        return count;
    }

    bool phraseExists(DWORD textId) {
        DWORD pair = 0;
        return db_.GetDictionary(textId, &pair, static_cast<CString*>(nullptr), nullptr, nullptr,
                                 nullptr, static_cast<int*>(nullptr), nullptr, nullptr, nullptr) != 0;
    }

    // Runs `list` with the filter set to `filter` and gives back what it appended.
    template <typename List>
    std::vector<DWORD> listedUnder(FILTER filter, List list) {
        const FILTER saved = db_.GetFilter();
        db_.SetFilter(filter);
        CDWordArray ids;
        EXPECT_EQ(1, list(ids)) << db_.GetError();
        db_.SetFilter(saved);
        return toVector(ids);
    }

    DWORD exceptionFor(DWORD textId, RESTABLE kind, DWORD element) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddException(&id, textId, kind, element, 0)) << db_.GetError();
        return id;
    }

    // The elements of the exceptions bound to a phrase.
    std::vector<DWORD> exceptionElements(DWORD textId) {
        CDWordArray ids;
        EXPECT_EQ(1, db_.EnumExceptions(ids, textId)) << db_.GetError();
        std::vector<DWORD> elements;
        for (DWORD id : toVector(ids)) {
            DWORD text = 0, kind = 0, element = 0, flags = 0;
            EXPECT_EQ(1, db_.GetException(id, &text, &kind, &element, &flags));
            elements.push_back(element);
        }
        return elements;
    }

    DWORD notice(const char* text) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddNotice(&id, text)) << db_.GetError();
        return id;
    }

    bool noticeExists(DWORD id) {
        CString text;
        return db_.GetNotice(id, text) != 0;
    }
};

}  // namespace resourcetest
