// Compact text keys order exactly as the padded keys they replace, and a search
// value selects exactly the keys whose padded text begins with it.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "isam/Keys.h"

namespace {

using namespace isam;

constexpr std::uint16_t kWidth = 12;  // short, so that random texts reach the width

// An index of one integer segment and one text segment, as the resource tables have.
IndexDefinition ownerAndText() {
    IndexDefinition index;
    index.name = "t!TI2.Qvi";
    index.duplicates = true;
    index.segments = {{0, 4, kSegmentFixed}, {0, kWidth, kSegmentVariableText}};
    index.keyLength = 4 + kWidth + 4;
    return index;
}

std::string keyOf(const std::string& text, std::uint32_t owner, KeyForm form) {
    std::string record(reinterpret_cast<const char*>(&owner), 4);
    record += text;
    record.push_back('\0');
    const std::vector<FieldSpan> fields{{4, text.size()}};
    return buildKey(ownerAndText(), reinterpret_cast<const unsigned char*>(record.data()), fields, form);
}

int sign(int v) { return (v > 0) - (v < 0); }

// Texts rich in what matters: spaces, bytes below a space, bytes above, runs, and
// lengths around the segment's width.
std::string randomText(std::mt19937& rng) {
    static const std::string alphabet = std::string("  \t\x01\x1f!aZ~\x80\xff", 12);
    std::uniform_int_distribution<int> length(0, kWidth + 3);
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::string text;
    for (int n = length(rng); n > 0; --n) text.push_back(alphabet[pick(rng)]);
    return text;
}

bool inSearch(const std::string& key, const SearchKey& search) {
    if (search.hasUpper) return key >= search.bytes && key < search.upper;
    return key.compare(0, search.bytes.size(), search.bytes) == 0;
}

TEST(CompactKeyTest, OrdersAsThePaddedKey) {
    std::mt19937 rng(7);
    for (int i = 0; i < 20000; ++i) {
        const std::string a = randomText(rng), b = randomText(rng);
        const std::uint32_t owner = 1u + static_cast<std::uint32_t>(i % 2);
        const int padded = sign(keyOf(a, 1, KeyForm::Padded).compare(keyOf(b, owner, KeyForm::Padded)));
        const int compact = sign(keyOf(a, 1, KeyForm::Compact).compare(keyOf(b, owner, KeyForm::Compact)));
        ASSERT_EQ(padded, compact) << "'" << a << "' against '" << b << "'";
    }
}

TEST(CompactKeyTest, IsShortForShortTexts) {
    EXPECT_EQ(4u + 5u + 1u, keyOf("hello", 1, KeyForm::Compact).size());
    EXPECT_EQ(4u + 1u, keyOf("   ", 1, KeyForm::Compact).size());
    EXPECT_EQ(4u + kWidth, keyOf("hello", 1, KeyForm::Padded).size());
}

TEST(CompactKeyTest, SearchValuesSelectWhatTheyDidPadded) {
    std::mt19937 rng(11);
    std::vector<std::string> texts;
    for (int i = 0; i < 400; ++i) texts.push_back(randomText(rng));
    const IndexDefinition index = ownerAndText();
    const std::uint32_t owner = 1;
    for (int i = 0; i < 400; ++i) {
        // A value: the owner and the first bytes of a text, padded or not, with
        // trailing spaces at times.
        std::string text = randomText(rng);
        if (i % 3 == 0) text += std::string(static_cast<std::size_t>(i % 4), ' ');
        if (text.size() > kWidth) text.resize(kWidth);
        std::string value(reinterpret_cast<const char*>(&owner), 4);
        value += text;
        SearchKey padded, compact;
        ASSERT_EQ(ISAM_OK, parseSearchKey(index, value.data(), value.size(), false, KeyForm::Padded, &padded));
        ASSERT_EQ(ISAM_OK, parseSearchKey(index, value.data(), value.size(), false, KeyForm::Compact, &compact));
        for (const std::string& stored : texts) {
            ASSERT_EQ(inSearch(keyOf(stored, owner, KeyForm::Padded), padded),
                      inSearch(keyOf(stored, owner, KeyForm::Compact), compact))
                << "value '" << text << "' stored '" << stored << "'";
        }
    }
}

}  // namespace
