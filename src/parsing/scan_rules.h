// The scanner's fixed rules: byte classes and the operator table.
#ifndef ZUUTL_PARSING_SCAN_RULES_H
#define ZUUTL_PARSING_SCAN_RULES_H

#include <array>
#include <cstdint>

#include "strings/text_rules.h"

namespace zu::scan {

// What reading gives at the end of the text: one past every byte, in no
// class, equal to no byte.
constexpr unsigned kEndOfText = 256;

constexpr unsigned char kLineFeed = '\n';
constexpr unsigned char kHashSign = '#';
constexpr unsigned char kDollarSign = '$';
constexpr unsigned char kPoint = '.';
constexpr unsigned char kParenOpen = '(';
constexpr unsigned char kParenClose = ')';
constexpr unsigned char kBraceOpen = '{';
constexpr unsigned char kBraceClose = '}';
constexpr unsigned char kDash = '-';
constexpr unsigned char kSlash = '/';
constexpr unsigned char kStar = '*';
// Bytes that end a bare run besides the control bytes and the blank.
constexpr unsigned char kBareSet[] = ",/()|";
constexpr unsigned char kLastBareControl = ' ';

enum ByteClass : std::uint8_t {
  kWhite = 1,
  kDigit = 2,
  kWordStart = 4,
  kWordPart = 8,
  kBareStop = 16,
  kInBareSet = 32,
};

// Indexed by a byte or by kEndOfText.
constexpr std::array<std::uint8_t, kEndOfText + 1> makeClasses() {
  std::array<std::uint8_t, kEndOfText + 1> table{};
  for (unsigned b = 0; b < kEndOfText; ++b) {
    const auto c = static_cast<unsigned char>(b);
    std::uint8_t bits = 0;
    if (zu::bytes::isWhiteSpace(c)) bits |= kWhite;
    if (zu::bytes::isDigit(c)) bits |= kDigit;
    if (zu::bytes::isWordStart(c)) bits |= kWordStart;
    if (zu::bytes::isWordPart(c)) bits |= kWordPart;
    if (c <= kLastBareControl) bits |= kBareStop;
    table[b] = bits;
  }
  for (const unsigned char* at = kBareSet; *at != 0; ++at) table[*at] |= kBareStop | kInBareSet;
  return table;
}
inline constexpr auto kClasses = makeClasses();

inline bool hasClass(unsigned b, ByteClass bits) { return (kClasses[b] & bits) != 0; }

// The operators, each byte followed by the pairs it starts, in lookup order;
// a second byte of 0 marks a single byte, and {0, 0} ends the table.
struct Operator {
  unsigned char first, second;
};
constexpr Operator kOperators[] = {
    {'=', 0},   {'=', '='}, {'=', '*'}, {'=', '<'}, {'=', '>'}, {'+', 0},   {'+', '+'}, {'&', 0},
    {'&', '&'}, {'|', 0},   {'|', '|'}, {'-', 0},   {'-', '-'}, {'/', 0},   {'/', '/'}, {'*', 0},
    {'*', '*'}, {'*', '='}, {'>', 0},   {'>', '='}, {'<', 0},   {'<', '='}, {'<', '>'}, {'!', 0},
    {'!', '='}, {'!', '<'}, {'!', '>'}, {'?', 0},   {',', 0},   {'(', 0},   {')', 0},   {'.', 0},
    {';', 0},   {':', 0},   {'{', 0},   {'}', 0},   {'$', 0},   {'#', 0},   {'%', 0},   {'@', 0},
    {'"', 0},   {'\'', 0},  {'`', 0},   {0, 0},
};
constexpr unsigned kOperatorCount = 43;
static_assert(sizeof kOperators / sizeof kOperators[0] == kOperatorCount + 1);

// A pair's code is its first byte in the high half of 16 bits.
constexpr std::uint32_t kPairShift = 8;
constexpr std::uint32_t pairCode(unsigned first, unsigned second) {
  return (first << kPairShift) + second;
}

// Index of each byte's first entry in kOperators; kOperatorCount for none.
constexpr std::array<std::uint8_t, kEndOfText + 1> makeOperatorIndex() {
  std::array<std::uint8_t, kEndOfText + 1> index{};
  for (auto& entry : index) entry = kOperatorCount;
  for (unsigned i = kOperatorCount; i-- > 0;)
    index[kOperators[i].first] = static_cast<std::uint8_t>(i);
  return index;
}
inline constexpr auto kOperatorIndex = makeOperatorIndex();

}  // namespace zu::scan

#endif
