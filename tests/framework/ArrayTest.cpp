// The framework arrays: sizing, insertion and removal at the edges, copies, and element
// types that own memory.
#include <gtest/gtest.h>

#include <vector>

#include "qvb/CArray.h"
#include "qvb/CDWordArray.h"
#include "qvb/CPtrArray.h"
#include "qvb/CString.h"
#include "qvb/CTypedPtrArray.h"

namespace {

template <class Array>
std::vector<DWORD> contents(const Array& a) {
    std::vector<DWORD> v;
    for (int i = 0; i < a.GetSize(); ++i) v.push_back(static_cast<DWORD>(a.GetAt(i)));
    return v;
}

CDWordArray makeDWords(std::initializer_list<DWORD> values) {
    CDWordArray a;
    for (DWORD v : values) a.Add(v);
    return a;
}

using V = std::vector<DWORD>;

TEST(DWordArrayTest, SetSizeZeroFillsGrowthAndDropsTheTail) {
    CDWordArray a;
    EXPECT_TRUE(a.IsEmpty());
    EXPECT_EQ(-1, a.GetUpperBound());
    EXPECT_EQ(nullptr, a.GetData());

    a.SetSize(3);
    EXPECT_EQ(V({0, 0, 0}), contents(a));
    a[0] = 7;
    a.SetAt(1, 8);
    a.ElementAt(2) = 9;
    a.SetSize(1);
    EXPECT_EQ(V({7}), contents(a));
    a.SetSize(3, 16);  // the dropped elements do not come back
    EXPECT_EQ(V({7, 0, 0}), contents(a));
    EXPECT_EQ(3, a.GetCount());
    EXPECT_EQ(2, a.GetUpperBound());

    a.SetSize(-4);
    EXPECT_TRUE(a.IsEmpty());
    a.SetAtGrow(2, 5);
    EXPECT_EQ(V({0, 0, 5}), contents(a));
    a.FreeExtra();
    EXPECT_EQ(5u, a.GetData()[2]);
    a.RemoveAll();
    EXPECT_EQ(0, a.GetSize());
}

TEST(DWordArrayTest, InsertAtMiddleEndAndBeyond) {
    CDWordArray a = makeDWords({1, 2, 3});
    a.InsertAt(1, 10, 2);
    EXPECT_EQ(V({1, 10, 10, 2, 3}), contents(a));
    a.InsertAt(5, 20);
    EXPECT_EQ(V({1, 10, 10, 2, 3, 20}), contents(a));
    a.InsertAt(8, 30);  // past the end: the gap is zero-filled
    EXPECT_EQ(V({1, 10, 10, 2, 3, 20, 0, 0, 30}), contents(a));
    a.InsertAt(0, 99, 0);
    EXPECT_EQ(9, a.GetSize());

    CDWordArray b = makeDWords({4, 5});
    b.InsertAt(1, &b);  // inserting the array into itself
    EXPECT_EQ(V({4, 4, 5, 5}), contents(b));
    b.InsertAt(6, static_cast<const CDWordArray*>(nullptr));
    EXPECT_EQ(4, b.GetSize());
    CDWordArray c = makeDWords({8});
    b.InsertAt(6, &c);
    EXPECT_EQ(V({4, 4, 5, 5, 0, 0, 8}), contents(b));
}

TEST(DWordArrayTest, RemoveAtClampsARangePastTheEnd) {
    CDWordArray a = makeDWords({0, 1, 2, 3, 4, 5});
    a.RemoveAt(1, 2);
    EXPECT_EQ(V({0, 3, 4, 5}), contents(a));
    a.RemoveAt(0);
    EXPECT_EQ(V({3, 4, 5}), contents(a));
    a.RemoveAt(1, 1000);
    EXPECT_EQ(V({3}), contents(a));
    a.RemoveAt(0, 0);
    a.RemoveAt(1, 0);
    EXPECT_EQ(V({3}), contents(a));
}

TEST(DWordArrayTest, AppendCopyAndValueSemantics) {
    CDWordArray a = makeDWords({1, 2});
    const CDWordArray b = makeDWords({3});
    EXPECT_EQ(2, a.Append(b));
    EXPECT_EQ(3, a.Append(a));
    EXPECT_EQ(V({1, 2, 3, 1, 2, 3}), contents(a));

    CDWordArray copy(a);
    copy[0] = 100;
    EXPECT_EQ(1u, a[0]);
    CDWordArray assigned;
    assigned = a;
    assigned.Copy(b);
    EXPECT_EQ(V({3}), contents(assigned));
    assigned.Copy(assigned);
    EXPECT_EQ(V({3}), contents(assigned));
    EXPECT_EQ(6, a.GetSize());

    EXPECT_TRUE(a.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_STREQ("CDWordArray", a.GetRuntimeClass()->m_lpszClassName);
}

TEST(ArrayDeathTest, BadIndexStops) {
    CDWordArray a = makeDWords({1, 2});
    EXPECT_DEATH(a.GetAt(2), "out of range");
    EXPECT_DEATH(a.SetAt(-1, 0), "out of range");
    EXPECT_DEATH(a.RemoveAt(2), "out of range");
    CPtrArray p;
    EXPECT_DEATH(p.ElementAt(0), "out of range");
    CArray<int> c;
    EXPECT_DEATH(c.InsertAt(-1, 0), "out of range");
}

struct Item {
    int n = 0;
    const char* p = nullptr;
};

TEST(PtrArrayTest, TypedAccessOverUntypedStorage) {
    Item items[3] = {{1}, {2}, {3}};
    CTypedPtrArray<CPtrArray, Item*> a;
    EXPECT_EQ(0, a.Add(&items[0]));
    a.InsertAt(0, &items[1]);
    a.SetAtGrow(3, &items[2]);
    ASSERT_EQ(4, a.GetSize());
    EXPECT_EQ(nullptr, a.GetAt(2));
    EXPECT_EQ(2, a[0]->n);
    EXPECT_EQ(1, a.GetAt(1)->n);

    a[2] = &items[0];
    a.ElementAt(2)->n = 10;
    EXPECT_EQ(10, items[0].n);

    CTypedPtrArray<CPtrArray, Item*> b;
    b.Copy(a);
    b.RemoveAt(0, 2);
    EXPECT_EQ(2, b.Append(a));
    EXPECT_EQ(&items[1], b[2]);
    const CPtrArray& untyped = b;
    EXPECT_EQ(static_cast<void*>(&items[2]), untyped[1]);
    EXPECT_TRUE(untyped.IsKindOf(RUNTIME_CLASS(CPtrArray)));
}

struct Entry {
    CString name;
    DWORD id = 0;
};

TEST(CArrayTest, OwningElementsSurviveGrowthInsertionAndRemoval) {
    CArray<Entry> a;
    for (DWORD i = 0; i < 200; ++i) {
        Entry e;
        e.name.Format("entry number %u with a heap-sized name", i);
        e.id = i;
        a.Add(e);
    }
    // Elements passed in that refer into the array itself, with storage that must move.
    a.FreeExtra();
    a.InsertAt(1, a[150], 3);
    a.FreeExtra();
    a.SetAtGrow(210, a[0]);
    a.SetAtGrow(5, a[202]);
    a.FreeExtra();
    a.InsertAt(213, a[3]);
    ASSERT_EQ(214, a.GetSize());
    EXPECT_EQ("entry number 150 with a heap-sized name", a[213].name);
    EXPECT_TRUE(a[212].name.IsEmpty());
    EXPECT_EQ("entry number 150 with a heap-sized name", a[3].name);
    EXPECT_EQ("entry number 0 with a heap-sized name", a[210].name);
    EXPECT_EQ(199u, a[5].id);
    EXPECT_TRUE(a[209].name.IsEmpty());
    EXPECT_EQ(0u, a[209].id);

    a.RemoveAt(0, 4);
    EXPECT_EQ(1u, a[0].id);
    a.RemoveAt(190, 100);
    EXPECT_EQ(190, a.GetSize());

    CArray<Entry> b(a);
    b[0].name = "changed";
    EXPECT_EQ(190, b.Append(a));
    EXPECT_EQ("entry number 1 with a heap-sized name", b[190].name);
    EXPECT_EQ("entry number 1 with a heap-sized name", a[0].name);
    b.InsertAt(0, &b);
    EXPECT_EQ(760, b.GetSize());
    b.SetSize(1);
    EXPECT_EQ("changed", b[0].name);
    b.Copy(a);
    EXPECT_EQ(a.GetSize(), b.GetSize());
    b.RemoveAll();
    EXPECT_TRUE(b.IsEmpty());
}

TEST(CArrayTest, PointerElementsPassedByValue) {
    Item item{4};
    CArray<Item*, Item*> a;
    a.SetSize(2);
    EXPECT_EQ(nullptr, a[1]);
    a.SetAt(1, &item);
    a.InsertAt(3, &item);
    ASSERT_EQ(4, a.GetSize());
    EXPECT_EQ(&item, a[1]);
    EXPECT_EQ(nullptr, a[2]);
    EXPECT_EQ(&item, a[3]);
    const CArray<Item*, Item*>& ca = a;
    EXPECT_EQ(&item, ca.GetData()[3]);
}

}  // namespace
