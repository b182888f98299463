// The two shared records, built at load in the fixed order of the static
// objects (see library.cpp) and never deleted.
#ifndef ZUUTL_ERRORS_STATIC_RECORDS_H
#define ZUUTL_ERRORS_STATIC_RECORDS_H

#include <cstdint>

#include "errors/error.h"
#include "frame/from_above.h"  // kOutOfMemory

namespace zu {

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
