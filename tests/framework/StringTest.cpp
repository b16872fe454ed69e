// The byte string: clamping of positions, searching, trimming, editing, formatting and
// the raw-buffer round trip.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qvb/CString.h"

namespace {

TEST(StringTest, ConstructionNeverYieldsANullText) {
    const CString fromNull(static_cast<const char*>(nullptr));
    EXPECT_TRUE(fromNull.IsEmpty());
    EXPECT_STREQ("", static_cast<const char*>(fromNull));

    EXPECT_EQ("abc", CString("abcdef", 3));
    EXPECT_EQ("", CString("abc", -2));
    EXPECT_EQ("", CString(nullptr, 5));
    const CString cut("ab\0cd", 5);  // the text ends at the zero byte
    EXPECT_EQ(2, cut.GetLength());

    EXPECT_EQ("xxx", CString('x', 3));
    EXPECT_EQ("x", CString('x'));
    EXPECT_TRUE(CString('x', -1).IsEmpty());

    CString moved("text");
    CString target(std::move(moved));
    EXPECT_EQ("text", target);
    EXPECT_NE(nullptr, static_cast<const char*>(moved));

    CString s("abc");
    EXPECT_EQ('c', s[2]);
    EXPECT_EQ('\0', s.GetAt(3));  // the terminator is readable
    s.SetAt(1, 'X');
    EXPECT_EQ("aXc", s);
    s.Empty();
    EXPECT_EQ(0, s.GetLength());
}

TEST(StringTest, MidLeftRightClampTheirArguments) {
    const CString s("abcdef");
    EXPECT_EQ("cdef", s.Mid(2));
    EXPECT_EQ("cd", s.Mid(2, 2));
    EXPECT_EQ("ab", s.Mid(-3, 2));  // a negative start counts from 0
    EXPECT_EQ("", s.Mid(2, -1));
    EXPECT_EQ("", s.Mid(2, 0));
    EXPECT_EQ("ef", s.Mid(4, 100));
    EXPECT_EQ("", s.Mid(6));
    EXPECT_EQ("", s.Mid(100, 5));
    EXPECT_EQ("abcdef", s.Mid(0, 2147483647));
    EXPECT_EQ("def", s.Mid(3, 2147483647));

    EXPECT_EQ("ab", s.Left(2));
    EXPECT_EQ("", s.Left(-1));
    EXPECT_EQ("abcdef", s.Left(99));
    EXPECT_EQ("ef", s.Right(2));
    EXPECT_EQ("", s.Right(-1));
    EXPECT_EQ("abcdef", s.Right(99));
    EXPECT_EQ("", CString().Right(3));
}

TEST(StringTest, FindHonoursTheStartIndex) {
    const CString s("abcabc");
    EXPECT_EQ(1, s.Find('b'));
    EXPECT_EQ(4, s.Find('b', 2));
    EXPECT_EQ(-1, s.Find('b', 5));
    EXPECT_EQ(-1, s.Find('c', 6));  // at the end
    EXPECT_EQ(-1, s.Find('a', 50));
    EXPECT_EQ(-1, s.Find('a', -1));
    EXPECT_EQ(-1, s.Find('z'));

    EXPECT_EQ(3, s.Find("abc", 1));
    EXPECT_EQ(-1, s.Find("abc", 4));
    EXPECT_EQ(-1, s.Find("c", 6));
    EXPECT_EQ(-1, s.Find("c", 7));
    EXPECT_EQ(-1, s.Find(static_cast<const char*>(nullptr)));

    EXPECT_EQ(5, s.ReverseFind('c'));
    EXPECT_EQ(-1, s.ReverseFind('z'));
    EXPECT_EQ(-1, CString().ReverseFind('a'));
}

TEST(StringTest, TrimVariants) {
    CString s(" \t\r\n\v\fword \t\n");
    EXPECT_EQ("word", s.Trim());
    CString blank(" \t \n ");
    EXPECT_EQ("", blank.TrimLeft());
    blank = " \t ";
    EXPECT_EQ("", blank.TrimRight());
    CString empty;
    EXPECT_EQ("", empty.Trim().TrimLeft('x').TrimRight("xy"));

    CString left("  a  ");
    EXPECT_EQ("a  ", left.TrimLeft());
    CString right("  a  ");
    EXPECT_EQ("  a", right.TrimRight());

    CString zeros("00120300");
    EXPECT_EQ("1203", zeros.Trim('0'));
    CString marks("-+-value+-x-");
    EXPECT_EQ("value+-x-", marks.TrimLeft("+-"));
    EXPECT_EQ("value+-x", marks.TrimRight("-"));
    EXPECT_EQ("value+-x", marks.TrimLeft(static_cast<const char*>(nullptr)));
    EXPECT_EQ("value+-x", marks.TrimRight(""));
}

TEST(StringTest, ReplaceCountsNonOverlappingMatches) {
    CString s("aaaa");
    EXPECT_EQ(2, s.Replace("aa", "b"));
    EXPECT_EQ("bb", s);

    s = "aaa";
    EXPECT_EQ(1, s.Replace("aa", "x"));  // the match consumed, the rest scanned after it
    EXPECT_EQ("xa", s);

    s = "a.b.c";
    EXPECT_EQ(2, s.Replace(".", "::"));
    EXPECT_EQ("a::b::c", s);
    EXPECT_EQ(2, s.Replace("::", ""));
    EXPECT_EQ("abc", s);
    EXPECT_EQ(1, s.Replace("b", static_cast<const char*>(nullptr)));
    EXPECT_EQ("ac", s);

    s = "ab";
    EXPECT_EQ(1, s.Replace("a", "aa"));  // the replacement is not rescanned
    EXPECT_EQ(1, s.Replace("b", "bab"));
    EXPECT_EQ("aabab", s);
    EXPECT_EQ(0, s.Replace("", "x"));
    EXPECT_EQ(0, s.Replace(static_cast<const char*>(nullptr), "x"));
    EXPECT_EQ(0, s.Replace("zz", "x"));
    EXPECT_EQ("aabab", s);

    s = "abab";  // arguments pointing into the string itself
    EXPECT_EQ(2, s.Replace(s.Mid(0, 2), s));
    EXPECT_EQ("abababab", s);
}

TEST(StringTest, CharacterReplaceAndRemove) {
    CString s("a-b-c-");
    EXPECT_EQ(3, s.Replace('-', '+'));
    EXPECT_EQ("a+b+c+", s);
    EXPECT_EQ(0, s.Replace('+', '+'));
    EXPECT_EQ(3, s.Remove('+'));
    EXPECT_EQ("abc", s);
    EXPECT_EQ(0, s.Remove('z'));
    CString same("aaa");
    EXPECT_EQ(3, same.Remove('a'));
    EXPECT_TRUE(same.IsEmpty());
}

TEST(StringTest, FormatAnyLength) {
    CString s;
    s.Format("%d-%s-%c-%.2f-%05u", -12, "text", 'z', 2.5, 42u);
    EXPECT_EQ("-12-text-z-2.50-00042", s);

    const std::string long_text(3000, 'q');
    s.Format("<%s|%d>", long_text.c_str(), 7);
    EXPECT_EQ(3004, s.GetLength());
    EXPECT_EQ(("<" + long_text + "|7>").c_str(), s);

    s.Format("%s", "");
    EXPECT_TRUE(s.IsEmpty());

    s = "base";
    s.AppendFormat("+%d", 1);
    s.AppendFormat("%s", long_text.c_str());
    EXPECT_EQ(4 + 2 + 3000, s.GetLength());
    EXPECT_EQ(0, std::strncmp(s, "base+1qqq", 9));

    s = "self";  // an argument that is the string's own text
    s.Format("[%s][%s]", s.GetString(), s.GetString());
    EXPECT_EQ("[self][self]", s);
    s.AppendFormat("%s", s.GetString());
    EXPECT_EQ("[self][self][self][self]", s);
}

TEST(StringTest, ComparisonIsByUnsignedBytes) {
    const CString high("\xE4");
    EXPECT_GT(high.Compare("z"), 0);
    EXPECT_TRUE(CString("z") < high);
    EXPECT_LT(CString("ab").Compare("abc"), 0);
    EXPECT_EQ(0, CString("").Compare(nullptr));

    EXPECT_EQ(0, CString("HeLLo").CompareNoCase("hello"));
    EXPECT_LT(CString("apple").CompareNoCase("BANANA"), 0);
    EXPECT_GT(CString("Apple").CompareNoCase("apP"), 0);
    EXPECT_LT(CString("_").CompareNoCase("A"), 0);  // folds to lower case: "_" sorts before letters
    EXPECT_NE(0, CString("\xC4").CompareNoCase("\xE4"));  // no folding beyond ASCII

    const CString a("abc");
    EXPECT_TRUE(a == "abc");
    EXPECT_TRUE("abc" == a);
    EXPECT_TRUE(a == CString("abc"));
    EXPECT_TRUE(a != "abd");
    EXPECT_TRUE("abd" != a);
    EXPECT_TRUE(a < "abd");
    EXPECT_TRUE("abb" < a);
    EXPECT_FALSE(a < a);
}

TEST(StringTest, CaseMappingIsAsciiOnly) {
    CString s("Mixed \xE4\xC4 Case 9");
    s.MakeUpper();
    EXPECT_EQ("MIXED \xE4\xC4 CASE 9", s);
    s.MakeLower();
    EXPECT_EQ("mixed \xE4\xC4 case 9", s);
    EXPECT_EQ("9 esac", s.Right(6).MakeReverse());
}

TEST(StringTest, ConcatenationForms) {
    const CString a("ab");
    EXPECT_EQ("abcd", a + CString("cd"));
    EXPECT_EQ("abcd", a + "cd");
    EXPECT_EQ("xyab", "xy" + a);
    EXPECT_EQ("abz", a + 'z');
    EXPECT_EQ("zab", 'z' + a);
    EXPECT_EQ("ab-ab", a + "-" + a);
    EXPECT_EQ("ab", a + static_cast<const char*>(nullptr));

    CString s("x");
    s += s;
    s += "y";
    s += 'z';
    s += static_cast<const char*>(s);
    EXPECT_EQ("xxyzxxyz", s);
}

TEST(StringTest, InsertAndDeleteClampTheirIndex) {
    CString s("ace");
    EXPECT_EQ(4, s.Insert(1, 'b'));
    EXPECT_EQ(6, s.Insert(-5, "<<"));
    EXPECT_EQ(7, s.Insert(100, '>'));
    EXPECT_EQ("<<abce>", s);
    EXPECT_EQ(7, s.Insert(3, static_cast<const char*>(nullptr)));
    EXPECT_EQ(14, s.Insert(0, s));
    EXPECT_EQ("<<abce><<abce>", s);

    s = "abcdef";
    EXPECT_EQ(5, s.Delete(2));
    EXPECT_EQ("abdef", s);
    EXPECT_EQ(3, s.Delete(-4, 2));  // the index is clamped first, then the count applies
    EXPECT_EQ("def", s);
    EXPECT_EQ(1, s.Delete(1, 100));
    EXPECT_EQ(1, s.Delete(1, 1));
    EXPECT_EQ(1, s.Delete(5));
    EXPECT_EQ(1, s.Delete(0, -1));
    EXPECT_EQ("d", s);
}

TEST(StringTest, SpanIncludingAndExcluding) {
    const CString s("123abc456");
    EXPECT_EQ("123", s.SpanIncluding("0123456789"));
    EXPECT_EQ("", s.SpanIncluding("abc"));
    EXPECT_EQ("123abc", s.SpanExcluding("654"));
    EXPECT_EQ(s, s.SpanExcluding("xyz"));
    EXPECT_EQ(s, s.SpanExcluding(nullptr));
    EXPECT_EQ("", s.SpanIncluding(nullptr));
}

TEST(StringTest, BufferRoundTrip) {
    CString s("abc");
    char* p = s.GetBuffer(100);
    ASSERT_NE(nullptr, p);
    EXPECT_STREQ("abc", p);
    std::memset(p, 'w', 100);
    p[100] = '\0';  // the buffer has room for the terminator
    s.ReleaseBuffer();
    EXPECT_EQ(100, s.GetLength());

    p = s.GetBuffer(10);
    std::strcpy(p, "short");
    s.ReleaseBuffer();
    EXPECT_EQ("short", s);

    p = s.GetBuffer(0);  // read-only use keeps the text
    EXPECT_STREQ("short", p);
    s.ReleaseBuffer(3);
    EXPECT_EQ("sho", s);
    s.GetBuffer(2);
    s.ReleaseBuffer(50);  // clamped to the buffer
    EXPECT_EQ("sho", s);

    p = s.GetBufferSetLength(5);
    EXPECT_EQ(5, s.GetLength());
    std::memcpy(p, "12345", 5);
    s.ReleaseBuffer();
    EXPECT_EQ("12345", s);
    s.GetBufferSetLength(-1);
    EXPECT_TRUE(s.IsEmpty());

    CString empty;
    p = empty.GetBuffer(0);
    EXPECT_EQ('\0', *p);
    empty.ReleaseBuffer();
    EXPECT_TRUE(empty.IsEmpty());
}

TEST(StringDeathTest, IndexOutOfRangeStops) {
    CString s("ab");
    EXPECT_DEATH(s.GetAt(3), "out of range");
    EXPECT_DEATH(s.SetAt(2, 'x'), "out of range");
    EXPECT_DEATH(s.GetAt(-1), "out of range");
}

}  // namespace
