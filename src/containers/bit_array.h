// ZuBitArray: a plain array of bits. Bit i is value 1 << (i % 8) of byte
// i / 8, lowest first; the storage is bitCount / 8 + 1 bytes, so a count
// that is a multiple of 8 has a spare byte. Indexes are not checked: a
// caller keeps them below bitCount. No lock.
#ifndef ZUUTL_CONTAINERS_BIT_ARRAY_H
#define ZUUTL_CONTAINERS_BIT_ARRAY_H

#include <cstdint>
#include <cstring>

#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"
#include "memory/ram.h"

// Invariants: either bits is null and bitCount 0, or bits is one heap block
// of byteCount(bitCount) bytes. Every bit of that block exists, those past
// bitCount included, and bits that no set() has touched are clear.
class ZU_API ZuBitArray : public ZuObject {
 public:
  ZuBitArray() : bits(nullptr), bitCount(0) {}
  ~ZuBitArray() override;
  ZuBitArray(const ZuBitArray&) = delete;  // one owner per block of bits
  ZuBitArray& operator=(const ZuBitArray&) = delete;

  // All bits clear. On failure the memory error stands and the array is
  // without storage.
  ZuStatus initialize(std::uint32_t count) {
    ramFree(bits);  // a second initialize gives back the first storage
    bitCount = 0;
    bits = static_cast<unsigned char*>(ramAlloc(byteCount(count)));
    if (bits == nullptr) return ZU_ERROR;
    bitCount = count;
    clear();
    return ZU_OK;
  }
  // Makes room for `count` bits, keeping the bits set and clearing the new
  // ones; an array whose storage already holds that many keeps it. On an
  // array without storage this is initialize. On failure the memory error
  // stands and the array is as it was.
  ZuStatus grow(std::uint32_t count) {
    if (bits == nullptr) return initialize(count);
    if (count == 0 || hasBit(count - 1)) return ZU_OK;
    const std::uint32_t oldBytes = byteCount(bitCount);
    const std::uint32_t newBytes = byteCount(count);
    auto* grown = static_cast<unsigned char*>(ramAlloc(newBytes));
    if (grown == nullptr) return ZU_ERROR;
    std::memcpy(grown, bits, oldBytes);
    std::memset(grown + oldBytes, 0, newBytes - oldBytes);
    ramFree(bits);
    bits = grown;
    bitCount = count;
    return ZU_OK;
  }
  // Whether the storage has bit `index`: bits exist up to the end of the
  // last byte, so a little beyond bitCount, and not at all without storage.
  bool hasBit(std::uint32_t index) const {
    return bits != nullptr && index / kBitsPerByte < byteCount(bitCount);
  }
  void clear() {
    if (bits != nullptr) std::memset(bits, 0, byteCount(bitCount));
  }
  void set(std::uint32_t index) { bits[index / kBitsPerByte] |= bitOf(index); }
  unsigned int test(std::uint32_t index) const {
    return (bits[index / kBitsPerByte] & bitOf(index)) != 0 ? 1 : 0;
  }

  unsigned char* bits;  // null until initialize
  std::uint32_t bitCount;

 private:
  static constexpr std::uint32_t kBitsPerByte = 8;
  static std::uint32_t byteCount(std::uint32_t count) { return count / kBitsPerByte + 1; }
  static unsigned char bitOf(std::uint32_t index) {
    return static_cast<unsigned char>(1u << (index % kBitsPerByte));
  }
};

#endif
