#include "errors/error.h"

#include "errors/static_records.h"

ZuError::ZuError(unsigned short number, const unsigned char* text, ErrorType type,
                 unsigned short auxCode, std::int32_t nativeCode)
    : number(number),
      flags(type == ZU_ERROR_TYPE_WARNING ? kWarning : 0),
      nativeCode(nativeCode),
      auxCode(auxCode),
      stateText{},
      clientFlags(0) {
  // No text is an empty one, which costs no memory until it is read.
  if (text != nullptr) this->text.initialize(text);
}

ZuError::~ZuError() = default;

void ZuError::appendText(const unsigned char* more) {
  if (isStatic() != 0 || more == nullptr) return;
  text.concat(more);
}

namespace {

template <typename Value>
ZuError& setNext(ZuError& record, const Value& value) {
  if ((record.flags & (ZuError::kNullError | ZuError::kStatic)) != 0) return record;
  if (record.text.setParam(value) != ZU_OK) return zu::nullError;
  return record;
}

}  // namespace

ZuError& ZuError::operator<<(const unsigned char* text) { return setNext(*this, text); }
ZuError& ZuError::operator<<(std::uint32_t value) { return setNext(*this, value); }
ZuError& ZuError::operator<<(std::int32_t value) { return setNext(*this, value); }
ZuError& ZuError::operator<<(const ZuSubString& text) { return setNext(*this, text); }

namespace zu {

StaticError::StaticError(unsigned short number, std::uint32_t kind)
    : ZuError(number, nullptr, ZU_ERROR_TYPE_ERROR, 0, 0) {
  flags |= kStatic | kind;
  text.initializeWithBuffer(&terminator_, 1, 0);
}

}  // namespace zu
