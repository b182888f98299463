// What the bottom of the library needs from the layers above it. The frame,
// the heap and the strings stand below the errors, yet their failures go on
// the error list and the semaphore reports speak the catalogue's words; the
// pool's settings are read with the strings' decimal conversion. So these few
// functions are declared here and supplied from above: the first two by
// errors/, the last where the library is put together (library.cpp).
// Nothing else may cross upward.
#ifndef ZUUTL_FRAME_FROM_ABOVE_H
#define ZUUTL_FRAME_FROM_ABOVE_H

#include <cstdint>

namespace zu {

// Number of the out-of-memory record.
constexpr unsigned short kOutOfMemory = 30190;

// Records catalogue row `number` on the calling thread's current list, with
// the `length` bytes at `quoted` as its one parameter when `quoted` is given.
// kOutOfMemory takes no memory to record, so the allocator may call this;
// it must do so with no heap or thread-table lock held.
void recordFailure(unsigned short number, const unsigned char* quoted = nullptr,
                   std::uint32_t length = 0);

// Copies catalogue row `id` into `buffer` of `size` bytes, cut to size - 1
// and to the catalogue's longest text, NUL terminated. Returns the bytes
// copied: 0 and an empty text for an unknown id.
int catalogueLoad(std::uint16_t id, unsigned char* buffer, int size);

// The environment variable `name` read as a decimal number with an optional
// sign, a negative one taken modulo 2^32; `fallback` when it is not set or
// holds no such number. Safe at load: it records nothing and allocates
// nothing.
std::uint32_t environmentNumber(const char* name, std::uint32_t fallback);

}  // namespace zu

#endif
