// zu convert FROM VALUE TO [WIDTH [left]]: the library's decimal and
// hexadecimal conversions at a prompt.
//
//   zu convert string " 42 " u16      text to a number of that type
//   zu convert int -7 string          a number to its decimal text
//   zu convert u32 255 hex 4          hexadecimal digits, at least WIDTH
//   zu convert u32 42 field 5 left    the fixed-width field, shown in [ ]
//
// Number types: u8 char u16 i16 u32 i32, also short, unsigned and int or long
// (the 32-bit forms). A VALUE of a number type is read by the library itself,
// so it is refused exactly as `string` to that type would be.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"
#include "error_scope.h"

namespace zutool {
namespace {

enum class Type { Text, U8, Char, U16, I16, U32, I32 };

struct TypeName {
  const char* name;
  Type type;
};

constexpr TypeName kTypes[] = {
    {"string", Type::Text}, {"u8", Type::U8},         {"char", Type::Char},
    {"u16", Type::U16},     {"i16", Type::I16},       {"short", Type::I16},
    {"u32", Type::U32},     {"unsigned", Type::U32},  {"i32", Type::I32},
    {"int", Type::I32},     {"long", Type::I32},
};
constexpr const char* kTypeList = "string u8 char u16 i16 short u32 unsigned i32 int long";

// Room for any decimal value: ten digits, a sign and the NUL.
constexpr std::size_t kDecimalRoom = 12;
// hexify writes at least the eight digits of a 32-bit value.
constexpr std::size_t kHexDigits = 8;
// The longest text a string grows to: its buffer stops at 65487 bytes.
constexpr std::uint32_t kLongestText = 65486;

const unsigned char* bytes(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.c_str());
}
const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }
const char* chars(const unsigned char* s) { return reinterpret_cast<const char*>(s); }

bool typeOf(const std::string& name, Type* type) {
  for (const TypeName& t : kTypes) {
    if (name == t.name) {
      *type = t.type;
      return true;
    }
  }
  return false;
}

bool isSigned(Type type) { return type == Type::Char || type == Type::I16 || type == Type::I32; }

// A number read by the library's own conversion of `type`; widened to 64
// bits so that one value serves every target.
ZuStatus readNumber(Type type, const std::string& text, long long* value) {
  ZuStatus status = ZU_ERROR;
  switch (type) {
    case Type::U8: { unsigned char v; status = convert(bytes(text), &v); *value = v; break; }
    case Type::Char: { char v; status = convert(bytes(text), &v); *value = v; break; }
    case Type::U16: { unsigned short v; status = convert(bytes(text), &v); *value = v; break; }
    case Type::I16: { short v; status = convert(bytes(text), &v); *value = v; break; }
    case Type::U32: { std::uint32_t v; status = convert(bytes(text), &v); *value = v; break; }
    case Type::I32: { std::int32_t v; status = convert(bytes(text), &v); *value = v; break; }
    case Type::Text: break;
  }
  return status;
}

int refused(ErrorScope& errors) {
  std::fprintf(stderr, "zu convert: %s\n", errors.take().c_str());
  return kExitNo;
}

// A WIDTH argument: a u16 read by the library.
bool readWidth(const std::string& text, unsigned short* width) {
  return convert(bytes(text), width) == ZU_OK;
}

int runConvert(const std::vector<std::string>& args) {
  if (args.size() < 3) return usageError("convert needs FROM VALUE TO");
  ErrorScope errors;
  const std::string& from = args[0];
  const std::string& value = args[1];
  const std::string& to = args[2];
  const std::vector<std::string> extra(args.begin() + 3, args.end());
  // Set only by a known type name; "hex" and "field" leave the target Text.
  Type fromType = Type::Text;
  Type toType = Type::Text;
  const bool knownTo = typeOf(to, &toType) || to == "hex" || to == "field";
  if (!typeOf(from, &fromType)) {
    return usageError("unknown type '" + from + "' (types: " + kTypeList + "; integers only)");
  }
  if (!knownTo) {
    return usageError("unknown target '" + to + "' (types: " + kTypeList +
                      ", hex, field; integers only)");
  }

  if (fromType == Type::Text) {
    if (to == "hex" || to == "field" || toType == Type::Text) {
      return usageError("a string converts to a number type");
    }
    if (!extra.empty()) return usageError("too many arguments");
    long long number = 0;
    if (readNumber(toType, value, &number) != ZU_OK) return refused(errors);
    std::printf("%lld\n", number);
    return kExitOk;
  }

  long long number = 0;
  if (readNumber(fromType, value, &number) != ZU_OK) return refused(errors);
  // The 32-bit pattern of the value: what the library's number forms take.
  const auto pattern = static_cast<std::uint32_t>(number);

  if (to == "hex") {
    unsigned short width = 0;
    if (extra.size() > 1) return usageError("hex takes at most a WIDTH");
    if (extra.size() == 1 && !readWidth(extra[0], &width)) {
      return usageError("WIDTH must be a number from 0 to 65535, not '" + extra[0] + "'");
    }
    std::vector<unsigned char> digits((width > kHexDigits ? width : kHexDigits) + 1);
    hexify(digits.data(), pattern, width);
    std::printf("%s\n", chars(digits.data()));
    return kExitOk;
  }
  if (to == "field") {
    unsigned short width = 0;
    if (extra.empty() || extra.size() > 2) return usageError("field needs a WIDTH and maybe 'left'");
    if (!readWidth(extra[0], &width)) {
      return usageError("WIDTH must be a number from 0 to 65535, not '" + extra[0] + "'");
    }
    if (extra.size() == 2 && extra[1] != "left") {
      return usageError("after the WIDTH only 'left' may follow, not '" + extra[1] + "'");
    }
    if (number < 0) return usageError("a field holds values of 0 or more");
    std::vector<unsigned char> field(width + 1u);
    const unsigned short digits =
        convert(field.data(), width, pattern, static_cast<unsigned short>(extra.size() == 2));
    std::printf("[%s] %u digit%s\n", chars(field.data()), static_cast<unsigned>(digits),
                digits == 1 ? "" : "s");
    return kExitOk;
  }
  if (toType != Type::Text) return usageError("one side of a conversion is a string");
  if (!extra.empty()) return usageError("too many arguments");
  unsigned char text[kDecimalRoom];
  if (isSigned(fromType)) {
    convert(text, static_cast<std::int32_t>(number));
  } else {
    convert(text, pattern);
  }
  std::printf("%s\n", chars(text));
  return kExitOk;
}

// The tour's stop for conversions and strings.

void showText(const char* text, const char* type, ZuStatus status, long long value,
              ErrorScope& errors) {
  if (status == ZU_OK) {
    std::printf("  \"%s\" to %s: %lld\n", text, type, value);
  } else {
    std::printf("  \"%s\" to %s: refused: %s\n", text, type, errors.take().c_str());
  }
}

void showField(unsigned short width, std::uint32_t value, unsigned short left) {
  unsigned char field[kDecimalRoom + 4];
  const unsigned short digits = convert(field, width, value, left);
  std::printf("  convert(dst, %u, %u, %u): [%s], %u digits\n", static_cast<unsigned>(width),
              static_cast<unsigned>(value), static_cast<unsigned>(left), chars(field),
              static_cast<unsigned>(digits));
}

void showLines(const char* label, ZuString& s) {
  std::printf("  %s:\n", label);
  const char* at = chars(s.getCString());
  while (const char* end = std::strstr(at, "\r\n")) {
    std::printf("    |%.*s|\n", static_cast<int>(end - at), at);
    at = end + 2;
  }
  std::printf("    |%s|\n", at);
}

void tourConvert(ErrorScope& errors) {
  std::printf("== Numbers, hexadecimal and strings\n");
  unsigned char buffer[kDecimalRoom + 4];
  convert(buffer, 4294967295u);
  std::printf("  convert(dst, 4294967295u): %s\n", chars(buffer));
  const unsigned short written = convert(buffer, static_cast<std::int32_t>(-2147483647 - 1));
  std::printf("  convert(dst, lowest i32): %s, %u bytes\n", chars(buffer),
              static_cast<unsigned>(written));
  showField(5, 42, 0);
  showField(5, 42, 1);
  showField(2, 123, 0);
  showField(5, 0, 0);
  for (const char* text : {"  12  ", "+ +5", "4294967295", "4294967296", "12a", "-1"}) {
    std::uint32_t v = 0;
    const ZuStatus status = convert(bytes(text), &v);
    showText(text, "u32", status, v, errors);
  }
  for (const char* text : {"-2147483648", "- 5", "2147483648"}) {
    std::int32_t v = 0;
    const ZuStatus status = convert(bytes(text), &v);
    showText(text, "i32", status, v, errors);
  }
  std::uint32_t digits = hexify(buffer, 255u, 4);
  std::printf("  hexify(dst, 255, 4): %s, %u digits\n", chars(buffer), static_cast<unsigned>(digits));
  digits = hexify(buffer, bytes("zu\x01"), 3);
  buffer[digits] = 0;
  std::printf("  hexify of the bytes 'z' 'u' 0x01: %s\n", chars(buffer));
  unsigned char decoded[2];
  const ZuStatus odd = dehexify(decoded, bytes("ABC"), 3);
  std::printf("  dehexify(\"ABC\", 3): %s, bytes %02X %02X\n", odd == ZU_OK ? "ok" : "refused",
              decoded[0], decoded[1]);
  if (dehexify(decoded, bytes("G1"), 2) != ZU_OK) {
    std::printf("  dehexify(\"G1\", 2): refused: %s\n", errors.take().c_str());
  }
  std::printf("  isTrueStr: TRUE %u, ON %u, yes %u, 0 %u\n", isTrueStr(bytes("TRUE")),
              isTrueStr(bytes("ON")), isTrueStr(bytes("yes")), isTrueStr(bytes("0")));

  {
    ZuString s;
    s.concat(bytes("DRIVER={zu};HOST='db one';PORT="));
    s.concat(static_cast<std::uint32_t>(5432));
    s.concat(bytes(";TIMEOUT="));
    s.concat(static_cast<std::int32_t>(-1));
    std::printf("  built by concat: %s\n", chars(s.getCString()));
    std::printf("  length %u, capacity %u: each growth took exactly what its append asked"
                " (a number asks for 15 bytes)\n",
                static_cast<unsigned>(s.length), static_cast<unsigned>(s.capacity));
    s.addQuotes('\'');
    std::printf("  addQuotes('): %s\n", chars(s.getCString()));
    s.removeQuotes();
    s.replaceSubString(bytes(";"), bytes("; "));
    s.insertLineBreaks(20, '\'', 0, 0);
    showLines("insertLineBreaks(20), quotes ' kept whole", s);
    s.removeLineBreaks('\'', 0, 0);
    std::printf("  removeLineBreaks: %s\n", chars(s.getCString()));
    const std::string filler(kLongestText - s.length, '.');
    const ZuStatus full = s.concat(bytes(filler));
    const ZuStatus over = s.concat(static_cast<unsigned char>('!'));
    std::printf("  grown to capacity %u: %s; one byte more: %s, length still %u\n",
                static_cast<unsigned>(s.capacity), full == ZU_OK ? "ok" : "refused",
                over == ZU_OK ? "ok" : "refused", static_cast<unsigned>(s.length));
    std::printf("    %s\n", errors.take().c_str());
  }
}

void demoConvert() {
  mdsPerTaskInit();
  {
    ErrorScope errors;
    tourConvert(errors);
  }
  mdsPerTaskTerm();
}

Registration convertCommand({"convert", "FROM VALUE TO [WIDTH [left]]",
                             "integer conversions: string to u8 char u16 i16 u32 i32 (int long), "
                             "a number to string, hex [WIDTH] or field WIDTH [left]",
                             runConvert, demoConvert, 30});

}  // namespace
}  // namespace zutool
