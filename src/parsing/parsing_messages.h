// Catalogue rows that the connect-string parser and the older tokenizer
// raise. Internal: clients
// see the numbers and texts through the error list.
#ifndef ZUUTL_PARSING_PARSING_MESSAGES_H
#define ZUUTL_PARSING_PARSING_MESSAGES_H

namespace zu::msg {

// "Token too big: %s1"
inline constexpr unsigned short kTokenTooBig = 2700;
// "Unmatched quote character: %s1"
inline constexpr unsigned short kUnmatchedQuote = 2703;

// "Error parsing connect string at offset %n1. "
inline constexpr unsigned short kParseAtOffset = 2704;
// "Error parsing %s2 at offset %n1."
inline constexpr unsigned short kParseNamedAtOffset = 2705;
// " Attribute '%s1' specified more than once."
inline constexpr unsigned short kAttributeRepeated = 2706;
// " Attribute specified twice using keywords '%s1' and '%s2'."
inline constexpr unsigned short kAttributeTwoKeywords = 2707;

}  // namespace zu::msg

#endif
