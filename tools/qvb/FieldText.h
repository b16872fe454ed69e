// Field values as `qvb dump` shows them, as read through the record layer's
// GetTextAt: numbers in decimal, texts and binaries as their bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvbtool {

enum class ValueKind { Number, Text, Binary };

// How a field of a catalogue type is shown.
ValueKind valueKindOf(std::uint16_t fieldType);

// Binaries show their length and at most this many leading bytes in hex.
constexpr std::size_t kHexPrefixBytes = 16;

// For people: texts quoted with C escapes (the bytes are code-page text, so a byte
// of 0x80 or above is shown as \xNN) and their trailing padding counted, binaries
// as "N bytes 0a0b...".
void appendReadable(std::string& out, ValueKind kind, const std::string& value);

// A text quoted as appendReadable quotes it, every byte kept (no padding counted).
void appendQuoted(std::string& out, const std::string& bytes);

// As a JSON value: a number, a string, or {"length": N, "hex": "..."}.
void appendJson(std::string& out, ValueKind kind, const std::string& value);

// A JSON string. The text is single-byte code-page text: a byte of 0x80 or above
// becomes \u00XX, as if it were Latin-1, so that the output is always valid JSON.
void appendJsonString(std::string& out, const std::string& bytes);

}  // namespace qvbtool
