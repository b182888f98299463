// The two shared records, built at load in the fixed order of the static
// objects (see frame/statics.cpp) and never deleted.
#ifndef ZUUTL_ERRORS_STATIC_RECORDS_H
#define ZUUTL_ERRORS_STATIC_RECORDS_H

#include <cstdint>

#include "errors/error.h"

namespace zu {

// Number of the out-of-memory record.
constexpr unsigned short kOutOfMemory = 30190;

// A shared record: empty text in a one-byte buffer of its own, so reading it
// as a C string neither allocates nor writes.
class StaticError : public ZuError {
 public:
  StaticError(unsigned short number, std::uint32_t kind);

 private:
  unsigned char terminator_ = 0;
};

extern StaticError memoryError;
extern StaticError nullError;

}  // namespace zu

#endif
