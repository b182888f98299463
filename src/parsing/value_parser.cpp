#include "parsing/value_parser.h"

#include "containers/association.h"
#include "errors/message.h"
#include "parsing/parsing_messages.h"

namespace {

constexpr unsigned short kEquals = '=';
constexpr unsigned short kAddedQuote = '\'';
// Bytes that make addAttribute quote a value, beside the separator.
constexpr unsigned char kQuoteTriggers[] = {'\'', '"'};

unsigned short indexOf(ZuValueParser& p, const ZuSubString* key) {
  return p.attributes.getIndexForKey(key);
}

unsigned short indexOf(ZuValueParser& p, const unsigned char* key) {
  if (key == nullptr) return p.attributes.count;
  const ZuSubString view(key);
  return p.attributes.getIndexForKey(&view);
}

const ZuSubString* valueAt(ZuValueParser& p, unsigned short index) {
  return static_cast<const ZuSubString*>(p.attributes.getPtrDataAtIndex(index));
}

bool isUsed(const ZuValueParser& p, std::uint32_t index) {
  return p.usedBits.hasBit(index) && p.usedBits.test(index) != 0;
}

void markUsed(ZuValueParser& p, std::uint32_t index) {
  if (p.usedBits.hasBit(index)) p.usedBits.set(index);
}

// Gives a parsed table a clear bit at `index`, keeping the bits it has, so
// that an attribute added later can be asked for and marked like the rest.
ZuStatus makeBitFor(ZuValueParser& p, std::uint32_t index) {
  // A table that was never parsed has no bits to give.
  if (p.usedBits.bits == nullptr) return ZU_OK;
  return p.usedBits.grow(index + 1);
}

// Records a fault at the current token, the one at fault.
void reportParseError(const ZuValueParser& p) {
  if (p.sourceName == nullptr) {
    addMessageError(zu::msg::kParseAtOffset) << p.token.offset;
  } else {
    addMessageError(zu::msg::kParseNamedAtOffset) << p.token.offset << p.sourceName;
  }
}

bool needsQuotes(const ZuString& value, unsigned char separator) {
  for (const unsigned char q : kQuoteTriggers) {
    if (value.findChar(q) < value.length) return true;
  }
  return value.findChar(separator) < value.length;
}

// One keyword=value pair, the keyword being the current token; leaves the
// token after the value as the current one.
ZuStatus parsePair(ZuValueParser& p) {
  if (p.token.type != ZU_TOKEN_WORD) {
    reportParseError(p);
    return ZU_ERROR;
  }
  p.pendingKey = new ZuSubString(p.token.bytes, p.token.length);
  if (p.pendingKey == nullptr) return ZU_ERROR;
  // Refused as soon as it is read, whatever follows it.
  if (indexOf(p, p.pendingKey) < p.attributes.count) {
    reportParseError(p);
    appendMessageToLastError(zu::msg::kAttributeRepeated) << static_cast<const ZuSubString&>(p.token);
    return ZU_ERROR;
  }
  p.scanner.getToken(p.token, ZU_SEARCH_NORMAL);
  if (p.token.type != kEquals) {
    reportParseError(p);
    return ZU_ERROR;
  }
  p.scanner.getDelimitedToken(p.token, p.separator);
  auto* value = new ZuSubString(p.token.bytes, p.token.length);
  if (value == nullptr) return ZU_ERROR;
  if (p.attributes.addAssoc(p.pendingKey, value) != ZU_OK) {
    delete value;
    return ZU_ERROR;
  }
  p.pendingKey = nullptr;
  p.scanner.getToken(p.token, ZU_SEARCH_NORMAL);
  return ZU_OK;
}

}  // namespace

ZuValueParser::ZuValueParser(const ZuSubString* text, unsigned char separator,
                             const unsigned char* sourceName)
    : separator(separator), sourceName(sourceName), scanner(text), pendingKey(nullptr),
      unusedCursor(0) {
  attributes.setIgnoreCase();
}

ZuValueParser::~ZuValueParser() {
  attributes.deleteKeyAndData();
  delete pendingKey;
}

ZuStatus ZuValueParser::initialize() {
  scanner.getToken(token, ZU_SEARCH_NORMAL);
  while (token.type != ZU_TOKEN_END) {
    if (parsePair(*this) != ZU_OK) return ZU_ERROR;
    if (token.type != separator) break;
    scanner.getToken(token, ZU_SEARCH_NORMAL);
  }
  if (token.type != ZU_TOKEN_END) {
    reportParseError(*this);
    return ZU_ERROR;
  }
  return usedBits.initialize(attributes.count);
}

const ZuSubString* ZuValueParser::getAttributeValue(const ZuSubString* key) {
  const unsigned short i = indexOf(*this, key);
  if (i >= attributes.count) return nullptr;
  markUsed(*this, i);
  return valueAt(*this, i);
}

const ZuSubString* ZuValueParser::getAttributeValue(const unsigned char* key) {
  if (key == nullptr) return nullptr;
  const ZuSubString view(key);
  return getAttributeValue(&view);
}

ZuStatus ZuValueParser::getAttributeValue(const unsigned char* key1, const unsigned char* key2,
                                          const ZuSubString*& value) {
  const ZuSubString* first = getAttributeValue(key1);
  if (first != nullptr) {
    if (getAttributeValue(key2) != nullptr) {
      reportParseError(*this);
      appendMessageToLastError(zu::msg::kAttributeTwoKeywords) << key1 << key2;
      return ZU_ERROR;
    }
    value = first;
    return ZU_OK;
  }
  value = getAttributeValue(key2);
  return ZU_OK;
}

unsigned int ZuValueParser::isAttributeValue(const ZuSubString* key) {
  return indexOf(*this, key) < attributes.count ? 1 : 0;
}

unsigned int ZuValueParser::isAttributeValue(const unsigned char* key) {
  return indexOf(*this, key) < attributes.count ? 1 : 0;
}

unsigned short ZuValueParser::getUnusedCount() {
  unsigned short unused = 0;
  for (unsigned short i = 0; i < attributes.count; ++i) {
    if (!isUsed(*this, i)) ++unused;
  }
  return unused;
}

const ZuSubString* ZuValueParser::getUnusedAttribute() {
  while (unusedCursor < attributes.count && isUsed(*this, unusedCursor)) ++unusedCursor;
  if (unusedCursor >= attributes.count) return nullptr;
  return attributes.getSubKeyAtIndex(unusedCursor++);
}

const ZuSubString* ZuValueParser::getAttributeKey(unsigned short index) {
  return index < attributes.count ? attributes.getSubKeyAtIndex(index) : nullptr;
}

ZuStatus ZuValueParser::addAttribute(const unsigned char* key, const unsigned char* value,
                                     const unsigned char* alias) {
  if (key == nullptr) return ZU_ERROR;
  unsigned short at = indexOf(*this, key);
  if (at >= attributes.count && alias != nullptr) at = indexOf(*this, alias);
  const bool isNew = at >= attributes.count;

  ZuString* newKey = nullptr;
  if (isNew) {
    newKey = new ZuString;
    if (newKey == nullptr || newKey->initialize(key) != ZU_OK) {
      delete newKey;
      return ZU_ERROR;
    }
  }
  auto* newValue = new ZuString;
  const unsigned char empty[] = {0};
  if (newValue == nullptr || newValue->initialize(value != nullptr ? value : empty) != ZU_OK ||
      (needsQuotes(*newValue, separator) && newValue->addQuotes(kAddedQuote) != ZU_OK)) {
    delete newValue;
    delete newKey;
    return ZU_ERROR;
  }

  if (isNew) {
    if (makeBitFor(*this, attributes.count) != ZU_OK ||
        attributes.addAssoc(newKey, newValue) != ZU_OK) {
      delete newValue;
      delete newKey;
      return ZU_ERROR;
    }
    return ZU_OK;
  }
  auto* entry = static_cast<ZuAssociation*>(attributes.at(at));
  delete entry->getPtrData();
  entry->setPtrData(newValue);
  return ZU_OK;
}

void ZuValueParser::removeAttribute(const unsigned char* key) {
  const unsigned short at = indexOf(*this, key);
  if (at < attributes.count) attributes.deleteKeyAndDataAtIndex(at);
}

ZuStatus ZuValueParser::buildString(ZuString* target) {
  target->clear();
  for (unsigned short i = 0; i < attributes.count; ++i) {
    const ZuSubString* key = attributes.getSubKeyAtIndex(i);
    const ZuSubString* value = valueAt(*this, i);
    // The pair, its '=' and the separator before it.
    if (target->ensureRoom(key->length + value->length + 2) != ZU_OK) return ZU_ERROR;
    if ((i != 0 && target->concat(separator) != ZU_OK) || target->concat(*key) != ZU_OK ||
        target->concat(static_cast<unsigned char>(kEquals)) != ZU_OK ||
        target->concat(*value) != ZU_OK) {
      return ZU_ERROR;
    }
  }
  return ZU_OK;
}
